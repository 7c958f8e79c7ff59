// The after-call hooks of the wrappers: they run behind the real call and the counting, and see
// the GL state the call left behind. A skipped call reaches none of them.
#include "gen/hooks.h"

#include "analysis/counters.h"
#include "analysis/reports.h"
#include "gen/gl_enums.h"
#include "gls/gls.h"
#include "recording/history.h"
#include "recording/lists.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>

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

// The address the application passed for a small vector: it tells one array from another.
void hook_data_address(thread_record *record, const void *data)
{
    if (record->per_proc->History == 0 || record->per_proc->show_data_address != 1)
        return;
    char line[64];
    snprintf(line, sizeof line, "- data at memory location 0x%0*" PRIXPTR ".", (int)(2 * sizeof data), (uintptr_t)data);
    info_line("Info", line);
}

void hook_vertex(thread_record *record, const void *v)
{
    record->per_gl->vertex_count += 1;
    if (record->per_gl->in_begin_end == 0)
        usage_warning(record, "Not called between glBegin/glEnd.");
    hook_data_address(record, v);
}

// No test of glBegin/glEnd here: the evaluators are not checked for their place.
void hook_eval_coord(thread_record *record, const void *u)
{
    record->per_gl->vertex_count += 1;
    hook_data_address(record, u);
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

void hook_glBlendFunc(thread_record *record, GLenum sfactor, GLenum dfactor)
{
    if (record->per_gl->in_begin_end == 1)
        usage_warning(record, "Should not be called between glBegin/glEnd.");
    // The alpha planes of the context when it was first seen; GL_SRC_ALPHA_SATURATE is a source
    // factor only.
    bool needs_alpha = sfactor == GL_DST_ALPHA || sfactor == GL_ONE_MINUS_DST_ALPHA ||
                       sfactor == GL_SRC_ALPHA_SATURATE || dfactor == GL_DST_ALPHA ||
                       dfactor == GL_ONE_MINUS_DST_ALPHA;
    if (record->per_gl->color_bits[3] == 0 && needs_alpha)
        usage_warning(record, "Function requires alpha planes.");
}

// Lighting and dithering as the application switches them; a glPopAttrib or a list that does so
// is not followed.
void hook_glEnable(thread_record *record, GLenum cap)
{
    per_gl *gl = record->per_gl;
    if (cap == GL_LIGHTING)
        gl->lighting_on = 1;
    else if (cap == GL_DITHER)
        gl->dither_on = 1;
    else if (cap == GL_NORMALIZE && hint_address(record->per_proc))
        info_line("Info", "- Provide unit-length normals if it is possible and leave GL_NORMALIZE off.");
}

void hook_glDisable(thread_record *record, GLenum cap)
{
    if (cap == GL_LIGHTING)
        record->per_gl->lighting_on = 0;
    else if (cap == GL_DITHER)
        record->per_gl->dither_on = 0;
}

// "Once per frame" is judged from the alternation of glClear with glFlush or glFinish; the
// counts go on while the gate is closed.
void hook_glClear(thread_record *record, GLbitfield)
{
    per_gl *gl = record->per_gl;
    gl->clear_count += 1;
    if (hint_strict(record->per_proc)) {
        if (gl->flush_count >= 2)
            info_line("Info", "- Flush the graphics pipe once per frame if possible.");
        if (gl->dither_on == 1)
            info_line("Info", "- Do not enable GL_DITHER for glClear.");
    }
    gl->flush_count = 0;
}

static void flush_ended(thread_record *record)
{
    per_gl *gl = record->per_gl;
    glsFlush();
    if (hint_strict(record->per_proc) && gl->clear_count >= 2)
        info_line("Info", "- Use one glClear per frame if possible.");
    gl->clear_count = 0;
}

// Both make the files on disk complete up to the application's flush, each in its own order.
void hook_glFinish(thread_record *record)
{
    per_gl *gl = record->per_gl;
    gl->flush_count += 1;
    if (gl->list_calls_file)
        fflush(gl->list_calls_file);
    history_flush(gl);
    flush_ended(record);
}

void hook_glFlush(thread_record *record)
{
    per_gl *gl = record->per_gl;
    gl->flush_count += 1;
    history_flush(gl);
    if (gl->list_calls_file)
        fflush(gl->list_calls_file);
    flush_ended(record);
}

static const char directional_lights[] = "- directional lights (w = 0) are more efficient on many platforms.";

void hook_glLightfv(thread_record *record, GLenum, GLenum pname, const GLfloat *params)
{
    // Neither 0 nor unordered: 0.0, -0.0 and NaN give no hint.
    if (hint_loose(record->per_proc) && pname == GL_POSITION && (double)params[3] != 0 && !std::isnan(params[3]))
        info_line("Info", directional_lights);
}

void hook_glLightiv(thread_record *record, GLenum, GLenum pname, const GLint *params)
{
    if (hint_loose(record->per_proc) && pname == GL_POSITION && params[3] != 0)
        info_line("Info", directional_lights);
}

static void once_lighting_is_on(thread_record *record, const char *text)
{
    if (hint_loose(record->per_proc) && record->per_gl->lighting_on == 1)
        info_line("Info", text);
}

static const char lighting_first[] = "For best performance, set up lighting parameters first, then enable lighting.";
static const char material_first[] = "For best performance, set up material parameters first, then enable lighting.";

void hook_glLightModelf(thread_record *record, GLenum, GLfloat) { once_lighting_is_on(record, lighting_first); }
void hook_glLightModelfv(thread_record *record, GLenum, const GLfloat *) { once_lighting_is_on(record, lighting_first); }
void hook_glLightModeli(thread_record *record, GLenum, GLint) { once_lighting_is_on(record, lighting_first); }
void hook_glLightModeliv(thread_record *record, GLenum, const GLint *) { once_lighting_is_on(record, lighting_first); }
void hook_glMaterialf(thread_record *record, GLenum, GLenum, GLfloat) { once_lighting_is_on(record, material_first); }
void hook_glMaterialfv(thread_record *record, GLenum, GLenum, const GLfloat *)
{
    once_lighting_is_on(record, material_first);
}
void hook_glMateriali(thread_record *record, GLenum, GLenum, GLint) { once_lighting_is_on(record, material_first); }
void hook_glMaterialiv(thread_record *record, GLenum, GLenum, const GLint *)
{
    once_lighting_is_on(record, material_first);
}

static const char scale_with_lighting[] = "- Avoid using glScale when doing lighting because it almost always requires that "
                                          "normals be renormalized, even if the x, y, and z scale factors are uniform.";

void hook_glScaled(thread_record *record, GLdouble, GLdouble, GLdouble) { once_lighting_is_on(record, scale_with_lighting); }
void hook_glScalef(thread_record *record, GLfloat, GLfloat, GLfloat) { once_lighting_is_on(record, scale_with_lighting); }

void hook_glLineStipple(thread_record *record, GLint, GLushort pattern)
{
    // Under the address gate: the hint comes and goes with "Show Data Memory Address".
    if (hint_address(record->per_proc) && pattern == 0xFFFF)
        info_line("Info", "- Do not use line stippling with a stipple pattern of 0xFFFF.");
}

void hook_glPolygonStipple(thread_record *record, const GLubyte *mask)
{
    if (!hint_loose(record->per_proc))
        return;
    for (int i = 0; i < 128; ++i)
        if (mask[i] < 255)
            return;
    info_line("Info", "- Do not use polygon stippling with a stipple pattern of all 0xFF.");
}

// The patterns of the matrix hints, column after column; -1 stands for any value.
static const double identity_matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
static const double scale_pattern[16] = {-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
static const double translation_pattern[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -1, -1, 1};

// Equal or unordered, after widening: a NaN passes as equal, and -0.0 equals 0.0.
static bool alike(double pattern, double value) { return !(value < pattern || value > pattern); }

// The identity by its bytes, then the two patterns with one match flag that only the first sets.
// The second pattern is tried only when the first failed and nothing sets the flag again, so a
// translation is never named: the order of the steps is what is asked for.
template <typename T> static void matrix_hints(thread_record *record, const T *m)
{
    if (!hint_loose(record->per_proc))
        return;
    T identity[16];
    for (int i = 0; i < 16; ++i)
        identity[i] = (T)identity_matrix[i];
    if (memcmp(m, identity, sizeof identity) == 0) {
        info_line("Info", "- Use glLoadIdentity rather than loading the identity matrix with glLoadMatrix.");
        return;
    }
    bool match = true;
    for (int i = 0; i < 16 && match; ++i)
        if ((scale_pattern[i] == 0 || scale_pattern[i] == 1) && !alike(scale_pattern[i], (double)m[i]))
            match = false;
    if (match) {
        info_line("Info", "- Use glScale instead of calling glLoadMatrix with your own scaling matrix.");
        return;
    }
    for (int i = 0; i < 16 && match; ++i)
        if ((translation_pattern[i] == 0 || translation_pattern[i] == 1) && !alike(translation_pattern[i], (double)m[i]))
            match = false;
    if (match)
        info_line("Info", "- Use glTranslate instead of calling glLoadMatrix with your own translation matrix.");
}

void hook_glLoadMatrixf(thread_record *record, const GLfloat *m) { matrix_hints(record, m); }
void hook_glLoadMatrixd(thread_record *record, const GLdouble *m) { matrix_hints(record, m); }

// Display lists: the rows of the session's lists follow what the application asks, whether GL
// took the call or not; a use of a list that no row knows is a warning.
void hook_glGenLists(thread_record *record, GLsizei range) { list_on_gen(record, range); }
void hook_glNewList(thread_record *record, GLuint list, GLenum) { list_on_new(record, list); }
void hook_glEndList(thread_record *record) { list_on_end(record); }
void hook_glDeleteLists(thread_record *record, GLuint list, GLsizei range) { list_on_delete(record, list, range); }
void hook_glListBase(thread_record *record, GLuint base) { list_on_base(record, base); }

void hook_glCallList(thread_record *record, GLuint list)
{
    if (!list_on_call(record, list))
        usage_warning(record, "Display list not valid.");
}

void hook_glCallLists(thread_record *record, GLsizei n, GLenum type, const void *lists)
{
    for (int invalid = list_on_call_many(record, n, type, lists); invalid > 0; --invalid)
        usage_warning(record, "Display list not valid.");
}
