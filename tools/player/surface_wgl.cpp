// On Windows (and under Wine): a WGL context on a window that is never shown, of the history's
// client size and with the pixel format nearest to the history's, chosen as a program chooses it.
#include "tools/player/surface.h"

#include <windows.h>

#include <cstdio>

static HWND window;
static HDC device;
static HGLRC context;
static HMODULE opengl32;

bool surface_open(const surface_format *wanted, surface_format *got, char *error, size_t error_size)
{
    HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA window_class = {};
    window_class.style = CS_OWNDC;
    window_class.lpfnWndProc = DefWindowProcA;
    window_class.hInstance = instance;
    window_class.lpszClassName = "quondale_player";
    RegisterClassA(&window_class);
    // A popup window's client area is the whole window.
    window = CreateWindowA("quondale_player", "quondale player", WS_POPUP, 0, 0, wanted->width, wanted->height,
                           nullptr, nullptr, instance, nullptr);
    device = window ? GetDC(window) : nullptr;
    if (!device) {
        snprintf(error, error_size, "no window (error %lu)", (unsigned long)GetLastError());
        surface_close();
        return false;
    }
    PIXELFORMATDESCRIPTOR format = {};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | (wanted->double_buffer ? PFD_DOUBLEBUFFER : 0);
    format.iPixelType = wanted->rgba ? PFD_TYPE_RGBA : PFD_TYPE_COLORINDEX;
    format.cColorBits = (BYTE)(wanted->rgba ? wanted->red_bits + wanted->green_bits + wanted->blue_bits : wanted->index_bits);
    format.cAlphaBits = (BYTE)wanted->alpha_bits;
    format.cAccumBits = (BYTE)(wanted->accum_bits[0] + wanted->accum_bits[1] + wanted->accum_bits[2] + wanted->accum_bits[3]);
    format.cDepthBits = (BYTE)wanted->depth_bits;
    format.cStencilBits = (BYTE)wanted->stencil_bits;
    int chosen = ChoosePixelFormat(device, &format);
    if (chosen == 0 || !SetPixelFormat(device, chosen, &format)) {
        snprintf(error, error_size, "no pixel format (error %lu)", (unsigned long)GetLastError());
        surface_close();
        return false;
    }
    context = wglCreateContext(device);
    if (!context || !wglMakeCurrent(device, context)) {
        snprintf(error, error_size, "no GL context (error %lu)", (unsigned long)GetLastError());
        surface_close();
        return false;
    }
    DescribePixelFormat(device, chosen, sizeof format, &format);
    *got = *wanted;
    got->red_bits = format.cRedBits;
    got->green_bits = format.cGreenBits;
    got->blue_bits = format.cBlueBits;
    got->alpha_bits = format.cAlphaBits;
    got->depth_bits = format.cDepthBits;
    got->stencil_bits = format.cStencilBits;
    got->double_buffer = (format.dwFlags & PFD_DOUBLEBUFFER) != 0;
    opengl32 = GetModuleHandleA("opengl32.dll");
    return true;
}

GlsFunc surface_lookup(const char *name)
{
    FARPROC function = opengl32 ? GetProcAddress(opengl32, name) : nullptr;
    if (!function)
        function = wglGetProcAddress(name);
    return (GlsFunc)(void *)function;
}

void surface_close()
{
    if (context) {
        wglMakeCurrent(nullptr, nullptr);
        wglDeleteContext(context);
    }
    if (device)
        ReleaseDC(window, device);
    if (window)
        DestroyWindow(window);
    context = nullptr;
    device = nullptr;
    window = nullptr;
}
