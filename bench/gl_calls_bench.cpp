// Per-call cost of the debugger on an immediate-mode workload, run under Wine:
//   direct       the system's opengl32.dll, no quondale
//   nosession    through quondale.dll on a thread without a session (context made current by the
//                system's own wglMakeCurrent, so no WGL export of quondale is ever called)
//   debugged     a session, Continue pressed, History off
//   history      a session, Continue pressed, History on: every call recorded to the history
// `gl_calls_bench memory MODE FRAMES` reports the memory of one run in MODE instead.
// `gl_calls_bench switch [ROUNDS [PAIRS]]` times a context switch instead: two windows, each with
// its own context, made current in turn, one glClear on each; direct against History on.
// With no mode (or a number of rounds, and of frames a run) it runs all four, each as a fresh
// process, in turns for several rounds, and prints the minimum and median nanoseconds per call
// and their ratios to the direct run.
#include <windows.h>
#include <psapi.h>

#include <GL/gl.h>

#include <cstdio>
#include <cstring>
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

enum : int {
    TRIANGLES_PER_FRAME = 1200, // 3 vertices of colour, normal, vertex: 10,802 calls a frame
};
// A run in one mode takes more frames from its second argument, for a profiler. A thousand
// frames give the calls' steady cost: it still fell by a tenth from 300 frames to 1,500.
static int frames = 1000;

static HWND make_window()
{
    WNDCLASSA window_class = {};
    window_class.style = CS_OWNDC;
    window_class.lpfnWndProc = DefWindowProcA;
    window_class.hInstance = GetModuleHandleA(nullptr);
    window_class.lpszClassName = "gl_calls_bench";
    RegisterClassA(&window_class);
    return CreateWindowA("gl_calls_bench", "gl_calls_bench", WS_OVERLAPPEDWINDOW, 0, 0, 256, 256, nullptr,
                         nullptr, window_class.hInstance, nullptr);
}

static int choose_format(HDC dc)
{
    PIXELFORMATDESCRIPTOR format = {};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 24;
    format.cDepthBits = 16;
    int index = ChoosePixelFormat(dc, &format);
    SetPixelFormat(dc, index, &format);
    return index;
}

static bool history_wanted;
// Context switches in place of the immediate-mode workload.
static bool switching;

// Runs tools/panel_press beside this program: it waits for the halt and clicks one button.
static void press(const char *button)
{
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string command = exe;
    command = "\"" + command.substr(0, command.find_last_of('\\') + 1) + "panel_press.exe\" " + button + " 60 " +
              std::to_string(GetCurrentProcessId());
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process;
    if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        fprintf(stderr, "gl_calls_bench: no panel_press\n");
        ExitProcess(3);
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
}

// Presses what a person would: History off if asked (it starts on), then Continue.
static DWORD WINAPI press_continue(void *)
{
    if (!history_wanted)
        press("history");
    press("continue");
    return 0;
}

// One frame of the workload; returns its number of calls.
static int draw_frame()
{
    glBegin(GL_TRIANGLES);
    for (int i = 0; i < TRIANGLES_PER_FRAME * 3; ++i) {
        float x = (float)(i % 97) / 97.0f, y = (float)(i % 89) / 89.0f;
        glColor3f(x, y, 0.5f);
        glNormal3f(0.0f, 0.0f, 1.0f);
        glVertex3f(x * 2 - 1, y * 2 - 1, 0.0f);
    }
    glEnd();
    return 2 + TRIANGLES_PER_FRAME * 9;
}

static double run_workload()
{
    // A session halts at its first GL call: that wait for Continue stays out of the timing, and
    // so does the panel's redrawing after it, which would compete for the processors.
    glClear(GL_COLOR_BUFFER_BIT);
    Sleep(1000);
    // Mesa compiles its code for the frame's state at the first draw, and its buffers settle
    // over the first frames: time that belongs to no call, and a third of a direct run of 100.
    for (int frame = 0; frame < 50; ++frame)
        draw_frame();
    glFinish();
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    long long calls = 0;
    for (int frame = 0; frame < frames; ++frame)
        calls += draw_frame();
    glFinish();
    QueryPerformanceCounter(&end);
    double seconds = (double)(end.QuadPart - start.QuadPart) / (double)frequency.QuadPart;
    return seconds * 1e9 / (double)(calls + 1);
}

// With "memory" before the mode: the working set and the private bytes after every tenth of
// the calls, which must not grow with them.
static bool memory_report;

static void report_memory()
{
    glClear(GL_COLOR_BUFFER_BIT);
    Sleep(1000);
    long long calls = 0, step = (long long)frames * (2 + TRIANGLES_PER_FRAME * 9) / 10;
    printf("%14s %16s %16s\n", "calls", "working set KB", "private KB");
    for (int tenth = 1; tenth <= 10; ++tenth) {
        while (calls < step * tenth)
            calls += draw_frame();
        PROCESS_MEMORY_COUNTERS counters = {};
        counters.cb = sizeof counters;
        K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
        printf("%14lld %16llu %16llu\n", calls, (unsigned long long)counters.WorkingSetSize / 1024,
               (unsigned long long)counters.PagefileUsage / 1024);
        fflush(stdout);
    }
}

// A pair of switches: the first window's context, then the second's. Microseconds a pair.
static double run_switches(HDC first_dc, HGLRC first, HDC second_dc, HGLRC second)
{
    glClear(GL_COLOR_BUFFER_BIT);
    Sleep(1000);
    for (int pair = 0; pair < 20; ++pair) {
        wglMakeCurrent(first_dc, first);
        wglMakeCurrent(second_dc, second);
    }
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    for (int pair = 0; pair < frames; ++pair) {
        wglMakeCurrent(first_dc, first);
        glClear(GL_COLOR_BUFFER_BIT);
        wglMakeCurrent(second_dc, second);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    glFinish();
    QueryPerformanceCounter(&end);
    double seconds = (double)(end.QuadPart - start.QuadPart) / (double)frequency.QuadPart;
    return seconds * 1e6 / frames;
}

typedef BOOL(WINAPI *MakeCurrentFunc)(HDC, HGLRC);
typedef HGLRC(WINAPI *CreateContextFunc)(HDC);

static int run_mode(const char *mode)
{
    HWND window = make_window();
    HDC dc = GetDC(window);
    if (strcmp(mode, "nosession") == 0) {
        // The system library's own WGL: quondale sees GL calls only, on a thread without a session.
        char path[MAX_PATH];
        GetSystemDirectoryA(path, MAX_PATH);
        strcat(path, "\\opengl32.dll");
        HMODULE real = LoadLibraryA(path);
        auto create = (CreateContextFunc)(void *)GetProcAddress(real, "wglCreateContext");
        auto make_current = (MakeCurrentFunc)(void *)GetProcAddress(real, "wglMakeCurrent");
        PIXELFORMATDESCRIPTOR format = {};
        format.nSize = sizeof format;
        format.nVersion = 1;
        format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
        format.cColorBits = 24;
        auto choose = (int(WINAPI *)(HDC, const PIXELFORMATDESCRIPTOR *))(void *)GetProcAddress(real, "wglChoosePixelFormat");
        auto set = (BOOL(WINAPI *)(HDC, int, const PIXELFORMATDESCRIPTOR *))(void *)GetProcAddress(real, "wglSetPixelFormat");
        set(dc, choose(dc, &format), &format);
        make_current(dc, create(dc));
    } else {
        choose_format(dc);
        HGLRC context = wglCreateContext(dc);
        wglMakeCurrent(dc, context);
        if (strcmp(mode, "debugged") == 0 || strcmp(mode, "history") == 0) {
            history_wanted = strcmp(mode, "history") == 0;
            CloseHandle(CreateThread(nullptr, 0, press_continue, nullptr, 0, nullptr));
        }
    }
    if (memory_report) {
        report_memory();
        ExitProcess(0);
    }
    double per_call;
    if (switching) {
        HDC second_dc = GetDC(make_window());
        choose_format(second_dc);
        HGLRC second = wglCreateContext(second_dc);
        per_call = run_switches(dc, wglGetCurrentContext(), second_dc, second);
    } else {
        per_call = run_workload();
    }
    printf("%.2f\n", per_call);
    fflush(stdout);
    // Leave without the panel's Quit: the temporary directory stays, as after any program exit.
    ExitProcess(0);
}

// Removes a folder with everything in it.
static void remove_tree(const std::string &folder)
{
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            std::string name = entry.cFileName;
            if (name == "." || name == "..")
                continue;
            std::string path = folder + "\\" + name;
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                remove_tree(path);
            else
                DeleteFileA(path.c_str());
        } while (FindNextFileA(search, &entry));
        FindClose(search);
    }
    RemoveDirectoryA(folder.c_str());
}

// The runs' sessions keep their histories (a run ends without the panel's Quit): each run gets
// a TEMP of its own beside this program, removed behind it.
static std::string run_temp()
{
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string folder = exe;
    return folder.substr(0, folder.find_last_of('\\')) + "\\bench_temp";
}

// Runs this program again in one mode and reads the figure it prints.
static double measure(const char *mode)
{
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string program = exe;
    if (strcmp(mode, "direct") == 0) {
        // A copy in a folder without quondale, so that the loader finds the system's opengl32.
        std::string folder = program.substr(0, program.find_last_of('\\')) + "\\direct";
        CreateDirectoryA(folder.c_str(), nullptr);
        std::string copy = folder + "\\gl_calls_bench.exe";
        CopyFileA(exe, copy.c_str(), FALSE);
        program = copy;
    }
    std::string command = "\"" + program + "\" " + (switching ? "switch " : "") + mode + " " + std::to_string(frames);
    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE read_end, write_end;
    CreatePipe(&read_end, &write_end, &inherit, 0);
    SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = write_end;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process;
    if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
        return -1;
    CloseHandle(write_end);
    char text[64] = {};
    DWORD got = 0;
    ReadFile(read_end, text, sizeof text - 1, &got, nullptr);
    WaitForSingleObject(process.hProcess, 300000);
    remove_tree(run_temp());
    CreateDirectoryA(run_temp().c_str(), nullptr);
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    CloseHandle(read_end);
    return got ? atof(text) : -1;
}

int main(int argc, char **argv)
{
    if (argc > 1 && strcmp(argv[1], "switch") == 0) {
        switching = true;
        frames = 200;
        ++argv;
        --argc;
    }
    if (argc > 2 && strcmp(argv[1], "memory") == 0) {
        memory_report = true;
        ++argv;
        --argc;
    }
    if (argc > 1 && !isdigit((unsigned char)argv[1][0])) {
        if (argc > 2)
            frames = atoi(argv[2]);
        return run_mode(argv[1]);
    }
    // The modes take turns, round after round, so that a slow moment of the machine falls on all
    // of them alike; the minimum and the median of each tell the cost.
    int rounds = argc > 1 ? atoi(argv[1]) : 5;
    if (argc > 2)
        frames = atoi(argv[2]);
    CreateDirectoryA(run_temp().c_str(), nullptr);
    SetEnvironmentVariableA("TEMP", run_temp().c_str());
    // A thread without a session never switches through quondale's WGL: no "nosession" run.
    const char *all_modes[] = {"direct", "nosession", "debugged", "history"};
    const char *switch_modes[] = {"direct", "debugged", "history"};
    const char *const *modes = switching ? switch_modes : all_modes;
    const int count = switching ? 3 : 4;
    std::vector<double> figures[4];
    if (switching)
        printf("context switches: %d pairs, %d rounds; microseconds a pair\n", frames, rounds);
    else
        printf("immediate-mode workload: %d calls, %d rounds\n", frames * (2 + TRIANGLES_PER_FRAME * 9), rounds);
    for (int round = 0; round < rounds; ++round)
        for (int mode = 0; mode < count; ++mode)
            figures[mode].push_back(measure(modes[mode]));
    double minimum[4], median[4];
    for (int mode = 0; mode < count; ++mode) {
        std::sort(figures[mode].begin(), figures[mode].end());
        minimum[mode] = figures[mode].front();
        median[mode] = figures[mode][figures[mode].size() / 2];
    }
    printf("%-10s %12s %8s %12s %8s\n", "", switching ? "min us/pair" : "min ns/call", "ratio", "median", "ratio");
    for (int mode = 0; mode < count; ++mode)
        printf("%-10s %12.1f %7.2fx %12.1f %7.2fx\n", modes[mode], minimum[mode], minimum[mode] / minimum[0],
               median[mode], median[mode] / median[0]);
    return 0;
}
