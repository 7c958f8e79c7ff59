// The panel on screen, for a picture: the program halts at its first call, says so in
// panel_screenshot.ready in its folder, waits for panel_screenshot.taken, then quits by the menu.
// panel_screenshot.sh around it takes the picture.
#include "panel_app.h"
#include "panel_driver.h"

static void scenario()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    expect_halt_at(dialog, "glClear(GL_COLOR_BUFFER_BIT);");
    // A box set, so that the picture shows both states.
    panel_click(dialog, PANEL_GL_ERRORS);
    Sleep(300); // let the window repaint before the picture
    FILE *ready = fopen("panel_screenshot.ready", "w");
    if (ready)
        fclose(ready);
    DWORD start = GetTickCount();
    while (!file_exists("panel_screenshot.taken"))
        if (GetTickCount() - start > 60000)
            panel_abort(dialog, "no picture taken");
        else
            Sleep(50);
    panel_menu(dialog, PANEL_MENU_QUIT);
}

int main()
{
    DeleteFileA("panel_screenshot.ready");
    DeleteFileA("panel_screenshot.taken");
    start_driver(scenario);
    open_panel_gl_window();
    glClear(GL_COLOR_BUFFER_BIT);
    wait_for_the_end();
}
