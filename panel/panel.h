// What the panel's windows share on the panel thread: showing and hiding, warnings, the sizing
// rules, the searches, the Save dialogs; and the refreshes that the application's thread asks
// for through the session's table of panel hooks.
#pragma once

#include "panel/panel_text.h"
#include "records/records.h"

#include <windows.h>

#include <cstdio>

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
// Whether a top-level window of the panel is on screen, asked from any thread: the visible
// style itself, where IsWindowVisible on the application's thread may measure the window
// against another desktop's root.
bool on_screen(HWND window);
// Halt every session, close every session, end the process with exit code 0.
[[noreturn]] void panel_quit();

// What the panel's dialogs share: the layout, Close that only hides, WM_DESTROY, the refresh,
// and the Search and Save buttons of the plain kind. An id of 0 is a button the dialog lacks.
struct dialog_skeleton {
    int layout_id = 0;                // its layout rules (resource.h); 0: WM_SIZE is left to the system
    int base = 0;                     // added to every id of the rules: the selection dialogs share theirs
    int shown_index = SHOWN_NONE;     // SHOWN_NONE: a window made on demand, hidden with no flag
    int close_id = 0;                 // the button that closes as the window's own Close does
    bool takes_every_command = false; // other commands are answered as handled too
    void (*refresh)(HWND dialog, WPARAM first, LPARAM second) = nullptr; // null: no refresh
    // The dialog's list box or text control, which Search searches and Save writes.
    int list_id = 0, text_id = 0;
    // A text window's refresh: the text of the records into text_id (WINDOW_TEXT_SIZE bytes).
    void (*text)(const thread_record *record, char *out) = nullptr;
    int search_id = 0, search_text_id = 0; // the Search button and the field it reads
    int save_id = 0;                       // the Save button, which offers save_name
    const char *save_name = nullptr;
};
// The skeleton's answer to a message that the dialog's own function did not take.
INT_PTR dialog_default(const dialog_skeleton &skeleton, HWND dialog, UINT message, WPARAM first, LPARAM second);
// The function of a dialog that has nothing of its own: its skeleton is the creation parameter.
INT_PTR CALLBACK skeleton_function(HWND dialog, UINT message, WPARAM first, LPARAM second);

// The item data of the selected row of a single-selection list; -1 when no row is selected.
LRESULT selected_item(HWND dialog, int list_id);

// The searches of the windows: in a single-selection list, and in a text control; both write
// "<text> - not found" into the search control when nothing is found.
void search_list(HWND dialog, int list_id, int search_id);
void search_text(HWND dialog, int text_id, int search_id);

// GetSaveFileNameA with the default name; true if the user confirmed, with the path in buffer
// (260 bytes).
bool ask_save_file(HWND owner, char *buffer, const char *default_name);
bool ask_open_file(HWND owner, char *buffer, const char *default_name);
// Asks for a path with the default name and opens it for writing in text mode, where a CR LF
// of a control's text becomes the three bytes CR CR LF on disk; null when the user cancels or
// the file can't be opened.
FILE *ask_save_text_file(HWND owner, const char *default_name);

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
// Window Information has no function of its own (window_info_window.cpp).
extern const dialog_skeleton window_info_skeleton;
// The session's contexts, "GL context N", each with its context row as item data: the lists of
// the history's and the display lists' Select GL Context.
void fill_context_list(HWND list);
// The two Select GL Context windows, one design: the list, its Close button, its shown index,
// the window of the picked context below it, made on demand from a template, and its layout.
struct context_chooser {
    int list_id;
    int close_id;
    int shown_index;
    WindowHandle per_gl::*window;
    int template_id;
    DLGPROC window_function;
    int layout_id; // its own template's
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
