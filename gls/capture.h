// What the generated capture functions use beside the writer's slots: the size tables by pname,
// string field sizes, and the writers of the commands whose arrays need a rule of their own.
#pragma once

#include "gls/gls.h"
#include "gls/gls_context.h"
#include "gls/tables.h"

struct GlsWriter;

// The real function of a command, inside the direct-call guard.
#define CALL_GL(ctx, name, ...)                                                                     \
    do {                                                                                            \
        int token = enterDirectCall(ctx, OP_##name);                                                \
        ((fn_##name)gls_default_dispatch[OP_##name])(__VA_ARGS__);                                  \
        leaveDirectCall(ctx, OP_##name, token);                                                     \
    } while (0)

// Value counts by pname, one table per parameter family (GlsSizeTable); generated from the
// table of signatures.
struct GlsPnameCount {
    GLenum pname;
    GLuint count;
};

struct GlsSizeTableRows {
    const GlsPnameCount *rows; // ends with a count of 0
    GLuint unknown;            // the count of a pname the table does not name
};

extern const GlsSizeTableRows gls_size_tables[GLS_SIZE_TABLE_COUNT];

// By-enum parameters whose values the text form writes by name.
extern const GLenum gls_named_boolean_pnames[];
extern const int gls_named_boolean_pname_count;
extern const GLenum gls_named_enum_pnames[];
extern const int gls_named_enum_pname_count;

// The count of values of pname in a table.
GLuint gls_pname_count(GlsSizeTable table, GLenum pname);

// The size of a string field: a word, the UTF-8 text and its zero, to a multiple of four.
GLuint gls_string_field_size(const GlsContext *ctx, const GLubyte *string);

// glCallLists and glDrawElements: the data's bytes, and its writing, typed by type. Byte counts
// are 64-bit so that a count near 2^31 cannot wrap a command's size.
uint64_t gls_call_lists_bytes(GLenum type, GLsizei n);
void gls_put_call_lists(GlsWriter *writer, GLenum type, GLsizei n, const void *lists);
// The indices' bytes as the stream holds them: none without indices to read.
uint64_t gls_draw_elements_bytes(GLenum type, GLsizei count, const void *indices);
// The bytes of count indices of type; 0 for a type glDrawElements does not take.
uint64_t gls_index_bytes(GLenum type, GLsizei count);
void gls_put_draw_elements(GlsWriter *writer, GLenum type, GLsizei count, const void *indices);

// Evaluator points recorded tight: k values a point, the strides as the stream gives them,
// and the gaps that the source has between rows and between images (in values).
struct GlsMapLayout {
    GLint k;
    GLint ustride;
    GLint vstride;
    GLuint rowGap;
    GLuint rows;
    GLuint imageGap;
    GLuint images;
    uint64_t values;
};

GlsMapLayout gls_map1_layout(GLenum target, GLint stride, GLint order);
GlsMapLayout gls_map2_layout(GLenum target, GLint ustride, GLint uorder, GLint vstride, GLint vorder);
void gls_put_map_points(GlsWriter *writer, const GlsMapLayout *map, int valueSize, const void *points);
// The values that the points span with the strides as given: what GL reads, and what a stream
// being read must hold. A stream written here has tight strides, where it is map.values.
uint64_t gls_map_span(const GlsMapLayout *map);

// Bytes of glsDrawVertexArray's packed vertices.
uint64_t gls_vertex_data_bytes(GLenum format, GLint count);

// Facts about the GL context, asked once per capture through the guard: whether one is current,
// its version (1.1 without one), and whether 3D images have their unpack parameters.
bool gls_have_gl_context(GlsContext *ctx);
bool gls_gl_version_at_least(GlsContext *ctx, int major, int minor);
bool gls_have_texture_3d(GlsContext *ctx);
// Local state queries of GL, inside the guard.
GLint gls_gl_integer(GlsContext *ctx, GLenum pname);
GLboolean gls_gl_is_enabled(GlsContext *ctx, GLenum cap);
const void *gls_gl_pointer(GlsContext *ctx, GLenum pname);

// Pixel data. GlsPixelInfo describes one row of an image in the application's memory.
struct GlsPixelInfo {
    GLuint bitsPerElement;
    GLuint elementsPerGroup;
    GLuint rowPad;         // bytes that round a row up to the alignment
    GLuint rowBytes;
    GLuint elementsPerRow;
    GLuint rowStride;      // bytes from one row to the next
};

// Where an image command's data lies and how much of it the stream holds. type is 0 when the
// stream holds none: a null pointer, a bad format or type, an unusable store, or a size above
// GLS_PIXEL_DATA_LIMIT.
struct GlsPixelLayout {
    GLenum type;
    GlsPixelStore store;
    GlsPixelInfo info;
    GLuint rows;
    GLuint images;
    GLuint imageGap;       // bytes between the last row of an image and the next image
    GLuint firstBit;       // of a bitmap's first row, in its first byte
    const GLubyte *first;
    GLuint bytes;          // tight, as the binary form holds them
};

enum : uint32_t { GLS_PIXEL_DATA_LIMIT = 0x80000000u };

// Bytes of a tight image of the format and type; 0 for a bad one or above the limit.
GLuint gls_image_bytes(GLenum format, GLenum type, GLsizei width, GLsizei height, GLsizei depth);
// The unpack state: from GL with a context, else from the client-state shadow. The image
// height and skip images count only for the images of a volume.
void gls_unpack_store(GlsContext *ctx, bool volume, GlsPixelStore *store);
// The layout of an image command's data; depth counts only for a volume.
GlsPixelLayout gls_pixel_layout(GlsContext *ctx, GLenum format, GLenum type, GLsizei width, GLsizei height,
                                GLsizei depth, bool volume, const void *pixels);
// Writes the data as the layout gives it, or an empty item.
void gls_put_pixel_data(GlsWriter *writer, const GlsPixelLayout *layout);

// Vertex arrays under GLS_CAPTURE_VERTEX_ARRAYS. Each gives back false where it cannot read the
// arrays (they lie in buffer objects, or an element is out of reach): the call is then an
// ordinary command.
bool gls_capture_draw_arrays(GlsContext *ctx, GLenum mode, GLint first, GLsizei count);
bool gls_capture_draw_elements(GlsContext *ctx, GLenum mode, GLsizei count, GLenum type, const void *indices);
bool gls_capture_array_element(GlsContext *ctx, GLint i);

// The capture function of an opcode, its flags set to execute alone: how the debugger makes GL
// calls of its own, inside the direct-call guard and with no trace in a recording. The flags
// are not set back.
GlsFunc gls_own_call(int opcode);
// The client-state shadow's pixel store follows a glPixelStore value, as GL would take it.
void gls_keep_pixel_store(GlsContext *ctx, GLenum pname, GLint value);
