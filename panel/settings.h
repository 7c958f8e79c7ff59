// The settings file "quondale.cfg" of the current directory.
#pragma once

#include "session/records.h"

// Read once by the panel thread at its start, before the application's first call goes on.
void load_start_settings(thread_record *record);
