// A session belongs to a thread: a second thread that calls WGL gets a session of its own with
// its own directory and panel; a thread that makes only GL calls gets none.
#include "session_test.h"

static DWORD WINAPI wgl_thread(void *)
{
    write_fact("wgl_thread", GetCurrentThreadId());
    wglGetCurrentContext();
    return 0;
}

static DWORD WINAPI gl_only_thread(void *)
{
    write_fact("gl_thread", GetCurrentThreadId());
    glGetError();
    glClear(GL_COLOR_BUFFER_BIT);
    return 0;
}

static void run_thread(LPTHREAD_START_ROUTINE body)
{
    HANDLE thread = CreateThread(nullptr, 0, body, nullptr, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

static int child()
{
    DWORD main_thread = GetCurrentThreadId();
    write_fact("main_thread", main_thread);
    char temp[MAX_PATH];
    GetEnvironmentVariableA("TEMP", temp, sizeof temp);

    wglGetCurrentContext();
    run_thread(gl_only_thread);
    check(session_directories(temp).size() == 1, "a GL-only thread made a session directory");
    run_thread(wgl_thread);
    check(session_directories(temp).size() == 2, "%d session directories, expected 2",
          (int)session_directories(temp).size());
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child(fresh_temp("threads"));
    check(!run.timed_out, "child hung");
    check(run.exit_code == 0, "child exit code %lu", (unsigned long)run.exit_code);
    check(run.errors.empty(), "child wrote to stderr: %s", run.errors.c_str());

    DWORD sessions[2] = {(DWORD)fact(run.facts, "main_thread"), (DWORD)fact(run.facts, "wgl_thread")};
    DWORD gl_thread = (DWORD)fact(run.facts, "gl_thread");
    check(sessions[0] != sessions[1] && sessions[1] != gl_thread, "thread ids %lu %lu %lu",
          (unsigned long)sessions[0], (unsigned long)sessions[1], (unsigned long)gl_thread);
    for (DWORD thread : sessions) {
        std::string dir = session_directory(run.temp, thread);
        check(directory_exists(dir + "\\history") && directory_exists(dir + "\\list"), "no directory %s",
              dir.c_str());
    }
    check(!directory_exists(session_directory(run.temp, gl_thread)), "a directory for the GL-only thread");

    // Two whole sessions, each with its own records, in the order the threads came.
    std::vector<std::string> threads = dump_lines(run.dump, "thread ");
    std::vector<std::string> masters = dump_lines(run.dump, "master ");
    std::vector<std::string> procs = dump_lines(run.dump, "per_proc ");
    std::vector<std::string> gls = dump_lines(run.dump, "per_gl ");
    check(threads.size() == 2 && masters.size() == 2 && procs.size() == 2 && gls.size() == 2,
          "records: %d thread, %d master, %d per_proc, %d per_gl\n%s", (int)threads.size(), (int)masters.size(),
          (int)procs.size(), (int)gls.size(), run.dump.c_str());
    if (threads.size() == 2 && masters.size() == 2 && procs.size() == 2) {
        for (int i = 0; i < 2; ++i) {
            std::string id = std::to_string(sessions[i]);
            std::string dir = session_directory(run.temp, sessions[i]);
            check(field(threads[i], "id") == id, "thread record %d has id %s", i, field(threads[i], "id").c_str());
            check(field(threads[i], "panel_ready") == "1", "session %d has no panel", i);
            check(field(threads[i], "temp_dir") == dir, "session %d in %s", i, field(threads[i], "temp_dir").c_str());
            check(field(masters[i], "owner") == id && field(masters[i], "proc_count") == "1", "master %d: %s", i,
                  masters[i].c_str());
            check(field(procs[i], "id") == id && count_at(procs[i], "wgl", 10) == 1, "per_proc %d: %s", i,
                  procs[i].c_str());
        }
    }
    check(run.dump.find("id=" + std::to_string(gl_thread) + " ") == std::string::npos,
          "records for the GL-only thread");

    remove_tree(run.temp);
    return finish("session_threads");
}
