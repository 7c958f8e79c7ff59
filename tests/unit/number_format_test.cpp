// The text form's numbers against the C library's "%.7G" and "%.16G" with the exponent repair:
// the writer formats without printf, and must give the very same text.
#include <gtest/gtest.h>

#include "gls/writer.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

template <typename T> void expect_printf_text(T value)
{
    char ours[64], text[64];
    sizeof value == 4 ? gls_format_float(ours, value) : gls_format_double(ours, value);
    int length = snprintf(text, sizeof text, sizeof value == 4 ? "%.7G" : "%.16G", (double)value);
    if (length >= 6 && text[length - 5] == 'E' && text[length - 3] == '0')
        memmove(text + length - 3, text + length - 2, 3);
    uint64_t bits = 0;
    memcpy(&bits, &value, sizeof value);
    ASSERT_STREQ(ours, text) << "bits 0x" << std::hex << bits;
}

// Random bit patterns over the whole range, finite ones only.
template <typename T, typename Random> std::vector<T> random_values(Random random, int count)
{
    std::vector<T> values;
    for (int i = 0; i < count; ++i) {
        auto bits = random();
        T value;
        memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value))
            values.push_back(value);
    }
    return values;
}

TEST(NumberFormat, FloatsMatchPrintf)
{
    std::vector<float> values = random_values<float>(std::mt19937(12345), 2000000);
    EXPECT_GT(values.size(), 1900000u);
    // Values near the rounding boundaries of the seventh digit, and short decimal fractions.
    for (int i = -100000; i <= 100000; ++i)
        values.insert(values.end(), {i / 1000.0f, i * 0.05f, i * 12.5f + 0.5f, (float)i * 1e-7f, (float)i * 1e30f});
    // Where a short cut goes wrong: next to each power of ten, where the decimal exponent changes
    // (both signs); among the subnormals; around 2^24, where floats stop having fractions.
    for (int k = -45; k <= 38; ++k) {
        for (int side : {-1, 1}) {
            float value = (float)std::pow(10.0, k);
            for (int step = 0; step < 40; ++step, value = std::nextafter(value, side * INFINITY))
                values.insert(values.end(), {value, -value});
        }
    }
    for (uint32_t bits = 1; bits < 0x00800000u; bits += 997) {
        float value;
        memcpy(&value, &bits, 4);
        values.insert(values.end(), {value, -value});
    }
    for (float value = 16777200.0f; value < 16777240.0f; value = std::nextafter(value, INFINITY))
        values.insert(values.end(), {value, -value});
    for (float value : values)
        ASSERT_NO_FATAL_FAILURE(expect_printf_text(value));
}

TEST(NumberFormat, DoublesMatchPrintf)
{
    std::vector<double> values = random_values<double>(std::mt19937_64(6789), 1000000);
    values.insert(values.end(), {0.1, 1e5, 1e-5, 123456789012345678.0, 0.7698003589195002, -0.0});
    for (double value : values)
        ASSERT_NO_FATAL_FAILURE(expect_printf_text(value));
}

} // namespace
