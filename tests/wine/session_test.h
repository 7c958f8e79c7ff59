// Support for the session checks. Each program runs itself twice: as the parent it makes a fresh
// TEMP, starts itself as the child with the debug switches set, waits, and then judges what the
// child left behind: its exit code, its standard error, the temporary directories, the facts the
// child wrote and the record dump that quondale writes at process detach (QUONDALE_RECORD_DUMP).
// As the child it plays the application.
#pragma once

#include <windows.h>
#include <GL/gl.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// Exported by opengl32.dll but not declared by the platform's headers.
extern "C" {
__declspec(dllimport) int WINAPI wglChoosePixelFormat(HDC, const PIXELFORMATDESCRIPTOR *);
__declspec(dllimport) int WINAPI wglDescribePixelFormat(HDC, int, UINT, PIXELFORMATDESCRIPTOR *);
__declspec(dllimport) int WINAPI wglGetPixelFormat(HDC);
__declspec(dllimport) BOOL WINAPI wglSetPixelFormat(HDC, int, const PIXELFORMATDESCRIPTOR *);
__declspec(dllimport) BOOL WINAPI wglSwapBuffers(HDC);
}

inline int check_failures;

inline void check(bool condition, const char *format, ...) __attribute__((format(printf, 2, 3)));

inline void check(bool condition, const char *format, ...)
{
    if (condition)
        return;
    ++check_failures;
    va_list args;
    va_start(args, format);
    printf("FAIL: ");
    vprintf(format, args);
    printf("\n");
    va_end(args);
    fflush(stdout);
}

inline bool is_child(int argc, char **argv) { return argc > 1 && strcmp(argv[1], "child") == 0; }

inline std::string read_file(const std::string &path)
{
    std::string text;
    FILE *file = fopen(path.c_str(), "rb");
    if (!file)
        return text;
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, got);
    fclose(file);
    return text;
}

inline std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty())
            lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

// Lines of the dump that begin with prefix.
inline std::vector<std::string> dump_lines(const std::string &dump, const char *prefix)
{
    std::vector<std::string> found;
    for (const std::string &line : lines_of(dump))
        if (line.compare(0, strlen(prefix), prefix) == 0)
            found.push_back(line);
    return found;
}

// The value of "key=" in a dump line, up to the next space.
inline std::string field(const std::string &line, const char *key)
{
    std::string pattern = std::string(" ") + key + "=";
    size_t at = line.find(pattern);
    if (at == std::string::npos)
        return "";
    at += pattern.size();
    size_t end = line.find(' ', at);
    return line.substr(at, end == std::string::npos ? std::string::npos : end - at);
}

// The n-th comma-separated count of a list field such as wgl=.
inline long long count_at(const std::string &line, const char *key, int index)
{
    std::string list = field(line, key);
    size_t at = 0;
    for (int i = 0; i < index; ++i) {
        at = list.find(',', at);
        if (at == std::string::npos)
            return -1;
        ++at;
    }
    return atoll(list.c_str() + at);
}

inline bool directory_exists(const std::string &path)
{
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

inline bool file_exists(const std::string &path)
{
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// Names of the QUONDALE_* directories below dir.
inline std::vector<std::string> session_directories(const std::string &dir)
{
    std::vector<std::string> names;
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((dir + "\\QUONDALE_*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do {
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            names.push_back(entry.cFileName);
    } while (FindNextFileA(search, &entry));
    FindClose(search);
    return names;
}

inline std::string session_directory(const std::string &temp, DWORD thread)
{
    char name[64];
    snprintf(name, sizeof name, "\\QUONDALE_%lu", (unsigned long)thread);
    return temp + name;
}

// Facts the child tells the parent: key=value lines in the file named by QUONDALE_TEST_FACTS.
inline void write_fact(const char *key, unsigned long long value)
{
    char path[MAX_PATH];
    if (!GetEnvironmentVariableA("QUONDALE_TEST_FACTS", path, sizeof path))
        return;
    FILE *file = fopen(path, "a");
    if (!file)
        return;
    fprintf(file, "%s=%llu\n", key, value);
    fclose(file);
}

inline unsigned long long fact(const std::string &facts, const char *key)
{
    std::string pattern = std::string(key) + "=";
    for (const std::string &line : lines_of(facts))
        if (line.compare(0, pattern.size(), pattern) == 0)
            return strtoull(line.c_str() + pattern.size(), nullptr, 10);
    return ~0ull;
}

// Removes what a check left below path.
inline void remove_tree(const std::string &path)
{
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((path + "\\*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            std::string name = entry.cFileName;
            if (name == "." || name == "..")
                continue;
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                remove_tree(path + "\\" + name);
            else
                DeleteFileA((path + "\\" + name).c_str());
        } while (FindNextFileA(search, &entry));
        FindClose(search);
    }
    RemoveDirectoryA(path.c_str());
}

struct child_run {
    std::string temp;  // the child's TEMP
    DWORD exit_code;
    bool timed_out;
    std::string dump;
    std::string errors; // the child's standard error
    std::string facts;
};

// Starts this program as the child with TEMP set to temp (made fresh unless make_temp is false),
// and collects what it left.
inline child_run run_child(const std::string &temp, bool make_temp = true)
{
    child_run run;
    run.temp = temp;
    run.exit_code = ~0u;
    run.timed_out = false;
    char base[MAX_PATH];
    GetTempPathA(sizeof base, base);
    char unique[MAX_PATH + 64];
    snprintf(unique, sizeof unique, "%squondale_check_%lu", base, GetCurrentProcessId());
    std::string work = unique;
    CreateDirectoryA(work.c_str(), nullptr);
    if (make_temp)
        CreateDirectoryA(temp.c_str(), nullptr);
    std::string dump_path = work + "\\dump.txt";
    std::string facts_path = work + "\\facts.txt";
    std::string errors_path = work + "\\stderr.txt";
    DeleteFileA(dump_path.c_str());
    DeleteFileA(facts_path.c_str());

    SetEnvironmentVariableA("TEMP", temp.c_str());
    SetEnvironmentVariableA("QUONDALE_RECORD_DUMP", dump_path.c_str());
    SetEnvironmentVariableA("QUONDALE_FATAL_TO_STDERR", "1");
    SetEnvironmentVariableA("QUONDALE_TEST_FACTS", facts_path.c_str());

    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE errors = CreateFileA(errors_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = errors;
    PROCESS_INFORMATION process = {};
    char module[MAX_PATH];
    GetModuleFileNameA(nullptr, module, sizeof module);
    std::string command = std::string("\"") + module + "\" child";
    std::vector<char> line(command.begin(), command.end());
    line.push_back(0);
    if (CreateProcessA(module, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        if (WaitForSingleObject(process.hProcess, 60000) == WAIT_TIMEOUT) {
            run.timed_out = true;
            TerminateProcess(process.hProcess, 99);
            WaitForSingleObject(process.hProcess, 5000);
        }
        GetExitCodeProcess(process.hProcess, &run.exit_code);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    CloseHandle(errors);

    // The parent's own detach must not write over the child's dump.
    SetEnvironmentVariableA("QUONDALE_RECORD_DUMP", nullptr);
    SetEnvironmentVariableA("QUONDALE_TEST_FACTS", nullptr);
    run.dump = read_file(dump_path);
    run.facts = read_file(facts_path);
    run.errors = read_file(errors_path);
    remove_tree(work);
    return run;
}

// A fresh TEMP for one check, below the parent's own.
inline std::string fresh_temp(const char *label)
{
    char base[MAX_PATH];
    GetTempPathA(sizeof base, base);
    char path[MAX_PATH + 64];
    snprintf(path, sizeof path, "%squondale_%s_%lu", base, label, GetCurrentProcessId());
    return path;
}

// A window with a pixel format set, for the contexts of a check.
struct gl_window {
    HWND window;
    HDC dc;
    int pixel_format;
};

inline gl_window make_gl_window()
{
    gl_window made = {};
    WNDCLASSA window_class = {};
    window_class.style = CS_OWNDC;
    window_class.lpfnWndProc = DefWindowProcA;
    window_class.hInstance = GetModuleHandleA(nullptr);
    window_class.lpszClassName = "session_check";
    RegisterClassA(&window_class);
    made.window = CreateWindowA("session_check", "session check", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN |
                                WS_CLIPSIBLINGS, 0, 0, 64, 64, nullptr, nullptr, window_class.hInstance, nullptr);
    made.dc = GetDC(made.window);
    return made;
}

inline PIXELFORMATDESCRIPTOR wanted_format()
{
    PIXELFORMATDESCRIPTOR format = {};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 24;
    format.cDepthBits = 16;
    format.iLayerType = PFD_MAIN_PLANE;
    return format;
}

// The child's exit code when its own checks failed; 1 is the fatal report's.
enum { CHILD_CHECKS_FAILED = 2 };

// The check's result: the count of failures, printed, as the exit code.
inline int finish(const char *name)
{
    if (check_failures == 0)
        printf("%s: passed\n", name);
    else
        printf("%s: %d failed\n", name, check_failures);
    return check_failures == 0 ? 0 : 1;
}
