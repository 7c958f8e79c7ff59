// A debugged program stops in front of its first GL call with the panel up: the banners name its
// thread and its context, the pending call is shown whole, and the call has not been made until
// Continue lets it go.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static DWORD application_thread;

static void scenario()
{
    HWND dialog = control_window();
    expect_halt_at(dialog, "glClear(GL_COLOR_BUFFER_BIT);");
    std::string thread = control_text(dialog, IDC_THREAD_BANNER);
    std::string expected = "App Process ID = " + std::to_string(application_thread);
    check(thread == expected, "thread banner \"%s\", expected \"%s\"", thread.c_str(), expected.c_str());
    std::string context = control_text(dialog, IDC_CONTEXT_BANNER);
    check(context == "GL context = 1", "context banner \"%s\"", context.c_str());
    Sleep(300);
    check(calls_returned == 0, "%ld calls returned while halted at the first", calls_returned);
    check(control_text(dialog, IDC_STATUS) == "Halted", "the halt did not hold");
    screenshot(dialog, "control_window");
    driver_done();
    click(dialog, IDC_CONTINUE);
}

static int child()
{
    application_thread = GetCurrentThreadId();
    start_driver(scenario);
    open_gl_window(16, 16);
    glClear(GL_COLOR_BUFFER_BIT);
    returned();
    glFinish();
    returned();
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_first_halt", child); }
