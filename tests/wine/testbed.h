// Shared by the Windows test programs: a GL window, pixel read-back, failure reports, and running
// this same program again with or without the debugger in front of the system's opengl32.
#pragma once

#include <windows.h>

#include <GL/gl.h>

#include <string>
#include <vector>

struct gl_window {
    HWND window;
    HDC dc;
    HGLRC context;
    int width;
    int height;
};

// A shown window of the given client size with a double-buffered RGBA pixel format and a current
// context made through the exported WGL functions. Reports and returns false on failure.
bool open_gl_window(gl_window *out, int width, int height, const char *title);
void close_gl_window(gl_window *window);

// Pumps the window messages that are waiting, so that Wine maps and sizes the window.
void pump_messages();

struct pixel_image {
    int width;
    int height;
    std::vector<unsigned char> rgb;  // rows bottom to top, as GL reads them
};

// Reads the colour buffer that GL reads from (the back buffer before a swap).
pixel_image read_pixels(int width, int height);
bool write_ppm(const char *path, const pixel_image &image);
bool read_ppm(const char *path, pixel_image *out);
const unsigned char *pixel_at(const pixel_image &image, int x, int y);

// Failures are printed at once with the program's name and counted; finish() gives the exit code.
void fail(const char *format, ...) __attribute__((format(printf, 1, 2)));
void note(const char *format, ...) __attribute__((format(printf, 1, 2)));
int failure_count();
int finish();

// True when the program got its GL through quondale.dll rather than the system's opengl32.
bool debugger_loaded();

// Checks the mode named by "--expect system" or "--expect debugger" on the command line, if any.
void check_expected_mode(int argc, char **argv);

// Value of "--NAME VALUE" on the command line, or null.
const char *argument_value(int argc, char **argv, const char *name);

// The folder of this program's executable, with a trailing backslash.
std::string program_folder();

// The system directory's opengl32.dll, the library that does the real work.
std::string system_opengl32_path();

// Runs this program again with the given arguments and returns its exit code (or -1).
// With the debugger it runs in place, beside the copies of quondale.dll and the forwarding
// opengl32.dll; without, a copy of the executable runs from a subfolder that holds no DLLs, so
// the loader finds the system's opengl32 as it would for any program.
int run_self(bool with_debugger, const std::string &arguments);
