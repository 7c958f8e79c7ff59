// The after-call hooks of the wrappers: they run behind the real call and the counting, and see
// the GL state the call left behind. A skipped call reaches none of them.
#include "gen/hooks.h"

#include "analysis/counters.h"
#include "gen/gl_enums.h"

void hook_glBegin(thread_record *record, GLenum mode)
{
    per_gl *gl = record->per_gl;
    gl->in_begin_end = 1;
    gl->primitive_mode = (int32_t)mode;
    gl->vertex_count = 0;
}

void hook_glEnd(thread_record *record)
{
    record->per_gl->in_begin_end = 0;
    count_primitive(record);
}

void hook_vertex(thread_record *record, const void *)
{
    record->per_gl->vertex_count += 1;
}

void hook_eval_coord(thread_record *record, const void *)
{
    record->per_gl->vertex_count += 1;
}

void hook_array_element(thread_record *record, GLint)
{
    if (record->per_gl->array_flag == 1)
        record->per_gl->vertex_count += 1;
}

// A draw from arrays is a primitive of its own mode, with the count of vertices asked for; with
// the vertex array off the count is the stale one of the last primitive.
static void draw_from_arrays(thread_record *record, GLenum mode, GLsizei count)
{
    per_gl *gl = record->per_gl;
    gl->primitive_mode = (int32_t)mode;
    if (gl->array_flag == 1)
        gl->vertex_count = (int64_t)count;
    count_primitive(record);
}

void hook_draw_arrays(thread_record *record, GLenum mode, GLint, GLsizei count)
{
    draw_from_arrays(record, mode, count);
}

void hook_glDrawElements(thread_record *record, GLenum mode, GLsizei count, GLenum, const void *)
{
    draw_from_arrays(record, mode, count);
}

void hook_glEnableClientState(thread_record *record, GLenum array)
{
    if (array == GL_VERTEX_ARRAY)
        record->per_gl->array_flag = 1;
}

void hook_glDisableClientState(thread_record *record, GLenum array)
{
    if (array == GL_VERTEX_ARRAY)
        record->per_gl->array_flag = 0;
}

void hook_rect(thread_record *record, const void *, const void *)
{
    record->per_proc->prim_rects += 1;
}

// The application's latest choice is what a restore of control drawing brings back.
void hook_glDrawBuffer(thread_record *record, GLenum buf)
{
    record->per_proc->saved_draw_buffer = (int32_t)buf;
}

void hook_glReadBuffer(thread_record *record, GLenum src)
{
    record->per_proc->saved_read_buffer = (int32_t)src;
}
