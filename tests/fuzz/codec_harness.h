// What the codec's fuzz targets share: a fresh context for each input, with a text capture open
// on a sink that drops the text, every command executed and written, and no way out to files or
// the standard input: named streams are found only among the context streams, and an unnamed
// read takes the input.
#pragma once

#include "gls/gls.h"

#include <cstddef>
#include <cstdint>

// The bytes an unnamed read takes, handed out in pieces of `piece` bytes so that tokens and
// commands straddle refills.
void fuzz_codec_begin(const uint8_t *input, size_t size, size_t piece);
void fuzz_codec_end();
// Names that read the same in every string type: "" and "a" with zeros enough for four-byte
// characters.
extern const GLubyte fuzz_no_name[4];
extern const GLubyte fuzz_name_a[8];

// The form a stream's first bytes claim: four zero bytes start a binary stream, whose order the
// next word tells.
GLSenum fuzz_stream_type(const uint8_t *input, size_t size);
// The reader targets: a read of the input if it is of the form asked for (text or binary), by one
// of two ways chosen by the size's parity, so that both are fuzzed without reading each input
// twice: the unnamed stream in pieces, or glsCallArray.
void fuzz_codec_read_input(const uint8_t *input, size_t size, bool binary);
