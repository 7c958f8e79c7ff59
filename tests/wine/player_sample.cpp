// The sample under the debugger for three frames, its history played by the player built for
// Windows: a PNG at each frame's end, the third the very picture the sample read back from its GL
// before its swap; and the report of the same history. The history, the sample's frame and the
// report stay in player_sample\ for the native play (player_native) and the report's screenshot.
// The sample run without the debugger draws the same frame.
#include "tests/wine/harness.h"

#include "tools/player/png.h"

static void copy_to(const std::string &from, const std::string &to)
{
    check(CopyFileA(from.c_str(), to.c_str(), FALSE), "cannot copy %s to %s", from.c_str(), to.c_str());
}

int main()
{
    std::string kept = program_folder() + "player_sample\\", player = program_folder() + "player\\";
    std::string temp = child_temp("player_sample");
    CreateDirectoryA(kept.c_str(), nullptr);
    sample_run run = run_sample(temp, "--frames 3 --save-frame \"" + kept + "frame.rgb\"");
    check(run.files.size() == 2, "%d history files, expected 0.gls and the context's", (int)run.files.size());
    if (run.files.size() != 2)
        return finish("player_sample");
    std::string history = kept + "spinning_cube.gls";
    copy_to(run.history_folder + run.files[1], history);

    int played = run_program("\"" + player + "quondale_player.exe\" play \"" + history + "\" --out \"" + kept + "frames\"", player);
    check(played == 0, "the player ended with %d", played);
    std::string drawn = read_file(kept + "frame.rgb");
    check(drawn.size() == 480 * 360 * 3, "the sample saved %d bytes of its frame", (int)drawn.size());
    text_buffer expected = {};
    png_from_rgb((const uint8_t *)drawn.data(), 480, 360, &expected);
    std::string third = read_file(kept + "frames\\frame-0003.png");
    check(third == std::string(expected.data, expected.length), "frame 3 is not the picture the sample drew");
    text_free(&expected);
    // Without the debugger (the player's folder holds none of its DLLs) the sample draws the same.
    copy_to(program_folder() + "spinning_cube.exe", player + "spinning_cube.exe");
    int direct = run_program("\"" + player + "spinning_cube.exe\" --frames 3 --save-frame direct.rgb", player);
    check(direct == 0 && read_file(player + "direct.rgb") == drawn, "without the debugger the sample drew otherwise");
    for (const char *frame : {"frame-0001.png", "frame-0002.png"})
        check(!read_file(kept + "frames\\" + frame).empty(), "no %s", frame);

    int reported = run_program("\"" + player + "quondale_player.exe\" report \"" + history + "\" --out \"" + kept + ".\"", player);
    check(reported == 0, "the report ended with %d", reported);
    std::string page = read_file(kept + "report.html");
    check(page.find("<tr id=\"frame-3\">") != std::string::npos, "the report has no row of frame 3");
    clean_up(child_run{temp, 0, false, "", "", ""});
    return finish("player_sample");
}
