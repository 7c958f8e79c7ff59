// The reading side: the per-command argument descriptors generated from the table of signatures,
// the interpreter that decodes, swaps and parses a command by them, and the reader record.
#pragma once

#include "gls/gls_context.h"

// Element types of arguments and vectors.
enum GlsElement : uint8_t {
    GLS_ELEMENT_BYTE,
    GLS_ELEMENT_UBYTE,
    GLS_ELEMENT_BOOLEAN,
    GLS_ELEMENT_SHORT,
    GLS_ELEMENT_USHORT,
    GLS_ELEMENT_INT,
    GLS_ELEMENT_UINT,
    GLS_ELEMENT_FLOAT,
    GLS_ELEMENT_DOUBLE,
    GLS_ELEMENT_LONG,
};

// What an argument is in a stream. Refs name earlier arguments by index, or hold a constant c
// as -(c + 1).
enum GlsArgKind : uint8_t {
    GLS_ARG_PAD,          // binary filler of refs[0] bytes; no argument
    GLS_ARG_IMAGE_FLAGS,  // the image flags word; in text, its own parenthesis
    GLS_ARG_SCALAR,
    GLS_ARG_OUT,          // output pointer: a 64-bit number; refs[0] is its out-argument slot
    GLS_ARG_POINTER,      // an address kept as a number
    GLS_ARG_VECTOR,       // count refs[0], or the count of pname refs[0] in size table `table`
    GLS_ARG_MATRIX,
    GLS_ARG_STRING,
    GLS_ARG_CALL_LISTS,   // n, type
    GLS_ARG_INDICES,      // count, type
    GLS_ARG_MAP1,         // target, stride, order
    GLS_ARG_MAP2,         // target, ustride, uorder, vstride, vorder
    GLS_ARG_VERTEX_DATA,  // format, count
    GLS_ARG_IMAGE,        // format, type, width, height, depth
    GLS_ARG_BITMAP,       // width, height
};

// How the text form names a scalar's value besides numbers.
enum GlsArgName : uint8_t {
    GLS_NAME_NUMBER,
    GLS_NAME_ENUM,
    GLS_NAME_GLS_ENUM,
    GLS_NAME_OPCODE,
    GLS_NAME_ATTRIB_MASK,
    GLS_NAME_CLIENT_ATTRIB_MASK,
};

struct GlsArgDesc {
    GlsArgKind kind;
    GlsElement element;
    GlsArgName name;
    int8_t table;
    int8_t arg;      // index among the call's arguments, -1 for fillers and flags
    int16_t refs[5];
};

union GlsArgValue {
    int64_t i;
    uint64_t u;
    double d;
    float f;
    const void *p;
};

enum : int { GLS_MAX_CALL_ARGS = 12, GLS_MAX_STRING_ARGS = 2 };

typedef void (*GlsCallThunk)(GlsFunc func, const GlsArgValue *args);

struct GlsCommandDesc {
    const GlsArgDesc *args;
    uint8_t count;
    uint8_t callArgs;
    GlsCallThunk call;
};

extern const GlsCommandDesc gls_command_descs[GLS_OPCODE_COUNT];

// An array argument: its element count and type, from the arguments before it.
struct GlsArrayShape {
    uint64_t count;
    uint32_t width;
    GlsElement element;
};
GlsArrayShape gls_array_shape(const GlsArgDesc *d, const GlsArgValue *values);
// A stored scalar, sign- or zero-extended by its element type.
GlsArgValue gls_scalar_value(const uint8_t *p, GlsElement element);

// Rows of the decode and swap tables take the stored arguments and their byte count; rows of
// the text table take the reader.
typedef void (*GlsDecodeRow)(uint8_t *args, uint32_t size);
struct GlsReader;
typedef void (*GlsTextRow)(GlsReader *reader);
extern const GlsFunc gls_text_table[GLS_OPCODE_COUNT];

// The interpreter behind the rows.
void gls_decode_command(int opcode, uint8_t *args, uint32_t size);
void gls_swap_command(int opcode, uint8_t *args, uint32_t size);
void gls_text_command(GlsReader *reader, int opcode);

// A stream being read: a C file or a read callback.
struct GlsReadStream {
    FILE *file;
    GlsString name;
    int32_t ownsFile;
    GlsReadFunc func;
};

enum : int { GLS_READ_BUFFER_SIZE = 16384, GLS_TEXT_SLOTS = 6, GLS_NAME_LIMIT = 256 };

// One read in progress, on the stack of the read. The fields after `version` are the text
// parser's scratch: a token and the storage of the statement's vectors and strings.
struct GlsReader {
    uint8_t *base;
    uint32_t size;
    uint32_t error;
    uint32_t argIndex;
    size_t consumed;
    uint8_t *start;
    uint8_t *cursor;
    uint8_t *limit;
    GlsReadStream *stream;
    int type;
    int version[2];
    int32_t ended;  // the stream gave no more bytes
    int32_t emptyItem; // the statement's error is an empty list where elements are due
    GlsString token;
    GlsString strings[GLS_MAX_STRING_ARGS];
    uint8_t *slots[GLS_TEXT_SLOTS];
    size_t slotSizes[GLS_TEXT_SLOTS];
};

// Reading helpers shared by the binary and the text side.
bool gls_refill(GlsReader *reader, size_t need, bool keepPhase);
// Reports a failed command through the glsError row, so that a capture can record it; empty
// says that an empty list where elements are due was the fault.
void gls_report_error(int opcode, GLSenum error, bool empty = false);
// Reports a command the reader does not know through the glsUnsupportedCommand row.
void gls_report_unsupported(const char *name);

// Bytes of a tight image (0 for a format or type without a size; saturated, never wrapped), and
// bytes of one element of a pixel or list type.
uint64_t gls_image_bytes(GLenum format, GLenum type, int64_t width, int64_t height, int64_t depth);
size_t gls_element_size(GLenum type);
// Before the first image of a read, the unpack state is set for tight data; before the first
// read of pixels, the pack state.
void gls_prepare_unpack(GlsContext *ctx);
void gls_prepare_pack(GlsContext *ctx);
// After a command of the stream: one that changes the pixel-store state has the tight state
// set again before the next image or read of pixels.
void gls_note_pixel_store(GlsContext *ctx, int opcode, const GlsArgValue *values);
// The area an output pointer of a read points GL to, big enough for what the command can write
// there; the arguments before it are decoded. Null when no such area can be had.
void *gls_out_area(GlsContext *ctx, int opcode, const GlsArgValue *values);

// The text parser: the start of a text group, and the statement loop of one.
bool gls_text_start(GlsReader *reader);
// Past blanks and comments, up to the first other byte, which stays unread.
void gls_text_skip_blanks(GlsReader *reader);
int gls_read_text(GlsContext *ctx, GlsReader *reader);
void gls_text_release(GlsReader *reader);
