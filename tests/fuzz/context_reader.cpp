// Context streams: a stream of any form captured into the context stream "a", where it may call
// "a" itself; appended to once more for odd sizes; then read back and written as text.
#include "codec_harness.h"

#include <initializer_list>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz_codec_begin(data, size, size);
    GLSenum type = fuzz_stream_type(data, size);
    for (GLbitfield flags : {0u, (GLbitfield)GLS_WRITE_APPEND}) {
        if (flags && size % 2 == 0)
            break;
        if (glsBeginCapture(fuzz_name_a, GLS_CONTEXT, flags)) {
            glsCallArray(type, size, data);
            glsEndCapture();
        }
    }
    glsCallStream(fuzz_name_a);
    fuzz_codec_end();
    return 0;
}
