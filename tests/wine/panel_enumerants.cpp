// The Enumerates window: every enumerant with its number, found by name, by decimal and by
// hexadecimal number; a search that finds nothing says so in the search box.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static std::string search(HWND window, const char *needle)
{
    SetDlgItemTextA(window, IDC_ENUM_TEXT, needle);
    click(window, IDC_ENUM_SEARCH);
    int selected = (int)SendDlgItemMessageA(window, IDC_ENUM_LIST, LB_GETCURSEL, 0, 0);
    return selected >= 0 ? list_row(window, IDC_ENUM_LIST, selected) : control_text(window, IDC_ENUM_TEXT);
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    check(find_dialog("Enumerates", 0, 200) == nullptr, "the Enumerates window is shown at start");
    menu(control, IDM_ENUMERANTS);
    HWND window = need_dialog("Enumerates");
    int rows = (int)SendDlgItemMessageA(window, IDC_ENUM_LIST, LB_GETCOUNT, 0, 0);
    check(rows == 638, "%d rows, expected 638", rows);
    screenshot(window, "enumerates");
    check_text("the row of 2929", search(window, "2929"), "GL_DEPTH_TEST - 0x0B71, 2929");
    check_text("the row of 0x0D17", search(window, "0x0D17"), "GL_ZOOM_Y - 0x0D17, 3351");
    check_text("the row of GL_2D", search(window, "GL_2D "), "GL_2D - 0x0600, 1536");
    SendDlgItemMessageA(window, IDC_ENUM_LIST, LB_SETCURSEL, (WPARAM)-1, 0);
    check_text("a search that finds nothing", search(window, "gl_depth_test"), "gl_depth_test - not found");
    check_layout(window, "Enumerates");
    click(window, IDC_ENUM_CLOSE);
    check(!IsWindowVisible(window), "Close left the Enumerates window shown");
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(32, 32);
    glClear(GL_COLOR_BUFFER_BIT);
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_enumerants", child); }
