// The counts of calls and primitives as a person reads them at a halt: the Primitive Count
// window's thirteen lines for a known mix of primitives, the Call Count window's rows with the
// "Non-zero calls" filter on and off, its search, and both Clear and Save buttons, the saved files
// being the same text with the history's line ends.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static void check_primitive_count(HWND control)
{
    menu(control, IDM_PRIMITIVE_COUNT);
    HWND window = need_dialog("Primitive Count");
    // GL_LINES with 5 vertices, GL_QUADS with 7, GL_TRIANGLE_STRIP with 2 (too few), GL_LINE_LOOP
    // with none, glDrawArrays(GL_TRIANGLES, 0, 6).
    const std::string expected = text_mode(expected_file("primitive_count.txt"));
    check_text("the Primitive Count window", control_text(window, IDC_PRIM_COUNT_TEXT), expected);
    screenshot(window, "primitive_count");
    post_command(window, IDC_PRIM_COUNT_SAVE);
    check_text("primcount.txt", save_as(temp_path("primcount.txt")), text_mode(expected));
    click(window, IDC_PRIM_COUNT_CLEAR);
    check_text("the Primitive Count window after Clear", control_text(window, IDC_PRIM_COUNT_TEXT),
               text_mode(expected_file("primitive_count_clear.txt")));
    check_layout(window, "Primitive Count");
    click(window, IDC_PRIM_COUNT_CLOSE);
}

static std::string rows_text(HWND window)
{
    std::string text;
    for (const std::string &row : list_rows(window, IDC_CALL_COUNT_LIST))
        text += row + "\n";
    return text;
}

static void check_call_count(HWND control)
{
    menu(control, IDM_CALL_COUNT);
    HWND window = need_dialog("Call Count");
    // In the list's order, the rows of every function called: scalar forms under their vector
    // form, glBindTexture and glDrawArrays on their EXT rows, Wine's pixel-format calls on the
    // WGL rows; glFlush, where the program stands, not yet.
    const std::string called = expected_file("call_count.txt");
    check_text("the Call Count rows", rows_text(window), called);
    screenshot(window, "call_count");

    SetDlgItemTextA(window, IDC_CALL_COUNT_TEXT, "1,234");
    click(window, IDC_CALL_COUNT_SEARCH);
    int selected = (int)SendDlgItemMessageA(window, IDC_CALL_COUNT_LIST, LB_GETCURSEL, 0, 0);
    check_text("the row that \"1,234\" finds", list_row(window, IDC_CALL_COUNT_LIST, selected), "glColor3fv - 1,234");
    SetDlgItemTextA(window, IDC_CALL_COUNT_TEXT, "glFinish");
    click(window, IDC_CALL_COUNT_SEARCH);
    check_text("the search box", control_text(window, IDC_CALL_COUNT_TEXT), "glFinish - not found");

    post_command(window, IDC_CALL_COUNT_SAVE);
    check_text("callcount.txt", save_as(temp_path("callcount.txt")), text_mode(called));
    menu(window, IDM_NON_ZERO_CALLS);
    int all = (int)SendDlgItemMessageA(window, IDC_CALL_COUNT_LIST, LB_GETCOUNT, 0, 0);
    check(all == 544, "%d rows with the filter off, expected 544", all);
    click(window, IDC_CALL_COUNT_CLEAR);
    menu(window, IDM_NON_ZERO_CALLS);
    check_text("the rows after Clear", rows_text(window), "");
    check_layout(window, "Call Count");
    click(window, IDC_CALL_COUNT_CLOSE);
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    click(control, IDC_BREAK_ON_CALLS); // the break set starts with glFlush in it
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glFlush();");
    check_primitive_count(control);
    check_call_count(control);
    driver_done();
    click(control, IDC_CONTINUE);
}

static void vertices(GLenum mode, int count)
{
    glBegin(mode);
    for (int i = 0; i < count; ++i)
        glVertex3f((float)i, 0, 0);
    glEnd();
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(32, 32);
    glClear(GL_COLOR_BUFFER_BIT);
    for (int i = 0; i < 1234; ++i)
        glColor3f(1, 0, 0);
    vertices(GL_LINES, 5);
    vertices(GL_QUADS, 7);
    vertices(GL_TRIANGLE_STRIP, 2);
    vertices(GL_LINE_LOOP, 0);
    static const GLfloat triangles[12] = {0, 0, 1, 0, 0, 1, 1, 1, 0, 1, 1, 0};
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(2, GL_FLOAT, 0, triangles);
    glDrawArrays(GL_TRIANGLES, 0, 6);
    glBindTexture(GL_TEXTURE_2D, 0);
    glFlush();
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_counts", child); }
