#include "recording/history.h"

#include "gen/calls.h"
#include "gls/gls.h"
#include "recording/line_format.h"
#include "records/mmaps.h"
#include "records/report.h"
#include "gls/tables.h"

#include <cstdio>
#include <cstring>

// The codec hands a write function only a count and bytes: the session is found through the
// data pointer of the thread's codec context.
static thread_record *writing_record() { return (thread_record *)gls_current()->dataPointer; }

static size_t history_write(size_t count, const void *bytes)
{
    thread_record *record = writing_record();
    per_gl *gl = record->per_gl;
    if (record->per_proc->History != 1 || !gl || !gl->history_pending)
        return count;
    history_format(gl->history_pending, (int)count, (const char *)bytes, record->library_table->call_depth,
                   record->per_proc->limit_data_dumps == 1);
    return count;
}

static size_t last_call_write(size_t count, const void *bytes)
{
    last_call_format((int)count, (const char *)bytes, writing_record()->per_proc->last_call_text);
    return count;
}

void history_open(thread_record *record, bool truncate)
{
    per_gl *gl = record->per_gl;
    char name[NAME_SIZE + 32];
    snprintf(name, sizeof name, "%s\\history\\%d.gls", record->temp_dir, (int)gl->handle);
    gl->history_file = fopen(name, HISTORY_FILE_MODE(truncate));
    if (!gl->history_file) {
        fatal_report("gls", __LINE__, "Could not open %s.", name);
        session_exit(1);
    }
    // Lines reach the file through the sink: one copy a line, a write every 1 MB and wherever
    // the file is read (halts, swaps, long pieces).
    if (!gl->history_pending) {
        gl->history_pending = (history_sink *)block_alloc(sizeof(history_sink));
        if (gl->history_pending)
            memset(gl->history_pending, 0, sizeof(history_sink));
    }
    if (!gl->history_pending) {
        fatal_report("gls", __LINE__, "Out of memory.");
        session_exit(1);
    }
    history_sink_start(gl->history_pending, gl->history_file);
    // A stream keeps the write function it began with: the long-lived capture stays bound to
    // the file, and every per-call capture begun later writes to last_call_text.
    glsWriteFunc(history_write);
    glsBeginCapture((const GLubyte *)"", GLS_TEXT, 0);
    glsWriteFunc(last_call_write);
}

void history_close(thread_record *record)
{
    per_gl *gl = record->per_gl;
    glsEndCapture();
    history_file_close(gl);
}

void history_flush(per_gl *gl)
{
    if (!gl->history_file)
        return;
    if (gl->history_pending)
        history_sink_drain(gl->history_pending);
    fflush(gl->history_file);
}

void history_file_close(per_gl *gl)
{
    if (!gl->history_file)
        return;
    history_flush(gl);
    fclose(gl->history_file);
    gl->history_file = nullptr;
    if (gl->history_pending) {
        gl->history_pending->file = nullptr;
        gl->history_pending->handle = nullptr;
    }
}
