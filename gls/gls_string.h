// GlsString: a growing UTF-8 string with 64 bytes of storage inside the record. A zero-filled
// record is an empty string.
#pragma once

#include "gls/gls_context.h"

const char *gls_string_text(const GlsString *string);
// Appends length bytes; false (and GLS_RESOURCE_ERROR) when memory runs out.
bool gls_string_append(GlsString *string, const char *text, size_t length);
bool gls_string_set(GlsString *string, const char *text);
void gls_string_clear(GlsString *string);
void gls_string_free(GlsString *string);

// A name handed in by a client, in the context's string type, as UTF-8: a 7-bit GLS_UCS1 name is
// handed back as it lies, any other is converted into `scratch`. Null for a null name.
const char *gls_utf8_name(const GlsContext *ctx, const GLubyte *name, GlsString *scratch);
// UTF-8 into the units of a string type (1, 2 or 4 bytes), ending in a zero unit; false when a
// character does not fit a unit or the UTF-8 is broken.
bool gls_string_from_utf8(GlsString *out, const char *utf8, size_t length, GLSenum type);
// A string result: UTF-8 into the context's returnString in its string type; null on failure.
const GLubyte *gls_return_string(GlsContext *ctx, const char *utf8);
// Appends one character as UTF-8.
bool gls_string_append_utf8(GlsString *string, uint32_t c);
