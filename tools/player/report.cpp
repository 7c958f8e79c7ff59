#include "tools/player/report.h"

#include "analysis/counters.h"
#include "panel/count_text.h"
#include "gls/tables.h"
#include "tools/player/png.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

static int64_t primitives_of(const frame_stats *stats)
{
    int64_t sum = 0;
    for (int64_t count : stats->primitives)
        sum += count;
    return sum;
}

static void append_count(text_buffer *out, int64_t value)
{
    char text[COUNT_TEXT_SIZE];
    format_count(value, text);
    text_append(out, text);
}

void report_plot(const report_frame *frames, int count, text_buffer *out)
{
    const int width = 720, height = 200, left = 60, right = 100, top = 15, bottom = 25;
    int64_t most_calls = 1, most_primitives = 1;
    for (int i = 0; i < count; ++i) {
        int64_t calls = frames[i].stats.calls, primitives = primitives_of(&frames[i].stats);
        most_calls = calls > most_calls ? calls : most_calls;
        most_primitives = primitives > most_primitives ? primitives : most_primitives;
    }
    text_appendf(out, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" role=\"img\">\n", width, height);
    text_appendf(out, "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"none\" stroke=\"#999\"/>\n", left, top,
                 width - left - right, height - top - bottom);
    // Each series has its own scale, named at its side; frames run from left to right.
    struct series {
        const char *colour;
        int64_t most;
        bool primitives;
    };
    const series lines[2] = {{"#1f5fbf", most_calls, false}, {"#c0392b", most_primitives, true}};
    for (const series &line : lines) {
        text_appendf(out, "<polyline fill=\"none\" stroke=\"%s\" stroke-width=\"2\" points=\"", line.colour);
        for (int i = 0; i < count; ++i) {
            double x = left + (count > 1 ? (double)i * (width - left - right) / (count - 1) : (width - left - right) / 2.0);
            int64_t value = line.primitives ? primitives_of(&frames[i].stats) : frames[i].stats.calls;
            double y = height - bottom - (double)value * (height - top - bottom) / (double)line.most;
            text_appendf(out, "%s%.1f,%.1f", i ? " " : "", x, y);
        }
        text_append(out, "\"/>\n");
    }
    text_appendf(out, "<text x=\"%d\" y=\"%d\" font-size=\"12\" fill=\"#1f5fbf\" text-anchor=\"end\">%lld calls</text>\n",
                 left - 4, top + 10, (long long)most_calls);
    text_appendf(out, "<text x=\"%d\" y=\"%d\" font-size=\"12\" fill=\"#c0392b\">%lld primitives</text>\n",
                 width - right + 4, top + 10, (long long)most_primitives);
    text_appendf(out, "<text x=\"%d\" y=\"%d\" font-size=\"12\">frame %d</text>\n", left, height - 8,
                 count ? frames[0].stats.number : 0);
    text_appendf(out, "<text x=\"%d\" y=\"%d\" font-size=\"12\" text-anchor=\"end\">frame %d</text>\n", width - right,
                 height - 8, count ? frames[count - 1].stats.number : 0);
    text_append(out, "</svg>\n");
}

static const char *const kind_names[PRIM_KIND_COUNT] = {
    "points", "lines", "line loops", "line strips", "triangles", "triangle fans", "triangle strips",
    "quads",  "quad strips", "polygons"};

static void append_rows(text_buffer *out, const master *names, const int *rows, const int64_t *counts)
{
    for (int i = 0; i < TOP_ROWS && rows[i] >= 0; ++i) {
        text_appendf(out, "%s%s ", i ? "<br>" : "", names->gl_names[rows[i]]);
        append_count(out, counts[i]);
    }
}

void report_frame_row(const report_frame *frame, const master *names, text_buffer *out)
{
    const frame_stats *stats = &frame->stats;
    text_appendf(out, "<tr id=\"frame-%d\"><td>%d%s", stats->number, stats->number,
                 stats->swapped ? "" : "<br><small>(end)</small>");
    if (frame->draws_page)
        text_appendf(out, "<br><a href=\"frame-%04d-draws.html\">draws</a>", stats->number);
    text_append(out, "</td><td>");
    if (frame->picture.length) {
        text_appendf(out, "<img width=\"%d\" height=\"%d\" alt=\"frame %d\" src=\"data:image/png;base64,",
                     frame->picture_width, frame->picture_height, stats->number);
        base64_append(out, frame->picture.data, frame->picture.length);
        text_append(out, "\">");
    }
    text_append(out, "</td><td>");
    append_count(out, stats->calls);
    text_append(out, "</td><td>");
    bool any = false;
    for (int kind = 0; kind < PRIM_KIND_COUNT; ++kind) {
        if (stats->primitives[kind] == 0)
            continue;
        text_appendf(out, "%s%s ", any ? "<br>" : "", kind_names[kind]);
        append_count(out, stats->primitives[kind]);
        any = true;
    }
    text_append(out, "</td><td>");
    append_count(out, stats->state_changes);
    if (stats->state_rows[0] >= 0) {
        text_append(out, "<br><small>");
        append_rows(out, names, stats->state_rows, stats->state_counts);
        text_append(out, "</small>");
    }
    text_append(out, "</td><td>");
    append_rows(out, names, stats->top_rows, stats->top_counts);
    text_append(out, "</td><td>");
    if (frame->info && frame->info[0]) {
        text_append(out, "<pre>");
        text_append_html(out, frame->info);
        text_append(out, "</pre>");
    }
    text_append(out, "</td></tr>\n");
}

struct row_list {
    char **rows;
    int count;
    int capacity;
};

static void add_row(void *list, const char *row)
{
    row_list *rows = (row_list *)list;
    if (rows->count == rows->capacity) {
        int capacity = rows->capacity ? rows->capacity * 2 : 64;
        char **grown = (char **)realloc(rows->rows, capacity * sizeof(char *));
        if (!grown)
            return;
        rows->rows = grown;
        rows->capacity = capacity;
    }
    char *copy = (char *)malloc(strlen(row) + 1);
    if (copy)
        rows->rows[rows->count++] = strcpy(copy, row);
}

// The list box sorts without regard to case.
static int by_name(const void *a, const void *b)
{
    const unsigned char *x = *(const unsigned char *const *)a, *y = *(const unsigned char *const *)b;
    while (*x && tolower(*x) == tolower(*y))
        ++x, ++y;
    return tolower(*x) - tolower(*y);
}

void report_call_counts(const per_proc *totals, const master *names, text_buffer *out)
{
    row_list rows = {};
    call_count_rows(totals, names, true, add_row, &rows);
    qsort(rows.rows, rows.count, sizeof(char *), by_name);
    for (int i = 0; i < rows.count; ++i) {
        text_append(out, rows.rows[i]);
        text_append(out, "\n");
        free(rows.rows[i]);
    }
    free(rows.rows);
}

static void append_without_cr(text_buffer *out, const char *text)
{
    for (; *text; ++text)
        if (*text != '\r')
            text_append(out, text, 1);
}

void page_head(text_buffer *html, const char *history, const char *title)
{
    text_append(html, "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>");
    text_append_html(html, history);
    text_appendf(html, " - %s</title>\n<style>\n", title);
    text_append(html, "body { font-family: sans-serif; margin: 1.5em; color: #222; }\n"
                      "table { border-collapse: collapse; }\n"
                      "th, td { border: 1px solid #bbb; padding: 4px 8px; vertical-align: top; text-align: left; }\n"
                      "th { background: #eee; }\n"
                      "pre { margin: 0; font-size: 90%; white-space: pre-wrap; }\n"
                      "mark { background: #fd8; }\n"
                      ".error { color: #b00; font-weight: bold; }\n"
                      "</style>\n</head>\n<body>\n");
}

void append_html_cut(text_buffer *out, const char *text, size_t length, size_t limit)
{
    text_buffer cut = {};
    text_append(&cut, text, length < limit ? length : limit);
    text_append(&cut, length > limit ? "...\n" : "", length > limit ? 4 : 1);
    text_append_html(out, cut.data);
    text_free(&cut);
}

void build_draws_page(const draws_input *input, text_buffer *html)
{
    page_head(html, input->history, "draws");
    text_append(html, "<h1>");
    text_append_html(html, input->history);
    text_appendf(html, ": the draws of frame %d</h1>\n<p><a href=\"report.html#frame-%d\">Back to the report</a>. "
                       "%d draws, each with the buffer drawn into just after it.</p>\n",
                 input->frame, input->frame, input->count);
    int at = 0, end = 0;
    bool text = input->text && frame_commands(input->text, input->frame, &at, &end);
    if (input->text && !text)
        text_append(html, "<p class=\"error\">The history's text has not this frame.</p>\n");
    text_append(html, "<table>\n<tr><th>Draw</th><th>Call</th><th>Picture</th><th>Pixels changed</th>"
                      "<th>Calls since the draw before</th></tr>\n");
    for (int i = 0; i < input->count; ++i) {
        const draw_stats *draw = &input->draws[i];
        text_appendf(html, "<tr id=\"draw-%d\"><td>%d</td><td class=\"call\">", draw->number, draw->number);
        // The commands up to this draw's own: the draw last, the calls before it above.
        int since = at;
        while (text && at < end &&
               !is_shown_draw(input->text->data + input->text->commands[at].offset,
                              command_name_length(input->text->data + input->text->commands[at].offset,
                                                  input->text->commands[at].length)))
            ++at;
        if (text && at < end) {
            const history_command *call = &input->text->commands[at];
            append_html_cut(html, input->text->data + call->offset, call->length, 200);
            text_appendf(html, "<br><small>line %u</small>", call->line);
        } else {
            text_append(html, gls_opcode_names[draw->opcode]);
        }
        text_appendf(html, "</td><td><a href=\"frame-%04d-draw-%03d.png\"><img width=\"%d\" height=\"%d\" "
                           "alt=\"after draw %d\" src=\"frame-%04d-draw-%03d-small.png\"></a></td><td>",
                     draw->frame, draw->number, input->thumbnail_width, input->thumbnail_height, draw->number,
                     draw->frame, draw->number);
        append_count(html, draw->changed);
        text_append(html, "</td><td><pre>");
        for (int c = text ? since : at; c < at; ++c) {
            const history_command *call = &input->text->commands[c];
            append_html_cut(html, input->text->data + call->offset, call->length, 200);
            text_append(html, "\n");
        }
        text_append(html, "</pre></td></tr>\n");
        at += at < end;
    }
    text_append(html, "</table>\n</body>\n</html>\n");
}

void build_report(const report_input *input, text_buffer *html)
{
    int64_t calls = 0, primitives = 0;
    for (int i = 0; i < input->frame_count; ++i) {
        calls += input->frames[i].stats.calls;
        primitives += primitives_of(&input->frames[i].stats);
    }
    page_head(html, input->history, "quondale report");
    text_append(html, "<h1>");
    text_append_html(html, input->history);
    text_append(html, "</h1>\n<p>");
    const surface_format *f = input->format;
    text_appendf(html, "%d frames played on %dx%d, ", input->frame_count, f->width, f->height);
    if (f->rgba)
        text_appendf(html, "RGBA %d/%d/%d/%d", f->red_bits, f->green_bits, f->blue_bits, f->alpha_bits);
    else
        text_appendf(html, "colour index %d", f->index_bits);
    text_appendf(html, ", depth %d, stencil %d%s: ", f->depth_bits, f->stencil_bits,
                 f->double_buffer ? ", double-buffered" : "");
    append_count(html, calls);
    text_append(html, " calls, ");
    append_count(html, primitives);
    text_append(html, " primitives.</p>\n");
    if (input->error && input->error[0]) {
        text_append(html, "<p class=\"error\">");
        text_append_html(html, input->error);
        text_append(html, "</p>\n");
    }
    text_append(html, "<h2>Calls and primitives per frame</h2>\n");
    report_plot(input->frames, input->frame_count, html);
    text_append(html, "<h2>Frames</h2>\n<table>\n<tr><th>Frame</th><th>Picture</th><th>Calls</th><th>Primitives</th>"
                      "<th>State changes</th><th>Most called</th><th>Warnings and hints</th></tr>\n");
    for (int i = 0; i < input->frame_count; ++i)
        report_frame_row(&input->frames[i], input->names, html);
    text_append(html, "</table>\n<h2>Totals</h2>\n<p>As the debugger's count windows show them, over the frames "
                      "above.</p>\n<h3>Primitive Count</h3>\n<pre id=\"primitive-count\">\n");
    char text[WINDOW_TEXT_SIZE];
    prim_count_text(input->totals, text);
    append_without_cr(html, text);
    text_append(html, "\n</pre>\n<h3>Call Count</h3>\n<pre id=\"call-count\">\n");
    text_buffer rows = {};
    report_call_counts(input->totals, input->names, &rows);
    text_append_html(html, rows.data ? rows.data : "");
    text_free(&rows);
    text_append(html, "</pre>\n</body>\n</html>\n");
}
