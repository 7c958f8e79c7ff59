// Images and vertex arrays in the history, with real GL: each image is written tight, in the
// layout the pixel-store state gives (alignment, row length, skips, LSB-first bitmaps), a get
// writes its pointer only, and with the vertex-array switch at its start the draws stand as they
// were called. The state scan of the first halt leaves glPixelStorei executed alone: the
// pixel-store calls shape the images but stand in no history.
#include "tests/wine/harness.h"

#include <regex>

static int child()
{
    write_fact("thread", GetCurrentThreadId());
    continue_first_halt();
    gl_window window = open_gl_window(128, 32);
    write_fact("context", (uint32_t)(uintptr_t)window.context);

    static const GLubyte rgb[6] = {255, 0, 0, 0, 255, 0};
    static const GLubyte square[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    static const GLubyte bitmap[8] = {0xFF, 0xFF, 0, 0, 0x80, 0x40, 0, 0};
    GLubyte stipple[128];
    for (int i = 0; i < 128; ++i)
        stipple[i] = i % 2 ? 0x55 : 0xAA;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glDrawPixels(2, 1, GL_RGB, GL_UNSIGNED_BYTE, rgb);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 3);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 1);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 4, 4, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, nullptr);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 1, 1, 2, 2, GL_LUMINANCE, GL_UNSIGNED_BYTE, square);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glBitmap(10, 2, 0, 0, 10, 0, bitmap);
    glPixelStorei(GL_UNPACK_LSB_FIRST, GL_TRUE);
    glPolygonStipple(stipple);
    glPixelStorei(GL_UNPACK_LSB_FIRST, GL_FALSE);
    GLubyte read[16];
    glReadPixels(0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, read);

    static const GLfloat triangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    static const GLshort shorts[4] = {1, 2, 3, 4};
    struct ColorVertex {
        GLubyte color[4];
        GLfloat vertex[3];
    };
    static const ColorVertex block[2] = {{{10, 20, 30, 40}, {1, 2, 3}}, {{50, 60, 70, 80}, {4, 5, 6}}};
    static const GLushort indices[3] = {0, 1, 0};
    glVertexPointer(3, GL_FLOAT, 0, triangle);
    glEnableClientState(GL_VERTEX_ARRAY);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glVertexPointer(2, GL_SHORT, 0, shorts);
    glDrawArrays(GL_LINES, 0, 2);
    glInterleavedArrays(GL_C4UB_V3F, 0, block);
    glDrawArrays(GL_POINTS, 0, 2);
    glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, indices);
    glDisableClientState(GL_COLOR_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child("data");
    expect_end(run);
    std::string file = session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\history\\" +
                       std::to_string((int)(uint32_t)fact(run, "context")) + ".gls";
    // Addresses of the program's arrays differ from build to build.
    std::string found = std::regex_replace(without_visual_info(read_file(file)), std::regex("0x[0-9A-F]{5,}"), "0xADDRESS");
    check_text("the history", found, on_disk(expected_file("history_data.gls")));
    clean_up(run);
    return finish("history_data");
}
