// What the generated WGL and GDI wrappers share, and their special steps.
#pragma once

#include "session/context.h"
#include "records/records.h"

#include <windows.h>

// A history note: glsString("Info", name) through the thread's dispatch, then glsFlush.
void history_note(const char *name);

// Behind the real wglMakeCurrent: the session follows the context on success and falls back to
// the null record on failure.
void context_made_current(thread_record *record, int result, void *context);

// Behind the real wglGetProcAddress: the session's own entry in place of a function that makes
// a context current (wglMakeContextCurrentARB and its EXT twin), so that the session follows the
// context that it makes current; any other address as it came.
PROC proc_address_found(LPCSTR name, PROC found);

// In front of a real swap: the break on swap and the halt loop of run control.
void swap_halt_point(thread_record *record, const char *name);

// Behind a real swap: the one place outside a halt where the session's files reach the disk.
void flush_session_files(thread_record *record);
