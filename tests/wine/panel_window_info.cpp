// The pixel format of the context, as the system describes it: the Window Information window,
// its saved windinfo.txt and the "Visual Info" record of the history, all compared whole with
// the figures that DescribePixelFormat gives for the window's format. With no context current
// the window is empty.
#include "tests/wine/harness.h"

#include "panel/resource.h"

static PIXELFORMATDESCRIPTOR described;

// The figures the child tells the parent, which starts no session of its own to ask.
struct figure {
    const char *name;
    BYTE PIXELFORMATDESCRIPTOR::*field;
};
static const figure figures[] = {
    {"red", &PIXELFORMATDESCRIPTOR::cRedBits},         {"green", &PIXELFORMATDESCRIPTOR::cGreenBits},
    {"blue", &PIXELFORMATDESCRIPTOR::cBlueBits},       {"alpha", &PIXELFORMATDESCRIPTOR::cAlphaBits},
    {"accum_red", &PIXELFORMATDESCRIPTOR::cAccumRedBits}, {"accum_green", &PIXELFORMATDESCRIPTOR::cAccumGreenBits},
    {"accum_blue", &PIXELFORMATDESCRIPTOR::cAccumBlueBits}, {"accum_alpha", &PIXELFORMATDESCRIPTOR::cAccumAlphaBits},
    {"depth", &PIXELFORMATDESCRIPTOR::cDepthBits},     {"stencil", &PIXELFORMATDESCRIPTOR::cStencilBits},
    {"aux", &PIXELFORMATDESCRIPTOR::cAuxBuffers},
};

// The window's text by its rules, from the described format.
static std::string window_text(const PIXELFORMATDESCRIPTOR &f)
{
    char text[512];
    int used = snprintf(text, sizeof text, "Indirect Render\r\n%s\r\nRGBA (%d, %d, %d, %d)",
                        f.dwFlags & PFD_DOUBLEBUFFER ? "Double Buffer" : "Single Buffer", f.cRedBits, f.cGreenBits,
                        f.cBlueBits, f.cAlphaBits);
    if (f.cAccumRedBits || f.cAccumGreenBits || f.cAccumBlueBits || f.cAccumAlphaBits)
        used += snprintf(text + used, sizeof text - used, "\r\nAccum Buffer (%d, %d, %d, %d)", f.cAccumRedBits,
                         f.cAccumGreenBits, f.cAccumBlueBits, f.cAccumAlphaBits);
    if (f.cStencilBits)
        used += snprintf(text + used, sizeof text - used, "\r\nStencil Buffer (%d)", f.cStencilBits);
    if (f.cDepthBits)
        snprintf(text + used, sizeof text - used, "\r\nDepth Buffer (%d)", f.cDepthBits);
    return text;
}

// The history's record by its rules, from the described format.
static std::string visual_info(const PIXELFORMATDESCRIPTOR &f)
{
    std::string text = "GLX_USE_GL, ";
    auto size = [&](const char *name, int value) {
        if (value > 0)
            text += std::string(name) + ", " + std::to_string(value) + ", ";
    };
    if (f.dwFlags & PFD_DOUBLEBUFFER)
        text += "GLX_DOUBLEBUFFER, ";
    if (f.dwFlags & PFD_STEREO)
        text += "GLX_STEREO, ";
    size("GLX_AUX_BUFFERS", f.cAuxBuffers);
    text += "GLX_RGBA, GLX_RED_SIZE, " + std::to_string(f.cRedBits) + ", GLX_GREEN_SIZE, " +
            std::to_string(f.cGreenBits) + ", GLX_BLUE_SIZE, " + std::to_string(f.cBlueBits) + ", ";
    size("GLX_ALPHA_SIZE", f.cAlphaBits);
    size("GLX_ACCUM_RED_SIZE", f.cAccumRedBits);
    size("GLX_ACCUM_GREEN_SIZE", f.cAccumGreenBits);
    size("GLX_ACCUM_BLUE_SIZE", f.cAccumBlueBits);
    size("GLX_ACCUM_ALPHA_SIZE", f.cAccumAlphaBits);
    size("GLX_DEPTH_SIZE", f.cDepthBits);
    size("GLX_STENCIL_SIZE", f.cStencilBits);
    return text + "None";
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClear(GL_COLOR_BUFFER_BIT);");
    menu(control, IDM_WINDOW);
    HWND window = need_dialog("Window Information");
    check(described.iPixelType == PFD_TYPE_RGBA, "the window's format is not RGBA");
    check_text("the Window Information", control_text(window, IDC_WINDOW_INFO_TEXT), window_text(described));
    screenshot(window, "window_information");
    post_command(window, IDC_WINDOW_INFO_SAVE);
    check_text("windinfo.txt", save_as(temp_path("windinfo.txt")), text_mode(window_text(described)));
    click(control, IDC_BREAK_ON_CALLS); // the break set starts with glFlush in it
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glFlush();"); // with no context current
    check_text("the Window Information without a context", control_text(window, IDC_WINDOW_INFO_TEXT), "");
    check_layout(window, "Window Information");
    click(control, IDC_BREAK_ON_CALLS);
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child()
{
    write_fact("thread", GetCurrentThreadId());
    start_driver(scenario);
    gl_window window = open_gl_window(128, 32);
    write_fact("context", (uint32_t)(uintptr_t)window.context);
    DescribePixelFormat(window.dc, GetPixelFormat(window.dc), sizeof described, &described);
    for (const figure &f : figures)
        write_fact(f.name, described.*f.field);
    write_fact("flags", described.dwFlags);
    glClear(GL_COLOR_BUFFER_BIT);
    wglMakeCurrent(nullptr, nullptr);
    glFlush();
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child("window_info");
    expect_end(run);
    PIXELFORMATDESCRIPTOR format = {};
    for (const figure &f : figures)
        format.*f.field = (BYTE)fact(run, f.name);
    format.dwFlags = (DWORD)fact(run, "flags");
    std::string file = session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\history\\" +
                       std::to_string((int)(uint32_t)fact(run, "context")) + ".gls";
    std::string history = read_file(file);
    std::string head = "glsBeginGLS(1, 0);\r\r\nglsString(\"Visual Info\", \"" + visual_info(format) +
                       "\");\r\r\nglsString(\"Viewport Info\", \"0 0 128 32\");\r\r\n";
    check_text("the history's first records", history.substr(0, head.size()), head);
    clean_up(run);
    return finish("panel_window_info");
}
