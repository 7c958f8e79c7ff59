#include "interception/install.h"

#include "gls/gls.h"
#include "gls/tables.h"
#include "interception/wrapper.h"
#include "recording/history.h"

void install_codec(thread_record *record)
{
    library_table *libraries = record->library_table;
    libraries->gls_context = (int32_t)glsGenContext();
    glsContext((GLuint)libraries->gls_context);
    glsDataPointer(record);
    // Of two rows on one opcode the later one stays installed. The codec would refuse the
    // unnamed opcodes of vendor rows; asking would only leave an error word behind.
    for (const CallRowOpcode &entry : wrapper_of_opcode_rows)
        if (gls_opcode_exists(entry.opcode))
            glsCommandFunc(GLS_CAPTURE_FUNC, entry.opcode, debug_wrappers[entry.row]);
    apply_trace_set(record);
}
