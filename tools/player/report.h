// The report of a played history: one self-contained HTML page with a row for each frame (its
// picture, calls, primitives by kind, state changes, most-called functions and warnings), a plot
// of calls and primitives per frame in inline SVG, and the totals as the debugger's Call Count
// and Primitive Count windows show them.
#pragma once

#include "tools/player/history_text.h"
#include "tools/player/player.h"
#include "tools/player/text_buffer.h"

struct report_frame {
    frame_stats stats; // stats.info points to info below
    char *info;
    text_buffer picture; // a PNG
    int picture_width;
    int picture_height;
    bool draws_page; // its draws have a page of their own, frame-NNNN-draws.html
};

struct report_input {
    const char *history;
    const surface_format *format;
    const report_frame *frames;
    int frame_count;
    const per_proc *totals;
    const master *names;
    const char *error; // empty when the history played to its end
};

// The plot of calls and primitives per frame: an <svg> element.
void report_plot(const report_frame *frames, int count, text_buffer *out);
// One frame's row of the table: a <tr> element.
void report_frame_row(const report_frame *frame, const master *names, text_buffer *out);
// The Call Count window's rows of the counters that are not 0, sorted as its list sorts them,
// a line each.
void report_call_counts(const per_proc *totals, const master *names, text_buffer *out);
// The whole page.
void build_report(const report_input *input, text_buffer *html);

// A frame's draws, one by one: the call, its picture (frame-NNNN-draw-NNN.png beside the page, and
// a thumbnail of it in -small.png), the pixels it changed and the calls since the draw before it,
// from the history's text when it is text.
struct draws_input {
    const char *history;
    int frame;
    const draw_stats *draws;
    int count;
    int thumbnail_width;
    int thumbnail_height;
    const history_text *text; // null for a binary stream
};
void build_draws_page(const draws_input *input, text_buffer *html);
// The head of a page of the report's look, with its title.
void page_head(text_buffer *html, const char *history, const char *title);
// Up to `limit` bytes of text for HTML, with "..." when it is longer.
void append_html_cut(text_buffer *out, const char *text, size_t length, size_t limit);
