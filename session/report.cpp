// The fatal report and the exit behind it.
#include "session/report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  include <windows.h>
#endif

static bool report_to_stderr()
{
#if defined(_WIN32)
    char value[8];
    DWORD length = GetEnvironmentVariableA("QUONDALE_FATAL_TO_STDERR", value, sizeof value);
    return length == 1 && value[0] == '1';
#else
    return true;
#endif
}

void fatal_report(const char *source, int line, const char *format, ...)
{
    char text[1536];
    char title[256];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    snprintf(title, sizeof title, "%s, line %d.", source, line);
    if (report_to_stderr()) {
        fprintf(stderr, "%s %s\n", title, text);
        fflush(stderr);
        return;
    }
#if defined(_WIN32)
    MessageBoxA(nullptr, text, title, MB_ICONSTOP | MB_SYSTEMMODAL | MB_TOPMOST | MB_SETFOREGROUND);
#endif
}

void session_exit(int code)
{
#if defined(_WIN32)
    ExitProcess((UINT)code);
#else
    exit(code);
#endif
}
