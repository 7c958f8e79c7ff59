// The records of a debug session. Each is one block of the process heap, found by name in the
// table of named blocks (mmaps.h). Field order is the documented layout: the panel and later
// hooks reach fields by name, but the counters behind wgl_call_count rely on adjacency.
#pragma once

#include "gen/calls.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Window and module handles without <windows.h>, so that the records build natively too; these
// are the very types that HWND and HMODULE name under STRICT.
struct HWND__;
struct HINSTANCE__;
typedef HWND__ *WindowHandle;
typedef HINSTANCE__ *ModuleHandle;


enum : int {
    NAME_SIZE = 260,
    STATE_ROW_COUNT = 411,
    STATE_VALUE_COUNT = 1536,
    ENUMERANT_ROWS = 1136,
    ENUMERANT_ROWS_COPIED = 638,
    MASTER_PROC_ROWS = 10,
    MASTER_GL_ROWS = 32,
    RING_SLOTS = 64,
    RING_PAYLOAD_SIZE = 256,
    SHOWN_COUNT = 13,
    PENDING_MESSAGE_SIZE = 1536,
    LAST_CALL_TEXT_SIZE = 10244,
};

// Kinds of named blocks.
enum : int32_t {
    BLOCK_THREAD_RECORD = 1,
    BLOCK_MASTER = 2,
    BLOCK_PER_PROC = 3,
    BLOCK_PER_GL = 4,
    BLOCK_LIST_INFO = 5,
};

enum : int32_t {
    RUN_HALTED = 1,
    RUN_RUNNING = 2,
};

struct ring_slot {
    int32_t code;
    uint8_t payload[RING_PAYLOAD_SIZE];
};

// One writer, one reader: head belongs to the poster, tail to the taker.
struct ring {
    volatile int32_t head;
    volatile int32_t tail;
    ring_slot slots[RING_SLOTS];
};

struct thread_record {
    uint32_t id;
    struct master *master;
    struct per_proc *per_proc;
    struct per_gl *per_gl;
    struct library_table *library_table;
    // Written by the panel thread, spun on by the application's thread.
    volatile uint8_t panel_ready;
    ModuleHandle module;
    WindowHandle about_window;
    WindowHandle call_count_window;
    WindowHandle prim_count_window;
    WindowHandle enum_window;
    WindowHandle history_select_window;
    WindowHandle list_select_window;
    WindowHandle control_window;
    WindowHandle break_select_window;
    WindowHandle trace_select_window;
    WindowHandle skip_select_window;
    WindowHandle state_select_window;
    WindowHandle state_value_window[STATE_ROW_COUNT];
    WindowHandle window_info_window;
    char temp_dir[NAME_SIZE];
};

struct enumerant_row {
    int32_t value;
    char name[CALL_NAME_SIZE];
};

struct state_row {
    int32_t kind;
    int32_t first_enum;
    int32_t second_enum;
    int32_t third_enum;
    int32_t type;
    int32_t count;
    char name[CALL_NAME_SIZE];
};

struct master_proc_row {
    int32_t id;
    int32_t unused; // stays -1
    ring rings[2];  // room only: the session's rings are those of per_proc
};

struct master_gl_row {
    int32_t gl_id;
    int32_t handle;
    int32_t proc_id;
};

struct master {
    uint32_t owner;
    char gl_names[GL_CALL_COUNT][CALL_NAME_SIZE];
    char glu_names[GLU_CALL_COUNT][CALL_NAME_SIZE];
    char gdi_names[GDI_CALL_COUNT][CALL_NAME_SIZE];
    char wgl_names[WGL_CALL_COUNT][CALL_NAME_SIZE];
    enumerant_row enumerants[ENUMERANT_ROWS];
    int32_t opcode_of_call[GL_CALL_COUNT];
    state_row state_rows[STATE_ROW_COUNT];
    int32_t next_gl_id;
    int32_t proc_count;
    master_proc_row procs[MASTER_PROC_ROWS];
    int32_t gl_count;
    master_gl_row gl_table[MASTER_GL_ROWS];
};

// A row of the per-call control table, one for each GL catalogue row.
struct call_control_row {
    int64_t count;
    uint8_t break_on;
    uint8_t trace;
    uint8_t skip;
};

struct per_proc {
    uint32_t id;
    int32_t unused_word; // set to -1, never read
    ring ring_to_app;
    ring ring_from_app;
    call_control_row call_control[GL_CALL_COUNT];
    int64_t glu_call_count[GLU_CALL_COUNT];
    int64_t gdi_call_count[GDI_CALL_COUNT];
    int64_t wgl_call_count[WGL_CALL_COUNT];
    // Primitive counters: directly behind wgl_call_count, up to control_draw_state.
    int64_t prim_points;
    int64_t prim_lines;
    int64_t prim_line_loops;
    int64_t prim_line_strips;
    int64_t prim_line_loop_vertices;
    int64_t prim_line_strip_vertices;
    int64_t prim_rects;
    int64_t prim_triangles;
    int64_t prim_triangle_fans;
    int64_t prim_triangle_strips;
    int64_t prim_triangle_fan_vertices;
    int64_t prim_triangle_strip_vertices;
    int64_t prim_quads;
    int64_t prim_quad_strips;
    int64_t prim_quad_strip_vertices;
    int64_t prim_polygons;
    int32_t control_draw_state;
    int32_t control_draw_request;
    int32_t unused_flag;
    int32_t saved_read_buffer;
    int32_t saved_draw_buffer;
    // The 23 words from shown to Skip_GL_calls are cleared in one loop.
    int32_t shown[SHOWN_COUNT];
    int32_t Break_on_GL_calls;
    int32_t Break_on_SwapBuffers;
    int32_t Check_for_GL_error;
    int32_t Control_draw;
    int32_t limit_data_dumps;
    int32_t show_data_address;
    int32_t show_hints;
    int32_t show_problems;
    int32_t History;
    int32_t Skip_GL_calls;
    int32_t run_state;
    char pending_message[PENDING_MESSAGE_SIZE];
    char last_call_text[LAST_CALL_TEXT_SIZE];
};

enum : int { PER_PROC_FLAG_WORDS = 23 };

// The loops over these fields depend on their adjacency.
static_assert(offsetof(per_proc, prim_points) == offsetof(per_proc, wgl_call_count) + WGL_CALL_COUNT * sizeof(int64_t));
static_assert(offsetof(per_proc, control_draw_state) == offsetof(per_proc, prim_polygons) + sizeof(int64_t));
static_assert(offsetof(per_proc, Skip_GL_calls) == offsetof(per_proc, shown) + (PER_PROC_FLAG_WORDS - 1) * sizeof(int32_t));

struct list_info_row {
    int32_t list;
    int32_t status; // 1 deleted, 2 being captured, 3 complete
    int32_t lines;
    int32_t calls;
    int32_t begin;
    int32_t end; // -1 while captured
    WindowHandle window;
};

// The values of one state row: at first sight, at the last scan, at the last snapshot.
struct state_values {
    float default_values[STATE_VALUE_COUNT];
    float current[STATE_VALUE_COUNT];
    float snapshot[STATE_VALUE_COUNT];
};

// Bytes of history lines on their way to a file: the formatter copies each line here once, and
// the file gets them in 1 MB writes and wherever it is flushed. On Windows a full buffer is
// written by a thread of the sink's own while the program fills the other one; every write goes
// to its own place in the file, so that writing a buffer twice changes nothing. A hand-off to
// that thread costs some 25 us of event signalling: at 64 KB that was a third of a call's cost.
enum : int { HISTORY_SINK_SIZE = 1 << 20 };
struct history_sink {
    FILE *file;   // natively the bytes go through the file
    void *handle; // on Windows straight to the system's file, past the C library's streams
    int used;
    char *data;      // the buffer being filled
    uint64_t offset; // where its first byte goes in the file
    // The buffer on its way on the writer thread, while in_flight is 1.
    void *thread;
    void *work_event;
    void *done_event;
    volatile int32_t in_flight;
    int32_t flight_count;
    char *flight_data;
    void *flight_handle;
    uint64_t flight_offset;
    // 1 once a write has failed (a full disk): the file stops growing, with one warning.
    volatile int32_t stopped;
    char buffers[2][HISTORY_SINK_SIZE];
};

struct per_gl {
    int32_t id;
    int32_t handle;
    FILE *history_file;
    WindowHandle history_window;
    int32_t list_count;
    int32_t list_reserved;
    list_info_row *list_rows;
    list_info_row *list_current;
    int32_t list_block_size;
    FILE *list_calls_file;
    WindowHandle list_choice_window;
    uint8_t in_begin_end;
    uint8_t list_capturing;
    uint8_t dither_on;
    uint8_t lighting_on;
    int32_t primitive_mode;
    int32_t list_base;
    uint8_t array_flag;
    int64_t clear_count;
    int64_t flush_count;
    int64_t vertex_count;
    uint8_t has_state;
    state_values state[STATE_ROW_COUNT];
    // Window information, read once at a context's first sight.
    uint8_t direct_render;
    uint8_t double_buffer;
    uint8_t stereo;
    int32_t aux_buffers;
    int32_t pixel_type;
    int32_t accum_bits[4];
    int32_t index_bits;
    int32_t color_bits[4];
    int32_t stencil_bits;
    int32_t depth_bits;
    // The history's lines not yet handed to history_file; null while the file is closed.
    history_sink *history_pending;
};

// The real libraries of one session: gdi32, opengl32 and glu32 of the system directory, with
// their functions in catalogue order. The WGL, GDI and GLU wrappers call through it.
struct library_table {
    int32_t gls_context;         // the session's codec context; -1 for none
    int32_t current_gls_context; // the thread's current codec context at the last thread entry
    ModuleHandle gdi32;
    ModuleHandle opengl32;
    ModuleHandle glu32;
    GlsFunc gl[GL_CALL_COUNT];   // a row may be null
    GlsFunc glu[GLU_CALL_COUNT]; // a row may be null
    GlsFunc gdi[GDI_CALL_COUNT];
    GlsFunc wgl[WGL_CALL_COUNT];
    int32_t call_depth;          // nesting of GLU calls, and the indent of history lines
};

// The constant tables that master copies when it is made: the state catalogue in the order of
// the Select State list, and the enumerant names in byte order (generated from the registry).
extern const state_row state_catalogue[STATE_ROW_COUNT];
extern const enumerant_row enumerant_table[ENUMERANT_ROWS_COPIED];

// Start values of each record, as session start and context attach set them.
void fill_thread_record(thread_record *record, uint32_t id);
void fill_master(master *block, uint32_t owner);
void fill_per_proc(per_proc *block, uint32_t id);
// id is 0 for the null record (context 0).
void fill_per_gl(per_gl *block, int32_t id, uint32_t context);
void fill_ring(ring *r);

// The session's temporary directory "<temp>\QUONDALE_<thread id>"; "\temp" stands for a
// missing TEMP. out holds NAME_SIZE characters.
void format_temp_dir(const char *temp, uint32_t id, char *out);
