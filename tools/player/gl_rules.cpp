#include "tools/player/gl_rules.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/gls.h"

#include <cstdio>

int64_t gl_pname_count(GlsSizeTable table, GLenum pname)
{
    if (table < 0 || table >= GLS_SIZE_TABLE_COUNT)
        return -1;
    for (const gl_pname_row *row = gl_size_tables[table]; row->count; ++row)
        if (row->pname == pname)
            return row->count;
    return -1;
}

const char *gl_enum_text(GLenum value, char *scratch, size_t size)
{
    // The codec hands its names out in one buffer of its own: each is copied here.
    const char *name = (const char *)glsGetEnumName(GLS_API_GL, value);
    for (const gl_pname_row *table : gl_size_tables)
        for (const gl_pname_row *row = table; row->count && !name; ++row)
            if (row->pname == value)
                name = row->name;
    if (name)
        snprintf(scratch, size, "%s", name);
    else
        snprintf(scratch, size, "0x%X", (unsigned)value);
    return scratch;
}

uint64_t add_saturated(uint64_t a, uint64_t b) { return a > UINT64_MAX - b ? UINT64_MAX : a + b; }

uint64_t multiply_saturated(uint64_t a, uint64_t b) { return a && b > UINT64_MAX / a ? UINT64_MAX : a * b; }

static uint64_t positive(int64_t value) { return value > 0 ? (uint64_t)value : 0; }

bool gl_image_bytes(GLenum format, GLenum type, int64_t width, int64_t height, int64_t depth, bool volume,
                    const pixel_store *store, uint64_t *bytes)
{
    int64_t groups = gl_pname_count(GLS_SIZES_PIXEL_GROUPS, format);
    int64_t bits = gl_pname_count(GLS_SIZES_PIXEL_BITS, type);
    *bytes = 0;
    if (groups < 0 || bits < 0)
        return false;
    if (width <= 0 || height <= 0 || depth <= 0)
        return true;
    // Alignment is 1, 2, 4 or 8; anything else GL never takes, and 8 is the most it could mean.
    uint64_t alignment = store->alignment == 1 || store->alignment == 2 || store->alignment == 4 ? store->alignment : 8;
    uint64_t length = store->row_length > 0 ? (uint64_t)store->row_length : (uint64_t)width;
    uint64_t skip_rows = positive(store->skip_rows), skip_pixels = positive(store->skip_pixels);
    uint64_t row, last_row;
    if (type == GL_BITMAP) {
        row = multiply_saturated(alignment, (length + 8 * alignment - 1) / (8 * alignment));
        last_row = (add_saturated(skip_pixels, (uint64_t)width) + 7) / 8;
    } else {
        // A packed type holds a whole group in one element.
        uint64_t size = (uint64_t)bits / 8, per_group = gl_pname_count(GLS_SIZES_PACKED_PIXEL_GROUPS, type) > 0 ? 1 : groups;
        uint64_t elements = multiply_saturated(per_group, length);
        row = size >= alignment ? multiply_saturated(elements, size)
                                : multiply_saturated(alignment, (add_saturated(multiply_saturated(size, elements), alignment - 1)) / alignment);
        last_row = multiply_saturated(add_saturated(skip_pixels, (uint64_t)width), per_group * size);
    }
    uint64_t rows = add_saturated(skip_rows, (uint64_t)height - 1);
    uint64_t total = add_saturated(multiply_saturated(rows, row), last_row);
    if (volume) {
        uint64_t image_rows = store->image_height > 0 ? (uint64_t)store->image_height : (uint64_t)height;
        uint64_t images = add_saturated(positive(store->skip_images), (uint64_t)depth - 1);
        total = add_saturated(total, multiply_saturated(images, multiply_saturated(image_rows, row)));
    }
    *bytes = total;
    return true;
}

bool gl_map_values(GLenum target, bool surface, int64_t ustride, int64_t uorder, int64_t vstride, int64_t vorder,
                   uint64_t *values)
{
    // The values of a point by target, as the codec lays maps out.
    int64_t k = surface ? gls_map2_layout(target, 4, 1, 4, 1).k : gls_map1_layout(target, 4, 1).k;
    *values = 0;
    if (k == 0)
        return false;
    // GL refuses a map of no points and strides shorter than a point before it reads any.
    if (uorder < 1 || ustride < k || (surface && (vorder < 1 || vstride < k)))
        return true;
    uint64_t last = multiply_saturated((uint64_t)uorder - 1, (uint64_t)ustride);
    if (surface)
        last = add_saturated(last, multiply_saturated((uint64_t)vorder - 1, (uint64_t)vstride));
    *values = add_saturated(last, (uint64_t)k);
    return true;
}
