// The table of named blocks: names, look-up, list information growth, the debug description.
#include "records/mmaps.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

struct NamedBlocks : testing::Test {
    void SetUp() override { named_blocks_free(); }
    void TearDown() override { named_blocks_free(); }
};

std::string name_of(void (*format)(const char *, char *), const char *dir)
{
    char out[NAME_SIZE];
    format(dir, out);
    return out;
}

TEST(BlockNames, FollowTheDirectoryScheme)
{
    char out[NAME_SIZE];
    EXPECT_EQ(name_of(name_of_master, "C:\\t\\QUONDALE_7"), "C:\\t\\QUONDALE_7\\master");
    EXPECT_EQ(name_of(name_of_list_info, "C:\\t\\QUONDALE_7"), "C:\\t\\QUONDALE_7\\list\\info");
    name_of_per_proc("D", 4000000000u, out);
    EXPECT_STREQ(out, "D\\per_proc\\4000000000");
    name_of_per_gl("D", 65536, out);
    EXPECT_STREQ(out, "D\\per_gl\\65536");
}

TEST(BlockNames, ContextZeroIsTheNullRecordAndHandlesPrintSigned)
{
    char out[NAME_SIZE];
    name_of_per_gl("D", 0, out);
    EXPECT_STREQ(out, "D\\per_gl\\null");
    // A handle is printed as the signed value of its low 32 bits.
    name_of_per_gl("D", 0xFFFFFFFEu, out);
    EXPECT_STREQ(out, "D\\per_gl\\-2");
}

TEST_F(NamedBlocks, FindGivesTheBlockMadeUnderThatNameOnly)
{
    EXPECT_EQ(find_per_gl("D\\per_gl\\null"), nullptr);
    per_gl *null_record = make_per_gl("D\\per_gl\\null");
    per_proc *proc = make_per_proc("D\\per_proc\\9");
    ASSERT_NE(null_record, nullptr);
    ASSERT_NE(proc, nullptr);
    EXPECT_EQ(find_per_gl("D\\per_gl\\null"), null_record);
    EXPECT_EQ(find_per_proc("D\\per_proc\\9"), proc);
    EXPECT_EQ(find_per_proc("D\\per_proc\\90"), nullptr);
    EXPECT_EQ(find_per_proc("D\\per_proc\\"), nullptr);
    EXPECT_EQ(find_per_gl("E\\per_gl\\null"), nullptr);
    EXPECT_EQ(named_blocks.count, 2);
    EXPECT_EQ(named_blocks.rows[0].kind, BLOCK_PER_GL);
    EXPECT_EQ(named_blocks.rows[1].kind, BLOCK_PER_PROC);
}

TEST_F(NamedBlocks, FirstMatchWins)
{
    master *first = make_master("D\\master");
    master *second = make_master("D\\master");
    ASSERT_NE(first, second);
    EXPECT_EQ(find_master("D\\master"), first);
}

TEST_F(NamedBlocks, ThreadRecordsHaveNoName)
{
    ASSERT_NE(make_thread_record(), nullptr);
    EXPECT_EQ(named_blocks.rows[0].kind, BLOCK_THREAD_RECORD);
    EXPECT_STREQ(named_blocks.rows[0].name, "");
    EXPECT_EQ(named_blocks.rows[0].count, 1);
}

TEST_F(NamedBlocks, FreeEmptiesTheTable)
{
    make_master("D\\master");
    make_list_info("D\\list\\info", 3);
    named_blocks_free();
    EXPECT_EQ(named_blocks.count, 0);
    EXPECT_EQ(find_master("D\\master"), nullptr);
}

TEST_F(NamedBlocks, ListInformationOfNoRowsHasOne)
{
    ASSERT_NE(make_list_info("D\\list\\info", 0), nullptr);
    EXPECT_EQ(named_blocks.rows[0].count, 1);
    EXPECT_NE(resize_list_info("D\\list\\info", 0), nullptr);
    EXPECT_EQ(named_blocks.rows[0].count, 1);
}

TEST_F(NamedBlocks, ListInformationGrowsKeepingRowsAndNeverShrinks)
{
    list_info_row *rows = make_list_info("D\\list\\info", 2);
    ASSERT_NE(rows, nullptr);
    rows[0] = {5, 3, 10, 2, 0, 120, nullptr};
    rows[1] = {6, 2, 4, 0, 120, -1, nullptr};

    EXPECT_EQ(resize_list_info("D\\list\\info", 1), rows);
    EXPECT_EQ(named_blocks.rows[0].count, 2);

    list_info_row *grown = resize_list_info("D\\list\\info", 40);
    ASSERT_NE(grown, nullptr);
    EXPECT_EQ(named_blocks.rows[0].count, 40);
    EXPECT_EQ(find_list_info("D\\list\\info"), grown);
    EXPECT_EQ(grown[0].list, 5);
    EXPECT_EQ(grown[0].end, 120);
    EXPECT_EQ(grown[1].list, 6);
    EXPECT_EQ(grown[1].end, -1);
    EXPECT_EQ(resize_list_info("D\\list\\other", 4), nullptr);
}

TEST_F(NamedBlocks, AFullTableReportsOutOfMemoryInsteadOfRunningOver)
{
    char name[NAME_SIZE];
    for (int row = 0; row < NAMED_BLOCK_ROWS; ++row) {
        snprintf(name, sizeof name, "D\\list\\%d", row);
        ASSERT_NE(make_list_info(name, 1), nullptr);
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(make_per_gl("D\\per_gl\\null"), nullptr);
    std::string report = testing::internal::GetCapturedStderr();
    EXPECT_EQ(named_blocks.count, NAMED_BLOCK_ROWS);
    EXPECT_EQ(report.rfind("mmaps, line ", 0), 0u) << report;
    EXPECT_NE(report.find(". Out of memory.\n"), std::string::npos) << report;
}

TEST_F(NamedBlocks, DescriptionHasOneLinePerBlockInTableOrder)
{
    thread_record *record = make_thread_record();
    fill_thread_record(record, 36);
    snprintf(record->temp_dir, NAME_SIZE, "C:\\T\\QUONDALE_36");
    record->panel_ready = 1;
    master *table = make_master("C:\\T\\QUONDALE_36\\master");
    fill_master(table, 36);
    per_proc *proc = make_per_proc("C:\\T\\QUONDALE_36\\per_proc\\36");
    fill_per_proc(proc, 36);
    proc->History = 1;
    proc->wgl_call_count[10] = 2;
    proc->wgl_call_count[23] = 12345678901LL;
    per_gl *null_record = make_per_gl("C:\\T\\QUONDALE_36\\per_gl\\null");
    fill_per_gl(null_record, 0, 0);
    per_gl *context = make_per_gl("C:\\T\\QUONDALE_36\\per_gl\\65536");
    fill_per_gl(context, 1, 65536);
    context->list_calls_file = stdout;
    table->gl_table[0] = {1, 65536, 36};
    table->gl_count = 1;
    table->next_gl_id = 2;
    make_list_info("C:\\T\\QUONDALE_36\\list\\info", 3);
    record->per_gl = context;

    char text[4096];
    size_t length = describe_named_blocks(text, sizeof text);
    EXPECT_EQ(length, strlen(text));
    EXPECT_STREQ(text,
                 "thread id=36 panel_ready=1 per_gl=1:65536 temp_dir=C:\\T\\QUONDALE_36\n"
                 "master C:\\T\\QUONDALE_36\\master owner=36 next_gl_id=2 proc_count=0 gl_count=1 "
                 "gl_table=1:65536:36\n"
                 "per_proc C:\\T\\QUONDALE_36\\per_proc\\36 id=36 run_state=1 History=1 "
                 "wgl=0,0,0,0,0,0,0,0,0,0,2,0,0,0,0,0,0,0,0,0,0,0,0,12345678901 gdi=0,0,0,0,0\n"
                 "per_gl C:\\T\\QUONDALE_36\\per_gl\\null id=0 handle=0 has_state=0 history=closed "
                 "list_calls=closed\n"
                 "per_gl C:\\T\\QUONDALE_36\\per_gl\\65536 id=1 handle=65536 has_state=1 history=closed "
                 "list_calls=open\n"
                 "list_info C:\\T\\QUONDALE_36\\list\\info count=3\n");
    context->list_calls_file = nullptr;
}

TEST_F(NamedBlocks, DescriptionStopsAtTheBufferEnd)
{
    for (int i = 0; i < 20; ++i)
        make_list_info("C:\\a rather long directory name\\list\\info", 1);
    char text[100];
    memset(text, 'x', sizeof text);
    size_t length = describe_named_blocks(text, sizeof text);
    EXPECT_EQ(length, sizeof text - 1);
    EXPECT_EQ(text[sizeof text - 1], 0);
}

} // namespace
