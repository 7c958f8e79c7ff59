// The Call Count and Primitive Count windows: views of the session's counters.
#include "panel/panel.h"

#include "analysis/counters.h"
#include "panel/count_text.h"
#include "panel/panel_text.h"
#include "panel/resource.h"

static void add_list_row(void *list, const char *row) { SendMessageA((HWND)list, LB_ADDSTRING, 0, (LPARAM)row); }

static void call_count_refresh(HWND dialog, WPARAM, LPARAM)
{
    const thread_record *record = current_record();
    // The check mark of the menu item is the only store of this choice.
    bool nonzero_only = GetMenuState(GetMenu(dialog), IDM_NON_ZERO_CALLS, MF_BYCOMMAND) & MF_CHECKED;
    HWND list = GetDlgItem(dialog, IDC_CALL_COUNT_LIST);
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    call_count_rows(record->per_proc, record->master, nonzero_only, add_list_row, list);
}

static const dialog_skeleton call_count = {
    .layout_id = IDD_CALL_COUNT, .shown_index = SHOWN_CALL_COUNT, .close_id = IDC_CALL_COUNT_CLOSE,
    .refresh = call_count_refresh, .list_id = IDC_CALL_COUNT_LIST, .search_id = IDC_CALL_COUNT_SEARCH,
    .search_text_id = IDC_CALL_COUNT_TEXT, .save_id = IDC_CALL_COUNT_SAVE, .save_name = "callcount.txt"};

INT_PTR CALLBACK call_count_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_COMMAND && LOWORD(first) == IDM_NON_ZERO_CALLS) {
        HMENU menu = GetMenu(dialog);
        bool checked = GetMenuState(menu, IDM_NON_ZERO_CALLS, MF_BYCOMMAND) & MF_CHECKED;
        CheckMenuItem(menu, IDM_NON_ZERO_CALLS, MF_BYCOMMAND | (checked ? MF_UNCHECKED : MF_CHECKED));
        call_count_refresh(dialog, 0, 0);
        return TRUE;
    }
    if (message == WM_COMMAND && LOWORD(first) == IDC_CALL_COUNT_CLEAR) {
        // On the counters directly, without asking the application's thread.
        clear_call_counts(current_record()->per_proc);
        call_count_refresh(dialog, 0, 0);
        return TRUE;
    }
    return dialog_default(call_count, dialog, message, first, second);
}

static const dialog_skeleton prim_count = {
    .layout_id = IDD_PRIM_COUNT, .shown_index = SHOWN_PRIM_COUNT, .close_id = IDC_PRIM_COUNT_CLOSE,
    .text_id = IDC_PRIM_COUNT_TEXT,
    .text = [](const thread_record *record, char *out) { prim_count_text(record->per_proc, out); },
    .save_id = IDC_PRIM_COUNT_SAVE, .save_name = "primcount.txt"};

INT_PTR CALLBACK prim_count_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_COMMAND && LOWORD(first) == IDC_PRIM_COUNT_CLEAR) {
        clear_primitive_counts(current_record()->per_proc);
        SendMessageA(dialog, WM_PANEL_REFRESH, 0, 0);
        return TRUE;
    }
    return dialog_default(prim_count, dialog, message, first, second);
}
