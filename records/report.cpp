// The fatal report and the exit behind it.
#include "records/report.h"

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

#if defined(_WIN32)
struct warning_box {
    char text[1536];
    char title[256];
};

static DWORD WINAPI show_warning(void *parameter)
{
    warning_box *box = (warning_box *)parameter;
    MessageBoxA(nullptr, box->text, box->title, MB_ICONWARNING | MB_TOPMOST);
    HeapFree(GetProcessHeap(), 0, box);
    return 0;
}
#endif

void warning_report(const char *source, int line, const char *format, ...)
{
    char text[1536];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (report_to_stderr()) {
        fprintf(stderr, "%s, line %d. %s\n", source, line, text);
        fflush(stderr);
        return;
    }
#if defined(_WIN32)
    warning_box *box = (warning_box *)HeapAlloc(GetProcessHeap(), 0, sizeof(warning_box));
    if (!box)
        return;
    snprintf(box->text, sizeof box->text, "%s", text);
    snprintf(box->title, sizeof box->title, "%s, line %d.", source, line);
    HANDLE thread = CreateThread(nullptr, 0, show_warning, box, 0, nullptr);
    if (thread)
        CloseHandle(thread);
    else
        HeapFree(GetProcessHeap(), 0, box);
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
