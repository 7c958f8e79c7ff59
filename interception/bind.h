// The real libraries behind a session. Always from the system directory: this library bears
// the name that the search path would find first.
#pragma once

#include "records/records.h"

// Fills a new library_table for the session of record. A missing library or a missing GDI or
// WGL function ends the process; a missing GL or GLU function is stored as null.
void bind_libraries(thread_record *record);
