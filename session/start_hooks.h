// What session start asks of the interception layer, as a table that quondale.dll fills at
// process attach: the session binds the real libraries and installs the wrappers without
// naming the code that does it, so that no include points up a layer.
#pragma once

#include "records/records.h"

struct start_hooks {
    // The real opengl32, glu32 and gdi32 of a new thread's session, into its library_table.
    void (*bind_libraries)(thread_record *record);
    // A codec context of the thread's own with the debug wrappers installed in it.
    void (*install_codec)(thread_record *record);
};

// Until the library registers, the entries do nothing: natively, and for code that runs before.
extern start_hooks session_start;
