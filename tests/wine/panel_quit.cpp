// The debugger's end is the application's: File/Quit, and closing the control window by its
// system menu, end the process with exit code 0 and remove the session's temporary directory.
#include "tests/wine/harness.h"

#include "panel/resource.h"

#include <cstring>

static bool by_system_menu;

static void scenario()
{
    HWND control = control_window();
    // As a person would: once the application stands at its first call.
    if (!wait_text(control, IDC_STATUS, "Halted"))
        give_up("no halt");
    driver_done();
    if (by_system_menu)
        SendMessageA(control, WM_SYSCOMMAND, SC_CLOSE, 0);
    else
        menu(control, IDM_QUIT);
}

static int child(const char *how)
{
    by_system_menu = strcmp(how, "close") == 0;
    write_fact("thread", GetCurrentThreadId());
    start_driver(scenario);
    open_gl_window(16, 16);
    glClear(GL_COLOR_BUFFER_BIT);
    wait_for_the_end();
}

static void check_end(const char *how)
{
    child_run run = run_child(how, how);
    printf("ended by %s\n", how);
    expect_end(run);
    std::string dir = session_directory(run.temp, (DWORD)fact(run, "thread"));
    check(fact(run, "thread") != ~0ull && !directory_exists(dir), "%s is still there", dir.c_str());
    clean_up(run);
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child(argc > 2 ? argv[2] : "");
    check_end("quit");
    check_end("close");
    return finish("panel_quit");
}
