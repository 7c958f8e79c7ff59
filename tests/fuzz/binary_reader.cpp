// The binary reader of both byte orders, on any bytes behind four zero bytes: a read whose
// commands are executed and written again as text.
#include "codec_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_codec_read_input(data, size, true);
    return 0;
}
