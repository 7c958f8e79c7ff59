// A thread that calls GL functions and never a WGL export still reaches the real library: it
// makes the context current through the system's own wglMakeCurrent, then clears and reads back
// through the program's imports, which are quondale.dll's exports.
#include "tests/wine/harness.h"

static const int side = 16;

struct worker_job {
    decltype(&wglMakeCurrent) real_make_current;
    HDC dc;
    HGLRC context;
    const char *vendor;
    GLenum error;
    std::vector<uint8_t> rgb;
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
    job->rgb = read_rgb(side, side);
    job->error = glGetError();
    job->real_make_current(nullptr, nullptr);
    return 0;
}

int main(int argc, char **argv)
{
    continue_first_halt(); // halted at its first call, the program waits for a Continue
    check_gl_source(argc, argv);
    gl_window window = open_gl_window(side, side);
    wglMakeCurrent(nullptr, nullptr);

    char path[MAX_PATH];
    GetSystemDirectoryA(path, MAX_PATH);
    lstrcatA(path, "\\opengl32.dll");
    HMODULE real = LoadLibraryA(path);
    worker_job job = {};
    job.real_make_current = real ? (decltype(&wglMakeCurrent))(void *)GetProcAddress(real, "wglMakeCurrent") : nullptr;
    check(job.real_make_current != nullptr, "no wglMakeCurrent in %s", path);
    job.dc = window.dc;
    job.context = window.context;
    DWORD thread_exit = 1;
    if (job.real_make_current) {
        HANDLE thread = CreateThread(nullptr, 0, worker, &job, 0, nullptr);
        WaitForSingleObject(thread, INFINITE);
        GetExitCodeThread(thread, &thread_exit);
        CloseHandle(thread);
    }
    check(thread_exit == 0, "the worker could not make the context current");
    if (thread_exit == 0) {
        check(job.vendor != nullptr, "glGetString(GL_VENDOR) on the worker returned null");
        check(job.error == GL_NO_ERROR, "GL error 0x%04x on the worker", job.error);
        int wrong = 0;
        for (int pixel = 0; pixel < side * side; ++pixel)
            wrong += job.rgb[pixel * 3] != 0 || job.rgb[pixel * 3 + 1] != 255 || job.rgb[pixel * 3 + 2] != 0;
        check(wrong == 0, "%d of %d pixels are not the green the worker cleared to", wrong, side * side);
    }
    close_gl_window(&window);
    return finish("gl_thread");
}
