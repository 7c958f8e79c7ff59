// What the panel's windows share on the panel thread: showing and hiding, warnings, the sizing
// rules, the searches, the Save dialogs; and the refreshes that the application's thread asks
// for through the session's table of panel hooks.
#pragma once

#include "session/records.h"

#include <windows.h>

// The caller's record: the application's thread and the panel thread hold the same one.
thread_record *current_record();

// ShowWindow, and the window's shown flag.
void panel_show(HWND window, int index);
void panel_hide(HWND window, int index);
// Gives back the loader lock that the panel thread holds while it takes a message, before a box
// waits for the user; nothing on any other thread or when not held.
void panel_loader_release();
// A system-modal warning box with no owner; the text is formatted into 256 bytes.
void panel_warning(const char *format, ...) __attribute__((format(printf, 1, 2)));
// The control's handle and its rectangle in the dialog's client coordinates.
HWND control_rect(HWND dialog, int id, RECT *rect);
// Whether a top-level window of the panel is on screen, asked from any thread: the visible
// style itself, where IsWindowVisible on the application's thread may measure the window
// against another desktop's root.
bool on_screen(HWND window);
// Halt every session, close every session, end the process with exit code 0.
[[noreturn]] void panel_quit();

// Sizing rules of the windows that can be resized, on WM_SIZE with the new client width W and
// height H. Each keeps the control's own size, left or top where the rule does not move them.
void reach_right(HWND dialog, int id, int width);                 // right edge 4 from the right
void keep_left_at_bottom(HWND dialog, int id, int height);        // bottom 4 above the bottom
void end_right_at_bottom(HWND dialog, int id, int width, int height); // 8 from the right, 4 above the bottom
void centre_at_bottom(HWND dialog, int id, int width, int height);
// Keeps left and top and reaches to 4 from the right and to 4 above the control below.
void fill_above(HWND dialog, int id, int width, int below_id);

// The searches of the windows: in a single-selection list, and in a text control; both write
// "<text> - not found" into the search control when nothing is found.
void search_list(HWND dialog, int list_id, int search_id);
void search_text(HWND dialog, int text_id, int search_id);

// GetSaveFileNameA with the default name; true if the user confirmed, with the path in buffer
// (260 bytes).
bool ask_save_file(HWND owner, char *buffer, const char *default_name);
bool ask_open_file(HWND owner, char *buffer, const char *default_name);
// The whole text of a control, by "%s" into a file in text mode: a CR LF in the text becomes
// the three bytes CR CR LF on disk. False if the file can't be opened.
bool save_edit_text(HWND dialog, int id, const char *path);
// Each row of a list by "%s\n" in text mode.
bool save_list_text(HWND dialog, int list_id, const char *path);
// Asks for a path with the default name and saves the control's text there; nothing when the
// user cancels or the file can't be opened.
void save_edit_text_as(HWND dialog, int id, const char *default_name);

// The record of a context, by its named block; fatal "Could not open perGL." if there is none.
per_gl *open_per_gl(const thread_record *record, int32_t context);

// Window functions: control window and About box (control_window.cpp), Call Count and Primitive
// Count (count_windows.cpp), the history's context list and Call History (history_windows.cpp).
INT_PTR CALLBACK control_window_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK about_window_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK call_count_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK prim_count_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK enumerants_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK history_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
// Select GL Break, Trace and Skip (select_windows.cpp).
INT_PTR CALLBACK break_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK trace_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK skip_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
INT_PTR CALLBACK window_info_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
// The session's contexts, "GL context N", each with its context row as item data: the lists of
// the history's and the display lists' Select GL Context.
void fill_context_list(HWND list);
// The two Select GL Context windows, one design: the list, its Close button, its shown index,
// and the window of the picked context below it, made on demand from a template.
struct context_chooser {
    int list_id;
    int close_id;
    int shown_index;
    WindowHandle per_gl::*window;
    int template_id;
    DLGPROC window_function;
};
INT_PTR context_chooser_function(const context_chooser &chooser, HWND dialog, UINT message, WPARAM first,
                                 LPARAM second);
// Select GL Context of the display lists, and the windows below it (list_windows.cpp).
INT_PTR CALLBACK list_context_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
// The last but one step of panel_update_all: every Display List window on screen.
void list_windows_refresh_all();
// The three selection dialogs for the settings file, by index in file order (break, trace, skip):
// the list box, whose selection is the first column, and the three remembered sets.
struct selection {
    HWND list;
    uint8_t (*sets)[3];
};
selection select_for_settings(int index);
// The list box's selection into the per-function table, as OK does.
void select_take_over(int index);
// Select State and the State windows (state_windows.cpp).
INT_PTR CALLBACK state_select_function(HWND dialog, UINT message, WPARAM first, LPARAM second);
// True if the state may be read now; else a warning box says why.
bool state_can_scan();
// The last step of panel_update_all: Select State if shown, and each State window on screen.
void state_refresh_all();

// Entries of the application's thread (the table of panel hooks).
void show_status(const char *text);
void show_last_call();
void show_thread_and_context();
void panel_update_all();
// Event 7, and part of panel_update_all: open Call History windows read their file again.
void history_refresh_all();
