// Texts of state values, enumerant names and pixel formats, compared whole with texts written
// from the rules.
#include "gen/gl_enums.h"
#include "panel/enum_text.h"
#include "panel/panel_text.h"
#include "panel/state_text.h"
#include "records/records.h"
#include "state/window_info.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <string>

namespace {

std::string expected_text(const char *name)
{
    std::ifstream file(std::string(QUONDALE_EXPECTED "/") + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The room of master.enumerants: the copied names, then zero rows.
const enumerant_row *enumerant_room()
{
    static enumerant_row room[ENUMERANT_ROWS];
    memcpy(room, enumerant_table, sizeof enumerant_table);
    return room;
}

std::string text_of(const char *prefix, int32_t type, int32_t count, std::initializer_list<float> given)
{
    static float values[STATE_VALUE_COUNT];
    std::fill(values, values + STATE_VALUE_COUNT, 0.0f);
    std::copy(given.begin(), given.end(), values);
    static char out[STATE_TEXT_SIZE];
    state_text(prefix, type, count, values, enumerant_room(), out);
    return out;
}

TEST(StateSaveBlock, MatrixLinesStandUnderTheirPrefix)
{
    static state_values values;
    for (int i = 0; i < 16; ++i)
        values.current[i] = values.default_values[i] = i % 5 == 0 ? 1.0f : 0.0f;
    values.default_values[12] = -2.5f;
    values.default_values[13] = 10.0f;
    values.default_values[14] = 0.25f;
    const state_row row = {1, 0x0BA6, -1, 0, 4, 16, "glGet(GL_MODELVIEW_MATRIX)"};
    char matrix[STATE_SAVE_BLOCK_SIZE], mask_block[STATE_SAVE_BLOCK_SIZE];
    state_save_block(&row, &values, true, enumerant_room(), matrix);
    // Without a usable context the values of the last scan stand under another prefix.
    const state_row mask = {1, 0x0C23, -1, 0, 1, 4, "glGet(GL_COLOR_WRITEMASK)"};
    const float current[4] = {1, 0, 1, 2};
    std::copy(current, current + 4, values.current);
    std::fill(values.default_values, values.default_values + 4, 1.0f);
    state_save_block(&mask, &values, false, enumerant_room(), mask_block);
    EXPECT_EQ(std::string(matrix) + mask_block, expected_text("state_save_blocks.txt"));
}

TEST(StateText, EachValueFollowedByABlankOrInLinesOfFour)
{
    EXPECT_EQ(text_of("", 2, 2, {0x1B02, 0x1B01}), "GL_FILL GL_LINE \r\n");
    // Several names: the first in byte order. No name: four hexadecimal digits at least.
    EXPECT_EQ(text_of("", 2, 5, {0x8074, 0x0BF1, 0, 0x0BF5, NAN}),
              "GL_VERTEX_ARRAY GL_INDEX_LOGIC_OP GL_FALSE 0x0BF5 0x80000000 \r\n");
    EXPECT_EQ(text_of("", 3, 3, {65535, 0x1ABCD, 0x25}), "0xFFFF 0xABCD 0x25 \r\n");
    EXPECT_EQ(text_of("Now: ", 5, 4, {1.5f, -2, 100, 0.00004f}), "Now: 1.5000 -2.0000 100.0000 0.0000 \r\n");
    EXPECT_EQ(text_of("", 5, 0, {1}), "\r\n");
    EXPECT_EQ(text_of("P: ", 6, 8, {255, 0, 1, 0xAA, 0x155, 0x80, 127, 511}), "P: 0xFF 0x0 0x1 0xAA\r\n"
                                                                            "   0x55 0x80 0x7F 0xFF\r\n");
    std::string stipple;
    for (int line = 0; line < 32; ++line)
        stipple += "0x0 0x0 0x0 0x0\r\n";
    EXPECT_EQ(text_of("", 6, 128, {}), stipple);
    EXPECT_EQ(text_of("Default Value: ", 7, 1, {1}), "Default Value: ");
}

TEST(EnumName, FirstRowOfTheValueElseHexadecimal)
{
    EXPECT_STREQ(enum_name(1, enumerant_room(), ENUMERANT_ROWS), "GL_LINES");
    EXPECT_STREQ(enum_name(0x12345, enumerant_room(), ENUMERANT_ROWS), "0x12345");
    EXPECT_STREQ(enum_name(-1, enumerant_room(), ENUMERANT_ROWS), "0xFFFFFFFF");
    // The walk goes through spare room: a zero row answers for 0, with an empty name.
    const enumerant_row spare[2] = {{5, "GL_FIVE"}, {0, ""}};
    EXPECT_STREQ(enum_name(0, spare, 2), "");
    EXPECT_STREQ(enum_name(0, spare, 1), "0x0000");
}

TEST(EnumerantList, NameThenHexadecimalAndDecimalOfFourDigitsAtLeast)
{
    char out[ENUM_LIST_TEXT_SIZE];
    enumerant_list_text(&enumerant_table[0], out);
    EXPECT_STREQ(out, "GL_2D - 0x0600, 1536");
    const enumerant_row lines = {1, "GL_LINES"}, abgr = {0x8000, "GL_ABGR_EXT"};
    enumerant_list_text(&lines, out);
    EXPECT_STREQ(out, "GL_LINES - 0x0001, 0001");
    enumerant_list_text(&abgr, out);
    EXPECT_STREQ(out, "GL_ABGR_EXT - 0x8000, 32768");
}

// A context's pixel format in its two texts: the history's GLX-style line and the window's lines.
per_gl &format(int32_t handle, uint8_t double_buffer, int32_t pixel_type, std::initializer_list<int32_t> color,
               std::initializer_list<int32_t> accum, int32_t index, int32_t stencil, int32_t depth)
{
    static per_gl gl;
    gl.handle = handle;
    gl.direct_render = 0;
    gl.double_buffer = double_buffer;
    gl.stereo = 0;
    gl.aux_buffers = 0;
    gl.pixel_type = pixel_type;
    std::copy(color.begin(), color.end(), gl.color_bits);
    std::copy(accum.begin(), accum.end(), gl.accum_bits);
    gl.index_bits = index;
    gl.stencil_bits = stencil;
    gl.depth_bits = depth;
    return gl;
}

// The history's line then the window's lines of each format, as one text.
TEST(PixelFormatTexts, EveryBufferInItsPlaceAndAccumulationForRgbaOnly)
{
    std::string text;
    auto add = [&](const per_gl &gl) {
        char visual[VISUAL_INFO_SIZE];
        static char window[WINDOW_INFO_TEXT_SIZE];
        visual_info_text(&gl, visual);
        window_info_text(&gl, window);
        text += std::string(visual) + "\n" + window + "\n";
    };
    add(format(1, 1, GL_RGBA, {8, 8, 8, 0}, {0, 0, 0, 0}, 0, 0, 24));
    // An accumulation buffer with alpha bits alone still has its line.
    per_gl &gl = format(1, 0, GL_RGBA, {5, 6, 5, 8}, {0, 0, 0, 16}, 0, 8, 16);
    gl.stereo = 1;
    gl.aux_buffers = 2;
    add(gl);
    add(format(1, 0, GL_COLOR_INDEX, {0, 0, 0, 0}, {8, 8, 8, 8}, 8, 0, 0));
    EXPECT_EQ(text, expected_text("pixel_formats.txt"));

    char window[WINDOW_INFO_TEXT_SIZE];
    window_info_text(&format(0, 0, GL_RGBA, {8, 8, 8, 8}, {0, 0, 0, 0}, 0, 0, 0), window);
    EXPECT_STREQ(window, ""); // no context
}

} // namespace
