#include "tests/wine/harness.h"

#include "panel/resource.h"
#include "tools/player/png.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>

// ---------------------------------------------------------------------------------------------
// Checks

static int failures;

void check_at(const char *file, int line, bool condition, const char *format, ...)
{
    if (condition)
        return;
    ++failures;
    va_list args;
    va_start(args, format);
    printf("%s:%d: FAIL: ", file, line);
    vprintf(format, args);
    printf("\n");
    va_end(args);
    fflush(stdout);
}

int failure_count() { return failures; }

int finish(const char *name)
{
    if (failures == 0)
        printf("%s: passed\n", name);
    else
        printf("%s: %d failed\n", name, failures);
    return failures == 0 ? 0 : 1;
}

void check_text_at(const char *file, int line, const char *what, const std::string &found,
                   const std::string &expected)
{
    check_at(file, line, found == expected, "%s differs; found:\n%s\n-- expected:\n%s\n--", what, found.c_str(), expected.c_str());
}

int child_end() { return failures ? CHILD_CHECKS_FAILED : 0; }

// ---------------------------------------------------------------------------------------------
// Running myself as the application

bool is_child(int argc, char **argv) { return argc > 1 && strcmp(argv[1], "child") == 0; }

std::string read_file(const std::string &path)
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

static void remove_tree(const std::string &path)
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

std::string child_temp(const char *label)
{
    char base[MAX_PATH];
    GetTempPathA(sizeof base, base);
    char folder[MAX_PATH + 64];
    snprintf(folder, sizeof folder, "%squondale_%s_%lu", base, label, GetCurrentProcessId());
    return folder;
}

static std::string next_settings;

void child_settings(const std::string &text) { next_settings = text; }

// Every program the checks start goes through these two. A child given an error file inherits
// the checker's output, writes its errors there, and runs on a desktop of its own, which Wine
// draws as a window with the frames and titles of the windows inside: a screenshot shows what a
// person sees, with no window manager needed.
static bool start_program(std::string command, const char *folder, PROCESS_INFORMATION *process,
                          HANDLE error_file = nullptr)
{
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    if (error_file) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
        startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
        startup.hStdError = error_file;
        startup.lpDesktop = (LPSTR)"quondale";
    }
    *process = {};
    return CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, folder, &startup,
                          process);
}

// Waits for a started program and gives its exit code; 99 when it did not end in time.
static DWORD wait_program(PROCESS_INFORMATION *process, DWORD timeout_ms, bool *timed_out = nullptr)
{
    DWORD exit_code = 99;
    if (WaitForSingleObject(process->hProcess, timeout_ms) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process->hProcess, &exit_code);
    } else {
        TerminateProcess(process->hProcess, 99);
        WaitForSingleObject(process->hProcess, 5000);
        if (timed_out)
            *timed_out = true;
    }
    CloseHandle(process->hProcess);
    CloseHandle(process->hThread);
    return exit_code;
}

child_run run_child(const char *label, const char *arguments, DWORD timeout_ms, bool make_temp)
{
    child_run run = {child_temp(label), ~0u, false, "", "", ""};
    std::string work = run.temp + "_work";
    remove_tree(work);
    if (make_temp) {
        remove_tree(run.temp);
        CreateDirectoryA(run.temp.c_str(), nullptr);
    }
    CreateDirectoryA(work.c_str(), nullptr);
    if (!next_settings.empty()) {
        FILE *file = fopen((work + "\\quondale.cfg").c_str(), "wb");
        if (file) {
            fwrite(next_settings.data(), 1, next_settings.size(), file);
            fclose(file);
        }
        next_settings.clear();
    }
    std::string dump = work + "\\dump.txt", facts = work + "\\facts.txt", errors = work + "\\stderr.txt";

    SetEnvironmentVariableA("TEMP", run.temp.c_str());
    SetEnvironmentVariableA("QUONDALE_RECORD_DUMP", dump.c_str());
    SetEnvironmentVariableA("QUONDALE_FATAL_TO_STDERR", "1");
    SetEnvironmentVariableA("QUONDALE_TEST_FACTS", facts.c_str());
    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    HANDLE error_file = CreateFileA(errors.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    char module[MAX_PATH];
    GetModuleFileNameA(nullptr, module, sizeof module);
    // The work folder is the child's current directory: the panel reads quondale.cfg there.
    PROCESS_INFORMATION process;
    if (start_program(std::string("\"") + module + "\" child " + arguments, work.c_str(), &process, error_file))
        run.exit_code = wait_program(&process, timeout_ms, &run.timed_out);
    CloseHandle(error_file);
    // The parent's own detach must not write over the child's dump.
    SetEnvironmentVariableA("QUONDALE_RECORD_DUMP", nullptr);
    SetEnvironmentVariableA("QUONDALE_TEST_FACTS", nullptr);
    run.dump = read_file(dump);
    run.facts = read_file(facts);
    run.errors = read_file(errors);
    remove_tree(work);
    return run;
}

void expect_end_at(const char *file, int line, const child_run &run, DWORD exit_code)
{
    check_at(file, line, !run.timed_out, "the child hung");
    check_at(file, line, run.exit_code == exit_code, "child exit code %lu, expected %lu",
             (unsigned long)run.exit_code, (unsigned long)exit_code);
    check_at(file, line, run.errors.empty(), "the child wrote to stderr: %s", run.errors.c_str());
    if (run.facts.find("driver_done=") != std::string::npos) {
        check_at(file, line, fact(run, "driver_done") == 1, "the driver did not finish");
        check_at(file, line, fact(run, "driver_failures") == 0, "the driver found faults");
    }
}

void clean_up(const child_run &run)
{
    remove_tree(run.temp);
    DeleteFileA(run.temp.c_str());
}

int check_main(int argc, char **argv, const char *name, int (*child)())
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child(name);
    expect_end(run);
    clean_up(run);
    return finish(name);
}

void write_fact(const char *key, unsigned long long value)
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

unsigned long long fact(const child_run &run, const char *key)
{
    std::string pattern = std::string("\n") + key + "=";
    std::string facts = "\n" + run.facts;
    size_t at = facts.find(pattern);
    return at == std::string::npos ? ~0ull : strtoull(facts.c_str() + at + pattern.size(), nullptr, 10);
}

std::string temp_path(const char *name)
{
    char folder[MAX_PATH];
    GetEnvironmentVariableA("TEMP", folder, sizeof folder);
    return std::string(folder) + "\\" + name;
}

std::string session_directory(const std::string &temp, DWORD thread)
{
    return temp + "\\QUONDALE_" + std::to_string(thread);
}

std::string without_visual_info(const std::string &history)
{
    static const std::string head = "glsString(\"Visual Info\", \"";
    std::string text = history;
    for (size_t at = text.find(head); at != std::string::npos; at = text.find(head, at + 1)) {
        size_t start = at + head.size(), end = text.find('"', start);
        if (end != std::string::npos)
            text.replace(start, end - start, "...");
    }
    return text;
}

std::string first_sight(int width, int height)
{
    return "glsString(\"Visual Info\", \"...\");\nglsString(\"Viewport Info\", \"0 0 " + std::to_string(width) + " " +
           std::to_string(height) + "\");\n";
}

std::string expected_file(const char *name) { return read_file(program_folder() + "expected\\" + name); }

std::string program_folder()
{
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string folder = path;
    return folder.substr(0, folder.find_last_of('\\') + 1);
}

// Runs this program again: with the debugger in place, beside the copies of quondale.dll and the
// forwarding opengl32.dll; without, as a copy in a subfolder that holds no DLLs, so that the
// loader finds the system's opengl32 as it would for any program.
int run_self(bool with_debugger, const std::string &arguments)
{
    char own[MAX_PATH];
    GetModuleFileNameA(nullptr, own, MAX_PATH);
    std::string program = own, folder = program_folder();
    if (!with_debugger) {
        folder += "system_gl\\";
        CreateDirectoryA(folder.c_str(), nullptr);
        program = folder + program.substr(program.find_last_of('\\') + 1);
        check(CopyFileA(own, program.c_str(), FALSE), "cannot copy the program to %s", program.c_str());
    }
    return run_program("\"" + program + "\" " + arguments, folder, INFINITE);
}

int run_program(const std::string &command, const std::string &folder, DWORD timeout_ms)
{
    PROCESS_INFORMATION process;
    if (!start_program(command, folder.c_str(), &process))
        return -1;
    return (int)wait_program(&process, timeout_ms);
}

sample_run run_sample(const std::string &temp, const std::string &arguments)
{
    sample_run run = {99, "", {}};
    CreateDirectoryA(temp.c_str(), nullptr);
    SetEnvironmentVariableA("TEMP", temp.c_str());
    PROCESS_INFORMATION sample, presser;
    if (!start_program("\"" + program_folder() + "spinning_cube.exe\" " + arguments, nullptr, &sample)) {
        check(false, "could not start the sample");
        return run;
    }
    // Continue pressed from outside, as the demo does it, on this sample's panel only.
    DWORD press_code = 99;
    if (start_program("\"" + program_folder() + "panel_press.exe\" continue 60 " + std::to_string(sample.dwProcessId),
                      nullptr, &presser))
        press_code = wait_program(&presser, 90000);
    DWORD thread = sample.dwThreadId;
    run.exit_code = wait_program(&sample, 60000);
    check(press_code == 0, "the sample never halted at its first call");
    check(run.exit_code == 0, "the sample ended with %lu", (unsigned long)run.exit_code);
    run.history_folder = session_directory(temp, thread) + "\\history\\";
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((run.history_folder + "*.gls").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do
            run.files.push_back(entry.cFileName);
        while (FindNextFileA(search, &entry));
        FindClose(search);
    }
    std::sort(run.files.begin(), run.files.end());
    return run;
}

bool directory_exists(const std::string &path)
{
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::string on_disk(const std::string &text)
{
    std::string result;
    for (char c : text)
        result += c == '\n' ? std::string("\r\r\n") : std::string(1, c);
    return result;
}

std::string text_mode(const std::string &text)
{
    std::string result;
    for (char c : text)
        result += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return result;
}

static bool word_char(char c) { return isalnum((unsigned char)c) || c == '_'; }

std::string substitute(std::string text, const std::vector<std::pair<std::string, std::string>> &names)
{
    // Longer keys first, so that a directory is named before the thread id inside it; a key that
    // begins or ends with a word character matches only a whole word there.
    std::vector<std::pair<std::string, std::string>> sorted = names;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto &a, const auto &b) { return a.first.size() > b.first.size(); });
    for (const auto &[key, value] : sorted) {
        if (key.empty())
            continue;
        for (size_t at = text.find(key); at != std::string::npos; at = text.find(key, at)) {
            size_t end = at + key.size();
            bool whole = !(word_char(key.front()) && at > 0 && word_char(text[at - 1])) &&
                         !(word_char(key.back()) && end < text.size() && word_char(text[end]));
            if (whole) {
                text.replace(at, key.size(), value);
                at += value.size();
            } else {
                at = end;
            }
        }
    }
    return text;
}

// ---------------------------------------------------------------------------------------------
// A GL window

void pump_messages()
{
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

gl_window open_window(int width, int height)
{
    HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA window_class = {};
    window_class.style = CS_OWNDC;
    window_class.lpfnWndProc = DefWindowProcA;
    window_class.hInstance = instance;
    window_class.hCursor = LoadCursor(nullptr, IDC_ARROW);
    window_class.lpszClassName = "quondale_check";
    RegisterClassA(&window_class); // fails harmlessly for a second window
    DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
    RECT frame = {0, 0, width, height};
    AdjustWindowRect(&frame, style, FALSE);
    gl_window made = {};
    made.width = width;
    made.height = height;
    made.window = CreateWindowA("quondale_check", "quondale check", style, 0, 0, frame.right - frame.left,
                                frame.bottom - frame.top, nullptr, nullptr, instance, nullptr);
    check(made.window != nullptr, "CreateWindow failed, error %lu", GetLastError());
    ShowWindow(made.window, SW_SHOW);
    pump_messages();
    made.dc = GetDC(made.window);
    return made;
}

void set_pixel_format(gl_window *window, int alpha_bits)
{
    PIXELFORMATDESCRIPTOR wanted = {};
    wanted.nSize = sizeof wanted;
    wanted.nVersion = 1;
    wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    wanted.iPixelType = PFD_TYPE_RGBA;
    wanted.cColorBits = 24;
    wanted.cAlphaBits = (BYTE)alpha_bits;
    wanted.cDepthBits = 24;
    wanted.iLayerType = PFD_MAIN_PLANE;
    int format = ChoosePixelFormat(window->dc, &wanted);
    check(format > 0 && SetPixelFormat(window->dc, format, &wanted), "no pixel format, error %lu", GetLastError());
}

gl_window open_gl_window(int width, int height, int alpha_bits)
{
    gl_window made = open_window(width, height);
    set_pixel_format(&made, alpha_bits);
    made.context = wglCreateContext(made.dc);
    check(made.context && wglMakeCurrent(made.dc, made.context), "no current GL context, error %lu",
          GetLastError());
    return made;
}

void close_gl_window(gl_window *window)
{
    if (window->context) {
        wglMakeCurrent(nullptr, nullptr);
        wglDeleteContext(window->context);
    }
    ReleaseDC(window->window, window->dc);
    DestroyWindow(window->window);
    pump_messages();
    *window = gl_window{};
}

std::vector<uint8_t> read_rgb(int width, int height)
{
    std::vector<uint8_t> rgb((size_t)width * height * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glFinish();
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
    return rgb;
}

bool debugger_loaded() { return GetModuleHandleA("quondale.dll") != nullptr; }

void check_gl_source(int argc, char **argv)
{
    for (int at = 1; at + 1 < argc; ++at)
        if (strcmp(argv[at], "--expect") == 0) {
            bool want_debugger = strcmp(argv[at + 1], "debugger") == 0;
            check(want_debugger == debugger_loaded(), "expected GL from %s, but quondale.dll is %s",
                  want_debugger ? "quondale.dll" : "the system", debugger_loaded() ? "loaded" : "not loaded");
        }
}

// ---------------------------------------------------------------------------------------------
// The panel

static void (*driver_scenario)();

static DWORD WINAPI driver_thread(void *)
{
    driver_scenario();
    return 0;
}

void start_driver(void (*scenario)())
{
    driver_scenario = scenario;
    HANDLE thread = CreateThread(nullptr, 0, driver_thread, nullptr, 0, nullptr);
    if (!thread)
        give_up("the driver thread did not start");
    CloseHandle(thread);
}

struct window_search {
    const char *title;
    DWORD thread;
    HWND found;
};

// A window's title as the system keeps it: GetWindowText would ask a window of another thread of
// the program, which may stand halted, and wait for it.
static std::string title_of(HWND window)
{
    wchar_t wide[256];
    char title[256] = "";
    if (InternalGetWindowText(window, wide, 256) > 0)
        WideCharToMultiByte(CP_ACP, 0, wide, -1, title, sizeof title, nullptr, nullptr);
    return title;
}

static BOOL CALLBACK look_at_window(HWND window, LPARAM argument)
{
    window_search *search = (window_search *)argument;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || !IsWindowVisible(window) || title_of(window) != search->title)
        return TRUE;
    if (search->thread && control_text(window, IDC_THREAD_BANNER) != "App Process ID = " + std::to_string(search->thread))
        return TRUE;
    search->found = window;
    return FALSE;
}

HWND find_dialog(const char *title, DWORD thread, DWORD timeout_ms)
{
    DWORD start = GetTickCount();
    for (;;) {
        window_search search = {title, thread, nullptr};
        EnumWindows(look_at_window, (LPARAM)&search);
        if (search.found || GetTickCount() - start > timeout_ms)
            return search.found;
        Sleep(20);
    }
}

HWND need_dialog(const char *title)
{
    HWND dialog = find_dialog(title);
    if (!dialog)
        give_up(("no " + std::string(title) + " window").c_str());
    return dialog;
}

static HWND the_control_window;

HWND control_window()
{
    if (!the_control_window)
        the_control_window = find_dialog("quondale");
    if (!the_control_window)
        give_up("no control window");
    return the_control_window;
}

std::string control_text(HWND dialog, int id)
{
    HWND control = GetDlgItem(dialog, id);
    if (!control)
        return "<no control " + std::to_string(id) + ">";
    int length = (int)SendMessageA(control, WM_GETTEXTLENGTH, 0, 0);
    std::string text(length + 1, '\0');
    int got = (int)SendMessageA(control, WM_GETTEXT, length + 1, (LPARAM)&text[0]);
    text.resize(got < 0 ? 0 : got);
    return text;
}

std::string list_row(HWND dialog, int id, int row)
{
    int length = (int)SendDlgItemMessageA(dialog, id, LB_GETTEXTLEN, row, 0);
    if (length < 0)
        return "";
    std::string text(length + 1, '\0');
    SendDlgItemMessageA(dialog, id, LB_GETTEXT, row, (LPARAM)&text[0]);
    text.resize(length);
    return text;
}

std::vector<std::string> list_rows(HWND dialog, int id)
{
    std::vector<std::string> rows;
    int count = (int)SendDlgItemMessageA(dialog, id, LB_GETCOUNT, 0, 0);
    for (int row = 0; row < count; ++row)
        rows.push_back(list_row(dialog, id, row));
    return rows;
}

int checked(HWND dialog, int id) { return (int)SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0); }

void click(HWND dialog, int id) { SendDlgItemMessageA(dialog, id, BM_CLICK, 0, 0); }

void menu(HWND dialog, int id) { SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, 0), 0); }

void post_command(HWND dialog, int id) { PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0); }

// The edit control of the file dialog's name box: in the Explorer dialog a combo box (cmb13)
// holds it, in the old one it is edt1 itself.
static HWND name_box(HWND dialog)
{
    if (HWND edit = GetDlgItem(dialog, 0x480))
        return edit;
    HWND box = GetDlgItem(dialog, 0x47c);
    for (HWND inner = box; inner;) {
        char kind[32];
        GetClassNameA(inner, kind, sizeof kind);
        if (strcmp(kind, "Edit") == 0)
            return inner;
        inner = GetWindow(inner, GW_CHILD);
    }
    return nullptr;
}

static HWND save_button(HWND dialog)
{
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        char kind[32];
        GetClassNameA(child, kind, sizeof kind);
        if (GetDlgCtrlID(child) == IDOK && strcmp(kind, "Button") == 0)
            return child;
    }
    return nullptr;
}

std::string save_as(const std::string &path)
{
    DeleteFileA(path.c_str());
    HWND dialog = find_dialog("Save As", 0, 10000);
    HWND name = dialog ? name_box(dialog) : nullptr;
    HWND save = dialog ? save_button(dialog) : nullptr;
    if (!name || !save)
        return "";
    // The dialog puts the offered name into the box while it sets itself up: type the path only
    // once it stands there, and see that it stays.
    DWORD start = GetTickCount();
    char shown[MAX_PATH] = "";
    while (GetTickCount() - start < 10000) {
        GetWindowTextA(name, shown, sizeof shown);
        if (shown[0] && path != shown)
            SendMessageA(name, WM_SETTEXT, 0, (LPARAM)path.c_str());
        else if (path == shown)
            break;
        Sleep(50);
    }
    SendMessageA(save, BM_CLICK, 0, 0);
    // The panel thread writes the file once the dialog has returned: wait for it to stand still.
    std::string text, last = "\x01";
    while (GetTickCount() - start < 20000) {
        text = read_file(path);
        if (!text.empty() && text == last)
            break;
        last = text;
        Sleep(200);
    }
    return text;
}

void select_row(HWND dialog, int list_id, int row)
{
    HWND list = GetDlgItem(dialog, list_id);
    SendMessageA(list, LB_SETCURSEL, row, 0);
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(list_id, LBN_SELCHANGE), (LPARAM)list);
}

// The controls of a dialog, in z order, with their rectangles in its client area.
static std::vector<std::pair<int, RECT>> control_rects(HWND dialog)
{
    std::vector<std::pair<int, RECT>> rects;
    for (HWND control = GetWindow(dialog, GW_CHILD); control; control = GetWindow(control, GW_HWNDNEXT)) {
        RECT rect;
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, dialog, (POINT *)&rect, 2);
        rects.push_back({GetDlgCtrlID(control), rect});
    }
    return rects;
}

void check_layout(HWND dialog, const char *name)
{
    std::vector<std::pair<int, RECT>> was = control_rects(dialog);
    RECT frame, client;
    GetWindowRect(dialog, &frame);
    SetWindowPos(dialog, nullptr, 0, 0, frame.right - frame.left + 37, frame.bottom - frame.top + 29,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    GetClientRect(dialog, &client);
    screenshot(dialog, (std::string("grown ") + name).c_str());
    std::vector<std::pair<int, RECT>> now = control_rects(dialog);
    int width = client.right, height = client.bottom;
    std::string text = std::string(name) + "\n";
    for (size_t i = 0; i < now.size() && i < was.size(); ++i) {
        const RECT &a = was[i].second, &b = now[i].second;
        int w = b.right - b.left, free = width - (w / 2 * 2 + 16);
        bool same_width = w == a.right - a.left, same_height = b.bottom - b.top == a.bottom - a.top;
        const char *across = b.left == a.left && b.right == width       ? "over"
                             : b.left == a.left && b.right == width - 4 ? "reach"
                             : !same_width                              ? "moved"
                             : b.right == width - 8                     ? "end"
                             : b.left == (width - w) / 2                ? "centre"
                             : b.left == a.left                         ? "left"
                             : b.left == free / 3 + 8                   ? "first third"
                             : b.left == 2 * free / 3 + 8               ? "second third"
                                                                        : "moved";
        std::string down = !same_height ? "moved" : b.top == a.top ? "top" : b.bottom == height - 4 ? "bottom" : "moved";
        // A list box keeps whole rows: it may stop short by less than a row.
        int row = std::max(1, (int)SendDlgItemMessageA(dialog, now[i].first, LB_GETITEMHEIGHT, 0, 0));
        for (size_t j = 0; j < now.size() && down == "moved" && b.top == a.top; ++j)
            if (now[j].second.top - 4 - b.bottom >= 0 && now[j].second.top - 4 - b.bottom < row)
                down = "above " + std::to_string(now[j].first);
        text += std::to_string(now[i].first) + " " + across + " " + down + "\n";
    }
    std::string expected = "\n" + read_file(program_folder() + "expected\\layouts.txt");
    size_t at = expected.find("\n" + std::string(name) + "\n");
    size_t end = at == std::string::npos ? at : expected.find("\n\n", at + 1);
    check_text(name, text, at == std::string::npos ? "" : expected.substr(at + 1, end - at));
}

bool wait_text(HWND dialog, int id, const std::string &text, DWORD timeout_ms)
{
    DWORD start = GetTickCount();
    while (control_text(dialog, id) != text) {
        if (GetTickCount() - start > timeout_ms)
            return false;
        Sleep(5);
    }
    return true;
}

void expect_halt_at_line(const char *file, int line, HWND control, const std::string &call)
{
    if (!wait_text(control, IDC_STATUS, "Halted"))
        give_up_at(file, line, ("no halt at " + call).c_str());
    std::string shown = control_text(control, IDC_LAST_CALL);
    check_at(file, line, shown == call, "halted at \"%s\", expected \"%s\"", shown.c_str(), call.c_str());
}

void give_up_at(const char *file, int line, const char *reason)
{
    std::string texts;
    if (HWND control = the_control_window ? the_control_window : find_dialog("quondale", 0, 0))
        for (int id : {IDC_THREAD_BANNER, IDC_CONTEXT_BANNER, IDC_LAST_CALL, IDC_STATUS})
            texts += "\n  " + std::to_string(id) + ": \"" + control_text(control, id) + "\"";
    else
        texts = "\n  no control window";
    printf("%s:%d: FAIL: %s; the panel shows:%s\n", file, line, reason, texts.c_str());
    fflush(stdout);
    ExitProcess(CHILD_CHECKS_FAILED);
}

void driver_done()
{
    write_fact("driver_failures", (unsigned long long)failures);
    write_fact("driver_done", 1);
}

volatile LONG calls_returned;

void returned() { InterlockedIncrement(&calls_returned); }

void wait_for_the_end()
{
    for (;;)
        Sleep(1000);
}

// Presses Continue on the first "Halted" of the control window and stops watching: a watcher that
// still sends messages to the panel while the process ends can take the process down with it.
static DWORD WINAPI continue_when_halted(void *)
{
    HWND control = find_dialog("quondale", 0, 60000);
    if (control && wait_text(control, IDC_STATUS, "Halted", 60000))
        click(control, IDC_CONTINUE);
    return 0;
}

void continue_first_halt()
{
    HANDLE thread = CreateThread(nullptr, 0, continue_when_halted, nullptr, 0, nullptr);
    if (thread)
        CloseHandle(thread);
}

static volatile LONG continuing;
static HANDLE continuer;

static BOOL CALLBACK continue_if_halted(HWND window, LPARAM)
{
    char kind[16];
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId() && IsWindowVisible(window) && GetClassNameA(window, kind, sizeof kind) &&
        strcmp(kind, "#32770") == 0 && title_of(window) == "quondale" && control_text(window, IDC_STATUS) == "Halted")
        click(window, IDC_CONTINUE);
    return TRUE;
}

static DWORD WINAPI keep_continuing(void *)
{
    while (continuing) {
        EnumWindows(continue_if_halted, 0);
        Sleep(20);
    }
    return 0;
}

void start_continuing()
{
    continuing = 1;
    continuer = CreateThread(nullptr, 0, keep_continuing, nullptr, 0, nullptr);
}

void stop_continuing()
{
    InterlockedExchange(&continuing, 0);
    while (continuer && MsgWaitForMultipleObjects(1, &continuer, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0)
        pump_messages();
    if (continuer)
        CloseHandle(continuer);
    continuer = nullptr;
}

// ---------------------------------------------------------------------------------------------
// Screenshots, written by the player's PNG writer

void screenshot(HWND window, const char *name)
{
    RECT area = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    if (window) {
        SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
        RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN | RDW_FRAME);
        Sleep(300); // the X server draws what Wine asked for
        GetWindowRect(window, &area);
    }
    int width = area.right - area.left, height = area.bottom - area.top;
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height; // bottom row first, as GL reads and the PNG writer takes
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    int stride = (width * 3 + 3) & ~3;
    std::vector<uint8_t> bgr((size_t)stride * height), rgb((size_t)width * height * 3);
    GetDIBits(memory, bitmap, 0, height, bgr.data(), &info, DIB_RGB_COLORS);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                rgb[((size_t)y * width + x) * 3 + c] = bgr[(size_t)y * stride + x * 3 + 2 - c];
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);

    char folder[MAX_PATH] = "screenshots";
    GetEnvironmentVariableA("QUONDALE_SCREENSHOTS", folder, sizeof folder);
    CreateDirectoryA(folder, nullptr);
    std::string path = std::string(folder) + "\\" + name + ".png";
    text_buffer png = {};
    png_from_rgb(rgb.data(), width, height, &png);
    check(!png.failed && text_write_file(&png, path.c_str()), "cannot write %s", path.c_str());
    text_free(&png);
}
