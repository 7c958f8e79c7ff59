// Vertex arrays under GLS_CAPTURE_VERTEX_ARRAYS: the arrays' content goes into the stream, packed
// as one glsDrawVertexArray where an interleaved format fits, else as the per-vertex commands GL
// takes from the arrays. Both go out through the table forwarders, so that a session's wrappers
// execute, count and record each one. And glsDrawVertexArray's execute function.
#include "gls/capture.h"

#include "gen/commands.h"
#include "gen/gl_enums.h"

#include <cstring>

// The arrays of a draw, in the order of the per-vertex commands.
enum : int {
    ARRAY_COLOR,
    ARRAY_EDGE_FLAG,
    ARRAY_INDEX,
    ARRAY_NORMAL,
    ARRAY_TEXTURE,
    ARRAY_VERTEX = ARRAY_TEXTURE + GLS_TEXTURE_UNITS,
    ARRAY_COUNT,
};

struct GlsArray {
    GLint enabled;
    GLint size;
    GLenum type;
    GLsizei stride;  // as GL keeps it, 0 for tight
    const GLubyte *pointer;
    GLsizei count;   // the EXT form's count, 0 where unknown
    GLuint buffer;   // the buffer object it lies in, 0 for the application's memory
    GLuint step;     // bytes from one element to the next
};

struct GlsArrayState {
    GLint activeTexture; // always 0: GL 1.1 has one texture unit
    GlsArray arrays[ARRAY_COUNT];
};

// What GL calls each array; units above the first do not exist for GL 1.1.
struct ArrayNames {
    GLenum cap, size, type, stride, pointer, buffer;
    GLint fixedSize;
    GLenum fixedType;
};

static const ArrayNames array_names[ARRAY_COUNT] = {
    {GL_COLOR_ARRAY, GL_COLOR_ARRAY_SIZE, GL_COLOR_ARRAY_TYPE, GL_COLOR_ARRAY_STRIDE, GL_COLOR_ARRAY_POINTER,
     GL_COLOR_ARRAY_BUFFER_BINDING, 0, 0},
    {GL_EDGE_FLAG_ARRAY, 0, 0, GL_EDGE_FLAG_ARRAY_STRIDE, GL_EDGE_FLAG_ARRAY_POINTER,
     GL_EDGE_FLAG_ARRAY_BUFFER_BINDING, 1, GL_UNSIGNED_BYTE},
    {GL_INDEX_ARRAY, 0, GL_INDEX_ARRAY_TYPE, GL_INDEX_ARRAY_STRIDE, GL_INDEX_ARRAY_POINTER,
     GL_INDEX_ARRAY_BUFFER_BINDING, 1, 0},
    {GL_NORMAL_ARRAY, 0, GL_NORMAL_ARRAY_TYPE, GL_NORMAL_ARRAY_STRIDE, GL_NORMAL_ARRAY_POINTER,
     GL_NORMAL_ARRAY_BUFFER_BINDING, 3, 0},
    {GL_TEXTURE_COORD_ARRAY, GL_TEXTURE_COORD_ARRAY_SIZE, GL_TEXTURE_COORD_ARRAY_TYPE,
     GL_TEXTURE_COORD_ARRAY_STRIDE, GL_TEXTURE_COORD_ARRAY_POINTER, GL_TEXTURE_COORD_ARRAY_BUFFER_BINDING, 0, 0},
    {},
    {},
    {},
    {GL_VERTEX_ARRAY, GL_VERTEX_ARRAY_SIZE, GL_VERTEX_ARRAY_TYPE, GL_VERTEX_ARRAY_STRIDE, GL_VERTEX_ARRAY_POINTER,
     GL_VERTEX_ARRAY_BUFFER_BINDING, 0, 0},
};

// The interleaved formats GL_V2F to GL_T4F_C4F_N3F_V4F; texture coordinates lie at offset 0.
struct InterleavedFormat {
    GLenum format;
    bool color, normal, texture;
    GLenum colorType;
    GLint colorSize, textureSize, vertexSize;
    GLuint colorOffset, normalOffset, vertexOffset, stride;
};

static const InterleavedFormat interleaved_formats[14] = {
    {GL_V2F, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 8},
    {GL_V3F, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 12},
    {GL_C4UB_V2F, 1, 0, 0, GL_UNSIGNED_BYTE, 4, 0, 2, 0, 0, 4, 12},
    {GL_C4UB_V3F, 1, 0, 0, GL_UNSIGNED_BYTE, 4, 0, 3, 0, 0, 4, 16},
    {GL_C3F_V3F, 1, 0, 0, GL_FLOAT, 3, 0, 3, 0, 0, 12, 24},
    {GL_N3F_V3F, 0, 1, 0, 0, 0, 0, 3, 0, 0, 12, 24},
    {GL_C4F_N3F_V3F, 1, 1, 0, GL_FLOAT, 4, 0, 3, 0, 16, 28, 40},
    {GL_T2F_V3F, 0, 0, 1, 0, 0, 2, 3, 0, 0, 8, 20},
    {GL_T4F_V4F, 0, 0, 1, 0, 0, 4, 4, 0, 0, 16, 32},
    {GL_T2F_C4UB_V3F, 1, 0, 1, GL_UNSIGNED_BYTE, 4, 2, 3, 8, 0, 12, 24},
    {GL_T2F_C3F_V3F, 1, 0, 1, GL_FLOAT, 3, 2, 3, 8, 0, 20, 32},
    {GL_T2F_N3F_V3F, 0, 1, 1, 0, 0, 2, 3, 0, 8, 20, 32},
    {GL_T2F_C4F_N3F_V3F, 1, 1, 1, GL_FLOAT, 4, 2, 3, 8, 24, 36, 48},
    {GL_T4F_C4F_N3F_V4F, 1, 1, 1, GL_FLOAT, 4, 4, 4, 16, 32, 44, 60},
};

static const InterleavedFormat *interleaved_format(GLenum format)
{
    return format >= GL_V2F && format <= GL_T4F_C4F_N3F_V4F ? &interleaved_formats[format - GL_V2F] : nullptr;
}

uint64_t gls_vertex_data_bytes(GLenum format, GLint count)
{
    const InterleavedFormat *row = interleaved_format(format);
    uint64_t bytes = row && count > 0 ? (uint64_t)row->stride * (uint64_t)count : 0;
    return bytes <= GLS_PIXEL_DATA_LIMIT ? (GLuint)bytes : 0;
}

// glInterleavedArrays in the shadow: the format's arrays on, with their pointers into the one
// block, the others off (only the active unit's texture coordinates), as GL does.
// The block's address may be anything, null too, so the parts' addresses are sums of numbers.
static void keep_interleaved(GlsClientArray *array, bool on, GLint size, GLenum type, GLsizei stride,
                             const void *block, GLuint offset)
{
    array->enabled = on;
    if (on) {
        array->size = size;
        array->type = type;
        array->stride = stride;
        array->pointer = (const GLubyte *)((uintptr_t)block + offset);
        array->count = 0;
    }
}

void shadow_glInterleavedArrays(GlsContext *ctx, GLenum format, GLsizei stride, const void *pointer)
{
    const InterleavedFormat *row = interleaved_format(format);
    if (row && stride >= 0) {
        GlsClientState *shadow = &ctx->clientState;
        GLsizei step = stride ? stride : (GLsizei)row->stride;
        GLint unit = shadow->activeTexture >= 0 && shadow->activeTexture < GLS_TEXTURE_UNITS ? shadow->activeTexture : 0;
        shadow->edgeFlagArray.enabled = 0;
        shadow->indexArray.enabled = 0;
        keep_interleaved(&shadow->colorArray, row->color, row->colorSize, row->colorType, step, pointer, row->colorOffset);
        keep_interleaved(&shadow->normalArray, row->normal, 3, GL_FLOAT, step, pointer, row->normalOffset);
        keep_interleaved(&shadow->texCoordArray[unit], row->texture, row->textureSize, GL_FLOAT, step, pointer, 0);
        keep_interleaved(&shadow->vertexArray, true, row->vertexSize, GL_FLOAT, step, pointer, row->vertexOffset);
    }
    if (gls_have_gl_context(ctx))
        CALL_GL(ctx, glInterleavedArrays, format, stride, pointer);
}

// ---------------------------------------------------------------------------------------------
// Per-vertex commands: the vector form for an array's size and type, by type column.

typedef void (GLS_APIENTRY *VectorCommand)(const void *v);

static int type_column(GLenum type)
{
    switch (type) {
    case GL_BYTE: return 0;
    case GL_UNSIGNED_BYTE: return 1;
    case GL_SHORT: return 2;
    case GL_UNSIGNED_SHORT: return 3;
    case GL_INT: return 4;
    case GL_UNSIGNED_INT: return 5;
    case GL_FLOAT: return 6;
    case GL_DOUBLE: return 7;
    default: return -1;
    }
}

static const int16_t color_commands[2][8] = {
    {OP_glColor3bv, OP_glColor3ubv, OP_glColor3sv, OP_glColor3usv, OP_glColor3iv, OP_glColor3uiv, OP_glColor3fv, OP_glColor3dv},
    {OP_glColor4bv, OP_glColor4ubv, OP_glColor4sv, OP_glColor4usv, OP_glColor4iv, OP_glColor4uiv, OP_glColor4fv, OP_glColor4dv},
};
static const int16_t index_commands[8] = {0, OP_glIndexubv, OP_glIndexsv, 0, OP_glIndexiv, 0, OP_glIndexfv, OP_glIndexdv};
static const int16_t normal_commands[8] = {OP_glNormal3bv, 0, OP_glNormal3sv, 0, OP_glNormal3iv, 0, OP_glNormal3fv, OP_glNormal3dv};
static const int16_t texture_commands[4][8] = {
    {0, 0, OP_glTexCoord1sv, 0, OP_glTexCoord1iv, 0, OP_glTexCoord1fv, OP_glTexCoord1dv},
    {0, 0, OP_glTexCoord2sv, 0, OP_glTexCoord2iv, 0, OP_glTexCoord2fv, OP_glTexCoord2dv},
    {0, 0, OP_glTexCoord3sv, 0, OP_glTexCoord3iv, 0, OP_glTexCoord3fv, OP_glTexCoord3dv},
    {0, 0, OP_glTexCoord4sv, 0, OP_glTexCoord4iv, 0, OP_glTexCoord4fv, OP_glTexCoord4dv},
};
static const int16_t vertex_commands[3][8] = {
    {0, 0, OP_glVertex2sv, 0, OP_glVertex2iv, 0, OP_glVertex2fv, OP_glVertex2dv},
    {0, 0, OP_glVertex3sv, 0, OP_glVertex3iv, 0, OP_glVertex3fv, OP_glVertex3dv},
    {0, 0, OP_glVertex4sv, 0, OP_glVertex4iv, 0, OP_glVertex4fv, OP_glVertex4dv},
};

// The command of an array's element, 0 for a size or type that has none.
static int command_of(int array, GLint size, GLenum type)
{
    int column = type_column(type);
    if (column < 0)
        return 0;
    switch (array) {
    case ARRAY_COLOR: return size == 3 || size == 4 ? color_commands[size - 3][column] : 0;
    case ARRAY_EDGE_FLAG: return OP_glEdgeFlagv;
    case ARRAY_INDEX: return index_commands[column];
    case ARRAY_NORMAL: return normal_commands[column];
    case ARRAY_VERTEX: return size >= 2 && size <= 4 ? vertex_commands[size - 2][column] : 0;
    default: return size >= 1 && size <= 4 ? texture_commands[size - 1][column] : 0;
    }
}

// ---------------------------------------------------------------------------------------------
// Snapshot of the arrays, from GL with a context, else from the shadow

static bool have_buffer_objects(GlsContext *ctx)
{
    return gls_have_gl_context(ctx) && gls_gl_version_at_least(ctx, 1, 5);
}

static void snapshot_gl(GlsContext *ctx, GlsArrayState *state, bool buffers)
{
    for (int k = 0; k < ARRAY_COUNT; ++k) {
        const ArrayNames *names = &array_names[k];
        GlsArray *a = &state->arrays[k];
        if (!names->cap)
            continue;
        a->enabled = gls_gl_is_enabled(ctx, names->cap) != 0;
        a->size = names->size ? gls_gl_integer(ctx, names->size) : names->fixedSize;
        a->type = names->type ? (GLenum)gls_gl_integer(ctx, names->type) : names->fixedType;
        a->stride = gls_gl_integer(ctx, names->stride);
        a->pointer = (const GLubyte *)gls_gl_pointer(ctx, names->pointer);
        a->buffer = buffers ? (GLuint)gls_gl_integer(ctx, names->buffer) : 0;
    }
}

static void copy_shadow(GlsArray *a, const GlsClientArray *shadow)
{
    a->enabled = shadow->enabled;
    a->size = shadow->size;
    a->type = shadow->type;
    a->stride = shadow->stride;
    a->pointer = (const GLubyte *)shadow->pointer;
    a->count = shadow->count;
}

static void snapshot(GlsContext *ctx, GlsArrayState *state)
{
    *state = {};
    if (gls_have_gl_context(ctx)) {
        snapshot_gl(ctx, state, have_buffer_objects(ctx));
    } else {
        const GlsClientState *shadow = &ctx->clientState;
        copy_shadow(&state->arrays[ARRAY_COLOR], &shadow->colorArray);
        copy_shadow(&state->arrays[ARRAY_EDGE_FLAG], &shadow->edgeFlagArray);
        copy_shadow(&state->arrays[ARRAY_INDEX], &shadow->indexArray);
        copy_shadow(&state->arrays[ARRAY_NORMAL], &shadow->normalArray);
        for (int unit = 0; unit < GLS_TEXTURE_UNITS; ++unit)
            copy_shadow(&state->arrays[ARRAY_TEXTURE + unit], &shadow->texCoordArray[unit]);
        copy_shadow(&state->arrays[ARRAY_VERTEX], &shadow->vertexArray);
    }
    // Zero strides become tight ones.
    for (GlsArray &a : state->arrays) {
        GLuint bytes = gls_pname_count(GLS_SIZES_ARRAY_TYPE_BYTES, a.type);
        GLuint tight = a.size > 0 ? (GLuint)a.size * bytes : 0;
        a.step = a.stride > 0 ? (GLuint)a.stride : tight;
    }
}

// The arrays a draw reads: all but the texture units that are not active.
static bool array_used(const GlsArrayState *state, int k)
{
    return k < ARRAY_TEXTURE || k == ARRAY_VERTEX || k == ARRAY_TEXTURE + state->activeTexture;
}

static bool any_enabled(const GlsArrayState *state)
{
    for (const GlsArray &a : state->arrays)
        if (a.enabled)
            return true;
    return false;
}

static bool in_buffer_objects(GlsContext *ctx, const GlsArrayState *state)
{
    if (!have_buffer_objects(ctx))
        return false;
    for (const GlsArray &a : state->arrays)
        if (a.enabled && a.buffer)
            return true;
    // A bound array buffer would take the packed vertices for an offset into it.
    return gls_gl_integer(ctx, GL_ARRAY_BUFFER_BINDING) != 0;
}

// Whether every array the draw reads holds elements up to highest: a pointer, the EXT form's
// count, and an offset that stays under the size limit, so that no pointer step wraps.
static bool reachable(const GlsArrayState *state, uint64_t highest)
{
    for (int k = 0; k < ARRAY_COUNT; ++k) {
        const GlsArray *a = &state->arrays[k];
        if (!a->enabled || !array_used(state, k))
            continue;
        if (!a->pointer || (a->count > 0 && highest >= (uint64_t)a->count))
            return false;
        if (highest * a->step + a->step > GLS_PIXEL_DATA_LIMIT)
            return false;
    }
    return true;
}

static const GLubyte *element(const GlsArray *a, GLuint index) { return a->pointer + (size_t)index * a->step; }

// ---------------------------------------------------------------------------------------------
// The commands of a draw

static void issue_vertex(const GlsArrayState *state, GLuint index)
{
    for (int k = 0; k < ARRAY_COUNT; ++k) {
        const GlsArray *a = &state->arrays[k];
        if (!a->enabled || !array_used(state, k))
            continue;
        // Forwarded like an application's call: a session's wrapper stands in the capture row.
        if (int opcode = command_of(k, a->size, a->type))
            ((VectorCommand)gls_forwarders[opcode])(element(a, index));
    }
}

// The interleaved format whose set of arrays is exactly the enabled one: vertex floats, colour
// and texture coordinates as the row says, float normals, no edge flag, index or other unit.
static const InterleavedFormat *matching_format(const GlsArrayState *state)
{
    const GlsArray *color = &state->arrays[ARRAY_COLOR], *normal = &state->arrays[ARRAY_NORMAL];
    const GlsArray *texture = &state->arrays[ARRAY_TEXTURE + state->activeTexture];
    const GlsArray *vertex = &state->arrays[ARRAY_VERTEX];
    if (state->arrays[ARRAY_EDGE_FLAG].enabled || state->arrays[ARRAY_INDEX].enabled)
        return nullptr;
    for (int unit = 0; unit < GLS_TEXTURE_UNITS; ++unit)
        if (unit != state->activeTexture && state->arrays[ARRAY_TEXTURE + unit].enabled)
            return nullptr;
    if (!vertex->enabled || vertex->type != GL_FLOAT || (normal->enabled && normal->type != GL_FLOAT))
        return nullptr;
    for (const InterleavedFormat &row : interleaved_formats) {
        bool fits = row.vertexSize == vertex->size && row.normal == (normal->enabled != 0) &&
                    row.color == (color->enabled != 0) && row.texture == (texture->enabled != 0) &&
                    (!row.color || (row.colorSize == color->size && row.colorType == color->type)) &&
                    (!row.texture || (row.textureSize == texture->size && texture->type == GL_FLOAT));
        if (fits)
            return &row;
    }
    return nullptr;
}

static void pack_vertex(const InterleavedFormat *format, const GlsArrayState *state, GLuint index, GLubyte *out)
{
    if (format->texture)
        memcpy(out, element(&state->arrays[ARRAY_TEXTURE + state->activeTexture], index), (size_t)format->textureSize * 4);
    if (format->color)
        memcpy(out + format->colorOffset, element(&state->arrays[ARRAY_COLOR], index),
               (size_t)format->colorSize * (format->colorType == GL_FLOAT ? 4 : 1));
    if (format->normal)
        memcpy(out + format->normalOffset, element(&state->arrays[ARRAY_NORMAL], index), 12);
    memcpy(out + format->vertexOffset, element(&state->arrays[ARRAY_VERTEX], index), (size_t)format->vertexSize * 4);
}

// Where the elements of a draw come from: first + i, or the indices of the given type.
struct ElementList {
    GLint first;
    GLenum type;
    const void *indices;
};

static GLuint element_at(const ElementList *list, GLuint i)
{
    switch (list->type) {
    case GL_UNSIGNED_BYTE: return ((const GLubyte *)list->indices)[i];
    case GL_UNSIGNED_SHORT: return ((const GLushort *)list->indices)[i];
    case GL_UNSIGNED_INT: return ((const GLuint *)list->indices)[i];
    default: return (GLuint)list->first + i;
    }
}

// A packed draw larger than the stack buffer takes the context's scratch buffer, kept for the
// next one, so that a steady stream of draws allocates once.
static GLubyte *scratch_buffer(GlsContext *ctx, size_t size)
{
    GlsClientState *shadow = &ctx->clientState;
    if (shadow->scratchSize[0] < size) {
        void *grown = gls_malloc(size);
        if (!grown)
            return nullptr;
        gls_free(shadow->scratch[0]);
        shadow->scratch[0] = grown;
        shadow->scratchSize[0] = size;
    }
    return (GLubyte *)shadow->scratch[0];
}

static void capture_draw(GlsContext *ctx, const GlsArrayState *state, GLenum mode, GLsizei count,
                         const ElementList *list)
{
    if (const InterleavedFormat *format = matching_format(state)) {
        alignas(8) GLubyte local[65536];
        uint64_t size = (uint64_t)count * format->stride;
        GLubyte *buffer = size <= sizeof local ? local : size <= GLS_PIXEL_DATA_LIMIT ? scratch_buffer(ctx, (size_t)size) : nullptr;
        if (!buffer) {
            ((fn_glsError)gls_forwarders[OP_glsError])(OP_glsDrawVertexArray, GLS_RESOURCE_ERROR);
            return;
        }
        for (GLsizei i = 0; i < count; ++i)
            pack_vertex(format, state, element_at(list, (GLuint)i), buffer + (size_t)i * format->stride);
        ((fn_glsDrawVertexArray)gls_forwarders[OP_glsDrawVertexArray])(mode, format->format, count, buffer);
        return;
    }
    ((fn_glBegin)gls_forwarders[OP_glBegin])(mode);
    for (GLsizei i = 0; i < count; ++i)
        issue_vertex(state, element_at(list, (GLuint)i));
    ((fn_glEnd)gls_forwarders[OP_glEnd])();
}

bool gls_capture_draw_arrays(GlsContext *ctx, GLenum mode, GLint first, GLsizei count)
{
    if (count < 0)
        return true; // GL draws nothing: neither a draw nor a command
    GlsArrayState state;
    snapshot(ctx, &state);
    if (!any_enabled(&state))
        return true;
    if (in_buffer_objects(ctx, &state) || first < 0 || (count && !reachable(&state, (uint64_t)first + count - 1)))
        return false;
    ElementList list = {first, 0, nullptr};
    capture_draw(ctx, &state, mode, count, &list);
    return true;
}

bool gls_capture_draw_elements(GlsContext *ctx, GLenum mode, GLsizei count, GLenum type, const void *indices)
{
    if (type != GL_UNSIGNED_BYTE && type != GL_UNSIGNED_SHORT && type != GL_UNSIGNED_INT)
        return true; // nothing at all
    if (count < 0)
        return true;
    GlsArrayState state;
    snapshot(ctx, &state);
    if (!any_enabled(&state))
        return true;
    if (in_buffer_objects(ctx, &state) || (have_buffer_objects(ctx) && gls_gl_integer(ctx, GL_ELEMENT_ARRAY_BUFFER_BINDING)))
        return false;
    if (count && !indices)
        return false;
    ElementList list = {0, type, indices};
    GLuint highest = 0;
    for (GLsizei i = 0; i < count; ++i) {
        GLuint index = element_at(&list, (GLuint)i);
        highest = index > highest ? index : highest;
    }
    if (count && !reachable(&state, highest))
        return false;
    capture_draw(ctx, &state, mode, count, &list);
    return true;
}

bool gls_capture_array_element(GlsContext *ctx, GLint i)
{
    GlsArrayState state;
    snapshot(ctx, &state);
    if (in_buffer_objects(ctx, &state) || i < 0 || !reachable(&state, (uint64_t)i))
        return false;
    issue_vertex(&state, (GLuint)i);
    return true;
}

// ---------------------------------------------------------------------------------------------
// glsDrawVertexArray executed

// The real command of a vector form, inside the guard.
static void call_real(GlsContext *ctx, int opcode, const void *v)
{
    int token = enterDirectCall(ctx, opcode);
    ((VectorCommand)gls_default_dispatch[opcode])(v);
    leaveDirectCall(ctx, opcode, token);
}

// glInterleavedArrays replaces the application's arrays; they are put back behind the draw, all
// but those in buffer objects, which a pointer call cannot name again.
static void restore_arrays(GlsContext *ctx, const GlsArrayState *saved)
{
    const GlsArray *c = &saved->arrays[ARRAY_COLOR], *e = &saved->arrays[ARRAY_EDGE_FLAG];
    const GlsArray *x = &saved->arrays[ARRAY_INDEX], *n = &saved->arrays[ARRAY_NORMAL];
    const GlsArray *t = &saved->arrays[ARRAY_TEXTURE], *v = &saved->arrays[ARRAY_VERTEX];
    if (!c->buffer)
        CALL_GL(ctx, glColorPointer, c->size, c->type, c->stride, c->pointer);
    if (!e->buffer)
        CALL_GL(ctx, glEdgeFlagPointer, e->stride, e->pointer);
    if (!x->buffer)
        CALL_GL(ctx, glIndexPointer, x->type, x->stride, x->pointer);
    if (!n->buffer)
        CALL_GL(ctx, glNormalPointer, n->type, n->stride, n->pointer);
    if (!t->buffer)
        CALL_GL(ctx, glTexCoordPointer, t->size, t->type, t->stride, t->pointer);
    if (!v->buffer)
        CALL_GL(ctx, glVertexPointer, v->size, v->type, v->stride, v->pointer);
    for (int k = 0; k < ARRAY_COUNT; ++k) {
        GLenum cap = array_names[k].cap;
        if (cap && saved->arrays[k].enabled)
            CALL_GL(ctx, glEnableClientState, cap);
        else if (cap)
            CALL_GL(ctx, glDisableClientState, cap);
    }
}

void gls_draw_vertex_array(GLenum mode, GLenum format, GLint count, const GLvoid *data)
{
    GlsContext *ctx = gls_current();
    if (!ctx)
        return;
    if (gls_gl_version_at_least(ctx, 1, 1)) {
        bool context = gls_have_gl_context(ctx);
        GlsArrayState saved = {};
        if (context)
            snapshot_gl(ctx, &saved, have_buffer_objects(ctx));
        CALL_GL(ctx, glInterleavedArrays, format, 0, data);
        CALL_GL(ctx, glDrawArrays, mode, 0, count);
        if (context)
            restore_arrays(ctx, &saved);
        return;
    }
    // GL 1.0 has no arrays: the vertices one by one.
    const InterleavedFormat *row = interleaved_format(format);
    if (count < 0 || !row || (count && !data)) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    int texture = row->texture ? command_of(ARRAY_TEXTURE, row->textureSize, GL_FLOAT) : 0;
    int color = row->color ? command_of(ARRAY_COLOR, row->colorSize, row->colorType) : 0;
    int vertex = command_of(ARRAY_VERTEX, row->vertexSize, GL_FLOAT);
    CALL_GL(ctx, glBegin, mode);
    const GLubyte *at = (const GLubyte *)data;
    for (GLint i = 0; i < count; ++i, at += row->stride) {
        if (texture)
            call_real(ctx, texture, at);
        if (color)
            call_real(ctx, color, at + row->colorOffset);
        if (row->normal)
            call_real(ctx, OP_glNormal3fv, at + row->normalOffset);
        call_real(ctx, vertex, at + row->vertexOffset);
    }
    CALL_GL(ctx, glEnd);
}
