// Time of one state scan at a halt: the 411 catalogue queries through the codec's own capture
// functions, on Wine's GL, the way the debugger makes them. Run with tools/wine-run from a
// folder without the debugger's DLLs (it binds the system's opengl32 itself, and asks its WGL
// directly, so that no session starts).
#include "gls/gls.h"
#include "records/records.h"
#include "state/state_scan.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main()
{
    if (!gls_process_attach())
        return 1;
    char path[MAX_PATH];
    GetSystemDirectoryA(path, MAX_PATH);
    lstrcatA(path, "\\opengl32.dll");
    HMODULE gl = LoadLibraryA(path);
    auto choose = (int(WINAPI *)(HDC, const PIXELFORMATDESCRIPTOR *))(void *)GetProcAddress(gl, "wglChoosePixelFormat");
    auto set = (BOOL(WINAPI *)(HDC, int, const PIXELFORMATDESCRIPTOR *))(void *)GetProcAddress(gl, "wglSetPixelFormat");
    auto create = (HGLRC(WINAPI *)(HDC))(void *)GetProcAddress(gl, "wglCreateContext");
    auto make_current = (BOOL(WINAPI *)(HDC, HGLRC))(void *)GetProcAddress(gl, "wglMakeCurrent");
    HWND window = CreateWindowA("STATIC", "state_scan_bench", WS_OVERLAPPEDWINDOW, 0, 0, 256, 256, nullptr, nullptr,
                                GetModuleHandleA(nullptr), nullptr);
    HDC dc = GetDC(window);
    PIXELFORMATDESCRIPTOR format = {};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.cColorBits = 24;
    format.cDepthBits = 24;
    set(dc, choose(dc, &format), &format);
    if (!make_current(dc, create(dc))) {
        fprintf(stderr, "state_scan_bench: no GL context\n");
        return 1;
    }
    glsContext(glsGenContext());

    // The records of a session, as far as the scan reads them.
    static thread_record record;
    record.master = (master *)calloc(1, sizeof(master));
    record.per_gl = (per_gl *)calloc(1, sizeof(per_gl));
    fill_master(record.master, GetCurrentThreadId());
    fill_per_gl(record.per_gl, 1, 1);
    state_baseline(&record);

    const int scans = 200;
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    double best = 1e30, total = 0;
    for (int i = 0; i < scans; ++i) {
        QueryPerformanceCounter(&start);
        state_scan(&record);
        QueryPerformanceCounter(&end);
        double us = (double)(end.QuadPart - start.QuadPart) * 1e6 / (double)frequency.QuadPart;
        total += us;
        if (us < best)
            best = us;
    }
    // One row as the scan read it, to show that the queries reached GL.
    for (int row = 0; row < STATE_ROW_COUNT; ++row)
        if (!strcmp(record.master->state_rows[row].name, "glGet(GL_VIEWPORT)")) {
            const float *v = record.per_gl->state[row].current;
            printf("glGet(GL_VIEWPORT) as scanned: %g %g %g %g\n", v[0], v[1], v[2], v[3]);
        }
    printf("state scan of %d rows: best %.1f us, mean %.1f us over %d scans (a frame at 60 Hz: 16667 us)\n",
           STATE_ROW_COUNT, best, total / scans, scans);
    return 0;
}
