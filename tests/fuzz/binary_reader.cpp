// The binary reader of both byte orders, on any bytes behind four zero bytes: a read whose
// commands are executed and written again as text.
#include "codec_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    GLSenum type = fuzz_stream_type(data, size);
    if (type == GLS_TEXT)
        return 0;
    fuzz_codec_begin(data, size, 1 + size % 61);
    fuzz_codec_read(type, data, size);
    fuzz_codec_end();
    return 0;
}
