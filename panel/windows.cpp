// What the panel's windows share on the panel thread.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/search.h"
#include "session/context.h"
#include "session/mmaps.h"
#include "session/report.h"

#include <commdlg.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

thread_record *current_record() { return (thread_record *)TlsGetValue(session_tls); }

void panel_show(HWND window, int index)
{
    ShowWindow(window, SW_SHOW);
    current_record()->per_proc->shown[index] = 1;
}

void panel_hide(HWND window, int index)
{
    ShowWindow(window, SW_HIDE);
    current_record()->per_proc->shown[index] = 0;
}

bool on_screen(HWND window)
{
    return IsWindow(window) && (GetWindowLongA(window, GWL_STYLE) & WS_VISIBLE);
}

void panel_warning(const char *format, ...)
{
    char text[PANEL_TEXT_SIZE];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    panel_loader_release();
    MessageBoxA(nullptr, text, "Warning", MB_ICONEXCLAMATION | MB_SYSTEMMODAL);
}

HWND control_rect(HWND dialog, int id, RECT *rect)
{
    HWND control = GetDlgItem(dialog, id);
    GetWindowRect(control, rect);
    MapWindowPoints(nullptr, dialog, (POINT *)rect, 2);
    return control;
}

static void place(HWND control, int left, int top, int width, int height)
{
    MoveWindow(control, left, top, width, height, TRUE);
}

void reach_right(HWND dialog, int id, int width)
{
    RECT r;
    HWND control = control_rect(dialog, id, &r);
    place(control, r.left, r.top, width - 4 - r.left, r.bottom - r.top);
}

void keep_left_at_bottom(HWND dialog, int id, int height)
{
    RECT r;
    HWND control = control_rect(dialog, id, &r);
    place(control, r.left, height - 4 - (r.bottom - r.top), r.right - r.left, r.bottom - r.top);
}

void end_right_at_bottom(HWND dialog, int id, int width, int height)
{
    RECT r;
    HWND control = control_rect(dialog, id, &r);
    int w = r.right - r.left, h = r.bottom - r.top;
    place(control, width - 8 - w, height - 4 - h, w, h);
}

void centre_at_bottom(HWND dialog, int id, int width, int height)
{
    RECT r;
    HWND control = control_rect(dialog, id, &r);
    int w = r.right - r.left, h = r.bottom - r.top;
    place(control, (width - w) / 2, height - 4 - h, w, h);
}

void fill_above(HWND dialog, int id, int width, int below_id)
{
    RECT r, below;
    HWND control = control_rect(dialog, id, &r);
    control_rect(dialog, below_id, &below);
    place(control, r.left, r.top, width - 4 - r.left, below.top - 4 - r.top);
}

static void search_failed(HWND dialog, int search_id, const char *needle)
{
    char text[SEARCH_TEXT_SIZE + 16];
    not_found_text(needle, text);
    SetDlgItemTextA(dialog, search_id, text);
}

static const char *list_row_text(void *list, int row, char *buffer)
{
    LRESULT length = SendMessageA((HWND)list, LB_GETTEXTLEN, row, 0);
    if (length < 0 || length >= LIST_ROW_SIZE)
        return nullptr;
    SendMessageA((HWND)list, LB_GETTEXT, row, (LPARAM)buffer);
    return buffer;
}

void search_list(HWND dialog, int list_id, int search_id)
{
    char needle[SEARCH_TEXT_SIZE];
    GetDlgItemTextA(dialog, search_id, needle, sizeof needle);
    HWND list = GetDlgItem(dialog, list_id);
    int count = (int)SendMessageA(list, LB_GETCOUNT, 0, 0);
    int selected = (int)SendMessageA(list, LB_GETCURSEL, 0, 0);
    int top = (int)SendMessageA(list, LB_GETTOPINDEX, 0, 0);
    int found = list_search(count, selected, top, needle, list_row_text, list);
    if (found >= 0)
        SendMessageA(list, LB_SETCURSEL, found, 0);
    else
        search_failed(dialog, search_id, needle);
}

void search_text(HWND dialog, int text_id, int search_id)
{
    HWND control = GetDlgItem(dialog, text_id);
    long length = (long)SendMessageA(control, WM_GETTEXTLENGTH, 0, 0);
    char *text = (char *)block_alloc((size_t)length + 1);
    if (!text) {
        fatal_report("ui_history", __LINE__, "Out of memory.");
        session_exit(1);
    }
    SendMessageA(control, WM_GETTEXT, (WPARAM)length + 1, (LPARAM)text);
    DWORD selection_end = 0;
    SendMessageA(control, EM_GETSEL, 0, (LPARAM)&selection_end);
    char needle[SEARCH_TEXT_SIZE];
    GetDlgItemTextA(dialog, search_id, needle, sizeof needle);
    long found = text_search(text, length, (long)selection_end, needle);
    if (found >= 0) {
        SendMessageA(control, EM_SETSEL, found, found + (long)strlen(needle));
        SendMessageA(control, EM_SCROLLCARET, 0, 0);
    } else {
        search_failed(dialog, search_id, needle);
    }
    block_free(text);
}

// Both file dialogs plainly: no filter, no title of their own, the same flags.
static bool ask_file(HWND owner, char *buffer, const char *default_name, BOOL(WINAPI *ask)(OPENFILENAMEA *))
{
    snprintf(buffer, MAX_PATH, "%s", default_name);
    OPENFILENAMEA dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFile = buffer;
    dialog.nMaxFile = MAX_PATH;
    dialog.Flags = OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST;
    panel_loader_release();
    return ask(&dialog) != 0;
}

bool ask_save_file(HWND owner, char *buffer, const char *default_name)
{
    return ask_file(owner, buffer, default_name, GetSaveFileNameA);
}

bool ask_open_file(HWND owner, char *buffer, const char *default_name)
{
    return ask_file(owner, buffer, default_name, GetOpenFileNameA);
}

bool save_edit_text(HWND dialog, int id, const char *path)
{
    FILE *file = fopen(path, "w");
    if (!file)
        return false;
    HWND control = GetDlgItem(dialog, id);
    int length = (int)SendMessageA(control, WM_GETTEXTLENGTH, 0, 0);
    char *text = (char *)block_alloc((size_t)length + 1);
    if (!text) {
        fatal_report("ui_history", __LINE__, "Out of memory.");
        session_exit(1);
    }
    SendMessageA(control, WM_GETTEXT, (WPARAM)length + 1, (LPARAM)text);
    fprintf(file, "%s", text);
    block_free(text);
    fclose(file);
    return true;
}

bool save_list_text(HWND dialog, int list_id, const char *path)
{
    FILE *file = fopen(path, "w");
    if (!file)
        return false;
    HWND list = GetDlgItem(dialog, list_id);
    int count = (int)SendMessageA(list, LB_GETCOUNT, 0, 0);
    for (int row = 0; row < count; ++row) {
        char text[LIST_ROW_SIZE];
        if (list_row_text(list, row, text))
            fprintf(file, "%s\n", text);
    }
    fclose(file);
    return true;
}

void save_edit_text_as(HWND dialog, int id, const char *default_name)
{
    char path[MAX_PATH];
    if (ask_save_file(dialog, path, default_name))
        save_edit_text(dialog, id, path);
}

per_gl *open_per_gl(const thread_record *record, int32_t context)
{
    char name[NAME_SIZE];
    name_of_per_gl(record->temp_dir, (uint32_t)context, name);
    per_gl *gl = find_per_gl(name);
    if (!gl) {
        fatal_report("ui_history", __LINE__, "Could not open perGL.");
        session_exit(1);
    }
    return gl;
}
