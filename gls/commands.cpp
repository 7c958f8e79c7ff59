// Execute functions of the codec's own commands (opcodes 16 to 45).
#include "gen/commands.h"

#include "gls/gls.h"
#include "gls/gls_string.h"
#include "gls/tables.h"

#include <cstring>

static GlsContext *context_or_error()
{
    GlsContext *ctx = gls_current();
    if (!ctx)
        gls_set_error(GLS_STATE_ERROR);
    return ctx;
}

void GLS_APIENTRY execute_glsBeginGLS(GLint, GLint) {}
void GLS_APIENTRY execute_glsEndGLS(void) {}
void GLS_APIENTRY execute_glsBeginObj(const GLubyte *) {}
void GLS_APIENTRY execute_glsComment(const GLubyte *) {}
void GLS_APIENTRY execute_glsEndObj(void) {}
void GLS_APIENTRY execute_glsNumbv(const GLubyte *, GLuint, const GLbyte *) {}
void GLS_APIENTRY execute_glsNumd(const GLubyte *, GLdouble) {}
void GLS_APIENTRY execute_glsNumdv(const GLubyte *, GLuint, const GLdouble *) {}
void GLS_APIENTRY execute_glsNumf(const GLubyte *, GLfloat) {}
void GLS_APIENTRY execute_glsNumfv(const GLubyte *, GLuint, const GLfloat *) {}
void GLS_APIENTRY execute_glsNumi(const GLubyte *, GLint) {}
void GLS_APIENTRY execute_glsNumiv(const GLubyte *, GLuint, const GLint *) {}
void GLS_APIENTRY execute_glsNuml(const GLubyte *, GLlong) {}
void GLS_APIENTRY execute_glsNumlv(const GLubyte *, GLuint, const GLlong *) {}
void GLS_APIENTRY execute_glsNumsv(const GLubyte *, GLuint, const GLshort *) {}
void GLS_APIENTRY execute_glsPad(void) {}
void GLS_APIENTRY execute_glsString(const GLubyte *, const GLubyte *) {}
void GLS_APIENTRY execute_glsSwapBuffers(void) {}

void GLS_APIENTRY execute_glsBlock(GLSenum inBlockType)
{
    GlsContext *ctx = context_or_error();
    if (!ctx)
        return;
    switch (inBlockType) {
    case GLS_HEADER:
        gls_reset_header(&ctx->header);
        ctx->blockType = inBlockType;
        break;
    case GLS_FRAME:
    case GLS_INIT:
    case GLS_STATIC:
        ctx->blockType = inBlockType;
        break;
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
    }
}

void GLS_APIENTRY execute_glsError(GLSopcode inOpcode, GLSenum inError)
{
    // Opcode 0 is a fault of the stream itself: a statement without a command name.
    if (inOpcode != 0 && !gls_opcode_exists(inOpcode)) {
        gls_set_error(GLS_UNSUPPORTED_COMMAND);
        return;
    }
    // 135 is refused on purpose: a stream cannot claim GLS_UNSUPPORTED_VERSION this way.
    if (inError < GLS_DECODE_ERROR || inError > GLS_UNSUPPORTED_EXTENSION) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    gls_set_error(inError);
}

// Header values count only inside a header block.
static GlsHeader *header_in_block()
{
    GlsContext *ctx = context_or_error();
    if (!ctx)
        return nullptr;
    if (ctx->blockType != GLS_HEADER) {
        gls_set_error(GLS_STATE_ERROR);
        return nullptr;
    }
    return &ctx->header;
}

static GLfloat positive_or_zero(GLfloat value) { return value > 0 ? value : 0; }
static GLint positive_or_zero(GLint value) { return value > 0 ? value : 0; }

void GLS_APIENTRY execute_glsHeaderc(GLSenum inAttrib, const GLubyte *inString)
{
    GlsHeader *header = header_in_block();
    if (!header)
        return;
    GlsString *target = inAttrib == GLS_AUTHOR ? &header->author
                        : inAttrib == GLS_TITLE ? &header->title
                        : inAttrib == GLS_VERSION ? &header->version : nullptr;
    if (!target) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    gls_string_set(target, (const char *)inString);
}

void GLS_APIENTRY execute_glsHeaderf(GLSenum inAttrib, GLfloat inVal)
{
    GlsHeader *header = header_in_block();
    if (!header)
        return;
    if (inAttrib == GLS_ASPECT)
        header->aspect = positive_or_zero(inVal);
    else if (inAttrib == GLS_CONTRAST)
        header->contrast = positive_or_zero(inVal);
    else
        gls_set_error(GLS_PARAMETER_ERROR);
}

void GLS_APIENTRY execute_glsHeaderfv(GLSenum inAttrib, const GLfloat *inVec)
{
    GlsHeader *header = header_in_block();
    if (!header)
        return;
    if (!inVec) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    GLfloat *target = nullptr;
    int count = 2;
    switch (inAttrib) {
    case GLS_GAMMA: target = header->gamma; count = 4; break;
    case GLS_RED_POINT: target = header->redPoint; break;
    case GLS_GREEN_POINT: target = header->greenPoint; break;
    case GLS_BLUE_POINT: target = header->bluePoint; break;
    case GLS_WHITE_POINT: target = header->whitePoint; break;
    case GLS_ASPECT: target = &header->aspect; count = 1; break;
    case GLS_CONTRAST: target = &header->contrast; count = 1; break;
    default:
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    // A stream hands its vector where it lies, aligned or not.
    for (int i = 0; i < count; ++i) {
        GLfloat value;
        memcpy(&value, inVec + i, sizeof value);
        target[i] = positive_or_zero(value);
    }
}

GLint *gls_header_int(GlsHeader *header, GLSenum attrib)
{
    switch (attrib) {
    case GLS_ACCUM_RED_BITS: return &header->accumRedBits;
    case GLS_ACCUM_GREEN_BITS: return &header->accumGreenBits;
    case GLS_ACCUM_BLUE_BITS: return &header->accumBlueBits;
    case GLS_ACCUM_ALPHA_BITS: return &header->accumAlphaBits;
    case GLS_AUX_BUFFERS: return &header->auxBuffers;
    case GLS_COLOR_RED_BITS: return &header->colorRedBits;
    case GLS_COLOR_GREEN_BITS: return &header->colorGreenBits;
    case GLS_COLOR_BLUE_BITS: return &header->colorBlueBits;
    case GLS_COLOR_ALPHA_BITS: return &header->colorAlphaBits;
    case GLS_DEPTH_BITS: return &header->depthBits;
    case GLS_DOUBLEBUFFER: return &header->doubleBuffer;
    case GLS_HEIGHT: return &header->height;
    case GLS_INDEX_BITS: return &header->indexBits;
    case GLS_RGBA_MODE: return &header->rgbaMode;
    case GLS_STENCIL_BITS: return &header->stencilBits;
    case GLS_STEREO: return &header->stereo;
    case GLS_TILEABLE: return &header->tileable;
    default: return nullptr;
    }
}

static bool header_is_flag(GLSenum attrib)
{
    return attrib == GLS_DOUBLEBUFFER || attrib == GLS_RGBA_MODE || attrib == GLS_STEREO ||
           attrib == GLS_TILEABLE;
}

void GLS_APIENTRY execute_glsHeaderi(GLSenum inAttrib, GLint inVal)
{
    GlsHeader *header = header_in_block();
    if (!header)
        return;
    GLint *target = gls_header_int(header, inAttrib);
    if (!target) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    *target = header_is_flag(inAttrib) ? (inVal != 0) : positive_or_zero(inVal);
}

void GLS_APIENTRY execute_glsHeaderiv(GLSenum inAttrib, const GLint *inVec)
{
    GlsHeader *header = header_in_block();
    if (!header)
        return;
    if (!inVec) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    if (inAttrib == GLS_CREATE_TIME) {
        for (int i = 0; i < 6; ++i) {
            GLint value;
            memcpy(&value, inVec + i, sizeof value);
            header->createTime[i] = positive_or_zero(value);
        }
        return;
    }
    GLint *target = gls_header_int(header, inAttrib);
    if (!target) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    GLint value;
    memcpy(&value, inVec, sizeof value);
    *target = header_is_flag(inAttrib) ? (value != 0) : positive_or_zero(value);
}

void GLS_APIENTRY execute_glsRequireExtension(const GLubyte *inExtension)
{
    if (!gls_extension_supported((const char *)inExtension))
        gls_set_error(GLS_UNSUPPORTED_EXTENSION);
}

void GLS_APIENTRY execute_glsRequireVersion(GLSenum inAPI, GLint inMajor, GLint inMinor)
{
    if (!gls_version_supported(inAPI, inMajor, inMinor))
        gls_set_error(GLS_UNSUPPORTED_VERSION);
}

void GLS_APIENTRY execute_glsUnsupportedCommand(const GLubyte *)
{
    gls_set_error(GLS_UNSUPPORTED_COMMAND);
}

// Stream reading and vertex-array drawing are reached through these seams.
GLSenum GLS_APIENTRY execute_glsCallStream(const GLubyte *inName)
{
    return gls_call_stream(inName);
}

void GLS_APIENTRY execute_glsDrawVertexArray(GLenum inMode, GLenum inFormat, GLint inCount, const GLvoid *inData)
{
    gls_draw_vertex_array(inMode, inFormat, inCount, inData);
}
