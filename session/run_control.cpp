#include "session/run_control.h"

#include "session/control_draw.h"
#include "gls/gls.h"
#include "recording/history.h"
#include "records/rings.h"
#include "state/state_scan.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

void set_status(thread_record *record, const char *format, ...)
{
    char text[256];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    post_status(&record->per_proc->ring_from_app, EVENT_STATUS_TEXT, text);
}

void halt_on_break(thread_record *record, int row)
{
    record->per_proc->run_state = RUN_HALTED;
    set_status(record, "Halted (Break on %s)", record->master->gl_names[row]);
}

void test_break_on_swap(thread_record *record, int gdi_row)
{
    per_proc *proc = record->per_proc;
    if (gdi_row == ROW_SwapBuffers && proc->Break_on_SwapBuffers == 1 &&
        proc->run_state == RUN_RUNNING) {
        proc->run_state = RUN_HALTED;
        set_status(record, "Halted (Break on %s)", record->master->gdi_names[ROW_SwapBuffers]);
    }
}

void mark_skipped(thread_record *record)
{
    per_proc *proc = record->per_proc;
    // Still the previous call's text, unless the halt that follows captures this one.
    size_t length = strlen(proc->last_call_text);
    snprintf(proc->last_call_text + length, sizeof proc->last_call_text - length, " /* skip */");
}

int handle_event(thread_record *record)
{
    per_proc *proc = record->per_proc;
    ring_slot slot;
    ring_read(&proc->ring_to_app, &slot);
    switch (slot.code) {
    case EVENT_CONTROL_DRAW_OFF:
        proc->control_draw_request = 1;
        apply_control_draw(record);
        return EVENT_RESULT_STAY;
    case EVENT_CONTROL_DRAW_ON:
        proc->control_draw_request = 2;
        apply_control_draw(record);
        return EVENT_RESULT_STAY;
    case EVENT_HALT:
        proc->run_state = RUN_HALTED;
        set_status(record, "Halted");
        return EVENT_RESULT_STAY;
    case EVENT_CLEAR_HISTORY:
        history_close(record);
        history_open(record, true);
        // The windows read the file by name: its new first line must be on disk for them.
        history_flush(record->per_gl);
        post_event(&proc->ring_from_app, EVENT_HISTORY_CHANGED);
        return EVENT_RESULT_STAY;
    case EVENT_APPLY_TRACE_SET:
        apply_trace_set(record);
        return EVENT_RESULT_STAY;
    case EVENT_CONTINUE:
        proc->run_state = RUN_RUNNING;
        set_status(record, "Running");
        return EVENT_RESULT_GO_ON;
    case EVENT_SKIP:
        set_status(record, "Call skipped");
        return EVENT_RESULT_SKIP;
    case EVENT_STEP:
        set_status(record, "Step");
        return EVENT_RESULT_GO_ON;
    case EVENT_VERTEX_ARRAYS_OFF:
        glsDisable(GLS_CAPTURE_VERTEX_ARRAYS);
        return EVENT_RESULT_STAY;
    case EVENT_VERTEX_ARRAYS_ON:
        glsEnable(GLS_CAPTURE_VERTEX_ARRAYS);
        return EVENT_RESULT_STAY;
    default:
        return EVENT_RESULT_STAY;
    }
}

void update_panel(thread_record *record)
{
    set_status(record, "Updating ...");
    per_gl *gl = record->per_gl;
    history_flush(gl);
    if (gl->list_calls_file)
        fflush(gl->list_calls_file);
    glsFlush();
    // GL may be asked only on this thread, and not between glBegin and glEnd.
    if (gl->in_begin_end == 0 && gl->handle != 0)
        state_scan(record);
    post_event(&record->per_proc->ring_from_app, EVENT_REFRESH_ALL);
    set_status(record, "Halted");
}

int wait_at_halt(thread_record *record, halt_point *point)
{
    per_proc *proc = record->per_proc;
    for (;;) {
        bool pending = ring_pending(&proc->ring_to_app);
        if (!pending && !must_wait(record, point))
            return EVENT_RESULT_GO_ON;
        if (!point->text_shown) {
            point->show_text(record, point->data);
            point->text_shown = true;
        }
        if (proc->run_state == RUN_HALTED && !point->panel_updated) {
            update_panel(record);
            point->panel_updated = true;
        }
        if (proc->run_state != RUN_HALTED && !pending)
            return EVENT_RESULT_GO_ON; // a list being compiled needs the text only
        // A halted thread spins here until Continue, Step or Skip: an empty ring says "stay".
        int outcome = handle_event(record);
        if (outcome == EVENT_RESULT_GO_ON || outcome == EVENT_RESULT_SKIP)
            return outcome;
    }
}
