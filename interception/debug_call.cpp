// The control loop of every debugged call, in the order the wrappers must keep.
#include "interception/wrapper.h"

#include "analysis/counters.h"
#include "gls/gls.h"
#include "gls/gls_context.h"
#include "session/context.h"
#include "session/control_draw.h"
#include "records/rings.h"
#include "session/run_control.h"

// The call's text alone, written by the per-call stream into last_call_text: what a halted
// application shows as its next call, and what a display list's text is made of.
struct call_in_wait {
    const WrapperRow *row;
    const void *args;
    void *result;
};

static void capture_text(thread_record *, const void *data)
{
    const call_in_wait *call = (const call_in_wait *)data;
    GLSopcode opcode = call->row->opcode;
    GLbitfield saved_flags = glsGetCaptureFlags(opcode);
    glsCaptureFlags(opcode, GLS_CAPTURE_WRITE_BIT);
    glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME);
    call->row->call(call->args, call->result);
    glsEndCapture();
    glsFlush();
    glsCaptureFlags(opcode, saved_flags);
}

bool debug_call(const WrapperRow *row, const void *args, void *result)
{
    thread_record *record = thread_entry();
    per_proc *proc = record->per_proc;
    apply_control_draw(record);
    test_break(record, row->row);
    // The skip test marks last_call_text, which is still the previous call's unless a halt
    // captures this one.
    bool skip_call = test_skip(record, row->row);
    proc->pending_message[0] = 0;
    const call_in_wait call = {row, args, result};
    halt_point point = {capture_text, &call, true, false, false};
    bool call_made = false;
    for (;;) {
        if (must_wait(record, &point) && wait_at_halt(record, &point) == EVENT_RESULT_SKIP)
            skip_call = true;
        if (skip_call)
            return false; // neither counted nor recorded; a call already made still gives 0
        if (call_made)
            return true; // the second loop, behind a call that halted: never made twice
        // With no capture open (the codec's context gone, or between captures) there is no
        // capture function to reach: the call is counted and checked but not made.
        GlsContext *ctx = gls_current();
        if (ctx && ctx->captureNesting > 0)
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
        if (point.panel_updated)
            post_event(&proc->ring_from_app, EVENT_MESSAGE_CHANGED);
        proc->run_state = RUN_HALTED;
    }
}
