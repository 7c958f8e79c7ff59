// The special steps of the WGL and GDI wrappers; their bodies are generated from calls.tbl.
#include "interception/wgl.h"

#include "gls/gls.h"
#include "recording/history.h"
#include "records/rings.h"
#include "session/run_control.h"

#include <cstdio>
#include <cstdint>
#include <cstring>

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

typedef BOOL(WINAPI *make_context_current_function)(HDC draw, HDC read, HGLRC context);

// The real functions, kept when the program asks for them; one pointer each, written whole.
static make_context_current_function real_make_context_current[2];

template <int Which>
static BOOL WINAPI make_context_current(HDC draw, HDC read, HGLRC context)
{
    DWORD entry_error = GetLastError();
    thread_record *record = thread_entry();
    SetLastError(entry_error);
    BOOL result = real_make_context_current[Which](draw, read, context);
    DWORD error = GetLastError();
    context_made_current(record, result, context);
    SetLastError(error);
    return result;
}

PROC proc_address_found(LPCSTR name, PROC found)
{
    static const char *const names[2] = {"wglMakeContextCurrentARB", "wglMakeContextCurrentEXT"};
    static const PROC entries[2] = {(PROC)(void *)make_context_current<0>, (PROC)(void *)make_context_current<1>};
    // A name below 64 K is an ordinal, which no such function has.
    if (!found || (uintptr_t)name <= 0xFFFF)
        return found;
    for (int which = 0; which < 2; ++which)
        if (strcmp(name, names[which]) == 0) {
            real_make_context_current[which] = (make_context_current_function)(void *)found;
            return entries[which];
        }
    return found;
}

// A halted swap shows only its name: the codec has no command for it.
static void show_swap_name(thread_record *record, const void *name)
{
    per_proc *proc = record->per_proc;
    snprintf(proc->last_call_text, sizeof proc->last_call_text, "%s", (const char *)name);
}

void swap_halt_point(thread_record *record, const char *name)
{
    test_break_on_swap(record, ROW_SwapBuffers);
    // Skip at a swap only says so in the status line: the buffers are swapped all the same.
    halt_point point = {show_swap_name, name, false, false, false};
    if (must_wait(record, &point))
        wait_at_halt(record, &point);
}

void flush_session_files(thread_record *record)
{
    per_gl *gl = record->per_gl;
    history_flush(gl);
    if (gl->list_calls_file)
        fflush(gl->list_calls_file);
}
