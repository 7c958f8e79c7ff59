// The text of a state row's values, as the State window shows them and Save writes them.
#pragma once

#include "records/records.h"

#include <cstdint>

enum : int {
    STATE_TEXT_SIZE = 5120,
    // Room of the prefix and of its padding each.
    STATE_PREFIX_SIZE = 1536,
    // A row's name, its first text and its default text.
    STATE_SAVE_BLOCK_SIZE = CALL_NAME_SIZE + 2 * STATE_TEXT_SIZE + 2,
};

enum : int32_t {
    STATE_TYPE_BOOLEAN = 1,
    STATE_TYPE_ENUM = 2,
    STATE_TYPE_HEX = 3,
    STATE_TYPE_MATRIX = 4,
    STATE_TYPE_REAL = 5,
    STATE_TYPE_STIPPLE = 6,
};

// The text of count values of a type behind prefix. A non-empty prefix indents the lines after
// the first by as many blanks. Booleans are named by GL_FALSE and GL_TRUE, enumerants by the
// rows of enumerants (the ENUMERANT_ROWS of master.enumerants). Every line ends in "\r\n"; an
// unknown type writes the prefix alone. values holds STATE_VALUE_COUNT floats; out holds
// STATE_TEXT_SIZE bytes, and a longer text is cut there.
void state_text(const char *prefix, int32_t type, int32_t count, const float *values,
                const enumerant_row *enumerants, char *out);

// What Save writes for one row: its name, its current values after "Current Value: " (or after
// "Last Valid Value: " when no context is current or a glBegin is open: the values of the last
// scan), and its default values after "Default Value: ". Lines inside the values end in "\r\n",
// the others in "\n", as the two reach the file. out holds STATE_SAVE_BLOCK_SIZE bytes.
void state_save_block(const state_row *row, const state_values *values, bool current_is_fresh,
                      const enumerant_row *enumerants, char *out);
