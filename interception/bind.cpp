// Binding of a session's real libraries. Always from the system directory: this library bears
// the name that the search path would find first.
#include "interception/bind.h"

#include "records/mmaps.h"
#include "records/report.h"

#include <windows.h>

#include <cstdio>

// The session cannot work without these: the process ends with code 1, saying why on the
// standard error stream (the fatal report's box is kept for the debugger's own failures).
[[noreturn]] static void missing(const char *what, const char *where)
{
    fprintf(stderr, "quondale: %s not found in %s\n", what, where);
    fflush(stderr);
    session_exit(1);
}

static HMODULE load_system_library(const char *file)
{
    char path[MAX_PATH + 32];
    UINT length = GetSystemDirectoryA(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        missing(file + 1, "the system directory");
    lstrcatA(path, file);
    HMODULE module = LoadLibraryA(path);
    if (!module)
        missing(path, "the system");
    return module;
}

static GlsFunc look_up(HMODULE module, const char *name)
{
    return (GlsFunc)(void *)GetProcAddress(module, name);
}

void bind_libraries(thread_record *record)
{
    library_table *table = (library_table *)block_alloc(sizeof(library_table));
    if (!table) {
        fatal_report("context", __LINE__, "Out of memory.");
        session_exit(1);
    }
    const master *names = record->master;

    table->gdi32 = load_system_library("\\gdi32.dll");
    for (int row = 0; row < GDI_CALL_COUNT; ++row) {
        table->gdi[row] = look_up(table->gdi32, names->gdi_names[row]);
        if (!table->gdi[row])
            missing(names->gdi_names[row], "gdi32.dll");
    }

    table->opengl32 = load_system_library("\\opengl32.dll");
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        table->gl[row] = look_up(table->opengl32, names->gl_names[row]);
    for (int row = 0; row < WGL_CALL_COUNT; ++row) {
        table->wgl[row] = look_up(table->opengl32, names->wgl_names[row]);
        if (!table->wgl[row])
            missing(names->wgl_names[row], "opengl32.dll");
    }

    table->glu32 = load_system_library("\\glu32.dll");
    for (int row = 0; row < GLU_CALL_COUNT; ++row)
        table->glu[row] = look_up(table->glu32, names->glu_names[row]);

    table->call_depth = 0;
    table->gls_context = -1;
    table->current_gls_context = -1;
    record->library_table = table;
}
