// The display lists of a session as the application defines them: a row for each list with the
// place of its calls' text in the calls file, the count of those calls and of its uses. All
// contexts of a session share the rows and the file; each context keeps its own counts.
#pragma once

#include "records/records.h"

// The block of rows grown to count rows at least (a count of 0 counts as 1); the process ends
// with code 1 when it can't grow.
list_info_row *list_rows_resize(thread_record *record, int32_t count);

void list_on_gen(thread_record *record, int32_t range);
void list_on_new(thread_record *record, uint32_t list);
void list_on_end(thread_record *record);
void list_on_delete(thread_record *record, uint32_t list, int32_t range);
void list_on_base(thread_record *record, uint32_t base);
// A use of a list: false when rows exist and none is this list's.
bool list_on_call(thread_record *record, uint32_t list);
// The uses of glCallLists, each entry behind list_base; the number of entries that fit no row.
int list_on_call_many(thread_record *record, int32_t count, uint32_t type, const void *lists);
// From the counting step of every call: the call's text into the list being compiled.
void list_note_call(thread_record *record, int row);
