// The sample program, run under the debugger for one frame with Continue pressed at its first
// call (by tools/panel_press), leaves the history that expected/spinning_cube.gls holds, line for
// line.
#include "harness.h"

#include "panel/resource.h"

#include <regex>

static std::string program_folder_path()
{
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string folder = path;
    return folder.substr(0, folder.find_last_of('\\') + 1);
}

// Addresses of output arguments differ from run to run; the rest is the same every time.
static std::string without_addresses(const std::string &text)
{
    return std::regex_replace(text, std::regex("0x[0-9A-F]{5,}"), "0xADDRESS");
}

int main()
{
    std::string temp = child_temp("sample");
    CreateDirectoryA(temp.c_str(), nullptr);
    SetEnvironmentVariableA("TEMP", temp.c_str());
    std::string command = "\"" + program_folder_path() + "spinning_cube.exe\" --frames 1";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process;
    if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        check(false, "could not start the sample");
        return finish("sample_history");
    }
    // Continue pressed from outside, as the demo does it.
    std::string press = "\"" + program_folder_path() + "panel_press.exe\" continue 60";
    PROCESS_INFORMATION presser;
    STARTUPINFOA presser_startup = {};
    presser_startup.cb = sizeof presser_startup;
    DWORD press_code = 99;
    if (CreateProcessA(nullptr, &press[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &presser_startup, &presser)) {
        WaitForSingleObject(presser.hProcess, 90000);
        GetExitCodeProcess(presser.hProcess, &press_code);
        CloseHandle(presser.hProcess);
        CloseHandle(presser.hThread);
    }
    check(press_code == 0, "the sample never halted at its first call");
    check(WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0, "the sample did not end");
    DWORD exit_code = 99;
    GetExitCodeProcess(process.hProcess, &exit_code);
    check(exit_code == 0, "the sample ended with %lu", (unsigned long)exit_code);

    std::string history = session_directory(temp, process.dwThreadId) + "\\history\\";
    std::vector<std::string> files;
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((history + "*.gls").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do
            files.push_back(entry.cFileName);
        while (FindNextFileA(search, &entry));
        FindClose(search);
    }
    check(files.size() == 2, "%d history files, expected 0.gls and the context's", (int)files.size());
    for (const std::string &name : files) {
        std::string expected_name = name == "0.gls" ? "spinning_cube_0.gls" : "spinning_cube.gls";
        std::string expected = read_file(program_folder_path() + "expected\\" + expected_name);
        check(!expected.empty(), "no %s", expected_name.c_str());
        check_text(name.c_str(), without_addresses(read_file(history + name)), on_disk(expected));
    }
    CloseHandle(process.hProcess);
    CloseHandle(process.hThread);
    child_run sample = {temp, 0, false, "", "", ""};
    clean_up(sample);
    return finish("sample_history");
}
