// What a session is made of, as quondale's record dump shows it at the application's own exit:
// a thread's first WGL call starts one session with its directory and records, a GL-only thread
// gets none, a second WGL thread gets its own; wglMakeCurrent makes a per_gl for each new
// context, finds an earlier one again, and falls back to the null record when it fails; the WGL
// wrappers count each call and hand back the real library's results unchanged.
#include "tests/wine/harness.h"

#include <cstring>

static void run_thread(LPTHREAD_START_ROUTINE body)
{
    HANDLE thread = CreateThread(nullptr, 0, body, nullptr, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

static DWORD WINAPI wgl_thread(void *)
{
    write_fact("second_thread", GetCurrentThreadId());
    wglGetCurrentContext();
    return 0;
}

static DWORD WINAPI gl_only_thread(void *)
{
    write_fact("gl_thread", GetCurrentThreadId());
    glGetError();
    glClear(GL_COLOR_BUFFER_BIT);
    return 0;
}

static int threads()
{
    glGetError(); // a GL call starts nothing
    wglGetCurrentContext();
    wglGetCurrentContext();
    run_thread(gl_only_thread);
    run_thread(wgl_thread);
    return child_end();
}

static int contexts()
{
    gl_window window = open_window(16, 16);
    set_pixel_format(&window);
    HGLRC first = wglCreateContext(window.dc), second = wglCreateContext(window.dc);
    write_fact("first", (uint32_t)(uintptr_t)first);
    write_fact("second", (uint32_t)(uintptr_t)second);
    check(wglMakeCurrent(window.dc, first) && wglMakeCurrent(window.dc, second) && wglMakeCurrent(window.dc, first),
          "the contexts were not made current");
    // A handle that no context ever had: the real call fails.
    check(!wglMakeCurrent(window.dc, (HGLRC)(uintptr_t)0x7ff0), "wglMakeCurrent of a made-up handle succeeded");
    return child_end();
}

// The real opengl32.dll's answers, asked directly, against what the application gets through
// quondale.
static int passthrough()
{
    continue_first_halt(); // the swap halts as the first debugged call would
    char path[MAX_PATH];
    GetSystemDirectoryA(path, MAX_PATH);
    lstrcatA(path, "\\opengl32.dll");
    HMODULE real = LoadLibraryA(path);
    check(real && real != GetModuleHandleA("quondale.dll"), "no real opengl32.dll");
    auto real_choose = (decltype(&wglChoosePixelFormat))(void *)GetProcAddress(real, "wglChoosePixelFormat");
    auto real_describe = (decltype(&wglDescribePixelFormat))(void *)GetProcAddress(real, "wglDescribePixelFormat");
    auto real_get_format = (decltype(&wglGetPixelFormat))(void *)GetProcAddress(real, "wglGetPixelFormat");
    auto real_current = (decltype(&wglGetCurrentContext))(void *)GetProcAddress(real, "wglGetCurrentContext");
    auto real_proc = (decltype(&wglGetProcAddress))(void *)GetProcAddress(real, "wglGetProcAddress");

    gl_window window = open_window(16, 16);
    PIXELFORMATDESCRIPTOR wanted = {};
    wanted.nSize = sizeof wanted;
    wanted.nVersion = 1;
    wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    wanted.cColorBits = 24;
    int format = wglChoosePixelFormat(window.dc, &wanted);
    check(format > 0 && format == real_choose(window.dc, &wanted), "wglChoosePixelFormat gave %d", format);
    PIXELFORMATDESCRIPTOR ours = {}, theirs = {};
    int count = wglDescribePixelFormat(window.dc, format, sizeof ours, &ours);
    check(count > 0 && count == real_describe(window.dc, format, sizeof theirs, &theirs) &&
              memcmp(&ours, &theirs, sizeof ours) == 0,
          "wglDescribePixelFormat described the format otherwise");
    int got = wglGetPixelFormat(window.dc);
    check(got == real_get_format(window.dc), "wglGetPixelFormat gave %d", got);
    check(wglSetPixelFormat(window.dc, format, &wanted), "wglSetPixelFormat failed");
    HGLRC context = wglCreateContext(window.dc);
    write_fact("first", (uint32_t)(uintptr_t)context);
    check(wglMakeCurrent(window.dc, context) == TRUE, "wglMakeCurrent failed");
    check(wglGetCurrentContext() == context && real_current() == context, "current context");
    check(wglGetCurrentDC() == window.dc, "current DC");
    PROC proc = wglGetProcAddress("glBlendColor");
    check(proc && proc == real_proc("glBlendColor"), "wglGetProcAddress gave %p", (void *)proc);
    check(wglGetProcAddress("glNoSuchFunction") == nullptr, "wglGetProcAddress found a missing function");
    check(wglSwapBuffers(window.dc) == TRUE, "wglSwapBuffers failed");
    return child_end();
}

static int child(const char *scenario)
{
    write_fact("thread", GetCurrentThreadId());
    if (strcmp(scenario, "threads") == 0)
        return threads();
    if (strcmp(scenario, "contexts") == 0)
        return contexts();
    return passthrough();
}

static void compare_dump(const char *scenario)
{
    child_run run = run_child(scenario, scenario);
    expect_end(run);
    std::string dir = session_directory(run.temp, (DWORD)fact(run, "thread"));
    std::string names[] = {"thread", "second_thread", "first", "second"};
    std::vector<std::pair<std::string, std::string>> known = {{dir, "DIR"}};
    if (fact(run, "second_thread") != ~0ull)
        known.push_back({session_directory(run.temp, (DWORD)fact(run, "second_thread")), "DIR2"});
    for (const std::string &name : names)
        if (fact(run, name.c_str()) != ~0ull)
            known.push_back({std::to_string((int)(uint32_t)fact(run, name.c_str())), "<" + name + ">"});
    std::string expected = expected_file(("records_" + std::string(scenario) + ".txt").c_str());
    check_text(scenario, substitute(run.dump, known), expected);
    // The application's own exit leaves the directory with its files.
    check(directory_exists(dir + "\\history") && directory_exists(dir + "\\list"), "%s: no %s", scenario, dir.c_str());
    if (fact(run, "gl_thread") != ~0ull)
        check(!directory_exists(session_directory(run.temp, (DWORD)fact(run, "gl_thread"))),
              "a directory for the GL-only thread");
    clean_up(run);
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child(argc > 2 ? argv[2] : "");
    compare_dump("threads");
    // Wine's gdi32 hands the application's ChoosePixelFormat and SetPixelFormat to the loaded
    // opengl32: they count as wglChoosePixelFormat and wglSetPixelFormat.
    compare_dump("contexts");
    // In WGL catalogue order, each call once but wglGetProcAddress; the GDI rows stay at 0.
    compare_dump("passthrough");
    return finish("session_records");
}
