// The text parser, on any text: a read whose commands are executed and written again as text.
#include "codec_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A binary stream is the binary reader's input.
    if (fuzz_stream_type(data, size) != GLS_TEXT)
        return 0;
    fuzz_codec_begin(data, size, 1 + size % 61);
    fuzz_codec_read(GLS_TEXT, data, size);
    fuzz_codec_end();
    return 0;
}
