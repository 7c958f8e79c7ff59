// The panel thread. It stores the session's record in its own slot, gets ready, lets the
// application's thread go on, and serves messages until the process ends. The dialogs and the
// settings file join the start here, ahead of panel_ready.
#include "panel_thread.h"

#include "session/context.h"
#include "records.h"
#include "report.h"

#include <windows.h>

unsigned __stdcall panel_thread(void *argument)
{
    thread_record *record = (thread_record *)argument;
    TlsSetValue(session_tls, record);
    // The panel's dialogs come from the library's resources, found under its own name.
    record->module = (ModuleHandle)GetModuleHandleA("quondale.dll");
    if (!record->module)
        session_exit(1);
    // What the control window does when it is created: the history is on from the start.
    record->per_proc->History = 1;
    record->panel_ready = 1;

    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) == 1) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 0;
}
