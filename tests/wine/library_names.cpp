// The program loads quondale.dll under its own name, through the forwarding opengl32.dll beside
// it, and quondale.dll in turn has the system's opengl32.dll loaded to do the real work. Loaded
// under the name opengl32.dll instead, it ends the program at its first WGL call with exit code
// 1 and no message box.
#include "tests/wine/harness.h"

#include <tlhelp32.h>

#include <cstring>

static std::string lower(std::string text)
{
    for (char &c : text)
        c = char(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text;
}

static std::string module_path(HMODULE module)
{
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(module, path, MAX_PATH);
    return lower(std::string(path, length));
}

int main(int argc, char **argv)
{
    if (argc > 1 && !strcmp(argv[1], "renamed")) {
        open_gl_window(16, 16); // the panel ends the program here
        return 0;
    }
    std::string renamed = program_folder() + "renamed\\";
    CreateDirectoryA(renamed.c_str(), nullptr);
    CopyFileA((program_folder() + "library_names.exe").c_str(), (renamed + "library_names.exe").c_str(), FALSE);
    CopyFileA((program_folder() + "quondale.dll").c_str(), (renamed + "opengl32.dll").c_str(), FALSE);
    int exit_code = run_program("\"" + renamed + "library_names.exe\" renamed", renamed, 30000);
    check(exit_code == 1, "loaded as opengl32.dll the program ended with %d, not 1 (99: it waited)", exit_code);
    HMODULE quondale = GetModuleHandleA("quondale.dll");
    if (!quondale) {
        check(false, "GetModuleHandleA(\"quondale.dll\") is null: the program did not load the debugger");
        return finish("library_names");
    }
    std::string folder = lower(module_path(nullptr));
    folder = folder.substr(0, folder.find_last_of('\\') + 1);
    if (module_path(quondale) != folder + "quondale.dll")
        check(false, "quondale.dll was loaded from %s, not from the program's folder", module_path(quondale).c_str());

    // Both opengl32.dll modules share a base name, so find them by path.
    char system[MAX_PATH];
    GetSystemDirectoryA(system, MAX_PATH);
    std::string system_path = lower(std::string(system) + "\\opengl32.dll");
    HMODULE forwarder = nullptr, real = nullptr;
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    MODULEENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Module32First(snapshot, &entry); more; more = Module32Next(snapshot, &entry)) {
        std::string path = lower(entry.szExePath);
        if (path == folder + "opengl32.dll")
            forwarder = entry.hModule;
        else if (path == system_path)
            real = entry.hModule;
        else if (path.size() > 13 && path.compare(path.size() - 13, 13, "\\opengl32.dll") == 0)
            check(false, "an opengl32.dll from an unexpected place is loaded: %s", path.c_str());
    }
    CloseHandle(snapshot);
    if (!forwarder)
        check(false, "the forwarding opengl32.dll in %s is not loaded", folder.c_str());
    if (!real)
        check(false, "the system's %s is not loaded beside the forwarder", system_path.c_str());
    if (!forwarder || !real)
        return finish("library_names");

    // The forwarder's exports resolve to quondale.dll's; the real library's are different code.
    const char *names[] = {"glClear", "glColor3ub", "glBindTexture", "wglCreateContext", "wglSwapBuffers"};
    for (const char *name : names) {
        FARPROC ours = GetProcAddress(quondale, name);
        FARPROC forwarded = GetProcAddress(forwarder, name);
        FARPROC system = GetProcAddress(real, name);
        if (!ours)
            check(false, "quondale.dll does not export %s", name);
        else if (forwarded != ours)
            check(false, "opengl32.dll!%s resolves to %p, not to quondale.dll's %p", name, (void *)forwarded, (void *)ours);
        if (!system)
            check(false, "the system's opengl32.dll lacks %s", name);
        else if (system == ours)
            check(false, "the system's %s is quondale.dll's own", name);
    }
    // The program's own imports are bound to quondale.dll's code.
    if ((void *)&glClear != (void *)GetProcAddress(quondale, "glClear"))
        check(false, "the program's import of glClear is %p, not quondale.dll's", (void *)&glClear);
    return finish("library_names");
}
