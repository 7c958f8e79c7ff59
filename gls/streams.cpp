// Streams: external writers on a named file, a callback or the default channel; context streams
// in memory; the read and write prefixes; and the operations on streams by name.
#include "gls/writer.h"

#include "gls/containers.h"
#include "gls/gls.h"
#include "gls/gls_string.h"
#include "gls/streams.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

struct GlsPrefix {
    GlsBox box;
    GlsString text;
};

static GlsPrefix *new_prefix(const char *text)
{
    GlsPrefix *prefix = (GlsPrefix *)gls_calloc(sizeof(GlsPrefix));
    if (prefix && !gls_string_set(&prefix->text, text)) {
        gls_free(prefix);
        return nullptr;
    }
    return prefix;
}

static void free_prefix(GlsPrefix *prefix)
{
    gls_string_free(&prefix->text);
    gls_free(prefix);
}

// ---------------------------------------------------------------------------------------------
// Context streams: a ring of blocks, each a run of binary commands and an end record of five
// words whose last holds the next block's base.

enum : int { END_RECORD = 20, FIRST_BLOCK = 24, NEW_BLOCK_MIN = 65536 };

static GlsBlock *new_block(size_t capacity)
{
    GlsBlock *block = (GlsBlock *)gls_calloc(sizeof(GlsBlock));
    if (!block)
        return nullptr;
    block->base = (uint8_t *)gls_calloc(capacity);
    if (!block->base) {
        gls_free(block);
        return nullptr;
    }
    block->end = block->base + capacity;
    block->writePos = block->base;
    return block;
}

static void free_block(GlsBlock *block)
{
    gls_free(block->base);
    gls_free(block);
}

// Writes the end record at the block's writePos, with a glsPad first when the used length is
// 4 modulo 8, so that the record starts on an 8-byte boundary.
static void write_end_record(GlsBlock *block, const uint8_t *link)
{
    if ((block->writePos - block->base) % 8 == 4) {
        uint16_t pad[2] = {OP_glsPad, 4};
        memcpy(block->writePos, pad, 4);
        block->writePos += 4;
    }
    uint32_t record[5] = {0, 0, 0, 0, 0};
    uintptr_t address = (uintptr_t)link;
    memcpy(&record[4], &address, sizeof(uint32_t)); // the low word: the record is a marker
    memcpy(block->writePos, record, END_RECORD);
    block->writePos += END_RECORD;
}

static bool ends_in_record(const GlsBlock *block)
{
    if (block->writePos - block->base < END_RECORD)
        return false;
    const uint32_t *record = (const uint32_t *)(block->writePos - END_RECORD);
    return record[0] == 0 && record[1] == 0 && record[2] == 0 && record[3] == 0;
}

// Drops the end record of a block; a glsPad before it stays a command of the stream.
static void strip_end_record(GlsBlock *block)
{
    if (ends_in_record(block))
        block->writePos -= END_RECORD;
}

static GlsBlock *last_block(GlsContextStream *stream) { return stream->blocks ? stream->blocks->listPrev : nullptr; }

static GlsBlock *previous_block(GlsContextStream *stream, GlsBlock *block)
{
    return block == stream->blocks ? nullptr : block->listPrev;
}

static void relink_previous(GlsContextStream *stream, GlsBlock *block)
{
    if (GlsBlock *before = previous_block(stream, block)) {
        strip_end_record(before);
        write_end_record(before, block->base);
    }
}

static void append_block(GlsContextStream *stream, GlsBlock *block)
{
    if (!stream->blocks) {
        block->listNext = block->listPrev = block;
        stream->blocks = block;
        return;
    }
    GlsBlock *last = stream->blocks->listPrev;
    block->listPrev = last;
    block->listNext = stream->blocks;
    last->listNext = block;
    stream->blocks->listPrev = block;
}

// Cuts the stream back to `block` at `length` bytes: its spare room goes, later blocks go. The
// room stays while a read walks the block: its storage must not move under the read.
static void trim_stream(GlsContextStream *stream, GlsBlock *block, size_t length)
{
    block->writePos = block->base + length;
    write_end_record(block, nullptr);
    if (block->writePos < block->end && stream->readCount == 0) {
        size_t used = (size_t)(block->writePos - block->base);
        uint8_t *storage = (uint8_t *)gls_malloc(used);
        if (storage) {
            memcpy(storage, block->base, used);
            gls_free(block->base);
            block->base = storage;
            block->end = block->writePos = storage + used;
            relink_previous(stream, block);
        }
    }
    while (stream->blocks->listPrev != block) {
        GlsBlock *doomed = stream->blocks->listPrev;
        doomed->listPrev->listNext = stream->blocks;
        stream->blocks->listPrev = doomed->listPrev;
        free_block(doomed);
    }
}

void gls_context_stream_catch_up(GlsContext *ctx, GlsContextStream *stream)
{
    for (int i = 0; i < ctx->captureNesting; ++i) {
        GlsWriter *writer = ctx->writerStack[i];
        if (writer->contextStream == stream && !writer->failed)
            last_block(stream)->writePos = writer->writePos;
    }
}

void gls_free_context_stream(GlsContextStream *stream)
{
    while (GlsBlock *block = stream->blocks) {
        if (block->listNext == block) {
            stream->blocks = nullptr;
        } else {
            block->listPrev->listNext = block->listNext;
            block->listNext->listPrev = block->listPrev;
            stream->blocks = block->listNext;
        }
        free_block(block);
    }
    gls_string_free(&stream->name);
    gls_free(stream);
}

GlsContextStream *gls_find_context_stream(GlsContext *ctx, const char *name)
{
    intptr_t value = 0;
    if (!ctx->contextStreamDict || !gls_dict_find(ctx->contextStreamDict, name, &value))
        return nullptr;
    return (GlsContextStream *)value;
}

static GlsContextStream *new_context_stream(GlsContext *ctx, const char *name)
{
    GlsContextStream *stream = (GlsContextStream *)gls_calloc(sizeof(GlsContextStream));
    if (!stream)
        return nullptr;
    GlsBlock *block = new_block(FIRST_BLOCK);
    if (!block || !gls_string_set(&stream->name, name)) {
        if (block)
            free_block(block);
        gls_string_free(&stream->name);
        gls_free(stream);
        return nullptr;
    }
    append_block(stream, block);
    write_end_record(block, nullptr);
    // The dictionary keeps the stream's own copy of the name as its key.
    if (!gls_dict_insert(ctx->contextStreamDict, gls_string_text(&stream->name), (intptr_t)stream)) {
        gls_set_error(GLS_RESOURCE_ERROR);
        gls_free_context_stream(stream);
        return nullptr;
    }
    gls_list_append(&ctx->contextStreamList, (GlsBox *)stream);
    return stream;
}

static void remove_context_stream(GlsContext *ctx, GlsContextStream *stream)
{
    gls_dict_remove(ctx->contextStreamDict, gls_string_text(&stream->name));
    gls_list_remove(&ctx->contextStreamList, (GlsBox *)stream);
}

// The allocate slot of a context stream: grow the block in place while it is under 90% full,
// else start a new block of at least 64 KB. A stream read below a capture of its own (a call
// function may end the capture in hand) gets a new block: the storage being read stays put.
static GLboolean context_allocate(GlsWriter *writer, size_t size)
{
    GlsContextStream *stream = writer->contextStream;
    GlsBlock *block = last_block(stream);
    size_t used = (size_t)(writer->writePos - block->base);
    float ratio = (float)(used + FIRST_BLOCK) / (float)(block->end - block->base);
    size_t needed = size + 28;
    gls_flush_writer(writer);
    block->writePos = writer->writePos;
    if (ratio < 0.9f && stream->readCount == 0) {
        uint8_t *storage = (uint8_t *)gls_malloc(used + needed);
        if (!storage) {
            writer->failed = 1;
            return 0;
        }
        memcpy(storage, block->base, used);
        gls_free(block->base);
        block->base = storage;
        block->end = storage + used + needed;
        block->writePos = writer->writePos = storage + used;
        writer->writeLimit = block->end - FIRST_BLOCK;
        relink_previous(stream, block);
        return 1;
    }
    GlsBlock *next = new_block(needed > (size_t)NEW_BLOCK_MIN ? needed : (size_t)NEW_BLOCK_MIN);
    if (!next) {
        writer->failed = 1;
        return 0;
    }
    if (writer->wordParity) {
        uint16_t pad[2] = {OP_glsPad, 4};
        memcpy(next->writePos, pad, 4);
        next->writePos += 4;
    }
    write_end_record(block, next->base);
    append_block(stream, next);
    writer->writePos = next->writePos;
    writer->writeLimit = next->end - FIRST_BLOCK;
    return 1;
}

GLboolean gls_context_allocate(GlsWriter *writer, size_t size) { return context_allocate(writer, size); }

static GlsWriter *create_context_writer(GlsContext *ctx, const char *name, GLbitfield writeFlags)
{
    if (!ctx->contextStreamDict) {
        ctx->contextStreamDict = gls_dict_create(16, 1);
        if (!ctx->contextStreamDict)
            return nullptr;
    }
    GlsContextStream *stream = gls_find_context_stream(ctx, name);
    if (stream && (stream->readCount || stream->writing)) {
        gls_set_error(GLS_STATE_ERROR);
        return nullptr;
    }
    GlsWriter *writer = (GlsWriter *)gls_calloc(sizeof(GlsWriter));
    if (!writer)
        return nullptr;
    if (!stream) {
        stream = new_context_stream(ctx, name);
        if (!stream) {
            gls_free(writer);
            return nullptr;
        }
    } else if (!(writeFlags & GLS_WRITE_APPEND)) {
        trim_stream(stream, stream->blocks, 0);
    }
    stream->writing = 1;
    GlsBlock *block = last_block(stream);
    strip_end_record(block);
    writer->writePos = block->writePos;
    writer->writeLimit = block->end - FIRST_BLOCK;
    writer->contextStream = stream;
    writer->floatTexts = ctx->floatTexts;
    writer->wordParity = (int32_t)(((block->writePos - block->base) / 4) & 1);
    gls_init_binary_slots(writer, GLS_CONTEXT);
    writer->allocate = context_allocate;
    writer->type = GLS_CONTEXT;
    writer->writeFlags = (int)writeFlags;
    return writer;
}

// ---------------------------------------------------------------------------------------------
// Per-context state

void gls_streams_init(GlsContext *ctx)
{
    const char *write_prefix = getenv("GLS_WRITE_PREFIX");
    ctx->writePrefix = new_prefix(write_prefix ? write_prefix : "");
    const char *list = getenv("GLS_READ_PREFIX_LIST");
    const char *separators = getenv("GLS_LIST_SEPARATOR");
    if (!separators)
        separators = ":";
    while (list && *list) {
        size_t length = strcspn(list, separators);
        if (length) {
            GlsPrefix *prefix = (GlsPrefix *)gls_calloc(sizeof(GlsPrefix));
            if (prefix && gls_string_append(&prefix->text, list, length))
                gls_list_append(&ctx->readPrefixList, &prefix->box);
            else if (prefix)
                free_prefix(prefix);
        }
        list += length;
        if (*list)
            ++list;
    }
    // The current directory is always searched last.
    if (GlsPrefix *prefix = new_prefix(""))
        gls_list_append(&ctx->readPrefixList, &prefix->box);
}

void gls_streams_release(GlsContext *ctx)
{
    if (ctx->writePrefix) {
        free_prefix(ctx->writePrefix);
        ctx->writePrefix = nullptr;
    }
    while (GlsBox *box = ctx->readPrefixList.head) {
        gls_list_remove(&ctx->readPrefixList, box);
        free_prefix((GlsPrefix *)box);
    }
    while (GlsBox *box = ctx->contextStreamList.head) {
        gls_list_remove(&ctx->contextStreamList, box);
        gls_free_context_stream((GlsContextStream *)box);
    }
    gls_dict_delete(ctx->contextStreamDict);
    ctx->contextStreamDict = nullptr;
}

void glsPrependReadPrefix(const GLubyte *prefix)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !prefix)
        return;
    GlsString scratch = {};
    const char *utf8 = gls_utf8_name(ctx, prefix, &scratch);
    if (GlsPrefix *entry = utf8 ? new_prefix(utf8) : nullptr)
        gls_list_prepend(&ctx->readPrefixList, &entry->box);
    gls_string_free(&scratch);
}

void glsRemoveReadPrefix(GLuint index)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx)
        return;
    GlsBox *box = index < (GLuint)ctx->readPrefixList.count ? gls_list_at(&ctx->readPrefixList, (int)index) : nullptr;
    if (!box) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return;
    }
    gls_list_remove(&ctx->readPrefixList, box);
    free_prefix((GlsPrefix *)box);
}

void glsWritePrefix(const GLubyte *prefix)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !prefix)
        return;
    GlsString scratch = {};
    const char *utf8 = gls_utf8_name(ctx, prefix, &scratch);
    GlsPrefix *entry = utf8 ? new_prefix(utf8) : nullptr;
    gls_string_free(&scratch);
    if (!entry)
        return;
    if (ctx->writePrefix)
        free_prefix(ctx->writePrefix);
    ctx->writePrefix = entry;
}

const char *gls_read_prefix(const GlsContext *ctx, int index)
{
    GlsBox *box = gls_list_at(&ctx->readPrefixList, index);
    return box ? gls_string_text(&((GlsPrefix *)box)->text) : nullptr;
}

const char *gls_write_prefix(const GlsContext *ctx)
{
    return ctx->writePrefix ? gls_string_text(&ctx->writePrefix->text) : "";
}

// ---------------------------------------------------------------------------------------------
// External writers

GlsWriter *gls_create_writer(GlsContext *ctx, const GLubyte *name, GLSenum type, GLbitfield writeFlags)
{
    if (type == GLS_CONTEXT)
        return create_context_writer(ctx, (const char *)name, writeFlags);
    GlsWriter *writer = (GlsWriter *)gls_calloc(sizeof(GlsWriter));
    if (!writer)
        return nullptr;
    GlsOutStream *stream = (GlsOutStream *)gls_calloc(sizeof(GlsOutStream));
    if (!stream) {
        gls_free(writer);
        return nullptr;
    }
    writer->stream = stream;
    if (name[0]) {
        gls_string_set(&stream->name, gls_write_prefix(ctx));
        gls_string_append(&stream->name, (const char *)name, strlen((const char *)name));
        stream->file = fopen(gls_string_text(&stream->name), (writeFlags & GLS_WRITE_APPEND) ? "ab" : "wb");
        if (!stream->file) {
            gls_set_error(GLS_IO_ERROR);
            gls_string_free(&stream->name);
            gls_free(stream);
            gls_free(writer);
            return nullptr;
        }
        stream->ownsFile = 1;
    } else if (ctx->writeFunc) {
        stream->func = ctx->writeFunc;
    } else {
        stream->file = ctx->defaultWriteChannel;
    }
    writer->bufferBase = (uint8_t *)gls_malloc(GLS_WRITE_BUFFER_SIZE);
    if (!writer->bufferBase) {
        if (stream->ownsFile)
            fclose(stream->file);
        gls_string_free(&stream->name);
        gls_free(stream);
        gls_free(writer);
        return nullptr;
    }
    writer->flushStart = writer->writePos = writer->bufferBase;
    writer->writeLimit = writer->bufferBase + GLS_WRITE_BUFFER_SIZE - GLS_WRITE_RESERVE;
    writer->floatTexts = ctx->floatTexts;
    if (type == GLS_TEXT)
        gls_init_text_slots(writer);
    else
        gls_init_binary_slots(writer, type);
    writer->type = type;
    writer->writeFlags = (int)writeFlags;
    return writer;
}

GLboolean gls_flush_writer(GlsWriter *writer)
{
    if (writer->failed)
        return 0;
    writer->commandStart = nullptr;
    if (writer->type == GLS_CONTEXT)
        return 1;
    size_t count = (size_t)(writer->writePos - writer->flushStart);
    if (count == 0)
        return 1;
    GlsOutStream *stream = writer->stream;
    if (stream->file) {
        if (fwrite(writer->flushStart, 1, count, stream->file) != count) {
            gls_set_error(GLS_IO_ERROR);
            clearerr(stream->file);
            writer->failed = 1;
            return 0;
        }
    } else if (stream->func(count, writer->flushStart) != count) {
        gls_set_error(GLS_IO_ERROR);
        writer->failed = 1;
        return 0;
    }
    writer->flushStart = writer->writePos = writer->bufferBase + (writer->wordParity ? 4 : 0);
    return 1;
}

void gls_flush_stream_file(GlsWriter *writer)
{
    FILE *file = writer->stream ? writer->stream->file : nullptr;
    if (file && !writer->failed && fflush(file) != 0) {
        gls_set_error(GLS_IO_ERROR);
        clearerr(file);
        writer->failed = 1;
    }
}

void gls_delete_writer(GlsWriter *writer)
{
    if (writer->type != 0) {
        if (!(writer->writeFlags & GLS_WRITE_NO_FRAME) && writer->beginCommand(writer, OP_glsEndGLS, 0))
            writer->endCommand(writer);
        gls_flush_writer(writer);
    }
    if (GlsContextStream *stream = writer->contextStream) {
        GlsBlock *block = last_block(stream);
        if (writer->type != 0 && !writer->failed)
            trim_stream(stream, block, (size_t)(writer->writePos - block->base));
        else if (!ends_in_record(block))
            write_end_record(block, nullptr);
        stream->writing = 0;
    }
    gls_free(writer->bufferBase);
    if (GlsOutStream *stream = writer->stream) {
        if (stream->ownsFile && fclose(stream->file) != 0)
            gls_set_error(GLS_IO_ERROR);
        gls_string_free(&stream->name);
        gls_free(stream);
    }
    gls_free(writer);
}

// ---------------------------------------------------------------------------------------------
// Streams by name

// Opens a named stream by the read rules: each read prefix in turn, then the write prefix.
FILE *gls_open_by_read_rules(GlsContext *ctx, const char *name, GlsString *full_name)
{
    for (int i = 0; i <= ctx->readPrefixList.count; ++i) {
        const char *prefix = i < ctx->readPrefixList.count ? gls_read_prefix(ctx, i) : gls_write_prefix(ctx);
        gls_string_set(full_name, prefix);
        gls_string_append(full_name, name, strlen(name));
        if (FILE *file = fopen(gls_string_text(full_name), "rb"))
            return file;
    }
    return nullptr;
}

static void delete_stream(GlsContext *ctx, const GLubyte *name)
{
    if (GlsContextStream *stream = gls_find_context_stream(ctx, (const char *)name)) {
        remove_context_stream(ctx, stream);
        if (stream->readCount)
            stream->deletePending = 1;
        else
            gls_free_context_stream(stream);
        return;
    }
    GlsString full_name = {};
    FILE *file = gls_open_by_read_rules(ctx, (const char *)name, &full_name);
    if (!file) {
        gls_set_error(GLS_PARAMETER_ERROR);
    } else {
        fclose(file);
        if (remove(gls_string_text(&full_name)) != 0)
            gls_set_error(GLS_IO_ERROR);
    }
    gls_string_free(&full_name);
}

static size_t context_stream_size(const GlsContextStream *stream)
{
    size_t size = 0;
    const GlsBlock *block = stream->blocks;
    do {
        size += (size_t)(block->writePos - block->base);
        if (ends_in_record(block))
            size -= END_RECORD;
        block = block->listNext;
    } while (block != stream->blocks);
    return size;
}

static size_t stream_size(GlsContext *ctx, const GLubyte *name)
{
    if (ctx->currentWriter)
        gls_flush_writer(ctx->currentWriter);
    if (GlsContextStream *stream = gls_find_context_stream(ctx, (const char *)name))
        return context_stream_size(stream);
    if (!name[0])
        return 0;
    GlsString full_name = {};
    FILE *file = gls_open_by_read_rules(ctx, (const char *)name, &full_name);
    gls_string_free(&full_name);
    if (!file)
        return 0;
    long size = fseek(file, 0, SEEK_END) == 0 ? ftell(file) : -1;
    fclose(file);
    return size > 0 ? (size_t)size : 0;
}

static GLboolean is_context_stream(GlsContext *ctx, const GLubyte *name)
{
    return gls_find_context_stream(ctx, (const char *)name) != nullptr;
}

// The full name into `result`, as UTF-8.
static const GLubyte *stream_attrib(GlsContext *ctx, GLSenum attrib, const GLubyte *name, GlsString *result)
{
    if (attrib == GLS_WRITE_NAME) {
        gls_string_set(result, gls_write_prefix(ctx));
        gls_string_append(result, (const char *)name, strlen((const char *)name));
        return (const GLubyte *)gls_string_text(result);
    }
    if (attrib != GLS_READ_NAME) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
    if (gls_find_context_stream(ctx, (const char *)name)) {
        gls_string_set(result, (const char *)name);
        return (const GLubyte *)gls_string_text(result);
    }
    FILE *file = gls_open_by_read_rules(ctx, (const char *)name, result);
    if (!file) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return nullptr;
    }
    fclose(file);
    return (const GLubyte *)gls_string_text(result);
}

// CRC-32 with the MSB-first table of polynomial 0x04C11DB7.
static uint32_t crc_row(uint32_t index)
{
    uint32_t value = index << 24;
    for (int bit = 0; bit < 8; ++bit)
        value = value & 0x80000000u ? value << 1 ^ 0x04C11DB7u : value << 1;
    return value;
}

static uint32_t crc_update(uint32_t crc, const uint8_t *bytes, size_t count)
{
    static uint32_t table[256];
    static bool ready;
    if (!ready) {
        for (uint32_t i = 0; i < 256; ++i)
            table[i] = crc_row(i);
        ready = true;
    }
    for (size_t i = 0; i < count; ++i)
        crc = crc << 8 ^ table[(crc >> 24 ^ bytes[i]) & 255];
    return crc;
}

GLuint gls_stream_crc32(GlsContext *ctx, const char *name, bool *found)
{
    uint32_t crc = 0xFFFFFFFFu;
    *found = true;
    if (GlsContextStream *stream = gls_find_context_stream(ctx, name)) {
        const GlsBlock *block = stream->blocks;
        do {
            size_t length = (size_t)(block->writePos - block->base);
            if (ends_in_record(block))
                length -= END_RECORD;
            crc = crc_update(crc, block->base, length);
            block = block->listNext;
        } while (block != stream->blocks);
        return ~crc;
    }
    GlsString full_name = {};
    FILE *file = gls_open_by_read_rules(ctx, name, &full_name);
    gls_string_free(&full_name);
    if (!file) {
        *found = false;
        return 0;
    }
    uint8_t chunk[4096];
    size_t count;
    while ((count = fread(chunk, 1, sizeof chunk, file)) > 0)
        crc = crc_update(crc, chunk, count);
    bool failed = ferror(file) != 0;
    fclose(file);
    if (failed) {
        gls_set_error(GLS_IO_ERROR);
        return 0;
    }
    return ~crc;
}

static GLuint stream_type(GlsContext *ctx, GLSenum attrib, const GLubyte *name)
{
    if (attrib == GLS_CRC32) {
        if (ctx->currentWriter)
            gls_flush_writer(ctx->currentWriter);
        bool found;
        GLuint crc = gls_stream_crc32(ctx, (const char *)name, &found);
        if (!found)
            gls_set_error(GLS_PARAMETER_ERROR);
        return crc;
    }
    if (attrib != GLS_STREAM_TYPE) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    if (gls_find_context_stream(ctx, (const char *)name))
        return GLS_CONTEXT;
    // The unnamed stream is the read function, which cannot be sought, or the default channel,
    // which is put back where it stood.
    bool unnamed = name[0] == 0;
    if (unnamed && ctx->readFunc)
        return GLS_UNKNOWN;
    GlsString full_name = {};
    FILE *file = unnamed ? ctx->defaultReadChannel : gls_open_by_read_rules(ctx, (const char *)name, &full_name);
    gls_string_free(&full_name);
    if (!file) {
        gls_set_error(GLS_PARAMETER_ERROR);
        return 0;
    }
    // A pipe's bytes would be taken from its reader: what cannot be sought is not looked at.
    long at = ftell(file);
    GLuint type = GLS_UNKNOWN;
    if (at >= 0 && fseek(file, 0, SEEK_SET) == 0) {
        uint8_t head[256];
        size_t count = fread(head, 1, sizeof head, file);
        type = gls_detect_stream_type(head, count);
    }
    if (!unnamed)
        fclose(file);
    else if (at >= 0)
        fseek(file, at, SEEK_SET);
    return type;
}


// ---------------------------------------------------------------------------------------------
// The operations by name take the name in the context's string type.

#define WITH_UTF8_NAME(ctx, name, utf8, failed)                                                     \
    GlsString scratch = {};                                                                         \
    const GLubyte *utf8 = (const GLubyte *)gls_utf8_name(ctx, name, &scratch);                      \
    if (!utf8) {                                                                                    \
        gls_string_free(&scratch);                                                                  \
        return failed;                                                                              \
    }

void glsDeleteStream(const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return;
    WITH_UTF8_NAME(ctx, name, utf8, )
    delete_stream(ctx, utf8);
    gls_string_free(&scratch);
}

size_t glsGetStreamSize(const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return 0;
    WITH_UTF8_NAME(ctx, name, utf8, 0)
    size_t size = stream_size(ctx, utf8);
    gls_string_free(&scratch);
    return size;
}

GLboolean glsIsContextStream(const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return 0;
    WITH_UTF8_NAME(ctx, name, utf8, 0)
    GLboolean found = is_context_stream(ctx, utf8);
    gls_string_free(&scratch);
    return found;
}

const GLubyte *glsGetStreamAttrib(GLSenum attrib, const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return nullptr;
    WITH_UTF8_NAME(ctx, name, utf8, nullptr)
    GlsString full = {};
    const GLubyte *result = stream_attrib(ctx, attrib, utf8, &full) ? gls_return_string(ctx, gls_string_text(&full)) : nullptr;
    gls_string_free(&full);
    gls_string_free(&scratch);
    return result;
}

GLuint glsGetStreamType(GLSenum attrib, const GLubyte *name)
{
    GlsContext *ctx = gls_require_context();
    if (!ctx || !name)
        return 0;
    WITH_UTF8_NAME(ctx, name, utf8, 0)
    GLuint type = stream_type(ctx, attrib, utf8);
    gls_string_free(&scratch);
    return type;
}
