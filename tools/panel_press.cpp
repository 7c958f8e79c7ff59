// Presses a button of the debugger's control window from outside the debugged program, as a
// person would: `panel_press ID` waits for the window titled "quondale" to show "Halted",
// prints what it shows, and clicks button ID (109 is Continue; 0 only looks).
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

static BOOL CALLBACK match_control_window(HWND window, LPARAM found)
{
    char title[64];
    if (IsWindowVisible(window) && GetWindowTextA(window, title, sizeof title) && strcmp(title, "quondale") == 0) {
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

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: panel_press BUTTON_ID [SECONDS]\n");
        return 2;
    }
    int button = atoi(argv[1]);
    DWORD limit = (argc > 2 ? (DWORD)atoi(argv[2]) : 60) * 1000;
    DWORD start = GetTickCount();
    HWND control = nullptr;
    char status[256] = "";
    while (GetTickCount() - start < limit) {
        control = nullptr;
        EnumWindows(match_control_window, (LPARAM)&control);
        if (control) {
            text_of(control, 107, status, sizeof status);
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
    for (int id = 104; id <= 107; ++id) {
        text_of(control, id, text, sizeof text);
        printf("%s\n", text);
    }
    if (button != 0)
        SendDlgItemMessageA(control, button, BM_CLICK, 0, 0);
    return 0;
}
