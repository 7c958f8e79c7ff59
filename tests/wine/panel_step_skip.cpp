// Step lets exactly one call run and stops at the next; Skip leaves the pending call unmade,
// and a skipped call with a result gives the application 0.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static GLboolean enabled_after_skip = 99, enabled_after_step = 99, skipped_result = 99, final_result = 99;

// Presses button at the halt on call, with count calls returned so far.
static void press_at(HWND dialog, const char *call, LONG count, int button)
{
    expect_halt_at(dialog, call);
    check(calls_returned == count, "at %s: %ld calls returned, expected %ld", call, calls_returned, count);
    click(dialog, button);
}

static void scenario()
{
    HWND dialog = control_window();
    press_at(dialog, "glEnable(GL_CULL_FACE);", 0, IDC_SKIP);
    press_at(dialog, "glIsEnabled(GL_CULL_FACE);", 1, IDC_STEP);
    press_at(dialog, "glEnable(GL_CULL_FACE);", 2, IDC_STEP);
    press_at(dialog, "glIsEnabled(GL_CULL_FACE);", 3, IDC_STEP);
    press_at(dialog, "glIsEnabled(GL_CULL_FACE);", 4, IDC_SKIP);
    expect_halt_at(dialog, "glIsEnabled(GL_CULL_FACE);");
    check(calls_returned == 5, "at the last call: %ld calls returned", calls_returned);
    // What the application got back, read while it stands still.
    check(enabled_after_skip == GL_FALSE, "the skipped glEnable was made");
    check(enabled_after_step == GL_TRUE, "the stepped glEnable was not made");
    check(skipped_result == GL_FALSE, "a skipped glIsEnabled gave %d", skipped_result);
    driver_done();
    click(dialog, IDC_CONTINUE);
}

static int child()
{
    start_driver(scenario);
    open_gl_window(16, 16);
    glEnable(GL_CULL_FACE);
    returned();
    enabled_after_skip = glIsEnabled(GL_CULL_FACE);
    returned();
    glEnable(GL_CULL_FACE);
    returned();
    enabled_after_step = glIsEnabled(GL_CULL_FACE);
    returned();
    skipped_result = glIsEnabled(GL_CULL_FACE);
    returned();
    final_result = glIsEnabled(GL_CULL_FACE);
    returned();
    check(final_result == GL_TRUE, "after Continue glIsEnabled gave %d", final_result);
    return child_end();
}

int main(int argc, char **argv) { return check_main(argc, argv, "panel_step_skip", child); }
