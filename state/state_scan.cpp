// The scan of GL state: each catalogue row read by its query into the per_gl's arrays, once as
// the defaults when a context is first seen and again at every halt. The queries are the
// codec's own capture functions with their opcodes set to execute alone: they reach GL and
// never the history.
#include "state/state_scan.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"

#include <cstring>

// A query's values beyond the room of a row (a whole evaluator map or pixel map) land here
// first; the row keeps what fits.
enum : int { QUERY_ROOM = 4096 };

// A size that GL gave as a float; one beyond reason counts as more than any room.
static int64_t size_of(GLfloat value)
{
    return value >= 0 && value <= (GLfloat)QUERY_ROOM ? (int64_t)value : (int64_t)QUERY_ROOM + 1;
}

// The values GL may write for a row: more than the row's count for the maps. Asked through the
// scan's own float queries, so that no function of the program's loses its place in the history.
static int64_t needed_values(const state_row *row)
{
    if (row->kind == 4 && row->second_enum == GL_COEFF) {
        GLfloat order[2] = {1, 1};
        ((fn_glGetMapfv)gls_own_call(OP_glGetMapfv))((GLenum)row->first_enum, GL_ORDER, order);
        bool surface = row->first_enum >= (int32_t)GL_MAP2_COLOR_4;
        return size_of(order[0]) * (surface ? size_of(order[1]) : 1) * row->count;
    }
    if (row->kind == 6) {
        // Each map's size query sits 64 above the map's own enumerant.
        GLfloat size = 0;
        ((fn_glGetFloatv)gls_own_call(OP_glGetFloatv))((GLenum)(row->first_enum + 64), &size);
        return size_of(size);
    }
    return row->count;
}

void state_query(thread_record *record, int row_index)
{
    const state_row *row = &record->master->state_rows[row_index];
    float *current = record->per_gl->state[row_index].current;
    GLenum first = (GLenum)row->first_enum, second = (GLenum)row->second_enum;
    float room[QUERY_ROOM];
    int64_t needed = needed_values(row);
    if (needed > QUERY_ROOM)
        return; // larger than any map this system has met: the row keeps its last values
    float *into = needed > STATE_VALUE_COUNT ? room : current;
    switch (row->kind) {
    case 1: ((fn_glGetFloatv)gls_own_call(OP_glGetFloatv))(first, into); break;
    case 2: {
        GLdouble plane[4];
        ((fn_glGetClipPlane)gls_own_call(OP_glGetClipPlane))(first, plane);
        for (int i = 0; i < 4; ++i)
            into[i] = (float)plane[i];
        break;
    }
    case 3: ((fn_glGetLightfv)gls_own_call(OP_glGetLightfv))(first, second, into); break;
    case 4: ((fn_glGetMapfv)gls_own_call(OP_glGetMapfv))(first, second, into); break;
    case 5: ((fn_glGetMaterialfv)gls_own_call(OP_glGetMaterialfv))(first, second, into); break;
    case 6: ((fn_glGetPixelMapfv)gls_own_call(OP_glGetPixelMapfv))(first, into); break;
    case 7: {
        GLubyte stipple[128];
        ((fn_glGetPolygonStipple)gls_own_call(OP_glGetPolygonStipple))(stipple);
        for (int i = 0; i < 128; ++i)
            into[i] = stipple[i];
        break;
    }
    case 8: ((fn_glGetTexEnvfv)gls_own_call(OP_glGetTexEnvfv))(first, second, into); break;
    case 9: ((fn_glGetTexGenfv)gls_own_call(OP_glGetTexGenfv))(first, second, into); break;
    case 10: ((fn_glGetTexParameterfv)gls_own_call(OP_glGetTexParameterfv))(first, second, into); break;
    default: break; // the generator admits kinds 1 to 10 only
    }
    if (into == room)
        memcpy(current, room, sizeof(float) * STATE_VALUE_COUNT);
}

// Errors that the queries raised, and any that was pending, are taken away.
static void drain_errors()
{
    fn_glGetError get_error = (fn_glGetError)gls_own_call(OP_glGetError);
    while (get_error() != 0) {
    }
}

void state_baseline(thread_record *record)
{
    per_gl *gl = record->per_gl;
    for (int row = 0; row < STATE_ROW_COUNT; ++row) {
        state_query(record, row);
        size_t bytes = sizeof(float) * (size_t)record->master->state_rows[row].count;
        memcpy(gl->state[row].default_values, gl->state[row].current, bytes);
        memset(gl->state[row].snapshot, 0, bytes);
    }
    drain_errors();
}

void state_scan(thread_record *record)
{
    // A defined layout for the stipple's bytes: the application's pack state is put back after.
    static const GLenum pack[6] = {GL_PACK_ALIGNMENT, GL_PACK_LSB_FIRST, GL_PACK_ROW_LENGTH,
                                   GL_PACK_SKIP_PIXELS, GL_PACK_SKIP_ROWS, GL_PACK_SWAP_BYTES};
    fn_glGetIntegerv get_integer = (fn_glGetIntegerv)gls_own_call(OP_glGetIntegerv);
    fn_glPixelStorei store = (fn_glPixelStorei)gls_own_call(OP_glPixelStorei);
    GLint saved[6];
    for (int i = 0; i < 6; ++i)
        get_integer(pack[i], &saved[i]);
    for (int i = 0; i < 6; ++i)
        store(pack[i], i == 0 ? 4 : 0);
    for (int row = 0; row < STATE_ROW_COUNT; ++row)
        state_query(record, row);
    drain_errors();
    for (int i = 0; i < 6; ++i)
        store(pack[i], saved[i]);
}
