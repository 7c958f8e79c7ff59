// The debugger's end is the application's: File/Quit, and closing the control window by its
// system menu, end the process with exit code 0 and remove the session's temporary directory.
// A folder of that name from an earlier run is kept aside, and Quit removes only the session's
// own files: never through a link, never a file that another put there.
#include "tests/wine/harness.h"

#include "panel/resource.h"

#include <algorithm>
#include <cstring>

static bool by_system_menu;
static std::string session;

static void put_file(const std::string &path)
{
    FILE *file = fopen(path.c_str(), "wb");
    check(file && fputs("kept", file) >= 0, "cannot write %s", path.c_str());
    if (file)
        fclose(file);
}

// A Unix command run in folder, as a user of Wine makes a link: its own API makes none. Wine
// gives no handle to wait on for a Unix program, so the caller waits for what it does.
static void unix_command(std::string command, const std::string &folder)
{
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    check(CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(), &startup, &process),
          "cannot run %s", command.c_str());
}

static bool is_link(const std::string &path)
{
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT);
}

static void link_to_mine(const std::string &folder)
{
    unix_command("Z:\\bin\\ln -s ../mine history", folder);
    for (int tries = 0; tries < 500 && !is_link(folder + "\\history"); ++tries)
        Sleep(20);
    check(is_link(folder + "\\history"), "no link in %s", folder.c_str());
}

// Names below folder, sorted, folders with a backslash; links are named and not followed, and a
// file still holding "kept" says so.
static void list_tree(const std::string &folder, const std::string &prefix, std::vector<std::string> *names)
{
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        std::string name = entry.cFileName, path = folder + "\\" + name;
        if (name == "." || name == "..")
            continue;
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) {
            names->push_back(prefix + name + " (link)");
        } else if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            names->push_back(prefix + name + "\\");
            list_tree(path, prefix + name + "\\", names);
        } else {
            names->push_back(prefix + name + (read_file(path) == "kept" ? ": kept" : ""));
        }
    } while (FindNextFileA(search, &entry));
    FindClose(search);
}

static void scenario()
{
    HWND control = control_window();
    // As a person would: once the application stands at its first call.
    if (!wait_text(control, IDC_STATUS, "Halted"))
        give_up("no halt");
    if (!by_system_menu) {
        // The session's history folder turned into a link while it ran.
        check(MoveFileA((session + "\\history").c_str(), (session + "\\history.moved").c_str()), "history not moved");
        link_to_mine(session);
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
    std::string temp = temp_path("");
    temp.pop_back();
    session = session_directory(temp, GetCurrentThreadId());
    write_fact("thread", GetCurrentThreadId());
    if (!by_system_menu) {
        // An earlier run's folder of the same name, its history a link to the user's folder.
        CreateDirectoryA(temp_path("mine").c_str(), nullptr);
        put_file(temp_path("mine\\0.gls"));
        CreateDirectoryA(session.c_str(), nullptr);
        CreateDirectoryA((session + "\\list").c_str(), nullptr);
        put_file(session + "\\list\\calls");
        put_file(session + "\\notes.txt");
        link_to_mine(session);
    }
    start_driver(scenario);
    gl_window window = open_gl_window(16, 16);
    write_fact("context", (unsigned long long)(uint32_t)(uintptr_t)window.context);
    if (!by_system_menu)
        put_file(temp_path("mine\\") + std::to_string((int)(uintptr_t)window.context) + ".gls");
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
        std::vector<std::string> names;
        list_tree(run.temp, "", &names);
        std::sort(names.begin(), names.end());
        std::string tree;
        for (const std::string &name : names)
            tree += name + "\n";
        check_text("what Quit left", tree,
                   substitute(read_file(program_folder() + "expected\\panel_quit_tree.txt"),
                              {{"<thread>", std::to_string(fact(run, "thread"))},
                               {"<context>", std::to_string((int)fact(run, "context"))}}));
        std::string name = "QUONDALE_" + std::to_string(fact(run, "thread"));
        unix_command("Z:\\bin\\rm -f " + name + "/history " + name + ".1/history", run.temp);
        for (int tries = 0; tries < 500 && is_link(run.temp + "\\" + name + ".1\\history"); ++tries)
            Sleep(20);
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
