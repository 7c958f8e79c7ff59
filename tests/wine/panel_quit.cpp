// The debugger's end is the application's: File/Quit, and closing the control window by its
// system menu, end the process with exit code 0 and remove the session's temporary directory.
// An earlier run's folder of its name (its history a link to the user's) is kept aside, and Quit
// never deletes through a link, not even one that took the place of the session's history.
#include "tests/wine/harness.h"

#include "panel/resource.h"

#include <cstring>

static bool by_system_menu;
static std::string session;

// As a user of Wine runs ln or rm: Wine's own API makes no link, nor waits for a Unix program,
// so this waits for path to come or go.
static void unix_command(std::string command, const std::string &folder, const std::string &path, bool there)
{
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(), &startup, &process);
    for (int tries = 0; tries < 500 && directory_exists(path) != there; ++tries)
        Sleep(20);
}

static void earlier_run()
{
    CreateDirectoryA(temp_path("mine").c_str(), nullptr);
    CreateDirectoryA(session.c_str(), nullptr);
    for (const std::string &path : {temp_path("mine\\0.gls"), session + "\\notes.txt"})
        if (FILE *file = fopen(path.c_str(), "wb"))
            fputs("kept", file), fclose(file);
    unix_command("Z:\\bin\\ln -s ../mine history", session, session + "\\history", true);
}

static void scenario()
{
    HWND control = control_window();
    // As a person would: once the application stands at its first call.
    if (!wait_text(control, IDC_STATUS, "Halted"))
        give_up("no halt");
    if (!by_system_menu) {
        MoveFileA((session + "\\history").c_str(), (session + "\\history.moved").c_str());
        unix_command("Z:\\bin\\ln -s ../mine history", session, session + "\\history", true);
    }
    driver_done();
    if (by_system_menu)
        SendMessageA(control, WM_SYSCOMMAND, SC_CLOSE, 0);
    else
        menu(control, IDM_QUIT);
}

static int child(const char *how)
{
    by_system_menu = strcmp(how, "close") == 0;
    write_fact("thread", GetCurrentThreadId());
    std::string temp = temp_path("");
    session = session_directory(temp.substr(0, temp.size() - 1), GetCurrentThreadId());
    if (!by_system_menu)
        earlier_run();
    start_driver(scenario);
    open_gl_window(16, 16);
    glClear(GL_COLOR_BUFFER_BIT);
    wait_for_the_end();
}

static void check_end(const char *how)
{
    child_run run = run_child(how, how);
    printf("ended by %s\n", how);
    expect_end(run);
    std::string dir = session_directory(run.temp, (DWORD)fact(run, "thread"));
    if (strcmp(how, "quit") != 0) {
        check(fact(run, "thread") != ~0ull && !directory_exists(dir), "%s is still there", dir.c_str());
    } else {
        std::string name = dir.substr(run.temp.size() + 1), parent = run.temp.substr(0, run.temp.rfind('\\')), left;
        for (const std::string &path : {std::string("mine\\0.gls"), name + ".1\\notes.txt", name + ".1\\history"})
            left += path + ": " +
                    (directory_exists(run.temp + "\\" + path) ? "a folder" : read_file(run.temp + "\\" + path)) + "\n";
        check_text("what Quit left", substitute(left, {{name, "QUONDALE_<thread>"}}),
                   read_file(program_folder() + "expected\\panel_quit_left.txt"));
        unix_command("Z:\\bin\\rm -r " + run.temp.substr(parent.size() + 1), parent, run.temp, false);
    }
    clean_up(run);
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child(argc > 2 ? argv[2] : "");
    check_end("quit");
    check_end("close");
    return finish("panel_quit");
}
