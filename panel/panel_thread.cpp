// The panel thread: it makes the session's dialogs, reads the settings, shows the control
// window, lets the application's thread go on, and serves messages until the process ends.
#include "panel/panel_thread.h"

#include "panel/panel.h"
#include "panel/panel_text.h"
#include "panel/resource.h"
#include "panel/settings.h"

#include "session/context.h"
#include "records/panel_hooks.h"
#include "records/report.h"

#include <process.h>

#include <windows.h>

struct dialog_row {
    int template_id;
    WindowHandle thread_record::*window;
    DLGPROC window_function;
    const dialog_skeleton *skeleton; // the creation parameter of skeleton_function
};

// Creation order of the dialogs.
static const dialog_row dialogs[] = {
    {IDD_ABOUT, &thread_record::about_window, about_window_function, nullptr},
    {IDD_CALL_COUNT, &thread_record::call_count_window, call_count_function, nullptr},
    {IDD_PRIM_COUNT, &thread_record::prim_count_window, prim_count_function, nullptr},
    {IDD_ENUMERANTS, &thread_record::enum_window, enumerants_function, nullptr},
    {IDD_HISTORY_SELECT, &thread_record::history_select_window, history_select_function, nullptr},
    {IDD_LIST_CONTEXT, &thread_record::list_select_window, list_context_function, nullptr},
    {IDD_CONTROL, &thread_record::control_window, control_window_function, nullptr},
    {IDD_BREAK_SELECT, &thread_record::break_select_window, break_select_function, nullptr},
    {IDD_TRACE_SELECT, &thread_record::trace_select_window, trace_select_function, nullptr},
    {IDD_SKIP_SELECT, &thread_record::skip_select_window, skip_select_function, nullptr},
    {IDD_STATE_SELECT, &thread_record::state_select_window, state_select_function, nullptr},
    {IDD_WINDOW_INFO, &thread_record::window_info_window, skeleton_function, &window_info_skeleton},
};

// Keyboard navigation: the control window is offered a message first, then the other dialogs
// in their creation order. Windows made on demand are not asked.
static bool taken_by_a_dialog(const thread_record *record, MSG *message)
{
    if (record->control_window && IsDialogMessageA(record->control_window, message))
        return true;
    for (const dialog_row &row : dialogs) {
        WindowHandle window = record->*row.window;
        // Windows of later work are still null; they are left out rather than asked.
        if (row.window != &thread_record::control_window && window && IsDialogMessageA(window, message))
            return true;
    }
    return false;
}

// The process's end kills this thread wherever it stands. Under Wine, killed inside the X
// library it leaves the display's lock taken; the GL library's handler at the very end of the
// process waits for that lock forever, and the Wine server kills the process half a second
// later: the program's exit code is lost. The end of a process takes the loader lock before it
// kills any other thread, so the work done while this thread holds it is never cut: the taking of
// messages, where the windows' pixels go to the display and its events are read. So the panel
// never waits inside the X library (a wait for messages reads the display as it wakes): it looks
// for messages under the lock and sleeps outside it. The lock is only briefly tried, though: an
// application thread that stands halted inside a library's entry point holds it for long, and
// the panel must go on serving it. Nor is it kept while a box waits for the user (a sent command
// may open one inside the taking): the program's other threads need the lock to go on.
typedef LONG(NTAPI *lock_loader_function)(ULONG flags, ULONG *disposition, ULONG_PTR *cookie);
typedef LONG(NTAPI *unlock_loader_function)(ULONG flags, ULONG_PTR cookie);

static lock_loader_function lock_loader;
static unlock_loader_function unlock_loader;
// The panel thread's cookie for the loader lock while it holds it, else null.
static DWORD loader_cookie_slot = TLS_OUT_OF_INDEXES;

void panel_loader_release()
{
    ULONG_PTR cookie = loader_cookie_slot == TLS_OUT_OF_INDEXES ? 0 : (ULONG_PTR)TlsGetValue(loader_cookie_slot);
    if (cookie) {
        TlsSetValue(loader_cookie_slot, nullptr);
        unlock_loader(0, cookie);
    }
}

static BOOL take_message(MSG *message)
{
    for (;;) {
        ULONG_PTR cookie = 0;
        ULONG disposition = 0;
        for (int tries = 0; loader_cookie_slot != TLS_OUT_OF_INDEXES && tries < 100 && disposition != 1; ++tries) {
            // Flag 2: try only; disposition 1 when taken.
            if (lock_loader(2, &disposition, &cookie) != 0 || disposition != 1)
                Sleep(1);
        }
        if (disposition == 1)
            TlsSetValue(loader_cookie_slot, (void *)cookie);
        BOOL got = PeekMessageA(message, nullptr, 0, 0, PM_REMOVE);
        panel_loader_release();
        if (got)
            return message->message != WM_QUIT;
        if (loader_cookie_slot != TLS_OUT_OF_INDEXES)
            Sleep(15);
        else
            MsgWaitForMultipleObjectsEx(0, nullptr, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

static unsigned __stdcall panel_thread(void *argument)
{
    thread_record *record = (thread_record *)argument;
    TlsSetValue(session_tls, record);
    // The dialogs come from the library's resources, found under its own name. Without it the
    // program ends without a box: a line for a debugger of the process is all it says.
    record->module = (ModuleHandle)GetModuleHandleA("quondale.dll");
    if (!record->module) {
        OutputDebugStringA("quondale: the panel needs this library loaded as quondale.dll\n");
        ExitProcess(1);
    }
    // A failed creation is not checked: the window stays null.
    for (const dialog_row &row : dialogs)
        record->*row.window = CreateDialogParamA((HINSTANCE)record->module, MAKEINTRESOURCEA(row.template_id),
                                                 nullptr, row.window_function, (LPARAM)row.skeleton);
    load_start_settings(record);
    panel_show(record->control_window, SHOWN_CONTROL);
    // Only now does the application's first call go on, with the settings in force.
    record->panel_ready = 1;

    MSG message;
    while (take_message(&message)) {
        if (taken_by_a_dialog(record, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 0;
}

static void start_panel_thread(thread_record *record)
{
    // The C runtime's thread start, so that the runtime is set up for the panel thread.
    uintptr_t thread = _beginthreadex(nullptr, 0, panel_thread, record, 0, nullptr);
    if (thread == 0) {
        fatal_report("context", __LINE__, "Could not start the panel.");
        session_exit(1);
    }
    CloseHandle((HANDLE)thread);
}

void panel_register()
{
    HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    lock_loader = (lock_loader_function)(void *)GetProcAddress(ntdll, "LdrLockLoaderLock");
    unlock_loader = (unlock_loader_function)(void *)GetProcAddress(ntdll, "LdrUnlockLoaderLock");
    if (lock_loader && unlock_loader)
        loader_cookie_slot = TlsAlloc();
    panel.start = start_panel_thread;
    panel.show_status = show_status;
    panel.show_last_call = show_last_call;
    panel.show_thread_and_context = show_thread_and_context;
    panel.update_all = panel_update_all;
    panel.history_changed = history_refresh_all;
}
