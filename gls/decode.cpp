// The binary side of the interpreter: a command's descriptor walked over its stored arguments,
// to hand them to the call where they lie, or to swap them in place. Every field is taken
// against the command's size, so that a lying count ends the command, never the read's memory.
#include "gls/decode.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/gls.h"
#include "gls/gls_string.h"
#include "gls/tables.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

static uint32_t element_width(GlsElement element)
{
    static const uint8_t widths[] = {1, 1, 1, 2, 2, 4, 4, 4, 8, 8};
    return widths[element];
}

size_t gls_element_size(GLenum type)
{
    switch (type) {
    case GL_BYTE: case GL_UNSIGNED_BYTE: case GL_UNSIGNED_BYTE_3_3_2_EXT: return 1;
    case GL_SHORT: case GL_UNSIGNED_SHORT: case GL_UNSIGNED_SHORT_4_4_4_4_EXT: case GL_UNSIGNED_SHORT_5_5_5_1_EXT: return 2;
    case GL_INT: case GL_UNSIGNED_INT: case GL_FLOAT: case GL_UNSIGNED_INT_8_8_8_8_EXT: case GL_UNSIGNED_INT_10_10_10_2_EXT: return 4;
    default: return 0;
    }
}

static GlsElement image_element(GLenum type)
{
    switch (type) {
    case GL_BYTE: return GLS_ELEMENT_BYTE;
    case GL_SHORT: return GLS_ELEMENT_SHORT;
    case GL_UNSIGNED_SHORT: case GL_UNSIGNED_SHORT_4_4_4_4_EXT: case GL_UNSIGNED_SHORT_5_5_5_1_EXT: return GLS_ELEMENT_USHORT;
    case GL_INT: return GLS_ELEMENT_INT;
    case GL_UNSIGNED_INT: case GL_UNSIGNED_INT_8_8_8_8_EXT: case GL_UNSIGNED_INT_10_10_10_2_EXT: return GLS_ELEMENT_UINT;
    case GL_FLOAT: return GLS_ELEMENT_FLOAT;
    default: return GLS_ELEMENT_UBYTE;
    }
}

// Components of a pixel group by format; 0 for a format without a size.
static int64_t format_groups(GLenum format)
{
    switch (format) {
    case GL_COLOR_INDEX: case GL_STENCIL_INDEX: case GL_DEPTH_COMPONENT: case GL_RED: case GL_GREEN:
    case GL_BLUE: case GL_ALPHA: case GL_LUMINANCE: return 1;
    case GL_LUMINANCE_ALPHA: return 2;
    case GL_RGB: return 3;
    case GL_RGBA: case GL_ABGR_EXT: case GL_CMYK_EXT: return 4;
    case GL_CMYKA_EXT: return 5;
    default: return 0;
    }
}

uint64_t gls_image_bytes(GLenum format, GLenum type, int64_t width, int64_t height, int64_t depth)
{
    if (width < 0 || height < 0 || depth < 0)
        return 0;
    uint64_t images = depth ? (uint64_t)depth : 1;
    int64_t groups = format_groups(format);
    uint64_t row;
    if (type == GL_BITMAP) {
        row = format == GL_COLOR_INDEX || format == GL_STENCIL_INDEX ? ((uint64_t)width + 7) / 8 : 0;
    } else if (type == GL_UNSIGNED_BYTE_3_3_2_EXT) {
        row = groups == 3 ? (uint64_t)width : 0;
    } else if (type == GL_UNSIGNED_SHORT_4_4_4_4_EXT || type == GL_UNSIGNED_SHORT_5_5_5_1_EXT ||
               type == GL_UNSIGNED_INT_8_8_8_8_EXT || type == GL_UNSIGNED_INT_10_10_10_2_EXT) {
        row = groups == 4 ? (uint64_t)width * gls_element_size(type) : 0;
    } else {
        row = (uint64_t)groups * (uint64_t)width * gls_element_size(type);
    }
    // Each factor is below 2^33 but the product need not be: saturate instead of wrapping.
    uint64_t plane = (uint64_t)height;
    if (row && plane > UINT64_MAX / row)
        return UINT64_MAX;
    plane *= row;
    return plane && images > UINT64_MAX / plane ? UINT64_MAX : plane * images;
}

static int64_t ref_value(const GlsArgValue *values, int16_t ref)
{
    return ref >= 0 ? values[ref].i : -(int64_t)ref - 1;
}

GlsArrayShape gls_array_shape(const GlsArgDesc *d, const GlsArgValue *values)
{
    GlsArrayShape shape = {0, 1, GLS_ELEMENT_UBYTE};
    auto ref = [&](int i) { return ref_value(values, d->refs[i]); };
    switch (d->kind) {
    case GLS_ARG_VECTOR: {
        int64_t count = d->table >= 0 ? gls_pname_count((GlsSizeTable)d->table, (GLenum)ref(0)) : ref(0);
        shape.count = count > 0 ? (uint64_t)(uint32_t)count : 0;
        shape.element = d->element;
        break;
    }
    case GLS_ARG_MATRIX:
        shape.count = 16;
        shape.element = d->element;
        break;
    case GLS_ARG_CALL_LISTS: {
        GLenum type = (GLenum)ref(1);
        int64_t n = ref(0);
        uint64_t bytes = n > 0 ? gls_call_lists_bytes(type, (GLsizei)n) : 0;
        bool bytewise = type == GL_2_BYTES || type == GL_3_BYTES || type == GL_4_BYTES || type == GL_UNSIGNED_BYTE;
        shape.element = bytewise ? GLS_ELEMENT_UBYTE : image_element(type);
        shape.count = bytes / element_width(shape.element);
        break;
    }
    case GLS_ARG_INDICES: {
        GLenum type = (GLenum)ref(1);
        int64_t count = ref(0);
        shape.element = image_element(type);
        shape.count = count > 0 ? gls_index_bytes(type, (GLsizei)count) / element_width(shape.element) : 0;
        break;
    }
    case GLS_ARG_MAP1:
    case GLS_ARG_MAP2: {
        GlsMapLayout map = d->kind == GLS_ARG_MAP1
            ? gls_map1_layout((GLenum)ref(0), (GLint)ref(1), (GLint)ref(2))
            : gls_map2_layout((GLenum)ref(0), (GLint)ref(1), (GLint)ref(2), (GLint)ref(3), (GLint)ref(4));
        shape.count = gls_map_span(&map);
        shape.element = d->element;
        break;
    }
    case GLS_ARG_IMAGE: {
        GLenum type = (GLenum)ref(1);
        uint64_t bytes = gls_image_bytes((GLenum)ref(0), type, ref(2), ref(3), ref(4));
        shape.element = type == GL_BITMAP ? GLS_ELEMENT_UBYTE : image_element(type);
        shape.count = bytes / element_width(shape.element);
        break;
    }
    case GLS_ARG_BITMAP: {
        int64_t width = ref(0), height = ref(1);
        shape.count = width > 0 && height > 0 ? (uint64_t)(width + 7) / 8 * (uint64_t)height : 0;
        break;
    }
    case GLS_ARG_VERTEX_DATA:
        shape.count = gls_vertex_data_bytes((GLenum)ref(0), (GLint)ref(1)) / 4;
        shape.element = GLS_ELEMENT_FLOAT;
        break;
    default:
        break;
    }
    shape.width = element_width(shape.element);
    return shape;
}

GlsArgValue gls_scalar_value(const uint8_t *p, GlsElement element)
{
    GlsArgValue value;
    value.u = 0;
    switch (element) {
    case GLS_ELEMENT_BYTE: value.i = (GLbyte)p[0]; break;
    case GLS_ELEMENT_UBYTE: case GLS_ELEMENT_BOOLEAN: value.u = p[0]; break;
    case GLS_ELEMENT_SHORT: { GLshort v; memcpy(&v, p, 2); value.i = v; break; }
    case GLS_ELEMENT_USHORT: { GLushort v; memcpy(&v, p, 2); value.u = v; break; }
    case GLS_ELEMENT_INT: { GLint v; memcpy(&v, p, 4); value.i = v; break; }
    case GLS_ELEMENT_UINT: { GLuint v; memcpy(&v, p, 4); value.u = v; break; }
    case GLS_ELEMENT_FLOAT: memcpy(&value.f, p, 4); break;
    case GLS_ELEMENT_DOUBLE: memcpy(&value.d, p, 8); break;
    case GLS_ELEMENT_LONG: memcpy(&value.i, p, 8); break;
    }
    return value;
}

// ---------------------------------------------------------------------------------------------
// Reports and output areas

void gls_report_error(int opcode, GLSenum error, bool empty)
{
    GlsContext *ctx = gls_current();
    ctx->readEmptyItem = empty;
    ((fn_glsError)ctx->callDispatch[OP_glsError])(opcode, error);
    ctx->readEmptyItem = 0;
}

void gls_report_unsupported(const char *name)
{
    GlsContext *ctx = gls_current();
    GlsString converted = {};
    const GLubyte *text = (const GLubyte *)name;
    if (ctx->stringType != GLS_UCS1) {
        if (!gls_string_from_utf8(&converted, name, strlen(name), ctx->stringType)) {
            gls_set_error(GLS_UNSUPPORTED_COMMAND);
            return;
        }
        text = (const GLubyte *)gls_string_text(&converted);
    }
    ((fn_glsUnsupportedCommand)ctx->callDispatch[OP_glsUnsupportedCommand])(text);
    gls_string_free(&converted);
}

// Room for any state query.
static const uint64_t OUT_AREA_SIZE = 65536;
// The most a stream may have GL write back at once, a few framebuffers' worth: beyond it the
// command fails as an allocation would, since a dozen bytes of stream must not cost gigabytes.
static const uint64_t OUT_AREA_LIMIT = 240u << 20;

enum : int { SCRATCH_OUT = 1, SCRATCH_FEEDBACK = 2, SCRATCH_SELECT = 3 };

static GLint direct_integer(GlsContext *ctx, GLenum pname)
{
    GLint value = 0;
    int token = enterDirectCall(ctx, OP_glGetIntegerv);
    ((fn_glGetIntegerv)gls_default_dispatch[OP_glGetIntegerv])(pname, &value);
    leaveDirectCall(ctx, OP_glGetIntegerv, token);
    return value;
}

static GLint direct_level_integer(GlsContext *ctx, GLenum target, GLint level, GLenum pname)
{
    GLint value = 0;
    int token = enterDirectCall(ctx, OP_glGetTexLevelParameteriv);
    ((fn_glGetTexLevelParameteriv)gls_default_dispatch[OP_glGetTexLevelParameteriv])(target, level, pname, &value);
    leaveDirectCall(ctx, OP_glGetTexLevelParameteriv, token);
    return value;
}

// The bytes GL may write through the command's output pointer: the images and tables that a
// read gets back are sized by their arguments and GL's own state, the rest are state queries.
static uint64_t out_bytes(GlsContext *ctx, int opcode, const GlsArgValue *values)
{
    switch (opcode) {
    case OP_glReadPixels:
        gls_prepare_pack(ctx);
        return gls_image_bytes((GLenum)values[4].u, (GLenum)values[5].u, (GLsizei)values[2].i,
                               (GLsizei)values[3].i, 1);
    case OP_glGetTexImage: {
        gls_prepare_pack(ctx);
        GLenum target = (GLenum)values[0].u;
        GLint level = (GLint)values[1].i;
        GLint width = direct_level_integer(ctx, target, level, GL_TEXTURE_WIDTH);
        GLint height = direct_level_integer(ctx, target, level, GL_TEXTURE_HEIGHT);
        GLint depth = target == GL_TEXTURE_3D_EXT ? direct_level_integer(ctx, target, level, GL_TEXTURE_DEPTH_EXT) : 1;
        return gls_image_bytes((GLenum)values[2].u, (GLenum)values[3].u, width, height, depth);
    }
    case OP_glGetPixelMapfv:
    case OP_glGetPixelMapuiv:
    case OP_glGetPixelMapusv: {
        // Each map's size query sits 64 above the map's own enumerant.
        GLenum map = (GLenum)values[0].u;
        GLint size = map >= GL_PIXEL_MAP_I_TO_I && map <= GL_PIXEL_MAP_A_TO_A ? direct_integer(ctx, map + 64) : 0;
        return size > 0 ? (uint64_t)size * 4 : 0;
    }
    case OP_glFeedbackBuffer:
    case OP_glSelectBuffer:
        return values[0].i > 0 ? (uint64_t)values[0].i * 4 : 0;
    default:
        return 0;
    }
}

void *gls_out_area(GlsContext *ctx, int opcode, const GlsArgValue *values)
{
    // A copy only writes the command again: GL is neither asked nor handed the area.
    bool executed = ctx->captureNesting == 0 || (ctx->captureFlags[opcode] & GLS_CAPTURE_EXECUTE_BIT);
    if (!executed)
        opcode = -1;
    int slot = opcode == OP_glFeedbackBuffer ? SCRATCH_FEEDBACK : opcode == OP_glSelectBuffer ? SCRATCH_SELECT : SCRATCH_OUT;
    uint64_t bytes = std::max(out_bytes(ctx, opcode, values), slot == SCRATCH_OUT ? OUT_AREA_SIZE : 4);
    GlsClientState *state = &ctx->clientState;
    if (bytes > OUT_AREA_LIMIT) {
        gls_set_error(GLS_RESOURCE_ERROR);
        return nullptr;
    }
    if (state->scratchSize[slot] < bytes) {
        // GL holds a feedback or selection buffer only until the next one, which this is.
        void *grown = gls_calloc((size_t)bytes);
        if (!grown)
            return nullptr;
        gls_free(state->scratch[slot]);
        state->scratch[slot] = grown;
        state->scratchSize[slot] = (size_t)bytes;
    }
    return state->scratch[slot];
}

// The pixel-store state of one direction, set once a read for the stream's tight data.
struct PixelStoreNames {
    GLenum alignment, lsbFirst, rowLength, skipRows, skipPixels, swapBytes, imageHeight, skipImages;
};

static void set_tight(GlsContext *ctx, int *done, const PixelStoreNames &names)
{
    if (*done)
        return;
    *done = 1;
    fn_glPixelStorei gl_store = (fn_glPixelStorei)gls_default_dispatch[OP_glPixelStorei];
    // GL and the shadow alike: a capture that writes the image again reads it with this state.
    auto store = [&](GLenum pname, GLint value) {
        gl_store(pname, value);
        gls_keep_pixel_store(ctx, pname, value);
    };
    int token = enterDirectCall(ctx, OP_glPixelStorei);
    store(names.alignment, 1);
    for (GLenum pname : {names.lsbFirst, names.rowLength, names.skipRows, names.skipPixels, names.swapBytes})
        store(pname, 0);
    if (ctx->glInfo.extTexture3D == 1) {
        store(names.imageHeight, 0);
        store(names.skipImages, 0);
    }
    leaveDirectCall(ctx, OP_glPixelStorei, token);
}

void gls_prepare_unpack(GlsContext *ctx)
{
    set_tight(ctx, &ctx->glInfo.unpackParametersSet,
              {GL_UNPACK_ALIGNMENT, GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS,
               GL_UNPACK_SKIP_PIXELS, GL_UNPACK_SWAP_BYTES, GL_UNPACK_IMAGE_HEIGHT_EXT, GL_UNPACK_SKIP_IMAGES_EXT});
}

void gls_prepare_pack(GlsContext *ctx)
{
    set_tight(ctx, &ctx->glInfo.packParametersSet,
              {GL_PACK_ALIGNMENT, GL_PACK_LSB_FIRST, GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS,
               GL_PACK_SWAP_BYTES, GL_PACK_IMAGE_HEIGHT_EXT, GL_PACK_SKIP_IMAGES_EXT});
}

// The stream's own pixel-store commands make GL read the next image, which the stream holds
// tight, by the state they set, or write the next pixels read back beyond the area made for
// them: the tight state is set again before the next one.
void gls_note_pixel_store(GlsContext *ctx, int opcode, const GlsArgValue *values)
{
    if (opcode == OP_glPopClientAttrib) {
        ctx->glInfo.unpackParametersSet = 0;
        ctx->glInfo.packParametersSet = 0;
    } else if (opcode == OP_glPixelStoref || opcode == OP_glPixelStorei) {
        GLenum pname = (GLenum)values[0].u;
        if ((pname >= GL_UNPACK_SWAP_BYTES && pname <= GL_UNPACK_ALIGNMENT) || pname == GL_UNPACK_SKIP_IMAGES_EXT ||
            pname == GL_UNPACK_IMAGE_HEIGHT_EXT)
            ctx->glInfo.unpackParametersSet = 0;
        else if ((pname >= GL_PACK_SWAP_BYTES && pname <= GL_PACK_ALIGNMENT) || pname == GL_PACK_SKIP_IMAGES_EXT ||
                 pname == GL_PACK_IMAGE_HEIGHT_EXT)
            ctx->glInfo.packParametersSet = 0;
    }
}

// ---------------------------------------------------------------------------------------------
// The walk over a binary command

struct BinaryWalk {
    uint8_t *p;
    uint8_t *end;
    bool swap;
};

static uint8_t *take(BinaryWalk *w, uint64_t bytes)
{
    if ((uint64_t)(w->end - w->p) < bytes)
        return nullptr;
    uint8_t *at = w->p;
    w->p += bytes;
    return at;
}

static void swap_in_place(uint8_t *p, uint64_t count, uint32_t width)
{
    if (width < 2)
        return;
    for (uint64_t i = 0; i < count; ++i, p += width)
        for (uint32_t a = 0, b = width - 1; a < b; ++a, --b) {
            uint8_t t = p[a];
            p[a] = p[b];
            p[b] = t;
        }
}

// Packed colour formats keep their four colour bytes as they are.
static void swap_vertex_data(uint8_t *p, GLenum format, uint64_t bytes)
{
    uint32_t stride = format == GL_C4UB_V2F ? 12 : format == GL_C4UB_V3F ? 16 : format == GL_T2F_C4UB_V3F ? 24 : 0;
    uint32_t color = format == GL_T2F_C4UB_V3F ? 8 : 0;
    if (!stride) {
        swap_in_place(p, bytes / 4, 4);
        return;
    }
    for (uint64_t at = 0; at + stride <= bytes; at += stride)
        for (uint32_t word = 0; word < stride; word += 4)
            if (word != color)
                swap_in_place(p + at + word, 1, 4);
}

// WALK_EMPTY: an item without a byte where its count asks for elements, as a null pointer is
// written; refused as a short command is, and told apart.
enum WalkResult { WALK_OK, WALK_SHORT, WALK_FAILED, WALK_NO_MEMORY, WALK_EMPTY };

static WalkResult string_argument(GlsContext *ctx, BinaryWalk *w, GlsString *scratch, const void **out)
{
    uint8_t *field = take(w, 4);
    if (!field)
        return WALK_SHORT;
    if (w->swap)
        swap_in_place(field, 1, 4);
    uint32_t word;
    memcpy(&word, field, 4);
    uint32_t size = word & ~3u;
    if (size < 4 || !take(w, size - 4))
        return WALK_SHORT;
    const uint8_t *text = field + 4, *zero = (const uint8_t *)memchr(text, 0, size - 4);
    if (!zero)
        return WALK_SHORT;
    if (w->swap || !out)
        return WALK_OK;
    if ((word & 1) && ctx->stringType == GLS_UCS1) {
        *out = text;
        return WALK_OK;
    }
    // Text the string type cannot hold, or broken UTF-8, ends the command.
    if (!gls_string_from_utf8(scratch, (const char *)text, (size_t)(zero - text), ctx->stringType))
        return WALK_NO_MEMORY;
    *out = gls_string_text(scratch);
    return WALK_OK;
}

// Reads (and with w->swap set, swaps) every argument of a command into `values`.
static WalkResult walk_binary(GlsContext *ctx, const GlsCommandDesc *command, BinaryWalk *w,
                              GlsArgValue *values, GlsString *strings)
{
    int opcode = (int)(command - gls_command_descs);
    int string_index = 0;
    for (int i = 0; i < command->count; ++i) {
        const GlsArgDesc *d = &command->args[i];
        GlsArgValue *value = d->arg >= 0 ? &values[d->arg] : nullptr;
        switch (d->kind) {
        case GLS_ARG_PAD:
            if (!take(w, (uint64_t)d->refs[0]))
                return WALK_SHORT;
            break;
        case GLS_ARG_IMAGE_FLAGS: {
            uint8_t *at = take(w, 4);
            if (!at)
                return WALK_SHORT;
            if (w->swap)
                swap_in_place(at, 1, 4);
            else if (gls_scalar_value(at, GLS_ELEMENT_UINT).u != 0)
                return WALK_FAILED; // no image-null form is read
            break;
        }
        case GLS_ARG_SCALAR: {
            uint32_t width = element_width(d->element);
            uint8_t *at = take(w, width);
            if (!at)
                return WALK_SHORT;
            if (w->swap)
                swap_in_place(at, 1, width);
            *value = gls_scalar_value(at, d->element);
            break;
        }
        case GLS_ARG_OUT:
        case GLS_ARG_POINTER: {
            uint8_t *at = take(w, 8);
            if (!at)
                return WALK_SHORT;
            if (w->swap)
                swap_in_place(at, 1, 8);
            uint64_t number = gls_scalar_value(at, GLS_ELEMENT_LONG).u;
            if (!w->swap) {
                // A capture of this command writes the stream's own number again.
                ctx->outArgPointers[d->refs[0]] = number;
                if (d->kind == GLS_ARG_POINTER)
                    value->p = (const void *)(uintptr_t)number;
                else if (!(value->p = gls_out_area(ctx, opcode, values)))
                    return WALK_NO_MEMORY;
            }
            break;
        }
        case GLS_ARG_STRING: {
            if (string_index >= GLS_MAX_STRING_ARGS)
                return WALK_SHORT;
            // The swap pass keeps no strings.
            GlsString *scratch = strings ? &strings[string_index] : nullptr;
            ++string_index;
            WalkResult result = string_argument(ctx, w, scratch, w->swap ? nullptr : &value->p);
            if (result != WALK_OK)
                return result;
            break;
        }
        default: {
            GlsArrayShape shape = gls_array_shape(d, values);
            if (shape.count > UINT32_MAX)
                return WALK_SHORT;
            uint64_t bytes = shape.count * shape.width;
            if (d->kind == GLS_ARG_VERTEX_DATA)
                bytes = gls_vertex_data_bytes((GLenum)values[d->refs[0]].u, (GLint)values[d->refs[1]].i);
            bool optional = d->kind == GLS_ARG_IMAGE || d->kind == GLS_ARG_BITMAP;
            if (optional && w->p == w->end) {
                // An image written without data (a null pointer) reads back as one.
                value->p = nullptr;
                break;
            }
            if (w->p == w->end && bytes)
                return WALK_EMPTY;
            uint8_t *at = take(w, bytes);
            if (!at)
                return WALK_SHORT;
            if (w->swap && d->kind == GLS_ARG_VERTEX_DATA)
                swap_vertex_data(at, (GLenum)values[d->refs[0]].u, bytes);
            else if (w->swap)
                swap_in_place(at, shape.count, shape.width);
            value->p = at;
            if (optional && bytes && !w->swap)
                gls_prepare_unpack(ctx);
            break;
        }
        }
    }
    return WALK_OK;
}

void gls_decode_command(int opcode, uint8_t *args, uint32_t size)
{
    GlsContext *ctx = gls_current();
    const GlsCommandDesc *command = &gls_command_descs[opcode];
    GlsArgValue values[GLS_MAX_CALL_ARGS] = {};
    GlsString strings[GLS_MAX_STRING_ARGS] = {};
    BinaryWalk walk = {args, args + size, false};
    WalkResult result = walk_binary(ctx, command, &walk, values, strings);
    static const GLSenum errors[] = {GLS_NONE, GLS_DECODE_ERROR, GLS_PARAMETER_ERROR, GLS_RESOURCE_ERROR,
                                     GLS_DECODE_ERROR};
    if (result == WALK_OK) {
        command->call(ctx->callDispatch[opcode], values);
        gls_note_pixel_store(ctx, opcode, values);
    } else {
        gls_report_error(opcode, errors[result], result == WALK_EMPTY);
    }
    for (GlsString &s : strings)
        gls_string_free(&s);
}

void gls_swap_command(int opcode, uint8_t *args, uint32_t size)
{
    GlsContext *ctx = gls_current();
    GlsArgValue values[GLS_MAX_CALL_ARGS] = {};
    BinaryWalk walk = {args, args + size, true};
    WalkResult result = walk_binary(ctx, &gls_command_descs[opcode], &walk, values, nullptr);
    if (result != WALK_OK) {
        gls_report_error(opcode, GLS_DECODE_ERROR, result == WALK_EMPTY);
        return;
    }
    ((GlsDecodeRow)ctx->decodeDispatch[opcode])(args, size);
}
