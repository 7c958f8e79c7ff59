// The call history read from inside the program: the context list names each GL context of the
// session, picking one shows its whole file with CR LF line ends, Search finds text and says when
// it finds none, Clear starts the current context's file anew, and Save writes the text with the
// history's own line ends.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static HWND open_history_of(HWND control, int row)
{
    menu(control, IDM_CALL_HISTORY);
    HWND select = need_dialog("Select GL Context");
    std::string contexts;
    for (const std::string &name : list_rows(select, IDC_HISTORY_SELECT_LIST))
        contexts += name + "\n";
    check_text("the context list", contexts, "GL context 1\nGL context 2\n");
    select_row(select, IDC_HISTORY_SELECT_LIST, row);
    HWND history = need_dialog("Call History");
    return history;
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    click(control, IDC_BREAK_ON_CALLS);
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glFlush();");

    HWND history = open_history_of(control, 0);
    const std::string first = "glsBeginGLS(1, 0);\r\n" + text_mode(first_sight(128, 32)) +
                              "glsString(\"Info\", \"wglCreateContext\");\r\n"
                              "glClear(GL_COLOR_BUFFER_BIT);\r\n"
                              "glClearColor(0, 0, 1, 1);\r\n"
                              "glsString(\"Info\", \"wglMakeCurrent\");\r\n"
                              "glsEndGLS();\r\n"
                              "glsBeginGLS(1, 0);\r\n"
                              "glColor3fv({1, 0, 0});\r\n";
    check_text("the first context's history", without_visual_info(control_text(history, IDC_HISTORY_TEXT)), first);
    screenshot(history, "call_history");

    // A search starts one behind the selection's end: the first finds the second frame's start,
    // the next one wraps round to the first.
    SetDlgItemTextA(history, IDC_HISTORY_SEARCH_TEXT, "glsBeginGLS");
    click(history, IDC_HISTORY_SEARCH);
    DWORD from = 0, to = 0;
    SendDlgItemMessageA(history, IDC_HISTORY_TEXT, EM_GETSEL, (WPARAM)&from, (LPARAM)&to);
    std::string shown = control_text(history, IDC_HISTORY_TEXT);
    check(from == shown.find("glsBeginGLS", 1) && to == from + 11, "the first search selected %lu to %lu", from, to);
    click(history, IDC_HISTORY_SEARCH);
    SendDlgItemMessageA(history, IDC_HISTORY_TEXT, EM_GETSEL, (WPARAM)&from, (LPARAM)&to);
    check(from == 0, "the second search selected %lu", from);
    SetDlgItemTextA(history, IDC_HISTORY_SEARCH_TEXT, "glEnd");
    click(history, IDC_HISTORY_SEARCH);
    check_text("the search box", control_text(history, IDC_HISTORY_SEARCH_TEXT), "glEnd - not found");

    post_command(history, IDC_HISTORY_SAVE);
    check_text("history.txt", without_visual_info(save_as(temp_path("history.txt"))), text_mode(first));

    // Clear works on the context that is current, the first one: the halted application takes
    // the event at once and has the window read the file again.
    click(history, IDC_HISTORY_CLEAR);
    check(wait_text(history, IDC_HISTORY_TEXT, "glsBeginGLS(1, 0);\r\n", 5000), "after Clear the history shows:\n%s",
          control_text(history, IDC_HISTORY_TEXT).c_str());
    check_layout(history, "Call History");
    click(history, IDC_HISTORY_CLOSE);

    HWND second = open_history_of(control, 1);
    check_text("the second context's history", without_visual_info(control_text(second, IDC_HISTORY_TEXT)),
               "glsBeginGLS(1, 0);\r\n" + text_mode(first_sight(128, 32)) +
               "glClearColor(0, 1, 0, 1);\r\n"
               "glsString(\"Info\", \"wglMakeCurrent\");\r\n"
               "glsEndGLS();\r\n");
    check_layout(need_dialog("Select GL Context"), "Select GL Context of the history");
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(128, 32);
    HGLRC second = wglCreateContext(window.dc);
    glClear(GL_COLOR_BUFFER_BIT);
    glClearColor(0, 0, 1, 1);
    wglMakeCurrent(window.dc, second);
    glClearColor(0, 1, 0, 1);
    wglMakeCurrent(window.dc, window.context);
    glColor3f(1, 0, 0);
    glFlush();
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(second);
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_history", child); }
