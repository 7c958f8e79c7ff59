#include "session/control_draw.h"

#include "gls/gls.h"
#include "gls/capture.h"
#include "gls/tables.h"
#include "gen/gl_enums.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

void apply_control_draw_request(thread_record *record)
{
    per_proc *proc = record->per_proc;
    // The request waits for a call outside glBegin/glEnd, and for a context.
    if (record->per_gl->in_begin_end != 0 || record->per_gl->handle == 0)
        return;
    fn_glDrawBuffer draw_buffer = (fn_glDrawBuffer)gls_own_call(OP_glDrawBuffer);
    fn_glReadBuffer read_buffer = (fn_glReadBuffer)gls_own_call(OP_glReadBuffer);
    if (proc->control_draw_request == 1) {
        draw_buffer((GLenum)proc->saved_draw_buffer);
        read_buffer((GLenum)proc->saved_read_buffer);
    } else {
        fn_glGetIntegerv get_integerv = (fn_glGetIntegerv)gls_own_call(OP_glGetIntegerv);
        get_integerv(GL_DRAW_BUFFER, &proc->saved_draw_buffer);
        get_integerv(GL_READ_BUFFER, &proc->saved_read_buffer);
        draw_buffer(GL_FRONT);
        read_buffer(GL_FRONT);
    }
    proc->control_draw_state = proc->control_draw_request;
    proc->control_draw_request = 0;
}

void append_pending_message(thread_record *record, const char *format, ...)
{
    char *message = record->per_proc->pending_message;
    size_t length = strlen(message);
    if (length + 1 >= PENDING_MESSAGE_SIZE)
        return;
    va_list args;
    va_start(args, format);
    vsnprintf(message + length, PENDING_MESSAGE_SIZE - length, format, args);
    va_end(args);
}

void check_no_context(thread_record *record)
{
    if (record->per_gl->handle == 0)
        append_pending_message(record, "\nWarning: No GL context.");
}

void check_gl_error(thread_record *record)
{
    per_gl *gl = record->per_gl;
    if (gl->in_begin_end != 0 || gl->handle == 0)
        return;
    fn_glGetError get_error = (fn_glGetError)gls_own_call(OP_glGetError);
    GLenum error = get_error();
    if (error == 0)
        return;
    fn_gluErrorString error_string = (fn_gluErrorString)record->library_table->glu[ROW_gluErrorString];
    append_pending_message(record, "\nGL Error: %s.", (const char *)error_string(error));
    // Only the first error is named; the rest are drained.
    while (get_error() != 0) {
    }
}
