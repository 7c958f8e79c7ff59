// The application side of the panel checks: a GL window with a current context, made through the
// exported WGL functions so that the thread's session and panel come up; and a count of the
// calls that have returned, which the driver reads to tell how far the application got.
#pragma once

#include "session_test.h"

inline volatile LONG calls_returned;

// The calls that follow a halted one are not made until the driver lets them go on.
inline void returned() { InterlockedIncrement(&calls_returned); }

inline gl_window open_panel_gl_window()
{
    write_fact("thread", GetCurrentThreadId());
    gl_window window = make_gl_window();
    PIXELFORMATDESCRIPTOR format = wanted_format();
    int pixel_format = ChoosePixelFormat(window.dc, &format);
    check(pixel_format > 0 && SetPixelFormat(window.dc, pixel_format, &format), "no pixel format");
    HGLRC context = wglCreateContext(window.dc);
    check(context && wglMakeCurrent(window.dc, context), "no current context");
    return window;
}

// An application whose end is the panel's Quit: it waits for the process to be ended for it.
[[noreturn]] inline void wait_for_the_end()
{
    for (;;)
        Sleep(1000);
}
