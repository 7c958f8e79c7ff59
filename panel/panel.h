// The panel's entry points. The first group is what the application's thread calls directly:
// each call sends messages to windows that the panel thread owns, so it returns only when the
// panel thread has served them. A window that doesn't exist yet is left alone.
#pragma once

#include "session/records.h"

void show_status(const char *text);
void show_last_call();
void show_thread_and_context();
void panel_update_all();
// Event 7: open history windows read their file again.
void panel_history_changed();

// Shared by the panel's windows, on the panel thread.
struct tagRECT;

// ShowWindow, and the window's shown flag.
void panel_show(WindowHandle window, int index);
void panel_hide(WindowHandle window, int index);
// A system-modal warning box with no owner; the text is formatted into 256 bytes.
void panel_warning(const char *format, ...) __attribute__((format(printf, 1, 2)));
// The control's handle and its rectangle in the dialog's client coordinates.
WindowHandle control_rect(WindowHandle dialog, int id, tagRECT *rect);
// Halt every session, close every session, end the process with exit code 0.
[[noreturn]] void panel_quit();
