// Natively: EGL on Mesa's surfaceless platform, so that no display is needed, with a pbuffer of
// the history's size as the framebuffer and a compatibility context, where OpenGL 1.1 lives.
#include "tools/player/surface.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <cstdio>
#include <cstdlib>

static EGLDisplay display = EGL_NO_DISPLAY;
static EGLSurface surface = EGL_NO_SURFACE;
static EGLContext context = EGL_NO_CONTEXT;

static int attribute(EGLConfig config, EGLint name)
{
    EGLint value = 0;
    eglGetConfigAttrib(display, config, name, &value);
    return value;
}

// How far a config is from the wanted format: colour sizes must match, missing depth or stencil
// costs most, and bits beyond the wanted ones cost a little.
static long distance(EGLConfig config, const surface_format *wanted)
{
    const int have[6] = {attribute(config, EGL_RED_SIZE),   attribute(config, EGL_GREEN_SIZE),
                         attribute(config, EGL_BLUE_SIZE),  attribute(config, EGL_ALPHA_SIZE),
                         attribute(config, EGL_DEPTH_SIZE), attribute(config, EGL_STENCIL_SIZE)};
    const int want[6] = {wanted->red_bits,   wanted->green_bits, wanted->blue_bits,
                         wanted->alpha_bits, wanted->depth_bits, wanted->stencil_bits};
    long cost = 0;
    for (int i = 0; i < 6; ++i) {
        int gap = have[i] - want[i];
        if (i < 3 && gap != 0)
            cost += 100000;
        cost += gap < 0 ? 1000 * -gap : gap;
    }
    return cost;
}

bool surface_open(const surface_format *wanted, surface_format *got, char *error, size_t error_size)
{
    // Mesa's software renderer, whatever GPU driver the machine may have.
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 0);
    auto get_platform_display = (PFNEGLGETPLATFORMDISPLAYEXTPROC)eglGetProcAddress("eglGetPlatformDisplayEXT");
    if (get_platform_display)
        display = get_platform_display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    EGLint major = 0, minor = 0;
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, &major, &minor)) {
        snprintf(error, error_size, "EGL's surfaceless platform is not there (error 0x%X)", eglGetError());
        return false;
    }
    const EGLint query[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig configs[256];
    EGLint count = 0;
    if (!eglChooseConfig(display, query, configs, 256, &count) || count == 0) {
        snprintf(error, error_size, "EGL offers no pbuffer config for desktop OpenGL");
        return false;
    }
    EGLConfig best = configs[0];
    for (EGLint i = 1; i < count; ++i)
        if (distance(configs[i], wanted) < distance(best, wanted))
            best = configs[i];
    const EGLint size[] = {EGL_WIDTH, wanted->width, EGL_HEIGHT, wanted->height, EGL_NONE};
    surface = eglCreatePbufferSurface(display, best, size);
    eglBindAPI(EGL_OPENGL_API);
    context = eglCreateContext(display, best, EGL_NO_CONTEXT, nullptr);
    if (surface == EGL_NO_SURFACE || context == EGL_NO_CONTEXT || !eglMakeCurrent(display, surface, surface, context)) {
        snprintf(error, error_size, "no %dx%d pbuffer with a GL context (error 0x%X)", wanted->width, wanted->height,
                 eglGetError());
        surface_close();
        return false;
    }
    *got = *wanted;
    got->red_bits = attribute(best, EGL_RED_SIZE);
    got->green_bits = attribute(best, EGL_GREEN_SIZE);
    got->blue_bits = attribute(best, EGL_BLUE_SIZE);
    got->alpha_bits = attribute(best, EGL_ALPHA_SIZE);
    got->depth_bits = attribute(best, EGL_DEPTH_SIZE);
    got->stencil_bits = attribute(best, EGL_STENCIL_SIZE);
    got->double_buffer = false;
    for (int &bits : got->accum_bits)
        bits = 0;
    return true;
}

GlsFunc surface_lookup(const char *name) { return (GlsFunc)eglGetProcAddress(name); }

void surface_close()
{
    if (display == EGL_NO_DISPLAY)
        return;
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (context != EGL_NO_CONTEXT)
        eglDestroyContext(display, context);
    if (surface != EGL_NO_SURFACE)
        eglDestroySurface(display, surface);
    eglTerminate(display);
    display = EGL_NO_DISPLAY;
    surface = EGL_NO_SURFACE;
    context = EGL_NO_CONTEXT;
}
