#include "panel_driver.h"

#include <cstdio>

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
    if (!thread) {
        printf("FAIL: the driver thread did not start\n");
        ExitProcess(CHILD_CHECKS_FAILED);
    }
    CloseHandle(thread);
}

struct window_search {
    const char *title;
    DWORD thread;
    HWND found;
};

static BOOL CALLBACK look_at_window(HWND window, LPARAM argument)
{
    window_search *search = (window_search *)argument;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || !IsWindowVisible(window))
        return TRUE;
    char title[256];
    GetWindowTextA(window, title, sizeof title);
    if (strcmp(title, search->title) != 0)
        return TRUE;
    if (search->thread != 0 && panel_text(window, PANEL_THREAD_BANNER) !=
                                   "App Process ID = " + std::to_string(search->thread))
        return TRUE;
    search->found = window;
    return FALSE;
}

static HWND find_window(const char *title, DWORD thread, DWORD timeout_ms)
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

HWND find_panel_window(const char *title, DWORD timeout_ms) { return find_window(title, 0, timeout_ms); }

HWND find_control_window(DWORD thread, DWORD timeout_ms) { return find_window("quondale", thread, timeout_ms); }

std::string panel_text(HWND dialog, int id)
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

int panel_check(HWND dialog, int id) { return (int)SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0); }

void panel_click(HWND dialog, int id) { SendDlgItemMessageA(dialog, id, BM_CLICK, 0, 0); }

void panel_menu(HWND dialog, int id) { SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, 0), 0); }

bool panel_wait_text(HWND dialog, int id, const std::string &text, DWORD timeout_ms)
{
    DWORD start = GetTickCount();
    while (panel_text(dialog, id) != text) {
        if (GetTickCount() - start > timeout_ms)
            return false;
        Sleep(5);
    }
    return true;
}

void expect_halt_at(HWND dialog, const std::string &call)
{
    if (!panel_wait_text(dialog, PANEL_STATUS, "Halted")) {
        std::string reason = "no halt at " + call;
        panel_abort(dialog, reason.c_str());
    }
    std::string shown = panel_text(dialog, PANEL_LAST_CALL);
    check(shown == call, "halted at \"%s\", expected \"%s\"", shown.c_str(), call.c_str());
}

std::string panel_texts(HWND dialog)
{
    std::string texts;
    for (int id : {PANEL_THREAD_BANNER, PANEL_CONTEXT_BANNER, PANEL_LAST_CALL, PANEL_STATUS})
        texts += "\n  " + std::to_string(id) + ": \"" + panel_text(dialog, id) + "\"";
    return texts;
}

void panel_abort(HWND dialog, const char *reason)
{
    std::string texts = dialog ? panel_texts(dialog) : std::string("\n  no control window");
    printf("FAIL: %s; the panel shows:%s\n", reason, texts.c_str());
    fflush(stdout);
    ExitProcess(CHILD_CHECKS_FAILED);
}

void driver_done()
{
    write_fact("driver_failures", (unsigned long long)check_failures);
    write_fact("driver_done", 1);
}

void check_panel_run(const child_run &run)
{
    check(!run.timed_out, "child hung");
    check(run.exit_code == 0, "child exit code %lu", (unsigned long)run.exit_code);
    check(run.errors.empty(), "child wrote to stderr: %s", run.errors.c_str());
    check(fact(run.facts, "driver_done") == 1, "the driver did not finish");
    check(fact(run.facts, "driver_failures") == 0, "the driver found faults");
}

int panel_check_main(int argc, char **argv, const char *name, int (*child)())
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child(fresh_temp(name));
    check_panel_run(run);
    remove_tree(run.temp);
    return finish(name);
}
