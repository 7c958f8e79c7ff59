#include "state/window_info.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"

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
