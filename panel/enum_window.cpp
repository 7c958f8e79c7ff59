// The Enumerates window: the enumerants of master with their numbers, searched as text, so that a
// number read in a history finds its name and a name its number.
#include "panel/panel.h"

#include "panel/enum_text.h"
#include "panel/panel_text.h"
#include "panel/resource.h"

// Filled once: the table does not change.
static void fill_enumerants(HWND dialog)
{
    HWND list = GetDlgItem(dialog, IDC_ENUM_LIST);
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    const master *names = current_record()->master;
    for (int row = 0; row < ENUMERANT_ROWS_COPIED; ++row) {
        char text[ENUM_LIST_TEXT_SIZE];
        enumerant_list_text(&names->enumerants[row], text);
        SendMessageA(list, LB_ADDSTRING, 0, (LPARAM)text);
    }
}

INT_PTR CALLBACK enumerants_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_INITDIALOG:
        fill_enumerants(dialog);
        return TRUE;
    case WM_SIZE:
        if (first == SIZE_RESTORED) {
            int width = LOWORD(second), height = HIWORD(second);
            reach_right(dialog, IDC_ENUM_TEXT, width);
            centre_at_bottom(dialog, IDC_ENUM_CLOSE, width, height);
            fill_above(dialog, IDC_ENUM_LIST, width, IDC_ENUM_CLOSE);
        }
        return TRUE;
    case WM_CLOSE:
        panel_hide(dialog, SHOWN_ENUMERANTS);
        return TRUE;
    case WM_DESTROY:
        DestroyWindow(dialog);
        return TRUE;
    case WM_COMMAND:
        switch (LOWORD(first)) {
        case IDC_ENUM_SEARCH:
            search_list(dialog, IDC_ENUM_LIST, IDC_ENUM_TEXT);
            return TRUE;
        case IDC_ENUM_CLOSE:
            SendMessageA(dialog, WM_CLOSE, 0, 0);
            return TRUE;
        }
        return FALSE;
    default:
        return FALSE;
    }
}
