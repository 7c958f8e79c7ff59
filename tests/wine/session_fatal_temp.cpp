// With a TEMP that can't hold a directory the session still starts, and the first file it needs
// (the history of the calls made without a context, opened at the session's first WGL call)
// ends the process through the fatal report with exit code 1: no crash, no hang.
#include "tests/wine/harness.h"

#include <cctype>

static int child()
{
    write_fact("thread", GetCurrentThreadId());
    gl_window window = open_gl_window(16, 16);
    write_fact("survived", window.context != nullptr);
    return 0;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    // A file where the directory should be.
    std::string temp = child_temp("fatal");
    FILE *blocker = fopen(temp.c_str(), "w");
    check(blocker != nullptr, "could not make %s", temp.c_str());
    if (blocker)
        fclose(blocker);
    child_run run = run_child("fatal", "", 60000, false);
    check(!run.timed_out, "the child hung");
    check(run.exit_code == 1, "child exit code %lu, expected 1", (unsigned long)run.exit_code);
    check(fact(run, "survived") == ~0ull, "the application went on past the failure");
    // The box's title and text, on standard error for the test; the line number is the source's.
    std::string report = run.errors;
    size_t digits = report.find_first_not_of("0123456789", 10);
    if (report.compare(0, 10, "gls, line ") == 0 && digits > 10)
        report.replace(10, digits - 10, "N");
    check_text("the fatal report", report,
               "gls, line N. Could not open " + session_directory(temp, (DWORD)fact(run, "thread")) +
                   "\\history\\0.gls.\r\n");
    clean_up(run);
    return finish("session_fatal_temp");
}
