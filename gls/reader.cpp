// Reading streams: the buffer that grows and keeps its 8-byte phase, the groups of a stream, the
// binary command loop in both byte orders, the walk through a context stream's blocks, and the
// operations that read: glsCallStream, glsCallArray, glsCopyStream.
#include "gls/decode.h"

#include "gen/gl_enums.h"
#include "gls/gls.h"
#include "gls/gls_string.h"
#include "gls/streams.h"
#include "gls/tables.h"
#include "gls/writer.h"

#include <cstdio>
#include <cstring>

// ---------------------------------------------------------------------------------------------
// The buffer

static size_t read_bytes(GlsReader *r, uint8_t *into, size_t room)
{
    GlsReadStream *stream = r->stream;
    if (stream->file) {
        size_t got = fread(into, 1, room, stream->file);
        if (got < room && ferror(stream->file)) {
            gls_set_error(GLS_IO_ERROR);
            clearerr(stream->file);
        }
        return got;
    }
    return stream->func ? stream->func(room, into) : 0;
}

// Puts the unread bytes at base + phase, in a block of `capacity` bytes when that is larger.
static bool place(GlsReader *r, size_t phase, size_t capacity)
{
    size_t rest = (size_t)(r->limit - r->cursor);
    if (capacity <= r->size) {
        if (r->base + phase != r->cursor)
            memmove(r->base + phase, r->cursor, rest);
    } else {
        uint8_t *block = (uint8_t *)gls_malloc(capacity);
        if (!block)
            return false;
        memcpy(block + phase, r->cursor, rest);
        gls_free(r->base);
        r->base = block;
        r->size = (uint32_t)capacity;
    }
    r->start = r->cursor = r->base + phase;
    r->limit = r->cursor + rest;
    return true;
}

// At least `need` bytes behind the cursor. With keepPhase the data keeps its place modulo 8, so
// that doubles stay aligned. The buffer grows at most to twice what it holds, so a size that
// lies costs memory only as far as the stream really has bytes.
bool gls_refill(GlsReader *r, size_t need, bool keepPhase)
{
    if (!r->cursor)
        return false;
    if ((size_t)(r->limit - r->cursor) >= need)
        return true;
    if (!r->stream || r->ended || need > 0xFFFFFFF0u)
        return false;
    size_t phase = keepPhase ? (size_t)(r->cursor - r->base) & 4 : 0;
    r->consumed += (size_t)(r->cursor - r->start);
    if (!place(r, phase, r->size))
        return false;
    while ((size_t)(r->limit - r->cursor) < need) {
        size_t room = (size_t)(r->base + r->size - r->limit);
        if (room == 0) {
            size_t grown = (size_t)r->size * 2, target = phase + need;
            if (!place(r, phase, grown < target ? grown : target))
                return false;
            continue;
        }
        size_t got = read_bytes(r, r->limit, room);
        if (got == 0) {
            r->ended = 1;
            return false;
        }
        r->limit += got;
    }
    return true;
}

static void close_reader(GlsReader *r)
{
    gls_text_release(r);
    gls_free(r->base);
    r->base = r->start = r->cursor = r->limit = nullptr;
}

// ---------------------------------------------------------------------------------------------
// Stream starts

static uint32_t word_at(const uint8_t *p, bool swap)
{
    uint32_t w;
    memcpy(&w, p, 4);
    return swap ? __builtin_bswap32(w) : w;
}

// A binary glsBeginGLS of either byte order: four zero bytes, then opcode 16, size 20 and a
// known major version.
static GLSenum binary_start(GlsReader *r)
{
    if (!gls_refill(r, 20, false))
        return GLS_NONE;
    const uint8_t *p = r->cursor;
    if (word_at(p, false) != 0)
        return GLS_NONE;
    for (int swap = 0; swap < 2; ++swap) {
        if (word_at(p + 4, swap) == OP_glsBeginGLS && word_at(p + 8, swap) == 20 && word_at(p + 12, swap) <= 1) {
            r->version[0] = (int)word_at(p + 12, swap);
            r->version[1] = (int)word_at(p + 16, swap);
            r->cursor += 20;
            return swap ? GLS_BINARY_MSB_FIRST : GLS_BINARY_LSB_FIRST;
        }
    }
    return GLS_NONE;
}

static GLSenum stream_start(GlsReader *r)
{
    GLSenum type = binary_start(r);
    if (type == GLS_NONE && gls_text_start(r))
        type = GLS_TEXT;
    return type;
}

static bool open_reader(GlsReader *r, GlsReadStream *stream, const uint8_t *memory, size_t size)
{
    memset(r, 0, sizeof *r);
    if (memory && size > 0xFFFFFFF0u)
        return false;
    r->stream = stream;
    size_t capacity = memory ? size : (size_t)GLS_READ_BUFFER_SIZE;
    r->base = (uint8_t *)gls_malloc(capacity ? capacity : 1);
    if (!r->base)
        return false;
    r->size = (uint32_t)capacity;
    r->start = r->cursor = r->limit = r->base;
    if (memory) {
        // A copy: a swapped read swaps in place, and the caller's block is constant.
        memcpy(r->base, memory, size);
        r->limit += size;
        r->ended = 1;
    }
    r->type = stream_start(r);
    if (r->type == GLS_NONE) {
        close_reader(r);
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// The binary command loop

static void publish(GlsContext *ctx, GlsReader *r, uint8_t **position)
{
    ctx->readConsumed = r->consumed;
    ctx->readStart = r->start;
    ctx->readCursor = (const uint8_t **)position;
}

static void unsupported_opcode(uint32_t opcode)
{
    char name[16];
    snprintf(name, sizeof name, "0x%X", opcode);
    gls_report_unsupported(name);
}

// Hands one command to its row: the swap row for a swapped stream, else decodeDispatch.
static void dispatch_command(GlsContext *ctx, uint32_t opcode, uint8_t *args, uint32_t size, bool swapped)
{
    if (opcode >= OP_glsBeginGLS && opcode < GLS_OPCODE_COUNT && gls_opcode_exists((int)opcode)) {
        if (swapped && !ctx->abortCall)
            ((GlsDecodeRow)gls_swap_table[opcode])(args, size);
        else
            ((GlsDecodeRow)ctx->decodeDispatch[opcode])(args, size);
    } else if (!ctx->abortCall) {
        unsupported_opcode(opcode);
    }
}

// One group's commands up to its glsEndGLS: 1 when it came, 0 when the stream ended first or
// held bytes that are no command.
static int read_binary(GlsContext *ctx, GlsReader *r, bool swapped)
{
    uint8_t *position = r->cursor;
    publish(ctx, r, &position);
    for (;;) {
        if (r->limit - position < 12) {
            r->cursor = position;
            if (!gls_refill(r, 12, true)) {
                gls_set_error(GLS_DECODE_ERROR);
                return 0;
            }
            position = r->cursor;
            publish(ctx, r, &position);
        }
        uint32_t head = word_at(position, swapped);
        uint32_t opcode = swapped ? head >> 16 : head & 0xFFFF;
        uint32_t size = swapped ? head & 0xFFFF : head >> 16;
        uint32_t header = 4;
        if (opcode == 0 || size == 0) {
            opcode = word_at(position + 4, swapped);
            size = word_at(position + 8, swapped);
            header = 12;
            if (opcode == 0 || size == 0) {
                r->cursor = position;
                gls_set_error(GLS_DECODE_ERROR);
                return 0;
            }
            if (opcode == OP_glsEndGLS) {
                r->cursor = position + 12;
                return 1;
            }
        }
        if (size < header || size % 4) {
            r->cursor = position;
            gls_set_error(GLS_DECODE_ERROR);
            return 0;
        }
        if ((size_t)(r->limit - position) < size) {
            r->cursor = position;
            if (!gls_refill(r, size, true)) {
                gls_set_error(GLS_DECODE_ERROR);
                return 0;
            }
            position = r->cursor;
            publish(ctx, r, &position);
        }
        dispatch_command(ctx, opcode, position + header, size - header, swapped);
        position += size;
    }
}

// ---------------------------------------------------------------------------------------------
// Context streams

// The end record's link holds only the low word of an address on a 64-bit host, so the walk
// follows the ring of blocks and takes the record as the marker of a block's end.
static void read_context_stream(GlsContext *ctx, GlsContextStream *stream)
{
    ++stream->readCount;
    GlsBlock *block = stream->blocks;
    bool ended = false;
    size_t done = 0;
    do {
        uint8_t *position = block->base, *end = block->writePos;
        ctx->readConsumed = done;
        ctx->readStart = block->base;
        ctx->readCursor = (const uint8_t **)&position;
        while (!ended && end - position >= 4) {
            uint32_t head = word_at(position, false);
            uint32_t opcode = head & 0xFFFF, size = head >> 16, header = 4;
            if (opcode == 0 || size == 0) {
                if (end - position < 12)
                    break;
                opcode = word_at(position + 4, false);
                size = word_at(position + 8, false);
                header = 12;
                if (opcode == 0)
                    break; // the end record
            }
            if (size < header || size % 4 || size > (size_t)(end - position)) {
                gls_set_error(GLS_DECODE_ERROR);
                ended = true;
                break;
            }
            if (opcode >= GL_POINTS + 1 && opcode <= GL_POLYGON + 1) {
                // A glBegin of a known mode costs one word: the opcode is the mode plus one.
                GLenum mode = opcode - 1;
                ((GlsDecodeRow)ctx->decodeDispatch[OP_glBegin])((uint8_t *)&mode, 4);
            } else {
                dispatch_command(ctx, opcode, position + header, size - header, false);
            }
            position += size;
        }
        done += (size_t)(position - block->base);
        block = block->listNext;
    } while (!ended && block != stream->blocks);
    ctx->readCursor = nullptr;
    if (--stream->readCount == 0 && stream->deletePending)
        gls_free_context_stream(stream);
}

// ---------------------------------------------------------------------------------------------
// Streams and their groups

static void read_stream(GlsContext *ctx, GlsReader *r)
{
    ctx->readConsumed = 0;
    ctx->readStart = nullptr;
    ctx->readCursor = nullptr;
    while (r->type != GLS_NONE) {
        GLint version[2] = {r->version[0], r->version[1]};
        ((GlsDecodeRow)ctx->decodeDispatch[OP_glsBeginGLS])((uint8_t *)version, sizeof version);
        int ended = r->type == GLS_TEXT ? gls_read_text(ctx, r)
                                        : read_binary(ctx, r, r->type == GLS_BINARY_MSB_FIRST);
        if (!ended)
            break;
        if (r->type == GLS_TEXT) {
            // Up to the next group's first byte, where a binary group may start as well: its
            // words are then put at the buffer's base, aligned as in a stream of its own.
            gls_text_skip_blanks(r);
            r->consumed += (size_t)(r->cursor - r->start);
            place(r, 0, r->size);
        }
        ((GlsDecodeRow)ctx->decodeDispatch[OP_glsEndGLS])(nullptr, 0);
        ctx->readConsumed = r->consumed + (size_t)(r->cursor - r->start);
        ctx->readCursor = nullptr;
        // A stream may hold several groups, in any mix of forms.
        r->type = stream_start(r);
    }
    ctx->readCursor = nullptr;
}

static GlsReadStream *open_read_stream(GlsContext *ctx, const char *name)
{
    GlsReadStream *stream = (GlsReadStream *)gls_calloc(sizeof(GlsReadStream));
    if (!stream)
        return nullptr;
    if (!name[0]) {
        stream->func = ctx->readFunc;
        if (!stream->func)
            stream->file = ctx->defaultReadChannel;
        return stream;
    }
    stream->file = gls_open_by_read_rules(ctx, name, &stream->name);
    if (!stream->file) {
        gls_string_free(&stream->name);
        gls_free(stream);
        return nullptr;
    }
    stream->ownsFile = 1;
    return stream;
}

static void close_read_stream(GlsReadStream *stream)
{
    if (stream->ownsFile)
        fclose(stream->file);
    gls_string_free(&stream->name);
    gls_free(stream);
}

// The frame every reading operation shares: the abort and nesting tests, the saved position of
// an outer read, and the end of an abort when the outermost read is over.
static bool enter_read(GlsContext *ctx, size_t saved_position[1], const uint8_t *saved_pointers[2])
{
    if (ctx->abortCall)
        return false;
    if (ctx->callNesting >= GLS_CALL_NESTING_LIMIT) {
        gls_set_error(GLS_STATE_ERROR);
        glsEnable(GLS_ABORT_CALL);
        return false;
    }
    if (ctx->callNesting == 0 && ctx->captureNesting == 0)
        gls_reset_gl_info(ctx);
    saved_position[0] = ctx->readConsumed;
    saved_pointers[0] = ctx->readStart;
    saved_pointers[1] = (const uint8_t *)ctx->readCursor;
    ++ctx->callNesting;
    return true;
}

static void leave_read(GlsContext *ctx, const size_t saved_position[1], const uint8_t *const saved_pointers[2])
{
    --ctx->callNesting;
    ctx->readConsumed = saved_position[0];
    ctx->readStart = saved_pointers[0];
    ctx->readCursor = (const uint8_t **)saved_pointers[1];
    if (ctx->abortCall && ctx->callNesting == 0)
        glsDisable(GLS_ABORT_CALL);
}

GLSenum gls_call_stream(const GLubyte *name)
{
    GlsContext *ctx = gls_current();
    if (!ctx) {
        gls_set_error(GLS_STATE_ERROR);
        return GLS_NONE;
    }
    size_t saved_position[1];
    const uint8_t *saved_pointers[2];
    if (!name || !enter_read(ctx, saved_position, saved_pointers))
        return GLS_NONE;
    GlsString scratch = {};
    const char *utf8 = gls_utf8_name(ctx, name, &scratch);
    GLSenum type = GLS_NONE;
    GlsContextStream *context_stream = utf8 ? gls_find_context_stream(ctx, utf8) : nullptr;
    if (context_stream) {
        // The stream of the capture in hand is not read: each command read would be written to
        // it again, behind the read, which would never end. One written by a capture below it
        // is read as it stands, since what the read executes goes to the capture in hand.
        bool written_now = ctx->currentWriter && ctx->currentWriter->contextStream == context_stream;
        if (context_stream->deletePending || written_now) {
            gls_set_error(GLS_STATE_ERROR);
        } else {
            gls_context_stream_catch_up(ctx, context_stream);
            read_context_stream(ctx, context_stream);
            type = GLS_CONTEXT;
        }
    } else if (utf8) {
        GlsReadStream *stream = open_read_stream(ctx, utf8);
        GlsReader reader;
        if (!stream) {
            gls_set_error(GLS_PARAMETER_ERROR);
        } else if (!open_reader(&reader, stream, nullptr, 0)) {
            gls_set_error(GLS_PARAMETER_ERROR);
            close_read_stream(stream);
        } else {
            type = reader.type;
            read_stream(ctx, &reader);
            close_reader(&reader);
            close_read_stream(stream);
        }
    }
    gls_string_free(&scratch);
    leave_read(ctx, saved_position, saved_pointers);
    return type;
}

GLSenum glsCallStream(const GLubyte *name) { return gls_call_stream(name); }

void glsCallArray(GLSenum type, size_t size, const GLubyte *data)
{
    GlsContext *ctx = gls_current();
    if (!ctx) {
        gls_set_error(GLS_STATE_ERROR);
        return;
    }
    if (type != GLS_BINARY_LSB_FIRST && type != GLS_BINARY_MSB_FIRST && type != GLS_TEXT) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    size_t saved_position[1];
    const uint8_t *saved_pointers[2];
    if (!data || !enter_read(ctx, saved_position, saved_pointers))
        return;
    GlsReader reader;
    if (!open_reader(&reader, nullptr, data, size)) {
        gls_set_error(GLS_PARAMETER_ERROR);
    } else {
        if (reader.type != type)
            gls_set_error(GLS_PARAMETER_ERROR);
        else
            read_stream(ctx, &reader);
        close_reader(&reader);
    }
    leave_read(ctx, saved_position, saved_pointers);
}

void glsCopyStream(const GLubyte *source, const GLubyte *destination, GLSenum type, GLbitfield writeFlags)
{
    GlsContext *ctx = gls_current();
    if (!ctx) {
        gls_set_error(GLS_STATE_ERROR);
        return;
    }
    // While the capture is open every decoded command goes through the forwarders into the
    // capture functions, by the capture flags as they stand.
    if (!glsBeginCapture(destination, type, writeFlags))
        return;
    gls_call_stream(source);
    glsEndCapture();
}

size_t glsGetConsumedBytes()
{
    GlsContext *ctx = gls_current();
    if (!ctx) {
        gls_set_error(GLS_STATE_ERROR);
        return 0;
    }
    if (!ctx->readCursor || !ctx->readStart)
        return ctx->readConsumed;
    return ctx->readConsumed + (size_t)(*ctx->readCursor - ctx->readStart);
}

// The type of a stream's first bytes, by the same starts that a read takes.
GLSenum gls_detect_stream_type(const uint8_t *bytes, size_t count)
{
    GlsReader reader;
    if (!open_reader(&reader, nullptr, bytes, count))
        return GLS_NONE;
    GLSenum type = reader.type;
    close_reader(&reader);
    return type;
}
