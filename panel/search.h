// The searches of the panel's windows, as plain functions over the texts the controls hold.
#pragma once

#include <cstddef>

enum : int {
    SEARCH_TEXT_SIZE = 256,
    LIST_ROW_SIZE = 1536, // a list row's text with its terminator, at most
};

// A list's rows as the search sees them: row index to its text, in LIST_ROW_SIZE bytes.
typedef const char *(*row_text_func)(void *list, int row, char *buffer);

// The wrap-around search of a single-selection list: from one behind the selected row (or from
// the top visible row when none is selected, selected at -1), to the last row, then once more
// from the first; case counts. The row found, or -1.
int list_search(int count, int selected, int top, const char *needle, row_text_func text_of, void *list);

// The search in a text control: the first place of needle from one behind the selection's end
// (from the start when that is at or behind the end of the text), else from the start. The
// place, or -1.
long text_search(const char *text, long length, long selection_end, const char *needle);

// What a search that found nothing leaves in the search control; out holds SEARCH_TEXT_SIZE
// + 16 bytes.
void not_found_text(const char *needle, char *out);
