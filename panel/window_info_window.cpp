// The Window Information window: the pixel format of the current context, as its per_gl keeps it.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"

INT_PTR CALLBACK window_info_function(HWND dialog, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_SIZE:
        if (first == SIZE_RESTORED) {
            int width = LOWORD(second), height = HIWORD(second);
            keep_left_at_bottom(dialog, IDC_WINDOW_INFO_SAVE, height);
            end_right_at_bottom(dialog, IDC_WINDOW_INFO_CLOSE, width, height);
            fill_above(dialog, IDC_WINDOW_INFO_TEXT, width, IDC_WINDOW_INFO_SAVE);
        }
        return TRUE;
    case WM_CLOSE:
        panel_hide(dialog, SHOWN_WINDOW_INFO);
        return TRUE;
    case WM_DESTROY:
        DestroyWindow(dialog);
        return TRUE;
    case WM_PANEL_REFRESH: {
        char text[WINDOW_INFO_TEXT_SIZE];
        window_info_text(current_record()->per_gl, text);
        SetDlgItemTextA(dialog, IDC_WINDOW_INFO_TEXT, text);
        return TRUE;
    }
    case WM_COMMAND:
        switch (LOWORD(first)) {
        case IDC_WINDOW_INFO_SAVE:
            save_edit_text_as(dialog, IDC_WINDOW_INFO_TEXT, "windinfo.txt");
            return TRUE;
        case IDC_WINDOW_INFO_CLOSE:
            SendMessageA(dialog, WM_CLOSE, 0, 0);
            return TRUE;
        }
        return FALSE;
    default:
        return FALSE;
    }
}
