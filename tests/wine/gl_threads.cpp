// Four drawing threads with contexts that share the main thread's texture, each on a window of
// the main thread, to which they send their progress; the main thread makes its own context
// current while they still draw. Under the debugger every thread has its panel and its halt at
// the first call, pressed on: all of them draw the shared texture, and every
// wglMakeCurrent succeeds.
#include "tests/wine/harness.h"

enum : int { THREADS = 4, FRAMES = 10, SIDE = 32 };

struct drawer {
    gl_window window;
    HANDLE thread;
    BOOL made_current;
    std::vector<uint8_t> rgb;
};

static drawer drawers[THREADS];
static volatile LONG frames_told;
static GLuint shared_texture;

// The texture's one colour, which a context sees only through the shared lists.
static const uint8_t texture_colour[3] = {255, 128, 0};

static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    if (message == WM_APP) {
        InterlockedIncrement(&frames_told);
        return 0;
    }
    return DefWindowProcA(window, message, wparam, lparam);
}

static void draw_textured(int side)
{
    glViewport(0, 0, side, side);
    glClearColor(0, 0, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, shared_texture);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex2f(-1, -1);
    glTexCoord2f(1, 0);
    glVertex2f(1, -1);
    glTexCoord2f(1, 1);
    glVertex2f(1, 1);
    glTexCoord2f(0, 1);
    glVertex2f(-1, 1);
    glEnd();
    glDisable(GL_TEXTURE_2D);
}

static DWORD WINAPI draw(void *parameter)
{
    drawer *d = (drawer *)parameter;
    d->made_current = wglMakeCurrent(d->window.dc, d->window.context);
    if (!d->made_current)
        return 1;
    for (int frame = 0; frame < FRAMES; ++frame) {
        draw_textured(SIDE);
        if (frame == FRAMES - 1) {
            glReadBuffer(GL_BACK);
            d->rgb = read_rgb(SIDE, SIDE);
        }
        SwapBuffers(d->window.dc);
        SendMessageA(d->window.window, WM_APP, 0, frame);
    }
    wglMakeCurrent(nullptr, nullptr);
    return 0;
}

static int wrong_pixels(const std::vector<uint8_t> &rgb)
{
    int wrong = 0;
    for (size_t pixel = 0; pixel + 2 < rgb.size(); pixel += 3)
        wrong += rgb[pixel] != texture_colour[0] || rgb[pixel + 1] != texture_colour[1] ||
                 rgb[pixel + 2] != texture_colour[2];
    return rgb.empty() ? -1 : wrong;
}

int main(int argc, char **argv)
{
    check_gl_source(argc, argv);
    start_continuing();
    gl_window main_window = open_gl_window(SIDE, SIDE);
    glGenTextures(1, &shared_texture);
    glBindTexture(GL_TEXTURE_2D, shared_texture);
    uint8_t texels[2 * 2 * 3];
    for (int texel = 0; texel < 4; ++texel)
        memcpy(texels + 3 * texel, texture_colour, 3);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, texels);
    glFinish();
    wglMakeCurrent(nullptr, nullptr);

    for (drawer &d : drawers) {
        d.window = open_window(SIDE, SIDE);
        SetWindowLongPtrA(d.window.window, GWLP_WNDPROC, (LONG_PTR)window_procedure);
        set_pixel_format(&d.window);
        d.window.context = wglCreateContext(d.window.dc);
        check(d.window.context && wglShareLists(main_window.context, d.window.context),
              "the drawing context could not share the main one's texture");
    }
    for (drawer &d : drawers)
        d.thread = CreateThread(nullptr, 0, draw, &d, 0, nullptr);

    // The main thread takes its context back while the drawing threads wait on its messages.
    while (frames_told < THREADS)
        if (MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT) == WAIT_OBJECT_0)
            pump_messages();
    BOOL main_current = wglMakeCurrent(main_window.dc, main_window.context);
    check(main_current, "the main thread's wglMakeCurrent failed (error %lu)", GetLastError());
    std::vector<uint8_t> main_rgb;
    if (main_current) {
        draw_textured(SIDE);
        glReadBuffer(GL_BACK);
        main_rgb = read_rgb(SIDE, SIDE);
    }
    HANDLE threads[THREADS];
    for (int i = 0; i < THREADS; ++i)
        threads[i] = drawers[i].thread;
    DWORD start = GetTickCount();
    while (WaitForMultipleObjects(THREADS, threads, TRUE, 0) == WAIT_TIMEOUT && GetTickCount() - start < 60000)
        if (MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT) == WAIT_OBJECT_0)
            pump_messages();

    check(frames_told == THREADS * FRAMES, "the drawing threads told %ld frames of %d", frames_told,
          THREADS * FRAMES);
    for (int i = 0; i < THREADS; ++i) {
        check(drawers[i].made_current, "drawing thread %d: wglMakeCurrent failed", i);
        check(wrong_pixels(drawers[i].rgb) == 0, "drawing thread %d: %d pixels are not the shared texture's",
              i, wrong_pixels(drawers[i].rgb));
    }
    check(wrong_pixels(main_rgb) == 0, "main thread: %d pixels are not the texture's", wrong_pixels(main_rgb));
    stop_continuing();
    wglMakeCurrent(nullptr, nullptr);
    return finish("gl_threads");
}
