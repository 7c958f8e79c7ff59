// The per-opcode tables. The constant ones are generated from the table of signatures; the
// default dispatch table is filled at process attach.
#pragma once

#include "gen/calls.h"
#include "gls/gls_types.h"

extern const char *const gls_opcode_names[GLS_OPCODE_COUNT];
extern const uint8_t gls_attributes[GLS_OPCODE_COUNT];
extern const GlsFunc gls_null_funcs[GLS_OPCODE_COUNT];
extern const GlsFunc gls_forwarders[GLS_OPCODE_COUNT];
extern const GlsFunc gls_default_capture[GLS_OPCODE_COUNT];
// GL commands bound in the real library, ending with a row 0.
extern const int32_t gls_bind_list[];

extern GlsFunc gls_default_dispatch[GLS_OPCODE_COUNT];
// The reading side's rows, generated: decode rows take the stored arguments and their size,
// swap rows swap them in place and go on to the decode row (commands without arguments have
// their decode row here).
extern const GlsFunc gls_decode_table[GLS_OPCODE_COUNT];
extern const GlsFunc gls_swap_table[GLS_OPCODE_COUNT];

// The do-nothing stub of decodeDispatch while abortCall is set.
void gls_abort_stub(uint8_t *args, uint32_t size);

inline bool gls_opcode_exists(int opcode)
{
    return opcode >= 0 && opcode < GLS_OPCODE_COUNT && gls_opcode_names[opcode] != nullptr;
}
