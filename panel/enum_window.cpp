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

static const dialog_skeleton enumerants = {
    .layout_id = IDD_ENUMERANTS, .shown_index = SHOWN_ENUMERANTS, .close_id = IDC_ENUM_CLOSE,
    .list_id = IDC_ENUM_LIST, .search_id = IDC_ENUM_SEARCH, .search_text_id = IDC_ENUM_TEXT};

INT_PTR CALLBACK enumerants_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    if (message == WM_INITDIALOG) {
        fill_enumerants(dialog);
        return TRUE;
    }
    return dialog_default(enumerants, dialog, message, first, second);
}
