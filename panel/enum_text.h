// Names of GL values, and the rows of the Enumerates list.
#pragma once

#include "records/records.h"

#include <cstdint>

enum : int {
    ENUM_LIST_TEXT_SIZE = 1536,
};

// GL_FALSE and GL_TRUE: the names of a boolean value.
extern const enumerant_row boolean_names[2];

// The name of the first of rows that has value, walking the table in order (so a value with
// several names gets the first in byte order); else "0x%.*X" with four digits at least, in a
// static buffer that the next call overwrites. The enumerant lookups pass the whole room of
// master.enumerants: the walk goes on through the zeroed spare rows.
const char *enum_name(int32_t value, const enumerant_row *table, int rows);

// "GL_2D - 0x0600, 1536": the name, the value in hexadecimal and in decimal, both with four
// digits at least. out holds ENUM_LIST_TEXT_SIZE bytes.
void enumerant_list_text(const enumerant_row *row, char *out);
