#include "panel/panel_text.h"

#include "gen/gl_enums.h"
#include "panel/resource.h"
#include "records/mmaps.h"
#include "records/report.h"
#include "records/rings.h"

#include <cstdio>

static WindowHandle thread_record::*const window_of_index[SHOWN_COUNT] = {
    &thread_record::about_window,
    &thread_record::call_count_window,
    &thread_record::prim_count_window,
    nullptr, // index 3 has no window
    &thread_record::history_select_window,
    &thread_record::list_select_window,
    &thread_record::control_window,
    &thread_record::enum_window,
    &thread_record::break_select_window,
    &thread_record::skip_select_window,
    &thread_record::trace_select_window,
    &thread_record::state_select_window,
    &thread_record::window_info_window,
};

WindowHandle window_of_shown_index(const thread_record *record, int index)
{
    if (index < 0 || index >= SHOWN_COUNT || !window_of_index[index])
        return nullptr;
    return record->*window_of_index[index];
}

void thread_banner_text(const per_proc *proc, char *out)
{
    // The id is the application thread's, whatever the label says.
    snprintf(out, PANEL_TEXT_SIZE, "App Process ID = %u", proc->id);
}

void context_banner_text(const per_gl *gl, char *out)
{
    if (!gl)
        snprintf(out, PANEL_TEXT_SIZE, "GL context = Unstable");
    else if (gl->handle == 0)
        snprintf(out, PANEL_TEXT_SIZE, "GL context = NULL");
    else
        snprintf(out, PANEL_TEXT_SIZE, "GL context = %d", gl->id);
}

// Menu items that open a window. Every information window halts the application first, so
// that it reads a still picture; the Setup buttons and About don't.
struct window_command {
    int id;
    bool halt_first;
    bool refresh;
    int shown_index;
};

static const window_command window_commands[] = {
    {IDM_ABOUT, false, false, SHOWN_ABOUT},
    {IDM_ABOUT_QUONDALE, false, false, SHOWN_ABOUT},
    {IDM_CALL_COUNT, true, true, SHOWN_CALL_COUNT},
    {IDM_CALL_HISTORY, true, true, SHOWN_HISTORY_SELECT},
    {IDM_DISPLAY_LIST, true, true, SHOWN_LIST_SELECT},
    {IDM_PRIMITIVE_COUNT, true, true, SHOWN_PRIM_COUNT},
    {IDM_STATE, true, true, SHOWN_STATE_SELECT},
    {IDM_WINDOW, true, true, SHOWN_WINDOW_INFO},
    {IDM_ENUMERANTS, true, false, SHOWN_ENUMERANTS},
    {IDC_TRACE_SETUP, false, true, SHOWN_TRACE_SELECT},
    {IDC_BREAK_SETUP, false, true, SHOWN_BREAK_SELECT},
    {IDC_SKIP_SETUP, false, true, SHOWN_SKIP_SELECT},
};

// The run buttons: what each asks of a halted and of a running application. Step and Skip on
// a running application are a halt on purpose: the first press stops it, the next one steps.
struct run_command {
    int id;
    const char *status_halted;
    int32_t event_halted;
    const char *status_running;
    int32_t event_running;
};

static const run_command run_commands[] = {
    {IDC_HALT, "Halt requested", EVENT_HALT, "Halt requested", EVENT_HALT},
    {IDC_CONTINUE, "Continue requested", EVENT_CONTINUE, "Continue requested", EVENT_CONTINUE},
    {IDC_STEP, "Step requested", EVENT_STEP, "Halt requested", EVENT_HALT},
    {IDC_SKIP, "Skip call requested", EVENT_SKIP, "Halt requested", EVENT_HALT},
};

// The check boxes and the flag each one writes; control drawing must also reach the
// application's thread, which owns the context.
struct box_command {
    int id;
    int32_t per_proc::*flag;
    int32_t event_off;
    int32_t event_on;
};

static const box_command box_commands[] = {
    {IDC_GL_ERRORS, &per_proc::Check_for_GL_error, 0, 0},
    {IDC_CONTROL_DRAWING, &per_proc::Control_draw, EVENT_CONTROL_DRAW_OFF, EVENT_CONTROL_DRAW_ON},
    {IDC_HISTORY, &per_proc::History, 0, 0},
    {IDC_BREAK_ON_CALLS, &per_proc::Break_on_GL_calls, 0, 0},
    {IDC_BREAK_ON_SWAP, &per_proc::Break_on_SwapBuffers, 0, 0},
    {IDC_SKIP_CALLS, &per_proc::Skip_GL_calls, 0, 0},
};

control_action control_command(per_proc *proc, int id, int box_check)
{
    control_action action = {COMMAND_NONE, nullptr, 0, SHOWN_NONE, false};
    for (const window_command &row : window_commands) {
        if (row.id != id)
            continue;
        action.kind = COMMAND_SHOW_WINDOW;
        action.event = row.halt_first ? EVENT_HALT : 0;
        action.refresh = row.refresh;
        action.shown_index = row.shown_index;
        return action;
    }
    for (const run_command &row : run_commands) {
        if (row.id != id)
            continue;
        bool halted = proc->run_state == RUN_HALTED;
        action.kind = COMMAND_RUN;
        action.status = halted ? row.status_halted : row.status_running;
        action.event = halted ? row.event_halted : row.event_running;
        return action;
    }
    for (const box_command &row : box_commands) {
        if (row.id != id)
            continue;
        int32_t on = box_check == 1 ? 1 : 0;
        proc->*row.flag = on;
        action.kind = COMMAND_BOX;
        action.event = on ? row.event_on : row.event_off;
        return action;
    }
    if (id == IDM_SAVE_CONFIGURATION)
        action.kind = COMMAND_SAVE_SETTINGS;
    else if (id == IDM_LOAD_CONFIGURATION)
        action.kind = COMMAND_LOAD_SETTINGS;
    else if (id == IDM_QUIT)
        action.kind = COMMAND_QUIT;
    return action;
}

char *read_whole_file(const char *path)
{
    // Text mode: a carriage return and line feed come back as a line feed alone, which the
    // history and list readers count on.
    FILE *file = fopen(path, "r");
    if (!file)
        return nullptr;
    fseek(file, 0, SEEK_END);
    long length = ftell(file);
    fseek(file, 0, SEEK_SET);
    if (length < 0)
        length = 0;
    char *text = (char *)block_alloc((size_t)length + 1);
    if (!text) {
        fclose(file);
        fatal_report("ui", __LINE__, "Out of memory.");
        session_exit(1);
    }
    size_t got = fread(text, 1, (size_t)length, file);
    fclose(file);
    text[got] = 0;
    return text;
}

void window_info_text(const per_gl *gl, char *out)
{
    out[0] = 0;
    if (gl->handle == 0)
        return;
    int used = snprintf(out, WINDOW_INFO_TEXT_SIZE, "%s\r\n%s", gl->direct_render == 1 ? "Direct Render" : "Indirect Render",
                        gl->double_buffer == 1 ? "Double Buffer" : "Single Buffer");
    auto add = [&](const char *format, int a, int b = 0, int c = 0, int d = 0) {
        if (used >= 0 && used < WINDOW_INFO_TEXT_SIZE)
            used += snprintf(out + used, (size_t)(WINDOW_INFO_TEXT_SIZE - used), format, a, b, c, d);
    };
    if (gl->pixel_type == GL_RGBA)
        add("\r\nRGBA (%d, %d, %d, %d)", gl->color_bits[0], gl->color_bits[1], gl->color_bits[2], gl->color_bits[3]);
    else
        add("\r\nColor Index (%d)", gl->index_bits);
    if (gl->accum_bits[0] > 0 || gl->accum_bits[1] > 0 || gl->accum_bits[2] > 0 || gl->accum_bits[3] > 0)
        add("\r\nAccum Buffer (%d, %d, %d, %d)", gl->accum_bits[0], gl->accum_bits[1], gl->accum_bits[2],
            gl->accum_bits[3]);
    if (gl->stencil_bits > 0)
        add("\r\nStencil Buffer (%d)", gl->stencil_bits);
    if (gl->depth_bits > 0)
        add("\r\nDepth Buffer (%d)", gl->depth_bits);
}

void list_head_line(const list_info_row *row, char *out)
{
    int used = snprintf(out, PANEL_TEXT_SIZE, "List %d;%s contains %d %s;", row->list,
                        row->status == 1 ? " deleted;" : row->status == 2 ? " capturing calls now;" : "", row->lines,
                        row->lines == 1 ? "call" : "calls");
    if (row->calls > 0 && used > 0 && used < PANEL_TEXT_SIZE)
        snprintf(out + used, (size_t)(PANEL_TEXT_SIZE - used), " called %d %s;", row->calls,
                 row->calls == 1 ? "time" : "times");
}
