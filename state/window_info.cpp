#include "state/window_info.h"

#include "gen/gl_enums.h"
#include "analysis/reports.h"
#include "gls/capture.h"

#include <cstdio>

void read_window_info(thread_record *record)
{
    per_gl *gl = record->per_gl;
    fn_glGetBooleanv get_boolean = (fn_glGetBooleanv)gls_own_call(OP_glGetBooleanv);
    fn_glGetIntegerv get_integer = (fn_glGetIntegerv)gls_own_call(OP_glGetIntegerv);
    GLboolean rgba = 0;
    get_boolean(GL_DOUBLEBUFFER, &gl->double_buffer);
    get_integer(GL_AUX_BUFFERS, &gl->aux_buffers);
    get_boolean(GL_STEREO, &gl->stereo);
    get_boolean(GL_RGBA_MODE, &rgba);
    gl->pixel_type = rgba == 1 ? GL_RGBA : GL_COLOR_INDEX;
    const GLenum accum[4] = {GL_ACCUM_RED_BITS, GL_ACCUM_GREEN_BITS, GL_ACCUM_BLUE_BITS, GL_ACCUM_ALPHA_BITS};
    for (int i = 0; i < 4; ++i)
        get_integer(accum[i], &gl->accum_bits[i]);
    get_integer(GL_INDEX_BITS, &gl->index_bits);
    const GLenum color[4] = {GL_RED_BITS, GL_GREEN_BITS, GL_BLUE_BITS, GL_ALPHA_BITS};
    for (int i = 0; i < 4; ++i)
        get_integer(color[i], &gl->color_bits[i]);
    get_integer(GL_STENCIL_BITS, &gl->stencil_bits);
    get_integer(GL_DEPTH_BITS, &gl->depth_bits);
}

void visual_info_text(const per_gl *gl, char *out)
{
    size_t used = 0;
    auto advance = [&](int written) {
        if (written > 0)
            used = used + (size_t)written < VISUAL_INFO_SIZE ? used + (size_t)written : VISUAL_INFO_SIZE - 1;
    };
    auto put = [&](const char *format, int value) { advance(snprintf(out + used, VISUAL_INFO_SIZE - used, format, value)); };
    auto word = [&](const char *text) { advance(snprintf(out + used, VISUAL_INFO_SIZE - used, "%s", text)); };
    out[0] = 0;
    word("GLX_USE_GL, ");
    if (gl->double_buffer == 1)
        word("GLX_DOUBLEBUFFER, ");
    if (gl->stereo == 1)
        word("GLX_STEREO, ");
    if (gl->aux_buffers > 0)
        put("GLX_AUX_BUFFERS, %d, ", gl->aux_buffers);
    if (gl->pixel_type != GL_RGBA) {
        put("GLX_BUFFER_SIZE, %d, ", gl->index_bits);
    } else {
        word("GLX_RGBA, ");
        put("GLX_RED_SIZE, %d, ", gl->color_bits[0]);
        put("GLX_GREEN_SIZE, %d, ", gl->color_bits[1]);
        put("GLX_BLUE_SIZE, %d, ", gl->color_bits[2]);
        if (gl->color_bits[3] > 0)
            put("GLX_ALPHA_SIZE, %d, ", gl->color_bits[3]);
        static const char *const accum[4] = {"GLX_ACCUM_RED_SIZE, %d, ", "GLX_ACCUM_GREEN_SIZE, %d, ",
                                             "GLX_ACCUM_BLUE_SIZE, %d, ", "GLX_ACCUM_ALPHA_SIZE, %d, "};
        for (int i = 0; i < 4; ++i)
            if (gl->accum_bits[i] > 0)
                put(accum[i], gl->accum_bits[i]);
    }
    if (gl->depth_bits > 0)
        put("GLX_DEPTH_SIZE, %d, ", gl->depth_bits);
    if (gl->stencil_bits > 0)
        put("GLX_STENCIL_SIZE, %d, ", gl->stencil_bits);
    word("None");
}

void log_visual_info(thread_record *record)
{
    char text[VISUAL_INFO_SIZE];
    visual_info_text(record->per_gl, text);
    info_line("Visual Info", text);
    GLint viewport[4] = {0, 0, 0, 0};
    ((fn_glGetIntegerv)gls_own_call(OP_glGetIntegerv))(GL_VIEWPORT, viewport);
    snprintf(text, sizeof text, "%d %d %d %d", viewport[0], viewport[1], viewport[2], viewport[3]);
    info_line("Viewport Info", text);
}
