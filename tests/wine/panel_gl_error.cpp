// With "GL warnings/errors" checked, a call that raises a GL error has run and halts behind
// itself; the application's own glGetError afterwards finds no error left.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static GLenum error_seen = 99;

static void scenario()
{
    HWND dialog = control_window();
    expect_halt_at(dialog, "glEnable(GL_CULL_FACE);");
    click(dialog, IDC_GL_ERRORS);
    check(checked(dialog, IDC_GL_ERRORS) == BST_CHECKED, "the GL warnings/errors box did not check");
    click(dialog, IDC_CONTINUE);
    // glEnd outside glBegin: GL_INVALID_OPERATION. It ran, but has not returned.
    expect_halt_at(dialog, "glEnd();");
    check(calls_returned == 1, "at the halt behind glEnd %ld calls returned", calls_returned);
    driver_done();
    click(dialog, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    open_gl_window(16, 16);
    glEnable(GL_CULL_FACE);
    returned();
    glEnd();
    returned();
    error_seen = glGetError();
    returned();
    check(error_seen == GL_NO_ERROR, "the application's glGetError gave 0x%x", error_seen);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_gl_error", child); }
