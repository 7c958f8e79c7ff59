// The one harness of the Windows checks. A check program runs itself again as the application
// (the child) with a fresh TEMP, and judges what that run left behind: its exit code, its
// standard error, its files, the facts it wrote and quondale's record dump. Where the panel is
// involved, a driver thread of the child plays the user: it finds the dialogs, clicks, and reads
// their controls while the child's GL thread stands halted in a debugged call.
#pragma once

#include <windows.h>

#include <GL/gl.h>

#include <string>
#include <vector>

// ---------------------------------------------------------------------------------------------
// Checks

// A failed check prints where it stands (file:line) and its message at once, and counts;
// finish() gives the exit code. The macros below put the caller's place in.
void check_at(const char *file, int line, bool condition, const char *format, ...)
    __attribute__((format(printf, 4, 5)));
#define check(...) check_at(__FILE__, __LINE__, __VA_ARGS__)
int failure_count();
// The check's end: its name and "passed" or the count of failures; the exit code to return.
int finish(const char *name);
// Compares a whole text with what was expected and shows both when they differ.
void check_text_at(const char *file, int line, const char *what, const std::string &found,
                   const std::string &expected);
#define check_text(...) check_text_at(__FILE__, __LINE__, __VA_ARGS__)

// The child's exit code when its own checks failed; 1 is the fatal report's.
enum : int { CHILD_CHECKS_FAILED = 2 };
// The child's end: 0, or CHILD_CHECKS_FAILED when a check failed.
int child_end();

// ---------------------------------------------------------------------------------------------
// Running myself as the application

bool is_child(int argc, char **argv);

struct child_run {
    std::string temp;   // the child's TEMP, made fresh
    DWORD exit_code;
    bool timed_out;
    std::string errors; // the child's standard error
    std::string facts;  // what the child told with write_fact
    std::string dump;   // quondale's named blocks at the child's process detach
};

// The child's TEMP for a label: a folder below the parent's own TEMP.
std::string child_temp(const char *label);
// Starts this program as "child ARGUMENTS" with TEMP set to child_temp(label), made fresh unless
// make_temp is false, the fatal report on standard error, and the record dump and facts files.
child_run run_child(const char *label, const char *arguments = "", DWORD timeout_ms = 150000, bool make_temp = true);
// The next run_child's child finds text as quondale.cfg in its current directory, a folder of
// its own.
void child_settings(const std::string &text);
// The usual end of a child: in time, exit code, nothing on standard error, and a driver (if
// there was one) that finished without faults.
void expect_end_at(const char *file, int line, const child_run &run, DWORD exit_code = 0);
#define expect_end(...) expect_end_at(__FILE__, __LINE__, __VA_ARGS__)
// Removes the child's TEMP.
void clean_up(const child_run &run);

// The whole main of a check: as the child it runs child(), as the parent it runs the child and
// judges it with expect_end.
int check_main(int argc, char **argv, const char *name, int (*child)());

// Facts the child tells the parent: key=value lines.
void write_fact(const char *key, unsigned long long value);
unsigned long long fact(const child_run &run, const char *key);

// A file of that name in this process's TEMP.
std::string temp_path(const char *name);
// The session directory of a thread below TEMP.
std::string session_directory(const std::string &temp, DWORD thread);
bool directory_exists(const std::string &path);
std::string read_file(const std::string &path);
// A text as the history writer puts it on disk: every line feed becomes CR CR LF.
std::string on_disk(const std::string &text);
// A text as a write in text mode puts it on disk: every line feed becomes CR LF.
std::string text_mode(const std::string &text);
// The "Visual Info" record of a history with its value as "...": the figures are those of the
// pixel format that the platform chose, which one check compares whole on its own.
std::string without_visual_info(const std::string &history);
// The two records that begin the history of a context at its first sight, as without_visual_info
// leaves them, for a viewport of width by height (a window of at least 108 wide, the narrowest
// client area that the platform gives a framed window).
std::string first_sight(int width, int height);
// Replaces every occurrence of each key by its value, in order: how a text with thread ids and
// handles is compared with an expected text that names them.
std::string substitute(std::string text, const std::vector<std::pair<std::string, std::string>> &names);

// The folder of this program, with its final backslash.
// A file of expected/, which the build copies beside the check programs.
std::string expected_file(const char *name);
std::string program_folder();

// Runs this program again with arguments and gives its exit code: with the debugger in place,
// beside the copies of quondale.dll and the forwarding opengl32.dll; without, as a copy in a
// subfolder that holds no DLLs, so that the loader finds the system's opengl32 as it would for
// any program.
int run_self(bool with_debugger, const std::string &arguments);

// Runs a command line in folder (a folder without the debugger's DLLs gives the program the
// system's GL) and gives its exit code; 99 when it did not end within timeout_ms.
int run_program(const std::string &command, const std::string &folder, DWORD timeout_ms = 120000);

// The sample program (beside this one) run under the debugger with TEMP set to temp, Continue
// pressed at its first halt by panel_press; the files of its context histories, "0.gls" first.
struct sample_run {
    DWORD exit_code;
    std::string history_folder;
    std::vector<std::string> files;
};
sample_run run_sample(const std::string &temp, const std::string &arguments);

// ---------------------------------------------------------------------------------------------
// A GL window

// WGL functions that opengl32.dll exports but the platform's headers do not declare.
extern "C" {
__declspec(dllimport) int WINAPI wglChoosePixelFormat(HDC, const PIXELFORMATDESCRIPTOR *);
__declspec(dllimport) int WINAPI wglDescribePixelFormat(HDC, int, UINT, PIXELFORMATDESCRIPTOR *);
__declspec(dllimport) int WINAPI wglGetPixelFormat(HDC);
__declspec(dllimport) BOOL WINAPI wglSetPixelFormat(HDC, int, const PIXELFORMATDESCRIPTOR *);
__declspec(dllimport) BOOL WINAPI wglSwapBuffers(HDC);
}

struct gl_window {
    HWND window;
    HDC dc;
    HGLRC context; // null until made
    int width;
    int height;
};

// A shown window of the given client size.
gl_window open_window(int width, int height);
// A double-buffered RGBA pixel format (24 colour bits, alpha_bits of alpha, 24 depth bits), set
// by the GDI calls that a program makes.
void set_pixel_format(gl_window *window, int alpha_bits = 8);
// A window with its pixel format and a context made and current through the exported WGL
// functions: the thread's session and panel come up here.
gl_window open_gl_window(int width, int height, int alpha_bits = 8);
void close_gl_window(gl_window *window);
void pump_messages();
// The colour buffer that GL reads, as RGB rows from the bottom up.
std::vector<uint8_t> read_rgb(int width, int height);
// True when this program got its GL through quondale.dll rather than the system's opengl32.
bool debugger_loaded();
// Checks the source of GL that "--expect system" or "--expect debugger" names, if given.
void check_gl_source(int argc, char **argv);

// ---------------------------------------------------------------------------------------------
// The panel, driven from a thread of the application

enum : DWORD { PANEL_WAIT_MS = 20000 };

// Runs scenario on a new thread of this process; the GL thread halts at its first debugged call.
void start_driver(void (*scenario)());
// The visible top-level window of this process titled title, waited for; null after the
// timeout. A thread other than 0 picks the control window whose banner names that thread.
HWND find_dialog(const char *title, DWORD thread = 0, DWORD timeout_ms = PANEL_WAIT_MS);
// find_dialog for a window the driver cannot go on without: it gives up when none comes.
HWND need_dialog(const char *title);
// The control window of this process; the driver gives up without one.
HWND control_window();

std::string control_text(HWND dialog, int id);
// One row of a list box; "" when there is no such row.
std::string list_row(HWND dialog, int id, int row);
std::vector<std::string> list_rows(HWND dialog, int id);
int checked(HWND dialog, int id);
// BM_CLICK: what a mouse click gives the panel.
void click(HWND dialog, int id);
// WM_COMMAND of a menu item.
void menu(HWND dialog, int id);
// A button's command posted, not sent: for the buttons that open a modal file dialog, which the
// driver then answers with save_as.
void post_command(HWND dialog, int id);
// Answers the file dialog that a Save button opened: types path as the file name and presses
// the dialog's Save button; then gives the file's text once the panel has written it (empty
// when no dialog came or nothing was written).
std::string save_as(const std::string &path);
// Selects row of a list box as a click does, with its selection-change notice.
void select_row(HWND dialog, int list_id, int row);
// Grows a dialog by 37 by 29 pixels, as a person dragging its corner, and compares where its
// controls went with the paragraph of expected/layouts.txt that name heads: a line a control in
// z order, its id, how it stands across ("over" from its left to the right edge, "reach" to 4
// from the right, "end" 8 from the right at its width, "centre", "left" where it was, "first
// third" or "second third" of the room beside two buttons) and down ("top" where it was,
// "bottom" 4 above the bottom at its height, "above N" from its top to 4 above control N, a
// list box to within a row of it), or "moved" where none fits.
void check_layout(HWND dialog, const char *name);
// Waits until a control shows text exactly.
bool wait_text(HWND dialog, int id, const std::string &text, DWORD timeout_ms = PANEL_WAIT_MS);
// Waits for "Halted" with call as the next call; without it the driver gives up.
void expect_halt_at_line(const char *file, int line, HWND control, const std::string &call);
#define expect_halt_at(...) expect_halt_at_line(__FILE__, __LINE__, __VA_ARGS__)
// Ends the child at once with CHILD_CHECKS_FAILED, saying why and what the control window shows.
[[noreturn]] void give_up_at(const char *file, int line, const char *reason);
#define give_up(reason) give_up_at(__FILE__, __LINE__, reason)
// The driver's last word before its final click: its failures, for the parent.
void driver_done();
// Presses Continue on the first halt of the program's one panel, from a thread of its own: for
// checks of other things than the panel.
void continue_first_halt();
// Presses Continue on every halt of every panel of this process (one per debugged thread) from a
// thread of its own, until stopped; the stop waits for that thread, pumping the caller's
// messages, so that no press reaches a panel while the process ends.
void start_continuing();
void stop_continuing();

// The calls the application has seen return, counted by returned(): how the driver tells how far
// the application got while it stands halted.
extern volatile LONG calls_returned;
void returned();
// An application whose end is the panel's Quit waits here for the process to be ended for it.
[[noreturn]] void wait_for_the_end();

// A PNG of what a person sees of window (a dialog or the whole screen for null), written into
// the screenshots folder (QUONDALE_SCREENSHOTS, else build/screenshots) as name.png.
void screenshot(HWND window, const char *name);
