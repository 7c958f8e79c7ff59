// The GL state at a halt: Select State lists the catalogue, its filters keep the rows that differ
// from the defaults or from the last snapshot, a State window shows a row's three values, and
// Save writes the listed rows. The scan leaves the application's pack alignment as it was.
#include "tests/wine/harness.h"

#include "panel/resource.h"
#include "records/records.h"

static GLint pack_alignment_seen = 99;

static std::string rows_text(HWND window)
{
    std::string text;
    for (const std::string &row : list_rows(window, IDC_STATE_LIST))
        text += row + "\n";
    return text;
}

static void pick(HWND select, const char *name)
{
    int row = (int)SendDlgItemMessageA(select, IDC_STATE_LIST, LB_FINDSTRINGEXACT, (WPARAM)-1, (LPARAM)name);
    if (row >= 0 && list_row(select, IDC_STATE_LIST, row) == name)
        return select_row(select, IDC_STATE_LIST, row);
    check(false, "no row %s", name);
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    click(control, IDC_BREAK_ON_CALLS); // the break set starts with glFlush in it
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glFlush();");

    menu(control, IDM_STATE);
    HWND select = need_dialog("Select State");
    check_text("the rows that differ from the defaults", rows_text(select),
               "glGet(GL_CULL_FACE)\nglGet(GL_LINE_WIDTH)\nglGet(GL_MODELVIEW_MATRIX)\n");
    screenshot(select, "select_state");
    menu(select, IDM_NON_DEFAULT_STATE);
    // Unfiltered, each place shows the catalogue's row of that number, and a pick opens it.
    std::vector<std::string> all = list_rows(select, IDC_STATE_LIST);
    std::string shown, catalogue;
    for (size_t place = 0; place < all.size(); ++place)
        shown += all[place] + " opens " +
                 std::to_string(SendDlgItemMessageA(select, IDC_STATE_LIST, LB_GETITEMDATA, place, 0)) + "\n";
    for (int row = 0; row < STATE_ROW_COUNT; ++row)
        catalogue += std::string(state_catalogue[row].name) + " opens " + std::to_string(row) + "\n";
    check_text("the list's places", shown, catalogue);

    pick(select, "glGet(GL_MODELVIEW_MATRIX)");
    HWND value = need_dialog("State");
    check_text("the row's name", control_text(value, IDC_STATE_NAME), "glGet(GL_MODELVIEW_MATRIX)");
    check_text("the matrix now", control_text(value, IDC_STATE_CURRENT),
               "1.0000 0.0000 0.0000 0.0000\r\n0.0000 1.0000 0.0000 0.0000\r\n"
               "0.0000 0.0000 1.0000 0.0000\r\n1.0000 2.0000 3.0000 1.0000\r\n");
    check_text("the matrix at the last snapshot", control_text(value, IDC_STATE_SNAPSHOT_TEXT),
               "0.0000 0.0000 0.0000 0.0000\r\n0.0000 0.0000 0.0000 0.0000\r\n"
               "0.0000 0.0000 0.0000 0.0000\r\n0.0000 0.0000 0.0000 0.0000\r\n");
    check_text("the default matrix", control_text(value, IDC_STATE_DEFAULT),
               "1.0000 0.0000 0.0000 0.0000\r\n0.0000 1.0000 0.0000 0.0000\r\n"
               "0.0000 0.0000 1.0000 0.0000\r\n0.0000 0.0000 0.0000 1.0000\r\n");
    screenshot(value, "state_matrix");
    click(value, IDC_STATE_VALUE_CLOSE);

    click(select, IDC_STATE_SNAPSHOT);
    menu(select, IDM_DIFF_FROM_SNAPSHOT);
    check_text("the rows that differ from the snapshot just taken", rows_text(select), "");
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glFlush();"); // behind glDisable(GL_CULL_FACE)
    check_text("the rows changed since the snapshot", rows_text(select), "glGet(GL_CULL_FACE)\n");
    post_command(select, IDC_STATE_SAVE);
    check_text("state.txt", save_as(temp_path("state.txt")),
               text_mode("glGet(GL_CULL_FACE)\nCurrent Value: GL_FALSE \r\nDefault Value: GL_FALSE \r\n\n"));
    check_layout(select, "Select State");
    click(control, IDC_BREAK_ON_CALLS);
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(32, 32);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glLineWidth(3);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glFlush();
    glGetIntegerv(GL_PACK_ALIGNMENT, &pack_alignment_seen);
    glDisable(GL_CULL_FACE);
    glFlush();
    check(pack_alignment_seen == 1, "after the scan the pack alignment was %d", pack_alignment_seen);
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_state", child); }
