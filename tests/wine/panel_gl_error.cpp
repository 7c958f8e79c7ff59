// With "GL warnings/errors" checked, a call that raises a GL error has run and halts behind
// itself; the application's own glGetError afterwards finds no error left.
#include "panel_app.h"
#include "panel_driver.h"

static GLenum error_seen = 99;

static void scenario()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    expect_halt_at(dialog, "glEnable(GL_CULL_FACE);");
    panel_click(dialog, PANEL_GL_ERRORS);
    check(panel_check(dialog, PANEL_GL_ERRORS) == BST_CHECKED, "the GL warnings/errors box did not check");
    panel_click(dialog, PANEL_CONTINUE);
    // glEnd outside glBegin: GL_INVALID_OPERATION. It ran, but has not returned.
    expect_halt_at(dialog, "glEnd();");
    check(calls_returned == 1, "at the halt behind glEnd %ld calls returned", calls_returned);
    driver_done();
    panel_click(dialog, PANEL_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    open_panel_gl_window();
    glEnable(GL_CULL_FACE);
    returned();
    glEnd();
    returned();
    error_seen = glGetError();
    returned();
    check(error_seen == GL_NO_ERROR, "the application's glGetError gave 0x%x", error_seen);
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv) { return panel_check_main(argc, argv, "panel_gl_error", child); }
