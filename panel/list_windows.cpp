// The display lists, three windows deep: Select GL Context, Select Display List for a context,
// and a Display List window for a list, with its head line and the text of its calls. The rows
// and the calls file belong to the session and are shared by its contexts.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"
#include "records/mmaps.h"
#include "records/report.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// The rows of the session's display lists; fatal when the block is missing.
static list_info_row *open_rows(const thread_record *record)
{
    char name[NAME_SIZE];
    name_of_list_info(record->temp_dir, name);
    list_info_row *rows = find_list_info(name);
    if (!rows) {
        fatal_report("ui_dl", __LINE__, "Could not open displaylist.");
        ExitProcess(1);
    }
    return rows;
}

// The calls of a list as the edit control wants them: the file's bytes from begin to end (to the
// file's end while it is captured), each line end CR CR LF on disk given back as CR LF. The
// positions are the writer's own, so the bytes are read as they lie.
static char *list_text(const thread_record *record, const list_info_row *row)
{
    char path[NAME_SIZE + 16];
    snprintf(path, sizeof path, "%s\\list\\calls", record->temp_dir);
    FILE *file = fopen(path, "rb");
    if (!file)
        return nullptr;
    fseek(file, 0, SEEK_END);
    long size = ftell(file);
    long begin = row->begin < 0 ? 0 : row->begin > size ? size : row->begin;
    long end = row->end < 0 || row->end > size ? size : row->end < begin ? begin : row->end;
    char *text = (char *)malloc((size_t)(end - begin) + 1);
    if (!text) {
        fclose(file);
        return nullptr;
    }
    fseek(file, begin, SEEK_SET);
    size_t count = fread(text, 1, (size_t)(end - begin), file);
    fclose(file);
    size_t kept = 0;
    for (size_t i = 0; i < count; ++i)
        if (!(text[i] == '\r' && i + 1 < count && text[i + 1] == '\r'))
            text[kept++] = text[i];
    text[kept] = 0;
    return text;
}

static void list_window_refresh(HWND dialog, WPARAM, LPARAM second)
{
    const list_info_row *row = (const list_info_row *)second;
    char head[PANEL_TEXT_SIZE];
    list_head_line(row, head);
    SetDlgItemTextA(dialog, IDC_LIST_HEAD, head);
    char *text = list_text(current_record(), row);
    SetDlgItemTextA(dialog, IDC_LIST_TEXT, text ? text : "");
    free(text);
}

// Save: the head line, two line feeds and the calls, in text mode.
static void list_save(HWND dialog)
{
    FILE *file = ask_save_text_file(dialog, "dl.txt");
    if (!file)
        return;
    char head[PANEL_TEXT_SIZE];
    GetDlgItemTextA(dialog, IDC_LIST_HEAD, head, sizeof head);
    fprintf(file, "%s\n\n", head);
    int length = GetWindowTextLengthA(GetDlgItem(dialog, IDC_LIST_TEXT));
    char *text = (char *)malloc((size_t)length + 1);
    if (text) {
        GetDlgItemTextA(dialog, IDC_LIST_TEXT, text, length + 1);
        fputs(text, file);
        free(text);
    }
    fclose(file);
}

static const dialog_skeleton list_skeleton = {
    .layout_id = IDD_LIST, .shown_index = SHOWN_NONE, .close_id = IDC_LIST_CLOSE, .refresh = list_window_refresh,
    .text_id = IDC_LIST_TEXT, .search_id = IDC_LIST_SEARCH, .search_text_id = IDC_LIST_SEARCH_TEXT};

static INT_PTR CALLBACK list_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_COMMAND && LOWORD(first) == IDC_LIST_SAVE) {
        list_save(dialog);
        return TRUE;
    }
    return dialog_default(list_skeleton, dialog, message, first, second);
}

// Select Display List of a context: "List N" for every row, deleted ones too, with the row's
// number as item data; the context row stands in the window's user data.
static void list_select_refresh(HWND dialog, WPARAM first, LPARAM)
{
    int32_t context_row = (int32_t)first;
    const thread_record *record = current_record();
    per_gl *gl = open_per_gl(record, record->master->gl_table[context_row].handle);
    // The block as it is now: another context may have grown it since this one last held it.
    const list_info_row *rows = open_rows(record);
    SetWindowLongPtrA(dialog, GWLP_USERDATA, context_row);
    HWND list = GetDlgItem(dialog, IDC_LIST_SELECT_LIST);
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    for (int32_t row = 0; row < gl->list_count; ++row) {
        char text[PANEL_TEXT_SIZE];
        snprintf(text, sizeof text, "List %d", rows[row].list);
        LRESULT at = SendMessageA(list, LB_ADDSTRING, 0, (LPARAM)text);
        SendMessageA(list, LB_SETITEMDATA, at, row);
    }
}

static void open_list_window(HWND dialog)
{
    thread_record *record = current_record();
    int32_t row = (int32_t)selected_item(dialog, IDC_LIST_SELECT_LIST);
    if (row < 0)
        return;
    int32_t context_row = (int32_t)GetWindowLongPtrA(dialog, GWLP_USERDATA);
    // The context only leads to the rows, which its session's contexts share.
    open_per_gl(record, record->master->gl_table[context_row].handle);
    list_info_row *info = &open_rows(record)[row];
    if (!IsWindow(info->window))
        info->window = CreateDialogParamA((HINSTANCE)record->module, MAKEINTRESOURCEA(IDD_LIST), nullptr,
                                          list_function, 0);
    ShowWindow(info->window, SW_SHOW);
    SendMessageA(info->window, WM_PANEL_REFRESH, 0, (LPARAM)info);
}

// Close hides it under the context list's index: that one leaves the refresh too.
static const dialog_skeleton list_select = {.layout_id = IDD_LIST_SELECT, .shown_index = SHOWN_LIST_SELECT,
                                            .close_id = IDC_LIST_SELECT_CLOSE, .takes_every_command = true,
                                            .refresh = list_select_refresh};

static INT_PTR CALLBACK list_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_COMMAND && LOWORD(first) == IDC_LIST_SELECT_LIST && HIWORD(first) == LBN_SELCHANGE) {
        open_list_window(dialog);
        return TRUE;
    }
    return dialog_default(list_select, dialog, message, first, second);
}

INT_PTR CALLBACK list_context_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    static const context_chooser lists = {IDC_LIST_CONTEXT_LIST, IDC_LIST_CONTEXT_CLOSE, SHOWN_LIST_SELECT,
                                          &per_gl::list_choice_window, IDD_LIST_SELECT, list_select_function,
                                          IDD_LIST_CONTEXT};
    return context_chooser_function(lists, dialog, message, first, second);
}

void list_windows_refresh_all()
{
    const thread_record *record = current_record();
    const master *names = record->master;
    for (int32_t context = 0; context < names->gl_count; ++context) {
        if (names->gl_table[context].proc_id != (int32_t)record->per_proc->id)
            continue;
        per_gl *gl = open_per_gl(record, names->gl_table[context].handle);
        list_info_row *rows = open_rows(record);
        for (int32_t row = 0; row < gl->list_count; ++row)
            if (rows[row].window && IsWindow(rows[row].window) && on_screen(rows[row].window))
                SendMessageA(rows[row].window, WM_PANEL_REFRESH, 0, (LPARAM)&rows[row]);
    }
}
