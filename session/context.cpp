// Thread entry, session start, context attach and the end of a session. Everything here runs on
// the session's application thread, before or outside any panel work on the same records.
#include "session/context.h"
#include "session/start_hooks.h"

#include "gls/gls.h"
#include "gls/gls_context.h"
#include "gls/platform.h"
#include "recording/history.h"
#include "recording/line_format.h"
#include "records/mmaps.h"
#include "records/panel_hooks.h"
#include "records/report.h"
#include "records/rings.h"
#include "state/state_scan.h"
#include "state/window_info.h"
#include "gls/tables.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

unsigned long session_tls = TLS_OUT_OF_INDEXES;


// A program's own end closes no session, and a crash ends it without a word: every context's
// history gets the lines still on their way, written past the C library, whose streams may be
// closed by now.
static void drain_histories()
{
    for (int32_t index = 0; index < named_blocks.count; ++index) {
        const named_block *row = &named_blocks.rows[index];
        if (row->kind == BLOCK_PER_GL && ((per_gl *)row->block)->history_pending)
            history_sink_rescue(((per_gl *)row->block)->history_pending);
    }
}

// A program that crashes under the debugger leaves its history complete up to the call that
// crashed. Seen first, before any handler of the program's; a program that handles the fault
// and goes on has only had its lines written early.
static LONG CALLBACK drain_on_fault(EXCEPTION_POINTERS *exception)
{
    switch (exception->ExceptionRecord->ExceptionCode) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_NONCONTINUABLE_EXCEPTION:
        drain_histories();
        break;
    default:
        break;
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

static void *fault_handler;

bool session_process_attach()
{
    session_tls = TlsAlloc();
    if (session_tls == TLS_OUT_OF_INDEXES)
        return false;
    named_blocks_reset();
    fault_handler = AddVectoredExceptionHandler(1, drain_on_fault);
    return true;
}

// QUONDALE_RECORD_DUMP names a file that receives one line per named block at process detach:
// how the tests see records that nothing else shows before the panel exists.
static void dump_records()
{
    char path[MAX_PATH];
    DWORD length = GetEnvironmentVariableA("QUONDALE_RECORD_DUMP", path, sizeof path);
    if (length == 0 || length >= sizeof path)
        return;
    const size_t size = 1 << 20;
    char *text = (char *)block_alloc(size);
    if (!text)
        return;
    size_t used = describe_named_blocks(text, size);
    HANDLE file = CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        DWORD written;
        WriteFile(file, text, (DWORD)used, &written, nullptr);
        CloseHandle(file);
    }
    block_free(text);
}

void session_process_detach(bool process_ends)
{
    if (fault_handler)
        RemoveVectoredExceptionHandler(fault_handler);
    fault_handler = nullptr;
    drain_histories();
    dump_records();
    // At the process's end its memory goes with it, and a thread that the system has not yet
    // stopped may still read the blocks: they are freed only when the library is unloaded.
    if (!process_ends)
        named_blocks_free();
}

// A folder of that name from an earlier run (thread ids come back from run to run) is moved
// aside to the first free "<name>.<n>", so that a session never writes into another run's files
// and its end removes only what it made. Where the old one can't be moved, the session makes its
// own folder under that free name. A folder that can't be made at all is not reported here: the
// first file opened in it fails instead.
static void make_session_folder(char *temp_dir)
{
    char aside[NAME_SIZE];
    for (int tries = 0; tries < 4; ++tries) {
        if (CreateDirectoryA(temp_dir, nullptr) || GetLastError() != ERROR_ALREADY_EXISTS)
            return;
        bool moved = false;
        for (int suffix = 1; suffix < 10000 && !moved; ++suffix) {
            if (snprintf(aside, sizeof aside, "%s.%d", temp_dir, suffix) >= (int)sizeof aside)
                break;
            if (GetFileAttributesA(aside) != INVALID_FILE_ATTRIBUTES)
                continue;
            moved = MoveFileA(temp_dir, aside) != 0;
            if (!moved && CreateDirectoryA(aside, nullptr)) {
                snprintf(temp_dir, NAME_SIZE, "%s", aside);
                return;
            }
        }
        if (!moved)
            break;
    }
    // Writing on in the other run's folder would mix the two and let Quit delete its files.
    fatal_report("context", __LINE__, "Could not create %s.", temp_dir);
    session_exit(1);
}

// The earlier session of a thread of this process with the same id, whose folder this one goes
// on using.
static const thread_record *earlier_session(const thread_record *record)
{
    for (int32_t index = 0; index < named_blocks.count; ++index) {
        const named_block *row = &named_blocks.rows[index];
        const thread_record *other = (const thread_record *)row->block;
        if (row->kind == BLOCK_THREAD_RECORD && other != record && other->id == record->id && other->temp_dir[0])
            return other;
    }
    return nullptr;
}

static void make_temp_dirs(thread_record *record)
{
    if (const thread_record *earlier = earlier_session(record)) {
        memcpy(record->temp_dir, earlier->temp_dir, sizeof record->temp_dir);
        return;
    }
    char temp[NAME_SIZE];
    DWORD length = GetEnvironmentVariableA("TEMP", temp, sizeof temp);
    format_temp_dir(length != 0 && length < sizeof temp ? temp : nullptr, record->id, record->temp_dir);
    make_session_folder(record->temp_dir);
    char folder[NAME_SIZE + 16];
    snprintf(folder, sizeof folder, "%s\\history", record->temp_dir);
    CreateDirectoryA(folder, nullptr);
    snprintf(folder, sizeof folder, "%s\\list", record->temp_dir);
    CreateDirectoryA(folder, nullptr);
}

static void attach_master(thread_record *record, uint32_t id)
{
    char name[NAME_SIZE];
    name_of_master(record->temp_dir, name);
    master *block = find_master(name);
    if (!block) {
        block = make_master(name);
        if (!block)
            session_exit(1);
        fill_master(block, id);
    }
    record->master = block;
}

static void start_panel(thread_record *record)
{
    panel.start(record);
    // The panel reads its settings before it lets the first call go on.
    while (record->panel_ready != 1) {
    }
}

static void attach_per_proc(thread_record *record, uint32_t id)
{
    char name[NAME_SIZE];
    name_of_per_proc(record->temp_dir, id, name);
    per_proc *block = find_per_proc(name);
    if (!block) {
        block = make_per_proc(name);
        if (!block)
            session_exit(1);
        master *table = record->master;
        table->procs[table->proc_count].id = (int32_t)id;
        ++table->proc_count;
        fill_per_proc(block, id);
        record->per_proc = block;
        start_panel(record);
    } else {
        record->per_proc = block;
    }
    post_context_changed(&record->per_proc->ring_from_app, EVENT_CONTEXT_CHANGED, 0);
}

// The slow path of thread_entry: a thread without a record, or one holding another thread's
// record (the panel thread's case, which never makes a debugged call).
__attribute__((noinline)) static thread_record *start_session(thread_record *record, uint32_t id)
{
    if (!record) {
        record = make_thread_record();
        if (!record)
            session_exit(1);
        fill_thread_record(record, id);
        TlsSetValue(session_tls, record);
        make_temp_dirs(record);
    }
    attach_master(record, id);
    session_start.bind_libraries(record);
    attach_per_proc(record, id);
    session_start.install_codec(record);
    attach_gl(record, 0);
    return record;
}

// Something made another codec context current behind the session's back.
// The history file stays as it was and is opened again on the new codec context.
__attribute__((noinline)) static void reinstall_codec(thread_record *record)
{
    session_start.install_codec(record);
    per_gl *gl = record->per_gl;
    if (gl && gl->history_file) {
        history_file_close(gl);
        history_open(record, false);
    }
}

thread_record *thread_entry()
{
    uint32_t id = gls_thread_id();
    thread_record *record = (thread_record *)gls_tls_get(session_tls);
    if (!record || record->id != id)
        record = start_session(record, id);
    library_table *table = record->library_table;
    GlsContext *codec = gls_current();
    table->current_gls_context = codec ? (int32_t)codec->id : 0;
    if (table->current_gls_context != table->gls_context)
        reinstall_codec(record);
    return record;
}

static void close_gl_files(thread_record *record)
{
    per_gl *gl = record->per_gl;
    if (gl->history_file)
        history_close(record);
    if (gl->list_calls_file) {
        fclose(gl->list_calls_file);
        gl->list_calls_file = nullptr;
    }
}

static void add_gl_table_row(thread_record *record, const per_gl *gl)
{
    master *table = record->master;
    master_gl_row *row = &table->gl_table[table->gl_count];
    row->gl_id = gl->id;
    row->handle = gl->handle;
    row->proc_id = (int32_t)record->per_proc->id;
    ++table->gl_count;
}

// The contexts of a session share one list information block, grown to the rows in use.
static void attach_list_info(thread_record *record, per_gl *gl)
{
    char name[NAME_SIZE];
    name_of_list_info(record->temp_dir, name);
    list_info_row *rows;
    if (find_list_info(name))
        rows = resize_list_info(name, gl->list_count);
    else
        rows = make_list_info(name, gl->list_count);
    if (!rows)
        session_exit(1);
    gl->list_rows = rows;
    gl->list_current = nullptr;
}

static void open_list_calls(thread_record *record, per_gl *gl)
{
    char path[NAME_SIZE + 16];
    snprintf(path, sizeof path, "%s\\list\\calls", record->temp_dir);
    gl->list_calls_file = fopen(path, "a+");
    if (!gl->list_calls_file) {
        fatal_report("context", __LINE__, "Could not create displaylist call.");
        session_exit(1);
    }
    fseek(gl->list_calls_file, 0, SEEK_END);
}

void attach_gl(thread_record *record, uint32_t context)
{
    if (record->per_gl)
        close_gl_files(record);
    char name[NAME_SIZE];
    name_of_per_gl(record->temp_dir, context, name);
    per_gl *gl = find_per_gl(name);
    if (!gl) {
        gl = make_per_gl(name);
        if (!gl)
            session_exit(1);
        int32_t id = 0;
        if (context != 0)
            id = record->master->next_gl_id++;
        fill_per_gl(gl, id, context);
        record->per_gl = gl;
        history_open(record, false);
        if (context != 0) {
            state_baseline(record);
            read_window_info(record);
            log_visual_info(record);
            add_gl_table_row(record, gl);
        }
    } else {
        // An earlier context: its history goes on in the same file.
        record->per_gl = gl;
        history_open(record, false);
    }
    if (context != 0) {
        attach_list_info(record, gl);
        open_list_calls(record, gl);
    }
    post_context_changed(&record->per_proc->ring_from_app, EVENT_CONTEXT_CHANGED, context);
}

// A folder that is itself, not a link to another: only there are the session's own files.
static bool own_folder(const char *path)
{
    DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) &&
           !(attributes & FILE_ATTRIBUTE_REPARSE_POINT);
}

// Removes the files the session made, by their names, and then its folders if nothing else is
// left in them: a file that someone else put there stays, with the folders that hold it.
static void remove_session_files(thread_record *record)
{
    char path[NAME_SIZE + 32];
    const master *table = record->master;
    if (!own_folder(record->temp_dir))
        return;
    snprintf(path, sizeof path, "%s\\history", record->temp_dir);
    if (own_folder(path)) {
        for (int32_t row = -1; table && row < table->gl_count && row < MASTER_GL_ROWS; ++row) {
            int handle = row < 0 ? 0 : (int)table->gl_table[row].handle;
            snprintf(path, sizeof path, "%s\\history\\%d.gls", record->temp_dir, handle);
            DeleteFileA(path);
        }
        snprintf(path, sizeof path, "%s\\history", record->temp_dir);
        RemoveDirectoryA(path);
    }
    snprintf(path, sizeof path, "%s\\list", record->temp_dir);
    if (own_folder(path)) {
        snprintf(path, sizeof path, "%s\\list\\calls", record->temp_dir);
        DeleteFileA(path);
        snprintf(path, sizeof path, "%s\\list", record->temp_dir);
        RemoveDirectoryA(path);
    }
    RemoveDirectoryA(record->temp_dir);
}

void close_session(thread_record *record)
{
    if (record->per_gl)
        close_gl_files(record);
    library_table *table = record->library_table;
    if (table->gls_context != -1) {
        glsDeleteContext((GLuint)table->gls_context);
        table->gls_context = -1;
    }
    if (table->glu32) {
        FreeLibrary((HMODULE)table->glu32);
        table->glu32 = nullptr;
    }
    if (table->opengl32) {
        FreeLibrary((HMODULE)table->opengl32);
        table->opengl32 = nullptr;
    }
    if (table->gdi32) {
        FreeLibrary((HMODULE)table->gdi32);
        table->gdi32 = nullptr;
    }
    remove_session_files(record);
}
