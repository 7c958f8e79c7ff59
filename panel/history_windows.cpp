// The call history in two steps: the list of the session's GL contexts (dialog 901), and a
// Call History window for each context (dialog 801) with the whole file as text.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"
#include "records/mmaps.h"
#include "records/rings.h"

#include <cstdio>

void fill_context_list(HWND list)
{
    const thread_record *record = current_record();
    const master *names = record->master;
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    for (int32_t row = 0; row < names->gl_count; ++row) {
        if (names->gl_table[row].proc_id != (int32_t)record->per_proc->id)
            continue;
        char text[PANEL_TEXT_SIZE];
        snprintf(text, sizeof text, "GL context %d", names->gl_table[row].gl_id);
        // The list sorts by text (context 10 before 2): the item data, not the place, is the row.
        LRESULT at = SendMessageA(list, LB_ADDSTRING, 0, (LPARAM)text);
        SendMessageA(list, LB_SETITEMDATA, at, row);
    }
}

static INT_PTR CALLBACK history_function(HWND dialog, UINT message, WPARAM first, LPARAM second);

// A pick in a context list: the context's window below it, made on its first pick.
static void open_context_window(const context_chooser &chooser, HWND dialog)
{
    thread_record *record = current_record();
    int32_t row = (int32_t)selected_item(dialog, chooser.list_id);
    if (row < 0)
        return;
    per_gl *gl = open_per_gl(record, record->master->gl_table[row].handle);
    if (!IsWindow(gl->*chooser.window))
        gl->*chooser.window = CreateDialogParamA((HINSTANCE)record->module, MAKEINTRESOURCEA(chooser.template_id),
                                                 nullptr, chooser.window_function, 0);
    ShowWindow(gl->*chooser.window, SW_SHOW);
    SendMessageA(gl->*chooser.window, WM_PANEL_REFRESH, row, 0);
}

INT_PTR context_chooser_function(const context_chooser &chooser, HWND dialog, UINT message, WPARAM first,
                                 LPARAM second)
{
    // A single click is enough: any change of the selection opens the context's window.
    if (message == WM_COMMAND && LOWORD(first) == chooser.list_id && HIWORD(first) == LBN_SELCHANGE) {
        open_context_window(chooser, dialog);
        return TRUE;
    }
    if (message == WM_PANEL_REFRESH) {
        fill_context_list(GetDlgItem(dialog, chooser.list_id));
        return TRUE;
    }
    const dialog_skeleton skeleton = {.layout_id = chooser.layout_id, .shown_index = chooser.shown_index,
                                      .close_id = chooser.close_id, .takes_every_command = true};
    return dialog_default(skeleton, dialog, message, first, second);
}

INT_PTR CALLBACK history_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    static const context_chooser history = {IDC_HISTORY_SELECT_LIST, IDC_HISTORY_SELECT_CLOSE, SHOWN_HISTORY_SELECT,
                                            &per_gl::history_window, IDD_HISTORY, history_function, IDD_HISTORY_SELECT};
    return context_chooser_function(history, dialog, message, first, second);
}

// The context row stands in the window's user data.
static void history_refresh(HWND dialog, WPARAM first, LPARAM)
{
    SetWindowLongPtrA(dialog, DWLP_USER, (LONG_PTR)first);
    const thread_record *record = current_record();
    char path[NAME_SIZE + 32];
    int32_t row = (int32_t)first;
    snprintf(path, sizeof path, "%s\\history\\%d.gls", record->temp_dir, record->master->gl_table[row].handle);
    // Read in text mode: the CR CR LF of the file comes back as the CR LF an edit control wants.
    char *text = read_whole_file(path);
    SetDlgItemTextA(dialog, IDC_HISTORY_TEXT, text ? text : "");
    if (text)
        block_free(text);
}

static const dialog_skeleton history = {
    .layout_id = IDD_HISTORY, .shown_index = SHOWN_NONE, .close_id = IDC_HISTORY_CLOSE, .refresh = history_refresh,
    .text_id = IDC_HISTORY_TEXT, .search_id = IDC_HISTORY_SEARCH, .search_text_id = IDC_HISTORY_SEARCH_TEXT,
    .save_id = IDC_HISTORY_SAVE, .save_name = "history.txt"};

static INT_PTR CALLBACK history_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_COMMAND && LOWORD(first) == IDC_HISTORY_CLEAR) {
        // The application's thread truncates the current context's file at its next wrapper
        // and then has the open windows read it again (event 7).
        post_event(&current_record()->per_proc->ring_to_app, EVENT_CLEAR_HISTORY);
        return TRUE;
    }
    return dialog_default(history, dialog, message, first, second);
}

void history_refresh_all()
{
    const thread_record *record = current_record();
    if (!record || !record->master)
        return;
    const master *names = record->master;
    for (int32_t row = 0; row < names->gl_count; ++row) {
        if (names->gl_table[row].proc_id != (int32_t)record->per_proc->id)
            continue;
        per_gl *gl = open_per_gl(record, names->gl_table[row].handle);
        if (on_screen(gl->history_window))
            SendMessageA(gl->history_window, WM_PANEL_REFRESH, row, 0);
    }
}
