// The player on a real GL context, EGL without a display on Mesa as the native player plays: any
// bytes as a history, every command run by GL behind the player's guard, with small budgets. The
// other targets run no GL and cannot see GL read or write past what the player hands it. The input
// lies in a folder of its own, beside two streams it may call: one that calls the input back, and
// one that draws a frame.
#include "tools/player/player.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

static std::string folder, input_path;

static void write_file(const std::string &path, const void *bytes, size_t size)
{
    FILE *file = fopen(path.c_str(), "wb");
    if (!file)
        __builtin_trap();
    fwrite(bytes, 1, size, file);
    fclose(file);
}

static void set_up()
{
    char name[] = "/tmp/quondale-fuzz-player-XXXXXX";
    if (!mkdtemp(name))
        __builtin_trap();
    folder = name;
    input_path = folder + "/input.gls";
    const std::string calls_back = "glsBeginGLS(1, 0);\nglsCallStream(\"input.gls\");\nglsEndGLS();\n";
    const std::string frame = "glsBeginGLS(1, 0);\nglClearColor(0, 1, 0, 1);\nglClear(GL_COLOR_BUFFER_BIT);\n"
                              "glsString(\"Info\", \"wglSwapBuffers\");\nglsEndGLS();\n";
    write_file(folder + "/a.gls", calls_back.data(), calls_back.size());
    write_file(folder + "/frame.gls", frame.data(), frame.size());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static bool ready = (set_up(), true);
    (void)ready;
    write_file(input_path, data, size);
    // Budgets small enough for many runs a second, large enough for every kind of command.
    play_options options = {1, 0, nullptr, nullptr, nullptr, 256, 2, false};
    // The skipped commands' notes would fill the log; QUONDALE_FUZZ_ECHO=1 shows them.
    options.quiet = getenv("QUONDALE_FUZZ_ECHO") == nullptr;
    play_outcome outcome;
    play_history(input_path.c_str(), &options, &outcome);
    free_play_outcome(&outcome);
    return 0;
}
