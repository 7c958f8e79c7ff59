// With "Break on SwapBuffers" checked each swap halts in front of itself, shown by its name
// alone; cleared, the program runs to its end. The program swaps through gdi32's SwapBuffers,
// which reaches the debugger as opengl32's wglSwapBuffers.
#include "panel_app.h"
#include "panel_driver.h"

enum { FRAMES = 3 };

static void scenario()
{
    HWND dialog = find_control_window(0, PANEL_WAIT_MS);
    if (!dialog)
        panel_abort(nullptr, "no control window");
    expect_halt_at(dialog, "glClear(GL_COLOR_BUFFER_BIT);");
    panel_click(dialog, PANEL_BREAK_ON_SWAP);
    check(panel_check(dialog, PANEL_BREAK_ON_SWAP) == BST_CHECKED, "the Break on SwapBuffers box did not check");
    for (int frame = 0; frame < FRAMES; ++frame) {
        panel_click(dialog, PANEL_CONTINUE);
        expect_halt_at(dialog, "wglSwapBuffers");
        // The frame's glClear has returned, its swap has not.
        check(calls_returned == 2 * frame + 1, "halted in frame %d with %ld calls returned", frame, calls_returned);
    }
    panel_click(dialog, PANEL_BREAK_ON_SWAP);
    check(panel_check(dialog, PANEL_BREAK_ON_SWAP) == BST_UNCHECKED, "the Break on SwapBuffers box did not clear");
    driver_done();
    panel_click(dialog, PANEL_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_panel_gl_window();
    for (int frame = 0; frame < FRAMES + 2; ++frame) {
        glClear(GL_COLOR_BUFFER_BIT);
        returned();
        SwapBuffers(window.dc);
        returned();
    }
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv) { return panel_check_main(argc, argv, "panel_break_swap", child); }
