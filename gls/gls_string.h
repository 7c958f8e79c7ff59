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
