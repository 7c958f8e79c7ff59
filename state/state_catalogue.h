// The constant tables that master copies at its creation, generated from state/state_rows.tbl
// and the Khronos registry (generator/state.py).
#pragma once

#include "session/records.h"

// The 411 state rows in the Select State list's order.
extern const state_row state_catalogue[STATE_ROW_COUNT];
// The names of GL values in byte order of the names; a value may have several.
extern const enumerant_row enumerant_table[ENUMERANT_ROWS_COPIED];
