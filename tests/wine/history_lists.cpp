// Display lists as they are compiled: every call inside glNewList/glEndList has its text in the
// session's list\calls file, glEndList included and glNewList not; an empty list holds glEndList
// alone. A call of a list that was deleted is a misuse: with "GL warnings/errors" checked the
// program halts behind it.
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
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    write_fact("thread", GetCurrentThreadId());
    start_driver(scenario);
    gl_window window = open_gl_window(128, 32);
    glClear(GL_COLOR_BUFFER_BIT);
    GLuint base = glGenLists(3);
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

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child("lists");
    expect_end(run);
    std::string calls = read_file(session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\list\\calls");
    check_text("list\\calls", calls, on_disk("glColor3fv({1, 0, 0});\n"
                                             "glEndList();\n"
                                             "glRectfv({0, 0}, {1, 1});\n"
                                             "glEndList();\n"
                                             "glEndList();\n"));
    clean_up(run);
    return finish("history_lists");
}
