#include "panel/enum_text.h"

#include <cstdio>

const enumerant_row boolean_names[2] = {
    {0, "GL_FALSE"},
    {1, "GL_TRUE"},
};

const char *enum_name(int32_t value, const enumerant_row *table, int rows)
{
    for (int row = 0; row < rows; ++row)
        if (table[row].value == value)
            return table[row].name;
    static char number[16];
    snprintf(number, sizeof number, "0x%.*X", 4, (unsigned)value);
    return number;
}

void enumerant_list_text(const enumerant_row *row, char *out)
{
    snprintf(out, ENUM_LIST_TEXT_SIZE, "%.*s - 0x%.*X, %.*d", CALL_NAME_SIZE, row->name, 4,
             (unsigned)row->value, 4, row->value);
}
