// What the generated capture functions use beside the writer's slots: the size tables by pname,
// string field sizes, and the writers of the commands whose arrays need a rule of their own.
#pragma once

#include "gls/gls_context.h"

struct GlsWriter;

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

// glCallLists and glDrawElements: the data's bytes, and its writing, typed by type.
GLuint gls_call_lists_bytes(GLenum type, GLsizei n);
void gls_put_call_lists(GlsWriter *writer, GLenum type, GLsizei n, const void *lists);
GLuint gls_draw_elements_bytes(GLenum type, GLsizei count);
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
    GLuint values;
};

GlsMapLayout gls_map1_layout(GLenum target, GLint stride, GLint order);
GlsMapLayout gls_map2_layout(GLenum target, GLint ustride, GLint uorder, GLint vstride, GLint vorder);
void gls_put_map_points(GlsWriter *writer, const GlsMapLayout *map, int valueSize, const void *points);

// Bytes of glsDrawVertexArray's packed vertices.
GLuint gls_vertex_data_bytes(GLenum format, GLint count);

// Whether a GL context is current, asked once per capture through the guard.
bool gls_have_gl_context(GlsContext *ctx);
