// glColor3ub(1, 2, 3) is folded into glColor3ubv before it reaches the real library. The program
// makes the call; the CTest script around it reads Wine's opengl32 trace to see which name
// arrived, and the program checks that the colour itself arrived intact.
#include "testbed.h"
#include "panel_continue.h"

#include <cmath>

int main(int argc, char **argv)
{
    // Halted at its first call, the program waits for a Continue.
    continue_first_halts();
    check_expected_mode(argc, argv);
    gl_window window;
    if (!open_gl_window(&window, 32, 32, "color_folding"))
        return finish();

    glColor3f(0.5f, 0.5f, 0.5f);
    glColor3ub(1, 2, 3);
    GLfloat colour[4] = {};
    glGetFloatv(GL_CURRENT_COLOR, colour);
    const float expected[4] = {1 / 255.0f, 2 / 255.0f, 3 / 255.0f, 1.0f};
    bool same = true;
    for (int component = 0; component < 4; ++component)
        same = same && std::fabs(colour[component] - expected[component]) <= 1e-6f;
    if (!same)
        fail("after glColor3ub(1, 2, 3) the current colour is (%g, %g, %g, %g)", colour[0], colour[1],
                 colour[2], colour[3]);
    close_gl_window(&window);
    return finish();
}
