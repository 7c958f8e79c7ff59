// The state of one play, shared by its parts: the play loop (player.cpp), the streams it reads
// (streams.cpp), the guard that holds every pointer handed to GL to GL's own rules (guard.cpp)
// and the budgets of memory and time (budget.cpp).
#pragma once

#include "gen/calls.h"
#include "gls/decode.h"
#include "records/records.h"
#include "tools/player/player.h"
#include "tools/player/text_buffer.h"

#include <cstdio>

enum call_kind : uint8_t { KIND_STATE, KIND_DRAW, KIND_QUERY };

typedef void (*counting_run)(thread_record *record, const GlsArgValue *args);

enum : int { ATTRIBUTE_SLOTS = 24, SHOWN_PRIM_COUNTERS = 16, STREAM_DEPTH = 64, HELD_AREAS = 4, MESSAGE_SIZE = 768 };

// A stream being read: the history named on the command line at the bottom, the streams it calls
// above it. A stream that cannot be read twice keeps what the first pass read for the second.
struct stream_source {
    FILE *file;
    char *folder; // where the names it calls are looked up
    uint64_t identity[2];
    bool seekable;
    bool keeping;
    uint8_t *kept;
    size_t kept_size;
    size_t kept_capacity;
    size_t replayed;
    uint64_t delivered;
};

// An area of the player's that GL writes into: a feedback or selection buffer that GL holds
// until it takes another one.
struct held_area {
    void *data;
    uint64_t bytes;
};

// A display list as far as the budgets need it: what it holds, what running it costs, and what
// running it does to the textures.
enum list_effect_kind : uint8_t { EFFECT_BIND, EFFECT_IMAGE, EFFECT_CALL };
struct list_effect {
    list_effect_kind kind;
    GLenum target;
    uint32_t value; // the texture bound, the level defined or the list called
    uint64_t bytes;
};

struct list_record {
    uint32_t name;
    bool defined;
    bool calls_in_primitive; // it calls lists between glBegin and glEnd
    uint64_t bytes;
    uint64_t work;
    uint32_t *callees;
    uint32_t callee_count;
    uint32_t callee_capacity;
    list_effect *effects;
    uint32_t effect_count;
    uint32_t effect_capacity;
    // The cost of running it at each nesting depth, valid while `generation` is the budget's.
    uint64_t generation;
    uint64_t *cost_at_depth;
    int8_t texture_effects; // -1 not yet known in this generation
};

struct id_map {
    uint64_t *keys;   // key + 1; 0 marks an empty slot
    uint64_t *values;
    size_t capacity;
    size_t count;
};

struct texture_record {
    uint32_t name;
    uint32_t count;
    uint32_t capacity;
    struct texture_level {
        GLenum target;
        int32_t level;
        uint64_t bytes;
    } *levels;
};

struct budget_state {
    uint64_t memory_limit;
    double time_limit;
    uint64_t memory_used;
    double started;
    double last_progress;
    uint32_t calls_since_clock;
    double elapsed;
    // Display lists, by name into `lists`; the one being compiled and how.
    id_map list_index;
    list_record *lists;
    uint32_t list_count;
    uint32_t list_capacity;
    uint32_t compiling; // 0: none
    GLenum compile_mode;
    list_record pending; // what the list being compiled holds so far
    bool compiled_primitive; // a glBegin compiled into it waits for its glEnd
    // That primitive: its mode, vertices, whether it calls lists, and its last vertex's command.
    GLenum primitive_mode;
    uint32_t primitive_vertices;
    bool primitive_calls;
    int last_vertex_opcode;
    GlsArgValue last_vertex;
    alignas(8) uint8_t last_vertex_data[32];
    bool vertex_command[GLS_OPCODE_COUNT];
    // The vertex attributes the primitive has given, by slot: how many values, 0 for none yet;
    // whether one grew since its last vertex.
    int8_t attribute_slot[GLS_OPCODE_COUNT]; // -1: no attribute; a material's slot comes from its arguments
    uint8_t attribute_size[GLS_OPCODE_COUNT];
    uint8_t primitive_attributes[ATTRIBUTE_SLOTS];
    bool grown_since_vertex;
    GLuint list_base;
    uint64_t generation;
    int max_nesting;
    // Names that glGenLists reserved, as [first, end) runs.
    uint64_t (*reserved)[2];
    uint32_t reserved_count;
    uint32_t reserved_capacity;
    // Textures by name, and the name bound to each target.
    id_map texture_index;
    texture_record *textures;
    uint32_t texture_count;
    uint32_t texture_capacity;
    id_map generated_textures;
    GLuint bound[8];
    GLint max_texture_size[3]; // 2D, 3D, cube map
};

struct guard_state {
    // The areas GL wrote into in the last read: freed before the next command.
    held_area transient[3];
    held_area held[HELD_AREAS];
    // One area for the values of state queries, kept for the whole play.
    held_area query;
    bool query_used;
    // Vectors handed GL by pname, copied into room for the most values any pname takes.
    alignas(8) uint8_t padded[GLS_MAX_CALL_ARGS][16 * 8];
};

struct player_state {
    thread_record record;
    const play_options *options;
    play_outcome *outcome;
    const char *path;
    char shown_path[256];
    int64_t history_size; // 0 when it cannot be known before it is read

    int16_t row_of_opcode[GLS_OPCODE_COUNT];
    call_kind kind[GLS_OPCODE_COUNT];
    counting_run run[GLS_OPCODE_COUNT];
    const char *skipped_because[GLS_OPCODE_COUNT];
    bool skip_reported[GLS_OPCODE_COUNT];
    bool shown_draw[GLS_OPCODE_COUNT];
    int64_t state_changes[GL_CALL_COUNT];

    // The counters as the frame in hand began.
    int64_t start_rows[GL_CALL_COUNT];
    int64_t start_state[GL_CALL_COUNT];
    int64_t start_glu[GLU_CALL_COUNT];
    int64_t start_wgl[WGL_CALL_COUNT];
    int64_t start_prims[SHOWN_PRIM_COUNTERS];
    int64_t frame_calls;
    text_buffer info;

    bool prescan;
    bool visual_seen;
    bool viewport_seen;
    surface_format format;
    GLenum colour_buffer;
    uint8_t *pixels;
    // In a frame whose draws were asked for: the draw whose picture waits for GL to have run it,
    // and the buffer as the draw before it left it.
    bool draws_frame;
    int pending_draw;
    int draw_number;
    uint8_t *before;

    int groups_begun;
    int groups_ended;
    // The last thing the read told of was a broken statement: a text cut off inside it.
    bool error_last;
    bool stopped;
    char first_error[MESSAGE_SIZE];
    // Why the play was stopped before the stream's end: a budget, or a stream that cannot be read.
    char refused[MESSAGE_SIZE];
    text_buffer unknown_names;

    stream_source streams[STREAM_DEPTH];
    int stream_count;
    budget_state budget;
    guard_state guard;
};

// The text of a name or path from a stream, fit for a terminal: bytes outside printable ASCII
// as \xNN.
void printable(const char *text, char *out, size_t out_size);
// A line on the standard error about the play, behind the history's name.
void tell(player_state *p, const char *format, ...) __attribute__((format(printf, 2, 3)));
// Tells once per command that it was skipped, and why.
void report_skip(player_state *p, int opcode, const char *why);
// Stops the play: the rest of the stream passes by, and the play fails with the message.
void refuse(player_state *p, const char *message);
// The play goes on, and fails at its end with the first such message.
void note_failure(player_state *p, const char *message);

// The streams (streams.cpp): the history opened for both passes, read through the codec's read
// function, and the calls of streams that it makes.
bool open_history(player_state *p, const char *path, char *error, size_t error_size);
void rewind_history(player_state *p);
void close_streams(player_state *p);
uint64_t history_bytes_read(const player_state *p);
size_t read_stream_bytes(size_t count, void *bytes);
GLSenum GLS_APIENTRY call_stream(const GLubyte *name);

// The guard (guard.cpp): false when the command is skipped or the play stopped; it may point the
// command's arguments at areas of its own.
bool guard_command(player_state *p, int opcode, GlsArgValue *args);
void guard_end(player_state *p);

// The budgets (budget.cpp): false when the command would pass one, with the play stopped.
void budget_start(player_state *p);
bool budget_command(player_state *p, int opcode, const GlsArgValue *args);
// The names glGenLists and glGenTextures made, which the player runs itself to learn them.
void budget_lists_made(player_state *p, GLuint first, GLsizei count);
void budget_textures_made(player_state *p, GLsizei count, const GLuint *names);
// Memory that the player itself takes for GL, and gives back.
bool budget_take(player_state *p, uint64_t bytes, const char *what);
void budget_give(player_state *p, uint64_t bytes);
void budget_end(player_state *p);
