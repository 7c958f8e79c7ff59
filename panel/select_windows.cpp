// Select GL Break, Select GL Trace and Select GL Skip: three dialogs of one design that choose
// among the GL functions, each with three remembered sets; the trace dialog also carries the
// Options menu of the reporting options.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"
#include "panel/search.h"
#include "records/rings.h"

#include <cstdio>
#include <cstring>

enum : int { SET_COUNT = 3 };

// A dialog's sets belong to the process, not to a session: they are not in any record.
struct select_kind {
    int base;
    int shown_index;
    uint8_t call_control_row::*byte;
    uint8_t (*sets)[SET_COUNT];
};

static uint8_t break_sets[GL_CALL_COUNT][SET_COUNT], trace_sets[GL_CALL_COUNT][SET_COUNT],
    skip_sets[GL_CALL_COUNT][SET_COUNT];

static const select_kind kinds[] = {
    {1200, SHOWN_BREAK_SELECT, &call_control_row::break_on, break_sets},
    {1300, SHOWN_TRACE_SELECT, &call_control_row::trace, trace_sets},
    {1400, SHOWN_SKIP_SELECT, &call_control_row::skip, skip_sets},
};

static HWND list_of(HWND dialog, const select_kind &kind) { return GetDlgItem(dialog, kind.base + SELECT_LIST); }

static HWND dialog_of(int index)
{
    const thread_record *record = current_record();
    const WindowHandle windows[3] = {record->break_select_window, record->trace_select_window,
                                     record->skip_select_window};
    return (HWND)windows[index];
}

// The list is sorted by name, which is the catalogue's order: a position is a function's row.
static void select_fill(HWND dialog, const select_kind &kind)
{
    HWND list = list_of(dialog, kind);
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        SendMessageA(list, LB_ADDSTRING, 0, (LPARAM)gl_call_names[row]);
}

static void select_show_table(HWND dialog, const select_kind &kind)
{
    HWND list = list_of(dialog, kind);
    const call_control_row *control = current_record()->per_proc->call_control;
    SendMessageA(list, LB_SETSEL, FALSE, -1);
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        if (control[row].*kind.byte == 1)
            SendMessageA(list, LB_SETSEL, TRUE, row);
}

// Clears the whole column first: a running application can see a moment with nothing selected.
static void select_apply(HWND dialog, const select_kind &kind)
{
    HWND list = list_of(dialog, kind);
    call_control_row *control = current_record()->per_proc->call_control;
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        control[row].*kind.byte = 0;
    int selected[GL_CALL_COUNT];
    int count = (int)SendMessageA(list, LB_GETSELCOUNT, 0, 0);
    count = (int)SendMessageA(list, LB_GETSELITEMS, count < GL_CALL_COUNT ? count : GL_CALL_COUNT, (LPARAM)selected);
    for (int i = 0; i < count; ++i)
        if (selected[i] >= 0 && selected[i] < GL_CALL_COUNT)
            control[selected[i]].*kind.byte = 1;
}

static void set_remember(HWND dialog, const select_kind &kind, int set)
{
    HWND list = list_of(dialog, kind);
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        kind.sets[row][set] = SendMessageA(list, LB_GETSEL, row, 0) > 0 ? 1 : 0;
}

static void set_recall(HWND dialog, const select_kind &kind, int set)
{
    HWND list = list_of(dialog, kind);
    SendMessageA(list, LB_SETSEL, FALSE, -1);
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        if (kind.sets[row][set] == 1)
            SendMessageA(list, LB_SETSEL, TRUE, row);
}

// The search of a multiple-selection list: from one behind the top visible row, each hit joins
// the selection and comes to the top, so that repeated searches walk forward through the hits.
static void select_search(HWND dialog, const select_kind &kind)
{
    HWND list = list_of(dialog, kind);
    char needle[SEARCH_TEXT_SIZE];
    GetDlgItemTextA(dialog, kind.base + SELECT_SEARCH_TEXT, needle, sizeof needle);
    int count = (int)SendMessageA(list, LB_GETCOUNT, 0, 0);
    int start = (int)SendMessageA(list, LB_GETTOPINDEX, 0, 0) + 1;
    if (start >= count)
        start = 0;
    for (int pass = 0; pass < 2; ++pass) {
        for (int row = pass ? 0 : start; row < count; ++row) {
            char name[CALL_NAME_SIZE];
            if (SendMessageA(list, LB_GETTEXTLEN, row, 0) >= CALL_NAME_SIZE)
                continue;
            SendMessageA(list, LB_GETTEXT, row, (LPARAM)name);
            if (strstr(name, needle)) {
                SendMessageA(list, LB_SETSEL, TRUE, row);
                SendMessageA(list, LB_SETTOPINDEX, row, 0);
                return;
            }
        }
    }
    char text[SEARCH_TEXT_SIZE + 16];
    not_found_text(needle, text);
    SetDlgItemTextA(dialog, kind.base + SELECT_SEARCH_TEXT, text);
}

// Options of the trace dialog: the check mark and the field go together, whatever the field held
// before; the first two items start checked while their fields start at 0.
static void toggle_option(HWND dialog, int item, int32_t per_proc::*field)
{
    HMENU menu = GetMenu(dialog);
    bool checked = GetMenuState(menu, item, MF_BYCOMMAND) & MF_CHECKED;
    CheckMenuItem(menu, item, MF_BYCOMMAND | (checked ? MF_UNCHECKED : MF_CHECKED));
    current_record()->per_proc->*field = checked ? 0 : 1;
}

static bool option_command(HWND dialog, int id)
{
    per_proc *proc = current_record()->per_proc;
    switch (id) {
    case IDM_SHOW_PROBLEMS: toggle_option(dialog, id, &per_proc::show_problems); return true;
    case IDM_SHOW_HINTS: toggle_option(dialog, id, &per_proc::show_hints); return true;
    case IDM_LIMIT_DATA_DUMPS: toggle_option(dialog, id, &per_proc::limit_data_dumps); return true;
    case IDM_SHOW_DATA_ADDRESS: toggle_option(dialog, id, &per_proc::show_data_address); return true;
    case IDM_CAPTURE_VERTEX_ARRAYS: {
        // Checking the item posts the event that disables the capture, as the item always has.
        HMENU menu = GetMenu(dialog);
        bool checked = GetMenuState(menu, id, MF_BYCOMMAND) & MF_CHECKED;
        CheckMenuItem(menu, id, MF_BYCOMMAND | (checked ? MF_UNCHECKED : MF_CHECKED));
        post_event(&proc->ring_to_app, checked ? EVENT_VERTEX_ARRAYS_ON : EVENT_VERTEX_ARRAYS_OFF);
        return true;
    }
    default:
        return false;
    }
}

// A command of the dialog's own; false for Cancel and the ids it does not know.
static bool select_command(HWND dialog, const select_kind &kind, int id)
{
    if (id >= IDM_REMEMBER_SET_1 && id <= IDM_REMEMBER_SET_3) {
        set_remember(dialog, kind, id - IDM_REMEMBER_SET_1);
        return true;
    }
    if (id >= IDM_RECALL_SET_1 && id <= IDM_RECALL_SET_3) {
        set_recall(dialog, kind, id - IDM_RECALL_SET_1);
        return true;
    }
    if (kind.base == 1300 && option_command(dialog, id))
        return true;
    HWND list = list_of(dialog, kind);
    switch (id - kind.base) {
    case SELECT_SEARCH: select_search(dialog, kind); return true;
    case SELECT_ALL: SendMessageA(list, LB_SETSEL, TRUE, -1); return true;
    case SELECT_NONE: SendMessageA(list, LB_SETSEL, FALSE, -1); return true;
    case SELECT_OK:
        // The trace set reaches the codec only at its next set-up.
        select_apply(dialog, kind);
        SendMessageA(dialog, WM_CLOSE, 0, 0);
        return true;
    }
    return false;
}

static INT_PTR select_function(const select_kind &kind, HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    // The three share the Break dialog's layout rules, by offset from their base.
    const dialog_skeleton skeleton = {
        .layout_id = IDD_BREAK_SELECT, .base = kind.base, .shown_index = kind.shown_index, .close_id = SELECT_CANCEL};
    switch (message) {
    case WM_INITDIALOG:
        select_fill(dialog, kind);
        return TRUE;
    case WM_PANEL_REFRESH:
        select_show_table(dialog, kind);
        return TRUE;
    case WM_COMMAND:
        if (select_command(dialog, kind, LOWORD(first)))
            return TRUE;
        break;
    }
    return dialog_default(skeleton, dialog, message, first, second);
}

INT_PTR CALLBACK break_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    return select_function(kinds[0], dialog, message, first, second);
}

INT_PTR CALLBACK trace_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    return select_function(kinds[1], dialog, message, first, second);
}

INT_PTR CALLBACK skip_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    return select_function(kinds[2], dialog, message, first, second);
}

selection select_for_settings(int index)
{
    HWND dialog = dialog_of(index);
    return selection{dialog ? list_of(dialog, kinds[index]) : nullptr, kinds[index].sets};
}

void select_take_over(int index)
{
    if (HWND dialog = dialog_of(index))
        select_apply(dialog, kinds[index]);
}
