// With a TEMP that can't hold a directory the session still starts, and the first file it needs
// (the history of the calls made without a context, opened at the session's first WGL call)
// ends the process through the fatal report with exit code 1: no crash, no hang.
#include "session_test.h"

static int child()
{
    gl_window window = make_gl_window();
    PIXELFORMATDESCRIPTOR format = wanted_format();
    int pixel_format = ChoosePixelFormat(window.dc, &format);
    SetPixelFormat(window.dc, pixel_format, &format);
    HGLRC context = wglCreateContext(window.dc);
    write_fact("context", (uint32_t)(uintptr_t)context);
    wglMakeCurrent(window.dc, context);
    write_fact("survived", 1);
    return 0;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    // A file where the directory should be.
    std::string temp = fresh_temp("fatal");
    FILE *blocker = fopen(temp.c_str(), "w");
    check(blocker != nullptr, "could not make %s", temp.c_str());
    if (blocker)
        fclose(blocker);

    child_run run = run_child(temp, false);
    check(!run.timed_out, "child hung");
    check(run.exit_code == 1, "child exit code %lu, expected 1", (unsigned long)run.exit_code);
    check(fact(run.facts, "survived") == ~0ull, "the application went on past the failure");
    check(run.errors.find("gls, line ") == 0, "report title: %s", run.errors.c_str());
    check(run.errors.find(". Could not open ") != std::string::npos &&
              run.errors.find("\\history\\0.gls.") != std::string::npos,
          "report text: %s", run.errors.c_str());
    DeleteFileA(temp.c_str());
    return finish("session_fatal_temp");
}
