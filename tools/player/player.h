// The history player: a recorded history (or any GLS stream) executed on a real GL context of the
// history's size and pixel format, frame by frame, with each frame's calls counted by the
// debugger's own rules.
#pragma once

#include "records/records.h"

// The framebuffer a history asks for, from its "Visual Info" and "Viewport Info" records.
struct surface_format {
    int width;
    int height;
    int red_bits;
    int green_bits;
    int blue_bits;
    int alpha_bits;
    int depth_bits;
    int stencil_bits;
    int accum_bits[4];
    int index_bits;
    bool double_buffer;
    bool rgba;
};

// 640 by 480, RGBA with 8 bits a component, 24 of depth and 8 of stencil, double-buffered: what a
// stream without the debugger's records gets.
void default_surface_format(surface_format *format);
// The records' texts into a format; false leaves it as it was, for a text that is not one.
bool read_visual_info(const char *text, surface_format *format);
bool read_viewport_info(const char *text, surface_format *format);

enum : int { PRIM_KIND_COUNT = 10, TOP_ROWS = 5 };

// One frame: the calls from the end of the last one to a swap note or the end of the stream.
struct frame_stats {
    int number; // from 1
    bool swapped;
    int64_t calls;
    // The ten counters of the Primitive Count window: points, lines, line loops, line strips,
    // triangles, fans, strips, quads, quad strips, polygons.
    int64_t primitives[PRIM_KIND_COUNT];
    int64_t state_changes;
    // The most-called GL rows and the rows that changed state most, -1 past the last.
    int top_rows[TOP_ROWS];
    int64_t top_counts[TOP_ROWS];
    int state_rows[TOP_ROWS];
    int64_t state_counts[TOP_ROWS];
    // The frame's warnings and hints, a line each.
    const char *info;
};

// A frame's end: its figures and its colour buffer, RGB rows from the bottom up.
typedef void (*frame_func)(const frame_stats *stats, const uint8_t *rgb, int width, int height, void *user);

// The calls a frame's draws are told by: those that draw into the colour buffer.
bool is_shown_draw(const char *name, size_t length);

// One draw of a frame whose draws were asked for: its opcode, its place in the frame from 1, and
// the pixels of the buffer drawn into that it changed.
struct draw_stats {
    int frame;
    int number;
    int opcode;
    int64_t changed;
};

// A draw's end, with the buffer drawn into just after it, RGB rows from the bottom up.
typedef void (*draw_func)(const draw_stats *stats, const uint8_t *rgb, int width, int height, void *user);

// The budgets a play has when its options give none: the most memory it asks GL to hold and the
// longest it runs; a command that would pass one stops the play.
enum : uint64_t { PLAY_MEMORY_BUDGET_MB = 2048, PLAY_TIME_BUDGET_S = 600 };

struct play_options {
    int first_frame; // frames handed to on_frame and counted in the totals
    int last_frame;  // 0: to the end; the play stops behind it
    frame_func on_frame;
    // Now and then: the part of the file read so far (negative for a pipe), and the frames ended.
    void (*progress)(double fraction, int frames, void *user);
    void *user;
    uint64_t memory_budget_mb; // 0: PLAY_MEMORY_BUDGET_MB
    double time_budget_s;      // 0: PLAY_TIME_BUDGET_S
    bool quiet;                // the commands skipped are not told on the standard error
    // Frames whose draws go to on_draw one by one; none when it is null.
    bool (*wants_draws)(int frame, void *user);
    draw_func on_draw;
};

enum : int { PLAY_ERROR_SIZE = 1100 };

struct play_outcome {
    int frames;      // frames handed over
    int frames_seen; // frames ended, handed over or not
    bool opened;     // the file named could be opened
    surface_format format;
    // The counters over the frames handed over, as the count windows show them.
    per_proc *totals;
    master *names;
    // Empty when the stream played to its end; else why not, for the user.
    char error[PLAY_ERROR_SIZE];
};

// Plays the file. False with outcome->error set when the file is missing, is no GLS stream, has
// broken commands, calls streams it cannot read, ends in the middle or would pass a budget; the
// frames before are handed over all the same.
bool play_history(const char *path, const play_options *options, play_outcome *outcome);
void free_play_outcome(play_outcome *outcome);
