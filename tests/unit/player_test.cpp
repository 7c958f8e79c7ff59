// The history player natively, on Mesa through EGL: a hand-written history of two frames played
// to its pictures and counts, its report's parts, broken and cut-short streams; the records of the
// pixel format; the PNG files, read back through zlib.
#include "tools/player/player.h"
#include "tools/player/png.h"
#include "tools/player/report.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

static std::string data_file(const char *name) { return std::string(QUONDALE_TEST_DATA) + "/" + name; }
static std::string expected_file(const char *name) { return std::string(QUONDALE_TEST_EXPECTED) + "/" + name; }

static std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

static std::string write_temp(const char *name, const std::string &text)
{
    std::string path = testing::TempDir() + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

struct kept_frames {
    std::vector<frame_stats> stats;
    std::vector<std::string> info;
    std::vector<std::vector<uint8_t>> pixels;
};

static void keep(const frame_stats *stats, const uint8_t *rgb, int width, int height, void *user)
{
    kept_frames *kept = (kept_frames *)user;
    kept->stats.push_back(*stats);
    kept->info.push_back(stats->info);
    kept->pixels.emplace_back(rgb, rgb + width * height * 3);
}

static bool play(const std::string &path, kept_frames *kept, play_outcome *outcome, int first = 1, int last = 0)
{
    play_options options = {first, last, keep, nullptr, kept};
    return play_history(path.c_str(), &options, outcome);
}

// The pixel as RGB text, x from the left and y from the bottom.
static std::string pixel(const std::vector<uint8_t> &rgb, int width, int x, int y)
{
    const uint8_t *p = &rgb[(y * width + x) * 3];
    return std::to_string(p[0]) + " " + std::to_string(p[1]) + " " + std::to_string(p[2]);
}

static std::string totals_text(const play_outcome *outcome)
{
    text_buffer rows = {};
    report_call_counts(outcome->totals, outcome->names, &rows);
    std::string text = rows.data ? rows.data : "";
    text_free(&rows);
    return text;
}

TEST(PlayerPlay, TwoFramesTheirPicturesAndTheDebuggersCounts)
{
    kept_frames kept;
    play_outcome outcome;
    ASSERT_TRUE(play(data_file("player_frames.gls"), &kept, &outcome)) << outcome.error;
    EXPECT_EQ(outcome.format.width, 8);
    EXPECT_EQ(outcome.format.height, 4);
    ASSERT_EQ(kept.stats.size(), 2u);
    // Frame 1 is cleared red; frame 2 blue with the quad's green on its left half.
    for (int x = 0; x < 8; ++x)
        EXPECT_EQ(pixel(kept.pixels[0], 8, x, 2), "255 0 0");
    EXPECT_EQ(pixel(kept.pixels[1], 8, 3, 0), "0 255 0");
    EXPECT_EQ(pixel(kept.pixels[1], 8, 4, 3), "0 0 255");

    const frame_stats &second = kept.stats[1];
    EXPECT_EQ(second.number, 2);
    EXPECT_TRUE(second.swapped);
    EXPECT_EQ(second.calls, 15);
    // Triangles from the skipped glDrawArrays, as the debugger counts it; the strip of two
    // vertices is no primitive.
    const int64_t primitives[PRIM_KIND_COUNT] = {0, 0, 0, 0, 2, 0, 0, 1, 0, 0};
    EXPECT_EQ(0, memcmp(second.primitives, primitives, sizeof primitives));
    EXPECT_EQ(second.state_changes, 3);
    EXPECT_EQ(kept.info[1], "- Use glBegin(GL_TRIANGLES) instead of glBegin(GL_POLYGON) followed by 3 vertices.\n");
    EXPECT_EQ(kept.info[0], "");
    EXPECT_EQ(totals_text(&outcome), read_file(expected_file("player_totals.txt")));
    free_play_outcome(&outcome);

    // A range hands over its frames only and counts only them.
    kept = {};
    ASSERT_TRUE(play(data_file("player_frames.gls"), &kept, &outcome, 1, 1)) << outcome.error;
    ASSERT_EQ(kept.stats.size(), 1u);
    EXPECT_EQ(totals_text(&outcome), "glClear - 1\nglClearColor - 1\nwglSwapBuffers - 1\n");
    free_play_outcome(&outcome);
}

TEST(PlayerPlay, BadFilesTellWhyAndKeepTheFramesBefore)
{
    // A stream may just end between statements, as a program's history does; not inside one.
    std::string whole = read_file(data_file("player_frames.gls"));
    size_t quad = whole.find("glVertex2fv({0, 1");
    kept_frames kept;
    play_outcome outcome;
    EXPECT_TRUE(play(write_temp("ended.gls", whole.substr(0, quad)), &kept, &outcome)) << outcome.error;
    free_play_outcome(&outcome);
    std::string cut = write_temp("cut.gls", whole.substr(0, quad + 15));
    kept = {};
    EXPECT_FALSE(play(cut, &kept, &outcome));
    EXPECT_EQ(std::string(outcome.error), cut + " ends in the middle of a stream");
    // The first frame whole, and what the second had drawn when the stream ended.
    ASSERT_EQ(kept.stats.size(), 2u);
    EXPECT_FALSE(kept.stats[1].swapped);
    free_play_outcome(&outcome);

    std::string broken = whole;
    broken.replace(broken.find("glClear(GL_COLOR_BUFFER_BIT);\nglColor3fv"), 9, "glClear(GL_KLEUR");
    std::string broken_path = write_temp("broken.gls", broken);
    EXPECT_FALSE(play(broken_path, &kept, &outcome));
    EXPECT_EQ(std::string(outcome.error).rfind(broken_path + ": a broken glClear command near byte ", 0), 0u) << outcome.error;
    free_play_outcome(&outcome);

    // Empty lists where data is due stand for a program's null pointers: named once, skipped.
    std::string nulls = write_temp("nulls.gls", "glsBeginGLS(1, 0);\nglColor3fv({});\n"
                                                "glDrawElements(GL_POINTS, 2, GL_UNSIGNED_SHORT, {});\nglColor3fv({});\n");
    testing::internal::CaptureStderr();
    EXPECT_TRUE(play(nulls, &kept, &outcome)) << outcome.error;
    std::string skipped = " skipped: it holds no data where its count asks for some (a null pointer of the program's)\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "quondale: " + nulls + ": glColor3fv" + skipped + "quondale: " + nulls + ": glDrawElements" + skipped);
    free_play_outcome(&outcome);

    std::string prose = write_temp("prose.gls", "Dear reader,\nthis is no stream.\n");
    EXPECT_FALSE(play(prose, &kept, &outcome));
    EXPECT_EQ(std::string(outcome.error), prose + " is not a GLS stream");
    free_play_outcome(&outcome);

    std::string missing = testing::TempDir() + "no such history.gls";
    EXPECT_FALSE(play(missing, &kept, &outcome));
    EXPECT_EQ(std::string(outcome.error), "cannot open " + missing + ": No such file or directory");
    free_play_outcome(&outcome);
}

TEST(PlayerFormat, RecordsOfTheDebugger)
{
    surface_format format;
    default_surface_format(&format);
    ASSERT_TRUE(read_visual_info("GLX_USE_GL, GLX_DOUBLEBUFFER, GLX_RGBA, GLX_RED_SIZE, 5, GLX_GREEN_SIZE, 6, "
                                 "GLX_BLUE_SIZE, 5, GLX_ACCUM_RED_SIZE, 16, GLX_DEPTH_SIZE, 16, None",
                                 &format));
    EXPECT_EQ(format.red_bits * 100 + format.green_bits * 10 + format.blue_bits, 565);
    EXPECT_EQ(format.alpha_bits, 0);
    EXPECT_EQ(format.accum_bits[0], 16);
    EXPECT_EQ(format.depth_bits, 16);
    EXPECT_EQ(format.stencil_bits, 0);
    EXPECT_TRUE(format.double_buffer && format.rgba);
    ASSERT_TRUE(read_visual_info("GLX_USE_GL, GLX_AUX_BUFFERS, 2, GLX_BUFFER_SIZE, 8, None", &format));
    EXPECT_FALSE(format.rgba || format.double_buffer);
    EXPECT_EQ(format.index_bits, 8);
    // What no format reads as leaves the format alone.
    for (const char *junk : {"...", "GLX_USE_GL, GLX_RGBA, GLX_RED_SIZE, None", "GLX_USE_GL, GLX_RGBA, GLX_RED_SIZE, 8"})
        EXPECT_FALSE(read_visual_info(junk, &format)) << junk;
    EXPECT_EQ(format.index_bits, 8);

    ASSERT_TRUE(read_viewport_info("0 0 480 360", &format));
    EXPECT_EQ(format.width * 1000 + format.height, 480360);
    for (const char *junk : {"0 0 480", "0 0 -5 4", "0 0 480 360 7", "0 0 99999 1"})
        EXPECT_FALSE(read_viewport_info(junk, &format)) << junk;
}

// ---------------------------------------------------------------------------------------------
// Pictures

static std::string inflated(const char *data, size_t size)
{
    std::vector<uint8_t> out(1 << 22);
    uLongf length = out.size();
    if (uncompress(out.data(), &length, (const Bytef *)data, size) != Z_OK)
        return "(no zlib stream)";
    return std::string((const char *)out.data(), length);
}

TEST(PlayerPictures, ZlibStreamsReadBackWhole)
{
    std::string random(50000, 0), repeating;
    uint32_t state = 12345;
    for (char &c : random)
        c = (char)((state = state * 1103515245 + 12345) >> 16);
    for (int i = 0; i < 20000; ++i)
        repeating += "abcab"[i % 5] + std::to_string(i % 7);
    for (const std::string &input : {std::string(), std::string("a"), random, repeating, std::string(70000, 'x')}) {
        text_buffer out = {};
        zlib_compress((const uint8_t *)input.data(), input.size(), &out);
        EXPECT_EQ(inflated(out.data, out.length), input) << input.size() << " bytes";
        if (input.size() == 70000)
            EXPECT_LT(out.length, 1000u);
        text_free(&out);
    }
}

static uint32_t big_endian(const std::string &bytes, size_t at)
{
    return (uint32_t)(uint8_t)bytes[at] << 24 | (uint32_t)(uint8_t)bytes[at + 1] << 16 |
           (uint32_t)(uint8_t)bytes[at + 2] << 8 | (uint8_t)bytes[at + 3];
}

TEST(PlayerPictures, PngHasTheRowsFromTheTop)
{
    // Two rows from the bottom up: red green blue, then white black grey.
    const uint8_t rgb[18] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 128, 128, 128};
    text_buffer png = {};
    png_from_rgb(rgb, 3, 2, &png);
    std::string file(png.data, png.length);
    text_free(&png);
    ASSERT_EQ(file.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    std::string chunks, image;
    for (size_t at = 8; at + 12 <= file.size();) {
        uint32_t length = big_endian(file, at);
        std::string type = file.substr(at + 4, 4), body = file.substr(at + 8, length);
        EXPECT_EQ(big_endian(file, at + 8 + length), crc32(0, (const Bytef *)file.data() + at + 4, length + 4)) << type;
        chunks += type + " ";
        if (type == "IHDR")
            EXPECT_EQ(body, std::string("\0\0\0\3\0\0\0\2\x08\x02\0\0\0", 13));
        if (type == "IDAT")
            image = inflated(body.data(), body.size());
        at += 12 + length;
    }
    EXPECT_EQ(chunks, "IHDR IDAT IEND ");
    // Undo each row's filter: none, left, up or Paeth.
    ASSERT_EQ(image.size(), 20u);
    std::string rows;
    for (int y = 0; y < 2; ++y) {
        int filter = (uint8_t)image[y * 10];
        for (int i = 0; i < 9; ++i) {
            int left = i >= 3 ? (uint8_t)rows[y * 9 + i - 3] : 0, up = y ? (uint8_t)rows[i] : 0;
            int corner = y && i >= 3 ? (uint8_t)rows[i - 3] : 0, p = left + up - corner;
            int paeth = abs(p - left) <= abs(p - up) && abs(p - left) <= abs(p - corner) ? left
                        : abs(p - up) <= abs(p - corner)                                  ? up
                                                                                          : corner;
            int predicted[5] = {0, left, up, (left + up) / 2, paeth};
            rows += (char)((uint8_t)image[y * 10 + 1 + i] + predicted[filter]);
        }
    }
    EXPECT_EQ(rows, std::string((const char *)rgb + 9, 9) + std::string((const char *)rgb, 9));
}

// ---------------------------------------------------------------------------------------------
// The report's parts

static report_frame frame_of(int number, int64_t calls, int64_t triangles)
{
    report_frame frame = {};
    frame.stats.number = number;
    frame.stats.swapped = true;
    frame.stats.calls = calls;
    frame.stats.primitives[4] = triangles;
    for (int i = 0; i < TOP_ROWS; ++i)
        frame.stats.top_rows[i] = frame.stats.state_rows[i] = -1;
    frame.info = (char *)"";
    return frame;
}

TEST(PlayerReport, PlotOfCallsAndPrimitives)
{
    const report_frame frames[3] = {frame_of(4, 100, 0), frame_of(5, 50, 10), frame_of(6, 0, 5)};
    text_buffer svg = {};
    report_plot(frames, 3, &svg);
    EXPECT_EQ(std::string(svg.data), read_file(expected_file("player_plot.svg")));
    text_free(&svg);
}

TEST(PlayerReport, RowOfAFrame)
{
    master *names = (master *)calloc(1, sizeof(master));
    fill_master(names, 0);
    report_frame frame = frame_of(12, 1234, 7);
    frame.stats.swapped = false;
    frame.stats.primitives[1] = 3;
    frame.stats.state_changes = 2;
    frame.stats.state_rows[0] = ROW_glEnable;
    frame.stats.state_counts[0] = 2;
    frame.stats.top_rows[0] = ROW_glVertex3fv;
    frame.stats.top_counts[0] = 1200;
    frame.stats.top_rows[1] = ROW_glEnable;
    frame.stats.top_counts[1] = 2;
    frame.info = (char *)"- Not called between glBegin/glEnd.\n";
    text_buffer row = {};
    report_frame_row(&frame, names, &row);
    EXPECT_EQ(std::string(row.data), read_file(expected_file("player_frame_row.html")));
    text_free(&row);
    free(names);
}
