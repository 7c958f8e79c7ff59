// The binary forms: LSB first (plain on this little-endian host), MSB first (swapped), and the
// context stream (plain, in memory). beginCommand makes room for the whole command, so the
// items that follow write without a test.
#include "gls/writer.h"
#include "gen/gl_enums.h"

#include "gls/gls.h"
#include "gls/streams.h"
#include "gls/tables.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

template <bool Swap, typename T>
static inline void store(GlsWriter *w, T value)
{
    if (Swap && sizeof(T) > 1) {
        uint8_t bytes[sizeof(T)];
        memcpy(bytes, &value, sizeof(T));
        for (size_t i = 0; i < sizeof(T); ++i)
            w->writePos[i] = bytes[sizeof(T) - 1 - i];
    } else {
        memcpy(w->writePos, &value, sizeof(T));
    }
    w->writePos += sizeof(T);
}

template <bool Swap, typename T>
static void put_scalar(GlsWriter *w, T value)
{
    store<Swap>(w, value);
}

// A null pointer from the application is data: the command keeps the size it promised, with
// zeros where the elements would be, so that it reads back.
static void put_zeros(GlsWriter *w, size_t count)
{
    memset(w->writePos, 0, count);
    w->writePos += count;
}

template <bool Swap, typename T>
static void put_vector(GlsWriter *w, GLuint count, const void *data)
{
    if (!data) {
        put_zeros(w, count * sizeof(T));
        return;
    }
    if (!Swap || sizeof(T) == 1) {
        memcpy(w->writePos, data, count * sizeof(T));
        w->writePos += count * sizeof(T);
        return;
    }
    const T *values = (const T *)data;
    for (GLuint i = 0; i < count; ++i) {
        T value;
        memcpy(&value, values + i, sizeof(T));
        store<Swap>(w, value);
    }
}

// An image in the stream's order: plain forms swap what is stored swapped, swapped forms
// what is stored plain.
template <bool Swap, typename T>
static void put_image(GlsWriter *w, GLboolean swapBytes, GLuint elementsPerRow, GLuint rowGap,
                      GLuint rows, GLuint imageGap, GLuint images, GLuint volumeGap, GLuint volumes,
                      const void *data)
{
    if (!data) {
        put_zeros(w, (size_t)elementsPerRow * rows * images * volumes * sizeof(T));
        return;
    }
    // An empty image is empty at once, however many of its other sides a stream claims.
    if ((uint64_t)elementsPerRow * rows * images * volumes == 0)
        return;
    bool reverse = sizeof(T) > 1 && (Swap ? !swapBytes : swapBytes);
    const uint8_t *p = (const uint8_t *)data;
    for (GLuint v = 0; v < volumes; ++v, p += volumeGap)
        for (GLuint m = 0; m < images; ++m, p += imageGap)
            for (GLuint r = 0; r < rows; ++r, p += rowGap)
                for (GLuint e = 0; e < elementsPerRow; ++e, p += sizeof(T))
                    for (size_t b = 0; b < sizeof(T); ++b)
                        *w->writePos++ = p[reverse ? sizeof(T) - 1 - b : b];
}

template <bool Swap, typename T>
static void put_by_enum(GlsWriter *w, GLenum, T value)
{
    store<Swap>(w, value);
}

template <bool Swap, typename T>
static void put_vector_by_enum(GlsWriter *w, GLenum, GLuint count, const void *data)
{
    put_vector<Swap, T>(w, count, data);
}

template <bool Swap, typename T>
static void put_matrix(GlsWriter *w, const void *matrix)
{
    put_vector<Swap, T>(w, 16, matrix);
}

template <bool Swap>
static void put_nothing(GlsWriter *w, GLuint size)
{
    put_zeros(w, size);
}

template <bool Swap>
static void put_string(GlsWriter *w, GLuint size, const GLubyte *string)
{
    GlsContext *ctx = gls_current();
    int width = !ctx || ctx->stringType == GLS_UCS1 ? 1 : ctx->stringType == GLS_UCS2 ? 2 : 4;
    uint8_t *text = w->writePos + 4, *end = w->writePos + size;
    bool seven_bit = true;
    for (const uint8_t *p = string; p && text < end - 1; p += width) {
        uint32_t c = width == 1 ? *p : width == 2 ? *(const uint16_t *)p : *(const uint32_t *)p;
        if (c == 0)
            break;
        if (c < 0x80) {
            *text++ = (uint8_t)c;
            continue;
        }
        seven_bit = false;
        int extra = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        *text++ = (uint8_t)((extra == 1 ? 0xC0 : extra == 2 ? 0xE0 : 0xF0) | c >> (6 * extra));
        for (int k = extra - 1; k >= 0; --k)
            *text++ = (uint8_t)(0x80 | (c >> (6 * k) & 0x3F));
    }
    memset(text, 0, (size_t)(end - text));
    store<Swap>(w, (GLuint)(size | (seven_bit ? 1 : 0)));
    w->writePos = end;
}

template <bool Swap>
static void put_out_arg(GlsWriter *w, GLuint index, const GLvoid *pointer)
{
    GlsContext *ctx = gls_current();
    GLulong value = (GLulong)(uintptr_t)pointer;
    if (ctx && ctx->callNesting > 0 && index < GLS_MAX_OUT_ARGS && !ctx->callFuncs[w->opcode])
        value = ctx->outArgPointers[index];
    store<Swap>(w, value);
}

template <bool Swap>
static void put_pointer(GlsWriter *w, const GLvoid *pointer)
{
    put_out_arg<Swap>(w, 4, pointer);
}

static uint8_t reverse_bits(uint8_t b)
{
    b = (uint8_t)((b & 0xF0) >> 4 | (b & 0x0F) << 4);
    b = (uint8_t)((b & 0xCC) >> 2 | (b & 0x33) << 2);
    return (uint8_t)((b & 0xAA) >> 1 | (b & 0x55) << 1);
}

template <bool Swap>
static void put_bitmap(GlsWriter *w, GLboolean lsbFirst, GLuint firstBit, GLuint bitsPerRow,
                       GLuint gapBits, GLuint rows, const GLubyte *data)
{
    GLuint rowBytes = (bitsPerRow + 7) / 8;
    if (!data) {
        put_zeros(w, (size_t)rowBytes * rows);
        return;
    }
    uint8_t lastMask = bitsPerRow & 7 ? (uint8_t)(255 << (8 - (bitsPerRow & 7))) : 255;
    firstBit &= 7;
    const GLubyte *row = data;
    for (GLuint r = 0; r < rows; ++r) {
        for (GLuint b = 0; b < rowBytes; ++b) {
            uint8_t byte = lsbFirst ? reverse_bits(row[b]) : row[b];
            if (firstBit && firstBit + bitsPerRow - b * 8 > 8) {
                uint8_t next = lsbFirst ? reverse_bits(row[b + 1]) : row[b + 1];
                byte = (uint8_t)(byte << firstBit | next >> (8 - firstBit));
            } else if (firstBit) {
                byte = (uint8_t)(byte << firstBit);
            }
            *w->writePos++ = b == rowBytes - 1 ? byte & lastMask : byte;
        }
        row += (firstBit + bitsPerRow + gapBits) / 8;
    }
}

template <bool Swap>
static void put_vertex_data(GlsWriter *w, GLenum format, GLuint size, const GLvoid *data)
{
    if (size == 0 || format < GL_V2F || format > GL_T4F_C4F_N3F_V4F)
        return;
    if (!data) {
        put_zeros(w, size);
        return;
    }
    int before = format == GL_T2F_C4UB_V3F ? 2 : 0, after = format == GL_C4UB_V2F ? 2 : 3;
    int stride = format == GL_C4UB_V2F ? 12 : format == GL_C4UB_V3F ? 16 : 24;
    if (format != GL_C4UB_V2F && format != GL_C4UB_V3F && format != GL_T2F_C4UB_V3F) {
        put_vector<Swap, GLfloat>(w, size / 4, data);
        return;
    }
    const uint8_t *vertex = (const uint8_t *)data;
    for (GLuint v = 0; v < size / (GLuint)stride; ++v, vertex += stride) {
        put_vector<Swap, GLfloat>(w, (GLuint)before, vertex);
        put_vector<Swap, GLubyte>(w, 4, vertex + 4 * before);
        put_vector<Swap, GLfloat>(w, (GLuint)after, vertex + 4 * before + 4);
    }
}

// ---------------------------------------------------------------------------------------------
// Commands

static bool long_header(GLSopcode opcode, uint64_t padded)
{
    return opcode == OP_glsBeginGLS || opcode == OP_glsEndGLS || opcode >= 65536 || padded > 65531;
}

// The largest payload a command can carry: its size with the long header fits 32 bits, and the
// buffer that holds it fits the host's memory.
static const uint64_t max_payload = (sizeof(size_t) < 8 ? 0x7FFFFFFFu : 0xFFFFFFFFu) - 15;

template <bool Swap>
static GLboolean begin_command(GlsWriter *w, GLSopcode opcode, uint64_t size)
{
    if (w->failed)
        return 0;
    if (size > max_payload) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    size = (size + 3) & ~(uint64_t)3;
    bool is_long = long_header(opcode, size);
    size += is_long ? 12 : 4;
    bool fits = w->writePos <= w->writeLimit && (uint64_t)(w->writeLimit - w->writePos) >= size;
    if (!fits && !w->allocate(w, (size_t)size))
        return 0;
    w->opcode = opcode;
    w->commandEnd = w->writePos + size;
    w->commandStart = w->writePos;
    if (is_long) {
        store<Swap>(w, (GLushort)0);
        store<Swap>(w, (GLushort)0);
        store<Swap>(w, (GLuint)opcode);
        store<Swap>(w, (GLuint)size);
    } else {
        store<Swap>(w, (GLushort)opcode);
        store<Swap>(w, (GLushort)size);
    }
    w->wordParity ^= (int32_t)((size >> 2) & 1);
    return 1;
}

template <bool Swap>
static void end_command(GlsWriter *w)
{
    while (w->writePos < w->commandEnd && (w->commandEnd - w->writePos) % 4)
        *w->writePos++ = 0;
    if (w->writePos != w->commandEnd) {
        // A size that does not match its items is a fault in a capture function.
        fprintf(stderr, "GLS encoder error on command %s\n",
                gls_opcode_exists(w->opcode) ? gls_opcode_names[w->opcode] : "?");
        exit(1);
    }
}

static void next_list(GlsWriter *) {}

template <bool Swap>
static GLboolean pad_to_double(GlsWriter *w, GLuint parity)
{
    if (w->failed)
        return 0;
    if ((GLuint)w->wordParity != parity)
        return 1;
    if (w->writePos + 4 > w->writeLimit && !w->allocate(w, 4))
        return 0;
    uint8_t *start = w->commandStart;
    if (start) {
        uint16_t head[2];
        memcpy(head, start, 4);
        if (Swap) {
            head[0] = __builtin_bswap16(head[0]);
            head[1] = __builtin_bswap16(head[1]);
        }
        if (head[0] != 0 && head[1] <= 65531) {
            store<Swap>(w, (GLuint)0);
            head[1] = (uint16_t)(head[1] + 4);
            uint16_t field = Swap ? __builtin_bswap16(head[1]) : head[1];
            memcpy(start + 2, &field, 2);
            w->commandEnd += 4;
            w->wordParity ^= 1;
            return 1;
        }
        if (head[0] == 0 && head[1] == 0) {
            uint32_t fields[2];
            memcpy(fields, start + 4, 8);
            uint32_t opcode = Swap ? __builtin_bswap32(fields[0]) : fields[0];
            uint32_t size = Swap ? __builtin_bswap32(fields[1]) : fields[1];
            if (opcode != OP_glsBeginGLS && size <= 0xFFFFFFFBu) {
                store<Swap>(w, (GLuint)0);
                size += 4;
                fields[1] = Swap ? __builtin_bswap32(size) : size;
                memcpy(start + 8, &fields[1], 4);
                w->commandEnd += 4;
                w->wordParity ^= 1;
                return 1;
            }
        }
    }
    if (!begin_command<Swap>(w, OP_glsPad, 0))
        return 0;
    end_command<Swap>(w);
    return 1;
}

// The allocate slot of a file or callback stream: flush, and if the command still does not
// fit, a buffer of exactly its size.
static GLboolean external_allocate(GlsWriter *w, size_t size)
{
    if (!gls_flush_writer(w))
        return 0;
    if (w->writePos + size <= w->writeLimit)
        return 1;
    gls_free(w->bufferBase);
    size_t total = size + (w->wordParity ? 4 : 0);
    w->bufferBase = (uint8_t *)gls_malloc(total);
    if (!w->bufferBase) {
        w->writePos = w->writeLimit = w->flushStart = nullptr;
        w->failed = 1;
        return 0;
    }
    w->flushStart = w->writePos = w->bufferBase + (w->wordParity ? 4 : 0);
    w->writeLimit = w->bufferBase + total;
    return 1;
}

template <bool Swap>
static void init_slots(GlsWriter *w)
{
    GLS_BINARY_WRITER_SLOTS(w);
}

void gls_init_binary_slots(GlsWriter *writer, int type)
{
    if (type == GLS_BINARY_MSB_FIRST)
        init_slots<true>(writer);
    else
        init_slots<false>(writer);
}
