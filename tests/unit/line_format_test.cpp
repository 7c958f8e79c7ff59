// The line formatter: history lines with their indent and line ends, shortened data arrays, and
// the text of the next call.
#include <gtest/gtest.h>

#include "recording/line_format.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// Runs pieces through the history formatter into a memory file and returns what it wrote.
std::string history(const std::vector<std::string> &pieces, int depth, bool limit)
{
    char *buffer = nullptr;
    size_t size = 0;
    static history_sink sink;
    history_sink_start(&sink, open_memstream(&buffer, &size));
    for (const std::string &piece : pieces)
        history_format(&sink, (int)piece.size(), piece.data(), depth, limit);
    history_sink_drain(&sink);
    fclose(sink.file);
    std::string text(buffer, size);
    free(buffer);
    return text;
}

std::string last_call(const std::string &piece)
{
    static char field[LAST_CALL_TEXT_SIZE];
    last_call_format((int)piece.size(), piece.data(), field);
    return field;
}

std::string values(int count, int from = 1)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i ? ", " : "") + std::to_string(from + i);
    return text;
}

TEST(HistoryLines, CarriageReturnLineEndsIndentsAndShortArrays)
{
    std::string sixteen = "glFoo({" + values(16) + "});\n", seventeen = "glFoo({" + values(17) + "});\n";
    const struct {
        std::vector<std::string> pieces;
        int depth;
        bool limit;
        std::string expected;
    } cases[] = {
        {{"glsBeginGLS(1, 0);\n", "glClear(GL_COLOR_BUFFER_BIT);\n"}, 0, false,
         "glsBeginGLS(1, 0);\r\nglClear(GL_COLOR_BUFFER_BIT);\r\n"},
        // A piece without a line feed continues the line; a rest behind the last line feed ends one.
        {{"glBegin(", "GL_TRIANGLES);\n"}, 0, false, "glBegin(GL_TRIANGLES);\r\n"},
        {{"a\nb"}, 0, false, "a\r\nb\r\n"},
        {{"glColor4fv({\n    1, 2, 3, 4, 5\n});\n"}, 0, false, "glColor4fv({\r\n    1, 2, 3, 4, 5\r\n});\r\n"},
        // Line feeds in the last eight bytes, and a piece of one byte more than a word.
        {{"glEnd();\nx;\n", "glFlush\n"}, 0, false, "glEnd();\r\nx;\r\nglFlush\r\n"},
        {{"glFlush;\n\n"}, 0, false, "glFlush;\r\n\r\n"},
        // Calls inside GLU are indented by their depth; an indented rest gets no line end.
        {{"glBegin(GL_QUADS);\n"}, 1, false, "  glBegin(GL_QUADS);\r\n"},
        {{"\n"}, 1, false, "  \r\n"},
        {{"a\nb"}, 2, false, "    a\r\n    b"},
        {{"x"}, 1, false, "  x"},
        {{"x;\n"}, -1, false, "x;\r\n"},
        // Long arrays are shortened only when limited.
        {{seventeen}, 0, true, "glFoo({" + values(16) + ", ...});\r\n"},
        {{seventeen}, 0, false, "glFoo({" + values(17) + "});\r\n"},
        {{sixteen}, 0, true, "glFoo({" + values(16) + "});\r\n"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(history(c.pieces, c.depth, c.limit), c.expected) << c.pieces[0] << " at depth " << c.depth;
}

TEST(ShortenData, FollowsTheFirstBraceAndItsCommas)
{
    char out[SHORTEN_BUFFER];
    // Commas behind the closing brace count, and the rest starts at the next closing brace.
    std::string spill = "glFoo({" + values(15) + "}, 7, {8, 9});\n";
    ASSERT_TRUE(shorten_data((int)spill.size(), spill.data(), out));
    EXPECT_STREQ(out, ("glFoo({" + values(15) + "}, 7, ...});\n").c_str());
    // No closing brace behind the sixteenth comma: not shortened.
    std::string open = "glFoo({" + values(20) + ");\n";
    EXPECT_FALSE(shorten_data((int)open.size(), open.data(), out));
    std::string no_brace = "glClear(GL_COLOR_BUFFER_BIT);\n";
    EXPECT_FALSE(shorten_data((int)no_brace.size(), no_brace.data(), out));
    // Text too long for the buffer before the sixteenth comma is left whole rather than overrun.
    std::string huge = "glsString(\"" + std::string(2000, 'x') + "\", {" + values(20) + "});\n";
    EXPECT_FALSE(shorten_data((int)huge.size(), huge.data(), out));
}

TEST(LastCall, DropsTheCommandLineEnd)
{
    EXPECT_EQ(last_call("glClear(GL_COLOR_BUFFER_BIT);\n"), "glClear(GL_COLOR_BUFFER_BIT);");
    EXPECT_EQ(last_call("glLoadMatrixf({\n    1, 0,\n    0, 1\n});\n"),
              "glLoadMatrixf({\r\n    1, 0,\r\n    0, 1\r\n});");
    // A rest without a line feed loses its last two characters by the same cut.
    EXPECT_EQ(last_call("a\nbcd"), "a\r\nb");
}

TEST(LastCall, LongPiecesKeepTheirHeadWithinTheField)
{
    std::string exact(LONG_PIECE - 1, 'x');
    EXPECT_EQ(last_call(exact + '\n'), exact);
    EXPECT_EQ(last_call(std::string(LONG_PIECE, 'y') + '\n'), std::string(LONG_PIECE_KEPT, 'y') + "...");

    // With lines: the first 9984 source characters, each line ended by CR LF, then the points.
    std::string lines, expected;
    while (lines.size() <= LONG_PIECE)
        lines += std::string(99, 'z') + "\n";
    for (int i = 0; i < LONG_PIECE_KEPT; ++i)
        expected += lines[i] == '\n' ? std::string("\r\n") : std::string(1, lines[i]);
    EXPECT_EQ(last_call(lines), expected + "...");

    // Many short lines would need more than the field: the text stops at the field's end.
    std::string text = last_call(std::string(LONG_PIECE + 1, '\n'));
    EXPECT_LT(text.size(), (size_t)LAST_CALL_TEXT_SIZE);
    EXPECT_EQ(text.substr(text.size() - 3), "...");
}

} // namespace
