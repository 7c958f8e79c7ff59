// Start values of the session records, and the generated state catalogue copied into master. Blocks come unzeroed from the heap, so each test fills a
// block over garbage: a field the filling forgets shows up as the garbage pattern.
#include "records/records.h"

#include "records/mmaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

namespace {

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
    std::ifstream file(QUONDALE_EXPECTED "/state_catalogue_rows.txt", std::ios::binary);
    EXPECT_EQ(text, std::string(std::istreambuf_iterator<char>(file), {}));
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
