// glColor3ub(1, 2, 3) is folded into glColor3ubv before it reaches the real library. The program
// makes the call; the CTest script around it reads Wine's opengl32 trace to see which name
// arrived, and the program checks that the colour itself arrived intact.
#include "tests/wine/harness.h"

#include <cmath>

int main(int argc, char **argv)
{
    continue_first_halt(); // halted at its first call, the program waits for a Continue
    check_gl_source(argc, argv);
    gl_window window = open_gl_window(32, 32);
    glColor3f(0.5f, 0.5f, 0.5f);
    glColor3ub(1, 2, 3);
    GLfloat colour[4] = {};
    glGetFloatv(GL_CURRENT_COLOR, colour);
    const float expected[4] = {1 / 255.0f, 2 / 255.0f, 3 / 255.0f, 1.0f};
    bool same = true;
    for (int component = 0; component < 4; ++component)
        same = same && std::fabs(colour[component] - expected[component]) <= 1e-6f;
    check(same, "after glColor3ub(1, 2, 3) the current colour is (%g, %g, %g, %g)", colour[0], colour[1], colour[2],
          colour[3]);
    close_gl_window(&window);
    return finish("color_folding");
}
