// A classic OpenGL 1.1 program to watch under the debugger: a textured cube from a display list
// and a lit, spinning pyramid drawn in immediate mode every frame.
//   spinning_cube [--seconds N] [--frames N] [--save-frame FILE] [--exit-at-once]
// ends by itself, after 10 seconds by default; with --frames the object turns by a fixed step a
// frame, so that every run draws the same calls. --save-frame writes the last frame's colour
// buffer to FILE as RGB rows from the bottom up, to compare with a replay of its history.
// --exit-at-once leaves by ExitProcess after the last frame's drawing, before its swap.
#include <windows.h>

#include <GL/gl.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static const int window_width = 480;
static const int window_height = 360;
static bool quit_requested;

static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam)
{
    switch (message) {
    case WM_CLOSE:
        quit_requested = true;
        return 0;
    case WM_KEYDOWN:
        if (wparam == VK_ESCAPE)
            quit_requested = true;
        return 0;
    case WM_SIZE:
        glViewport(0, 0, LOWORD(lparam), HIWORD(lparam));
        return 0;
    default:
        return DefWindowProcA(window, message, wparam, lparam);
    }
}

static GLuint make_checker_texture()
{
    static GLubyte texels[64][64][3];
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            bool light = ((x / 8) + (y / 8)) % 2 == 0;
            texels[y][x][0] = light ? 250 : 200;
            texels[y][x][1] = light ? 250 : 40;
            texels[y][x][2] = light ? 250 : 40;
        }
    GLuint texture;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 64, 64, 0, GL_RGB, GL_UNSIGNED_BYTE, texels);
    return texture;
}

// The cube never changes shape, so it is compiled once into a display list.
static GLuint make_cube_list(GLuint texture)
{
    static const GLfloat faces[6][4][3] = {
        {{-1, -1, 1}, {1, -1, 1}, {1, 1, 1}, {-1, 1, 1}},     {{1, -1, -1}, {-1, -1, -1}, {-1, 1, -1}, {1, 1, -1}},
        {{1, -1, 1}, {1, -1, -1}, {1, 1, -1}, {1, 1, 1}},     {{-1, -1, -1}, {-1, -1, 1}, {-1, 1, 1}, {-1, 1, -1}},
        {{-1, 1, 1}, {1, 1, 1}, {1, 1, -1}, {-1, 1, -1}},     {{-1, -1, -1}, {1, -1, -1}, {1, -1, 1}, {-1, -1, 1}},
    };
    static const GLfloat normals[6][3] = {{0, 0, 1}, {0, 0, -1}, {1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}};
    static const GLfloat corners[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
    glColor3f(1, 1, 1);
    glBegin(GL_QUADS);
    for (int face = 0; face < 6; ++face) {
        glNormal3fv(normals[face]);
        for (int corner = 0; corner < 4; ++corner) {
            glTexCoord2fv(corners[corner]);
            glVertex3fv(faces[face][corner]);
        }
    }
    glEnd();
    glDisable(GL_TEXTURE_2D);
    glEndList();
    return list;
}

// Drawn call by call every frame: the immediate-mode path a debugger sees most of.
static void draw_pyramid()
{
    static const GLfloat apex[3] = {0, 1.2f, 0};
    static const GLfloat base[4][3] = {{-1, -0.8f, 1}, {1, -0.8f, 1}, {1, -0.8f, -1}, {-1, -0.8f, -1}};
    static const GLubyte colours[4][3] = {{230, 60, 60}, {60, 200, 80}, {70, 110, 240}, {240, 200, 40}};
    glBegin(GL_TRIANGLES);
    for (int side = 0; side < 4; ++side) {
        const GLfloat *a = base[side];
        const GLfloat *b = base[(side + 1) % 4];
        // Face normal from the cross product of two edges.
        GLfloat u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
        GLfloat v[3] = {apex[0] - a[0], apex[1] - a[1], apex[2] - a[2]};
        GLfloat n[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
        GLfloat length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        glColor3ub(colours[side][0], colours[side][1], colours[side][2]);
        glNormal3f(n[0] / length, n[1] / length, n[2] / length);
        glVertex3fv(a);
        glVertex3fv(b);
        glVertex3fv(apex);
    }
    glEnd();
    glColor3ub(180, 180, 180);
    glBegin(GL_QUADS);
    glNormal3f(0, -1, 0);
    for (int corner = 3; corner >= 0; --corner)
        glVertex3fv(base[corner]);
    glEnd();
}

static void set_up_scene()
{
    glClearColor(0.08f, 0.1f, 0.16f, 1);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glShadeModel(GL_SMOOTH);

    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    const GLfloat ambient[4] = {0.2f, 0.2f, 0.2f, 1};
    const GLfloat diffuse[4] = {0.9f, 0.9f, 0.85f, 1};
    glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glEnable(GL_COLOR_MATERIAL);
    glColorMaterial(GL_FRONT, GL_AMBIENT_AND_DIFFUSE);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);

    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    const double near_plane = 1, far_plane = 30;
    const double half_height = near_plane * std::tan(30.0 * 3.14159265358979 / 180);
    const double half_width = half_height * window_width / window_height;
    glFrustum(-half_width, half_width, -half_height, half_height, near_plane, far_plane);
    glMatrixMode(GL_MODELVIEW);
}

static void draw_frame(GLuint cube_list, float seconds)
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    // The light stays put while the objects turn under it.
    const GLfloat light_position[4] = {-3, 4, 5, 1};
    glLightfv(GL_LIGHT0, GL_POSITION, light_position);
    glTranslatef(0, 0, -7);

    glPushMatrix();
    glTranslatef(-1.7f, 0, 0);
    glRotatef(seconds * 50, 1, 0, 0);
    glRotatef(seconds * 70, 0, 1, 0);
    glCallList(cube_list);
    glPopMatrix();

    glPushMatrix();
    glTranslatef(1.7f, 0, 0);
    glRotatef(20, 1, 0, 0);
    glRotatef(seconds * 90, 0, 1, 0);
    draw_pyramid();
    glPopMatrix();
}

static void save_frame(const char *path)
{
    static GLubyte pixels[window_width * window_height * 3];
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, window_width, window_height, GL_RGB, GL_UNSIGNED_BYTE, pixels);
    FILE *file = fopen(path, "wb");
    if (!file || fwrite(pixels, sizeof pixels, 1, file) != 1)
        fprintf(stderr, "spinning_cube: could not write %s\n", path);
    if (file)
        fclose(file);
}

static const char *option(int argc, char **argv, const char *name)
{
    for (int index = 1; index + 1 < argc; ++index)
        if (strcmp(argv[index], name) == 0)
            return argv[index + 1];
    return nullptr;
}

int main(int argc, char **argv)
{
    double run_seconds = 10;
    long frame_limit = 0;
    if (const char *text = option(argc, argv, "--seconds"))
        run_seconds = atof(text);
    if (const char *text = option(argc, argv, "--frames"))
        frame_limit = atol(text);
    const char *frame_file = option(argc, argv, "--save-frame");
    bool exit_at_once = false;
    for (int index = 1; index < argc; ++index)
        exit_at_once |= strcmp(argv[index], "--exit-at-once") == 0;

    HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA window_class = {};
    window_class.style = CS_OWNDC;
    window_class.lpfnWndProc = window_procedure;
    window_class.hInstance = instance;
    window_class.hCursor = LoadCursor(nullptr, IDC_ARROW);
    window_class.lpszClassName = "spinning_cube";
    RegisterClassA(&window_class);
    DWORD style = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
    RECT frame = {0, 0, window_width, window_height};
    AdjustWindowRect(&frame, style, FALSE);
    HWND window = CreateWindowA("spinning_cube", "Spinning cube (OpenGL 1.1)", style, 680, 20,
                                frame.right - frame.left, frame.bottom - frame.top, nullptr, nullptr, instance,
                                nullptr);
    if (!window) {
        fprintf(stderr, "spinning_cube: CreateWindow failed, error %lu\n", GetLastError());
        return 1;
    }
    HDC dc = GetDC(window);
    PIXELFORMATDESCRIPTOR wanted = {};
    wanted.nSize = sizeof wanted;
    wanted.nVersion = 1;
    wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    wanted.iPixelType = PFD_TYPE_RGBA;
    wanted.cColorBits = 24;
    wanted.cDepthBits = 24;
    int format = ChoosePixelFormat(dc, &wanted);
    if (format == 0 || !SetPixelFormat(dc, format, &wanted)) {
        fprintf(stderr, "spinning_cube: no suitable pixel format, error %lu\n", GetLastError());
        return 1;
    }
    HGLRC context = wglCreateContext(dc);
    if (!context || !wglMakeCurrent(dc, context)) {
        fprintf(stderr, "spinning_cube: cannot create a GL context, error %lu\n", GetLastError());
        return 1;
    }
    printf("spinning_cube: %s on %s\n", (const char *)glGetString(GL_VERSION), (const char *)glGetString(GL_RENDERER));
    fflush(stdout);

    set_up_scene();
    GLuint texture = make_checker_texture();
    GLuint cube_list = make_cube_list(texture);
    ShowWindow(window, SW_SHOW);
    glViewport(0, 0, window_width, window_height);

    DWORD start = GetTickCount();
    long frames = 0;
    for (;;) {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        float seconds = (GetTickCount() - start) / 1000.0f;
        if (quit_requested || (frame_limit > 0 && frames >= frame_limit) ||
            (frame_limit == 0 && seconds >= run_seconds))
            break;
        // A fixed step with --frames: the same run, call for call, on any machine.
        draw_frame(cube_list, frame_limit > 0 ? frames * 0.04f : seconds);
        if (frame_file && frames + 1 == frame_limit)
            save_frame(frame_file);
        // A program that leaves in the middle of its drawing, its context still current.
        if (exit_at_once && frames + 1 == frame_limit)
            ExitProcess(0);
        SwapBuffers(dc);
        ++frames;
        Sleep(10);  // a steady pace, not a benchmark
    }
    float elapsed = (GetTickCount() - start) / 1000.0f;
    printf("spinning_cube: %ld frames in %.1f s\n", frames, elapsed);

    glDeleteLists(cube_list, 1);
    glDeleteTextures(1, &texture);
    wglMakeCurrent(nullptr, nullptr);
    wglDeleteContext(context);
    ReleaseDC(window, dc);
    DestroyWindow(window);
    return 0;
}
