// The history and last-call formatters, on any piece. The first byte holds the limit switch
// (bit 0) and the GLU call depth (the rest, signed).
#include "recording/line_format.h"

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    static history_sink *sink = [] {
        history_sink *made = (history_sink *)calloc(1, sizeof(history_sink));
        history_sink_start(made, fopen("/dev/null", "w"));
        return made;
    }();
    static char *field = (char *)malloc(LAST_CALL_TEXT_SIZE);
    int depth = (int8_t)data[0] >> 1;
    bool limit = data[0] & 1;
    // An exact copy, so that a read behind the piece is seen.
    size_t count = size - 1;
    char *piece = (char *)malloc(count ? count : 1);
    memcpy(piece, data + 1, count);
    history_format(sink, (int)count, piece, depth, limit);
    if (count > 0)
        last_call_format((int)count, piece, field);
    free(piece);
    return 0;
}
