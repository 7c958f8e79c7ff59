// A thread that calls GL functions and never a WGL export still reaches the real library: it
// makes the context current through the system's own wglMakeCurrent, then clears and reads back
// through the program's imports, which are quondale.dll's exports.
#include "testbed.h"
#include "panel_continue.h"

static const int side = 16;

typedef BOOL(WINAPI *make_current_function)(HDC, HGLRC);

struct worker_job {
    make_current_function real_make_current;
    HDC dc;
    HGLRC context;
    const char *vendor;
    GLenum error;
    pixel_image image;
};

static DWORD WINAPI worker(void *parameter)
{
    worker_job *job = (worker_job *)parameter;
    if (!job->real_make_current(job->dc, job->context))
        return 1;
    job->vendor = (const char *)glGetString(GL_VENDOR);
    glViewport(0, 0, side, side);
    glClearColor(0, 1, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glReadBuffer(GL_BACK);
    job->image = read_pixels(side, side);
    job->error = glGetError();
    job->real_make_current(nullptr, nullptr);
    return 0;
}

int main(int argc, char **argv)
{
    // Halted at its first call, the program waits for a Continue.
    continue_first_halts();
    check_expected_mode(argc, argv);
    gl_window window;
    if (!open_gl_window(&window, side, side, "gl_thread"))
        return finish();
    wglMakeCurrent(nullptr, nullptr);

    HMODULE real = LoadLibraryA(system_opengl32_path().c_str());
    worker_job job = {};
    job.real_make_current = real ? (make_current_function)(void *)GetProcAddress(real, "wglMakeCurrent") : nullptr;
    if (!job.real_make_current) {
        fail("cannot find wglMakeCurrent in %s", system_opengl32_path().c_str());
        close_gl_window(&window);
        return finish();
    }
    job.dc = window.dc;
    job.context = window.context;
    HANDLE thread = CreateThread(nullptr, 0, worker, &job, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD thread_exit = 1;
    GetExitCodeThread(thread, &thread_exit);
    CloseHandle(thread);

    if (thread_exit != 0) {
        fail("the worker could not make the context current, error %lu", GetLastError());
    } else {
        if (!job.vendor)
            fail("glGetString(GL_VENDOR) on the worker returned null");
        if (job.error != GL_NO_ERROR)
            fail("GL error 0x%04x on the worker", job.error);
        int wrong = 0;
        for (int pixel = 0; pixel < side * side; ++pixel) {
            const unsigned char *rgb = &job.image.rgb[pixel * 3];
            wrong += rgb[0] != 0 || rgb[1] != 255 || rgb[2] != 0;
        }
        if (wrong != 0)
            fail("%d of %d pixels are not the green the worker cleared to; the first is (%d, %d, %d)", wrong,
                 side * side, job.image.rgb[0], job.image.rgb[1], job.image.rgb[2]);
    }
    close_gl_window(&window);
    return finish();
}
