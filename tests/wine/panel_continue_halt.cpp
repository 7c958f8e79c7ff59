// Continue lets a halted program run on; Halt, and Step pressed while it runs, stop it again at
// its next call.
#include "panel_app.h"
#include "panel_driver.h"

static volatile LONG stop_drawing;

static bool wait_for_calls(LONG count)
{
    DWORD start = GetTickCount();
    while (calls_returned < count)
        if (GetTickCount() - start > PANEL_WAIT_MS)
            return false;
    return true;
}

// The program runs on: "Running" stands and calls keep returning.
static void expect_running(HWND dialog, const char *after)
{
    if (!panel_wait_text(dialog, PANEL_STATUS, "Running"))
        panel_abort(dialog, (std::string("not running after ") + after).c_str());
    LONG now = calls_returned;
    check(wait_for_calls(now + 20), "no calls returned after %s", after);
}

// Halted at the loop's glClear, and standing still.
static void expect_still(HWND dialog)
{
    expect_halt_at(dialog, "glClear(GL_COLOR_BUFFER_BIT);");
    LONG at_halt = calls_returned;
    Sleep(200);
    check(calls_returned == at_halt, "%ld calls returned during a halt", calls_returned - at_halt);
}

static void scenario()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    expect_still(dialog);

    panel_click(dialog, PANEL_CONTINUE);
    expect_running(dialog, "Continue");
    panel_click(dialog, PANEL_HALT);
    expect_still(dialog);

    // While it runs, Step asks for a halt, not for a step.
    panel_click(dialog, PANEL_CONTINUE);
    expect_running(dialog, "the second Continue");
    panel_click(dialog, PANEL_STEP);
    expect_still(dialog);

    driver_done();
    stop_drawing = 1;
    panel_click(dialog, PANEL_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    open_panel_gl_window();
    while (!stop_drawing) {
        glClear(GL_COLOR_BUFFER_BIT);
        returned();
    }
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv) { return panel_check_main(argc, argv, "panel_continue_halt", child); }
