// A scene drawn through quondale.dll comes out pixel for pixel as the system's opengl32 draws it.
// Without arguments the program is the driver: it runs itself once without and once with the
// debugger, each run writing a dump, and compares the two dumps.
#include "tests/wine/harness.h"

#include <cstdio>
#include <cstring>
#include <set>

static const int side = 128;

static void draw_triangles()
{
    glShadeModel(GL_SMOOTH);
    glBegin(GL_TRIANGLES);
    glColor3f(1, 0, 0);
    glVertex3f(-0.9f, -0.9f, 0.2f);
    glColor3ub(0, 255, 0);  // folded into glColor3ubv
    glVertex2i(0, -1);      // folded into glVertex2iv
    glColor4d(0, 0, 1, 1);
    glVertex3d(-0.45, 0.0, -0.2);
    glEnd();

    glShadeModel(GL_FLAT);
    glColor3ub(255, 200, 0);
    glRectf(0.55f, 0.55f, 0.95f, 0.95f);  // two corners, folded into glRectfv
}

static void draw_textured_quad()
{
    // An 8x8 checkerboard, nearest filtering so every texel boundary is sharp.
    unsigned char texels[8 * 8 * 3];
    for (int texel = 0; texel < 64; ++texel) {
        bool light = ((texel % 8) + (texel / 8)) % 2 == 0;
        texels[texel * 3 + 0] = light ? 240 : 30;
        texels[texel * 3 + 1] = light ? 240 : 60;
        texels[texel * 3 + 2] = light ? 200 : 120;
    }
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 8, 0, GL_RGB, GL_UNSIGNED_BYTE, texels);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    glEnable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex2f(0.05f, -0.95f);
    glTexCoord2f(1, 0);
    glVertex2f(0.95f, -0.95f);
    glTexCoord2f(1, 1);
    glVertex2f(0.95f, -0.05f);
    glTexCoord2f(0, 1);
    glVertex2f(0.05f, -0.05f);
    glEnd();
    glDisable(GL_TEXTURE_2D);
    glDeleteTextures(1, &texture);
}

static void draw_lit_cube()
{
    const GLfloat light_position[4] = {1, 1, 2, 0};
    const GLfloat diffuse[4] = {0.3f, 0.6f, 0.9f, 1};
    const GLfloat specular[4] = {1, 1, 1, 1};
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glLightfv(GL_LIGHT0, GL_POSITION, light_position);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 20);
    glShadeModel(GL_SMOOTH);

    // The cube goes through a display list to take the list path as well.
    GLuint list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    static const GLfloat normals[6][3] = {{0, 0, 1}, {0, 0, -1}, {1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}};
    for (const GLfloat *normal : normals) {
        // Two axes across the face, perpendicular to the normal.
        GLfloat u[3] = {normal[1] + normal[2] == 0 ? 0.0f : 1.0f, normal[0] != 0 ? 1.0f : 0.0f, 0};
        GLfloat v[3] = {normal[1] * u[2] - normal[2] * u[1], normal[2] * u[0] - normal[0] * u[2],
                        normal[0] * u[1] - normal[1] * u[0]};
        glBegin(GL_QUADS);
        glNormal3fv(normal);
        for (int corner = 0; corner < 4; ++corner) {
            float a = corner == 0 || corner == 3 ? -1.0f : 1.0f;
            float b = corner < 2 ? -1.0f : 1.0f;
            glVertex3f(0.25f * (normal[0] + a * u[0] + b * v[0]), 0.25f * (normal[1] + a * u[1] + b * v[1]),
                       0.25f * (normal[2] + a * u[2] + b * v[2]));
        }
        glEnd();
    }
    glEndList();

    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glTranslatef(-0.5f, 0.5f, 0);
    glRotatef(30, 1, 0, 0);
    glRotatef(40, 0, 1, 0);
    glCallList(list);
    glPopMatrix();
    glDeleteLists(list, 1);
    glDisable(GL_LIGHTING);
}

static void draw_arrays()
{
    static const GLfloat vertices[] = {0.1f, 0.1f, 0.5f, 0.1f, 0.3f, 0.5f};
    static const GLubyte colours[] = {255, 0, 255, 0, 255, 255, 255, 255, 255};
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glVertexPointer(2, GL_FLOAT, 0, vertices);
    glColorPointer(3, GL_UNSIGNED_BYTE, 0, colours);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

// PPM keeps the dumps readable by any image viewer when a comparison fails.
static void write_ppm(const char *path, const std::vector<uint8_t> &rgb)
{
    FILE *file = fopen(path, "wb");
    check(file != nullptr, "cannot write %s", path);
    if (!file)
        return;
    fprintf(file, "P6\n%d %d\n255\n", side, side);
    for (int y = side - 1; y >= 0; --y) // PPM rows run top to bottom
        fwrite(&rgb[(size_t)y * side * 3], 3, side, file);
    fclose(file);
}

static std::vector<uint8_t> read_ppm(const std::string &path)
{
    std::vector<uint8_t> rgb((size_t)side * side * 3);
    FILE *file = fopen(path.c_str(), "rb");
    int width = 0, height = 0, maximum = 0;
    bool read = file && fscanf(file, "P6 %d %d %d", &width, &height, &maximum) == 3 && width == side &&
                height == side && maximum == 255 && fgetc(file) == '\n';
    for (int y = side - 1; y >= 0 && read; --y)
        read = fread(&rgb[(size_t)y * side * 3], 3, side, file) == (size_t)side;
    if (file)
        fclose(file);
    check(read, "%s is not a complete %dx%d image", path.c_str(), side, side);
    return read ? rgb : std::vector<uint8_t>();
}

static const uint8_t *pixel_at(const std::vector<uint8_t> &rgb, int x, int y) { return &rgb[((size_t)y * side + x) * 3]; }

static int draw(const char *dump_path)
{
    gl_window window = open_gl_window(side, side);
    glViewport(0, 0, side, side);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 1, -1, 1, -2, 2);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glClearColor(0.2f, 0.4f, 0.6f, 1);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);

    draw_triangles();
    draw_textured_quad();
    draw_lit_cube();
    draw_arrays();

    glReadBuffer(GL_BACK);
    std::vector<uint8_t> rgb = read_rgb(side, side);
    GLenum error = glGetError();
    check(error == GL_NO_ERROR, "GL error 0x%04x after drawing", error);
    write_ppm(dump_path, rgb);
    SwapBuffers(window.dc);
    close_gl_window(&window);
    return finish("pixels --draw");
}

// Both dumps could agree on a picture that is wrong in the same way, say all background: a few
// known pixels and the number of colours say the scene was drawn.
static void check_scene(const std::vector<uint8_t> &rgb)
{
    const uint8_t *corner = pixel_at(rgb, 0, side - 1);
    check(corner[0] == 51 && corner[1] == 102 && corner[2] == 153,
          "the top-left pixel is (%d, %d, %d), not the clear colour (51, 102, 153)", corner[0], corner[1], corner[2]);
    const uint8_t *rectangle = pixel_at(rgb, side * 15 / 16 - 2, side * 15 / 16 - 2);
    check(rectangle[0] == 255 && rectangle[1] == 200 && rectangle[2] == 0,
          "the flat rectangle is (%d, %d, %d), not (255, 200, 0)", rectangle[0], rectangle[1], rectangle[2]);
    std::set<unsigned> colours;
    for (int pixel = 0; pixel < side * side; ++pixel)
        colours.insert(rgb[pixel * 3] << 16 | rgb[pixel * 3 + 1] << 8 | rgb[pixel * 3 + 2]);
    check(colours.size() >= 100, "only %d colours; the shaded and lit parts are missing", (int)colours.size());
}

int main(int argc, char **argv)
{
    continue_first_halt(); // halted at its first call, the program waits for a Continue
    check_gl_source(argc, argv);
    if (argc > 4 && strcmp(argv[3], "--draw") == 0)
        return draw(argv[4]);

    std::string system_dump = program_folder() + "pixels-system.ppm";
    std::string debugger_dump = program_folder() + "pixels-debugger.ppm";
    DeleteFileA(system_dump.c_str());
    DeleteFileA(debugger_dump.c_str());
    int system_exit = run_self(false, "--expect system --draw \"" + system_dump + "\"");
    int debugger_exit = run_self(true, "--expect debugger --draw \"" + debugger_dump + "\"");
    check(system_exit == 0 && debugger_exit == 0, "drawing failed: exit code %d with the system's opengl32, %d through "
          "quondale.dll", system_exit, debugger_exit);
    std::vector<uint8_t> system_image = read_ppm(system_dump), debugger_image = read_ppm(debugger_dump);
    if (system_image.empty() || debugger_image.empty())
        return finish("pixels");
    check_scene(system_image);
    int differing = 0, first = -1;
    for (int pixel = 0; pixel < side * side; ++pixel)
        if (memcmp(&system_image[pixel * 3], &debugger_image[pixel * 3], 3) != 0 && differing++ == 0)
            first = pixel;
    check(differing == 0, "%d pixels differ between %s and %s, the first at (%d, %d)", differing,
          debugger_dump.c_str(), system_dump.c_str(), first % side, first / side);
    return finish("pixels");
}
