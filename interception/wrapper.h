// The shared steps of the debug wrappers. Every one of the 460 generated wrappers is the same
// sequence around its own capture call; the steps live here so that a reviewer reads them once.
#pragma once

#include "context.h"
#include "control_draw.h"
#include "gls.h"
#include "history.h"
#include "library_table.h"
#include "records.h"
#include "rings.h"
#include "run_control.h"
#include "writer.h"

// The 460 generated wrappers, by GL catalogue row.
extern const GlsFunc debug_wrappers[GL_CALL_COUNT];

// Local state of one wrapper call.
struct WrapperCall {
    int text_captured;
    int call_made;
    int panel_updated;
    int skip_call;
    int pending;
    GLbitfield saved_flags;
};

// Steps 1 to 6: thread entry, control drawing, the break and skip tests.
inline thread_record *wrapper_begin(WrapperCall *call, int row)
{
    call->text_captured = 0;
    call->call_made = 0;
    call->panel_updated = 0;
    thread_record *record = thread_entry();
    apply_control_draw(record);
    test_break(record, row);
    call->skip_call = test_skip(record, row);
    record->per_proc->pending_message[0] = 0;
    return record;
}

// Step 8: true while the control loop goes on (an event waits, the thread is halted, or a
// display list is being compiled).
inline bool wrapper_poll(thread_record *record, WrapperCall *call)
{
    call->pending = ring_pending(&record->per_proc->ring_to_app);
    return call->pending || record->per_proc->run_state == RUN_HALTED ||
           record->per_gl->list_capturing == 1;
}

// Step 9: the call's text alone, written through the per-call stream into last_call_text.
inline void wrapper_text_begin(WrapperCall *call, int opcode)
{
    call->saved_flags = glsGetCaptureFlags(opcode);
    glsCaptureFlags(opcode, GLS_CAPTURE_WRITE_BIT);
    glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME);
}

inline void wrapper_text_end(WrapperCall *call, int opcode)
{
    glsEndCapture();
    glsFlush();
    glsCaptureFlags(opcode, call->saved_flags);
    call->text_captured = 1;
}

// Steps 10 to 13: refresh the panel on the way into a halt, then take one event. True to go
// round the loop again.
inline bool wrapper_wait(thread_record *record, WrapperCall *call)
{
    per_proc *proc = record->per_proc;
    if (proc->run_state == RUN_HALTED && !call->panel_updated) {
        update_panel(record);
        call->panel_updated = 1;
    }
    if (proc->run_state != RUN_HALTED && !call->pending)
        return false; // the list-compile case
    int result = handle_event(record);
    if (result == EVENT_RESULT_GO_ON)
        return false;
    if (result == EVENT_RESULT_SKIP) {
        call->skip_call = 1;
        return false;
    }
    return true;
}

// Steps 17 and 18, behind the real call.
inline void wrapper_after_call(thread_record *record, int row)
{
    if (record->per_proc->History == 1)
        glsFlush();
    ++record->per_proc->call_control[row].count;
}

// Step 20: true when the call must halt behind itself.
inline bool wrapper_check(thread_record *record, WrapperCall *call)
{
    per_proc *proc = record->per_proc;
    if (proc->Check_for_GL_error != 1)
        return false;
    check_no_context(record);
    check_gl_error(record);
    if (proc->pending_message[0] == 0)
        return false;
    if (call->panel_updated)
        post_event(&proc->ring_from_app, EVENT_MESSAGE_CHANGED);
    proc->run_state = RUN_HALTED;
    return true;
}

// The last step of every path; nothing to do, kept so that every path ends alike.
inline void wrapper_exit(thread_record *) {}
