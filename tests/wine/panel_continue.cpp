#include "panel_continue.h"

#include <windows.h>

#include <cstring>

enum : int { STATUS_LINE = 107, CONTINUE_BUTTON = 109, MAX_PANELS = 16 };

struct panels_seen {
    HWND continued[MAX_PANELS];
    int count;
};

static BOOL CALLBACK continue_if_halted(HWND window, LPARAM argument)
{
    panels_seen *seen = (panels_seen *)argument;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    char text[64];
    if (process != GetCurrentProcessId() || !GetWindowTextA(window, text, sizeof text) || strcmp(text, "quondale"))
        return TRUE;
    for (int at = 0; at < seen->count; ++at)
        if (seen->continued[at] == window)
            return TRUE;
    if (!GetDlgItemTextA(window, STATUS_LINE, text, sizeof text) || strcmp(text, "Halted") != 0)
        return TRUE;
    SendDlgItemMessageA(window, CONTINUE_BUTTON, BM_CLICK, 0, 0);
    if (seen->count < MAX_PANELS)
        seen->continued[seen->count++] = window;
    return TRUE;
}

// Watches until the one panel of the program's GL thread has been let go: a watcher that still
// sends messages to the panel while the process ends can take the whole process down with it.
static DWORD WINAPI watch_panels(void *)
{
    static panels_seen seen;
    while (seen.count == 0) {
        EnumWindows(continue_if_halted, (LPARAM)&seen);
        Sleep(20);
    }
    return 0;
}

void continue_first_halts()
{
    HANDLE thread = CreateThread(nullptr, 0, watch_panels, nullptr, 0, nullptr);
    if (thread)
        CloseHandle(thread);
}
