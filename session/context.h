// A debug session per application thread: thread entry, context attach, the end of a session.
#pragma once

#include "records/records.h"

#include <cstdint>

// Thread-local index of thread_record (a DWORD). The panel thread's slot holds the record of
// the thread it serves.
extern unsigned long session_tls;

// Debugger's part of the library's load and unload.
bool session_process_attach();
void session_process_detach(bool process_ends);

// The calling thread's record; the first call on a thread brings its whole session up. Never
// fails: it ends the process instead.
thread_record *thread_entry();

// Makes context (0 for none) the session's current per_gl.
void attach_gl(thread_record *record, uint32_t context);

// Ends a session: files, codec context, real libraries, temporary directory.
void close_session(thread_record *record);
