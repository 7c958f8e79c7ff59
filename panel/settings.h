// The settings file: the panel's switches and the three selections of functions, kept between
// runs as plain text, "quondale.cfg" of the current directory by default.
#pragma once

#include "records/records.h"

// Read once by the panel thread at its start, before the application's first call goes on.
void load_start_settings(thread_record *record);
// Reads a settings file into the boxes, menus and selections; nothing when it can't be opened,
// a warning when its first word is wrong.
void settings_load(const char *path);
// Writes the settings file; nothing when it can't be written.
void settings_save(const char *path);
