// Holds the checks' Wine desktop open while a run of checks goes on: Wine closes a desktop once no
// window is left on it, and a check that starts just then creates its first window under the
// closed desktop's X window and is ended by Xlib's error. It keeps one window on that desktop
// until it is killed; with a file name, it writes that file once the window stands.
#include <windows.h>

int main(int argc, char **argv)
{
    HDESK desktop = CreateDesktopA("quondale", nullptr, nullptr, 0, GENERIC_ALL, nullptr);
    if (!desktop || !SetThreadDesktop(desktop))
        return 1;
    if (!CreateWindowA("STATIC", "desktop keeper", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr))
        return 1;
    if (argc > 1)
        CloseHandle(CreateFileA(argv[1], GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0)
        DispatchMessageA(&message);
    return 0;
}
