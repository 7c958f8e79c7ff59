#include "panel/search.h"

#include <cstdio>
#include <cstring>

static bool row_holds(row_text_func text_of, void *list, int row, const char *needle)
{
    char buffer[LIST_ROW_SIZE];
    const char *text = text_of(list, row, buffer);
    return text && strstr(text, needle) != nullptr;
}

int list_search(int count, int selected, int top, const char *needle, row_text_func text_of, void *list)
{
    int start = selected >= 0 ? selected + 1 : top;
    if (start < 0 || start >= count)
        start = 0;
    for (int row = start; row < count; ++row)
        if (row_holds(text_of, list, row, needle))
            return row;
    // Once more from the first row: all rows, the selected one too.
    for (int row = 0; row < count; ++row)
        if (row_holds(text_of, list, row, needle))
            return row;
    return -1;
}

long text_search(const char *text, long length, long selection_end, const char *needle)
{
    long start = selection_end + 1;
    if (start >= length)
        start = 0;
    if (const char *found = strstr(text + start, needle))
        return (long)(found - text);
    if (const char *found = strstr(text, needle))
        return (long)(found - text);
    return -1;
}

void not_found_text(const char *needle, char *out)
{
    snprintf(out, SEARCH_TEXT_SIZE + 16, "%s - not found", needle);
}
