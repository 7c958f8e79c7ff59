// Run once, not a test: the writer's float text against the C library's "%.7G" (with the
// exponent repair) for every one of the 2^32 bit patterns, or for a part of them:
//   float_format_check [FIRST LAST]     bit patterns in hexadecimal, both included
// Prints the patterns that differ, how many there were, and how many took the fast path.
#include "gls/writer.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv)
{
    uint64_t first = argc > 2 ? strtoull(argv[1], nullptr, 16) : 0;
    uint64_t last = argc > 2 ? strtoull(argv[2], nullptr, 16) : 0xFFFFFFFFu;
    uint64_t differing = 0, compared = 0;
    for (uint64_t bits = first; bits <= last; ++bits) {
        uint32_t pattern = (uint32_t)bits;
        float value;
        memcpy(&value, &pattern, 4);
        if (!std::isfinite(value))
            continue;
        char mine[64], theirs[64];
        gls_format_float(mine, value);
        int length = snprintf(theirs, sizeof theirs, "%.7G", value);
        if (length >= 6 && theirs[length - 5] == 'E' && theirs[length - 3] == '0')
            memmove(theirs + length - 3, theirs + length - 2, 3);
        ++compared;
        if (strcmp(mine, theirs) != 0 && differing++ < 20)
            printf("0x%08X: %s, printf %s\n", pattern, mine, theirs);
    }
    printf("%llu compared, %llu differ\n", (unsigned long long)compared, (unsigned long long)differing);
    return differing != 0;
}
