// Helpers of the capture functions: size tables, string fields, arrays with rules of their own,
// and the client-state shadow kept by the execute steps of the client commands.
#include "gls/capture.h"

#include "gen/commands.h"
#include "gls/gls.h"
#include "gls/tables.h"
#include "gls/writer.h"

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
    case 0x1400: case 0x1401: return 1;          // GL_BYTE, GL_UNSIGNED_BYTE
    case 0x1402: case 0x1403: case 0x1407: return 2; // GL_SHORT, GL_UNSIGNED_SHORT, GL_2_BYTES
    case 0x1408: return 3;                       // GL_3_BYTES
    case 0x1404: case 0x1405: case 0x1406: case 0x1409: return 4; // INT, UNSIGNED_INT, FLOAT, 4_BYTES
    default: return 0;
    }
}

GLuint gls_call_lists_bytes(GLenum type, GLsizei n)
{
    return n > 0 ? list_element_size(type) * (GLuint)n : 0;
}

void gls_put_call_lists(GlsWriter *w, GLenum type, GLsizei n, const void *lists)
{
    GLuint count = n > 0 && list_element_size(type) ? (GLuint)n : 0;
    switch (type) {
    case 0x1400: w->putGLbyteVector(w, count, lists); break;
    case 0x1402: w->putGLshortVector(w, count, lists); break;
    case 0x1403: w->putGLushortVector(w, count, lists); break;
    case 0x1404: w->putGLintVector(w, count, lists); break;
    case 0x1405: w->putGLuintVector(w, count, lists); break;
    case 0x1406: w->putGLfloatVector(w, count, lists); break;
    default: w->putGLubyteVector(w, count * list_element_size(type), lists); break;
    }
}

static GLuint index_size(GLenum type)
{
    return type == 0x1401 ? 1 : type == 0x1403 ? 2 : type == 0x1405 ? 4 : 0;
}

GLuint gls_draw_elements_bytes(GLenum type, GLsizei count)
{
    return count > 0 ? index_size(type) * (GLuint)count : 0;
}

void gls_put_draw_elements(GlsWriter *w, GLenum type, GLsizei count, const void *indices)
{
    GLuint n = count > 0 ? (GLuint)count : 0;
    switch (type) {
    case 0x1401: w->putGLubyteVector(w, n, indices); break;
    case 0x1403: w->putGLushortVector(w, n, indices); break;
    case 0x1405: w->putGLuintVector(w, n, indices); break;
    default: w->putGLubyteVector(w, 0, nullptr); break;
    }
}

// ---------------------------------------------------------------------------------------------
// Evaluator maps

// Values per control point of a map target, 0 for a target that is none.
static GLint map_values(GLenum target)
{
    GLenum base = target >= 0x0DB0 ? target - 32 : target; // MAP2 targets lie 32 above MAP1
    switch (base) {
    case 0x0D90: case 0x0D96: case 0x0D98: return 4; // COLOR_4, TEXTURE_COORD_4, VERTEX_4
    case 0x0D91: case 0x0D93: return 1;              // INDEX, TEXTURE_COORD_1
    case 0x0D92: case 0x0D95: case 0x0D97: return 3; // NORMAL, TEXTURE_COORD_3, VERTEX_3
    case 0x0D94: return 2;                           // TEXTURE_COORD_2
    default: return 0;
    }
}

static GLuint positive(GLint value) { return value > 0 ? (GLuint)value : 0; }

GlsMapLayout gls_map1_layout(GLenum target, GLint stride, GLint order)
{
    GlsMapLayout map = {};
    GLint k = target >= 0x0D90 && target <= 0x0D98 ? map_values(target) : 0;
    if (k && stride >= k) {
        map.k = k;
        map.rowGap = (GLuint)(stride - k);
        map.ustride = k;
    } else {
        map.ustride = stride;
    }
    map.rows = positive(order);
    map.images = 1;
    map.values = (GLuint)map.k * map.rows;
    return map;
}

GlsMapLayout gls_map2_layout(GLenum target, GLint ustride, GLint uorder, GLint vstride, GLint vorder)
{
    GlsMapLayout map = {};
    GLint k = target >= 0x0DB0 && target <= 0x0DB8 ? map_values(target) : 0;
    GLuint us = positive(uorder), vs = positive(vorder);
    map.ustride = ustride;
    map.vstride = vstride;
    if (k && vstride >= k && ustride >= vstride * vorder) {
        // v runs fastest: each u is an image of vorder rows.
        map.k = k;
        map.rowGap = (GLuint)(vstride - k);
        map.rows = vs;
        map.imageGap = (GLuint)(ustride - vstride * vorder);
        map.images = us;
        map.vstride = k;
        map.ustride = k * vorder;
    } else if (k && ustride >= k && vstride >= ustride * uorder) {
        map.k = k;
        map.rowGap = (GLuint)(ustride - k);
        map.rows = us;
        map.imageGap = (GLuint)(vstride - ustride * uorder);
        map.images = vs;
        map.ustride = k;
        map.vstride = k * uorder;
    }
    map.values = (GLuint)map.k * map.rows * map.images;
    return map;
}

void gls_put_map_points(GlsWriter *w, const GlsMapLayout *map, int valueSize, const void *points)
{
    bool tight = map->rowGap == 0 && map->imageGap == 0;
    if (valueSize == 8) {
        if (tight || map->k == 0)
            w->putGLdoubleVector(w, map->values, points);
        else
            w->putGLdoubleImage(w, 0, (GLuint)map->k, map->rowGap * 8, map->rows, map->imageGap * 8,
                                map->images, 0, 1, points);
    } else {
        if (tight || map->k == 0)
            w->putGLfloatVector(w, map->values, points);
        else
            w->putGLfloatImage(w, 0, (GLuint)map->k, map->rowGap * 4, map->rows, map->imageGap * 4,
                               map->images, 0, 1, points);
    }
}

// Stride of a row of the interleaved formats GL_V2F (10784) to GL_T4F_C4F_N3F_V4F (10797).
static const GLuint interleaved_strides[14] = {8, 12, 12, 16, 24, 24, 40, 20, 32, 24, 32, 32, 48, 60};

GLuint gls_vertex_data_bytes(GLenum format, GLint count)
{
    if (format < 10784 || format > 10797 || count <= 0)
        return 0;
    return interleaved_strides[format - 10784] * (GLuint)count;
}

// ---------------------------------------------------------------------------------------------
// Client-state shadow: kept always, and GL is called too when there is a GL context.

bool gls_have_gl_context(GlsContext *ctx)
{
    if (ctx->glInfo.haveGlContext == -1) {
        GLint value = 0;
        int token = enterDirectCall(ctx, 237);
        ((void (GLS_APIENTRY *)(GLenum, GLint *))gls_default_dispatch[237])(3377, &value);
        leaveDirectCall(ctx, 237, token);
        ctx->glInfo.haveGlContext = value != 0;
    }
    return ctx->glInfo.haveGlContext != 0;
}

template <typename Function, typename... Args>
static void call_gl(GlsContext *ctx, int opcode, Args... args)
{
    int token = enterDirectCall(ctx, opcode);
    ((Function)gls_default_dispatch[opcode])(args...);
    leaveDirectCall(ctx, opcode, token);
}

static void keep_array(GlsClientArray *array, GLint size, GLenum type, GLsizei stride, const void *pointer, GLsizei count)
{
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

typedef void (GLS_APIENTRY *SizeTypeStridePointer)(GLint, GLenum, GLsizei, const void *);
typedef void (GLS_APIENTRY *SizeTypeStrideCountPointer)(GLint, GLenum, GLsizei, GLsizei, const void *);
typedef void (GLS_APIENTRY *TypeStridePointer)(GLenum, GLsizei, const void *);
typedef void (GLS_APIENTRY *TypeStrideCountPointer)(GLenum, GLsizei, GLsizei, const void *);

void shadow_glColorPointer(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.colorArray, size, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        call_gl<SizeTypeStridePointer>(ctx, 338, size, type, stride, pointer);
}

void shadow_glColorPointerEXT(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.colorArray, size, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        call_gl<SizeTypeStrideCountPointer>(ctx, 319, size, type, stride, count, pointer);
}

void shadow_glVertexPointer(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.vertexArray, size, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        call_gl<SizeTypeStridePointer>(ctx, 347, size, type, stride, pointer);
}

void shadow_glVertexPointerEXT(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.vertexArray, size, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        call_gl<SizeTypeStrideCountPointer>(ctx, 326, size, type, stride, count, pointer);
}

void shadow_glTexCoordPointer(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(texture_array(ctx), size, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        call_gl<SizeTypeStridePointer>(ctx, 346, size, type, stride, pointer);
}

void shadow_glTexCoordPointerEXT(GlsContext *ctx, GLint size, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(texture_array(ctx), size, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        call_gl<SizeTypeStrideCountPointer>(ctx, 325, size, type, stride, count, pointer);
}

void shadow_glNormalPointer(GlsContext *ctx, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.normalArray, 3, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        call_gl<TypeStridePointer>(ctx, 345, type, stride, pointer);
}

void shadow_glNormalPointerEXT(GlsContext *ctx, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.normalArray, 3, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        call_gl<TypeStrideCountPointer>(ctx, 324, type, stride, count, pointer);
}

void shadow_glIndexPointer(GlsContext *ctx, GLenum type, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.indexArray, 1, type, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        call_gl<TypeStridePointer>(ctx, 343, type, stride, pointer);
}

void shadow_glIndexPointerEXT(GlsContext *ctx, GLenum type, GLsizei stride, GLsizei count, const void *pointer)
{
    keep_array(&ctx->clientState.indexArray, 1, type, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        call_gl<TypeStrideCountPointer>(ctx, 323, type, stride, count, pointer);
}

void shadow_glEdgeFlagPointer(GlsContext *ctx, GLsizei stride, const void *pointer)
{
    keep_array(&ctx->clientState.edgeFlagArray, 1, 0x1401, stride, pointer, 0);
    if (gls_have_gl_context(ctx))
        call_gl<void (GLS_APIENTRY *)(GLsizei, const void *)>(ctx, 341, stride, pointer);
}

void shadow_glEdgeFlagPointerEXT(GlsContext *ctx, GLsizei stride, GLsizei count, const GLboolean *pointer)
{
    keep_array(&ctx->clientState.edgeFlagArray, 1, 0x1401, stride, pointer, count);
    if (gls_have_gl_context(ctx))
        call_gl<void (GLS_APIENTRY *)(GLsizei, GLsizei, const GLboolean *)>(ctx, 321, stride, count, pointer);
}

// The array an enable names: GL_VERTEX_ARRAY (32884) to GL_EDGE_FLAG_ARRAY (32889).
static GlsClientArray *array_of_cap(GlsContext *ctx, GLenum cap)
{
    switch (cap) {
    case 32884: return &ctx->clientState.vertexArray;
    case 32885: return &ctx->clientState.normalArray;
    case 32886: return &ctx->clientState.colorArray;
    case 32887: return &ctx->clientState.indexArray;
    case 32888: return texture_array(ctx);
    case 32889: return &ctx->clientState.edgeFlagArray;
    default: return nullptr;
    }
}

void shadow_glEnableClientState(GlsContext *ctx, GLenum array)
{
    if (GlsClientArray *record = array_of_cap(ctx, array))
        record->enabled = 1;
    if (gls_have_gl_context(ctx))
        call_gl<void (GLS_APIENTRY *)(GLenum)>(ctx, 342, array);
}

void shadow_glDisableClientState(GlsContext *ctx, GLenum array)
{
    if (GlsClientArray *record = array_of_cap(ctx, array))
        record->enabled = 0;
    if (gls_have_gl_context(ctx))
        call_gl<void (GLS_APIENTRY *)(GLenum)>(ctx, 339, array);
}

// Pixel store: GL_UNPACK_SWAP_BYTES (3312) to GL_UNPACK_ALIGNMENT (3317), the same plus 16 for
// pack, and the image height and skip images of 3D textures.
static void keep_pixel_store(GlsContext *ctx, GLenum pname, GLint value)
{
    GlsPixelStore *store = pname >= 3328 && pname <= 3333 ? &ctx->clientState.pack
                           : pname >= 3312 && pname <= 3317 ? &ctx->clientState.unpack
                           : pname == 32875 || pname == 32876 ? &ctx->clientState.pack
                           : pname == 32877 || pname == 32878 ? &ctx->clientState.unpack : nullptr;
    if (!store)
        return;
    switch (pname) {
    case 3312: case 3328: store->swapBytes = value; break;
    case 3313: case 3329: store->lsbFirst = value; break;
    case 3314: case 3330: store->rowLength = value; break;
    case 3315: case 3331: store->skipRows = value; break;
    case 3316: case 3332: store->skipPixels = value; break;
    case 3317: case 3333: store->alignment = value; break;
    case 32875: case 32877: store->skipImages = value; break;
    case 32876: case 32878: store->imageHeight = value; break;
    }
}

void shadow_glPixelStoref(GlsContext *ctx, GLenum pname, GLfloat param)
{
    keep_pixel_store(ctx, pname, (GLint)param);
    if (gls_have_gl_context(ctx))
        call_gl<void (GLS_APIENTRY *)(GLenum, GLfloat)>(ctx, 223, pname, param);
}

void shadow_glPixelStorei(GlsContext *ctx, GLenum pname, GLint param)
{
    keep_pixel_store(ctx, pname, param);
    if (gls_have_gl_context(ctx))
        call_gl<void (GLS_APIENTRY *)(GLenum, GLint)>(ctx, 224, pname, param);
}

// Feedback and selection buffers: the real call with a GL context, else kept in the shadow.
void shadow_glFeedbackBuffer(GlsContext *ctx, GLsizei size, GLenum type, GLfloat *buffer)
{
    if (gls_have_gl_context(ctx)) {
        call_gl<void (GLS_APIENTRY *)(GLsizei, GLenum, GLfloat *)>(ctx, 172, size, type, buffer);
    } else if (size >= 0 && type >= 1536 && type <= 1540) {
        ctx->clientState.feedbackBufferSize = size;
        ctx->clientState.feedbackBufferType = type;
        ctx->clientState.feedbackBuffer = buffer;
    }
}

void shadow_glSelectBuffer(GlsContext *ctx, GLsizei size, GLuint *buffer)
{
    if (gls_have_gl_context(ctx)) {
        call_gl<void (GLS_APIENTRY *)(GLsizei, GLuint *)>(ctx, 173, size, buffer);
    } else if (size >= 0) {
        ctx->clientState.selectBufferSize = size;
        ctx->clientState.selectBuffer = buffer;
    }
}
