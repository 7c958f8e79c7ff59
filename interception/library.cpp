// The library's load notification: the codec's process-wide binding of the real opengl32.dll,
// then the debugger's start-up; at unload the debugger's blocks, then the codec.
#include "interception/exports.h"
#include "gls/gls.h"
#include "interception/bind.h"
#include "interception/install.h"
#include "panel/panel_thread.h"
#include "session/context.h"
#include "session/start_hooks.h"

static BOOL library_main(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        if (!gls_process_attach())
            return FALSE;
        session_start = {bind_libraries, install_codec};
        panel_register();
        return session_process_attach();
    case DLL_PROCESS_DETACH:
        session_process_detach(reserved != nullptr);
        // At process exit (reserved set) the other threads are gone and the heap is about to go:
        // the codec's records are released only when the library is unloaded by hand.
        if (reserved == nullptr)
            gls_process_detach();
        return TRUE;
    default:
        return TRUE;
    }
}

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    return library_main(instance, reason, reserved);
}
