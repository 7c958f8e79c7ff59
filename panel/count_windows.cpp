// The Call Count and Primitive Count windows: views of the session's counters.
#include "panel/panel.h"

#include "analysis/counters.h"
#include "panel/count_text.h"
#include "panel/panel_text.h"
#include "panel/resource.h"

static void add_list_row(void *list, const char *row) { SendMessageA((HWND)list, LB_ADDSTRING, 0, (LPARAM)row); }

static void call_count_refresh(HWND dialog)
{
    const thread_record *record = current_record();
    // The check mark of the menu item is the only store of this choice.
    bool nonzero_only = GetMenuState(GetMenu(dialog), IDM_NON_ZERO_CALLS, MF_BYCOMMAND) & MF_CHECKED;
    HWND list = GetDlgItem(dialog, IDC_CALL_COUNT_LIST);
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    call_count_rows(record->per_proc, record->master, nonzero_only, add_list_row, list);
}

static void call_count_layout(HWND dialog, int width, int height)
{
    reach_right(dialog, IDC_CALL_COUNT_LINE, width + 4);
    reach_right(dialog, IDC_CALL_COUNT_TEXT, width);
    keep_left_at_bottom(dialog, IDC_CALL_COUNT_CLEAR, height);
    centre_at_bottom(dialog, IDC_CALL_COUNT_SAVE, width, height);
    end_right_at_bottom(dialog, IDC_CALL_COUNT_CLOSE, width, height);
    fill_above(dialog, IDC_CALL_COUNT_LIST, width, IDC_CALL_COUNT_CLEAR);
}

INT_PTR CALLBACK call_count_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_SIZE:
        if (first == SIZE_RESTORED)
            call_count_layout(dialog, LOWORD(second), HIWORD(second));
        return TRUE;
    case WM_CLOSE:
        panel_hide(dialog, SHOWN_CALL_COUNT);
        return TRUE;
    case WM_DESTROY:
        DestroyWindow(dialog);
        return TRUE;
    case WM_PANEL_REFRESH:
        call_count_refresh(dialog);
        return TRUE;
    case WM_COMMAND:
        switch (LOWORD(first)) {
        case IDM_NON_ZERO_CALLS: {
            HMENU menu = GetMenu(dialog);
            bool checked = GetMenuState(menu, IDM_NON_ZERO_CALLS, MF_BYCOMMAND) & MF_CHECKED;
            CheckMenuItem(menu, IDM_NON_ZERO_CALLS, MF_BYCOMMAND | (checked ? MF_UNCHECKED : MF_CHECKED));
            call_count_refresh(dialog);
            return TRUE;
        }
        case IDC_CALL_COUNT_SEARCH:
            search_list(dialog, IDC_CALL_COUNT_LIST, IDC_CALL_COUNT_TEXT);
            return TRUE;
        case IDC_CALL_COUNT_CLEAR:
            // On the counters directly, without asking the application's thread.
            clear_call_counts(current_record()->per_proc);
            call_count_refresh(dialog);
            return TRUE;
        case IDC_CALL_COUNT_SAVE: {
            char path[MAX_PATH];
            if (ask_save_file(dialog, path, "callcount.txt"))
                save_list_text(dialog, IDC_CALL_COUNT_LIST, path);
            return TRUE;
        }
        case IDC_CALL_COUNT_CLOSE:
            SendMessageA(dialog, WM_CLOSE, 0, 0);
            return TRUE;
        }
        return FALSE;
    default:
        return FALSE;
    }
}

static void prim_count_refresh(HWND dialog)
{
    char text[WINDOW_TEXT_SIZE];
    prim_count_text(current_record()->per_proc, text);
    SetDlgItemTextA(dialog, IDC_PRIM_COUNT_TEXT, text);
}

INT_PTR CALLBACK prim_count_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_SIZE:
        if (first == SIZE_RESTORED) {
            int width = LOWORD(second), height = HIWORD(second);
            keep_left_at_bottom(dialog, IDC_PRIM_COUNT_CLEAR, height);
            centre_at_bottom(dialog, IDC_PRIM_COUNT_SAVE, width, height);
            end_right_at_bottom(dialog, IDC_PRIM_COUNT_CLOSE, width, height);
            fill_above(dialog, IDC_PRIM_COUNT_TEXT, width, IDC_PRIM_COUNT_CLEAR);
        }
        return TRUE;
    case WM_CLOSE:
        panel_hide(dialog, SHOWN_PRIM_COUNT);
        return TRUE;
    case WM_DESTROY:
        DestroyWindow(dialog);
        return TRUE;
    case WM_PANEL_REFRESH:
        prim_count_refresh(dialog);
        return TRUE;
    case WM_COMMAND:
        switch (LOWORD(first)) {
        case IDC_PRIM_COUNT_CLEAR:
            clear_primitive_counts(current_record()->per_proc);
            prim_count_refresh(dialog);
            return TRUE;
        case IDC_PRIM_COUNT_SAVE:
            save_edit_text_as(dialog, IDC_PRIM_COUNT_TEXT, "primcount.txt");
            return TRUE;
        case IDC_PRIM_COUNT_CLOSE:
            SendMessageA(dialog, WM_CLOSE, 0, 0);
            return TRUE;
        }
        return FALSE;
    default:
        return FALSE;
    }
}
