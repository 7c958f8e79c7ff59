// The library's load notification: process-wide binding of the real opengl32.dll.
#include "exports.h"
#include "gls.h"

#include <cstdio>

GlsFunc process_wgl[WGL_CALL_COUNT];

// Binds the WGL rows for the exports that pass straight through to the real library.
static bool bind_process_wgl()
{
    char path[MAX_PATH + 16];
    UINT length = GetSystemDirectoryA(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return false;
    lstrcatA(path, "\\opengl32.dll");
    HMODULE module = LoadLibraryA(path);
    if (!module)
        return false;
    for (int row = 0; row < WGL_CALL_COUNT; ++row)
        process_wgl[row] = (GlsFunc)(void *)GetProcAddress(module, wgl_call_names[row]);
    return true;
}

static BOOL library_main(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        if (!gls_process_attach())
            return FALSE;
        return bind_process_wgl();
    case DLL_PROCESS_DETACH:
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
