// The sample program's history, recorded under the debugger, played back by the codec's reader on
// the system's GL in a window of the sample's size: the last frame comes out as the sample drew
// it, byte for byte.
#include "tests/wine/harness.h"

#include "gls/gls.h"

#include <cstring>

enum : int { WIDTH = 480, HEIGHT = 360 };

// The player, run from a folder without the debugger: plays history, compares with drawn.
static int play(const std::string &history, const std::string &frame_file)
{
    check(!debugger_loaded(), "the player got its GL through quondale.dll");
    std::string drawn = read_file(frame_file);
    check(drawn.size() == (size_t)WIDTH * HEIGHT * 3, "the sample saved %d bytes of its frame", (int)drawn.size());
    if (!gls_process_attach())
        return finish("history_play (player)");
    gl_window window = open_gl_window(WIDTH, HEIGHT, 0);
    glsContext(glsGenContext());
    check(glsCallStream((const GLubyte *)history.c_str()) == GLS_TEXT, "%s did not play as text", history.c_str());
    GLSenum error = glsGetError();
    check(error == GLS_NONE, "the codec's error word is 0x%X after the play", (unsigned)error);
    std::vector<uint8_t> played = read_rgb(WIDTH, HEIGHT);
    size_t differing = 0;
    for (size_t i = 0; i < played.size() && i < drawn.size(); ++i)
        differing += played[i] != (uint8_t)drawn[i];
    check(differing == 0, "%d of %d bytes differ between the played frame and the drawn one", (int)differing,
          (int)played.size());
    // The played frame lies in the back buffer, as the sample's did before its swap.
    SwapBuffers(window.dc);
    screenshot(window.window, "history_play");
    close_gl_window(&window);
    return finish("history_play (player)");
}

int main(int argc, char **argv)
{
    if (argc == 4 && strcmp(argv[1], "play") == 0)
        return play(argv[2], argv[3]);
    std::string temp = child_temp("play");
    std::string frame_file = temp + "\\frame.rgb";
    sample_run run = run_sample(temp, "--frames 2 --save-frame \"" + frame_file + "\"");
    check(run.files.size() == 2, "%d history files, expected 0.gls and the context's", (int)run.files.size());
    if (run.files.size() == 2)
        check(run_self(false, "play \"" + run.history_folder + run.files[1] + "\" \"" + frame_file + "\"") == 0,
              "the play failed");
    clean_up(child_run{temp, 0, false, "", "", ""});
    return finish("history_play");
}
