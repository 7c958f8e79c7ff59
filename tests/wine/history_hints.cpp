// Warnings and hints in the history: a program that makes each misuse the checks know and meets
// each hint's trigger once. With "Show Possible openGL Problems" and "Show Performance Hints"
// selected twice (they start ticked but off) and "Show Data Memory Address" once, each line
// stands behind its call; with the items never selected there is none.
#include "tests/wine/harness.h"

#include "panel/resource.h"

#include <regex>

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

// A call's text and the lines behind it when the items are on.
struct statement {
    std::string call;
    std::vector<std::string> lines;
};

static std::string matrix(const char *rows[4])
{
    std::string text = "glLoadMatrixf({\n";
    for (int row = 0; row < 4; ++row)
        text += std::string("    ") + rows[row] + (row < 3 ? ",\n" : "\n");
    return text + "});";
}

static std::string expected_history(bool items)
{
    const std::string address = "- data at memory location 0xADDRESS.";
    const char *identity[4] = {"1          , 0          , 0          , 0          ",
                               "0          , 1          , 0          , 0          ",
                               "0          , 0          , 1          , 0          ",
                               "0          , 0          , 0          , 1          "};
    const char *scaling[4] = {"2          , 0          , 0          , 0          ",
                              "0          , 3          , 0          , 0          ",
                              "0          , 0          , 4          , 0          ",
                              "0          , 0          , 0          , 1          "};
    const char *translation[4] = {"1          , 0          , 0          , 0          ",
                                  "0          , 1          , 0          , 0          ",
                                  "0          , 0          , 1          , 0          ",
                                  "5          , 6          , 7          , 1          "};
    std::string stipple = "glPolygonStipple(GLS_NONE)({\n";
    for (int line = 0; line < 16; ++line)
        stipple += std::string(line ? ",\n" : "") + "    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF";
    stipple += "\n});";
    std::vector<statement> statements = {
        {"glClear(GL_COLOR_BUFFER_BIT);", {"- Do not enable GL_DITHER for glClear."}},
        {"glDisable(GL_DITHER);", {}},
        {"glClear(GL_COLOR_BUFFER_BIT);", {}},
        {"glFlush();", {"- Use one glClear per frame if possible."}},
        {"glFinish();", {}},
        {"glClear(GL_COLOR_BUFFER_BIT);", {"- Flush the graphics pipe once per frame if possible."}},
        {"glFlush();", {}},
        {"glVertex3fv({1, 2, 3});", {"- Not called between glBegin/glEnd.", address}},
        {"glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);", {}},
        {"glBlendFunc(GL_ONE, GL_DST_ALPHA);", {"- Function requires alpha planes."}},
        {"glBlendFunc(GL_ONE, GL_SRC_ALPHA_SATURATE);", {}},
        {"glBegin(GL_POLYGON);", {}},
        {"glBlendFunc(GL_DST_ALPHA, GL_ZERO);",
         {"- Should not be called between glBegin/glEnd.", "- Function requires alpha planes."}},
        {"glEnd();", {}},
    };
    const char *polygon_hints[6] = {"", "", "", "- Use glBegin(GL_TRIANGLES) instead of glBegin(GL_POLYGON) followed by 3 vertices.",
                                    "- Use glBegin(GL_QUADS) instead of glBegin(GL_POLYGON) followed by 4 vertices.", ""};
    for (int count : {3, 4, 5}) {
        statements.push_back({"glBegin(GL_POLYGON);", {}});
        for (int i = 0; i < count; ++i)
            statements.push_back({"glVertex3fv({" + std::to_string(i) + ", 0, 0});", {address}});
        statements.push_back({"glEnd();", *polygon_hints[count] ? std::vector<std::string>{polygon_hints[count]}
                                                                  : std::vector<std::string>{}});
    }
    std::vector<statement> rest = {
        {"glEnable(GL_NORMALIZE);", {"- Provide unit-length normals if it is possible and leave GL_NORMALIZE off."}},
        {"glLightfv(GL_LIGHT0, GL_POSITION, {0, 0, 1, 1});",
         {"- directional lights (w = 0) are more efficient on many platforms."}},
        {"glLightiv(GL_LIGHT0, GL_POSITION, {0, 0, 1, 0});", {}},
        {"glLightModelfv(GL_LIGHT_MODEL_AMBIENT, {0.2, 0.2, 0.2, 1});", {}},
        {"glEnable(GL_LIGHTING);", {}},
        {"glLightModelfv(GL_LIGHT_MODEL_AMBIENT, {0.2, 0.2, 0.2, 1});",
         {"For best performance, set up lighting parameters first, then enable lighting."}},
        {"glMaterialf(GL_FRONT, GL_SHININESS, 10);",
         {"For best performance, set up material parameters first, then enable lighting."}},
        {"glScalef(2, 2, 2);", {"- Avoid using glScale when doing lighting because it almost always requires that "
                                "normals be renormalized, even if the x, y, and z scale factors are uniform."}},
        {"glDisable(GL_LIGHTING);", {}},
        {"glScalef(1, 1, 1);", {}},
        {"glLineStipple(1, 0xFFFF);", {"- Do not use line stippling with a stipple pattern of 0xFFFF."}},
        {stipple, {"- Do not use polygon stippling with a stipple pattern of all 0xFF."}},
        {matrix(identity), {"- Use glLoadIdentity rather than loading the identity matrix with glLoadMatrix."}},
        {matrix(scaling), {"- Use glScale instead of calling glLoadMatrix with your own scaling matrix."}},
        {matrix(translation), {}},
    };
    statements.insert(statements.end(), rest.begin(), rest.end());
    std::string text = "glsBeginGLS(1, 0);\n" + first_sight(128, 32);
    for (const statement &s : statements) {
        text += s.call + "\n";
        for (const std::string &line : s.lines)
            if (items)
                text += "glsString(\"Info\", \"" + line + "\");\n";
    }
    return text + "glsString(\"Info\", \"wglMakeCurrent\");\nglsEndGLS();\n";
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
