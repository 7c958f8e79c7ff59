// The output encoder: a record of 63 function slots, filled per stream form, and the buffer
// state behind them.
#pragma once

#include "gls/gls_context.h"
#include "gen/writer_slots.h"

struct GlsWriter;
struct GlsOutStream;
struct GlsContextStream;

typedef GLboolean (*GlsPadSlot)(GlsWriter *, GLuint parity);
typedef GLboolean (*GlsAllocateSlot)(GlsWriter *, size_t size);
// The size is summed in 64 bits by the capture functions; the binary forms refuse one that does
// not fit a command.
typedef GLboolean (*GlsBeginCommandSlot)(GlsWriter *, GLSopcode opcode, uint64_t size);
typedef void (*GlsVoidSlot)(GlsWriter *);
typedef void (*GlsStringSlot)(GlsWriter *, GLuint fieldSize, const GLubyte *string);
typedef void (*GlsBitfieldSlot)(GlsWriter *, GLbitfield value);
typedef void (*GlsEnumSlot)(GlsWriter *, GLenum value);
typedef void (*GlsIntSlot)(GlsWriter *, GLint value);
typedef void (*GlsUintSlot)(GlsWriter *, GLuint value);
typedef void (*GlsLongSlot)(GlsWriter *, GLlong value);
typedef void (*GlsUlongSlot)(GlsWriter *, GLulong value);
typedef void (*GlsFloatSlot)(GlsWriter *, GLfloat value);
typedef void (*GlsDoubleSlot)(GlsWriter *, GLdouble value);
typedef void (*GlsBooleanSlot)(GlsWriter *, GLboolean value);
typedef void (*GlsByteSlot)(GlsWriter *, GLbyte value);
typedef void (*GlsUbyteSlot)(GlsWriter *, GLubyte value);
typedef void (*GlsShortSlot)(GlsWriter *, GLshort value);
typedef void (*GlsUshortSlot)(GlsWriter *, GLushort value);
typedef void (*GlsVectorSlot)(GlsWriter *, GLuint count, const void *data);
typedef void (*GlsImageSlot)(GlsWriter *, GLboolean swapBytes, GLuint elementsPerRow,
                             GLuint rowGap, GLuint rows, GLuint imageGap, GLuint images,
                             GLuint volumeGap, GLuint volumes, const void *data);
typedef void (*GlsFloatByEnumSlot)(GlsWriter *, GLenum pname, GLfloat value);
typedef void (*GlsDoubleByEnumSlot)(GlsWriter *, GLenum pname, GLdouble value);
typedef void (*GlsIntByEnumSlot)(GlsWriter *, GLenum pname, GLint value);
typedef void (*GlsVectorByEnumSlot)(GlsWriter *, GLenum pname, GLuint count, const void *data);
typedef void (*GlsMatrixSlot)(GlsWriter *, const void *matrix);
typedef void (*GlsBitmapSlot)(GlsWriter *, GLboolean lsbFirst, GLuint firstBit,
                              GLuint bitsPerRow, GLuint gapBits, GLuint rows, const GLubyte *data);
typedef void (*GlsOutArgSlot)(GlsWriter *, GLuint index, const GLvoid *pointer);
typedef void (*GlsVertexDataSlot)(GlsWriter *, GLenum format, GLuint size, const GLvoid *data);
typedef void (*GlsPointerSlot)(GlsWriter *, const GLvoid *pointer);
typedef void (*GlsNothingSlot)(GlsWriter *, GLuint size);

struct GlsWriter {
    GLS_WRITER_SLOT_FIELDS // the slots, in their fixed order

    int32_t wordParity;
    uint8_t *writePos;
    uint8_t *writeLimit;
    GLSopcode opcode;
    uint8_t *commandEnd;
    GlsContextStream *contextStream;
    int32_t failed;
    uint8_t *bufferBase;
    uint8_t *flushStart;
    GlsOutStream *stream;
    int argCount;
    uint8_t *commandStart;
    int type;
    int writeFlags;
    GlsFloatText *floatTexts; // the context's, shared by all its text writers
};

enum : int {
    GLS_WRITE_BUFFER_SIZE = 16384,
    GLS_WRITE_RESERVE = 256,
};

// Writer life: creation by stream type, flush, and closing (which writes glsEndGLS unless the
// writer has no frame).
GlsWriter *gls_create_writer(GlsContext *ctx, const GLubyte *name, GLSenum type, GLbitfield writeFlags);
GLboolean gls_flush_writer(GlsWriter *writer);
void gls_delete_writer(GlsWriter *writer);
// glsFlush's extra step: the C flush of a file stream.
void gls_flush_stream_file(GlsWriter *writer);

// The per-context stream state: read prefixes, write prefix and context streams.
void gls_streams_init(GlsContext *ctx);
void gls_streams_release(GlsContext *ctx);

// Slot filling per stream form.
void gls_init_text_slots(GlsWriter *writer);
void gls_init_binary_slots(GlsWriter *writer, int type);

// The number rule of the text form: text holds at least 32 bytes; returns the length.
int gls_format_float(char *text, GLfloat value);
int gls_format_double(char *text, GLdouble value);
