// What the control window shows and what its commands do to the records, as plain functions:
// records in, text and actions out. The Win32 layer (control_window.cpp) only moves the results
// into controls and rings, so everything here builds and is tested natively.
#pragma once

#include "records/records.h"

#include <cstdint>

enum : int {
    PANEL_TEXT_SIZE = 256,
    // The window message that asks a panel window to read the records again.
    WM_PANEL_REFRESH = 32769,
    // The control window writes its thread and context banners.
    WM_PANEL_BANNERS = 32770,
};

// Indices of shown[]: one per window, fixed.
enum : int {
    SHOWN_ABOUT = 0,
    SHOWN_CALL_COUNT = 1,
    SHOWN_PRIM_COUNT = 2,
    SHOWN_HISTORY_SELECT = 4,
    SHOWN_LIST_SELECT = 5,
    SHOWN_CONTROL = 6,
    SHOWN_ENUMERANTS = 7,
    SHOWN_BREAK_SELECT = 8,
    SHOWN_SKIP_SELECT = 9,
    SHOWN_TRACE_SELECT = 10,
    SHOWN_STATE_SELECT = 11,
    SHOWN_WINDOW_INFO = 12,
    SHOWN_NONE = -1,
};

enum : int { WINDOW_INFO_TEXT_SIZE = 5120 };

// The head line of a Display List window: "List 3; contains 12 calls; called 1 time;", with
// " deleted;" or " capturing calls now;" behind the name where the row says so. out holds
// PANEL_TEXT_SIZE bytes.
void list_head_line(const list_info_row *row, char *out);

// The Window Information text of a context: "Indirect Render" (nothing sets direct rendering),
// the buffering, the colour format and the accumulation, stencil and depth buffers that it has,
// one per line with "\r\n" between; empty for the null record. out holds WINDOW_INFO_TEXT_SIZE.
void window_info_text(const per_gl *gl, char *out);

// The window of a shown index, or null for index 3 and for windows not made (yet).
WindowHandle window_of_shown_index(const thread_record *record, int index);

// Banner 104: "App Process ID = <thread id>". out holds PANEL_TEXT_SIZE bytes.
void thread_banner_text(const per_proc *proc, char *out);
// Banner 105, from the record's per_gl at this moment: none yet, the null record, or the
// ordinal of a real context (not its handle).
void context_banner_text(const per_gl *gl, char *out);

enum control_command_kind : int32_t {
    COMMAND_NONE,
    COMMAND_SHOW_WINDOW, // refresh and show a window, after an optional halt
    COMMAND_RUN,         // one of the four run buttons
    COMMAND_BOX,         // a check box: its flag has been written
    COMMAND_SAVE_SETTINGS,
    COMMAND_LOAD_SETTINGS,
    COMMAND_QUIT,
};

// What a command of the control window asks the Win32 layer to do, in this order: status text,
// event to the application, refresh of the window, panel_show of the window.
struct control_action {
    control_command_kind kind;
    const char *status; // text for the status line, or null
    int32_t event;      // event for ring_to_app, or 0
    int shown_index;    // window to show, or SHOWN_NONE
    bool refresh;       // send the window WM_PANEL_REFRESH before it is shown
};

// The command id of a WM_COMMAND of the control window (low word of the first parameter) with
// the state of the box that sent it (BM_GETCHECK; only exactly 1 counts as on). Writes the
// flag of a check box into proc; decides run buttons by proc->run_state.
control_action control_command(per_proc *proc, int id, int box_check);

// A file's whole text, read in text mode, in a block of block_alloc that the caller frees with
// block_free; zero-terminated at the count read. Null if the file can't be opened. Out of
// memory: the fatal report and exit code 1.
char *read_whole_file(const char *path);
