// Mask tables and the dictionaries from name to value.
#include "gls/names.h"

#include "gls/containers.h"
#include "gls/gls.h"
#include "gls/platform.h"
#include "gls/tables.h"

const GlsNameValue gls_attrib_mask_rows[GLS_ATTRIB_MASK_ROWS] = {
    {"GL_NONE", 0},
    {"GL_CURRENT_BIT", 0x1},
    {"GL_POINT_BIT", 0x2},
    {"GL_LINE_BIT", 0x4},
    {"GL_POLYGON_BIT", 0x8},
    {"GL_POLYGON_STIPPLE_BIT", 0x10},
    {"GL_PIXEL_MODE_BIT", 0x20},
    {"GL_LIGHTING_BIT", 0x40},
    {"GL_FOG_BIT", 0x80},
    {"GL_DEPTH_BUFFER_BIT", 0x100},
    {"GL_ACCUM_BUFFER_BIT", 0x200},
    {"GL_STENCIL_BUFFER_BIT", 0x400},
    {"GL_VIEWPORT_BIT", 0x800},
    {"GL_TRANSFORM_BIT", 0x1000},
    {"GL_ENABLE_BIT", 0x2000},
    {"GL_COLOR_BUFFER_BIT", 0x4000},
    {"GL_HINT_BIT", 0x8000},
    {"GL_EVAL_BIT", 0x10000},
    {"GL_LIST_BIT", 0x20000},
    {"GL_TEXTURE_BIT", 0x40000},
    {"GL_SCISSOR_BIT", 0x80000},
    {"GL_ALL_ATTRIB_BITS", 0xFFFFF},
    {"GL_MULTISAMPLE_BIT_EXT", 0x20000000},
};

const GlsNameValue gls_client_attrib_mask_rows[GLS_CLIENT_ATTRIB_MASK_ROWS] = {
    {"GL_NONE", 0},
    {"GL_CLIENT_PIXEL_STORE_BIT", 0x1},
    {"GL_CLIENT_VERTEX_ARRAY_BIT", 0x2},
    {"GL_CLIENT_ALL_ATTRIB_BITS", 0xFFFFFFFF},
};

const GlsNameValue gls_image_flag_rows[GLS_IMAGE_FLAG_ROWS] = {
    {"GLS_NONE", 0},
    {"GLS_IMAGE_NULL_BIT", 1},
};

static GlsDictionarySet *dictionaries;

static void delete_set(GlsDictionarySet *set)
{
    gls_dict_delete(set->glAttribMaskDict);
    gls_dict_delete(set->glClientAttribMaskDict);
    gls_dict_delete(set->glEnumDict);
    gls_dict_delete(set->glsEnumDict);
    gls_dict_delete(set->glsImageFlagsDict);
    gls_dict_delete(set->glsOpDict);
    gls_free(set);
}

static GlsDict *dict_of_rows(const GlsNameValue *rows, int count)
{
    GlsDict *dict = gls_dict_create(count, 1);
    for (int i = 0; dict && i < count; ++i)
        gls_dict_insert(dict, rows[i].name, (intptr_t)rows[i].value);
    return dict;
}

template <typename Count>
static int page_total(const Count *counts, int pages)
{
    int total = 0;
    for (int i = 0; i < pages; ++i)
        total += counts[i];
    return total;
}

template <typename Count>
static void insert_pages(GlsDict *dict, const char *const *const *pages, const Count *counts,
                         int page_count, int page_size)
{
    for (int page = 0; page < page_count; ++page)
        for (int row = 0; row < counts[page]; ++row)
            if (const char *name = pages[page][row])
                gls_dict_insert(dict, name, page * page_size + row);
}

static GlsDictionarySet *build_set()
{
    GlsDictionarySet *set = (GlsDictionarySet *)gls_calloc(sizeof(GlsDictionarySet));
    if (!set)
        return nullptr;
    set->glAttribMaskDict = dict_of_rows(gls_attrib_mask_rows, GLS_ATTRIB_MASK_ROWS);
    set->glClientAttribMaskDict = dict_of_rows(gls_client_attrib_mask_rows, GLS_CLIENT_ATTRIB_MASK_ROWS);
    set->glEnumDict = gls_dict_create(gls_gl_enum_alias_count + page_total(gls_gl_enum_page_counts, GLS_GL_ENUM_PAGES), 1);
    if (set->glEnumDict) {
        for (int i = 0; i < gls_gl_enum_alias_count; ++i)
            gls_dict_insert(set->glEnumDict, gls_gl_enum_aliases[i].name, (intptr_t)gls_gl_enum_aliases[i].value);
        insert_pages(set->glEnumDict, gls_gl_enum_pages, gls_gl_enum_page_counts, GLS_GL_ENUM_PAGES, 256);
    }
    set->glsEnumDict = gls_dict_create(gls_gls_enum_extra_count + page_total(gls_gls_enum_page_counts, GLS_GLS_ENUM_PAGES), 1);
    if (set->glsEnumDict) {
        for (int i = 0; i < gls_gls_enum_extra_count; ++i)
            gls_dict_insert(set->glsEnumDict, gls_gls_enum_extra[i].name, (intptr_t)gls_gls_enum_extra[i].value);
        insert_pages(set->glsEnumDict, gls_gls_enum_pages, gls_gls_enum_page_counts, GLS_GLS_ENUM_PAGES, 16);
    }
    set->glsImageFlagsDict = dict_of_rows(gls_image_flag_rows, GLS_IMAGE_FLAG_ROWS);
    set->glsOpDict = gls_dict_create(GLS_OPCODE_COUNT, 1);
    for (int op = 0; set->glsOpDict && op < GLS_OPCODE_COUNT; ++op)
        if (gls_opcode_names[op])
            gls_dict_insert(set->glsOpDict, gls_opcode_names[op], op);
    if (!set->glAttribMaskDict || !set->glClientAttribMaskDict || !set->glEnumDict ||
        !set->glsEnumDict || !set->glsImageFlagsDict || !set->glsOpDict) {
        delete_set(set);
        return nullptr;
    }
    return set;
}

const GlsDictionarySet *gls_dictionaries()
{
    gls_lock_enter();
    if (!dictionaries)
        dictionaries = build_set();
    GlsDictionarySet *set = dictionaries;
    gls_lock_leave();
    return set;
}

void gls_dictionaries_release()
{
    gls_lock_enter();
    if (dictionaries)
        delete_set(dictionaries);
    dictionaries = nullptr;
    gls_lock_leave();
}
