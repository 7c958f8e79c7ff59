#include "analysis/reports.h"

#include "gls/gls.h"

#include <cstdio>
#include <cstring>

void info_line(const char *tag, const char *text)
{
    GlsContext *ctx = gls_current();
    if (!ctx) {
        gls_set_error(GLS_STATE_ERROR);
        return;
    }
    ((fn_glsString)ctx->defaultDispatch[OP_glsString])((const GLubyte *)tag, (const GLubyte *)text);
}

void usage_warning(thread_record *record, const char *text)
{
    per_proc *proc = record->per_proc;
    // The buffer is only a mark that the call found fault; what stands in it is never shown.
    size_t length = strlen(proc->pending_message);
    if (length + 1 < PENDING_MESSAGE_SIZE)
        snprintf(proc->pending_message + length, PENDING_MESSAGE_SIZE - length, "\nWarning: %s", text);
    if (proc->History != 0 && proc->show_problems == 1) {
        char line[PENDING_MESSAGE_SIZE];
        snprintf(line, sizeof line, "- %s", text);
        info_line("Info", line);
    }
}

bool hint_strict(const per_proc *proc) { return proc->History == 1 && proc->show_hints == 1; }
bool hint_loose(const per_proc *proc) { return proc->History != 0 && proc->show_hints != 0; }
bool hint_address(const per_proc *proc) { return proc->History != 0 && proc->show_data_address != 0; }
