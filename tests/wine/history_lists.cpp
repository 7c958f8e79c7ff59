// Display lists as they are compiled: every call inside glNewList/glEndList has its text in the
// session's list\calls file, glEndList included and glNewList not; an empty list holds glEndList
// alone. A call of a list that was deleted is a misuse: with "GL warnings/errors" checked the
// program halts behind it, and there the Display List windows show each list's head line and
// calls, and a second context its list in the rows that the contexts share.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    click(control, IDC_GL_ERRORS);
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glCallList(2);");
    check(calls_returned == 1, "at the halt behind glCallList(2), %ld calls returned", calls_returned);

    menu(control, IDM_DISPLAY_LIST);
    HWND contexts = find_dialog("Select GL Context");
    if (!contexts)
        give_up("no Select GL Context window for the lists");
    select_row(contexts, IDC_LIST_CONTEXT_LIST, 0);
    HWND lists = need_dialog("Select Display List");
    std::string names;
    for (const std::string &name : list_rows(lists, IDC_LIST_SELECT_LIST))
        names += name + "\n";
    check_text("the lists", names, "List 1\nList 2\nList 3\n");
    struct shown_list {
        const char *head;
        const char *calls;
    };
    const shown_list expected[3] = {
        {"List 1; contains 2 calls; called 2 times;", "glColor3fv({1, 0, 0});\r\nglEndList();\r\n"},
        {"List 2; deleted; contains 2 calls;", "glRectfv({0, 0}, {1, 1});\r\nglEndList();\r\n"},
        {"List 3; contains 1 call;", "glEndList();\r\n"},
    };
    for (int row = 0; row < 3; ++row) {
        select_row(lists, IDC_LIST_SELECT_LIST, row);
        HWND window = need_dialog("Display List");
        check_text("a list's head line", control_text(window, IDC_LIST_HEAD), expected[row].head);
        check_text("a list's calls", control_text(window, IDC_LIST_TEXT), expected[row].calls);
        if (row == 0) {
            screenshot(window, "display_list");
            post_command(window, IDC_LIST_SAVE);
            check_text("dl.txt", save_as(temp_path("dl.txt")),
                       text_mode(std::string(expected[0].head) + "\n\n" + expected[0].calls));
            check_layout(window, "Display List");
        }
        click(window, IDC_LIST_CLOSE);
    }
    check_layout(lists, "Select Display List");
    click(lists, IDC_LIST_SELECT_CLOSE);
    select_row(contexts, IDC_LIST_CONTEXT_LIST, 1);
    names.clear();
    for (const std::string &name : list_rows(need_dialog("Select Display List"), IDC_LIST_SELECT_LIST))
        names += name + "\n";
    check_text("the second context's list, in the row the first context took", names, "List 1\n");
    check_layout(contexts, "Select GL Context of the lists");
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    write_fact("thread", GetCurrentThreadId());
    start_driver(scenario);
    gl_window window = open_gl_window(128, 32);
    glClear(GL_COLOR_BUFFER_BIT);
    HGLRC other = wglCreateContext(window.dc); // its list takes the first row, then the block moves
    wglMakeCurrent(window.dc, other);
    glNewList(7, GL_COMPILE);
    glEndList();
    wglMakeCurrent(window.dc, window.context);
    // GL may hand out any names (Mesa 25 begins at 32); fixed ones keep the texts fixed.
    glGenLists(1000);
    const GLuint base = 1;
    glNewList(base, GL_COMPILE);
    glColor3f(1, 0, 0);
    glEndList();
    glNewList(base + 1, GL_COMPILE_AND_EXECUTE);
    glRectf(0, 0, 1, 1);
    glEndList();
    glNewList(base + 2, GL_COMPILE);
    glEndList();
    glCallList(base);
    glCallList(base);
    glDeleteLists(base + 1, 1);
    returned();
    glCallList(base + 1); // breaks are off: a halt here can only be behind the call
    glFlush();
    close_gl_window(&window);
    return child_end();
}

// Lists used wrongly: nested, deleted while compiled, ended without a beginning, named near
// 2^31, called through bytes that read as negative. GL refuses some of it; the program ends by
// itself all the same.
static int misuse()
{
    continue_first_halt();
    gl_window window = open_gl_window(128, 32);
    glNewList(5, GL_COMPILE);
    glNewList(6, GL_COMPILE);
    glDeleteLists(5, 1);
    glEndList();
    glEndList();
    glNewList(0x7FFFFFFF, GL_COMPILE);
    glEndList();
    glCallList(0x7FFFFFFF);
    const GLubyte names[8] = {0x80, 0, 0, 0, 0x7F, 0xFF, 0xFF, 0xFF};
    glCallLists(2, GL_4_BYTES, names);
    glDeleteLists(0x7FFFFFF0, 100);
    glCallList(0x7FFFFFFF);
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return argc > 2 && !strcmp(argv[2], "misuse") ? misuse() : child();
    child_run wrong = run_child("lists_misuse", "misuse");
    expect_end(wrong);
    clean_up(wrong);
    child_run run = run_child("lists");
    expect_end(run);
    std::string calls = read_file(session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\list\\calls");
    check_text("list\\calls", calls, on_disk("glEndList();\n"
                                             "glColor3fv({1, 0, 0});\n"
                                             "glEndList();\n"
                                             "glRectfv({0, 0}, {1, 1});\n"
                                             "glEndList();\n"
                                             "glEndList();\n"));
    clean_up(run);
    return finish("history_lists");
}
