#include "analysis/counters.h"

#include "analysis/reports.h"
#include "gen/gl_enums.h"
#include "recording/lists.h"

#include <cstdio>
#include <cstring>

void count_primitive(thread_record *record)
{
    per_proc *proc = record->per_proc;
    const per_gl *gl = record->per_gl;
    int64_t n = gl->vertex_count;
    // A strip, a loop or a fan counts as one primitive; loops and line strips count at any n.
    switch (gl->primitive_mode) {
    case GL_POINTS: proc->prim_points += n; break;
    case GL_LINES: proc->prim_lines += n / 2; break;
    case GL_LINE_LOOP:
        proc->prim_line_loops += 1;
        proc->prim_line_loop_vertices += n;
        break;
    case GL_LINE_STRIP:
        proc->prim_line_strips += 1;
        proc->prim_line_strip_vertices += n;
        break;
    case GL_TRIANGLES: proc->prim_triangles += n / 3; break;
    case GL_TRIANGLE_FAN:
        if (n > 2) {
            proc->prim_triangle_fans += 1;
            proc->prim_triangle_fan_vertices += n;
        }
        break;
    case GL_TRIANGLE_STRIP:
        if (n > 2) {
            proc->prim_triangle_strips += 1;
            proc->prim_triangle_strip_vertices += n;
        }
        break;
    case GL_QUADS: proc->prim_quads += n / 4; break;
    case GL_QUAD_STRIP:
        if (n > 3) {
            proc->prim_quad_strips += 1;
            proc->prim_quad_strip_vertices += n;
        }
        break;
    case GL_POLYGON: proc->prim_polygons += 1; break;
    default: break; // no mode (-1) or one outside 0 to 9
    }
    // Behind all counting: a polygon of three or four vertices has a primitive of its own. The
    // hint says "glBegin" also where the polygon came from arrays.
    if (proc->History == 0 || gl->primitive_mode != GL_POLYGON || proc->show_hints != 1)
        return;
    if (n == 3)
        info_line("Info", "- Use glBegin(GL_TRIANGLES) instead of glBegin(GL_POLYGON) followed by 3 vertices.");
    else if (n == 4)
        info_line("Info", "- Use glBegin(GL_QUADS) instead of glBegin(GL_POLYGON) followed by 4 vertices.");
}

void clear_call_counts(per_proc *proc)
{
    for (call_control_row &row : proc->call_control)
        row.count = 0;
    memset(proc->glu_call_count, 0, sizeof proc->glu_call_count);
    memset(proc->wgl_call_count, 0, sizeof proc->wgl_call_count);
}

void clear_primitive_counts(per_proc *proc)
{
    int64_t *cleared[] = {&proc->prim_points,    &proc->prim_lines,           &proc->prim_line_loops,
                          &proc->prim_line_strips, &proc->prim_triangles,       &proc->prim_triangle_fans,
                          &proc->prim_triangle_strips, &proc->prim_quads,       &proc->prim_quad_strips,
                          &proc->prim_polygons};
    for (int64_t *counter : cleared)
        *counter = 0;
}

void format_count(int64_t value, char *out)
{
    // Three digits at a time from the right, each step into a second buffer and back, since a
    // format can't read its own target.
    char step[COUNT_TEXT_SIZE];
    int64_t rest = value % 1000, above = value / 1000;
    if (above <= 0) {
        snprintf(out, COUNT_TEXT_SIZE, "%d", (int)rest);
        return;
    }
    snprintf(out, COUNT_TEXT_SIZE, "%.3d", (int)rest);
    for (;;) {
        rest = above % 1000;
        above = above / 1000;
        if (above <= 0)
            break;
        snprintf(step, sizeof step, "%.3d,%s", (int)rest, out);
        memcpy(out, step, COUNT_TEXT_SIZE);
    }
    snprintf(step, sizeof step, "%d,%s", (int)rest, out);
    memcpy(out, step, COUNT_TEXT_SIZE);
}
