// GL's own rules for how much it reads or writes through a pointer: values by pname, bytes of a
// pixel rectangle under a pixel-store state, values of evaluator points. The player holds every
// pointer it hands GL to them; they know more than the codec's size tables, which say what a
// stream holds.
#pragma once

#include "gen/gls_enums.h"
#include "gls/gls_types.h"

#include <cstddef>
#include <cstdint>

// GL's counts by pname, per size table of the codec's: its counts and the glsizes rows of the
// table of signatures (generated into gen/player_taps.cpp).
struct gl_pname_row {
    GLenum pname;
    uint32_t count; // 0 ends a table
    const char *name;
};
extern const gl_pname_row *const gl_size_tables[GLS_SIZE_TABLE_COUNT];

// The values GL takes for pname in the calls of a size table; -1 for a pname its rules do not know.
int64_t gl_pname_count(GlsSizeTable table, GLenum pname);
// The name of an enumerant of GL's rules or the codec's, else its number in hexadecimal, in
// scratch (64 bytes hold any).
const char *gl_enum_text(GLenum value, char *scratch, size_t size);

// GL's pixel-store state of one direction.
struct pixel_store {
    int64_t alignment;
    int64_t row_length;
    int64_t image_height;
    int64_t skip_pixels;
    int64_t skip_rows;
    int64_t skip_images;
};

// The bytes from the pointer to the last that GL touches for a width x height (x depth, for a
// volume) rectangle of format and type; saturated, never wrapped. False for a format or type
// GL's rules do not know.
bool gl_image_bytes(GLenum format, GLenum type, int64_t width, int64_t height, int64_t depth, bool volume,
                    const pixel_store *store, uint64_t *bytes);

// The values GL reads for the points of a map (vorder and vstride 0 for a curve); false for a
// target its rules do not know.
bool gl_map_values(GLenum target, bool surface, int64_t ustride, int64_t uorder, int64_t vstride, int64_t vorder,
                   uint64_t *values);

// Saturating arithmetic for sizes that come from a stream.
uint64_t add_saturated(uint64_t a, uint64_t b);
uint64_t multiply_saturated(uint64_t a, uint64_t b);
