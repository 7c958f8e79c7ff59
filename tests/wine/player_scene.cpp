// A scene of textures, a display list, vertex arrays (drawn and indexed), fog and blending, drawn
// under the debugger for three frames with "Capture Vertex Arrays Calls" and the hints on. Its
// history, played by the player built for Windows, gives each frame as the program read it back
// before its swap; and its report counts the calls and primitives of the three frames as the Call
// Count and Primitive Count windows showed them at the halt behind the last frame.
#include "tests/wine/harness.h"

#include "panel/resource.h"
#include "tools/player/png.h"

#include <algorithm>

enum : int { WIDTH = 200, HEIGHT = 150, FRAMES = 3 };

static void save(const char *name, const std::string &text)
{
    FILE *file = fopen(temp_path(name).c_str(), "wb");
    check(file && fwrite(text.data(), 1, text.size(), file) == text.size(), "cannot write %s", name);
    if (file)
        fclose(file);
}

static void scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glViewport(0, 0, 200, 150);");
    click(control, IDC_TRACE_SETUP);
    HWND traces = need_dialog("Select GL Trace");
    // Each item's first choice posts the opposite of its new mark; the second turns it on.
    for (int item : {IDM_CAPTURE_VERTEX_ARRAYS, IDM_SHOW_HINTS}) {
        menu(traces, item);
        menu(traces, item);
    }
    click(traces, IDD_TRACE_SELECT - 1 + SELECT_CANCEL);
    click(control, IDC_BREAK_ON_CALLS); // the break set holds glFlush, which ends the frames
    click(control, IDC_CONTINUE);
    expect_halt_at(control, "glFlush();");

    menu(control, IDM_PRIMITIVE_COUNT);
    HWND primitives = need_dialog("Primitive Count");
    save("primcount.txt", control_text(primitives, IDC_PRIM_COUNT_TEXT));
    click(primitives, IDC_PRIM_COUNT_CLOSE);
    menu(control, IDM_CALL_COUNT);
    HWND calls = need_dialog("Call Count");
    std::string rows;
    for (const std::string &row : list_rows(calls, IDC_CALL_COUNT_LIST))
        rows += row + "\n";
    save("callcount.txt", rows);
    click(calls, IDC_CALL_COUNT_CLOSE);
    driver_done();
    click(control, IDC_CONTINUE);
}

static GLuint floor_list;

static void set_up()
{
    glEnable(GL_DEPTH_TEST);
    glClearColor(0.5f, 0.6f, 0.7f, 1);
    glEnable(GL_FOG);
    glFogi(GL_FOG_MODE, GL_LINEAR);
    glFogf(GL_FOG_START, 2);
    glFogf(GL_FOG_END, 9);
    const GLfloat fog[4] = {0.5f, 0.6f, 0.7f, 1};
    glFogfv(GL_FOG_COLOR, fog);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glFrustum(-0.8, 0.8, -0.6, 0.6, 1, 20);
    glMatrixMode(GL_MODELVIEW);

    static GLubyte texels[16][16][4];
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            bool light = (x / 4 + y / 4) % 2 == 0;
            const GLubyte texel[4] = {(GLubyte)(light ? 240 : 40), (GLubyte)(light ? 230 : 90), (GLubyte)(light ? 200 : 160), 255};
            memcpy(texels[y][x], texel, 4);
        }
    GLuint texture;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 16, 16, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);

    // The floor never changes: a list of a textured quad, its checks repeated along it.
    floor_list = glGenLists(1);
    glNewList(floor_list, GL_COMPILE);
    glEnable(GL_TEXTURE_2D);
    glColor3ub(255, 255, 255);
    glBegin(GL_QUADS);
    glTexCoord2f(0, 0);
    glVertex3f(-4, -1, 1);
    glTexCoord2f(4, 0);
    glVertex3f(4, -1, 1);
    glTexCoord2f(4, 6);
    glVertex3f(4, -1, -12);
    glTexCoord2f(0, 6);
    glVertex3f(-4, -1, -12);
    glEnd();
    glDisable(GL_TEXTURE_2D);
    glEndList();
}

static void draw(int frame)
{
    static const GLfloat pyramid[12][3] = {{-1, 0, 1}, {1, 0, 1}, {0, 1.5f, 0}, {1, 0, 1},  {1, 0, -1}, {0, 1.5f, 0},
                                           {1, 0, -1}, {-1, 0, -1}, {0, 1.5f, 0}, {-1, 0, -1}, {-1, 0, 1}, {0, 1.5f, 0}};
    static const GLubyte colours[12][4] = {{220, 40, 40, 255}, {220, 40, 40, 255},  {255, 120, 120, 255},
                                           {40, 200, 60, 255}, {40, 200, 60, 255},  {120, 255, 140, 255},
                                           {50, 90, 230, 255}, {50, 90, 230, 255},  {120, 160, 255, 255},
                                           {230, 200, 40, 255}, {230, 200, 40, 255}, {255, 240, 120, 255}};
    static const GLfloat board[4][3] = {{-0.7f, -0.7f, 0}, {0.7f, -0.7f, 0}, {0.7f, 0.7f, 0}, {-0.7f, 0.7f, 0}};
    static const GLfloat board_texture[4][2] = {{0, 0}, {2, 0}, {2, 2}, {0, 2}};
    static const GLushort board_indices[6] = {0, 1, 2, 0, 2, 3};

    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glLoadIdentity();
    glTranslatef(0, -0.3f, -4);
    glCallList(floor_list);

    glPushMatrix();
    glTranslatef(0.9f, -1, -1.5f);
    glRotatef(30.0f + frame * 20, 0, 1, 0);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, pyramid);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colours);
    glDrawArrays(GL_TRIANGLES, 0, 12);
    glDisableClientState(GL_COLOR_ARRAY);
    glPopMatrix();

    glPushMatrix();
    glTranslatef(-1.2f, 0.1f, -1);
    glRotatef(frame * 25.0f, 1, 0, 0);
    glColor3ub(255, 255, 255);
    glEnable(GL_TEXTURE_2D);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, board);
    glTexCoordPointer(2, GL_FLOAT, 0, board_texture);
    glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, board_indices);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisable(GL_TEXTURE_2D);
    glPopMatrix();

    // A pane of tinted glass in front, over everything: its polygon of four vertices gets a hint.
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    glColor4ub(255, 200, 40, 110);
    glBegin(GL_POLYGON);
    glVertex3f(-0.4f - frame * 0.2f, -0.8f, 1.5f);
    glVertex3f(0.6f - frame * 0.2f, -0.8f, 1.5f);
    glVertex3f(0.6f - frame * 0.2f, 0.5f, 1.5f);
    glVertex3f(-0.4f - frame * 0.2f, 0.5f, 1.5f);
    glEnd();
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
}

static int child()
{
    start_driver(scenario);
    gl_window window = open_gl_window(WIDTH, HEIGHT);
    write_fact("thread", GetCurrentThreadId());
    write_fact("context", (uint32_t)(uintptr_t)window.context);
    glViewport(0, 0, WIDTH, HEIGHT);
    set_up();
    for (int frame = 0; frame < FRAMES; ++frame) {
        draw(frame);
        std::vector<uint8_t> drawn = read_rgb(WIDTH, HEIGHT);
        save(("frame" + std::to_string(frame + 1) + ".rgb").c_str(), std::string(drawn.begin(), drawn.end()));
        SwapBuffers(window.dc);
    }
    glFlush();
    close_gl_window(&window);
    return child_end();
}

// The lines of a block of the report, between its opening tag and </pre>.
static std::string block_of(const std::string &page, const std::string &id)
{
    std::string start = "<pre id=\"" + id + "\">\n";
    size_t from = page.find(start), to = page.find("</pre>", from);
    return from == std::string::npos || to == std::string::npos ? "(none)" : page.substr(from + start.size(), to - from - start.size());
}

static std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    for (size_t at = 0, end; at < text.size(); at = end + 1) {
        end = text.find('\n', at);
        end = end == std::string::npos ? text.size() : end;
        lines.push_back(text.substr(at, end - at));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

// The report counts what the history holds. The window also counts what stands in it otherwise:
// glDrawArrays and glDrawElements became glsDrawVertexArray, and the WGL calls before the
// context's first frame are noted in 0.gls.
static void compare_counts(const std::string &report, const std::string &window, const std::string &history)
{
    std::vector<std::string> reported = lines_of(report), shown = lines_of(window);
    for (const std::string &row : reported)
        check(std::find(shown.begin(), shown.end(), row) != shown.end(), "the report has \"%s\", the window not", row.c_str());
    for (const std::string &row : shown) {
        std::string name = row.substr(0, row.find(' '));
        bool elsewhere = name.rfind("wgl", 0) == 0 && name != "wglSwapBuffers";
        bool held = history.find(name + "(") != std::string::npos;
        if (std::find(reported.begin(), reported.end(), row) == reported.end())
            check(elsewhere || !held, "the window has \"%s\", the report not", row.c_str());
    }
    check(reported.size() > 20, "only %d rows in the report", (int)reported.size());
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child();
    child_run run = run_child("scene");
    expect_end(run);
    std::string history = session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\history\\" +
                          std::to_string((int)(uint32_t)fact(run, "context")) + ".gls";
    std::string text = read_file(history);
    check(text.find("glsDrawVertexArray(GL_TRIANGLES, GL_C4UB_V3F, 12") != std::string::npos &&
              text.find("glsDrawVertexArray(GL_TRIANGLES, GL_T2F_V3F, 6") != std::string::npos,
          "the history lacks the arrays' content");
    std::string player = program_folder() + "player\\", out = run.temp + "\\played";
    int played = run_program("\"" + player + "quondale_player.exe\" play \"" + history + "\" --out \"" + out + "\"", player);
    check(played == 0, "the player ended with %d", played);
    for (int frame = 1; frame <= FRAMES; ++frame) {
        std::string drawn = read_file(run.temp + "\\frame" + std::to_string(frame) + ".rgb");
        check(drawn.size() == WIDTH * HEIGHT * 3, "frame %d: %d bytes saved", frame, (int)drawn.size());
        text_buffer expected = {};
        png_from_rgb((const uint8_t *)drawn.data(), WIDTH, HEIGHT, &expected);
        char name[32];
        snprintf(name, sizeof name, "\\frame-%04d.png", frame);
        check(read_file(out + name) == std::string(expected.data, expected.length),
              "frame %d played is not the frame the program drew", frame);
        text_free(&expected);
    }

    int reported = run_program("\"" + player + "quondale_player.exe\" report \"" + history + "\" --frames 1-3 --out \"" +
                                   out + "\"",
                               player);
    check(reported == 0, "the report ended with %d", reported);
    std::string page = read_file(out + "\\report.html");
    std::string window_primitives = read_file(run.temp + "\\primcount.txt");
    for (size_t at; (at = window_primitives.find('\r')) != std::string::npos;)
        window_primitives.erase(at, 1);
    check_text("the report's primitives", block_of(page, "primitive-count"), window_primitives + "\n");
    compare_counts(block_of(page, "call-count"), read_file(run.temp + "\\callcount.txt"), text);
    check(page.find("- Use glBegin(GL_QUADS) instead of glBegin(GL_POLYGON) followed by 4 vertices.") != std::string::npos,
          "the report lacks the frames' hint");
    clean_up(run);
    return finish("player_scene");
}
