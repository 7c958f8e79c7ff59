// Presses a button of the debugger's control window from outside the debugged program, as a
// person would: `panel_press BUTTON [SECONDS [PROCESS]]` waits for the window titled "quondale"
// (of PROCESS, a process id or a program's file name, when given: other programs may be debugged
// beside it) to show "Halted", prints its four texts, and clicks BUTTON (halt, continue, step,
// skip, the history box; look only looks). `panel_press stress SECONDS [PROCESS]` then presses
// Halt, Step, Skip and Continue at random for SECONDS, and Continue at the end; it fails if the
// panel goes away meanwhile. `panel_press continue-all SECONDS PROCESS` presses Continue on every
// control window of PROCESS that halts, for SECONDS; `panel_press quit SECONDS PROCESS` chooses
// File > Quit on its control window, halted or not.
#include <windows.h>

#include "panel/resource.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

struct button_name {
    const char *name;
    int id;
};

static const button_name buttons[] = {
    {"look", 0},  {"halt", IDC_HALT}, {"continue", IDC_CONTINUE},
    {"step", IDC_STEP}, {"skip", IDC_SKIP}, {"history", IDC_HISTORY}, {"stress", -2},
    {"continue-all", -3}, {"quit", -4},
};

static DWORD wanted_process;       // 0: any
static const char *wanted_program; // or the program's file name, when PROCESS is not a number

static bool of_wanted_program(DWORD process)
{
    HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (!handle)
        return false;
    char path[MAX_PATH];
    DWORD size = sizeof path;
    bool named = QueryFullProcessImageNameA(handle, 0, path, &size);
    CloseHandle(handle);
    const char *name = named ? strrchr(path, '\\') : nullptr;
    return name && _stricmp(name + 1, wanted_program) == 0;
}

static BOOL CALLBACK match_control_window(HWND window, LPARAM found)
{
    char title[64];
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (IsWindowVisible(window) && GetWindowTextA(window, title, sizeof title) && strcmp(title, "quondale") == 0 &&
        (wanted_program ? of_wanted_program(process) : wanted_process == 0 || process == wanted_process)) {
        *(HWND *)found = window;
        return FALSE;
    }
    return TRUE;
}

static void text_of(HWND dialog, int id, char *text, int size)
{
    text[0] = 0;
    SendDlgItemMessageA(dialog, id, WM_GETTEXT, (WPARAM)size, (LPARAM)text);
}

// Every halted control window of the process gets Continue, the first and those of later threads.
static BOOL CALLBACK continue_halted(HWND window, LPARAM presses)
{
    HWND found = nullptr;
    match_control_window(window, (LPARAM)&found);
    char status[64];
    if (found) {
        text_of(found, IDC_STATUS, status, sizeof status);
        if (strcmp(status, "Halted") == 0) {
            SendDlgItemMessageA(found, IDC_CONTINUE, BM_CLICK, 0, 0);
            ++*(int *)presses;
        }
    }
    return TRUE;
}

// Presses at random, as an impatient person would, then lets the program run on.
static int stress(HWND control, DWORD limit)
{
    static const int choices[] = {IDC_HALT, IDC_STEP, IDC_SKIP, IDC_CONTINUE};
    uint32_t state = GetTickCount() | 1;
    unsigned presses = 0;
    for (DWORD start = GetTickCount(); GetTickCount() - start < limit; ++presses) {
        if (!IsWindow(control)) {
            fprintf(stderr, "panel_press: the control window went away after %u presses\n", presses);
            return 1;
        }
        state = state * 1103515245u + 12345u;
        SendDlgItemMessageA(control, choices[(state >> 16) % 4], BM_CLICK, 0, 0);
        Sleep((state >> 8) % 40);
    }
    SendDlgItemMessageA(control, IDC_CONTINUE, BM_CLICK, 0, 0);
    printf("%u presses\n", presses);
    return 0;
}

int main(int argc, char **argv)
{
    int button = -1;
    for (const button_name &known : buttons)
        if (argc > 1 && strcmp(argv[1], known.name) == 0)
            button = known.id;
    if (button == -1) {
        fprintf(stderr, "usage: panel_press look|halt|continue|step|skip|history|stress|continue-all|quit [SECONDS [PROCESS]]\n");
        return 2;
    }
    DWORD limit = (argc > 2 ? (DWORD)atoi(argv[2]) : 60) * 1000;
    if (argc > 3 && !isdigit((unsigned char)argv[3][0]))
        wanted_program = argv[3];
    else
        wanted_process = argc > 3 ? (DWORD)strtoul(argv[3], nullptr, 10) : 0;
    DWORD start = GetTickCount();
    if (button == -3) {
        int presses = 0;
        while (GetTickCount() - start < limit) {
            EnumWindows(continue_halted, (LPARAM)&presses);
            Sleep(50);
        }
        printf("%d presses\n", presses);
        return 0;
    }
    HWND control = nullptr;
    char status[256] = "";
    while (GetTickCount() - start < limit) {
        control = nullptr;
        EnumWindows(match_control_window, (LPARAM)&control);
        if (control && button == -4) {
            // Posted: the program ends before a sent message would come back.
            PostMessageA(control, WM_COMMAND, IDM_QUIT, 0);
            return 0;
        }
        if (control) {
            text_of(control, IDC_STATUS, status, sizeof status);
            if (strcmp(status, "Halted") == 0)
                break;
        }
        Sleep(100);
    }
    if (!control || strcmp(status, "Halted") != 0) {
        fprintf(stderr, "panel_press: no halted control window\n");
        return 1;
    }
    char text[1024];
    for (int id : {IDC_THREAD_BANNER, IDC_CONTEXT_BANNER, IDC_LAST_CALL, IDC_STATUS}) {
        text_of(control, id, text, sizeof text);
        printf("%s\n", text);
    }
    if (button == -2)
        return stress(control, limit);
    if (button != 0)
        SendDlgItemMessageA(control, button, BM_CLICK, 0, 0);
    return 0;
}
