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

// Limits of the codec's stacks and the stream format's version.
enum : int {
    GLS_CAPTURE_NESTING_LIMIT = 16,
    GLS_CALL_NESTING_LIMIT = 64,
    GLS_MAX_OUT_ARGS = 5,
    GLS_VERSION_MAJOR_VALUE = 1,
    GLS_VERSION_MINOR_VALUE = 0,
};

// The codec's enumerants, from the table of signatures.
#include "gen/gls_enums.h"

// Capture flag bits of an opcode.
enum : unsigned {
    GLS_CAPTURE_EXECUTE_BIT = 1,
    GLS_CAPTURE_WRITE_BIT = 2,
    GLS_CAPTURE_CALLBACK_BIT = 4,
};

// Write flags of glsBeginCapture: append to the stream; no glsBeginGLS and glsEndGLS frame.
enum : unsigned {
    GLS_WRITE_APPEND = 1,
    GLS_WRITE_NO_FRAME = 2,
};

// Attribute byte bits of an opcode.
enum : unsigned {
    GLS_ATTRIB_NO_ARGS = 1,
    GLS_ATTRIB_CLIENT = 2,
    GLS_ATTRIB_GET = 4,
};
