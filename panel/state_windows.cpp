// Select State and the State windows: the catalogue's rows filtered by comparing their current
// values with the default and with the last snapshot, and one row's three values side by side.
// The values were read by the application's thread at the halt; the panel only reads them.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"
#include "panel/state_text.h"

#include <cstdio>
#include <cstring>

bool state_can_scan()
{
    const thread_record *record = current_record();
    const char *reason = nullptr;
    if (record->per_proc->run_state != RUN_HALTED)
        reason = "App needs to be halted.";
    else if (record->per_gl->handle == 0)
        reason = "No GL context.";
    else if (record->per_gl->in_begin_end == 1)
        reason = "In glBegin/glEnd pair.";
    if (reason)
        panel_warning("State cannot be scanned at this time.\r\n%s", reason);
    return reason == nullptr;
}

// The filters compare the bytes of count values: -0.0 is not 0.0, and a NaN equals its bits.
static bool differs(const float *a, const float *b, int32_t count)
{
    return memcmp(a, b, sizeof(float) * (size_t)count) != 0;
}

static void state_select_refresh(HWND dialog, WPARAM, LPARAM)
{
    const thread_record *record = current_record();
    HWND list = GetDlgItem(dialog, IDC_STATE_LIST);
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    if (!state_can_scan())
        return;
    HMENU menu = GetMenu(dialog);
    bool non_default = GetMenuState(menu, IDM_NON_DEFAULT_STATE, MF_BYCOMMAND) & MF_CHECKED;
    bool from_snapshot = GetMenuState(menu, IDM_DIFF_FROM_SNAPSHOT, MF_BYCOMMAND) & MF_CHECKED;
    for (int row = 0; row < STATE_ROW_COUNT; ++row) {
        const state_row *catalogue = &record->master->state_rows[row];
        const state_values *values = &record->per_gl->state[row];
        if (non_default && !differs(values->current, values->default_values, catalogue->count))
            continue;
        if (from_snapshot && !differs(values->current, values->snapshot, catalogue->count))
            continue;
        // The list keeps the catalogue's order; its row is where the entry went all the same.
        LRESULT at = SendMessageA(list, LB_ADDSTRING, 0, (LPARAM)catalogue->name);
        SendMessageA(list, LB_SETITEMDATA, at, row);
    }
}

// A State window: its row's three values; it takes no other command than Close.
static void state_value_refresh(HWND dialog, WPARAM first, LPARAM)
{
    if (first >= STATE_ROW_COUNT)
        return;
    const thread_record *record = current_record();
    const state_row *catalogue = &record->master->state_rows[first];
    const state_values *values = &record->per_gl->state[first];
    const enumerant_row *names = record->master->enumerants;
    char text[STATE_TEXT_SIZE];
    SetDlgItemTextA(dialog, IDC_STATE_NAME, catalogue->name);
    text[0] = 0;
    if (state_can_scan())
        state_text("", catalogue->type, catalogue->count, values->current, names, text);
    SetDlgItemTextA(dialog, IDC_STATE_CURRENT, text);
    state_text("", catalogue->type, catalogue->count, values->snapshot, names, text);
    SetDlgItemTextA(dialog, IDC_STATE_SNAPSHOT_TEXT, text);
    state_text("", catalogue->type, catalogue->count, values->default_values, names, text);
    SetDlgItemTextA(dialog, IDC_STATE_DEFAULT, text);
}

static const dialog_skeleton state_value = {
    .shown_index = SHOWN_NONE, .close_id = IDC_STATE_VALUE_CLOSE, .refresh = state_value_refresh};

// The picked row's State window, made on its first pick.
static void open_state_value(HWND dialog)
{
    thread_record *record = current_record();
    LRESULT row = selected_item(dialog, IDC_STATE_LIST);
    if (row < 0 || row >= STATE_ROW_COUNT)
        return;
    HWND window = (HWND)record->state_value_window[row];
    if (!IsWindow(window)) {
        window = CreateDialogParamA((HINSTANCE)record->module, MAKEINTRESOURCEA(IDD_STATE_VALUE), nullptr,
                                    skeleton_function, (LPARAM)&state_value);
        record->state_value_window[row] = (WindowHandle)window;
    }
    ShowWindow(window, SW_SHOW);
    SendMessageA(window, WM_PANEL_REFRESH, (WPARAM)row, 0);
}

static void take_snapshot()
{
    thread_record *record = current_record();
    for (int row = 0; row < STATE_ROW_COUNT; ++row) {
        state_values *values = &record->per_gl->state[row];
        memcpy(values->snapshot, values->current, sizeof(float) * (size_t)record->master->state_rows[row].count);
    }
}

static void state_save(HWND dialog)
{
    FILE *file = ask_save_text_file(dialog, "state.txt");
    if (!file)
        return;
    const thread_record *record = current_record();
    bool fresh = record->per_gl->handle != 0 && record->per_gl->in_begin_end == 0;
    HWND list = GetDlgItem(dialog, IDC_STATE_LIST);
    int count = (int)SendMessageA(list, LB_GETCOUNT, 0, 0);
    static char block[STATE_SAVE_BLOCK_SIZE];
    for (int entry = 0; entry < count; ++entry) {
        LRESULT row = SendMessageA(list, LB_GETITEMDATA, entry, 0);
        if (row < 0 || row >= STATE_ROW_COUNT)
            continue;
        state_save_block(&record->master->state_rows[row], &record->per_gl->state[row], fresh,
                         record->master->enumerants, block);
        fputs(block, file);
    }
    fclose(file);
}

static void toggle_filter(HWND dialog, int id)
{
    HMENU menu = GetMenu(dialog);
    bool checked = GetMenuState(menu, id, MF_BYCOMMAND) & MF_CHECKED;
    CheckMenuItem(menu, id, MF_BYCOMMAND | (checked ? MF_UNCHECKED : MF_CHECKED));
    state_select_refresh(dialog, 0, 0);
}

static const dialog_skeleton state_select = {
    .layout_id = IDD_STATE_SELECT, .shown_index = SHOWN_STATE_SELECT, .close_id = IDC_STATE_CLOSE,
    .refresh = state_select_refresh, .list_id = IDC_STATE_LIST, .search_id = IDC_STATE_SEARCH,
    .search_text_id = IDC_STATE_SEARCH_TEXT};

INT_PTR CALLBACK state_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_COMMAND) {
        switch (LOWORD(first)) {
        case IDM_NON_DEFAULT_STATE:
        case IDM_DIFF_FROM_SNAPSHOT:
            toggle_filter(dialog, LOWORD(first));
            return TRUE;
        case IDC_STATE_LIST:
            if (HIWORD(first) == LBN_SELCHANGE)
                open_state_value(dialog);
            return TRUE;
        case IDC_STATE_SNAPSHOT:
            take_snapshot(); // no refresh: the next halt or a Scan item shows it
            return TRUE;
        case IDC_STATE_SAVE:
            state_save(dialog);
            return TRUE;
        }
    }
    return dialog_default(state_select, dialog, message, first, second);
}

void state_refresh_all()
{
    const thread_record *record = current_record();
    if (record->per_proc->shown[SHOWN_STATE_SELECT] == 1 && record->state_select_window)
        SendMessageA((HWND)record->state_select_window, WM_PANEL_REFRESH, 0, 0);
    for (int row = 0; row < STATE_ROW_COUNT; ++row) {
        HWND window = (HWND)record->state_value_window[row];
        if (window && IsWindow(window) && on_screen(window))
            SendMessageA(window, WM_PANEL_REFRESH, (WPARAM)row, 0);
    }
}
