// The special steps of the WGL and GDI wrappers; their bodies are generated from calls.tbl.
#include "wgl.h"

#include "gls.h"

#include <cstdio>
#include <cstdint>

void history_note(const char *name)
{
    // Through the thread's dispatch, so that an open capture writes the note into the history.
    GlsContext *ctx = gls_current();
    if (!ctx) // the codec had no memory for the session's context
        return;
    ((void (GLS_APIENTRY *)(const GLubyte *, const GLubyte *))ctx->defaultDispatch[GLS_OP_glsString])(
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
    // The break on swap and the halt loop join here with run control; a halted swap shows
    // only its name as the next call.
}

void flush_session_files(thread_record *record)
{
    per_gl *gl = record->per_gl;
    if (gl->history_file)
        fflush(gl->history_file);
    if (gl->list_calls_file)
        fflush(gl->list_calls_file);
}
