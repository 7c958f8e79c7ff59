// The selection dialogs. A break set of glLineWidth alone halts there and nowhere else; a skip
// set of glEnable leaves both glEnable calls unmade; a set remembered in Select GL Break comes
// back when it is recalled in the same dialog opened again.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static GLboolean cull_face = 99, depth_test = 99;

// The names of a multiple-selection list's selected rows, one a line.
static std::string selected_names(HWND dialog, int base)
{
    HWND list = GetDlgItem(dialog, base + SELECT_LIST);
    int selected[512];
    int count = (int)SendMessageA(list, LB_GETSELITEMS, 512, (LPARAM)selected);
    std::vector<std::string> rows = list_rows(dialog, base + SELECT_LIST);
    std::string names;
    for (int i = 0; i < count; ++i)
        names += (selected[i] < (int)rows.size() ? rows[selected[i]] : "?") + "\n";
    return names;
}

// Opens a selection dialog by its Setup button, selects by a search from an empty selection.
static HWND choose(HWND control, int setup, const char *title, int base, const char *search)
{
    click(control, setup);
    HWND dialog = find_dialog(title);
    if (!dialog)
        give_up("a selection dialog did not come up");
    click(dialog, base + SELECT_NONE);
    SetDlgItemTextA(dialog, base + SELECT_SEARCH_TEXT, search);
    click(dialog, base + SELECT_SEARCH);
    return dialog;
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    HWND breaks = choose(control, IDC_BREAK_SETUP, "Select GL Break", IDD_BREAK_SELECT - 1, "glLineWidth");
    check_text("the break selection", selected_names(breaks, IDD_BREAK_SELECT - 1), "glLineWidth\n");
    menu(breaks, IDM_REMEMBER_SET_1);
    screenshot(breaks, "select_gl_break");
    click(breaks, IDD_BREAK_SELECT - 1 + SELECT_OK);
    click(control, IDC_BREAK_ON_CALLS);
    HWND skips = choose(control, IDC_SKIP_SETUP, "Select GL Skip", IDD_SKIP_SELECT - 1, "glEnable");
    check_text("the skip selection", selected_names(skips, IDD_SKIP_SELECT - 1), "glEnable\n");
    screenshot(skips, "select_gl_skip");
    click(skips, IDD_SKIP_SELECT - 1 + SELECT_OK);
    click(control, IDC_SKIP_CALLS);
    click(control, IDC_TRACE_SETUP);
    HWND traces = find_dialog("Select GL Trace");
    if (traces) {
        screenshot(traces, "select_gl_trace");
        click(traces, IDD_TRACE_SELECT - 1 + SELECT_CANCEL);
    }
    click(control, IDC_CONTINUE);

    expect_halt_at(control, "glLineWidth(2);");
    check(calls_returned == 2, "at the break on glLineWidth %ld calls returned, expected 2", calls_returned);
    click(control, IDC_BREAK_SETUP);
    breaks = find_dialog("Select GL Break");
    if (breaks) {
        click(breaks, IDD_BREAK_SELECT - 1 + SELECT_NONE);
        menu(breaks, IDM_RECALL_SET_1);
        check_text("set 1 recalled", selected_names(breaks, IDD_BREAK_SELECT - 1), "glLineWidth\n");
        check_layout(breaks, "Select GL Break");
        click(breaks, IDD_BREAK_SELECT - 1 + SELECT_CANCEL);
    }
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(128, 32);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_CULL_FACE); // skipped
    returned();
    glEnable(GL_DEPTH_TEST); // skipped
    returned();
    glLineWidth(2); // the one break
    returned();
    cull_face = glIsEnabled(GL_CULL_FACE);
    depth_test = glIsEnabled(GL_DEPTH_TEST);
    glFlush(); // in the break set at the start, no longer
    check(cull_face == GL_FALSE && depth_test == GL_FALSE, "a skipped glEnable was made: %d %d", cull_face, depth_test);
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_select", child); }
