// Output streams: external writers on a named file, a callback or the default channel.
#include "writer.h"

#include "gls.h"
#include "gls_string.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

struct GlsOutStream {
    FILE *file;
    GlsString name;
    int32_t ownsFile;
    GlsWriteFunc func;
};

struct GlsPrefix {
    GlsBox box;
    GlsString text;
};

void gls_streams_init(GlsContext *ctx)
{
    ctx->writePrefix = (GlsPrefix *)gls_calloc(sizeof(GlsPrefix));
    if (ctx->writePrefix) {
        const char *prefix = getenv("GLS_WRITE_PREFIX");
        gls_string_set(&ctx->writePrefix->text, prefix ? prefix : "");
    }
}

void gls_streams_release(GlsContext *ctx)
{
    if (ctx->writePrefix) {
        gls_string_free(&ctx->writePrefix->text);
        gls_free(ctx->writePrefix);
        ctx->writePrefix = nullptr;
    }
}

GlsWriter *gls_create_writer(GlsContext *ctx, const GLubyte *name, GLSenum type, GLbitfield writeFlags)
{
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
        if (ctx->writePrefix)
            gls_string_set(&stream->name, gls_string_text(&ctx->writePrefix->text));
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
    if (file && fflush(file) != 0) {
        gls_set_error(GLS_IO_ERROR);
        clearerr(file);
        writer->failed = 1;
    }
}

void gls_delete_writer(GlsWriter *writer)
{
    if (writer->type != 0) {
        if (!(writer->writeFlags & GLS_WRITE_NO_FRAME) && writer->beginCommand(writer, GLS_OP_glsEndGLS, 0))
            writer->endCommand(writer);
        gls_flush_writer(writer);
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
