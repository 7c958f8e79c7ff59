#include "panel/settings.h"

#include "panel/panel.h"
#include "panel/panel_text.h"
#include "panel/resource.h"
#include "panel/settings_file.h"

#include <cstdio>
#include <cstring>

static const char *const section_heads[3] = {"CONFIGURATION_break_GL_select", "CONFIGURATION_history_select",
                                             "CONFIGURATION_skip_GL_select"};

// The boxes of lines 2 to 7 in file order, with the field each line writes.
struct switch_line {
    const char *key;
    int box;
    int32_t per_proc::*field; // null: written as 0 always
};
static const switch_line switch_lines[6] = {
    {"Check_for_GL_error", IDC_GL_ERRORS, &per_proc::Check_for_GL_error},
    {"Control_draw", IDC_CONTROL_DRAWING, nullptr},
    {"History", IDC_HISTORY, &per_proc::History},
    {"Break_on_GL_calls", IDC_BREAK_ON_CALLS, &per_proc::Break_on_GL_calls},
    {"Break_on_SwapBuffers", IDC_BREAK_ON_SWAP, &per_proc::Break_on_SwapBuffers},
    {"Skip_GL_calls", IDC_SKIP_CALLS, &per_proc::Skip_GL_calls},
};

static bool menu_checked(WindowHandle window, int item)
{
    return window && (GetMenuState(GetMenu((HWND)window), item, MF_BYCOMMAND) & MF_CHECKED);
}

void settings_save(const char *path)
{
    FILE *file = fopen(path, "w");
    if (!file)
        return;
    const thread_record *record = current_record();
    const per_proc *proc = record->per_proc;
    fprintf(file, "quondale\n");
    for (const switch_line &line : switch_lines)
        fprintf(file, "%s: %d\n", line.key, line.field ? proc->*line.field : 0);
    bool nonzero = record->call_count_window &&
                   GetMenuState(GetMenu((HWND)record->call_count_window), IDM_NON_ZERO_CALLS, MF_BYCOMMAND) != 0;
    fprintf(file, "Call_Count_Show: %s\n", nonzero ? "NON_ZERO" : "ALL");
    fprintf(file, "State_Show_NonDefault: %d\n", menu_checked(record->state_select_window, IDM_NON_DEFAULT_STATE) ? 1 : 0);
    fprintf(file, "State_Show_SnapDiff: %d\n", menu_checked(record->state_select_window, IDM_DIFF_FROM_SNAPSHOT) ? 1 : 0);
    for (int section = 0; section < 3; ++section) {
        fprintf(file, "%s\n", section_heads[section]);
        selection chosen = select_for_settings(section);
        for (int row = 0; row < GL_CALL_COUNT; ++row) {
            // The first column is the list box's selection now, not the table of the run control.
            int selected = chosen.list && SendMessageA(chosen.list, LB_GETSEL, row, 0) > 0 ? 1 : 0;
            fprintf(file, "%s: %d %d %d %d\n", gl_call_names[row], selected, chosen.sets[row][0], chosen.sets[row][1],
                    chosen.sets[row][2]);
        }
    }
    fclose(file);
}

static void check_menu(WindowHandle window, int item, bool on)
{
    if (window)
        CheckMenuItem(GetMenu((HWND)window), item, MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
}

// The file is read whole first (settings_file.cpp); then its values go to the boxes, menus and
// lists.
void settings_load(const char *path)
{
    FILE *file = fopen(path, "r");
    if (!file)
        return;
    static settings_values values;
    bool valid = settings_read(file, &values);
    fclose(file);
    if (!valid) {
        panel_warning("%s is not valid.", path);
        return;
    }
    const thread_record *record = current_record();
    for (int line = 0; line < SETTINGS_SWITCH_LINES; ++line) {
        // Boxes only, without their commands: the fields follow at the user's next click.
        if (switch_lines[line].field)
            SendDlgItemMessageA((HWND)record->control_window, switch_lines[line].box, BM_SETCHECK,
                                values.switches[line] != 0 ? BST_CHECKED : BST_UNCHECKED, 0);
    }
    check_menu(record->call_count_window, IDM_NON_ZERO_CALLS, strcmp(values.call_count_show, "ALL") != 0);
    if (record->per_proc->shown[SHOWN_CALL_COUNT] == 1 && record->call_count_window)
        SendMessageA((HWND)record->call_count_window, WM_PANEL_REFRESH, 0, 0);
    check_menu(record->state_select_window, IDM_NON_DEFAULT_STATE, values.state_non_default != 0);
    check_menu(record->state_select_window, IDM_DIFF_FROM_SNAPSHOT, values.state_snap_diff != 0);
    if (record->per_proc->shown[SHOWN_STATE_SELECT] == 1 && record->state_select_window)
        SendMessageA((HWND)record->state_select_window, WM_PANEL_REFRESH, 0, 0);
    for (int section = 0; section < SETTINGS_SECTIONS; ++section) {
        selection chosen = select_for_settings(section);
        const settings_section &read = values.sections[section];
        for (int row = 0; row < GL_CALL_COUNT; ++row) {
            // A 0 does not deselect: a load adds to the list box's selection.
            if (read.selected[row] && chosen.list)
                SendMessageA(chosen.list, LB_SETSEL, TRUE, row);
            memcpy(chosen.sets[row], read.sets[row], 3);
        }
        select_take_over(section);
    }
}

void load_start_settings(thread_record *)
{
    settings_load("quondale.cfg");
}
