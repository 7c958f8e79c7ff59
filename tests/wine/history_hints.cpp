// Warnings and hints in the history: a program that makes each misuse the checks know and meets
// each hint's trigger once. With "Show Possible openGL Problems" and "Show Performance Hints"
// selected twice (they start ticked but off) and "Show Data Memory Address" once, each line
// stands behind its call; with the items never selected there is none.
#include "tests/wine/harness.h"

#include "panel/resource.h"

#include <regex>
#include <sstream>

static void select_items()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    click(control, IDC_TRACE_SETUP);
    HWND trace = need_dialog("Select GL Trace");
    for (int id : {IDM_SHOW_PROBLEMS, IDM_SHOW_PROBLEMS, IDM_SHOW_HINTS, IDM_SHOW_HINTS, IDM_SHOW_DATA_ADDRESS})
        menu(trace, id);
    click(trace, IDD_TRACE_SELECT - 1 + SELECT_CANCEL);
    driver_done();
    click(control, IDC_CONTINUE);
}

static void vertices(GLenum mode, int count)
{
    glBegin(mode);
    for (int i = 0; i < count; ++i)
        glVertex3f((float)i, 0, 0);
    glEnd();
}

static int child(bool items)
{
    write_fact("thread", GetCurrentThreadId());
    if (items)
        start_driver(select_items);
    else
        continue_first_halt();
    gl_window window = open_gl_window(128, 32, 0); // no alpha planes
    write_fact("context", (uint32_t)(uintptr_t)window.context);

    glClear(GL_COLOR_BUFFER_BIT);  // dithering is on from the start
    glDisable(GL_DITHER);
    glClear(GL_COLOR_BUFFER_BIT);
    glFlush();                     // the second clear since a flush
    glFinish();
    glClear(GL_COLOR_BUFFER_BIT);  // the second flush since a clear
    glFlush();
    glVertex3f(1, 2, 3);           // outside glBegin/glEnd
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBlendFunc(GL_ONE, GL_DST_ALPHA);
    glBlendFunc(GL_ONE, GL_SRC_ALPHA_SATURATE);
    glBegin(GL_POLYGON);
    glBlendFunc(GL_DST_ALPHA, GL_ZERO);
    glEnd();
    vertices(GL_POLYGON, 3);
    vertices(GL_POLYGON, 4);
    vertices(GL_POLYGON, 5);
    glEnable(GL_NORMALIZE);
    const GLfloat positional[4] = {0, 0, 1, 1};
    const GLint directional[4] = {0, 0, 1, 0};
    glLightfv(GL_LIGHT0, GL_POSITION, positional);
    glLightiv(GL_LIGHT0, GL_POSITION, directional);
    const GLfloat ambient[4] = {0.2f, 0.2f, 0.2f, 1};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glEnable(GL_LIGHTING);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glMaterialf(GL_FRONT, GL_SHININESS, 10);
    glScalef(2, 2, 2);
    glDisable(GL_LIGHTING);
    glScalef(1, 1, 1);
    glLineStipple(1, 0xFFFF);
    GLubyte solid[128];
    for (GLubyte &byte : solid)
        byte = 0xFF;
    glPolygonStipple(solid);
    const GLfloat identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const GLfloat scaling[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1};
    const GLfloat translation[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1};
    glLoadMatrixf(identity);
    glLoadMatrixf(scaling);
    glLoadMatrixf(translation);    // the translation hint is never reached
    close_gl_window(&window);
    return child_end();
}

// The history with the items on; without them, the same but for the items' lines (the notes of
// WGL calls stay).
static std::string expected_history(bool items)
{
    std::istringstream all(expected_file("history_hints.gls"));
    std::string text, line;
    while (std::getline(all, line))
        if (items || line.rfind("glsString(\"Info\", \"", 0) != 0 || line.rfind("glsString(\"Info\", \"wgl", 0) == 0)
            text += line + "\n";
    return text;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child(argc > 2 && strcmp(argv[2], "items") == 0);
    for (bool items : {true, false}) {
        child_run run = run_child(items ? "hints_items" : "hints_none", items ? "items" : "");
        expect_end(run);
        std::string file = session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\history\\" +
                           std::to_string((int)(uint32_t)fact(run, "context")) + ".gls";
        // The address lines name the vector that each scalar entry builds on its stack, in as many
        // digits as a pointer of the platform has.
        std::string found = std::regex_replace(without_visual_info(read_file(file)),
                                               std::regex("0x[0-9A-F]{" + std::to_string(2 * sizeof(void *)) + "}\\."),
                                               "0xADDRESS.");
        check_text(items ? "the history with the items on" : "the history with the items never selected", found,
                   on_disk(expected_history(items)));
        clean_up(run);
    }
    return finish("history_hints");
}
