// quondale_player play HISTORY [--out DIR] [--frames A-B] [--raw] [BUDGETS]
// quondale_player report HISTORY [--out DIR] [--frames A-B] [--draws FRAME[,FRAME...]] [BUDGETS]
// quondale_player diff A B [--out DIR] [--frames A-B]
// BUDGETS: --memory-budget MB --time-budget SECONDS
// play writes DIR/frame-NNNN.png at each frame's end (and with --raw also frame-NNNN.rgb, the rows
// from the bottom up as glReadPixels gives them); report writes DIR/report.html. Exit codes: 0
// played to the end, 1 the history could not be played whole or has not the frames asked for
// (the frames before are kept), 2 a wrong command line. diff: 0 the same, 1 they differ, 2 bad input.
#include "tools/player/diff.h"
#include "tools/player/player.h"
#include "tools/player/png.h"
#include "tools/player/report.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#  include <direct.h>
#  include <io.h>
static bool make_one_folder(const char *path) { return _mkdir(path) == 0 || errno == EEXIST; }
static bool on_terminal() { return _isatty(_fileno(stderr)); }
static const char separator = '\\';
#else
#  include <sys/stat.h>
#  include <unistd.h>
static bool make_one_folder(const char *path) { return mkdir(path, 0777) == 0 || errno == EEXIST; }
static bool on_terminal() { return isatty(fileno(stderr)); }
static const char separator = '/';
#endif

// The folder with the folders above it that are not there yet.
static bool make_folder(const char *path)
{
    char parent[4096];
    snprintf(parent, sizeof parent, "%s", path);
    for (char *at = parent + 1; *at; ++at) {
        char kept = *at;
        if ((kept != '/' && kept != separator) || at[-1] == ':' || at[-1] == '/' || at[-1] == separator)
            continue;
        *at = 0;
        if (!make_one_folder(parent))
            return false;
        *at = kept;
    }
    return make_one_folder(path);
}

enum : int { THUMBNAIL_WIDTH = 160, PATH_SIZE = 4096, DRAW_FRAMES = 64 };

struct command_line {
    const char *command;
    const char *history;
    const char *out;
    int first_frame;
    int last_frame;
    bool raw;
    bool frames_asked;
    uint64_t memory_budget_mb;
    double time_budget_s;
    const char *other; // diff's B
    int draw_frames[DRAW_FRAMES];
    int draw_frame_count;
};

// The longest file name the player writes into the --out folder, "frame-NNNNNNNNN-draw-NNNNNNNNN-small.png".
static const size_t FILE_NAME_ROOM = 40;

static int usage(const char *problem)
{
    if (problem)
        fprintf(stderr, "quondale: %s\n", problem);
    fprintf(stderr, "usage: quondale_player play HISTORY.gls [--out DIR] [--frames A-B] [--raw] [BUDGETS]\n"
                    "       quondale_player report HISTORY.gls [--out DIR] [--frames A-B] [--draws FRAME[,FRAME...]] [BUDGETS]\n"
                    "       quondale_player diff A.gls B.gls [--out DIR] [--frames A-B]\n"
                    "BUDGETS: --memory-budget MB (%llu) --time-budget SECONDS (%llu)\n",
            (unsigned long long)PLAY_MEMORY_BUDGET_MB, (unsigned long long)PLAY_TIME_BUDGET_S);
    return 2;
}

// A whole number from 1 to `most`, digits only.
static bool read_number(const char *text, long most, long *value)
{
    if (!*text || strspn(text, "0123456789") != strlen(text) || strlen(text) > 9)
        return false;
    *value = strtol(text, nullptr, 10);
    return *value >= 1 && *value <= most;
}

// "A-B", "A-" or "A": frames from 1; "A-" to the end.
static bool read_range(const char *text, int *first, int *last)
{
    char first_text[16] = "";
    const char *dash = strchr(text, '-');
    size_t length = dash ? (size_t)(dash - text) : strlen(text);
    if (length >= sizeof first_text)
        return false;
    memcpy(first_text, text, length);
    long a, b = 0;
    if (!read_number(first_text, 100000000, &a))
        return false;
    if (!dash)
        b = a;
    else if (dash[1] && (!read_number(dash + 1, 100000000, &b) || b < a))
        return false;
    *first = (int)a;
    *last = (int)b;
    return true;
}

static bool read_command_line(int argc, char **argv, command_line *line, const char **problem)
{
    *line = command_line{nullptr, nullptr, ".", 1, 0, false, false, 0, 0, nullptr, {}, 0};
    bool diff = argc >= 4 && strcmp(argv[1], "diff") == 0;
    if (!diff && (argc < 3 || (strcmp(argv[1], "play") != 0 && strcmp(argv[1], "report") != 0))) {
        *problem = nullptr;
        return false;
    }
    line->command = argv[1];
    line->history = argv[2];
    line->other = diff ? argv[3] : nullptr;
    for (int i = diff ? 4 : 3; i < argc; ++i) {
        if (strcmp(argv[i], "--out") == 0 && i + 1 < argc) {
            line->out = argv[++i];
        } else if (strcmp(argv[i], "--frames") == 0 && i + 1 < argc) {
            line->frames_asked = true;
            if (!read_range(argv[++i], &line->first_frame, &line->last_frame)) {
                *problem = "--frames takes A-B, A- or A, with 1 <= A <= B";
                return false;
            }
        } else if (strcmp(argv[i], "--draws") == 0 && i + 1 < argc && strcmp(line->command, "report") == 0) {
            for (const char *at = argv[++i]; *at; at += *at == ',') {
                char number[12] = "";
                size_t length = strcspn(at, ",");
                long frame;
                if (length >= sizeof number || line->draw_frame_count == DRAW_FRAMES) {
                    *problem = "--draws takes at most 64 frames";
                    return false;
                }
                memcpy(number, at, length);
                at += length;
                if (!read_number(number, 100000000, &frame)) {
                    *problem = "--draws takes frames from 1, with commas between";
                    return false;
                }
                line->draw_frames[line->draw_frame_count++] = (int)frame;
            }
        } else if (strcmp(argv[i], "--raw") == 0 && strcmp(line->command, "play") == 0) {
            line->raw = true;
        } else if ((strcmp(argv[i], "--memory-budget") == 0 || strcmp(argv[i], "--time-budget") == 0) && i + 1 < argc &&
                   !diff) {
            bool memory = strcmp(argv[i], "--memory-budget") == 0;
            long value;
            if (!read_number(argv[++i], memory ? 1 << 24 : 100000000, &value)) {
                *problem = memory ? "--memory-budget takes megabytes, from 1" : "--time-budget takes seconds, from 1";
                return false;
            }
            if (memory)
                line->memory_budget_mb = (uint64_t)value;
            else
                line->time_budget_s = (double)value;
        } else {
            *problem = "unknown option";
            return false;
        }
    }
    // Every frame's file must have a name of its own.
    if (strlen(line->out) + 1 + FILE_NAME_ROOM > PATH_SIZE) {
        *problem = "the --out folder's name is too long for the files in it";
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Progress on the terminal, at most a few times a second

// On a terminal one line, redrawn at most five times a second; elsewhere, as in a log, a line every
// ten seconds once the play has taken that long.
struct progress_line {
    bool terminal;
    bool shown;
    std::chrono::steady_clock::time_point started;
    std::chrono::steady_clock::time_point last;
};

static void start_progress(progress_line *line)
{
    line->terminal = on_terminal();
    line->started = line->last = std::chrono::steady_clock::now();
}

static void show_progress(double fraction, int frames, progress_line *line)
{
    auto now = std::chrono::steady_clock::now();
    auto pause = line->terminal ? std::chrono::milliseconds(200) : std::chrono::milliseconds(10000);
    if (now - line->last < pause && (line->shown || !line->terminal))
        return;
    line->last = now;
    line->shown = true;
    long seconds = (long)std::chrono::duration_cast<std::chrono::seconds>(now - line->started).count();
    char read[48] = "";
    if (fraction >= 0)
        snprintf(read, sizeof read, ", %3.0f%% of the history read", fraction * 100);
    fprintf(stderr, "%squondale: frame %d%s, %ld s%s", line->terminal ? "\r" : "", frames, read, seconds,
            line->terminal ? " " : "\n");
    fflush(stderr);
}

static void end_progress(progress_line *line)
{
    if (line->shown && line->terminal)
        fprintf(stderr, "\n");
}

// ---------------------------------------------------------------------------------------------
// play

struct play_run {
    const command_line *line;
    progress_line progress;
    int written;
    bool write_failed;
};

// DIR/frame-NNNN.EXTENSION, or with a draw DIR/frame-NNNN-draw-NNN[-small].png.
static bool write_frame_file(const char *folder, int number, const char *extension, const void *bytes, size_t size,
                             int draw = 0)
{
    char path[PATH_SIZE];
    int length = draw ? snprintf(path, sizeof path, "%s%cframe-%04d-draw-%03d%s.png", folder, separator, number, draw,
                                 extension)
                      : snprintf(path, sizeof path, "%s%cframe-%04d.%s", folder, separator, number, extension);
    if (length < 0 || length >= (int)sizeof path)
        return false;
    text_buffer file = {(char *)bytes, size, size, false};
    return text_write_file(&file, path);
}

static void write_frame(const frame_stats *stats, const uint8_t *rgb, int width, int height, void *user)
{
    play_run *run = (play_run *)user;
    text_buffer png = {};
    png_from_rgb(rgb, width, height, &png);
    bool written = !png.failed && write_frame_file(run->line->out, stats->number, "png", png.data, png.length);
    if (written && run->line->raw)
        written = write_frame_file(run->line->out, stats->number, "rgb", rgb, (size_t)width * height * 3);
    text_free(&png);
    if (!written && !run->write_failed) {
        fprintf(stderr, "quondale: could not write frame %d into %s\n", stats->number, run->line->out);
        run->write_failed = true;
    }
    run->written += written;
}

static void play_progress(double fraction, int frames, void *user)
{
    show_progress(fraction, frames, &((play_run *)user)->progress);
}

// ---------------------------------------------------------------------------------------------
// report

// The name of the history without its folders, for the page's title.
static const char *base_name(const char *path)
{
    const char *name = path;
    for (const char *at = path; *at; ++at)
        if (*at == '/' || *at == '\\')
            name = at + 1;
    return name;
}

struct report_run {
    const command_line *line;
    progress_line progress;
    report_frame *frames;
    int count;
    int capacity;
    draw_stats *draws;
    int draw_count;
    int draw_capacity;
    int thumbnail_width;
    int thumbnail_height;
    bool write_failed;
};

static bool wants_draws(int frame, void *user)
{
    const command_line *line = ((report_run *)user)->line;
    for (int i = 0; i < line->draw_frame_count; ++i)
        if (line->draw_frames[i] == frame)
            return true;
    return false;
}

// Each draw's picture whole and as a thumbnail, beside the page of its frame's draws.
static void keep_draw(const draw_stats *stats, const uint8_t *rgb, int width, int height, void *user)
{
    report_run *run = (report_run *)user;
    if (!grow_items(&run->draws, run->draw_count, &run->draw_capacity))
        return;
    run->draws[run->draw_count++] = *stats;
    text_buffer png = {}, small_png = {};
    png_from_rgb(rgb, width, height, &png);
    uint8_t *small = nullptr;
    if (shrink_rgb(rgb, width, height, THUMBNAIL_WIDTH, &small, &run->thumbnail_width, &run->thumbnail_height))
        png_from_rgb(small, run->thumbnail_width, run->thumbnail_height, &small_png);
    bool written = !png.failed && small && !small_png.failed &&
                   write_frame_file(run->line->out, stats->frame, "", png.data, png.length, stats->number) &&
                   write_frame_file(run->line->out, stats->frame, "-small", small_png.data, small_png.length,
                                    stats->number);
    if (!written && !run->write_failed)
        fprintf(stderr, "quondale: could not write the pictures of frame %d's draws into %s\n", stats->frame,
                run->line->out);
    run->write_failed |= !written;
    free(small);
    text_free(&png);
    text_free(&small_png);
}

// The page of each frame whose draws were asked for; false when one could not be written.
static bool write_draws_pages(report_run *run, const char *history, int frames_seen)
{
    history_text text;
    bool is_text = read_history_text(history, &text);
    bool written = !run->write_failed;
    for (int i = 0; i < run->line->draw_frame_count; ++i) {
        int frame = run->line->draw_frames[i], first = 0;
        if (frame > frames_seen) {
            fprintf(stderr, "quondale: the history has %d frames: no draws of frame %d\n", frames_seen, frame);
            written = false;
            continue;
        }
        while (first < run->draw_count && run->draws[first].frame != frame)
            ++first;
        int count = 0;
        while (first + count < run->draw_count && run->draws[first + count].frame == frame)
            ++count;
        draws_input input = {base_name(history), frame, run->draws + first, count, run->thumbnail_width,
                             run->thumbnail_height, is_text ? &text : nullptr};
        text_buffer html = {};
        build_draws_page(&input, &html);
        char path[PATH_SIZE];
        snprintf(path, sizeof path, "%s%cframe-%04d-draws.html", run->line->out, separator, frame);
        if (!text_write_file(&html, path)) {
            fprintf(stderr, "quondale: could not write %s\n", path);
            written = false;
        }
        text_free(&html);
        for (int f = 0; f < run->count; ++f)
            run->frames[f].draws_page |= run->frames[f].stats.number == frame;
    }
    if (is_text)
        free_history_text(&text);
    return written;
}

static void keep_frame(const frame_stats *stats, const uint8_t *rgb, int width, int height, void *user)
{
    report_run *run = (report_run *)user;
    if (!grow_items(&run->frames, run->count, &run->capacity))
        return;
    report_frame *frame = &run->frames[run->count++];
    *frame = report_frame{};
    frame->stats = *stats;
    frame->info = strdup(stats->info);
    frame->stats.info = frame->info;
    uint8_t *small;
    if (shrink_rgb(rgb, width, height, THUMBNAIL_WIDTH, &small, &frame->picture_width, &frame->picture_height)) {
        png_from_rgb(small, frame->picture_width, frame->picture_height, &frame->picture);
        free(small);
    }
}

static void report_progress(double fraction, int frames, void *user)
{
    show_progress(fraction, frames, &((report_run *)user)->progress);
}


int main(int argc, char **argv)
{
    command_line line;
    const char *problem = nullptr;
    if (!read_command_line(argc, argv, &line, &problem))
        return usage(problem);
    if (!make_folder(line.out)) {
        fprintf(stderr, "quondale: cannot make the folder %s: %s\n", line.out, strerror(errno));
        return 1;
    }
    if (line.other) {
        diff_options diff = {line.history, line.other, line.out, line.first_frame, line.last_frame};
        return diff_histories(&diff);
    }
    play_options options = {line.first_frame, line.last_frame, nullptr, nullptr, nullptr, line.memory_budget_mb,
                            line.time_budget_s, false, nullptr, nullptr};
    play_outcome outcome;
    bool played;
    bool written = true;
    if (strcmp(line.command, "play") == 0) {
        play_run run = {&line, {}, 0, false};
        options.on_frame = write_frame;
        options.user = &run;
        options.progress = play_progress;
        start_progress(&run.progress);
        played = play_history(line.history, &options, &outcome);
        end_progress(&run.progress);
        written = !run.write_failed;
        // A file that is not there has no frames to tell of.
        if (outcome.opened)
            fprintf(stderr, "quondale: %d frames of %dx%d written to %s\n", run.written, outcome.format.width,
                    outcome.format.height, line.out);
    } else {
        report_run run = {};
        run.line = &line;
        options.on_frame = keep_frame;
        options.user = &run;
        if (line.draw_frame_count) {
            options.wants_draws = wants_draws;
            options.on_draw = keep_draw;
        }
        options.progress = report_progress;
        start_progress(&run.progress);
        played = play_history(line.history, &options, &outcome);
        end_progress(&run.progress);
        if (outcome.totals && line.draw_frame_count && outcome.opened)
            written = write_draws_pages(&run, line.history, outcome.frames_seen);
        if (outcome.totals) {
            report_input input = {base_name(line.history), &outcome.format, run.frames,  run.count,
                                  outcome.totals,          outcome.names,   outcome.error};
            text_buffer html = {};
            build_report(&input, &html);
            char path[PATH_SIZE];
            snprintf(path, sizeof path, "%s%creport.html", line.out, separator);
            bool page_written = text_write_file(&html, path);
            written = written && page_written;
            text_free(&html);
            if (page_written)
                printf("%s\n", path);
            else
                fprintf(stderr, "quondale: could not write %s\n", path);
        }
        for (int i = 0; i < run.count; ++i) {
            free(run.frames[i].info);
            text_free(&run.frames[i].picture);
        }
        free(run.frames);
        free(run.draws);
    }
    if (!played)
        fprintf(stderr, "quondale: %s\n", outcome.error);
    // Frames asked for that the history does not have.
    bool all_there = !played || !line.frames_asked ||
                     (line.first_frame <= outcome.frames_seen && line.last_frame <= outcome.frames_seen);
    if (!all_there && line.first_frame > outcome.frames_seen)
        fprintf(stderr, "quondale: the history has %d frames: frame %d and on are not there\n", outcome.frames_seen,
                line.first_frame);
    else if (!all_there)
        fprintf(stderr, "quondale: the history has %d frames: frames %d to %d are not there\n", outcome.frames_seen,
                outcome.frames_seen + 1, line.last_frame);
    free_play_outcome(&outcome);
    return played && written && all_there ? 0 : 1;
}
