// The real libraries of one session: gdi32, opengl32 and glu32 of the system directory, with
// their functions in catalogue order. The WGL, GDI and GLU wrappers call through it.
#pragma once

#include "catalogue.h"
#include "gls_types.h"
#include "records.h"

#include <cstdint>

struct library_table {
    int32_t gls_context;         // the session's codec context; -1 for none
    int32_t current_gls_context; // the thread's current codec context at the last thread entry
    ModuleHandle gdi32;
    ModuleHandle opengl32;
    ModuleHandle glu32;
    GlsFunc gl[GL_CALL_COUNT];   // a row may be null
    GlsFunc glu[GLU_CALL_COUNT]; // a row may be null
    GlsFunc gdi[GDI_CALL_COUNT];
    GlsFunc wgl[WGL_CALL_COUNT];
    int32_t call_depth;
};

// Fills a new library_table for the session of record. A missing library or a missing GDI or
// WGL function ends the process; a missing GL or GLU function is stored as null.
void bind_libraries(thread_record *record);
