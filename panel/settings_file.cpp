#include "panel/settings_file.h"

#include <cstring>

// Words are read with a bound, so that a long line ends a word, never the buffer.
bool settings_read(FILE *file, settings_values *values)
{
    char word[SETTINGS_WORD_SIZE] = "";
    if (fscanf(file, "%255s", word) != 1 || strcmp(word, "quondale") != 0)
        return false;
    // One number variable for all the switch lines, as the file was always read: a failed read
    // leaves the number before it.
    int value = 0;
    for (int &line : values->switches) {
        fscanf(file, "%*s%d", &value);
        line = value;
    }
    fscanf(file, "%*s%255s", word);
    memcpy(values->call_count_show, word, sizeof word);
    fscanf(file, "%*s%d", &value);
    values->state_non_default = value;
    fscanf(file, "%*s%d", &value);
    values->state_snap_diff = value;
    // The rows' numbers likewise: a file that ends early repeats its last row in every later
    // row of every later section.
    int columns[4] = {0, 0, 0, 0};
    for (settings_section &section : values->sections) {
        fscanf(file, "%*s");
        for (int row = 0; row < GL_CALL_COUNT; ++row) {
            fscanf(file, "%*s %d %d %d %d", &columns[0], &columns[1], &columns[2], &columns[3]);
            section.selected[row] = columns[0] == 1;
            for (int set = 0; set < 3; ++set)
                section.sets[row][set] = (uint8_t)columns[set + 1];
        }
    }
    return true;
}
