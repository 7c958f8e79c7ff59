// The control loop of every debugged call, in the order the wrappers must keep.
#include "interception/wrapper.h"

#include "analysis/counters.h"
#include "gls/gls.h"
#include "session/context.h"
#include "session/control_draw.h"
#include "session/rings.h"
#include "session/run_control.h"

// The call's text alone, written by the per-call stream into last_call_text: what a halted
// application shows as its next call, and what a display list's text is made of.
static void capture_text(const WrapperRow *row, const void *args, void *result)
{
    GLbitfield saved_flags = glsGetCaptureFlags(row->opcode);
    glsCaptureFlags(row->opcode, GLS_CAPTURE_WRITE_BIT);
    glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME);
    row->call(args, result);
    glsEndCapture();
    glsFlush();
    glsCaptureFlags(row->opcode, saved_flags);
}

bool debug_call(const WrapperRow *row, const void *args, void *result)
{
    bool text_captured = false, call_made = false, panel_updated = false;
    thread_record *record = thread_entry();
    per_proc *proc = record->per_proc;
    apply_control_draw(record);
    test_break(record, row->row);
    // The skip test marks last_call_text, which is still the previous call's unless a halt
    // captures this one.
    bool skip_call = test_skip(record, row->row);
    proc->pending_message[0] = 0;
    for (;;) {
        // The control loop: while an event waits, the thread is halted, or a list is compiled.
        for (;;) {
            bool pending = ring_pending(&proc->ring_to_app);
            if (!pending && proc->run_state != RUN_HALTED && record->per_gl->list_capturing != 1)
                break;
            if (!text_captured) {
                capture_text(row, args, result);
                text_captured = true;
            }
            if (proc->run_state == RUN_HALTED && !panel_updated) {
                update_panel(record);
                panel_updated = true;
            }
            if (proc->run_state != RUN_HALTED && !pending)
                break; // a list being compiled needs the text only
            // A halted thread spins here until Continue, Step or Skip: an empty ring says "stay".
            int outcome = handle_event(record);
            if (outcome == EVENT_RESULT_GO_ON)
                break;
            if (outcome == EVENT_RESULT_SKIP) {
                skip_call = true;
                break;
            }
        }
        if (skip_call)
            return false; // neither counted nor recorded; a call already made still gives 0
        if (call_made)
            return true; // the second loop, behind a call that halted: never made twice
        row->call(args, result);
        // One call reaches the history writer as one piece.
        if (proc->History == 1)
            glsFlush();
        count_call(record, row->row);
        if (row->hook)
            row->hook(record, args);
        call_made = true;
        if (proc->Check_for_GL_error != 1)
            return true;
        check_no_context(record);
        check_gl_error(record);
        if (proc->pending_message[0] == 0)
            return true;
        // A warning or an error halts behind the call, as after a break.
        if (panel_updated)
            post_event(&proc->ring_from_app, EVENT_MESSAGE_CHANGED);
        proc->run_state = RUN_HALTED;
    }
}
