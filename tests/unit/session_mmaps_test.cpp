// The table of named blocks: names, look-up, list information growth, the debug description.
#include "records/mmaps.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>

namespace {

struct NamedBlocks : testing::Test {
    void SetUp() override { named_blocks_free(); }
    void TearDown() override { named_blocks_free(); }
};

std::string expected_text(const char *name)
{
    std::ifstream file(std::string(QUONDALE_EXPECTED "/") + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The names of the blocks, then the description of a session's table, one whole text.
TEST_F(NamedBlocks, NamesFollowTheDirectorySchemeAndTheDescriptionHasOneLinePerBlock)
{
    char names[6][NAME_SIZE];
    name_of_master("C:\\t\\QUONDALE_7", names[0]);
    name_of_list_info("C:\\t\\QUONDALE_7", names[1]);
    name_of_per_proc("D", 4000000000u, names[2]);
    name_of_per_gl("D", 65536, names[3]);
    name_of_per_gl("D", 0, names[4]); // context zero is the null record
    name_of_per_gl("D", 0xFFFFFFFEu, names[5]); // a handle prints as the signed value of its low 32 bits
    std::string text;
    for (const char *name : names)
        text += std::string(name) + "\n";

    const std::string dir = "C:\\T\\QUONDALE_36";
    thread_record *record = make_thread_record();
    fill_thread_record(record, 36);
    snprintf(record->temp_dir, NAME_SIZE, "%s", dir.c_str());
    record->panel_ready = 1;
    master *table = make_master((dir + "\\master").c_str());
    fill_master(table, 36);
    per_proc *proc = make_per_proc((dir + "\\per_proc\\36").c_str());
    fill_per_proc(proc, 36);
    proc->History = 1;
    proc->wgl_call_count[10] = 2;
    proc->wgl_call_count[23] = 12345678901LL;
    fill_per_gl(make_per_gl((dir + "\\per_gl\\null").c_str()), 0, 0);
    per_gl *context = make_per_gl((dir + "\\per_gl\\65536").c_str());
    fill_per_gl(context, 1, 65536);
    context->list_calls_file = stdout;
    table->gl_table[0] = {1, 65536, 36};
    table->gl_count = 1;
    table->next_gl_id = 2;
    make_list_info((dir + "\\list\\info").c_str(), 3);
    record->per_gl = context;

    char description[4096];
    size_t length = describe_named_blocks(description, sizeof description);
    EXPECT_EQ(length, strlen(description));
    EXPECT_EQ(text + description, expected_text("named_blocks.txt"));
    context->list_calls_file = nullptr;
}

TEST_F(NamedBlocks, FindGivesTheFirstBlockMadeUnderThatNameOnly)
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

    // The first of two blocks under one name wins.
    master *first = make_master("D\\master");
    master *second = make_master("D\\master");
    ASSERT_NE(first, second);
    EXPECT_EQ(find_master("D\\master"), first);
}

TEST_F(NamedBlocks, ThreadRecordsHaveNoName)
{
    ASSERT_NE(make_thread_record(), nullptr);
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

TEST_F(NamedBlocks, ListInformationOfNoRowsHasOneGrowsKeepingRowsAndNeverShrinks)
{
    ASSERT_NE(make_list_info("D\\list\\info", 0), nullptr);
    EXPECT_EQ(named_blocks.rows[0].count, 1);
    EXPECT_NE(resize_list_info("D\\list\\info", 0), nullptr);
    EXPECT_EQ(named_blocks.rows[0].count, 1);
    named_blocks_free();

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
