// The panel driver: what a user does to the control window, done by window messages from a
// thread of the test program itself. The program's GL thread halts at its first debugged call and
// spins there until Continue, Step or Skip arrives, so the driver always runs on a thread of its
// own, and the panel thread serves both.
//
// Also the frame of the panel checks: each program runs itself as the child (the application
// with its driver), and as the parent judges how the child ended.
#pragma once

#include "session_test.h"

#include <string>

// Ids of the control window as the user meets them.
enum : int {
    PANEL_THREAD_BANNER = 104,
    PANEL_CONTEXT_BANNER = 105,
    PANEL_LAST_CALL = 106,
    PANEL_STATUS = 107,
    PANEL_HALT = 108,
    PANEL_CONTINUE = 109,
    PANEL_STEP = 110,
    PANEL_SKIP = 111,
    PANEL_GL_ERRORS = 114,
    PANEL_CONTROL_DRAWING = 115,
    PANEL_HISTORY = 116,
    PANEL_TRACE_SETUP = 117,
    PANEL_BREAK_ON_CALLS = 118,
    PANEL_BREAK_SETUP = 119,
    PANEL_BREAK_ON_SWAP = 120,
    PANEL_SKIP_CALLS = 121,
    PANEL_SKIP_SETUP = 122,
    // Menu items.
    PANEL_MENU_ABOUT = 1,
    PANEL_MENU_QUIT = 4,
    PANEL_MENU_ENUMERANTS = 11,
    PANEL_MENU_ABOUT_QUONDALE = 40015,
};

// Waits this long for anything the application or the panel has to do.
enum : DWORD { PANEL_WAIT_MS = 20000 };

// Runs scenario on a new thread of this process.
void start_driver(void (*scenario)());

// The visible top-level window titled title that belongs to this process, waited for; null
// after the timeout. A thread id other than 0 picks the control window whose thread banner
// names that thread.
HWND find_panel_window(const char *title, DWORD timeout_ms);
HWND find_control_window(DWORD thread, DWORD timeout_ms);

std::string panel_text(HWND dialog, int id);
int panel_check(HWND dialog, int id);
// BM_CLICK on a button or check box: the panel sees what a mouse click would give it.
void panel_click(HWND dialog, int id);
// WM_COMMAND of a menu item.
void panel_menu(HWND dialog, int id);

// Waits until control id shows text exactly.
bool panel_wait_text(HWND dialog, int id, const std::string &text, DWORD timeout_ms = PANEL_WAIT_MS);
// Waits for the status "Halted" with call as the pending call; on a timeout the check fails
// and the driver gives up (panel_abort).
void expect_halt_at(HWND dialog, const std::string &call);

// The four texts of the control window, for failure messages.
std::string panel_texts(HWND dialog);

// Ends the child at once with the failure exit code, after saying why and what the panel shows.
[[noreturn]] void panel_abort(HWND dialog, const char *reason);

// The driver's last word before its final click: its failures, for the parent.
void driver_done();

// The parent's judgement of a child that should end with exit code 0 after the driver's checks.
void check_panel_run(const child_run &run);

// The whole main of a panel check: as the child it plays the application, as the parent it
// runs the child with a fresh TEMP and judges its end.
int panel_check_main(int argc, char **argv, const char *name, int (*child)());
