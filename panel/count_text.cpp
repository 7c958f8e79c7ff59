#include "panel/count_text.h"

#include "analysis/counters.h"

#include <cstdio>

void prim_count_text(const per_proc *proc, char *out)
{
    struct line {
        const char *format;
        int64_t value;
    };
    // The totals count a strip, a loop or a fan as one primitive of its family.
    const line lines[] = {
        {"Total Points = %s\r\n", proc->prim_points},
        {"Total Lines = %s\r\n", proc->prim_lines + proc->prim_line_loops + proc->prim_line_strips},
        {"   Lines = %s\r\n", proc->prim_lines},
        {"   Line Loops = %s\r\n", proc->prim_line_loops},
        {"   Line Strip = %s\r\n", proc->prim_line_strips},
        {"Total Triangles = %s\r\n", proc->prim_triangles + proc->prim_triangle_fans + proc->prim_triangle_strips},
        {"   Triangles = %s\r\n", proc->prim_triangles},
        {"   Triangles Fans = %s\r\n", proc->prim_triangle_fans},
        {"   Triangles Strip = %s\r\n", proc->prim_triangle_strips},
        {"Total Quads = %s\r\n", proc->prim_quads + proc->prim_quad_strips},
        {"   Quad = %s\r\n", proc->prim_quads},
        {"   Quad Strip = %s\r\n", proc->prim_quad_strips},
        {"Total Polygons = %s", proc->prim_polygons},
    };
    int length = 0;
    out[0] = 0;
    for (const line &l : lines) {
        char count[COUNT_TEXT_SIZE];
        format_count(l.value, count);
        int written = snprintf(out + length, WINDOW_TEXT_SIZE - length, l.format, count);
        if (written > 0 && length + written < WINDOW_TEXT_SIZE)
            length += written;
    }
}

int call_count_rows(const per_proc *proc, const master *names, bool nonzero_only,
                    void (*add)(void *list, const char *row), void *list)
{
    struct group {
        const char (*names)[CALL_NAME_SIZE];
        int rows;
        const int64_t *counts;
        size_t stride; // bytes from one count to the next
    };
    const group groups[] = {
        {names->gl_names, GL_CALL_COUNT, &proc->call_control[0].count, sizeof(call_control_row)},
        {names->glu_names, GLU_CALL_COUNT, proc->glu_call_count, sizeof(int64_t)},
        {names->wgl_names, WGL_CALL_COUNT, proc->wgl_call_count, sizeof(int64_t)},
    };
    int added = 0;
    for (const group &g : groups) {
        for (int row = 0; row < g.rows; ++row) {
            int64_t count = *(const int64_t *)((const char *)g.counts + row * g.stride);
            if (nonzero_only && count == 0)
                continue;
            char value[COUNT_TEXT_SIZE], text[2 * CALL_NAME_SIZE];
            format_count(count, value);
            snprintf(text, sizeof text, "%s - %s", g.names[row], value);
            add(list, text);
            ++added;
        }
    }
    return added;
}
