// The after-call hooks that belong to the wrapper itself: the open glBegin, and the buffers
// that control drawing restores.
#include "gen/hooks.h"

void hook_glBegin(thread_record *record, GLenum mode)
{
    record->per_gl->in_begin_end = 1;
    record->per_gl->primitive_mode = (int32_t)mode;
}

void hook_glEnd(thread_record *record)
{
    record->per_gl->in_begin_end = 0;
}

// The application's latest choice is what a restore brings back.
void hook_glDrawBuffer(thread_record *record, GLenum buf)
{
    record->per_proc->saved_draw_buffer = (int32_t)buf;
}

void hook_glReadBuffer(thread_record *record, GLenum src)
{
    record->per_proc->saved_read_buffer = (int32_t)src;
}
