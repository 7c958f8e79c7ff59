// The line formatter: history lines with their indent and line ends, shortened data arrays, and
// the text of the next call.
#include <gtest/gtest.h>

#include "recording/line_format.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// Runs pieces through the history formatter into a memory file and returns what it wrote.
std::string history(std::initializer_list<std::string> pieces, int depth = 0, bool limit = false)
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

TEST(HistoryLines, StatementsGetCarriageReturnLineEnds)
{
    EXPECT_EQ(history({"glsBeginGLS(1, 0);\n", "glClear(GL_COLOR_BUFFER_BIT);\n"}),
              "glsBeginGLS(1, 0);\r\nglClear(GL_COLOR_BUFFER_BIT);\r\n");
    // A piece without a line feed continues the line; a rest behind the last line feed ends one.
    EXPECT_EQ(history({"glBegin(", "GL_TRIANGLES);\n"}), "glBegin(GL_TRIANGLES);\r\n");
    EXPECT_EQ(history({"a\nb"}), "a\r\nb\r\n");
    EXPECT_EQ(history({"glColor4fv({\n    1, 2, 3, 4, 5\n});\n"}),
              "glColor4fv({\r\n    1, 2, 3, 4, 5\r\n});\r\n");
    // Line feeds in the last eight bytes, and a piece of one byte more than a word.
    EXPECT_EQ(history({"glEnd();\nx;\n", "glFlush\n"}), "glEnd();\r\nx;\r\nglFlush\r\n");
    EXPECT_EQ(history({"glFlush;\n\n"}), "glFlush;\r\n\r\n");
}

TEST(HistoryLines, CallsInsideGluAreIndentedByDepth)
{
    EXPECT_EQ(history({"glBegin(GL_QUADS);\n"}, 1), "  glBegin(GL_QUADS);\r\n");
    EXPECT_EQ(history({"\n"}, 1), "  \r\n");
    EXPECT_EQ(history({"a\nb"}, 2), "    a\r\n    b"); // an indented rest gets no line end
    EXPECT_EQ(history({"x"}, 1), "  x");
    EXPECT_EQ(history({"x;\n"}, -1), "x;\r\n");
}

TEST(HistoryLines, LongArraysAreShortenedOnlyWhenLimited)
{
    std::string seventeen = "glFoo({" + values(17) + "});\n";
    EXPECT_EQ(history({seventeen}, 0, true), "glFoo({" + values(16) + ", ...});\r\n");
    EXPECT_EQ(history({seventeen}, 0, false), "glFoo({" + values(17) + "});\r\n");
    std::string sixteen = "glFoo({" + values(16) + "});\n";
    EXPECT_EQ(history({sixteen}, 0, true), "glFoo({" + values(16) + "});\r\n");
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

TEST(LastCall, LongPiecesKeepTheirHead)
{
    std::string exact(LONG_PIECE - 1, 'x');
    exact += '\n';
    EXPECT_EQ(last_call(exact), std::string(LONG_PIECE - 1, 'x'));
    std::string longer(LONG_PIECE, 'y');
    longer += '\n';
    EXPECT_EQ(last_call(longer), std::string(LONG_PIECE_KEPT, 'y') + "...");

    // With lines: the first 9984 source characters, each line ended by CR LF, then the points.
    std::string lines;
    while (lines.size() <= LONG_PIECE)
        lines += std::string(99, 'z') + "\n";
    std::string expected;
    for (int i = 0; i < LONG_PIECE_KEPT; ++i)
        expected += lines[i] == '\n' ? std::string("\r\n") : std::string(1, lines[i]);
    EXPECT_EQ(last_call(lines), expected + "...");
}

TEST(LastCall, NeverRunsPastItsField)
{
    // Many short lines would need more than the field: the text stops at the field's end.
    std::string lines;
    while (lines.size() <= LONG_PIECE)
        lines += "\n";
    std::string text = last_call(lines);
    EXPECT_LT(text.size(), (size_t)LAST_CALL_TEXT_SIZE);
    EXPECT_EQ(text.substr(text.size() - 3), "...");
}

} // namespace
