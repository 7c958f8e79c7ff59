// The play of a history. Every GL command of the stream reaches player_tap through its generated
// tap (gen/player_taps.cpp), installed as the command's call function: there it is counted into
// the session records of the debugger's counters, judged, and run on the real GL. The codec's
// own commands that matter are hooked by name: glsString for the records of the pixel format,
// the swap notes and the warnings, glsDrawVertexArray for the arrays' draws, glsError and the
// group marks for streams that are broken or cut short.
#include "tools/player/play_state.h"

#include "analysis/counters.h"
#include "gen/gl_enums.h"
#include "gen/hooks.h"
#include "gls/capture.h"
#include "gls/gls.h"
#include "gls/gls_context.h"
#include "gls/tables.h"
#include "tools/player/surface.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

extern const GlsFunc player_taps[GLS_OPCODE_COUNT];
extern const char *const player_hook_names[GLS_OPCODE_COUNT];

#define GL(name) ((fn_##name)gls_default_dispatch[OP_##name])

// ---------------------------------------------------------------------------------------------
// The records of the pixel format

void default_surface_format(surface_format *format)
{
    *format = surface_format{};
    format->width = 640;
    format->height = 480;
    format->red_bits = format->green_bits = format->blue_bits = format->alpha_bits = 8;
    format->depth_bits = 24;
    format->stencil_bits = 8;
    format->double_buffer = true;
    format->rgba = true;
}

// "GLX_USE_GL, GLX_DOUBLEBUFFER, GLX_RGBA, GLX_RED_SIZE, 8, ..., None": words and the numbers
// behind the sizes, as the debugger writes a context's format.
bool read_visual_info(const char *text, surface_format *format)
{
    struct size_word {
        const char *word;
        int surface_format::*field;
    };
    static const size_word sizes[] = {
        {"GLX_RED_SIZE", &surface_format::red_bits},     {"GLX_GREEN_SIZE", &surface_format::green_bits},
        {"GLX_BLUE_SIZE", &surface_format::blue_bits},   {"GLX_ALPHA_SIZE", &surface_format::alpha_bits},
        {"GLX_DEPTH_SIZE", &surface_format::depth_bits}, {"GLX_STENCIL_SIZE", &surface_format::stencil_bits},
        {"GLX_BUFFER_SIZE", &surface_format::index_bits},
    };
    static const char *const accum[4] = {"GLX_ACCUM_RED_SIZE", "GLX_ACCUM_GREEN_SIZE", "GLX_ACCUM_BLUE_SIZE",
                                         "GLX_ACCUM_ALPHA_SIZE"};
    if (strncmp(text, "GLX_USE_GL", 10) != 0)
        return false;
    surface_format read = *format;
    // Sizes the line leaves out are 0.
    read.red_bits = read.green_bits = read.blue_bits = read.alpha_bits = 0;
    read.depth_bits = read.stencil_bits = read.index_bits = 0;
    for (int &bits : read.accum_bits)
        bits = 0;
    read.double_buffer = read.rgba = false;
    bool ended = false;
    for (const char *at = text; *at && !ended;) {
        char word[32];
        size_t length = strcspn(at, ", ");
        if (length == 0 || length >= sizeof word)
            return false;
        memcpy(word, at, length);
        word[length] = 0;
        at += length;
        at += strspn(at, ", ");
        int *field = nullptr;
        for (const size_word &size : sizes)
            if (strcmp(word, size.word) == 0)
                field = &(read.*size.field);
        for (int i = 0; i < 4; ++i)
            if (strcmp(word, accum[i]) == 0)
                field = &read.accum_bits[i];
        if (field) {
            char *end;
            long value = strtol(at, &end, 10);
            if (end == at || value < 0 || value > 64)
                return false;
            *field = (int)value;
            at = end + strspn(end, ", ");
        } else if (strcmp(word, "GLX_DOUBLEBUFFER") == 0) {
            read.double_buffer = true;
        } else if (strcmp(word, "GLX_RGBA") == 0) {
            read.rgba = true;
        } else if (strcmp(word, "None") == 0) {
            ended = true;
        } else if (strcmp(word, "GLX_USE_GL") != 0 && strcmp(word, "GLX_STEREO") != 0 &&
                   strcmp(word, "GLX_AUX_BUFFERS") != 0) {
            return false;
        } else if (strcmp(word, "GLX_AUX_BUFFERS") == 0) {
            at += strspn(at, "0123456789");
            at += strspn(at, ", ");
        }
    }
    if (!ended || (read.rgba && read.red_bits + read.green_bits + read.blue_bits == 0))
        return false;
    *format = read;
    return true;
}

bool read_viewport_info(const char *text, surface_format *format)
{
    int x, y, width, height;
    char rest;
    if (sscanf(text, "%d %d %d %d%c", &x, &y, &width, &height, &rest) != 4)
        return false;
    // The surface holds the whole viewport; a window of nothing still gets a pixel.
    long long right = (long long)x + width, top = (long long)y + height;
    if (x < 0 || y < 0 || width < 0 || height < 0 || right > 16384 || top > 16384)
        return false;
    format->width = right > 0 ? (int)right : 1;
    format->height = top > 0 ? (int)top : 1;
    return true;
}

// ---------------------------------------------------------------------------------------------
// What the player does with each command

static void run_begin(thread_record *record, const GlsArgValue *a) { hook_glBegin(record, (GLenum)a[0].u); }
static void run_end(thread_record *record, const GlsArgValue *) { hook_glEnd(record); }
static void run_vertex(thread_record *record, const GlsArgValue *a) { hook_vertex(record, a[0].p); }
static void run_eval_coord(thread_record *record, const GlsArgValue *a) { hook_eval_coord(record, a[0].p); }
static void run_rect(thread_record *record, const GlsArgValue *a) { hook_rect(record, a[0].p, a[1].p); }
static void run_array_element(thread_record *record, const GlsArgValue *a) { hook_array_element(record, (GLint)a[0].i); }
static void run_draw_arrays(thread_record *record, const GlsArgValue *a)
{
    hook_draw_arrays(record, (GLenum)a[0].u, (GLint)a[1].i, (GLsizei)a[2].i);
}
static void run_draw_elements(thread_record *record, const GlsArgValue *a)
{
    hook_glDrawElements(record, (GLenum)a[0].u, (GLsizei)a[1].i, (GLenum)a[2].u, a[3].p);
}
static void run_enable_client_state(thread_record *record, const GlsArgValue *a)
{
    hook_glEnableClientState(record, (GLenum)a[0].u);
}
static void run_disable_client_state(thread_record *record, const GlsArgValue *a)
{
    hook_glDisableClientState(record, (GLenum)a[0].u);
}

static const char *const ARRAYS_NOT_HELD =
    "it draws from the program's vertex arrays, which a history holds only when \"Capture Vertex Arrays Calls\" "
    "was on";

// The debugger's hooks by name: the counting ones run here as they run behind a debugged call;
// the others (lists, flushes, checks) are the debugger's alone and only tell a draw from a
// state change.
struct counting_hook {
    const char *name;
    counting_run run;
    call_kind kind;
    const char *skipped_because;
};

static const counting_hook counting_hooks[] = {
    {"hook_glBegin", run_begin, KIND_DRAW, nullptr},
    {"hook_glEnd", run_end, KIND_DRAW, nullptr},
    {"hook_vertex", run_vertex, KIND_DRAW, nullptr},
    {"hook_eval_coord", run_eval_coord, KIND_DRAW, nullptr},
    {"hook_rect", run_rect, KIND_DRAW, nullptr},
    {"hook_array_element", run_array_element, KIND_DRAW, ARRAYS_NOT_HELD},
    {"hook_draw_arrays", run_draw_arrays, KIND_DRAW, ARRAYS_NOT_HELD},
    {"hook_glDrawElements", run_draw_elements, KIND_DRAW, ARRAYS_NOT_HELD},
    {"hook_glEnableClientState", run_enable_client_state, KIND_STATE, nullptr},
    {"hook_glDisableClientState", run_disable_client_state, KIND_STATE, nullptr},
    {"hook_glClear", nullptr, KIND_DRAW, nullptr},
    {"hook_glCallList", nullptr, KIND_DRAW, nullptr},
    {"hook_glCallLists", nullptr, KIND_DRAW, nullptr},
    {"hook_glFlush", nullptr, KIND_DRAW, nullptr},
    {"hook_glFinish", nullptr, KIND_DRAW, nullptr},
};

// Draws that have no hook of the debugger's.
static const int other_draws[] = {OP_glDrawPixels, OP_glBitmap,     OP_glCopyPixels, OP_glAccum,
                                  OP_glEvalMesh1,  OP_glEvalMesh2,  OP_glEvalPoint1, OP_glEvalPoint2};

static const char *const shown_draws[] = {"glEnd",         "glDrawArrays", "glDrawElements", "glsDrawVertexArray",
                                          "glCallList",    "glCallLists",  "glDrawPixels",   "glBitmap",
                                          "glCopyPixels",  "glClear",      "glAccum"};

bool is_shown_draw(const char *name, size_t length)
{
    for (const char *draw : shown_draws)
        if (strlen(draw) == length && memcmp(draw, name, length) == 0)
            return true;
    return false;
}

// ---------------------------------------------------------------------------------------------
// The play

player_state *playing;

void printable(const char *text, char *out, size_t out_size)
{
    size_t at = 0;
    for (const uint8_t *c = (const uint8_t *)text; *c && at + 5 < out_size; ++c) {
        if (*c >= 0x20 && *c < 0x7F)
            out[at++] = (char)*c;
        else
            at += (size_t)snprintf(out + at, out_size - at, "\\x%02X", *c);
    }
    out[at] = 0;
}

void tell(player_state *p, const char *format, ...)
{
    if (p->options->quiet)
        return;
    va_list arguments;
    va_start(arguments, format);
    fprintf(stderr, "quondale: %s: ", p->shown_path);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
    va_end(arguments);
}

void report_skip(player_state *p, int opcode, const char *why)
{
    if (p->skip_reported[opcode])
        return;
    p->skip_reported[opcode] = true;
    tell(p, "%s skipped: %s", gls_opcode_names[opcode], why);
}

void refuse(player_state *p, const char *message)
{
    if (!p->refused[0])
        snprintf(p->refused, sizeof p->refused, "%s", message);
    glsEnable(GLS_ABORT_CALL);
}

void note_failure(player_state *p, const char *message)
{
    if (!p->first_error[0])
        snprintf(p->first_error, sizeof p->first_error, "%s", message);
}

// The sixteen primitive counters lie one behind the other from prim_points to prim_polygons.
static int64_t *prim_counters(per_proc *proc) { return &proc->prim_points; }

// The ten counters that the Primitive Count window shows, in its order.
static int64_t per_proc::*const shown_prims[PRIM_KIND_COUNT] = {
    &per_proc::prim_points,    &per_proc::prim_lines,          &per_proc::prim_line_loops,
    &per_proc::prim_line_strips, &per_proc::prim_triangles,    &per_proc::prim_triangle_fans,
    &per_proc::prim_triangle_strips, &per_proc::prim_quads,    &per_proc::prim_quad_strips,
    &per_proc::prim_polygons};

static void snapshot(player_state *p)
{
    per_proc *proc = p->record.per_proc;
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        p->start_rows[row] = proc->call_control[row].count;
    memcpy(p->start_state, p->state_changes, sizeof p->start_state);
    memcpy(p->start_glu, proc->glu_call_count, sizeof p->start_glu);
    memcpy(p->start_wgl, proc->wgl_call_count, sizeof p->start_wgl);
    memcpy(p->start_prims, prim_counters(proc), sizeof p->start_prims);
    p->frame_calls = 0;
    p->info.length = 0;
    if (p->info.data)
        p->info.data[0] = 0;
}

// The largest counts of a frame, largest first, rows in catalogue order among equals.
static void top_of(const int64_t *counts, int rows[TOP_ROWS], int64_t values[TOP_ROWS])
{
    for (int i = 0; i < TOP_ROWS; ++i) {
        rows[i] = -1;
        values[i] = 0;
    }
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        int64_t value = counts[row];
        if (value <= 0)
            continue;
        int place = TOP_ROWS;
        while (place > 0 && (rows[place - 1] < 0 || values[place - 1] < value))
            --place;
        if (place == TOP_ROWS)
            continue;
        memmove(rows + place + 1, rows + place, (TOP_ROWS - 1 - place) * sizeof rows[0]);
        memmove(values + place + 1, values + place, (TOP_ROWS - 1 - place) * sizeof values[0]);
        rows[place] = row;
        values[place] = value;
    }
}

static void read_colour_buffer(player_state *p, uint8_t *pixels)
{
    int width = p->format.width, height = p->format.height;
    GLint list = 0;
    GL(glGetIntegerv)(GL_LIST_INDEX, &list);
    // While a list is compiled, server state calls would go into it: only the client state moves.
    bool compiling = list != 0;
    GL(glPushClientAttrib)(GL_CLIENT_PIXEL_STORE_BIT);
    if (!compiling) {
        GL(glPushAttrib)(GL_PIXEL_MODE_BIT);
        GL(glReadBuffer)(p->colour_buffer);
        GL(glPixelTransferi)(GL_MAP_COLOR, 0);
        for (GLenum scale : {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE})
            GL(glPixelTransferf)(scale, 1);
        for (GLenum bias : {GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS, GL_ALPHA_BIAS})
            GL(glPixelTransferf)(bias, 0);
    }
    GL(glPixelStorei)(GL_PACK_ALIGNMENT, 1);
    for (GLenum pname : {GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS, GL_PACK_SWAP_BYTES, GL_PACK_LSB_FIRST})
        GL(glPixelStorei)(pname, 0);
    GL(glReadPixels)(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, pixels);
    if (!compiling)
        GL(glPopAttrib)();
    GL(glPopClientAttrib)();
}

// The picture of the draw in hand, once GL has run it and has left glBegin/glEnd.
static void end_draw(player_state *p)
{
    if (!p->pending_draw || p->record.per_gl->in_begin_end != 0)
        return;
    size_t bytes = (size_t)p->format.width * p->format.height * 3;
    read_colour_buffer(p, p->pixels);
    draw_stats stats = {p->outcome->frames_seen + 1, ++p->draw_number, p->pending_draw, 0};
    for (size_t i = 0; i < bytes; i += 3)
        stats.changed += memcmp(p->pixels + i, p->before + i, 3) != 0;
    p->options->on_draw(&stats, p->pixels, p->format.width, p->format.height, p->options->user);
    memcpy(p->before, p->pixels, bytes);
    p->pending_draw = 0;
}

// A frame whose draws were asked for starts from the buffer as it is.
static void start_draws(player_state *p)
{
    const play_options *options = p->options;
    p->draws_frame = options->wants_draws && options->wants_draws(p->outcome->frames_seen + 1, options->user);
    p->draw_number = 0;
    p->pending_draw = 0;
    if (p->draws_frame && !p->before)
        p->before = (uint8_t *)malloc((size_t)p->format.width * p->format.height * 3);
    if (!p->before)
        p->draws_frame = false;
    else if (p->draws_frame)
        read_colour_buffer(p, p->before);
}

static void end_frame(player_state *p, bool swapped)
{
    end_draw(p);
    play_outcome *outcome = p->outcome;
    const play_options *options = p->options;
    per_proc *proc = p->record.per_proc, *totals = outcome->totals;
    int number = ++outcome->frames_seen;
    bool wanted = number >= options->first_frame && (options->last_frame == 0 || number <= options->last_frame);
    if (wanted) {
        frame_stats stats = {};
        stats.number = number;
        stats.swapped = swapped;
        stats.calls = p->frame_calls;
        int64_t rows[GL_CALL_COUNT], state[GL_CALL_COUNT];
        for (int row = 0; row < GL_CALL_COUNT; ++row) {
            rows[row] = proc->call_control[row].count - p->start_rows[row];
            state[row] = p->state_changes[row] - p->start_state[row];
            totals->call_control[row].count += rows[row];
            stats.state_changes += state[row];
        }
        top_of(rows, stats.top_rows, stats.top_counts);
        top_of(state, stats.state_rows, stats.state_counts);
        for (int row = 0; row < GLU_CALL_COUNT; ++row)
            totals->glu_call_count[row] += proc->glu_call_count[row] - p->start_glu[row];
        for (int row = 0; row < WGL_CALL_COUNT; ++row)
            totals->wgl_call_count[row] += proc->wgl_call_count[row] - p->start_wgl[row];
        for (int i = 0; i < SHOWN_PRIM_COUNTERS; ++i)
            prim_counters(totals)[i] += prim_counters(proc)[i] - p->start_prims[i];
        for (int i = 0; i < PRIM_KIND_COUNT; ++i) {
            int64_t *counter = &(proc->*shown_prims[i]);
            stats.primitives[i] = *counter - p->start_prims[counter - prim_counters(proc)];
        }
        stats.info = p->info.data ? p->info.data : "";
        read_colour_buffer(p, p->pixels);
        ++outcome->frames;
        if (options->on_frame)
            options->on_frame(&stats, p->pixels, p->format.width, p->format.height, options->user);
    }
    snapshot(p);
    start_draws(p);
    if (options->progress)
        options->progress(p->history_size > 0 ? (double)history_bytes_read(p) / (double)p->history_size : -1, number,
                          options->user);
    if (options->last_frame != 0 && number >= options->last_frame) {
        // Nothing behind the last frame asked for is needed: the read ends here.
        p->stopped = true;
        glsEnable(GLS_ABORT_CALL);
    }
}

bool player_tap(int opcode, GlsArgValue *args)
{
    player_state *p = playing;
    if (p->prescan || p->refused[0])
        return false;
    if (p->draws_frame) {
        end_draw(p);
        if (p->shown_draw[opcode] && !p->pending_draw)
            p->pending_draw = opcode;
    }
    ++p->frame_calls;
    p->error_last = false;
    int row = p->row_of_opcode[opcode];
    count_call(&p->record, row);
    if (p->kind[opcode] == KIND_STATE && p->record.per_gl->in_begin_end == 0)
        ++p->state_changes[row];
    if (p->run[opcode])
        p->run[opcode](&p->record, args);
    if (p->skipped_because[opcode]) {
        report_skip(p, opcode, p->skipped_because[opcode]);
        return false;
    }
    if (!guard_command(p, opcode, args) || !budget_command(p, opcode, args))
        return false;
    // The names these make are GL's choice: the player runs them itself to learn them.
    if (opcode == OP_glGenLists) {
        budget_lists_made(p, GL(glGenLists)((GLsizei)args[0].i), (GLsizei)args[0].i);
        return false;
    }
    if (opcode == OP_glGenTextures) {
        GL(glGenTextures)((GLsizei)args[0].i, (GLuint *)args[1].p);
        budget_textures_made(p, (GLsizei)args[0].i, (const GLuint *)args[1].p);
        return false;
    }
    return true;
}

// A catalogue row of a family by name, -1 for none.
static int row_named(const char (*names)[CALL_NAME_SIZE], int count, const char *name)
{
    for (int row = 0; row < count; ++row)
        if (strcmp(names[row], name) == 0)
            return row;
    return -1;
}

static void GLS_APIENTRY on_string(const GLubyte *tag_bytes, const GLubyte *text_bytes)
{
    player_state *p = playing;
    const char *tag = (const char *)tag_bytes, *text = (const char *)text_bytes;
    p->error_last = false;
    if (!tag || !text)
        return;
    if (p->prescan) {
        if (strcmp(tag, "Visual Info") == 0 && !p->visual_seen)
            p->visual_seen = read_visual_info(text, &p->format);
        else if (strcmp(tag, "Viewport Info") == 0 && !p->viewport_seen)
            p->viewport_seen = read_viewport_info(text, &p->format);
        // The records come at a context's first sight: after its first frame there are none.
        if (p->viewport_seen || (strcmp(tag, "Info") == 0 && strcmp(text, "wglSwapBuffers") == 0))
            glsEnable(GLS_ABORT_CALL);
        return;
    }
    if (strcmp(tag, "Info") != 0)
        return;
    master *names = p->record.master;
    per_proc *proc = p->record.per_proc;
    int row = row_named(names->wgl_names, WGL_CALL_COUNT, text);
    if (row >= 0) {
        ++proc->wgl_call_count[row];
        if (row == ROW_wglSwapBuffers)
            end_frame(p, true);
        return;
    }
    row = row_named(names->glu_names, GLU_CALL_COUNT, text);
    if (row >= 0) {
        ++proc->glu_call_count[row];
        return;
    }
    text_append(&p->info, text);
    text_append(&p->info, "\n");
}

static void GLS_APIENTRY on_draw_vertex_array(GLenum mode, GLenum format, GLint count, const GLvoid *data)
{
    player_state *p = playing;
    if (p->prescan || p->refused[0])
        return;
    p->error_last = false;
    if (p->draws_frame) {
        end_draw(p);
        p->pending_draw = OP_glsDrawVertexArray;
    }
    // The debugger counted the draw that the arrays' content stands for.
    ++p->frame_calls;
    hook_draw_arrays(&p->record, mode, 0, count);
    // A format GL does not take would leave it drawing from the arrays of an earlier draw.
    if (count < 0 || (count > 0 && (!data || gls_vertex_data_bytes(format, count) == 0))) {
        report_skip(p, OP_glsDrawVertexArray, "its format or count is none that GL draws");
        return;
    }
    GlsArgValue args[4];
    args[0].u = mode;
    args[1].u = format;
    args[2].i = count;
    args[3].p = data;
    if (budget_command(p, OP_glsDrawVertexArray, args))
        GL(glsDrawVertexArray)(mode, format, count, data);
}

static void GLS_APIENTRY on_error(GLSopcode opcode, GLSenum error)
{
    player_state *p = playing;
    if (p->prescan)
        return;
    bool known = opcode > 0 && gls_opcode_exists(opcode);
    // An empty list where the count asks for data stands for a null pointer of the program's.
    if (known && gls_current()->readEmptyItem) {
        report_skip(p, opcode, "it holds no data where its count asks for some (a null pointer of the program's)");
        return;
    }
    p->error_last = true;
    if (p->first_error[0])
        return;
    const char *name = known ? gls_opcode_names[opcode] : "statement";
    snprintf(p->first_error, sizeof p->first_error, "a broken %s command near byte %llu (error 0x%X)", name,
             (unsigned long long)glsGetConsumedBytes(), (unsigned)error);
}

static void GLS_APIENTRY on_unsupported(const GLubyte *command)
{
    player_state *p = playing;
    if (p->prescan || !command)
        return;
    p->error_last = false;
    text_buffer *names = &p->unknown_names;
    // Each unknown name is told once.
    char mark[GLS_NAME_LIMIT + 2];
    snprintf(mark, sizeof mark, "|%s|", (const char *)command);
    if (names->data && strstr(names->data, mark))
        return;
    text_append(names, mark);
    char shown[GLS_NAME_LIMIT * 4 + 8];
    printable((const char *)command, shown, sizeof shown);
    tell(p, "unknown command %s skipped", shown);
}

static void GLS_APIENTRY on_begin_group(GLint major, GLint minor)
{
    ++playing->groups_begun;
    playing->error_last = false;
    GL(glsBeginGLS)(major, minor);
}

static void GLS_APIENTRY on_end_group()
{
    ++playing->groups_ended;
    GL(glsEndGLS)();
}

static void judge_commands(player_state *p)
{
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
        p->row_of_opcode[op] = -1;
        p->kind[op] = gls_attributes[op] & GLS_ATTRIB_GET ? KIND_QUERY : KIND_STATE;
        p->run[op] = nullptr;
        p->skipped_because[op] = nullptr;
        if (const char *hook = player_hook_names[op]) {
            for (const counting_hook &known : counting_hooks)
                if (strcmp(hook, known.name) == 0) {
                    p->run[op] = known.run;
                    p->kind[op] = known.kind;
                    p->skipped_because[op] = known.skipped_because;
                }
        }
        const GlsCommandDesc *command = &gls_command_descs[op];
        for (int i = 0; i < command->count; ++i)
            if (command->args[i].kind == GLS_ARG_POINTER)
                p->skipped_because[op] = "it points into the program's memory, which the history does not hold";
    }
    for (int op : other_draws)
        p->kind[op] = KIND_DRAW;
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        p->shown_draw[op] = gls_opcode_names[op] && is_shown_draw(gls_opcode_names[op], strlen(gls_opcode_names[op]));
    // The history's images are tight: the layout the program gave its memory is no longer theirs.
    for (int op : {OP_glPixelStoref, OP_glPixelStorei})
        p->skipped_because[op] = "it lays out the program's memory; the history's images are tight";
    // The debugger counts a call on the row whose wrapper serves the opcode: the last one installed.
    for (const CallRowOpcode &entry : wrapper_of_opcode_rows)
        p->row_of_opcode[entry.opcode] = (int16_t)entry.row;
}

static void install_hooks()
{
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        if (player_taps[op])
            glsCommandFunc(GLS_CALL_FUNC, op, player_taps[op]);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsString, (GlsFunc)on_string);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsDrawVertexArray, (GlsFunc)on_draw_vertex_array);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsError, (GlsFunc)on_error);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsUnsupportedCommand, (GlsFunc)on_unsupported);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsBeginGLS, (GlsFunc)on_begin_group);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsEndGLS, (GlsFunc)on_end_group);
    glsCommandFunc(GLS_CALL_FUNC, OP_glsCallStream, (GlsFunc)call_stream);
    // Every stream is opened here and read through the read function.
    glsReadFunc(read_stream_bytes);
}

static bool fail(play_outcome *outcome, const char *format, const char *path, const char *detail)
{
    snprintf(outcome->error, sizeof outcome->error, format, path, detail);
    return false;
}

static bool set_up_records(player_state *p, play_outcome *outcome)
{
    master *names = (master *)calloc(1, sizeof(master));
    per_proc *proc = (per_proc *)calloc(1, sizeof(per_proc));
    per_proc *totals = (per_proc *)calloc(1, sizeof(per_proc));
    per_gl *gl = (per_gl *)calloc(1, sizeof(per_gl));
    outcome->names = names;
    outcome->totals = totals;
    if (!names || !proc || !totals || !gl) {
        free(proc);
        free(gl);
        return false;
    }
    fill_master(names, 0);
    fill_per_proc(proc, 0);
    fill_per_proc(totals, 0);
    fill_per_gl(gl, 1, 1);
    fill_thread_record(&p->record, 0);
    p->record.master = names;
    p->record.per_proc = proc;
    p->record.per_gl = gl;
    return true;
}

static bool codec_ready()
{
    static int ready = -1;
    if (ready < 0)
        ready = gls_process_attach() ? 1 : 0;
    return ready == 1;
}

// What the frame takes: the colour buffers, depth and stencil, accumulation, and its copy here.
static uint64_t frame_bytes(const surface_format *format)
{
    uint64_t pixels = (uint64_t)format->width * (uint64_t)format->height;
    bool accum = format->accum_bits[0] + format->accum_bits[1] + format->accum_bits[2] + format->accum_bits[3] > 0;
    return pixels * ((format->double_buffer ? 8 : 4) + 4 + (accum ? 8 : 0) + 3);
}

static void play_stream(player_state *p)
{
    play_outcome *outcome = p->outcome;
    char error[256] = "";
    bool out_of_bytes = false;
    surface_format got = p->format;
    char what[64];
    snprintf(what, sizeof what, "a %dx%d frame", p->format.width, p->format.height);
    if (!budget_take(p, frame_bytes(&p->format), what))
        return;
    if (!surface_open(&p->format, &got, error, sizeof error)) {
        fail(outcome, "%s: no GL context for it: %s", p->shown_path, error);
        return;
    }
    for (const int32_t *op = gls_bind_list; *op != 0; ++op) {
        GlsFunc real = surface_lookup(gls_opcode_names[*op]);
        gls_default_dispatch[*op] = real ? real : gls_null_funcs[*op];
    }
    GLint draw_buffer = GL_BACK;
    GL(glGetIntegerv)(GL_DRAW_BUFFER, &draw_buffer);
    p->colour_buffer = (GLenum)draw_buffer;
    p->pixels = (uint8_t *)calloc((size_t)p->format.width * p->format.height, 3);
    if (!p->pixels) {
        fail(outcome, "%s: %s", p->shown_path, "no memory for the frame");
    } else {
        budget_start(p);
        snapshot(p);
        start_draws(p);
        glsCallStream((const GLubyte *)"");
        out_of_bytes = glsGetError() == GLS_DECODE_ERROR;
        if (!p->stopped && p->frame_calls > 0)
            end_frame(p, false);
    }
    surface_close();
    // GL is gone: nothing holds the player's areas any more.
    guard_end(p);
    if (!outcome->error[0] && p->pixels) {
        if (p->refused[0])
            fail(outcome, "%s: %s", p->shown_path, p->refused);
        // A stream may just end between statements, as the history of a program that exits
        // does; it ends in the middle when its last statement is cut off or the binary loop runs
        // out of bytes.
        else if (!p->stopped && p->groups_begun != p->groups_ended && (out_of_bytes || p->error_last))
            fail(outcome, "%s ends in the middle of a stream%s", p->shown_path, "");
        else if (p->first_error[0])
            fail(outcome, "%s: %s", p->shown_path, p->first_error);
    }
}

bool play_history(const char *path, const play_options *options, play_outcome *outcome)
{
    *outcome = play_outcome{};
    default_surface_format(&outcome->format);
    player_state *p = (player_state *)calloc(1, sizeof(player_state));
    if (!p || !set_up_records(p, outcome) || !codec_ready()) {
        free(p);
        return fail(outcome, "%s: %s", path, "out of memory, or no GL library to play on");
    }
    p->options = options;
    p->outcome = outcome;
    p->path = path;
    printable(path, p->shown_path, sizeof p->shown_path);
    p->budget.memory_limit = (options->memory_budget_mb > 0 ? options->memory_budget_mb : PLAY_MEMORY_BUDGET_MB) << 20;
    p->budget.time_limit = options->time_budget_s > 0 ? options->time_budget_s : (double)PLAY_TIME_BUDGET_S;
    judge_commands(p);
    if (open_history(p, path, outcome->error, sizeof outcome->error)) {
        outcome->opened = true;
        playing = p;
        GLuint codec_context = glsGenContext();
        glsContext(codec_context);
        install_hooks();
        // First the records of the pixel format, executing nothing: the context is made for them.
        p->prescan = true;
        default_surface_format(&p->format);
        if (glsCallStream((const GLubyte *)"") == GLS_NONE) {
            bool empty = p->streams[0].seekable && p->history_size == 0;
            fail(outcome, "%s is not a GLS stream%s", p->shown_path, empty ? " (the file is empty)" : "");
        } else {
            glsGetError();
            rewind_history(p);
            p->prescan = false;
            p->groups_begun = p->groups_ended = 0;
            play_stream(p);
        }
        outcome->format = p->format;
        playing = nullptr;
        // Deleted while current, the codec context goes when it stops being current.
        glsDeleteContext(codec_context);
        glsContext(0);
    }
    budget_end(p);
    close_streams(p);
    free(p->pixels);
    free(p->before);
    free(p->record.per_proc);
    free(p->record.per_gl);
    text_free(&p->info);
    text_free(&p->unknown_names);
    free(p);
    return outcome->error[0] == 0;
}

void free_play_outcome(play_outcome *outcome)
{
    free(outcome->totals);
    free(outcome->names);
    outcome->totals = nullptr;
    outcome->names = nullptr;
}
