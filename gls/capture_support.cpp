// Helpers of the capture functions: size tables, string fields, arrays with rules of their own,
// and the client-state shadow kept by the execute steps of the client commands.
#include "gls/capture.h"

#include "gen/commands.h"
#include "gen/gl_enums.h"
#include "gls/gls.h"
#include "gls/tables.h"
#include "gls/writer.h"

#include <cstring>

GLuint gls_pname_count(GlsSizeTable table, GLenum pname)
{
    if (table < 0 || table >= GLS_SIZE_TABLE_COUNT)
        return 0;
    for (const GlsPnameCount *row = gls_size_tables[table].rows; row->count; ++row)
        if (row->pname == pname)
            return row->count;
    return gls_size_tables[table].unknown;
}

GLuint gls_string_field_size(const GlsContext *ctx, const GLubyte *string)
{
    size_t bytes = 0;
    int width = !ctx || ctx->stringType == GLS_UCS1 ? 1 : ctx->stringType == GLS_UCS2 ? 2 : 4;
    for (const uint8_t *p = string; p; p += width) {
        uint32_t c = width == 1 ? *p : width == 2 ? *(const uint16_t *)p : *(const uint32_t *)p;
        if (c == 0)
            break;
        bytes += c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    }
    return (GLuint)((bytes + 8) & ~(size_t)3);
}

// ---------------------------------------------------------------------------------------------
// glCallLists and glDrawElements

static GLuint list_element_size(GLenum type)
{
    switch (type) {
    case GL_BYTE: case GL_UNSIGNED_BYTE: return 1;
    case GL_SHORT: case GL_UNSIGNED_SHORT: case GL_2_BYTES: return 2;
    case GL_3_BYTES: return 3;
    case GL_INT: case GL_UNSIGNED_INT: case GL_FLOAT: case GL_4_BYTES: return 4;
    default: return 0;
    }
}

uint64_t gls_call_lists_bytes(GLenum type, GLsizei n)
{
    return n > 0 ? list_element_size(type) * (uint64_t)n : 0;
}

void gls_put_call_lists(GlsWriter *w, GLenum type, GLsizei n, const void *lists)
{
    GLuint count = n > 0 && list_element_size(type) ? (GLuint)n : 0;
    switch (type) {
    case GL_BYTE: w->putGLbyteVector(w, count, lists); break;
    case GL_SHORT: w->putGLshortVector(w, count, lists); break;
    case GL_UNSIGNED_SHORT: w->putGLushortVector(w, count, lists); break;
    case GL_INT: w->putGLintVector(w, count, lists); break;
    case GL_UNSIGNED_INT: w->putGLuintVector(w, count, lists); break;
    case GL_FLOAT: w->putGLfloatVector(w, count, lists); break;
    default: w->putGLubyteVector(w, count * list_element_size(type), lists); break;
    }
}

static GLuint index_size(GLenum type)
{
    return type == GL_UNSIGNED_BYTE ? 1 : type == GL_UNSIGNED_SHORT ? 2 : type == GL_UNSIGNED_INT ? 4 : 0;
}

// No indices, no bytes: the binary form then holds an empty item of the size it announced.
uint64_t gls_index_bytes(GLenum type, GLsizei count)
{
    return count > 0 ? index_size(type) * (uint64_t)count : 0;
}

uint64_t gls_draw_elements_bytes(GLenum type, GLsizei count, const void *indices)
{
    return indices ? gls_index_bytes(type, count) : 0;
}

void gls_put_draw_elements(GlsWriter *w, GLenum type, GLsizei count, const void *indices)
{
    GLuint n = count > 0 && indices ? (GLuint)count : 0;
    switch (type) {
    case GL_UNSIGNED_BYTE: w->putGLubyteVector(w, n, indices); break;
    case GL_UNSIGNED_SHORT: w->putGLushortVector(w, n, indices); break;
    case GL_UNSIGNED_INT: w->putGLuintVector(w, n, indices); break;
    default: w->putGLubyteVector(w, 0, nullptr); break;
    }
}

// ---------------------------------------------------------------------------------------------
// Evaluator maps

// Values per control point of a map target, 0 for a target that is none.
static GLint map_values(GLenum target)
{
    // The MAP2 targets lie as far above GL_MAP2_COLOR_4 as the MAP1 targets above GL_MAP1_COLOR_4.
    GLenum base = target >= GL_MAP2_COLOR_4 ? target - (GL_MAP2_COLOR_4 - GL_MAP1_COLOR_4) : target;
    switch (base) {
    case GL_MAP1_COLOR_4: case GL_MAP1_TEXTURE_COORD_4: case GL_MAP1_VERTEX_4: return 4;
    case GL_MAP1_INDEX: case GL_MAP1_TEXTURE_COORD_1: return 1;
    case GL_MAP1_NORMAL: case GL_MAP1_TEXTURE_COORD_3: case GL_MAP1_VERTEX_3: return 3;
    case GL_MAP1_TEXTURE_COORD_2: return 2;
    default: return 0;
    }
}

static GLuint positive(GLint value) { return value > 0 ? (GLuint)value : 0; }

GlsMapLayout gls_map1_layout(GLenum target, GLint stride, GLint order)
{
    GlsMapLayout map = {};
    GLint k = target >= GL_MAP1_COLOR_4 && target <= GL_MAP1_VERTEX_4 ? map_values(target) : 0;
    if (k && stride >= k) {
        map.k = k;
        map.rowGap = (GLuint)(stride - k);
        map.ustride = k;
    } else {
        map.ustride = stride;
    }
    map.rows = positive(order);
    map.images = 1;
    map.values = (uint64_t)map.k * map.rows;
    return map;
}

GlsMapLayout gls_map2_layout(GLenum target, GLint ustride, GLint uorder, GLint vstride, GLint vorder)
{
    GlsMapLayout map = {};
    GLint k = target >= GL_MAP2_COLOR_4 && target <= GL_MAP2_VERTEX_4 ? map_values(target) : 0;
    GLuint us = positive(uorder), vs = positive(vorder);
    map.ustride = ustride;
    map.vstride = vstride;
    // Spans in 64 bits: strides and orders come from the application, and may be anything.
    int64_t vspan = (int64_t)vstride * vorder, uspan = (int64_t)ustride * uorder;
    // A map of no positive order has no points to lay out.
    bool tight_v = vorder > 0 && (int64_t)k * vorder <= INT32_MAX;
    bool tight_u = uorder > 0 && (int64_t)k * uorder <= INT32_MAX;
    if (k && tight_v && vstride >= k && ustride >= vspan) {
        // v runs fastest: each u is an image of vorder rows.
        map.k = k;
        map.rowGap = (GLuint)(vstride - k);
        map.rows = vs;
        map.imageGap = (GLuint)(ustride - vspan);
        map.images = us;
        map.vstride = k;
        map.ustride = k * vorder;
    } else if (k && tight_u && ustride >= k && vstride >= uspan) {
        map.k = k;
        map.rowGap = (GLuint)(ustride - k);
        map.rows = us;
        map.imageGap = (GLuint)(vstride - uspan);
        map.images = vs;
        map.ustride = k;
        map.vstride = k * uorder;
    }
    map.values = (uint64_t)map.k * map.rows * map.images;
    return map;
}

uint64_t gls_map_span(const GlsMapLayout *map)
{
    if (map->k == 0 || map->rows == 0 || map->images == 0)
        return 0;
    uint64_t row = (uint64_t)map->k + map->rowGap, image = row * map->rows + map->imageGap;
    return image * map->images - map->imageGap - map->rowGap;
}

void gls_put_map_points(GlsWriter *w, const GlsMapLayout *map, int valueSize, const void *points)
{
    bool tight = map->rowGap == 0 && map->imageGap == 0;
    if (valueSize == 8) {
        if (tight || map->k == 0)
            w->putGLdoubleVector(w, (GLuint)map->values, points);
        else
            w->putGLdoubleImage(w, 0, (GLuint)map->k, map->rowGap * 8, map->rows, map->imageGap * 8,
                                map->images, 0, 1, points);
    } else {
        if (tight || map->k == 0)
            w->putGLfloatVector(w, (GLuint)map->values, points);
        else
            w->putGLfloatImage(w, 0, (GLuint)map->k, map->rowGap * 4, map->rows, map->imageGap * 4,
                               map->images, 0, 1, points);
    }
}

// ---------------------------------------------------------------------------------------------
// Client-state shadow: kept always, and GL is called too when there is a GL context.

bool gls_have_gl_context(GlsContext *ctx)
{
    if (ctx->glInfo.haveGlContext == -1) {
        GLint value = 0;
        CALL_GL(ctx, glGetIntegerv, GL_MAX_LIGHTS, &value);
        ctx->glInfo.haveGlContext = value != 0;
    }
    return ctx->glInfo.haveGlContext != 0;
}

GLint gls_gl_integer(GlsContext *ctx, GLenum pname)
{
    GLint value = 0;
    CALL_GL(ctx, glGetIntegerv, pname, &value);
    return value;
}

GLboolean gls_gl_is_enabled(GlsContext *ctx, GLenum cap)
{
    int token = enterDirectCall(ctx, OP_glIsEnabled);
    GLboolean enabled = ((fn_glIsEnabled)gls_default_dispatch[OP_glIsEnabled])(cap);
    leaveDirectCall(ctx, OP_glIsEnabled, token);
    return enabled;
}

const void *gls_gl_pointer(GlsContext *ctx, GLenum pname)
{
    void *pointer = nullptr;
    CALL_GL(ctx, glGetPointerv, pname, &pointer);
    return pointer;
}

static const GLubyte *gl_string(GlsContext *ctx, GLenum name)
{
    int token = enterDirectCall(ctx, OP_glGetString);
    const GLubyte *text = ((fn_glGetString)gls_default_dispatch[OP_glGetString])(name);
    leaveDirectCall(ctx, OP_glGetString, token);
    return text;
}

static int leading_number(const char *text)
{
    int value = 0;
    for (; *text >= '0' && *text <= '9' && value < 1000; ++text)
        value = value * 10 + (*text - '0');
    return value;
}

// The version splits at the first full stop; with no context (or no answer) it counts as 1.1.
bool gls_gl_version_at_least(GlsContext *ctx, int major, int minor)
{
    GlsGlInfo *info = &ctx->glInfo;
    if (info->glVersionMajor == -1) {
        const char *text = gls_have_gl_context(ctx) ? (const char *)gl_string(ctx, GL_VERSION) : nullptr;
        const char *point = text ? strchr(text, '.') : nullptr;
        info->glVersionMajor = point ? leading_number(text) : 1;
        info->glVersionMinor = point ? leading_number(point + 1) : 1;
    }
    return info->glVersionMajor > major || (info->glVersionMajor == major && info->glVersionMinor >= minor);
}

// A name of the extension string, whole: "GL_EXT_texture3D" is not "GL_EXT_texture".
static bool has_extension(const char *list, const char *name)
{
    size_t length = strlen(name);
    for (const char *p = list; p && (p = strstr(p, name)); p += length) {
        bool starts = p == list || p[-1] == ' ';
        bool ends = p[length] == 0 || p[length] == ' ';
        if (starts && ends)
            return true;
    }
    return false;
}

// GL 1.2 made the 3D unpack parameters core; before it they come with GL_EXT_texture3D.
bool gls_have_texture_3d(GlsContext *ctx)
{
    GlsGlInfo *info = &ctx->glInfo;
    if (info->extTexture3D == -1) {
        if (!gls_have_gl_context(ctx))
            info->extTexture3D = 0;
        else
            info->extTexture3D = gls_gl_version_at_least(ctx, 1, 2) ||
                                 has_extension((const char *)gl_string(ctx, GL_EXTENSIONS), "GL_EXT_texture3D");
    }
    return info->extTexture3D != 0;
}

// GL refuses a negative stride or count and a size outside 1 to 4, and keeps what it had.
static void keep_array(GlsClientArray *array, GLint size, GLenum type, GLsizei stride, const void *pointer, GLsizei count)
{
    if (stride < 0 || count < 0 || size < 1 || size > 4)
        return;
    array->size = size;
    array->type = type;
    array->stride = stride;
    array->pointer = pointer;
    array->count = count;
}

static GlsClientArray *texture_array(GlsContext *ctx)
{
    GLint unit = ctx->clientState.activeTexture;
    return &ctx->clientState.texCoordArray[unit >= 0 && unit < GLS_TEXTURE_UNITS ? unit : 0];
}

void shadow_glColorPointer(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.colorArray, size, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glColorPointer, size, type, stride, pointer);
}

void shadow_glColorPointerEXT(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.colorArray, size, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glColorPointerEXT, size, type, stride, count, pointer);
}

void shadow_glVertexPointer(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.vertexArray, size, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glVertexPointer, size, type, stride, pointer);
}

void shadow_glVertexPointerEXT(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.vertexArray, size, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glVertexPointerEXT, size, type, stride, count, pointer);
}

void shadow_glTexCoordPointer(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(texture_array(ctx), size, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glTexCoordPointer, size, type, stride, pointer);
}

void shadow_glTexCoordPointerEXT(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(texture_array(ctx), size, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glTexCoordPointerEXT, size, type, stride, count, pointer);
}

void shadow_glNormalPointer(GlsContext *ctx, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.normalArray, 3, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glNormalPointer, type, stride, pointer);
}

void shadow_glNormalPointerEXT(GlsContext *ctx, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.normalArray, 3, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glNormalPointerEXT, type, stride, count, pointer);
}

void shadow_glIndexPointer(GlsContext *ctx, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.indexArray, 1, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glIndexPointer, type, stride, pointer);
}

void shadow_glIndexPointerEXT(GlsContext *ctx, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.indexArray, 1, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glIndexPointerEXT, type, stride, count, pointer);
}

void shadow_glEdgeFlagPointer(GlsContext *ctx, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.edgeFlagArray, 1, GL_UNSIGNED_BYTE, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glEdgeFlagPointer, stride, pointer);
}

void shadow_glEdgeFlagPointerEXT(GlsContext *ctx, GLsizei stride, GLsizei count, const GLboolean *pointer)
{
    keep_array(&ctx->clientState.edgeFlagArray, 1, GL_UNSIGNED_BYTE, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glEdgeFlagPointerEXT, stride, count, pointer);
}

// The array an enable names.
static GlsClientArray *array_of_cap(GlsContext *ctx, GLenum cap)
{
    switch (cap) {
    case GL_VERTEX_ARRAY: return &ctx->clientState.vertexArray;
    case GL_NORMAL_ARRAY: return &ctx->clientState.normalArray;
    case GL_COLOR_ARRAY: return &ctx->clientState.colorArray;
    case GL_INDEX_ARRAY: return &ctx->clientState.indexArray;
    case GL_TEXTURE_COORD_ARRAY: return texture_array(ctx);
    case GL_EDGE_FLAG_ARRAY: return &ctx->clientState.edgeFlagArray;
    default: return nullptr;
    }
}

void shadow_glEnableClientState(GlsContext *ctx, GLenum array)
{
    if (GlsClientArray *record = array_of_cap(ctx, array))
        record->enabled = 1;
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glEnableClientState, array);
}

void shadow_glDisableClientState(GlsContext *ctx, GLenum array)
{
    if (GlsClientArray *record = array_of_cap(ctx, array))
        record->enabled = 0;
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glDisableClientState, array);
}

// Pixel store: the unpack and pack parameters, with the image height and skip images of 3D
// textures.
// Values GL refuses (a negative length or skip, an alignment other than 1, 2, 4, 8) leave the
// store as it was.
void gls_keep_pixel_store(GlsContext *ctx, GLenum pname, GLint value)
{
    GlsPixelStore *unpack = &ctx->clientState.unpack, *pack = &ctx->clientState.pack;
    bool alignment = pname == GL_UNPACK_ALIGNMENT || pname == GL_PACK_ALIGNMENT;
    if (value < 0 || (alignment && value != 1 && value != 2 && value != 4 && value != 8))
        return;
    switch (pname) {
    case GL_UNPACK_SWAP_BYTES: unpack->swapBytes = value; break;
    case GL_UNPACK_LSB_FIRST: unpack->lsbFirst = value; break;
    case GL_UNPACK_ROW_LENGTH: unpack->rowLength = value; break;
    case GL_UNPACK_SKIP_ROWS: unpack->skipRows = value; break;
    case GL_UNPACK_SKIP_PIXELS: unpack->skipPixels = value; break;
    case GL_UNPACK_ALIGNMENT: unpack->alignment = value; break;
    case GL_UNPACK_SKIP_IMAGES_EXT: unpack->skipImages = value; break;
    case GL_UNPACK_IMAGE_HEIGHT_EXT: unpack->imageHeight = value; break;
    case GL_PACK_SWAP_BYTES: pack->swapBytes = value; break;
    case GL_PACK_LSB_FIRST: pack->lsbFirst = value; break;
    case GL_PACK_ROW_LENGTH: pack->rowLength = value; break;
    case GL_PACK_SKIP_ROWS: pack->skipRows = value; break;
    case GL_PACK_SKIP_PIXELS: pack->skipPixels = value; break;
    case GL_PACK_ALIGNMENT: pack->alignment = value; break;
    case GL_PACK_SKIP_IMAGES_EXT: pack->skipImages = value; break;
    case GL_PACK_IMAGE_HEIGHT_EXT: pack->imageHeight = value; break;
    default: break;
    }
}

void shadow_glPixelStoref(GlsContext *ctx, GLenum pname, GLfloat param)
{
    // Any float may come: one beyond an int's range is kept at its end, NaN as 0.
    GLint value = param != param             ? 0
                  : param >= 2147483648.0f   ? INT32_MAX
                  : param <= -2147483648.0f  ? INT32_MIN
                                             : (GLint)param;
    gls_keep_pixel_store(ctx, pname, value);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glPixelStoref, pname, param);
}

void shadow_glPixelStorei(GlsContext *ctx, GLenum pname, GLint param)
{
    gls_keep_pixel_store(ctx, pname, param);
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glPixelStorei, pname, param);
}

// Feedback and selection buffers: the real call with a GL context, else kept in the shadow.
void shadow_glFeedbackBuffer(GlsContext *ctx, GLsizei size, GLenum type, GLfloat *buffer)
{
    if (gls_have_gl_context(ctx)) {
        CALL_GL(ctx, glFeedbackBuffer, size, type, buffer);
    } else if (size >= 0 && type >= GL_2D && type <= GL_4D_COLOR_TEXTURE) {
        ctx->clientState.feedbackBufferSize = size;
        ctx->clientState.feedbackBufferType = type;
        ctx->clientState.feedbackBuffer = buffer;
    }
}

void shadow_glSelectBuffer(GlsContext *ctx, GLsizei size, GLuint *buffer)
{
    if (gls_have_gl_context(ctx)) {
        CALL_GL(ctx, glSelectBuffer, size, buffer);
    } else if (size >= 0) {
        ctx->clientState.selectBufferSize = size;
        ctx->clientState.selectBuffer = buffer;
    }
}

GlsFunc gls_own_call(int opcode)
{
    glsCaptureFlags(opcode, GLS_CAPTURE_EXECUTE_BIT);
    return gls_default_capture[opcode];
}
