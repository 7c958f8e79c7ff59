// Pictures of frames: PNG files of RGB images, made without a library so that the player is one
// source on every platform, and the small copies and base64 text that the report inlines.
#pragma once

#include "tools/player/text_buffer.h"

#include <cstddef>
#include <cstdint>

// A zlib stream of data: one deflate block with the fixed codes, matches found through a hash.
void zlib_compress(const uint8_t *data, size_t size, text_buffer *out);
// The PNG file of an 8-bit RGB image whose rows run from the bottom up, as GL reads them.
void png_from_rgb(const uint8_t *rgb, int width, int height, text_buffer *out);
// A copy at most max_width wide (and as much smaller in height), each pixel the mean of the
// block it stands for; rows from the bottom up as before. The caller frees *out.
bool shrink_rgb(const uint8_t *rgb, int width, int height, int max_width, uint8_t **out, int *out_width,
                int *out_height);
void base64_append(text_buffer *out, const void *data, size_t size);
