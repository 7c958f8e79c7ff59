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

// Where a short cut goes wrong: next to each power of ten, where the decimal exponent changes;
// among the subnormals; around 2^24, where floats stop having fractions.
TEST(NumberFormat, FloatsAtTheEdgesOfTheirDecimalExponent)
{
    std::vector<float> values;
    for (int k = -45; k <= 38; ++k) {
        float near = (float)std::pow(10.0, k);
        for (int side : {-1, 1}) {
            float value = near;
            for (int step = 0; step < 40; ++step, value = std::nextafter(value, side * INFINITY))
                values.push_back(value);
        }
    }
    for (uint32_t bits = 1; bits < 0x00800000u; bits += 997) {
        float value;
        memcpy(&value, &bits, 4);
        values.push_back(value);
    }
    for (float value = 16777200.0f; value < 16777240.0f; value = std::nextafter(value, INFINITY))
        values.push_back(value);
    for (float value : values) {
        ASSERT_EQ(float_text(value), by_printf(value, true)) << value;
        ASSERT_EQ(float_text(-value), by_printf(-value, true)) << -value;
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
