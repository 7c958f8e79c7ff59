// Start values of the session records. Blocks come from the heap unzeroed, so every field that
// has a start value is written here, field by field in layout order.
#include "records/records.h"

#include "gen/gl_enums.h"

#include <cstdio>
#include <cstring>

static void copy_name(char *row, const char *name)
{
    strncpy(row, name, CALL_NAME_SIZE - 1);
    row[CALL_NAME_SIZE - 1] = 0;
}

void fill_ring(ring *r)
{
    r->head = 0;
    r->tail = 0;
}

void fill_thread_record(thread_record *record, uint32_t id)
{
    record->id = id;
    record->master = nullptr;
    record->per_proc = nullptr;
    record->per_gl = nullptr;
    record->library_table = nullptr;
    record->panel_ready = 0;
    record->module = nullptr;
    record->about_window = nullptr;
    record->call_count_window = nullptr;
    record->prim_count_window = nullptr;
    record->enum_window = nullptr;
    record->history_select_window = nullptr;
    record->list_select_window = nullptr;
    record->control_window = nullptr;
    record->break_select_window = nullptr;
    record->trace_select_window = nullptr;
    record->skip_select_window = nullptr;
    record->state_select_window = nullptr;
    for (int row = 0; row < STATE_ROW_COUNT; ++row)
        record->state_value_window[row] = nullptr;
    record->window_info_window = nullptr;
    record->temp_dir[0] = 0;
}

void fill_master(master *block, uint32_t owner)
{
    block->owner = owner;
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        copy_name(block->gl_names[row], gl_call_names[row]);
    for (int row = 0; row < GLU_CALL_COUNT; ++row)
        copy_name(block->glu_names[row], glu_call_names[row]);
    for (int row = 0; row < GDI_CALL_COUNT; ++row)
        copy_name(block->gdi_names[row], gdi_call_names[row]);
    for (int row = 0; row < WGL_CALL_COUNT; ++row)
        copy_name(block->wgl_names[row], wgl_call_names[row]);
    // Behind the copied names the rows are spare room: zero, which the name lookups walk through.
    for (int row = 0; row < ENUMERANT_ROWS_COPIED; ++row)
        block->enumerants[row] = enumerant_table[row];
    for (int row = ENUMERANT_ROWS_COPIED; row < ENUMERANT_ROWS; ++row)
        memset(&block->enumerants[row], 0, sizeof(enumerant_row));
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        block->opcode_of_call[row] = opcode_of_call[row];
    for (int row = 0; row < STATE_ROW_COUNT; ++row)
        block->state_rows[row] = state_catalogue[row];
    block->next_gl_id = 1;
    block->proc_count = 0;
    for (int row = 0; row < MASTER_PROC_ROWS; ++row) {
        block->procs[row].id = -1;
        block->procs[row].unused = -1;
    }
    block->gl_count = 0;
    for (int row = 0; row < MASTER_GL_ROWS; ++row) {
        block->gl_table[row].gl_id = -1;
        block->gl_table[row].handle = 0;
        block->gl_table[row].proc_id = -1;
    }
}

void fill_per_proc(per_proc *block, uint32_t id)
{
    block->id = id;
    block->unused_word = -1;
    fill_ring(&block->ring_to_app);
    fill_ring(&block->ring_from_app);
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        call_control_row *control = &block->call_control[row];
        control->count = 0;
        control->break_on = 0;
        control->trace = 1;
        control->skip = 0;
    }
    // A break on glFlush is in the set from the start: checking "Break on API calls" alone
    // then stops at each frame's flush.
    block->call_control[ROW_glFlush].break_on = 1;
    for (int row = 0; row < GLU_CALL_COUNT; ++row)
        block->glu_call_count[row] = 0;
    for (int row = 0; row < GDI_CALL_COUNT; ++row)
        block->gdi_call_count[row] = 0;
    for (int row = 0; row < WGL_CALL_COUNT; ++row)
        block->wgl_call_count[row] = 0;
    for (int64_t *counter = &block->prim_points; counter <= &block->prim_polygons; ++counter)
        *counter = 0;
    block->control_draw_state = 1;
    block->control_draw_request = 0;
    block->unused_flag = 0;
    block->saved_read_buffer = GL_FRONT;
    block->saved_draw_buffer = GL_FRONT;
    int32_t *flag = block->shown;
    for (int word = 0; word < PER_PROC_FLAG_WORDS; ++word)
        flag[word] = 0;
    block->run_state = RUN_HALTED;
    block->pending_message[0] = 0;
    block->last_call_text[0] = 0;
}

void fill_per_gl(per_gl *block, int32_t id, uint32_t context)
{
    block->id = id;
    block->handle = (int32_t)context;
    block->history_file = nullptr;
    block->history_pending = nullptr;
    block->history_window = nullptr;
    block->list_count = 0;
    block->list_reserved = 0;
    block->list_rows = nullptr;
    block->list_current = nullptr;
    block->list_block_size = 0;
    block->list_calls_file = nullptr;
    block->list_choice_window = nullptr;
    block->in_begin_end = 0;
    block->list_capturing = 0;
    block->dither_on = 1;
    block->lighting_on = 0;
    block->primitive_mode = -1;
    block->list_base = 0;
    block->array_flag = 1;
    block->clear_count = 0;
    block->flush_count = 0;
    block->vertex_count = 0;
    block->has_state = context != 0 ? 1 : 0;
    // Nothing ever sets direct_render: the window information must start from zero.
    block->direct_render = 0;
    block->double_buffer = 0;
    block->stereo = 0;
    block->aux_buffers = 0;
    block->pixel_type = 0;
    for (int i = 0; i < 4; ++i) {
        block->accum_bits[i] = 0;
        block->color_bits[i] = 0;
    }
    block->index_bits = 0;
    block->stencil_bits = 0;
    block->depth_bits = 0;
}

void format_temp_dir(const char *temp, uint32_t id, char *out)
{
    snprintf(out, NAME_SIZE, "%s\\QUONDALE_%u", temp ? temp : "\\temp", id);
}
