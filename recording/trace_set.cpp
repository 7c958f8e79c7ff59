// The trace set reaches the codec as capture flags: a traced function is executed and written,
// any other only executed; the vertex-array data command is always written.
#include "recording/history.h"

#include "gen/calls.h"
#include "gls/gls.h"
#include "gls/tables.h"

void apply_trace_set(thread_record *record)
{
    const call_control_row *control = record->per_proc->call_control;
    // Of two rows on one opcode the later one decides; unnamed opcodes of vendor rows have no
    // command, and asking would only leave an error word behind.
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        if (gls_opcode_exists(opcode_of_call[row]))
            glsCaptureFlags(opcode_of_call[row], control[row].trace == 1 ? GLS_CAPTURE_EXECUTE_BIT | GLS_CAPTURE_WRITE_BIT
                                                                            : GLS_CAPTURE_EXECUTE_BIT);
    glsCaptureFlags(OP_glsDrawVertexArray, GLS_CAPTURE_EXECUTE_BIT | GLS_CAPTURE_WRITE_BIT);
}
