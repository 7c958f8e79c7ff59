#include "testbed.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

static int failures;

static const char *program_name()
{
    static char name[MAX_PATH];
    if (name[0] == 0) {
        char path[MAX_PATH];
        GetModuleFileNameA(nullptr, path, MAX_PATH);
        const char *slash = strrchr(path, '\\');
        lstrcpynA(name, slash ? slash + 1 : path, MAX_PATH);
    }
    return name;
}

void fail(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    fprintf(stderr, "FAIL %s: ", program_name());
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    fflush(stderr);
    va_end(arguments);
    ++failures;
}

void note(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    printf("%s: ", program_name());
    vprintf(format, arguments);
    putchar('\n');
    fflush(stdout);
    va_end(arguments);
}

int failure_count() { return failures; }

int finish()
{
    if (failures == 0)
        note("ok");
    return failures == 0 ? 0 : 1;
}

static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    return DefWindowProcA(window, message, wparam, lparam);
}

void pump_messages()
{
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

bool open_gl_window(gl_window *out, int width, int height, const char *title)
{
    *out = gl_window{};
    HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA window_class = {};
    window_class.style = CS_OWNDC;
    window_class.lpfnWndProc = window_procedure;
    window_class.hInstance = instance;
    window_class.hCursor = LoadCursor(nullptr, IDC_ARROW);
    window_class.lpszClassName = "quondale_testbed";
    RegisterClassA(&window_class);  // fails harmlessly when a second window registers again

    DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
    RECT frame = {0, 0, width, height};
    AdjustWindowRect(&frame, style, FALSE);
    HWND window = CreateWindowA("quondale_testbed", title, style, 0, 0, frame.right - frame.left,
                                frame.bottom - frame.top, nullptr, nullptr, instance, nullptr);
    if (!window) {
        fail("CreateWindow failed, error %lu", GetLastError());
        return false;
    }
    ShowWindow(window, SW_SHOW);
    UpdateWindow(window);
    pump_messages();

    HDC dc = GetDC(window);
    PIXELFORMATDESCRIPTOR wanted = {};
    wanted.nSize = sizeof wanted;
    wanted.nVersion = 1;
    wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    wanted.iPixelType = PFD_TYPE_RGBA;
    wanted.cColorBits = 24;
    wanted.cAlphaBits = 8;
    wanted.cDepthBits = 24;
    wanted.iLayerType = PFD_MAIN_PLANE;
    int format = ChoosePixelFormat(dc, &wanted);
    if (format == 0 || !SetPixelFormat(dc, format, &wanted)) {
        fail("no pixel format (ChoosePixelFormat %d), error %lu", format, GetLastError());
        ReleaseDC(window, dc);
        DestroyWindow(window);
        return false;
    }
    HGLRC context = wglCreateContext(dc);
    if (!context || !wglMakeCurrent(dc, context)) {
        fail("no GL context (wglCreateContext %p), error %lu", (void *)context, GetLastError());
        if (context)
            wglDeleteContext(context);
        ReleaseDC(window, dc);
        DestroyWindow(window);
        return false;
    }
    *out = gl_window{window, dc, context, width, height};
    return true;
}

void close_gl_window(gl_window *window)
{
    if (!window->window)
        return;
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(window->context);
    ReleaseDC(window->window, window->dc);
    DestroyWindow(window->window);
    pump_messages();
    *window = gl_window{};
}

pixel_image read_pixels(int width, int height)
{
    pixel_image image{width, height, std::vector<unsigned char>(size_t(width) * height * 3)};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glFinish();
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, image.rgb.data());
    return image;
}

const unsigned char *pixel_at(const pixel_image &image, int x, int y)
{
    return &image.rgb[(size_t(y) * image.width + x) * 3];
}

// PPM keeps the dumps readable by any image viewer when a comparison fails.
bool write_ppm(const char *path, const pixel_image &image)
{
    FILE *file = fopen(path, "wb");
    if (!file) {
        fail("cannot write %s", path);
        return false;
    }
    fprintf(file, "P6\n%d %d\n255\n", image.width, image.height);
    // PPM rows run top to bottom.
    for (int y = image.height - 1; y >= 0; --y)
        fwrite(pixel_at(image, 0, y), 3, image.width, file);
    bool written = ferror(file) == 0;
    fclose(file);
    if (!written)
        fail("cannot write %s", path);
    return written;
}

bool read_ppm(const char *path, pixel_image *out)
{
    FILE *file = fopen(path, "rb");
    if (!file) {
        fail("cannot read %s", path);
        return false;
    }
    int width = 0, height = 0, maximum = 0;
    bool read = fscanf(file, "P6 %d %d %d", &width, &height, &maximum) == 3 && maximum == 255 &&
                width > 0 && height > 0 && fgetc(file) == '\n';
    if (read) {
        *out = pixel_image{width, height, std::vector<unsigned char>(size_t(width) * height * 3)};
        for (int y = height - 1; y >= 0 && read; --y)
            read = fread(&out->rgb[size_t(y) * width * 3], 3, width, file) == size_t(width);
    }
    fclose(file);
    if (!read)
        fail("%s is not a complete PPM image", path);
    return read;
}

bool debugger_loaded()
{
    return GetModuleHandleA("quondale.dll") != nullptr;
}

const char *argument_value(int argc, char **argv, const char *name)
{
    for (int index = 1; index + 1 < argc; ++index)
        if (argv[index][0] == '-' && argv[index][1] == '-' && strcmp(argv[index] + 2, name) == 0)
            return argv[index + 1];
    return nullptr;
}

void check_expected_mode(int argc, char **argv)
{
    const char *expected = argument_value(argc, argv, "expect");
    if (!expected)
        return;
    bool want_debugger = strcmp(expected, "debugger") == 0;
    if (want_debugger != debugger_loaded())
        fail("expected GL from %s but quondale.dll is %s", want_debugger ? "quondale.dll" : "the system",
             debugger_loaded() ? "loaded" : "not loaded");
}

std::string program_folder()
{
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string folder(path, length);
    return folder.substr(0, folder.find_last_of('\\') + 1);
}

std::string system_opengl32_path()
{
    char path[MAX_PATH];
    UINT length = GetSystemDirectoryA(path, MAX_PATH);
    return std::string(path, length) + "\\opengl32.dll";
}

int run_self(bool with_debugger, const std::string &arguments)
{
    char own_path[MAX_PATH];
    GetModuleFileNameA(nullptr, own_path, MAX_PATH);
    std::string program = own_path;
    std::string folder = program_folder();
    if (!with_debugger) {
        folder += "system_gl\\";
        CreateDirectoryA(folder.c_str(), nullptr);
        program = folder + program.substr(program.find_last_of('\\') + 1);
        if (!CopyFileA(own_path, program.c_str(), FALSE)) {
            fail("cannot copy %s to %s, error %lu", own_path, program.c_str(), GetLastError());
            return -1;
        }
    }
    std::string command_line = "\"" + program + "\" " + arguments;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        folder.c_str(), &startup, &process)) {
        fail("cannot start %s, error %lu", command_line.c_str(), GetLastError());
        return -1;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exit_code = DWORD(-1);
    GetExitCodeProcess(process.hProcess, &exit_code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return int(exit_code);
}
