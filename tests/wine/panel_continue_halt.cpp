// Continue lets a halted program run on; Halt, and Step pressed while it runs, stop it again at
// its next call.
#include "tests/wine/harness.h"

#include "panel/resource.h"

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
    if (!wait_text(dialog, IDC_STATUS, "Running"))
        give_up((std::string("not running after ") + after).c_str());
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
    HWND dialog = control_window();
    expect_still(dialog);

    click(dialog, IDC_CONTINUE);
    expect_running(dialog, "Continue");
    click(dialog, IDC_HALT);
    expect_still(dialog);

    // While it runs, Step asks for a halt, not for a step.
    click(dialog, IDC_CONTINUE);
    expect_running(dialog, "the second Continue");
    click(dialog, IDC_STEP);
    expect_still(dialog);

    driver_done();
    stop_drawing = 1;
    click(dialog, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    open_gl_window(16, 16);
    while (!stop_drawing) {
        glClear(GL_COLOR_BUFFER_BIT);
        returned();
    }
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_continue_halt", child); }
