// The forwarding opengl32.dll has no code of its own: its exports name quondale.dll.
#include <windows.h>

extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE, DWORD, LPVOID) { return TRUE; }
