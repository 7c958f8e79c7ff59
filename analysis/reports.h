// What the after-call hooks tell the developer: a warning about the call, which can also halt
// the application behind it, and lines of the history with the tag "Info".
#pragma once

#include "records/records.h"

// A glsString command of the thread's codec context, so that the line stands in the history at
// the place of the call. Without a codec context the codec's error is set and nothing written.
void info_line(const char *tag, const char *text);

// "\nWarning: <text>" joins pending_message whatever the flags say; with History and "Show
// Possible openGL Problems" on, the history gets "- <text>".
void usage_warning(thread_record *record, const char *text);

// The gates of the hints: strict and loose read the same two flags in two ways, and the address
// gate is the flag of "Show Data Memory Address".
bool hint_strict(const per_proc *proc);
bool hint_loose(const per_proc *proc);
bool hint_address(const per_proc *proc);
