// The table of named blocks. No lock guards it: a session starts at most once per thread, and
// two sessions starting at the same moment is a risk the design takes.
#include "records/mmaps.h"

#include "records/report.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  include <windows.h>
#endif

named_block_table named_blocks;

void *block_alloc(size_t size)
{
#if defined(_WIN32)
    return HeapAlloc(GetProcessHeap(), 0, size);
#else
    return malloc(size);
#endif
}

void *block_realloc(void *block, size_t size)
{
#if defined(_WIN32)
    return HeapReAlloc(GetProcessHeap(), 0, block, size);
#else
    return realloc(block, size);
#endif
}

void block_free(void *block)
{
#if defined(_WIN32)
    HeapFree(GetProcessHeap(), 0, block);
#else
    free(block);
#endif
}

void named_blocks_reset() { named_blocks.count = 0; }

void named_blocks_free()
{
    for (int32_t row = 0; row < named_blocks.count; ++row)
        block_free(named_blocks.rows[row].block);
    named_blocks.count = 0;
}

void name_of_master(const char *dir, char *out) { snprintf(out, NAME_SIZE, "%s\\master", dir); }

void name_of_per_proc(const char *dir, uint32_t id, char *out)
{
    snprintf(out, NAME_SIZE, "%s\\per_proc\\%u", dir, id);
}

void name_of_per_gl(const char *dir, uint32_t context, char *out)
{
    // A handle prints as its low 32 bits; 0 is never formed as a number.
    if (context == 0)
        snprintf(out, NAME_SIZE, "%s\\per_gl\\null", dir);
    else
        snprintf(out, NAME_SIZE, "%s\\per_gl\\%d", dir, (int32_t)context);
}

void name_of_list_info(const char *dir, char *out) { snprintf(out, NAME_SIZE, "%s\\list\\info", dir); }

static named_block *find_row(const char *name)
{
    for (int32_t row = 0; row < named_blocks.count; ++row)
        if (strcmp(named_blocks.rows[row].name, name) == 0)
            return &named_blocks.rows[row];
    return nullptr;
}

static void *find_block(const char *name)
{
    named_block *row = find_row(name);
    return row ? row->block : nullptr;
}

master *find_master(const char *name) { return (master *)find_block(name); }
per_proc *find_per_proc(const char *name) { return (per_proc *)find_block(name); }
per_gl *find_per_gl(const char *name) { return (per_gl *)find_block(name); }
list_info_row *find_list_info(const char *name) { return (list_info_row *)find_block(name); }

static void *make_block(int32_t kind, const char *name, int32_t count, size_t size, const char *source,
                        int line)
{
    void *block = named_blocks.count < NAMED_BLOCK_ROWS ? block_alloc(size) : nullptr;
    if (!block) {
        fatal_report(source, line, "Out of memory.");
        return nullptr;
    }
    named_block *row = &named_blocks.rows[named_blocks.count];
    row->kind = kind;
    snprintf(row->name, NAME_SIZE, "%s", name);
    row->count = count;
    row->block = block;
    ++named_blocks.count;
    return block;
}

thread_record *make_thread_record()
{
    // The thread record is the session's own allocation: its failure is reported as such.
    return (thread_record *)make_block(BLOCK_THREAD_RECORD, "", 1, sizeof(thread_record), "context",
                                       __LINE__);
}

master *make_master(const char *name)
{
    return (master *)make_block(BLOCK_MASTER, name, 1, sizeof(master), "mmaps", __LINE__);
}

per_proc *make_per_proc(const char *name)
{
    return (per_proc *)make_block(BLOCK_PER_PROC, name, 1, sizeof(per_proc), "mmaps", __LINE__);
}

per_gl *make_per_gl(const char *name)
{
    return (per_gl *)make_block(BLOCK_PER_GL, name, 1, sizeof(per_gl), "mmaps", __LINE__);
}

list_info_row *make_list_info(const char *name, int32_t rows)
{
    if (rows < 1)
        rows = 1;
    return (list_info_row *)make_block(BLOCK_LIST_INFO, name, rows, (size_t)rows * sizeof(list_info_row),
                                       "mmaps", __LINE__);
}

list_info_row *resize_list_info(const char *name, int32_t rows)
{
    named_block *row = find_row(name);
    if (!row)
        return nullptr;
    if (rows < 1)
        rows = 1;
    if (rows > row->count) {
        void *block = block_realloc(row->block, (size_t)rows * sizeof(list_info_row));
        if (!block) {
            fatal_report("mmaps", __LINE__, "Out of memory.");
            return nullptr;
        }
        row->block = block;
        row->count = rows;
    }
    return (list_info_row *)row->block;
}

// ---------------------------------------------------------------------------------------------
// Debug description

struct text_out {
    char *out;
    size_t size;
    size_t length;
};

static void put(text_out *text, const char *format, ...) __attribute__((format(printf, 2, 3)));

static void put(text_out *text, const char *format, ...)
{
    if (text->length + 1 >= text->size)
        return;
    va_list args;
    va_start(args, format);
    int written = vsnprintf(text->out + text->length, text->size - text->length, format, args);
    va_end(args);
    if (written < 0)
        return;
    text->length += (size_t)written;
    if (text->length >= text->size)
        text->length = text->size - 1;
}

static void put_counts(text_out *text, const char *label, const int64_t *counts, int rows)
{
    put(text, " %s=", label);
    for (int row = 0; row < rows; ++row)
        put(text, row ? ",%lld" : "%lld", (long long)counts[row]);
}

size_t describe_named_blocks(char *out, size_t size)
{
    text_out text = {out, size, 0};
    if (size == 0)
        return 0;
    out[0] = 0;
    for (int32_t index = 0; index < named_blocks.count; ++index) {
        const named_block *row = &named_blocks.rows[index];
        switch (row->kind) {
        case BLOCK_THREAD_RECORD: {
            const thread_record *record = (const thread_record *)row->block;
            put(&text, "thread id=%u panel_ready=%d", record->id, record->panel_ready);
            if (record->per_gl)
                put(&text, " per_gl=%d:%d", record->per_gl->id, record->per_gl->handle);
            else
                put(&text, " per_gl=none");
            put(&text, " temp_dir=%s\n", record->temp_dir);
            break;
        }
        case BLOCK_MASTER: {
            const master *block = (const master *)row->block;
            put(&text, "master %s owner=%u next_gl_id=%d proc_count=%d gl_count=%d gl_table=", row->name,
                block->owner, block->next_gl_id, block->proc_count, block->gl_count);
            for (int32_t gl = 0; gl < block->gl_count && gl < MASTER_GL_ROWS; ++gl)
                put(&text, gl ? ",%d:%d:%d" : "%d:%d:%d", block->gl_table[gl].gl_id,
                    block->gl_table[gl].handle, block->gl_table[gl].proc_id);
            put(&text, "\n");
            break;
        }
        case BLOCK_PER_PROC: {
            const per_proc *block = (const per_proc *)row->block;
            put(&text, "per_proc %s id=%u run_state=%d History=%d", row->name, block->id, block->run_state,
                block->History);
            put_counts(&text, "wgl", block->wgl_call_count, WGL_CALL_COUNT);
            put_counts(&text, "gdi", block->gdi_call_count, GDI_CALL_COUNT);
            put(&text, "\n");
            break;
        }
        case BLOCK_PER_GL: {
            const per_gl *block = (const per_gl *)row->block;
            put(&text, "per_gl %s id=%d handle=%d has_state=%d history=%s list_calls=%s\n", row->name,
                block->id, block->handle, block->has_state, block->history_file ? "open" : "closed",
                block->list_calls_file ? "open" : "closed");
            break;
        }
        case BLOCK_LIST_INFO:
            put(&text, "list_info %s count=%d\n", row->name, row->count);
            break;
        }
    }
    return text.length;
}
