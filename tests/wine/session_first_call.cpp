// The first WGL call of a thread starts its session: one temporary directory below TEMP with its
// history and list folders, one set of records, the call counted. A plain GL call starts nothing,
// and an application that exits by itself leaves the directory behind.
#include "session_test.h"

static int child()
{
    DWORD thread = GetCurrentThreadId();
    write_fact("thread", thread);
    char temp[MAX_PATH];
    GetEnvironmentVariableA("TEMP", temp, sizeof temp);

    glGetError();
    check(session_directories(temp).empty(), "a GL call without WGL made a session directory");

    HGLRC current = wglGetCurrentContext();
    check(current == nullptr, "wglGetCurrentContext gave %p with no context made", (void *)current);
    std::string dir = session_directory(temp, thread);
    check(directory_exists(dir), "no %s", dir.c_str());
    check(directory_exists(dir + "\\history"), "no history folder");
    check(directory_exists(dir + "\\list"), "no list folder");

    wglGetCurrentContext();
    check(session_directories(temp).size() == 1, "%d session directories, expected 1",
          (int)session_directories(temp).size());
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child(fresh_temp("first"));
    check(!run.timed_out, "child hung");
    check(run.exit_code == 0, "child exit code %lu", (unsigned long)run.exit_code);
    check(run.errors.empty(), "child wrote to stderr: %s", run.errors.c_str());

    unsigned long long thread = fact(run.facts, "thread");
    std::string dir = session_directory(run.temp, (DWORD)thread);
    check(directory_exists(dir + "\\history") && directory_exists(dir + "\\list"),
          "the temporary directory went with the application's exit");

    std::vector<std::string> threads = dump_lines(run.dump, "thread ");
    check(threads.size() == 1, "%d thread records\n%s", (int)threads.size(), run.dump.c_str());
    if (threads.size() == 1) {
        check(field(threads[0], "id") == std::to_string(thread), "thread record id %s",
              field(threads[0], "id").c_str());
        check(field(threads[0], "panel_ready") == "1", "panel not ready");
        check(field(threads[0], "per_gl") == "0:0", "current per_gl %s, expected the null record",
              field(threads[0], "per_gl").c_str());
        check(field(threads[0], "temp_dir") == dir, "temp_dir %s", field(threads[0], "temp_dir").c_str());
    }

    std::vector<std::string> masters = dump_lines(run.dump, "master ");
    check(masters.size() == 1, "%d master records", (int)masters.size());
    if (masters.size() == 1) {
        check(field(masters[0], "owner") == std::to_string(thread), "master owner");
        check(field(masters[0], "next_gl_id") == "1", "next_gl_id %s", field(masters[0], "next_gl_id").c_str());
        check(field(masters[0], "proc_count") == "1", "proc_count %s", field(masters[0], "proc_count").c_str());
        check(field(masters[0], "gl_count") == "0", "gl_count %s", field(masters[0], "gl_count").c_str());
    }

    std::vector<std::string> procs = dump_lines(run.dump, "per_proc ");
    check(procs.size() == 1, "%d per_proc records", (int)procs.size());
    if (procs.size() == 1) {
        check(procs[0].find(dir + "\\per_proc\\" + std::to_string(thread) + " ") != std::string::npos,
              "per_proc name in %s", procs[0].c_str());
        check(field(procs[0], "run_state") == "1", "a new session is not halted");
        check(field(procs[0], "History") == "1", "the panel's start did not turn the history on");
        for (int row = 0; row < 24; ++row)
            check(count_at(procs[0], "wgl", row) == (row == 10 ? 2 : 0), "wgl row %d counted %lld", row,
                  count_at(procs[0], "wgl", row));
    }

    std::vector<std::string> gls = dump_lines(run.dump, "per_gl ");
    check(gls.size() == 1, "%d per_gl records", (int)gls.size());
    if (gls.size() == 1) {
        check(gls[0].find(dir + "\\per_gl\\null ") != std::string::npos, "null record name in %s", gls[0].c_str());
        check(field(gls[0], "id") == "0" && field(gls[0], "handle") == "0" && field(gls[0], "has_state") == "0",
              "null record %s", gls[0].c_str());
    }
    check(dump_lines(run.dump, "list_info ").empty(), "list information without a context");

    remove_tree(run.temp);
    return finish("session_first_call");
}
