// wglMakeCurrent follows the contexts of a session: a new context gets a per_gl with the next id
// (from 1), an earlier one finds its record again, and a failing call moves the session to the
// null record without making a record for the handle.
#include "session_test.h"

static int child()
{
    DWORD thread = GetCurrentThreadId();
    write_fact("thread", thread);
    char temp[MAX_PATH];
    GetEnvironmentVariableA("TEMP", temp, sizeof temp);

    gl_window window = make_gl_window();
    PIXELFORMATDESCRIPTOR format = wanted_format();
    int pixel_format = ChoosePixelFormat(window.dc, &format);
    check(pixel_format > 0 && SetPixelFormat(window.dc, pixel_format, &format), "no pixel format");
    HGLRC first = wglCreateContext(window.dc);
    HGLRC second = wglCreateContext(window.dc);
    check(first && second && first != second, "contexts %p %p", (void *)first, (void *)second);
    write_fact("first", (uint32_t)(uintptr_t)first);
    write_fact("second", (uint32_t)(uintptr_t)second);

    check(wglMakeCurrent(window.dc, first), "first context not made current");
    std::string calls = session_directory(temp, thread) + "\\list\\calls";
    check(file_exists(calls), "no list calls file with a context current");
    check(wglMakeCurrent(window.dc, second), "second context not made current");
    check(wglMakeCurrent(window.dc, first), "first context not made current again");

    // A handle that no context ever had: the real call fails.
    HGLRC unknown = (HGLRC)(uintptr_t)0x7ff0;
    check(unknown != first && unknown != second, "the made-up handle is taken");
    write_fact("unknown", (uint32_t)(uintptr_t)unknown);
    check(!wglMakeCurrent(window.dc, unknown), "wglMakeCurrent of a made-up handle succeeded");
    return check_failures ? CHILD_CHECKS_FAILED : 0;
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child(fresh_temp("contexts"));
    check(!run.timed_out, "child hung");
    check(run.exit_code == 0, "child exit code %lu", (unsigned long)run.exit_code);
    check(run.errors.empty(), "child wrote to stderr: %s", run.errors.c_str());

    std::string thread = std::to_string(fact(run.facts, "thread"));
    int first = (int)(uint32_t)fact(run.facts, "first");
    int second = (int)(uint32_t)fact(run.facts, "second");
    int unknown = (int)(uint32_t)fact(run.facts, "unknown");
    std::string dir = session_directory(run.temp, (DWORD)fact(run.facts, "thread"));

    // The records in the order they were made: null record, first, second; none for the
    // made-up handle, none again for the first context's return.
    std::vector<std::string> gls = dump_lines(run.dump, "per_gl ");
    check(gls.size() == 3, "%d per_gl records\n%s", (int)gls.size(), run.dump.c_str());
    if (gls.size() == 3) {
        const char *names[3] = {"null", nullptr, nullptr};
        std::string first_name = std::to_string(first), second_name = std::to_string(second);
        names[1] = first_name.c_str();
        names[2] = second_name.c_str();
        const int handles[3] = {0, first, second};
        for (int i = 0; i < 3; ++i) {
            check(gls[i].find(dir + "\\per_gl\\" + names[i] + " ") != std::string::npos, "record %d: %s", i,
                  gls[i].c_str());
            check(field(gls[i], "id") == std::to_string(i), "record %d has id %s", i, field(gls[i], "id").c_str());
            check(field(gls[i], "handle") == std::to_string(handles[i]), "record %d has handle %s", i,
                  field(gls[i], "handle").c_str());
            check(field(gls[i], "has_state") == (i ? "1" : "0"), "record %d has_state", i);
        }
        // Leaving a context closes its list calls file.
        check(field(gls[1], "list_calls") == "closed" && field(gls[2], "list_calls") == "closed",
              "a context left behind keeps its list calls file open");
    }
    check(run.dump.find("\\per_gl\\" + std::to_string(unknown) + " ") == std::string::npos,
          "a record for the handle of a failed wglMakeCurrent");

    std::vector<std::string> threads = dump_lines(run.dump, "thread ");
    check(threads.size() == 1 && field(threads[0], "per_gl") == "0:0",
          "after the failed call the session is not on the null record: %s",
          threads.empty() ? "" : threads[0].c_str());

    std::vector<std::string> masters = dump_lines(run.dump, "master ");
    check(masters.size() == 1, "%d master records", (int)masters.size());
    if (masters.size() == 1) {
        check(field(masters[0], "next_gl_id") == "3", "next_gl_id %s", field(masters[0], "next_gl_id").c_str());
        check(field(masters[0], "gl_count") == "2", "gl_count %s", field(masters[0], "gl_count").c_str());
        std::string table = "1:" + std::to_string(first) + ":" + thread + ",2:" + std::to_string(second) + ":" + thread;
        check(field(masters[0], "gl_table") == table, "gl_table %s, expected %s", field(masters[0], "gl_table").c_str(),
              table.c_str());
    }

    std::vector<std::string> procs = dump_lines(run.dump, "per_proc ");
    check(procs.size() == 1, "%d per_proc records", (int)procs.size());
    if (procs.size() == 1) {
        check(count_at(procs[0], "wgl", 6) == 2, "wglCreateContext counted %lld", count_at(procs[0], "wgl", 6));
        check(count_at(procs[0], "wgl", 15) == 4, "wglMakeCurrent counted %lld", count_at(procs[0], "wgl", 15));
    }
    std::vector<std::string> lists = dump_lines(run.dump, "list_info ");
    check(lists.size() == 1 && field(lists[0], "count") == "1", "list information: %s",
          lists.empty() ? "none" : lists[0].c_str());

    remove_tree(run.temp);
    return finish("session_contexts");
}
