// The WGL wrappers hand the application the real library's results unchanged, and count each
// call in its own row of wgl_call_count.
#include "session_test.h"
#include "panel_continue.h"

// The real opengl32.dll of the system directory, as the session binds it.
struct real_wgl {
    int(WINAPI *choose_pixel_format)(HDC, const PIXELFORMATDESCRIPTOR *);
    int(WINAPI *describe_pixel_format)(HDC, int, UINT, PIXELFORMATDESCRIPTOR *);
    int(WINAPI *get_pixel_format)(HDC);
    HGLRC(WINAPI *get_current_context)();
    HDC(WINAPI *get_current_dc)();
    PROC(WINAPI *get_proc_address)(LPCSTR);
};

static real_wgl bind_real(HMODULE module)
{
    real_wgl real;
    real.choose_pixel_format = (decltype(real.choose_pixel_format))(void *)GetProcAddress(module, "wglChoosePixelFormat");
    real.describe_pixel_format =
        (decltype(real.describe_pixel_format))(void *)GetProcAddress(module, "wglDescribePixelFormat");
    real.get_pixel_format = (decltype(real.get_pixel_format))(void *)GetProcAddress(module, "wglGetPixelFormat");
    real.get_current_context =
        (decltype(real.get_current_context))(void *)GetProcAddress(module, "wglGetCurrentContext");
    real.get_current_dc = (decltype(real.get_current_dc))(void *)GetProcAddress(module, "wglGetCurrentDC");
    real.get_proc_address = (decltype(real.get_proc_address))(void *)GetProcAddress(module, "wglGetProcAddress");
    return real;
}

static int child()
{
    // The swap halts, as the first debugged call would, and waits for a Continue.
    continue_first_halts();
    write_fact("thread", GetCurrentThreadId());
    char path[MAX_PATH];
    GetSystemDirectoryA(path, MAX_PATH);
    lstrcatA(path, "\\opengl32.dll");
    HMODULE module = LoadLibraryA(path);
    check(module && module != GetModuleHandleA("quondale.dll"), "no real opengl32.dll");
    check((void *)GetProcAddress(module, "wglMakeCurrent") != (void *)&wglMakeCurrent,
          "the system's opengl32.dll is the stand-in");
    real_wgl real = bind_real(module);

    gl_window window = make_gl_window();
    PIXELFORMATDESCRIPTOR format = wanted_format();
    int pixel_format = wglChoosePixelFormat(window.dc, &format);
    check(pixel_format > 0 && pixel_format == real.choose_pixel_format(window.dc, &format),
          "wglChoosePixelFormat gave %d", pixel_format);

    PIXELFORMATDESCRIPTOR ours = {}, theirs = {};
    int count = wglDescribePixelFormat(window.dc, pixel_format, sizeof ours, &ours);
    check(count > 0 && count == real.describe_pixel_format(window.dc, pixel_format, sizeof theirs, &theirs),
          "wglDescribePixelFormat gave %d", count);
    check(memcmp(&ours, &theirs, sizeof ours) == 0, "the pixel format is described otherwise");

    check(wglSetPixelFormat(window.dc, pixel_format, &format), "wglSetPixelFormat failed");
    int got = wglGetPixelFormat(window.dc);
    check(got == pixel_format && got == real.get_pixel_format(window.dc), "wglGetPixelFormat gave %d", got);

    HGLRC context = wglCreateContext(window.dc);
    check(context != nullptr, "no context");
    check(wglMakeCurrent(window.dc, context) == TRUE, "wglMakeCurrent failed");
    HGLRC current = wglGetCurrentContext();
    check(current == context && real.get_current_context() == context, "current context %p, made %p",
          (void *)current, (void *)context);
    check(wglGetCurrentDC() == window.dc && real.get_current_dc() == window.dc, "current DC");

    PROC ours_proc = wglGetProcAddress("glBlendColor");
    check(ours_proc != nullptr && ours_proc == real.get_proc_address("glBlendColor"),
          "wglGetProcAddress gave %p", (void *)ours_proc);
    PROC missing = wglGetProcAddress("glNoSuchFunction");
    check(missing == nullptr, "wglGetProcAddress found a missing function");

    check(wglSwapBuffers(window.dc) == TRUE, "wglSwapBuffers failed");
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child(fresh_temp("passthrough"));
    check(!run.timed_out, "child hung");
    check(run.exit_code == 0, "child exit code %lu", (unsigned long)run.exit_code);
    check(run.errors.empty(), "child wrote to stderr: %s", run.errors.c_str());

    std::vector<std::string> procs = dump_lines(run.dump, "per_proc ");
    check(procs.size() == 1, "%d per_proc records\n%s", (int)procs.size(), run.dump.c_str());
    if (procs.size() == 1) {
        // In WGL catalogue order: each call the child made through the stand-in, once each.
        const long long expected[24] = {
            1, // wglChoosePixelFormat
            1, // wglDescribePixelFormat
            1, // wglGetPixelFormat
            1, // wglSetPixelFormat
            1, // wglSwapBuffers
            0, 1, 0, 0, 0,
            1, // wglGetCurrentContext
            1, // wglGetCurrentDC
            0, 0,
            2, // wglGetProcAddress
            1, // wglMakeCurrent
            0, 0, 0, 0, 0, 0, 0, 0,
        };
        for (int row = 0; row < 24; ++row)
            check(count_at(procs[0], "wgl", row) == expected[row], "wgl row %d counted %lld, expected %lld", row,
                  count_at(procs[0], "wgl", row), expected[row]);
        for (int row = 0; row < 5; ++row)
            check(count_at(procs[0], "gdi", row) == 0, "gdi row %d counted", row);
    }
    remove_tree(run.temp);
    return finish("session_passthrough");
}
