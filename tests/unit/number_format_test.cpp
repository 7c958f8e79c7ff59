// The text form's numbers against the C library's "%.7G" and "%.16G" with the exponent repair:
// the writer formats without printf, and must give the very same text.
#include <gtest/gtest.h>

#include "gls/writer.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace {

std::string by_printf(double value, bool is_float)
{
    char text[64];
    int length = snprintf(text, sizeof text, is_float ? "%.7G" : "%.16G", value);
    if (length >= 6 && text[length - 5] == 'E' && text[length - 3] == '0')
        memmove(text + length - 3, text + length - 2, 3);
    return text;
}

std::string float_text(float value)
{
    char text[64];
    gls_format_float(text, value);
    return text;
}

std::string double_text(double value)
{
    char text[64];
    gls_format_double(text, value);
    return text;
}

TEST(NumberFormat, FloatsMatchPrintfOverTheWholeRange)
{
    std::mt19937 random(12345);
    int compared = 0;
    for (int i = 0; i < 2000000; ++i) {
        uint32_t bits = random();
        float value;
        memcpy(&value, &bits, 4);
        if (!std::isfinite(value))
            continue;
        ASSERT_EQ(float_text(value), by_printf(value, true)) << "bits 0x" << std::hex << bits;
        ++compared;
    }
    EXPECT_GT(compared, 1900000);
}

TEST(NumberFormat, FloatsWithFewDigitsAndTies)
{
    // Values near the rounding boundaries of the seventh digit, and short decimal fractions.
    for (int i = -100000; i <= 100000; ++i) {
        float values[] = {i / 1000.0f, i * 0.05f, i * 12.5f + 0.5f, (float)i * 1e-7f, (float)i * 1e30f};
        for (float value : values)
            ASSERT_EQ(float_text(value), by_printf(value, true)) << value;
    }
}

TEST(NumberFormat, DoublesMatchPrintf)
{
    std::mt19937_64 random(6789);
    for (int i = 0; i < 1000000; ++i) {
        uint64_t bits = random();
        double value;
        memcpy(&value, &bits, 8);
        if (!std::isfinite(value))
            continue;
        ASSERT_EQ(double_text(value), by_printf(value, false)) << "bits 0x" << std::hex << bits;
    }
    for (double value : {0.1, 1e5, 1e-5, 123456789012345678.0, 0.7698003589195002, -0.0})
        EXPECT_EQ(double_text(value), by_printf(value, false)) << value;
}

} // namespace
