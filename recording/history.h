// The call history: one GLS text file per GL context, fed by a capture that stays open on the
// session's codec context, and the per-call capture that gives the text of the next call.
#pragma once

#include "records/records.h"

// Capture flags from the trace set: 3 for a traced function, else 1; glsDrawVertexArray always 3.
void apply_trace_set(thread_record *record);
// Opens the current per_gl's file ("w" to truncate, else "a+") and begins the long-lived capture.
void history_open(thread_record *record, bool truncate);
void history_close(thread_record *record);
// Puts what the history holds on disk, for a reader of the file.
void history_flush(per_gl *gl);
// Closes the file with all its lines, leaving the capture as it is.
void history_file_close(per_gl *gl);
