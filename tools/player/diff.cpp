#include "tools/player/diff.h"

#include "gls/decode.h"
#include "gls/tables.h"
#include "tools/player/history_text.h"
#include "tools/player/png.h"
#include "tools/player/report.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

enum : int { AROUND = 3, THUMBNAIL = 240 };
// Pictures of B's differing frames kept for the comparison: at most this much.
static const size_t KEPT_BYTES = (size_t)512 << 20;

struct frame_picture {
    uint64_t hash;
    bool seen;
    uint8_t *kept; // B's, when it differs from A's
};

struct diff_frame {
    int number;
    int first_a, first_b; // the first command that differs, -1 when the calls are the same
    int calls_differ;
    int64_t pixels; // -1 not compared
};

struct diff_run {
    const diff_options *options;
    frame_picture *pictures[2];
    int capacity[2];
    int width, height;
    size_t kept_bytes;
    diff_frame *frames;
    int frame_count;
    int playing; // 0 A, 1 B
};

static uint64_t hash_of(const uint8_t *bytes, size_t size)
{
    uint64_t hash = 0xCBF29CE484222325ull;
    size_t i = 0;
    for (; i + 8 <= size; i += 8) {
        uint64_t word;
        memcpy(&word, bytes + i, 8);
        hash = (hash ^ word) * 0x100000001B3ull;
    }
    for (; i < size; ++i)
        hash = (hash ^ bytes[i]) * 0x100000001B3ull;
    return hash;
}

static frame_picture *picture_of(diff_run *run, int side, int number)
{
    if (number >= run->capacity[side]) {
        int capacity = number * 2 + 64;
        frame_picture *grown = (frame_picture *)realloc(run->pictures[side], capacity * sizeof(frame_picture));
        if (!grown)
            return nullptr;
        memset(grown + run->capacity[side], 0, (capacity - run->capacity[side]) * sizeof(frame_picture));
        run->pictures[side] = grown;
        run->capacity[side] = capacity;
    }
    return &run->pictures[side][number];
}

static void write_png(const diff_run *run, const char *name, int number, const uint8_t *rgb, int width, int height)
{
    text_buffer png = {};
    png_from_rgb(rgb, width, height, &png);
    char path[4200];
    snprintf(path, sizeof path, "%s/%s-%04d.png", run->options->out, name, number);
    if (png.failed || !text_write_file(&png, path))
        fprintf(stderr, "quondale: could not write %s\n", path);
    text_free(&png);
}

static void write_thumbnail(const diff_run *run, const char *name, int number, const uint8_t *rgb)
{
    uint8_t *small;
    int width, height;
    if (shrink_rgb(rgb, run->width, run->height, THUMBNAIL, &small, &width, &height)) {
        write_png(run, name, number, small, width, height);
        free(small);
    }
}

// First A's and B's hashes; B keeps the pictures that differ from A's; then A again, against them.
static void on_frame(const frame_stats *stats, const uint8_t *rgb, int width, int height, void *user)
{
    diff_run *run = (diff_run *)user;
    size_t bytes = (size_t)width * height * 3;
    if (run->playing == 2) {
        frame_picture *b = picture_of(run, 1, stats->number);
        if (!b || !b->kept)
            return;
        int64_t pixels = 0;
        uint8_t *difference = (uint8_t *)malloc(bytes);
        for (size_t i = 0; difference && i < bytes; i += 3) {
            bool differs = memcmp(rgb + i, b->kept + i, 3) != 0;
            pixels += differs;
            // The same pixels dimmed to grey, the others in magenta.
            uint8_t grey = (uint8_t)((rgb[i] + rgb[i + 1] + rgb[i + 2]) / 9 + 40);
            difference[i] = differs ? 255 : grey;
            difference[i + 1] = differs ? 0 : grey;
            difference[i + 2] = differs ? 255 : grey;
        }
        for (int i = 0; i < run->frame_count; ++i)
            if (run->frames[i].number == stats->number)
                run->frames[i].pixels = pixels;
        if (difference)
            write_png(run, "difference", stats->number, difference, width, height);
        write_thumbnail(run, "a", stats->number, rgb);
        write_thumbnail(run, "b", stats->number, b->kept);
        free(difference);
        return;
    }
    frame_picture *picture = picture_of(run, run->playing, stats->number);
    if (!picture)
        return;
    picture->seen = true;
    picture->hash = hash_of(rgb, bytes);
    if (run->playing == 0) {
        run->width = width;
        run->height = height;
        return;
    }
    frame_picture *a = picture_of(run, 0, stats->number);
    bool differs = !a || !a->seen || a->hash != picture->hash || width != run->width || height != run->height;
    if (differs && width == run->width && height == run->height && run->kept_bytes + bytes <= KEPT_BYTES) {
        picture->kept = (uint8_t *)malloc(bytes);
        if (picture->kept) {
            memcpy(picture->kept, rgb, bytes);
            run->kept_bytes += bytes;
        }
    }
}

static bool play(diff_run *run, int side, int last_frame, play_outcome *outcome)
{
    const diff_options *options = run->options;
    run->playing = side;
    play_options play = {options->first_frame, last_frame, on_frame, nullptr, run, 0, 0, true,
                         nullptr, nullptr};
    bool played = play_history(side == 1 ? options->b : options->a, &play, outcome);
    if (!played && side != 2)
        fprintf(stderr, "quondale: %s\n", outcome->error);
    // A history cut short still compares as far as it goes.
    return played || (outcome->opened && outcome->frames_seen > 0);
}

// ---------------------------------------------------------------------------------------------
// The calls

// The command with the arguments that only name memory addresses as "0x".
static void without_addresses(const char *command, size_t length, text_buffer *out)
{
    out->length = 0;
    char name[80];
    size_t name_length = command_name_length(command, length);
    int opcode = 0;
    if (name_length < sizeof name) {
        memcpy(name, command, name_length);
        name[name_length] = 0;
        for (int op = 1; op < GLS_OPCODE_COUNT && !opcode; ++op)
            if (gls_opcode_names[op] && strcmp(gls_opcode_names[op], name) == 0)
                opcode = op;
    }
    const GlsCommandDesc *desc = opcode ? &gls_command_descs[opcode] : nullptr;
    // The arguments are the last parenthesis: an image's flags come in one of their own before.
    const char *open = command + name_length;
    for (const char *at = open; at < command + length; ++at)
        if (*at == ')' && at + 1 < command + length && at[1] == '(')
            open = at + 1;
    text_append(out, command, (size_t)(open - command));
    int argument = 0, depth = 0;
    bool quoted = false, dropped = false;
    for (const char *at = open; at < command + length; ++at) {
        char c = *at;
        if (quoted) {
            quoted = c != '"' || at[-1] == '\\';
        } else if (c == '"') {
            quoted = true;
        } else if (c == '(' || c == '{') {
            ++depth;
        } else if (c == ')' || c == '}') {
            --depth;
        } else if (c == ',' && depth == 1) {
            ++argument;
            dropped = false;
        }
        bool address = false;
        for (int i = 0; desc && depth >= 1 && i < desc->count; ++i)
            address |= desc->args[i].arg == argument &&
                       (desc->args[i].kind == GLS_ARG_OUT || desc->args[i].kind == GLS_ARG_POINTER);
        if (address && depth == 1 && c != ',' && c != '(' && c != ' ') {
            if (!dropped)
                text_append(out, "0x");
            dropped = true;
            continue;
        }
        text_append(out, at, 1);
    }
}

static bool names_address(const char *command, size_t length)
{
    for (size_t i = 0; i + 1 < length; ++i)
        if (command[i] == '0' && command[i + 1] == 'x')
            return true;
    return false;
}

static bool same_command(const history_text *a, int i, const history_text *b, int j, text_buffer scratch[2])
{
    const history_command *x = &a->commands[i], *y = &b->commands[j];
    const char *ax = a->data + x->offset, *by = b->data + y->offset;
    if (x->length == y->length && memcmp(ax, by, x->length) == 0)
        return true;
    if (!names_address(ax, x->length) || !names_address(by, y->length))
        return false;
    without_addresses(ax, x->length, &scratch[0]);
    without_addresses(by, y->length, &scratch[1]);
    return scratch[0].length == scratch[1].length && memcmp(scratch[0].data, scratch[1].data, scratch[0].length) == 0;
}

static void compare_calls(const history_text *a, const history_text *b, diff_frame *frame, text_buffer scratch[2])
{
    frame->first_a = frame->first_b = -1;
    int a0, a1, b0, b1;
    if (!a || !b || !frame_commands(a, frame->number, &a0, &a1) || !frame_commands(b, frame->number, &b0, &b1))
        return;
    int common = a1 - a0 < b1 - b0 ? a1 - a0 : b1 - b0;
    frame->calls_differ = (a1 - a0) - common + (b1 - b0) - common;
    for (int i = 0; i < common; ++i) {
        if (same_command(a, a0 + i, b, b0 + i, scratch))
            continue;
        ++frame->calls_differ;
        if (frame->first_a < 0) {
            frame->first_a = a0 + i;
            frame->first_b = b0 + i;
        }
    }
    if (frame->calls_differ && frame->first_a < 0) {
        frame->first_a = a0 + common < a1 ? a0 + common : a1 - 1;
        frame->first_b = b0 + common < b1 ? b0 + common : b1 - 1;
    }
}

static uint32_t line_of(const history_text *text, int command)
{
    return command >= 0 && command < text->count ? text->commands[command].line : 0;
}

static void describe(const diff_run *run, const history_text *a, const history_text *b, const diff_frame *frame,
                     text_buffer *line)
{
    line->length = 0;
    text_appendf(line, "frame %d: ", frame->number);
    if (frame->calls_differ)
        text_appendf(line, "calls differ from line %u of A and line %u of B (%d call%s), ", line_of(a, frame->first_a),
                     line_of(b, frame->first_b), frame->calls_differ, frame->calls_differ == 1 ? "" : "s");
    else
        text_append(line, "the same calls, ");
    if (frame->pixels > 0)
        text_appendf(line, "%lld pixels differ", (long long)frame->pixels);
    else if (frame->pixels == 0)
        text_append(line, "the same pixels");
    else
        text_append(line, run->width ? "pictures differ (not compared pixel by pixel)" : "no pictures");
    text_append(line, "", 1);
}

static void append_around(text_buffer *html, const history_text *text, int command, const char *side)
{
    text_appendf(html, "<td><b>%s</b><pre>", side);
    for (int c = command - AROUND; text && c <= command + AROUND; ++c) {
        if (c < 0 || c >= text->count)
            continue;
        const history_command *call = &text->commands[c];
        text_appendf(html, "%s%6u  ", c == command ? "<mark>" : "", call->line);
        append_html_cut(html, text->data + call->offset, call->length, 160);
        text_append(html, c == command ? "</mark>\n" : "\n");
    }
    text_append(html, "</pre></td>");
}

static void build_page(const diff_run *run, const history_text *a, const history_text *b, int compared,
                       int differing, text_buffer *html)
{
    const diff_options *options = run->options;
    page_head(html, options->a, "diff");
    // Paths are long: they break anywhere rather than run off the page.
    text_append(html, "<h1>Two histories compared</h1>\n<p style=\"overflow-wrap: anywhere\">A: ");
    text_append_html(html, options->a);
    text_append(html, "<br>B: ");
    text_append_html(html, options->b);
    text_appendf(html, "</p>\n<p>%d frames compared: %s.</p>\n", compared,
                 differing ? "these differ" : "the same");
    if (!a || !b)
        text_append(html, "<p>Calls compared only in GLS text: one of them is a binary stream.</p>\n");
    text_buffer line = {};
    for (int i = 0; i < run->frame_count; ++i) {
        const diff_frame *frame = &run->frames[i];
        if (!frame->calls_differ && frame->pixels == 0)
            continue;
        describe(run, a, b, frame, &line);
        text_appendf(html, "<h2 id=\"frame-%d\">", frame->number);
        text_append_html(html, line.data);
        text_append(html, "</h2>\n<table>\n");
        if (frame->calls_differ) {
            text_append(html, "<tr>");
            append_around(html, a, frame->first_a, "A");
            append_around(html, b, frame->first_b, "B");
            text_append(html, "</tr>\n");
        }
        if (frame->pixels > 0)
            text_appendf(html, "<tr><td><span style=\"display: inline-block\"><b>A</b><br><img src=\"a-%04d.png\" alt=\"A\">"
                               "</span> <span style=\"display: inline-block\"><b>B</b><br><img src=\"b-%04d.png\" alt=\"B\">"
                               "</span></td><td><b>The pixels that differ</b><br><a href=\"difference-%04d.png\">"
                               "<img width=\"%d\" src=\"difference-%04d.png\" alt=\"difference\"></a></td></tr>\n",
                         frame->number, frame->number, frame->number, THUMBNAIL * 2, frame->number);
        text_append(html, "</table>\n");
    }
    text_free(&line);
    text_append(html, "</body>\n</html>\n");
}

int diff_histories(const diff_options *options)
{
    diff_run run = {};
    run.options = options;
    history_text texts[2];
    bool text_a = read_history_text(options->a, &texts[0]), text_b = read_history_text(options->b, &texts[1]);
    const history_text *a = text_a && text_b ? &texts[0] : nullptr, *b = a ? &texts[1] : nullptr;
    play_outcome outcomes[2];
    bool played = play(&run, 0, options->last_frame, &outcomes[0]);
    free_play_outcome(&outcomes[0]);
    played = played && play(&run, 1, options->last_frame, &outcomes[1]);
    free_play_outcome(&outcomes[1]);
    int status = 2;
    if (played) {
        int common = outcomes[0].frames_seen < outcomes[1].frames_seen ? outcomes[0].frames_seen : outcomes[1].frames_seen;
        if (options->last_frame && common > options->last_frame)
            common = options->last_frame;
        if (outcomes[0].frames_seen != outcomes[1].frames_seen)
            printf("A has %d frames, B %d: the %d they share are compared\n", outcomes[0].frames_seen,
                   outcomes[1].frames_seen, common);
        run.frames = (diff_frame *)calloc(common > 0 ? common : 1, sizeof(diff_frame));
        text_buffer scratch[2] = {};
        int last_kept = 0;
        for (int number = options->first_frame; run.frames && number <= common; ++number) {
            diff_frame frame = {number, -1, -1, 0, 0};
            compare_calls(a, b, &frame, scratch);
            frame_picture *pa = picture_of(&run, 0, number), *pb = picture_of(&run, 1, number);
            if (pa && pb && pa->hash != pb->hash) {
                frame.pixels = -1;
                last_kept = pb->kept ? number : last_kept;
            }
            run.frames[run.frame_count++] = frame;
        }
        text_free(&scratch[0]);
        text_free(&scratch[1]);
        play_outcome again;
        if (last_kept)
            play(&run, 2, last_kept, &again);
        if (last_kept)
            free_play_outcome(&again);
        int differing = 0;
        text_buffer line = {};
        for (int i = 0; i < run.frame_count; ++i) {
            if (!run.frames[i].calls_differ && run.frames[i].pixels == 0)
                continue;
            ++differing;
            describe(&run, a, b, &run.frames[i], &line);
            printf("%s\n", line.data);
        }
        text_free(&line);
        if (!differing)
            printf("same: %d frames\n", run.frame_count);
        text_buffer html = {};
        build_page(&run, a, b, run.frame_count, differing, &html);
        char path[4200];
        snprintf(path, sizeof path, "%s/diff.html", options->out);
        if (text_write_file(&html, path))
            printf("%s\n", path);
        else
            fprintf(stderr, "quondale: could not write %s\n", path);
        text_free(&html);
        status = differing ? 1 : 0;
    }
    for (int side = 0; side < 2; ++side) {
        for (int i = 0; i < run.capacity[side]; ++i)
            free(run.pictures[side][i].kept);
        free(run.pictures[side]);
    }
    free(run.frames);
    if (text_a)
        free_history_text(&texts[0]);
    if (text_b)
        free_history_text(&texts[1]);
    return status;
}
