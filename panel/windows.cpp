// What the panel's windows share on the panel thread.
#include "panel/panel.h"

#include "panel/count_text.h"
#include "panel/panel_text.h"
#include "panel/resource.h"
#include "panel/search.h"
#include "session/context.h"
#include "records/mmaps.h"
#include "records/report.h"

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

LRESULT selected_item(HWND dialog, int list_id)
{
    HWND list = GetDlgItem(dialog, list_id);
    LRESULT selected = SendMessageA(list, LB_GETCURSEL, 0, 0);
    return selected < 0 ? -1 : SendMessageA(list, LB_GETITEMDATA, selected, 0);
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

// A control's whole text in a block of block_alloc, and its length; out of memory is fatal.
static char *whole_text(HWND control, long *length)
{
    *length = (long)SendMessageA(control, WM_GETTEXTLENGTH, 0, 0);
    char *text = (char *)block_alloc((size_t)*length + 1);
    if (!text) {
        fatal_report("ui_history", __LINE__, "Out of memory.");
        session_exit(1);
    }
    SendMessageA(control, WM_GETTEXT, (WPARAM)*length + 1, (LPARAM)text);
    return text;
}

void search_text(HWND dialog, int text_id, int search_id)
{
    HWND control = GetDlgItem(dialog, text_id);
    long length = 0;
    char *text = whole_text(control, &length);
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

FILE *ask_save_text_file(HWND owner, const char *default_name)
{
    char path[MAX_PATH];
    return ask_save_file(owner, path, default_name) ? fopen(path, "w") : nullptr;
}

// Where a rule puts a control that stands at rect in a client area of width by height; below is
// the control a FILL_ABOVE reaches down to.
static RECT laid_out(int rule, RECT rect, RECT below, int width, int height)
{
    int w = rect.right - rect.left, h = rect.bottom - rect.top;
    int room = width - (w / 2 * 2 + 16); // beside the outer two of a row of four alike
    int left = rect.left;
    switch (rule) {
    case LAYOUT_STRETCH_OVER: return RECT{left, rect.top, width, rect.bottom};
    case LAYOUT_STRETCH_RIGHT: return RECT{left, rect.top, width - 4, rect.bottom};
    case LAYOUT_FILL_ABOVE: return RECT{left, rect.top, width - 4, below.top - 4};
    case LAYOUT_BOTTOM_CENTRE: left = (width - w) / 2; break;
    case LAYOUT_BOTTOM_END: left = width - 8 - w; break;
    case LAYOUT_BOTTOM_FIRST_THIRD: left = room / 3 + 8; break;
    case LAYOUT_BOTTOM_SECOND_THIRD: left = 2 * room / 3 + 8; break;
    default: break; // LAYOUT_BOTTOM_LEFT
    }
    return RECT{left, height - 4 - h, left + w, height - 4};
}

// A control's rectangle in the dialog's client coordinates.
static RECT client_rect(HWND control, HWND dialog)
{
    RECT rect;
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, dialog, (POINT *)&rect, 2);
    return rect;
}

static void lay_out(const dialog_skeleton &skeleton, HWND dialog, int width, int height)
{
    // The rules lie in the module's resources, beside the template they lay out.
    HINSTANCE module = (HINSTANCE)GetWindowLongPtrA(dialog, GWLP_HINSTANCE);
    HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(skeleton.layout_id), (LPCSTR)RT_RCDATA);
    const WORD *rule = found ? (const WORD *)LockResource(LoadResource(module, found)) : nullptr;
    for (; rule && rule[0]; rule += 3) {
        HWND control = GetDlgItem(dialog, skeleton.base + rule[0]);
        RECT below = rule[1] == LAYOUT_FILL_ABOVE ? client_rect(GetDlgItem(dialog, skeleton.base + rule[2]), dialog)
                                                  : RECT{};
        RECT to = laid_out(rule[1], client_rect(control, dialog), below, width, height);
        MoveWindow(control, to.left, to.top, to.right - to.left, to.bottom - to.top, TRUE);
    }
}

static void search(const dialog_skeleton &skeleton, HWND dialog)
{
    if (skeleton.list_id)
        search_list(dialog, skeleton.list_id, skeleton.search_text_id);
    else
        search_text(dialog, skeleton.text_id, skeleton.search_text_id);
}

// The list's rows by "%s\n", or the text control's whole text by "%s".
static void save(const dialog_skeleton &skeleton, HWND dialog)
{
    FILE *file = ask_save_text_file(dialog, skeleton.save_name);
    if (!file)
        return;
    if (skeleton.list_id) {
        HWND list = GetDlgItem(dialog, skeleton.list_id);
        int count = (int)SendMessageA(list, LB_GETCOUNT, 0, 0);
        for (int row = 0; row < count; ++row) {
            char text[LIST_ROW_SIZE];
            if (list_row_text(list, row, text))
                fprintf(file, "%s\n", text);
        }
    } else {
        long length = 0;
        char *text = whole_text(GetDlgItem(dialog, skeleton.text_id), &length);
        fprintf(file, "%s", text);
        block_free(text);
    }
    fclose(file);
}

static void refresh(const dialog_skeleton &skeleton, HWND dialog, WPARAM first, LPARAM second)
{
    static_assert((int)WINDOW_INFO_TEXT_SIZE <= (int)WINDOW_TEXT_SIZE, "the text windows share one buffer size");
    if (skeleton.refresh) {
        skeleton.refresh(dialog, first, second);
        return;
    }
    char text[WINDOW_TEXT_SIZE];
    skeleton.text(current_record(), text);
    SetDlgItemTextA(dialog, skeleton.text_id, text);
}

INT_PTR dialog_default(const dialog_skeleton &skeleton, HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_SIZE:
        if (!skeleton.layout_id)
            return FALSE;
        if (first == SIZE_RESTORED)
            lay_out(skeleton, dialog, LOWORD(second), HIWORD(second));
        return TRUE;
    case WM_CLOSE:
        // Only hidden: the window keeps its handle, its texts and its place.
        if (skeleton.shown_index == SHOWN_NONE)
            ShowWindow(dialog, SW_HIDE);
        else
            panel_hide(dialog, skeleton.shown_index);
        return TRUE;
    case WM_DESTROY:
        DestroyWindow(dialog);
        return TRUE;
    case WM_PANEL_REFRESH:
        if (!skeleton.refresh && !skeleton.text)
            return FALSE;
        refresh(skeleton, dialog, first, second);
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(first) == skeleton.base + skeleton.close_id)
            SendMessageA(dialog, WM_CLOSE, 0, 0);
        else if (skeleton.search_id && LOWORD(first) == skeleton.search_id)
            search(skeleton, dialog);
        else if (skeleton.save_id && LOWORD(first) == skeleton.save_id)
            save(skeleton, dialog);
        else
            return skeleton.takes_every_command;
        return TRUE;
    default:
        return FALSE;
    }
}

INT_PTR CALLBACK skeleton_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    // Messages before WM_INITDIALOG come while the dialog has no controls yet: nothing to do.
    if (message == WM_INITDIALOG)
        SetWindowLongPtrA(dialog, GWLP_USERDATA, second);
    const dialog_skeleton *skeleton = (const dialog_skeleton *)GetWindowLongPtrA(dialog, GWLP_USERDATA);
    return skeleton ? dialog_default(*skeleton, dialog, message, first, second) : FALSE;
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
