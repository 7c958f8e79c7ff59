// What the session asks of its panel, as a table that the panel fills at process attach: the
// session never calls into panel code by name, so the two do not form a circle. Every entry
// runs on the application's thread and returns only when the panel thread has served it.
#pragma once

#include "records/records.h"

struct panel_hooks {
    // Starts the panel thread of a new session; returns once the panel has read its settings.
    void (*start)(thread_record *record);
    // The status line, the last-call field, the thread and context banners.
    void (*show_status)(const char *text);
    void (*show_last_call)();
    void (*show_thread_and_context)();
    // A halt's refresh of every window on screen (event 13).
    void (*update_all)();
    // Open history windows read their file again (event 7).
    void (*history_changed)();
};

// Until a panel registers, the entries do nothing: natively, and for code that runs before.
extern panel_hooks panel;
