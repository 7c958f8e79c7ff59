// Faults of the program that the debugger must live through, each answered as the system's GL
// answers it: GL (lists too) with no context, the current context deleted, one context made
// current on two threads, get results that end at a page the program may not touch, a GL thread
// that ends with its panel up, and the window of a halted thread destroyed by its owner.
#include "tests/wine/harness.h"

#include "panel/resource.h"

enum : int { SIDE = 16 };

static void gl_without_context(const char *when)
{
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glBegin(GL_TRIANGLES);
    glVertex2f(0, 0);
    glEnd();
    check(glGetString(GL_VENDOR) == nullptr, "%s: glGetString gave a text with no context", when);
    check(glGenLists(2) == 0, "%s: glGenLists gave names with no context", when);
    glNewList(1, GL_COMPILE);
    glEndList();
    glCallList(1);
}

// Green cleared and read back: the context works.
static bool draws(const char *when)
{
    glViewport(0, 0, SIDE, SIDE);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glReadBuffer(GL_BACK);
    std::vector<uint8_t> rgb = read_rgb(SIDE, SIDE);
    int wrong = 0;
    for (size_t i = 0; i + 2 < rgb.size(); i += 3)
        wrong += rgb[i] != 0 || rgb[i + 1] != 255 || rgb[i + 2] != 0;
    check(wrong == 0, "%s: %d pixels are not the green just cleared", when, wrong);
    return wrong == 0;
}

struct two_threads_job {
    gl_window *window;
    BOOL made_current;
    DWORD error;
};

static DWORD WINAPI make_current_too(void *parameter)
{
    two_threads_job *job = (two_threads_job *)parameter;
    job->made_current = wglMakeCurrent(job->window->dc, job->window->context);
    job->error = GetLastError();
    gl_without_context("second thread");
    return 0;
}

// Results whose last byte is the last one before a page without access.
static void results_at_a_page_end()
{
    SYSTEM_INFO system;
    GetSystemInfo(&system);
    uint8_t *pages = (uint8_t *)VirtualAlloc(nullptr, 2 * system.dwPageSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    DWORD old;
    VirtualProtect(pages + system.dwPageSize, system.dwPageSize, PAGE_NOACCESS, &old);
    uint8_t *end = pages + system.dwPageSize;
    GLint *viewport = (GLint *)(end - 4 * sizeof(GLint));
    glGetIntegerv(GL_VIEWPORT, viewport);
    check(viewport[2] == SIDE && viewport[3] == SIDE, "GL_VIEWPORT read as %d x %d", viewport[2], viewport[3]);
    GLfloat *matrix = (GLfloat *)(end - 16 * sizeof(GLfloat));
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
    check(matrix[0] == 1 && matrix[15] == 1 && matrix[1] == 0, "GL_MODELVIEW_MATRIX is not the identity");
    GLboolean *mask = (GLboolean *)(end - 4);
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    check(mask[0] == GL_TRUE && mask[3] == GL_TRUE, "GL_COLOR_WRITEMASK read wrong");
    uint8_t *pixel = end - 4;
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    check(pixel[1] == 255, "the pixel read at the page's end is not green");
    VirtualFree(pages, 0, MEM_RELEASE);
}

static DWORD WINAPI draw_and_leave(void *)
{
    open_gl_window(SIDE, SIDE);
    draws("a thread that ends");
    // It ends with its context current, its window up and its panel shown.
    return 0;
}

struct halted_job {
    gl_window window;
    HANDLE ready;
    volatile LONG swaps;
};

// Draws into a window of the main thread until that window is gone, and some frames after.
static DWORD WINAPI draw_into_main_window(void *parameter)
{
    halted_job *job = (halted_job *)parameter;
    wglMakeCurrent(job->window.dc, job->window.context);
    SetEvent(job->ready);
    for (int frame = 0; frame < 40; ++frame) {
        glClear(GL_COLOR_BUFFER_BIT);
        SwapBuffers(job->window.dc);
        InterlockedIncrement(&job->swaps);
        Sleep(5);
    }
    wglMakeCurrent(nullptr, nullptr);
    return 0;
}

int main(int argc, char **argv)
{
    check_gl_source(argc, argv);
    start_continuing();
    gl_without_context("before any context");

    gl_window window = open_gl_window(SIDE, SIDE);
    draws("first context");
    check(wglDeleteContext(window.context), "the current context could not be deleted");
    check(wglGetCurrentContext() == nullptr, "a deleted context is still current");
    gl_without_context("after the current context was deleted");
    window.context = wglCreateContext(window.dc);
    check(wglMakeCurrent(window.dc, window.context), "no context after the deleted one");
    draws("second context");

    two_threads_job job = {&window, TRUE, 0};
    HANDLE thread = CreateThread(nullptr, 0, make_current_too, &job, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    check(!job.made_current && job.error == ERROR_BUSY,
          "a context current on the main thread was made current on another (result %d, error %lu)",
          job.made_current, job.error);
    draws("after the second thread's attempt");
    results_at_a_page_end();

    thread = CreateThread(nullptr, 0, draw_and_leave, nullptr, 0, nullptr);
    while (MsgWaitForMultipleObjects(1, &thread, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0)
        pump_messages();
    CloseHandle(thread);
    draws("after a GL thread ended");

    // The window is destroyed by its owner while the thread that draws in it stands halted at
    // its first call; the thread then draws on into the window that is gone.
    stop_continuing();
    halted_job halted = {};
    halted.window = open_window(SIDE, SIDE);
    set_pixel_format(&halted.window);
    halted.window.context = wglCreateContext(halted.window.dc);
    halted.ready = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    DWORD drawer_id = 0;
    thread = CreateThread(nullptr, 0, draw_into_main_window, &halted, 0, &drawer_id);
    WaitForSingleObject(halted.ready, INFINITE);
    HWND drawer_panel = debugger_loaded() ? find_dialog("quondale", drawer_id) : nullptr;
    check(!debugger_loaded() || (drawer_panel && wait_text(drawer_panel, IDC_STATUS, "Halted")),
          "the drawing thread did not halt");
    DestroyWindow(halted.window.window);
    if (drawer_panel)
        click(drawer_panel, IDC_CONTINUE);
    while (MsgWaitForMultipleObjects(1, &thread, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0)
        pump_messages();
    CloseHandle(thread);
    check(halted.swaps == 40, "the drawing thread swapped %ld of 40 frames", halted.swaps);
    draws("after the other window went");

    wglMakeCurrent(nullptr, nullptr);
    gl_without_context("after the context was released");
    wglDeleteContext(window.context);
    return finish("app_faults");
}
