// The Window Information window: the pixel format of the current context, as its per_gl keeps it.
// It has nothing of its own beyond its skeleton.
#include "panel/panel.h"

#include "panel/panel_text.h"
#include "panel/resource.h"

const dialog_skeleton window_info_skeleton = {
    .layout_id = IDD_WINDOW_INFO, .shown_index = SHOWN_WINDOW_INFO, .close_id = IDC_WINDOW_INFO_CLOSE,
    .text_id = IDC_WINDOW_INFO_TEXT,
    .text = [](const thread_record *record, char *out) { window_info_text(record->per_gl, out); },
    .save_id = IDC_WINDOW_INFO_SAVE, .save_name = "windinfo.txt"};
