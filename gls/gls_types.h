// GL, GLS and platform base types, without any function declarations: the library defines the
// GL entry points itself, so the system's GL headers must never be included next to them.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#  define GLS_APIENTRY __stdcall
#else
#  define GLS_APIENTRY
#endif

typedef unsigned int GLenum;
typedef unsigned char GLboolean;
typedef unsigned int GLbitfield;
typedef signed char GLbyte;
typedef short GLshort;
typedef int GLint;
typedef int GLsizei;
typedef unsigned char GLubyte;
typedef unsigned short GLushort;
typedef unsigned int GLuint;
typedef float GLfloat;
typedef float GLclampf;
typedef double GLdouble;
typedef double GLclampd;
typedef void GLvoid;
typedef int64_t GLlong;
typedef uint64_t GLulong;

typedef int GLSenum;
typedef int GLSopcode;

// A row of a per-opcode table: any function, called only after a cast to its exact type.
typedef void (*GlsFunc)(void);

// The entry and exit callbacks of a capture; they receive the opcode.
typedef void (*GlsCaptureFunc)(GLSopcode opcode);
// Stream callbacks: count first, then the bytes.
typedef size_t (*GlsWriteFunc)(size_t count, const void *bytes);
typedef size_t (*GlsReadFunc)(size_t count, void *bytes);

enum : int {
    GLS_OPCODE_COUNT = 496,
    GLS_MAX_CAPTURE_NESTING = 16,
    GLS_MAX_CALL_NESTING = 64,
    GLS_MAX_OUT_ARGS = 5,
    GLS_VERSION_MAJOR_VALUE = 1,
    GLS_VERSION_MINOR_VALUE = 0,
};

enum : int {
    GLS_NONE = 0,
    GLS_API_GLS = 16,
    GLS_API_GL = 17,
    GLS_FRAME = 32,
    GLS_HEADER = 33,
    GLS_INIT = 34,
    GLS_STATIC = 35,
    GLS_ABORT_CALL = 48,
    GLS_CAPTURE_VERTEX_ARRAYS = 49,
    GLS_CONTEXT = 64,
    GLS_BINARY_LSB_FIRST = 65,
    GLS_BINARY_MSB_FIRST = 66,
    GLS_TEXT = 67,
    GLS_CAPTURE_ENTRY_FUNC = 80,
    GLS_CAPTURE_EXIT_FUNC = 81,
    GLS_DEFAULT_READ_CHANNEL = 96,
    GLS_DEFAULT_WRITE_CHANNEL = 97,
    GLS_CALL_FUNC = 112,
    GLS_CAPTURE_FUNC = 113,
    GLS_DECODE_ERROR = 128,
    GLS_IO_ERROR = 129,
    GLS_PARAMETER_ERROR = 130,
    GLS_RESOURCE_ERROR = 131,
    GLS_STATE_ERROR = 132,
    GLS_UNSUPPORTED_COMMAND = 133,
    GLS_UNSUPPORTED_EXTENSION = 134,
    GLS_UNSUPPORTED_VERSION = 135,
    GLS_NULL_FUNC = 144,
    GLS_API = 160,
    GLS_IS_CLIENT_COMMAND = 161,
    GLS_IS_GET_COMMAND = 162,
    GLS_IS_CLIENT_ENUM = 176,
    GLS_READ_FUNC = 192,
    GLS_WRITE_FUNC = 193,
    GLS_CONTEXT_STREAM_LIST = 208,
    GLS_READ_PREFIX_LIST = 209,
    GLS_OUT_ARG_SIZE_LIST = 224,
    GLS_OUT_ARG_POINTER_LIST = 240,
    GLS_DATA_POINTER = 256,
    GLS_UNKNOWN = 272,
    GLS_READ_NAME = 288,
    GLS_WRITE_NAME = 289,
    GLS_CRC32 = 304,
    GLS_STREAM_TYPE = 305,
    GLS_EXTENSIONS = 320,
    GLS_RELEASE = 321,
    GLS_VENDOR = 322,
    GLS_WRITE_PREFIX = 323,
    GLS_BLOCK_TYPE = 336,
    GLS_CALL_NESTING = 337,
    GLS_CAPTURE_NESTING = 338,
    GLS_CONTEXT_STREAM_COUNT = 339,
    GLS_MAX_CALL_NESTING_ATTRIB = 340,
    GLS_MAX_CAPTURE_NESTING_ATTRIB = 341,
    GLS_OUT_ARG_COUNT = 342,
    GLS_READ_PREFIX_COUNT = 343,
    GLS_STRING_TYPE = 344,
    GLS_VERSION_MAJOR = 345,
    GLS_VERSION_MINOR = 346,
    GLS_CURRENT_TIME = 368,
    GLS_AUTHOR = 384,
    GLS_TITLE = 385,
    GLS_VERSION = 386,
    GLS_ASPECT = 400,
    GLS_CONTRAST = 401,
    GLS_GAMMA = 416,
    GLS_RED_POINT = 417,
    GLS_GREEN_POINT = 418,
    GLS_BLUE_POINT = 419,
    GLS_WHITE_POINT = 420,
    GLS_ACCUM_RED_BITS = 432,
    GLS_ACCUM_GREEN_BITS = 433,
    GLS_ACCUM_BLUE_BITS = 434,
    GLS_ACCUM_ALPHA_BITS = 435,
    GLS_AUX_BUFFERS = 436,
    GLS_COLOR_RED_BITS = 437,
    GLS_COLOR_GREEN_BITS = 438,
    GLS_COLOR_BLUE_BITS = 439,
    GLS_COLOR_ALPHA_BITS = 440,
    GLS_DEPTH_BITS = 441,
    GLS_DOUBLEBUFFER = 442,
    GLS_HEIGHT = 443,
    GLS_INDEX_BITS = 444,
    GLS_RGBA_MODE = 445,
    GLS_STENCIL_BITS = 446,
    GLS_STEREO = 447,
    GLS_TILEABLE = 448,
    GLS_CREATE_TIME = 464,
    GLS_UCS1 = 480,
    GLS_UCS2 = 481,
    GLS_UCS4 = 482,
};

// Capture flag bits of an opcode.
enum : unsigned {
    GLS_CAPTURE_EXECUTE_BIT = 1,
    GLS_CAPTURE_WRITE_BIT = 2,
    GLS_CAPTURE_CALLBACK_BIT = 4,
};

// Attribute byte bits of an opcode.
enum : unsigned {
    GLS_ATTRIB_NO_ARGS = 1,
    GLS_ATTRIB_CLIENT = 2,
    GLS_ATTRIB_GET = 4,
};

// Opcodes the codec itself refers to.
enum : int {
    GLS_OP_glsBeginGLS = 16,
    GLS_OP_glsBlock = 17,
    GLS_OP_glsCallStream = 18,
    GLS_OP_glsDrawVertexArray = 19,
    GLS_OP_glsEndGLS = 20,
    GLS_OP_glsError = 21,
    GLS_OP_glsPad = 43,
    GLS_OP_glsString = 44,
    GLS_OP_glsUnsupportedCommand = 29,
};
