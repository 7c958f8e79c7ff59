// The special steps of the WGL and GDI wrappers; their bodies are generated from calls.tbl.
#include "interception/wgl.h"

#include "gls/gls.h"
#include "recording/history.h"
#include "session/rings.h"
#include "session/run_control.h"

#include <cstdio>
#include <cstdint>

void history_note(const char *name)
{
    // Through the thread's dispatch, so that an open capture writes the note into the history.
    GlsContext *ctx = gls_current();
    if (!ctx) // the codec had no memory for the session's context
        return;
    ((fn_glsString)ctx->defaultDispatch[OP_glsString])(
        (const GLubyte *)"Info", (const GLubyte *)name);
    glsFlush();
}

void context_made_current(thread_record *record, int result, void *context)
{
    // A failed call leaves no context current: the session stands on the null record.
    attach_gl(record, result == 1 ? (uint32_t)(uintptr_t)context : 0);
}

void swap_halt_point(thread_record *record, const char *name)
{
    per_proc *proc = record->per_proc;
    bool text_captured = false, panel_updated = false;
    test_break_on_swap(record, ROW_SwapBuffers);
    for (;;) {
        bool pending = ring_pending(&proc->ring_to_app);
        if (!pending && proc->run_state != RUN_HALTED)
            return;
        // A halted swap shows only its name: the codec has no command for it.
        if (!text_captured) {
            snprintf(proc->last_call_text, sizeof proc->last_call_text, "%s", name);
            text_captured = true;
        }
        if (proc->run_state == RUN_HALTED && !panel_updated) {
            update_panel(record);
            panel_updated = true;
        }
        // Skip at a swap only says so in the status line: the buffers are swapped all the same.
        int result = handle_event(record);
        if (result == EVENT_RESULT_GO_ON || result == EVENT_RESULT_SKIP)
            return;
    }
}

void flush_session_files(thread_record *record)
{
    per_gl *gl = record->per_gl;
    history_flush(gl);
    if (gl->list_calls_file)
        fflush(gl->list_calls_file);
}
