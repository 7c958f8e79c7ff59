// The codec's name tables: value to name by constant pages (the writer's side), name to value
// by the dictionaries built on first use.
#pragma once

#include "gls/gls_types.h"

struct GlsNameValue {
    const char *name;
    uint32_t value;
};

enum : int {
    GLS_GL_ENUM_PAGES = 133,
    GLS_GLS_ENUM_PAGES = 33,
    GLS_ATTRIB_MASK_ROWS = 23,
    GLS_CLIENT_ATTRIB_MASK_ROWS = 4,
    GLS_IMAGE_FLAG_ROWS = 2,
};

// Generated from the Khronos registry and gls_types.h.
extern const uint16_t gls_gl_enum_page_counts[GLS_GL_ENUM_PAGES];
extern const char *const *const gls_gl_enum_pages[GLS_GL_ENUM_PAGES];
extern const uint8_t gls_gls_enum_page_counts[GLS_GLS_ENUM_PAGES];
extern const char *const *const gls_gls_enum_pages[GLS_GLS_ENUM_PAGES];
extern const GlsNameValue gls_gl_enum_aliases[];
extern const int gls_gl_enum_alias_count;
extern const GlsNameValue gls_gls_enum_extra[];
// Blank-separated, each name with a "__" lead and a blank behind it.
extern const char gls_extension_list[];
extern const int gls_gls_enum_extra_count;

extern const GlsNameValue gls_attrib_mask_rows[GLS_ATTRIB_MASK_ROWS];
extern const GlsNameValue gls_client_attrib_mask_rows[GLS_CLIENT_ATTRIB_MASK_ROWS];
extern const GlsNameValue gls_image_flag_rows[GLS_IMAGE_FLAG_ROWS];

// Null when the value has no row.
inline const char *gls_gl_enum_name(uint32_t value)
{
    uint32_t page = value >> 8, row = value & 255;
    return page < GLS_GL_ENUM_PAGES && row < gls_gl_enum_page_counts[page] ? gls_gl_enum_pages[page][row] : nullptr;
}

inline const char *gls_gls_enum_name(int32_t value)
{
    uint32_t page = (uint32_t)value >> 4, row = (uint32_t)value & 15;
    return page < GLS_GLS_ENUM_PAGES && row < gls_gls_enum_page_counts[page] ? gls_gls_enum_pages[page][row] : nullptr;
}

struct GlsDict;

// The six dictionaries, in this order; built once under the global lock.
struct GlsDictionarySet {
    GlsDict *glAttribMaskDict;
    GlsDict *glClientAttribMaskDict;
    GlsDict *glEnumDict;
    GlsDict *glsEnumDict;
    GlsDict *glsImageFlagsDict;
    GlsDict *glsOpDict;
};

// Null when building failed (GLS_RESOURCE_ERROR set); a later call tries again.
const GlsDictionarySet *gls_dictionaries();
void gls_dictionaries_release();
