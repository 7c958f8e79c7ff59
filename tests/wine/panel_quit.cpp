// The debugger's end is the application's: File/Quit, and closing the control window by its
// system menu, end the process with exit code 0 and remove the session's temporary directory.
#include "panel_app.h"
#include "panel_driver.h"

static void quit_by_menu()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    // As a person would: once the application stands at its first call.
    if (!panel_wait_text(dialog, PANEL_STATUS, "Halted"))
        panel_abort(dialog, "no halt");
    driver_done();
    panel_menu(dialog, PANEL_MENU_QUIT);
}

static void close_by_system_menu()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    if (!panel_wait_text(dialog, PANEL_STATUS, "Halted"))
        panel_abort(dialog, "no halt");
    driver_done();
    SendMessageA(dialog, WM_SYSCOMMAND, SC_CLOSE, 0);
}

static int child()
{
    char end[16] = "";
    GetEnvironmentVariableA("PANEL_END", end, sizeof end);
    start_driver(strcmp(end, "close") == 0 ? close_by_system_menu : quit_by_menu);
    open_panel_gl_window();
    glClear(GL_COLOR_BUFFER_BIT);
    wait_for_the_end();
}

static void check_end(const char *how)
{
    SetEnvironmentVariableA("PANEL_END", how);
    child_run run = run_child(fresh_temp(how));
    printf("ended by %s\n", how);
    check_panel_run(run);
    std::string dir = session_directory(run.temp, (DWORD)fact(run.facts, "thread"));
    check(fact(run.facts, "thread") != ~0ull, "the application told no thread id");
    check(!directory_exists(dir), "%s is still there", dir.c_str());
    check(session_directories(run.temp).empty(), "a session directory is left");
    remove_tree(run.temp);
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    check_end("quit");
    check_end("close");
    return finish("panel_quit");
}
