#include "recording/lists.h"

#include "gen/calls.h"
#include "gen/gl_enums.h"
#include "records/mmaps.h"
#include "records/report.h"

#include <cstdio>
#include <cstring>

list_info_row *list_rows_resize(thread_record *record, int32_t count)
{
    char name[NAME_SIZE];
    name_of_list_info(record->temp_dir, name);
    list_info_row *rows = resize_list_info(name, count < 1 ? 1 : count);
    if (!rows)
        session_exit(1); // the fatal report is made
    record->per_gl->list_rows = rows;
    return rows;
}

// The record of the current context; null with none, where GL makes, compiles and calls no
// list and the session has neither rows nor a calls file for it.
static per_gl *context_gl(thread_record *record)
{
    per_gl *gl = record->per_gl;
    return gl->handle != 0 ? gl : nullptr;
}

// The live row of a list: the first with that name that isn't deleted.
static list_info_row *find_row(per_gl *gl, uint32_t list)
{
    for (int32_t row = 0; row < gl->list_count; ++row)
        if (gl->list_rows[row].list == (int32_t)list && gl->list_rows[row].status != 1)
            return &gl->list_rows[row];
    return nullptr;
}

void list_on_gen(thread_record *record, int32_t range)
{
    per_gl *gl = context_gl(record);
    if (!gl || gl->list_capturing == 1)
        return;
    gl->list_reserved += range;
    list_rows_resize(record, gl->list_count + gl->list_reserved);
}

void list_on_new(thread_record *record, uint32_t list)
{
    per_gl *gl = context_gl(record);
    if (!gl || gl->list_current)
        return; // a nested glNewList begins no capture
    list_info_row *row = gl->list_count > 0 ? find_row(gl, list) : nullptr;
    if (!row) {
        if (gl->list_reserved > 0)
            --gl->list_reserved;
        else
            list_rows_resize(record, gl->list_count + 1);
        row = &gl->list_rows[gl->list_count++];
    }
    // A redefinition takes the old row; its old text stays in the file, unreachable.
    row->list = (int32_t)list;
    row->status = 2;
    row->lines = 0;
    row->begin = (int32_t)ftell(gl->list_calls_file);
    row->end = -1;
    row->calls = 0;
    row->window = nullptr;
    gl->list_current = row;
    gl->list_capturing = 1;
}

void list_on_end(thread_record *record)
{
    per_gl *gl = context_gl(record);
    if (!gl || !gl->list_current)
        return;
    gl->list_current->end = (int32_t)ftell(gl->list_calls_file);
    gl->list_current->status = 3;
    gl->list_current = nullptr;
    gl->list_capturing = 0;
}

void list_on_delete(thread_record *record, uint32_t list, int32_t range)
{
    per_gl *gl = context_gl(record);
    for (int32_t name = 0; gl && name < range && gl->list_count > 0; ++name)
        for (int32_t row = 0; row < gl->list_count; ++row)
            if (gl->list_rows[row].list == (int32_t)(list + (uint32_t)name) && gl->list_rows[row].status != 1)
                gl->list_rows[row].status = 1;
}

void list_on_base(thread_record *record, uint32_t base) { record->per_gl->list_base = (int32_t)base; }

bool list_on_call(thread_record *record, uint32_t list)
{
    per_gl *gl = context_gl(record);
    if (!gl || gl->list_count == 0)
        return true; // no rows: no test at all
    list_info_row *row = find_row(gl, list);
    if (!row)
        return false;
    row->calls += 1;
    return true;
}

// An entry of glCallLists by its type; the byte forms read each byte as signed, as specified.
static bool entry_of(uint32_t type, const uint8_t *p, int32_t i, int32_t *value)
{
    auto b = [&](int k) { return (int32_t)(int8_t)p[k]; };
    switch (type) {
    case GL_BYTE: *value = (int8_t)p[i]; return true;
    case GL_UNSIGNED_BYTE: *value = p[i]; return true;
    case GL_SHORT: { int16_t v; memcpy(&v, p + 2 * i, 2); *value = v; return true; }
    case GL_UNSIGNED_SHORT: { uint16_t v; memcpy(&v, p + 2 * i, 2); *value = v; return true; }
    case GL_INT: case GL_UNSIGNED_INT: { int32_t v; memcpy(&v, p + 4 * i, 4); *value = v; return true; }
    case GL_FLOAT: { float v; memcpy(&v, p + 4 * i, 4); *value = (int32_t)v; return true; }
    case GL_2_BYTES: p += 2 * i; *value = b(0) * 256 + b(1); return true;
    case GL_3_BYTES: p += 3 * i; *value = b(0) * 65536 + b(1) * 256 + b(2); return true;
    case GL_4_BYTES: p += 4 * i; *value = b(0) * 16777216 + b(1) * 65536 + b(2) * 256 + b(3); return true;
    default: return false;
    }
}

int list_on_call_many(thread_record *record, int32_t count, uint32_t type, const void *lists)
{
    int invalid = 0;
    for (int32_t i = 0; i < count && lists; ++i) {
        int32_t value;
        if (entry_of(type, (const uint8_t *)lists, i, &value) &&
            !list_on_call(record, (uint32_t)(record->per_gl->list_base + value)))
            ++invalid;
    }
    return invalid;
}

void list_note_call(thread_record *record, int row)
{
    per_gl *gl = record->per_gl;
    if (gl->list_capturing != 1 || row == ROW_glNewList || !gl->list_current || !gl->list_calls_file)
        return;
    fprintf(gl->list_calls_file, "%s\r\n", record->per_proc->last_call_text);
    gl->list_current->lines += 1;
}
