// Counting calls and primitives through the hooks, and the texts the count windows and their
// searches make of them.
#include <gtest/gtest.h>

#include "analysis/counters.h"
#include "gen/gl_enums.h"
#include "gen/hooks.h"
#include "panel/count_text.h"
#include "panel/search.h"

#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Counting : testing::Test {
    thread_record record = {};
    std::unique_ptr<per_proc> proc = std::make_unique<per_proc>();
    std::unique_ptr<per_gl> gl = std::make_unique<per_gl>();

    void SetUp() override
    {
        fill_per_proc(proc.get(), 1);
        fill_per_gl(gl.get(), 1, 0x10000);
        record.per_proc = proc.get();
        record.per_gl = gl.get();
    }
    void primitive(GLenum mode, int vertices)
    {
        hook_glBegin(&record, mode);
        for (int i = 0; i < vertices; ++i)
            hook_vertex(&record, nullptr);
        hook_glEnd(&record);
    }
    std::string text()
    {
        char out[WINDOW_TEXT_SIZE];
        prim_count_text(proc.get(), out);
        return out;
    }
};

TEST_F(Counting, PrimitivesByTheirModesRules)
{
    primitive(GL_LINES, 5);          // 2 lines
    primitive(GL_QUADS, 7);          // 1 quad
    primitive(GL_TRIANGLE_STRIP, 2); // too few: nothing
    primitive(GL_TRIANGLE_STRIP, 30);
    primitive(GL_QUAD_STRIP, 3);     // too few
    primitive(GL_QUAD_STRIP, 4);
    primitive(GL_LINE_LOOP, 0);      // counts at any vertex count
    primitive(GL_POLYGON, 0);
    primitive(GL_TRIANGLE_FAN, 3);
    primitive(GL_POINTS, 1000);
    primitive(10, 3);                // no mode of GL: nothing
    hook_draw_arrays(&record, GL_TRIANGLES, 0, 6);
    hook_glDisableClientState(&record, GL_VERTEX_ARRAY);
    hook_draw_arrays(&record, GL_TRIANGLES, 0, 9); // the array off: the stale count of 6 again
    hook_glEnd(&record);                           // without glBegin: the last primitive again
    std::ifstream file(QUONDALE_EXPECTED "/primitive_counts.txt", std::ios::binary);
    EXPECT_EQ(text(), std::string(std::istreambuf_iterator<char>(file), {}));
    EXPECT_EQ(proc->prim_triangle_strip_vertices, 30);
}

TEST_F(Counting, ClearLeavesRectanglesAndVertexTotals)
{
    primitive(GL_LINE_STRIP, 3);
    hook_rect(&record, nullptr, nullptr);
    clear_primitive_counts(proc.get());
    EXPECT_EQ(text().find_first_of("123456789"), std::string::npos) << text();
    EXPECT_EQ(proc->prim_line_strip_vertices, 3);
    EXPECT_EQ(proc->prim_rects, 1);
}

TEST_F(Counting, CallCountRowsOfTheCalledFunctionsOnly)
{
    std::unique_ptr<master> names = std::make_unique<master>();
    fill_master(names.get(), 1);
    for (int i = 0; i < 1234; ++i)
        count_call(&record, ROW_glVertex3fv);
    count_call(&record, ROW_glBindTextureEXT);
    proc->wgl_call_count[ROW_wglMakeCurrent] = 2;
    proc->glu_call_count[ROW_gluPerspective] = 1;
    proc->gdi_call_count[ROW_SwapBuffers] = 5; // the GDI rows are not listed
    std::vector<std::string> rows;
    auto add = [](void *list, const char *row) { ((std::vector<std::string> *)list)->push_back(row); };
    EXPECT_EQ(call_count_rows(proc.get(), names.get(), true, add, &rows), 4);
    EXPECT_EQ(rows, (std::vector<std::string>{"glBindTextureEXT - 1", "glVertex3fv - 1,234", "gluPerspective - 1",
                                              "wglMakeCurrent - 2"}));
    rows.clear();
    EXPECT_EQ(call_count_rows(proc.get(), names.get(), false, add, &rows), 544);
    clear_call_counts(proc.get());
    EXPECT_EQ(call_count_rows(proc.get(), names.get(), true, add, &rows), 0);
    EXPECT_EQ(proc->gdi_call_count[ROW_SwapBuffers], 5);
}

TEST(FormatCount, ThousandsSeparators)
{
    const std::pair<int64_t, const char *> cases[] = {{0, "0"}, {999, "999"}, {1000, "1,000"}, {1000000, "1,000,000"},
        {1234567, "1,234,567"}, {9223372036854775807LL, "9,223,372,036,854,775,807"}};
    char out[COUNT_TEXT_SIZE];
    for (const auto &[value, text] : cases) {
        format_count(value, out);
        EXPECT_STREQ(out, text) << value;
    }
}

const char *row_of(void *list, int row, char *) { return ((const std::vector<const char *> *)list)->at(row); }

TEST(Search, ListWrapsRoundAndIncludesTheSelectedRow)
{
    std::vector<const char *> rows = {"glBegin - 1,000", "glClear - 2", "glEnd - 1,000", "glFlush - 3"};
    // From one behind the selection, then from the first row once more.
    EXPECT_EQ(list_search(4, 0, 0, "1,000", row_of, &rows), 2);
    EXPECT_EQ(list_search(4, 2, 0, "1,000", row_of, &rows), 0);
    EXPECT_EQ(list_search(4, 1, 0, "glClear", row_of, &rows), 1); // only in the selected row
    EXPECT_EQ(list_search(4, -1, 3, "gl", row_of, &rows), 3);     // nothing selected: the top row
    EXPECT_EQ(list_search(4, -1, 0, "glfinish", row_of, &rows), -1);
    char text[SEARCH_TEXT_SIZE + 16];
    not_found_text("glfinish", text);
    EXPECT_STREQ(text, "glfinish - not found");
}

TEST(Search, TextStartsOneBehindTheSelection)
{
    const char *text = "glBegin();\r\nglEnd();\r\nglBegin();\r\n";
    long length = (long)strlen(text);
    EXPECT_EQ(text_search(text, length, 0, "glBegin"), 22); // a fresh text: from 1
    EXPECT_EQ(text_search(text, length, 29, "glBegin"), 0);  // wraps round
    EXPECT_EQ(text_search(text, length, length, "glEnd"), 12);
    EXPECT_EQ(text_search("", 0, 0, "x"), -1);
}

} // namespace
