// Stream records and the stream operations by name.
#pragma once

#include "gls/gls_context.h"

struct GlsOutStream {
    FILE *file;
    GlsString name;
    int32_t ownsFile;
    GlsWriteFunc func;
};

struct GlsBlock {
    GlsBlock *listNext;
    GlsBlock *listPrev;
    uint8_t *base;
    uint8_t *end;
    uint8_t *writePos;
};

struct GlsContextStream {
    GlsContextStream *listNext;
    GlsContextStream *listPrev;
    GlsBlock *blocks;
    GlsString name;
    int32_t deletePending;
    int readCount;
    int32_t writing;
};

void glsDeleteStream(const GLubyte *name);
size_t glsGetStreamSize(const GLubyte *name);
GLboolean glsIsContextStream(const GLubyte *name);
const GLubyte *glsGetStreamAttrib(GLSenum attrib, const GLubyte *name);
GLuint glsGetStreamType(GLSenum attrib, const GLubyte *name);

GLSenum gls_detect_stream_type(const uint8_t *bytes, size_t count);
// The reading side's access: a context stream by name, its freeing after a pending delete, and
// a named file opened by the read rules (each read prefix, then the write prefix).
GlsContextStream *gls_find_context_stream(GlsContext *ctx, const char *name);
void gls_free_context_stream(GlsContextStream *stream);
// The commands that an open capture of the context has written to the stream so far, made part
// of it for a read.
void gls_context_stream_catch_up(GlsContext *ctx, GlsContextStream *stream);
FILE *gls_open_by_read_rules(GlsContext *ctx, const char *name, GlsString *full_name);
const char *gls_read_prefix(const GlsContext *ctx, int index);
const char *gls_write_prefix(const GlsContext *ctx);
