// The control window and the About box: their window functions, the end of everything, and
// the entry points through which the application's thread updates the control window.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"
#include "panel/settings.h"

#include "session/context.h"
#include "records/mmaps.h"
#include "records/rings.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>

static void set_control_text(const thread_record *record, int id, const char *text)
{
    if (record && record->control_window)
        SendDlgItemMessageA(record->control_window, id, WM_SETTEXT, 0, (LPARAM)text);
}

void show_status(const char *text) { set_control_text(current_record(), IDC_STATUS, text); }

void show_last_call()
{
    const thread_record *record = current_record();
    if (record)
        set_control_text(record, IDC_LAST_CALL, record->per_proc->last_call_text);
}

// Asked at every switch of context: posted, so that the program does not wait on the panel
// thread; a halt writes them before the panel is looked at.
void show_thread_and_context()
{
    const thread_record *record = current_record();
    if (record && record->control_window)
        PostMessageA(record->control_window, WM_PANEL_BANNERS, 0, 0);
}

static void write_banners()
{
    const thread_record *record = current_record();
    if (!record)
        return;
    char text[PANEL_TEXT_SIZE];
    thread_banner_text(record->per_proc, text);
    set_control_text(record, IDC_THREAD_BANNER, text);
    context_banner_text(record->per_gl, text);
    set_control_text(record, IDC_CONTEXT_BANNER, text);
}

// Windows refreshed at a halt when they are on screen, in this order.
static const int refreshed_at_halt[] = {
    SHOWN_CALL_COUNT, SHOWN_PRIM_COUNT, SHOWN_HISTORY_SELECT, SHOWN_LIST_SELECT, SHOWN_WINDOW_INFO,
};

void panel_update_all()
{
    const thread_record *record = current_record();
    if (!record)
        return;
    if (record->control_window)
        SendMessageA(record->control_window, WM_PANEL_BANNERS, 0, 0);
    show_last_call();
    for (int index : refreshed_at_halt) {
        HWND window = window_of_shown_index(record, index);
        // Sent, not posted: the halted application waits until every window has redrawn.
        if (record->per_proc->shown[index] == 1 && window)
            SendMessageA(window, WM_PANEL_REFRESH, 0, 0);
    }
    history_refresh_all();
    list_windows_refresh_all();
    state_refresh_all();
}

void panel_quit()
{
    // Halt first, so that no application thread is inside a real call while its session goes.
    for (int row = 0; row < named_blocks.count; ++row)
        if (named_blocks.rows[row].kind == BLOCK_PER_PROC)
            post_event(&((per_proc *)named_blocks.rows[row].block)->ring_to_app, EVENT_HALT);
    for (int row = 0; row < named_blocks.count; ++row)
        if (named_blocks.rows[row].kind == BLOCK_THREAD_RECORD)
            close_session((thread_record *)named_blocks.rows[row].block);
    // The application ends with the debugger; settings are not saved.
    ExitProcess(0);
}

static void carry_out(thread_record *record, HWND dialog, const control_action &action)
{
    per_proc *proc = record->per_proc;
    switch (action.kind) {
    case COMMAND_QUIT:
        // The same end as closing the window, reached without a WM_CLOSE.
        SendMessageA(dialog, WM_DESTROY, 0, 0);
        return;
    case COMMAND_SAVE_SETTINGS: {
        char path[MAX_PATH];
        if (ask_save_file(dialog, path, "quondale.cfg"))
            settings_save(path);
        return;
    }
    case COMMAND_LOAD_SETTINGS: {
        char path[MAX_PATH];
        if (ask_open_file(dialog, path, "quondale.cfg"))
            settings_load(path);
        return;
    }
    default:
        break;
    }
    if (action.status)
        SetDlgItemTextA(dialog, IDC_STATUS, action.status);
    if (action.event)
        post_event(&proc->ring_to_app, action.event);
    HWND window = window_of_shown_index(record, action.shown_index);
    if (!window)
        return; // windows of later work: nothing to show yet
    if (action.refresh)
        SendMessageA(window, WM_PANEL_REFRESH, 0, 0);
    panel_show(window, action.shown_index);
}

INT_PTR CALLBACK control_window_function(HWND dialog, UINT message, WPARAM first, LPARAM)
{
    thread_record *record = current_record();
    switch (message) {
    case WM_INITDIALOG:
        record->per_proc->History = 1;
        CheckDlgButton(dialog, IDC_HISTORY, BST_CHECKED);
        return TRUE;
    case WM_PANEL_BANNERS:
        write_banners();
        return TRUE;
    case WM_CLOSE:
        SendMessageA(dialog, WM_DESTROY, 0, 0);
        return TRUE;
    case WM_DESTROY:
        panel_quit(); // does not return
    case WM_COMMAND: {
        // The notification code is not looked at: a menu item and a button click are alike.
        int id = LOWORD(first);
        int check = (int)SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0);
        carry_out(record, dialog, control_command(record->per_proc, id, check));
        return TRUE;
    }
    default:
        return FALSE;
    }
}

INT_PTR CALLBACK about_window_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    // Closing only hides: the box lives as long as the process.
    static const dialog_skeleton about = {
        .shown_index = SHOWN_ABOUT, .close_id = IDC_ABOUT_CLOSE, .takes_every_command = true};
    if (message == WM_INITDIALOG)
        return TRUE;
    return dialog_default(about, dialog, message, first, second);
}
