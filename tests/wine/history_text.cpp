// The call history as a person finds it on disk: one GLS text file per GL context, a
// glsBeginGLS/glsEndGLS pair for each time the context was current, one statement per call with
// its arguments by name, scalar calls folded into their vector form, WGL calls as notes, calls
// made without a context in 0.gls, and every line ending in CR CR LF. The state queries of a
// context's first sight leave glGetError executed alone: the last call stands in no file; the
// program's glGetMapiv does. wglMakeContextCurrentARB makes a context current as wglMakeCurrent.
#include "tests/wine/harness.h"

static int child()
{
    write_fact("thread", GetCurrentThreadId());
    continue_first_halt();

    wglGetCurrentContext();        // starts the session; the first note goes into 0.gls
    glClear(GL_COLOR_BUFFER_BIT);  // no context: recorded in 0.gls all the same

    gl_window window = open_window(128, 16);
    set_pixel_format(&window);
    HGLRC first = wglCreateContext(window.dc);
    HGLRC second = wglCreateContext(window.dc);
    write_fact("first", (uint32_t)(uintptr_t)first);
    write_fact("second", (uint32_t)(uintptr_t)second);

    wglMakeCurrent(window.dc, first);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glStencilMask(0xFF);
    glFogi(GL_FOG_MODE, GL_LINEAR);
    glPixelStorei(GL_UNPACK_SWAP_BYTES, 1);
    glEnable(GL_LIGHTING);
    glBegin(GL_TRIANGLES);
    glColor3ub(1, 2, 3);
    glNormal3d(0.1, 0.25, -1);
    glVertex3f(1.5f, 0, -2);
    glEnd();
    const GLfloat matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.5f, -3, 1e10f, 1};
    glLoadMatrixf(matrix);
    glRectf(0, 0, 1, 1);
    GLint order[2];
    glGetMapiv(GL_MAP1_VERTEX_3, GL_ORDER, order);
    write_fact("order", (uintptr_t)order);

    auto make_current = (BOOL(WINAPI *)(HDC, HDC, HGLRC))(void *)wglGetProcAddress("wglMakeContextCurrentARB");
    check(make_current && make_current(window.dc, window.dc, second), "wglMakeContextCurrentARB failed");
    glFlush();

    wglMakeCurrent(window.dc, first); // back again: the file goes on with a second frame
    glFinish();
    SwapBuffers(window.dc);
    wglMakeCurrent(nullptr, nullptr);
    glGetError();
    return child_end(); // the application ends by itself
}

static std::string history_file(const child_run &run, const char *context)
{
    std::string dir = session_directory(run.temp, (DWORD)fact(run, "thread"));
    std::string handle = context ? std::to_string((int)(uint32_t)fact(run, context)) : "0";
    char order[32];
    snprintf(order, sizeof order, "0x%llX", fact(run, "order"));
    return substitute(without_visual_info(read_file(dir + "\\history\\" + handle + ".gls")), {{order, "ORDER"}});
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child("history");
    expect_end(run);

    check_text("0.gls", history_file(run, nullptr), on_disk(expected_file("history_0.gls")));
    check_text("the first context's file", history_file(run, "first"), on_disk(expected_file("history_first.gls")));
    check_text("the second context's file", history_file(run, "second"), on_disk(expected_file("history_second.gls")));
    clean_up(run);
    return finish("history_text");
}
