// Start values and layout of the session records. Blocks come unzeroed from the heap, so each
// test fills a block over garbage.
#include "records.h"

#include "mmaps.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

template <typename Record> Record *garbage_block()
{
    Record *block = (Record *)block_alloc(sizeof(Record));
    memset((void *)block, 0xAB, sizeof(Record));
    return block;
}

TEST(PerProcStart, ControlTableTracesEverythingAndBreaksOnlyOnFlush)
{
    per_proc *proc = garbage_block<per_proc>();
    fill_per_proc(proc, 1234);
    EXPECT_EQ(proc->id, 1234u);
    EXPECT_EQ(proc->unused_word, -1);
    EXPECT_STREQ(gl_call_names[GL_ROW_glFlush], "glFlush");
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        const call_control_row &control = proc->call_control[row];
        EXPECT_EQ(control.count, 0) << row;
        EXPECT_EQ(control.break_on, row == GL_ROW_glFlush ? 1 : 0) << row;
        EXPECT_EQ(control.trace, 1) << row;
        EXPECT_EQ(control.skip, 0) << row;
    }
    block_free(proc);
}

TEST(PerProcStart, CountersFlagsAndRunState)
{
    per_proc *proc = garbage_block<per_proc>();
    fill_per_proc(proc, 7);
    EXPECT_EQ(proc->ring_to_app.head, proc->ring_to_app.tail);
    EXPECT_EQ(proc->ring_from_app.head, proc->ring_from_app.tail);
    for (int row = 0; row < GLU_CALL_COUNT; ++row)
        EXPECT_EQ(proc->glu_call_count[row], 0);
    for (int row = 0; row < GDI_CALL_COUNT; ++row)
        EXPECT_EQ(proc->gdi_call_count[row], 0);
    for (int row = 0; row < WGL_CALL_COUNT; ++row)
        EXPECT_EQ(proc->wgl_call_count[row], 0);
    EXPECT_EQ(proc->prim_points, 0);
    EXPECT_EQ(proc->prim_triangles, 0);
    EXPECT_EQ(proc->prim_polygons, 0);
    EXPECT_EQ(proc->control_draw_state, 1);
    EXPECT_EQ(proc->control_draw_request, 0);
    EXPECT_EQ(proc->saved_read_buffer, 1028);
    EXPECT_EQ(proc->saved_draw_buffer, 1028);
    for (int word = 0; word < SHOWN_COUNT; ++word)
        EXPECT_EQ(proc->shown[word], 0);
    EXPECT_EQ(proc->Break_on_GL_calls, 0);
    EXPECT_EQ(proc->Break_on_SwapBuffers, 0);
    EXPECT_EQ(proc->Check_for_GL_error, 0);
    EXPECT_EQ(proc->Control_draw, 0);
    EXPECT_EQ(proc->limit_data_dumps, 0);
    EXPECT_EQ(proc->show_data_address, 0);
    EXPECT_EQ(proc->show_hints, 0);
    EXPECT_EQ(proc->show_problems, 0);
    EXPECT_EQ(proc->History, 0);
    EXPECT_EQ(proc->Skip_GL_calls, 0);
    EXPECT_EQ(proc->run_state, RUN_HALTED);
    block_free(proc);
}

TEST(MasterStart, CopiesTheCatalogueAndEmptiesTheDirectories)
{
    master *table = garbage_block<master>();
    fill_master(table, 99);
    EXPECT_EQ(table->owner, 99u);
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        EXPECT_STREQ(table->gl_names[row], gl_call_names[row]);
        EXPECT_EQ(table->opcode_of_call[row], opcode_of_call[row]);
    }
    for (int row = 0; row < GLU_CALL_COUNT; ++row)
        EXPECT_STREQ(table->glu_names[row], glu_call_names[row]);
    EXPECT_STREQ(table->gdi_names[GDI_ROW_SwapBuffers], "SwapBuffers");
    EXPECT_STREQ(table->wgl_names[0], "wglChoosePixelFormat");
    EXPECT_STREQ(table->wgl_names[15], "wglMakeCurrent");
    EXPECT_STREQ(table->wgl_names[23], "wglUseFontOutlinesW");
    EXPECT_EQ(table->next_gl_id, 1);
    EXPECT_EQ(table->proc_count, 0);
    EXPECT_EQ(table->gl_count, 0);
    for (int row = 0; row < MASTER_PROC_ROWS; ++row) {
        EXPECT_EQ(table->procs[row].id, -1);
        EXPECT_EQ(table->procs[row].unused, -1);
    }
    for (int row = 0; row < MASTER_GL_ROWS; ++row) {
        EXPECT_EQ(table->gl_table[row].gl_id, -1);
        EXPECT_EQ(table->gl_table[row].handle, 0);
        EXPECT_EQ(table->gl_table[row].proc_id, -1);
    }
    block_free(table);
}

TEST(PerGlStart, NullRecordAndRealContext)
{
    per_gl *null_record = garbage_block<per_gl>();
    fill_per_gl(null_record, 0, 0);
    EXPECT_EQ(null_record->id, 0);
    EXPECT_EQ(null_record->handle, 0);
    EXPECT_EQ(null_record->has_state, 0);

    per_gl *context = garbage_block<per_gl>();
    fill_per_gl(context, 3, 0x80010002u);
    EXPECT_EQ(context->id, 3);
    EXPECT_EQ(context->handle, (int32_t)0x80010002u);
    EXPECT_EQ(context->has_state, 1);
    EXPECT_EQ(context->history_file, nullptr);
    EXPECT_EQ(context->history_window, nullptr);
    EXPECT_EQ(context->list_count, 0);
    EXPECT_EQ(context->list_reserved, 0);
    EXPECT_EQ(context->list_rows, nullptr);
    EXPECT_EQ(context->list_current, nullptr);
    EXPECT_EQ(context->list_block_size, 0);
    EXPECT_EQ(context->list_calls_file, nullptr);
    EXPECT_EQ(context->list_choice_window, nullptr);
    EXPECT_EQ(context->in_begin_end, 0);
    EXPECT_EQ(context->list_capturing, 0);
    EXPECT_EQ(context->dither_on, 1);
    EXPECT_EQ(context->lighting_on, 0);
    EXPECT_EQ(context->primitive_mode, -1);
    EXPECT_EQ(context->list_base, 0);
    EXPECT_EQ(context->array_flag, 1);
    EXPECT_EQ(context->clear_count, 0);
    EXPECT_EQ(context->flush_count, 0);
    EXPECT_EQ(context->vertex_count, 0);
    EXPECT_EQ(context->direct_render, 0);
    block_free(null_record);
    block_free(context);
}

TEST(ThreadRecordStart, EverythingEmptyButTheId)
{
    thread_record *record = garbage_block<thread_record>();
    fill_thread_record(record, 4242);
    EXPECT_EQ(record->id, 4242u);
    EXPECT_EQ(record->master, nullptr);
    EXPECT_EQ(record->per_proc, nullptr);
    EXPECT_EQ(record->per_gl, nullptr);
    EXPECT_EQ(record->library_table, nullptr);
    EXPECT_EQ(record->panel_ready, 0);
    EXPECT_EQ(record->module, nullptr);
    EXPECT_EQ(record->control_window, nullptr);
    EXPECT_EQ(record->state_value_window[0], nullptr);
    EXPECT_EQ(record->state_value_window[STATE_ROW_COUNT - 1], nullptr);
    EXPECT_EQ(record->window_info_window, nullptr);
    EXPECT_STREQ(record->temp_dir, "");
    block_free(record);
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
