// The reading side of the settings file as a plain function: a file in, what it says out. The
// panel (settings.cpp) puts the result into its boxes, menus and lists.
#pragma once

#include "gen/calls.h"

#include <cstdint>
#include <cstdio>

enum : int {
    SETTINGS_SWITCH_LINES = 6, // lines 2 to 7: Check_for_GL_error to Skip_GL_calls
    SETTINGS_SECTIONS = 3,     // break, history, skip
    SETTINGS_WORD_SIZE = 256,
};

struct settings_section {
    uint8_t selected[GL_CALL_COUNT]; // 1: the row's first number was exactly 1
    uint8_t sets[GL_CALL_COUNT][3];
};

struct settings_values {
    int switches[SETTINGS_SWITCH_LINES];
    char call_count_show[SETTINGS_WORD_SIZE];
    int state_non_default;
    int state_snap_diff;
    settings_section sections[SETTINGS_SECTIONS];
};

// False when the first word is not "quondale"; nothing else is read then. Lines are taken by
// position and no read is tested: a short or damaged file repeats the last number read.
bool settings_read(FILE *file, settings_values *values);
