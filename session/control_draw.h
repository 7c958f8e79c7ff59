// Control drawing and the GL error check: GL calls of the debugger's own, made on the
// application's thread so that they leave no trace in the recording.
#pragma once

#include "records/records.h"

// A request of the panel's, carried out at the next call outside glBegin/glEnd.
void apply_control_draw_request(thread_record *record);
inline void apply_control_draw(thread_record *record)
{
    if (record->per_proc->control_draw_request != 0)
        apply_control_draw_request(record);
}
void check_no_context(thread_record *record);
void check_gl_error(thread_record *record);
// Appends to pending_message; a non-empty message asks for a halt behind the call.
void append_pending_message(thread_record *record, const char *format, ...);
