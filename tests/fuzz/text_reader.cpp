// The text parser, on any text: a read whose commands are executed and written again as text.
#include "codec_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_codec_read_input(data, size, false);
    return 0;
}
