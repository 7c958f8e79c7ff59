// What the application's thread calls in the panel. Each call sends messages to windows that
// the panel thread owns, so it returns only when the panel thread has served them.
#pragma once

void show_status(const char *text);
void show_last_call();
void show_thread_and_context();
void panel_update_all();
// Event 7: open history windows read their file again.
void panel_history_changed();
