// A debugged program stops in front of its first GL call with the panel up: the banners name its
// thread and its context, the pending call is shown whole, and the call has not been made until
// Continue lets it go.
#include "panel_app.h"
#include "panel_driver.h"

static DWORD application_thread;

static void scenario()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    expect_halt_at(dialog, "glClear(GL_COLOR_BUFFER_BIT);");
    std::string thread = panel_text(dialog, PANEL_THREAD_BANNER);
    std::string expected = "App Process ID = " + std::to_string(application_thread);
    check(thread == expected, "thread banner \"%s\", expected \"%s\"", thread.c_str(), expected.c_str());
    std::string context = panel_text(dialog, PANEL_CONTEXT_BANNER);
    check(context == "GL context = 1", "context banner \"%s\"", context.c_str());
    Sleep(300);
    check(calls_returned == 0, "%ld calls returned while halted at the first", calls_returned);
    check(panel_text(dialog, PANEL_STATUS) == "Halted", "the halt did not hold");
    driver_done();
    panel_click(dialog, PANEL_CONTINUE);
}

static int child()
{
    application_thread = GetCurrentThreadId();
    start_driver(scenario);
    open_panel_gl_window();
    glClear(GL_COLOR_BUFFER_BIT);
    returned();
    glFinish();
    returned();
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv) { return panel_check_main(argc, argv, "panel_first_halt", child); }
