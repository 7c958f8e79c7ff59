// The session records: the table of named blocks (names, look-up, list information growth, the
// debug description), the start values of the records and the state catalogue copied into master.
#include "records/mmaps.h"
#include "records/records.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST_F(NamedBlocks, ThreadRecordsHaveNoNameAndFreeEmptiesTheTable)
{
    ASSERT_NE(make_thread_record(), nullptr);
    EXPECT_STREQ(named_blocks.rows[0].name, "");
    EXPECT_EQ(named_blocks.rows[0].count, 1);

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

// Start values of the session records. Blocks come unzeroed from the heap, so each test fills a
// block over garbage: a field the filling forgets shows up as the garbage pattern.
template <typename Record> Record *garbage_block()
{
    Record *block = (Record *)block_alloc(sizeof(Record));
    memset((void *)block, 0xAB, sizeof(Record));
    return block;
}

// True when no word of [from, to) still holds the garbage pattern (for runs without padding).
bool no_garbage_words(const void *from, const void *to)
{
    for (const uint32_t *word = (const uint32_t *)from; word < (const uint32_t *)to; ++word)
        if (*word == 0xABABABABu)
            return false;
    return true;
}

TEST(PerProcStart, HaltedWithEverythingTracedAndABreakOnlyOnFlush)
{
    per_proc *proc = garbage_block<per_proc>();
    fill_per_proc(proc, 1234);
    EXPECT_EQ(proc->run_state, RUN_HALTED);
    EXPECT_FALSE(proc->ring_to_app.head != proc->ring_to_app.tail);
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        const call_control_row &control = proc->call_control[row];
        ASSERT_EQ(control.count, 0) << row;
        ASSERT_EQ(control.break_on, row == ROW_glFlush ? 1 : 0) << row;
        ASSERT_EQ(control.trace, 1) << row;
        ASSERT_EQ(control.skip, 0) << row;
    }
    // The counters from GLU to the last primitive, and the 23 flag words, in one piece each.
    EXPECT_TRUE(no_garbage_words(&proc->glu_call_count, &proc->control_draw_state));
    EXPECT_TRUE(no_garbage_words(&proc->shown, &proc->run_state));
    EXPECT_EQ(proc->History, 0);
    EXPECT_EQ(proc->saved_draw_buffer, 1028);
    EXPECT_EQ(proc->control_draw_state, 1);
    block_free(proc);
}

TEST(MasterStart, CopiesTheCataloguesZeroesTheSpareEnumerantsAndEmptiesTheDirectories)
{
    master *table = garbage_block<master>();
    fill_master(table, 99);
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        ASSERT_STREQ(table->gl_names[row], gl_call_names[row]);
        ASSERT_EQ(table->opcode_of_call[row], opcode_of_call[row]);
    }
    EXPECT_EQ(memcmp(table->state_rows, state_catalogue, sizeof state_catalogue), 0);
    EXPECT_EQ(memcmp(table->enumerants, enumerant_table, sizeof enumerant_table), 0);
    EXPECT_STREQ(table->enumerants[ENUMERANT_ROWS_COPIED - 1].name, "GL_ZOOM_Y");
    const uint8_t *spare = (const uint8_t *)&table->enumerants[ENUMERANT_ROWS_COPIED];
    const uint8_t *end = (const uint8_t *)&table->enumerants[ENUMERANT_ROWS];
    EXPECT_EQ(std::count(spare, end, 0), end - spare);
    EXPECT_EQ(table->next_gl_id, 1);
    EXPECT_EQ(table->proc_count, 0);
    EXPECT_EQ(table->gl_count, 0);
    EXPECT_EQ(table->procs[MASTER_PROC_ROWS - 1].id, -1);
    EXPECT_EQ(table->gl_table[MASTER_GL_ROWS - 1].gl_id, -1);
    EXPECT_EQ(table->gl_table[MASTER_GL_ROWS - 1].handle, 0);
    block_free(table);
}

// kind, first_enum, second_enum, third_enum, type, count and name of a row, as one line.
std::string row_text(const state_row &r)
{
    char text[400];
    snprintf(text, sizeof text, "%d %X %X %X %d %d %s\n", r.kind, (unsigned)r.first_enum,
             (unsigned)r.second_enum, (unsigned)r.third_enum, r.type, r.count, r.name);
    return text;
}

TEST(StateCatalogue, KindsInTheirRowsAndTheRowsThatStandAsTheyAre)
{
    std::string text;
    for (int row : {0, 221, 222, 228, 361, 381, 382, 410})
        text += row_text(state_catalogue[row]);
    for (const char *name : {"glGet(GL_FOG)", "glGet(GL_LOGIC_OP)", "glGet(GL_INDEX_LOGIC_OP)",
                             "glGet(GL_MAP2_GRID_DOMAIN)", "glGet(GL_MAP2_GRID_SEGMENTS)", "glGet(GL_POLYGON_MODE)",
                             "glGetPixelMap(GL_PIXEL_MAP_R_TO_R)"}) {
        auto row = std::find_if(std::begin(state_catalogue), std::end(state_catalogue),
                                [&](const state_row &r) { return strcmp(r.name, name) == 0; });
        text += row == std::end(state_catalogue) ? "none\n" : row_text(*row);
    }
    EXPECT_EQ(text, expected_text("state_catalogue_rows.txt"));
    EXPECT_EQ(std::count_if(std::begin(state_catalogue), std::end(state_catalogue),
                            [](const state_row &row) { return row.type == 3; }), 1);
}

TEST(PerGlStart, NullRecordHasNoStateAndARealContextCountsFromItsId)
{
    per_gl *null_record = garbage_block<per_gl>();
    fill_per_gl(null_record, 0, 0);
    EXPECT_EQ(null_record->handle, 0);
    EXPECT_EQ(null_record->has_state, 0);

    per_gl *context = garbage_block<per_gl>();
    fill_per_gl(context, 3, 0x80010002u);
    EXPECT_EQ(context->id, 3);
    EXPECT_EQ(context->handle, (int32_t)0x80010002u); // the low 32 bits, signed
    EXPECT_EQ(context->has_state, 1);
    EXPECT_EQ(context->primitive_mode, -1);
    // What the wrappers read on every call, and the files that attach and close test.
    EXPECT_EQ(context->in_begin_end, 0);
    EXPECT_EQ(context->list_capturing, 0);
    EXPECT_EQ(context->history_file, nullptr);
    EXPECT_EQ(context->list_calls_file, nullptr);
    block_free(null_record);
    block_free(context);
}

TEST(TempDir, ThreadIdBelowTempOrBelowBackslashTemp)
{
    char out[NAME_SIZE];
    format_temp_dir("C:\\users\\me\\Temp", 36, out);
    EXPECT_STREQ(out, "C:\\users\\me\\Temp\\QUONDALE_36");
    format_temp_dir(nullptr, 4294967295u, out);
    EXPECT_STREQ(out, "\\temp\\QUONDALE_4294967295");
}

} // namespace
