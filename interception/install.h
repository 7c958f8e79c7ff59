// Installing the codec on a session's thread: its own codec context with the debug wrappers as
// the capture functions of their opcodes, and the trace set as capture flags.
#pragma once

#include "records/records.h"

// Makes the session's codec context current on this thread and installs the wrappers; called
// at session start and whenever the thread's current codec context is no longer the session's.
void install_codec(thread_record *record);
