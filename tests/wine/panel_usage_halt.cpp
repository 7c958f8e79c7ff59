// With "GL warnings/errors" checked, a misused call has run and halts behind itself, as a GL
// error does; a well-used one goes by. A misused call skipped at a halt ahead of it is neither
// made nor checked: the application halts next ahead of the call behind it.
#include "tests/wine/harness.h"

#include "panel/resource.h"

// Waits for the halt at call with count calls returned, and presses button.
static void press_at(HWND dialog, const char *call, LONG count, int button)
{
    expect_halt_at(dialog, call);
    check(calls_returned == count, "at %s: %ld calls returned, expected %ld", call, calls_returned, count);
    click(dialog, button);
}

static void scenario()
{
    HWND dialog = control_window();
    expect_halt_at(dialog, "glEnable(GL_CULL_FACE);");
    click(dialog, IDC_GL_ERRORS);
    click(dialog, IDC_CONTINUE);
    press_at(dialog, "glVertex3fv({1, 2, 3});", 1, IDC_CONTINUE);           // behind the vertex
    press_at(dialog, "glBlendFunc(GL_ONE, GL_DST_ALPHA);", 3, IDC_STEP);    // behind the blend
    press_at(dialog, "glVertex3fv({4, 5, 6});", 4, IDC_SKIP);               // ahead of the vertex
    expect_halt_at(dialog, "glFlush();");
    check(calls_returned == 5, "at glFlush: %ld calls returned, expected 5", calls_returned);
    driver_done();
    click(dialog, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    open_gl_window(16, 16, 0); // no alpha planes
    glEnable(GL_CULL_FACE);
    returned();
    glVertex3f(1, 2, 3); // outside glBegin/glEnd
    returned();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    returned();
    glBlendFunc(GL_ONE, GL_DST_ALPHA);
    returned();
    glVertex3f(4, 5, 6);
    returned();
    glFlush();
    returned();
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_usage_halt", child); }
