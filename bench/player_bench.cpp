// Plays the sample's history natively on Mesa with its last frame repeated into a long run, and
// prints frames and calls per second: once playing alone (every frame end reads the colour buffer
// back, as the player always does), once with each frame made into a PNG as `play` writes it.
//   bench_player [HISTORY.gls [FRAMES]]
// The default history is the one in the unit tests' data; the one player_sample keeps under
// build/x86_64/tests/wine/player_sample has the sample's real texture.
#include "tools/player/player.h"
#include "tools/player/png.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

struct tally {
    int64_t calls;
    bool encode;
};

static void on_frame(const frame_stats *stats, const uint8_t *rgb, int width, int height, void *user)
{
    tally *t = (tally *)user;
    t->calls += stats->calls;
    if (t->encode) {
        text_buffer png = {};
        png_from_rgb(rgb, width, height, &png);
        text_free(&png);
    }
}

// The history with the frame before its last swap note (from that frame's glClear) repeated.
static std::string long_history(const std::string &history, int copies)
{
    const std::string note = "glsString(\"Info\", \"wglSwapBuffers\");";
    size_t last = history.rfind(note);
    size_t start = last == std::string::npos ? last : history.rfind("glClear(", last);
    if (start == std::string::npos)
        return "";
    size_t end = history.find('\n', last) + 1;
    std::string frame = history.substr(start, end - start), text = history.substr(0, end);
    for (int i = 1; i < copies; ++i)
        text += frame;
    return text + history.substr(end);
}

int main(int argc, char **argv)
{
    const char *path = argc > 1 ? argv[1] : QUONDALE_SAMPLE_HISTORY;
    int copies = argc > 2 ? atoi(argv[2]) : 500;
    std::ifstream file(path, std::ios::binary);
    std::stringstream read;
    read << file.rdbuf();
    std::string text = long_history(read.str(), copies);
    if (text.empty()) {
        fprintf(stderr, "bench_player: %s has no frame ended by a swap\n", path);
        return 1;
    }
    std::string long_path = "bench_player_history.gls";
    std::ofstream(long_path, std::ios::binary) << text;
    printf("%s, its last frame %d times: %.1f MB of text\n", path, copies, text.size() / 1e6);
    for (bool encode : {false, true}) {
        tally t = {0, encode};
        play_options options = {1, 0, on_frame, nullptr, &t};
        play_outcome outcome;
        auto start = std::chrono::steady_clock::now();
        bool played = play_history(long_path.c_str(), &options, &outcome);
        double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!played)
            fprintf(stderr, "bench_player: %s\n", outcome.error);
        printf("%-28s %6d frames of %dx%d in %.2f s: %8.1f frames/s, %10.0f calls/s\n",
               encode ? "playing, PNG of each frame:" : "playing:", outcome.frames, outcome.format.width,
               outcome.format.height, seconds, outcome.frames / seconds, t.calls / seconds);
        free_play_outcome(&outcome);
    }
    remove(long_path.c_str());
    return 0;
}
