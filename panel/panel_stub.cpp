// Until the control window exists, what the application's thread tells the panel goes nowhere.
#include "panel.h"

void show_status(const char *) {}
void show_last_call() {}
void show_thread_and_context() {}
void panel_update_all() {}
void panel_history_changed() {}
