// With "Break on SwapBuffers" checked each swap halts in front of itself, shown by its name
// alone; cleared, the program runs to its end. The program swaps through gdi32's SwapBuffers,
// which reaches the debugger as opengl32's wglSwapBuffers.
#include "tests/wine/harness.h"

#include "panel/resource.h"

enum { FRAMES = 3 };

static void scenario()
{
    HWND dialog = control_window();
    expect_halt_at(dialog, "glClear(GL_COLOR_BUFFER_BIT);");
    click(dialog, IDC_BREAK_ON_SWAP);
    check(checked(dialog, IDC_BREAK_ON_SWAP) == BST_CHECKED, "the Break on SwapBuffers box did not check");
    for (int frame = 0; frame < FRAMES; ++frame) {
        click(dialog, IDC_CONTINUE);
        expect_halt_at(dialog, "wglSwapBuffers");
        // The frame's glClear has returned, its swap has not.
        check(calls_returned == 2 * frame + 1, "halted in frame %d with %ld calls returned", frame, calls_returned);
    }
    click(dialog, IDC_BREAK_ON_SWAP);
    check(checked(dialog, IDC_BREAK_ON_SWAP) == BST_UNCHECKED, "the Break on SwapBuffers box did not clear");
    driver_done();
    click(dialog, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(16, 16);
    for (int frame = 0; frame < FRAMES + 2; ++frame) {
        glClear(GL_COLOR_BUFFER_BIT);
        returned();
        SwapBuffers(window.dc);
        returned();
    }
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_break_swap", child); }
