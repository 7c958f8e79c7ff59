// Counts of calls by catalogue row and of primitives by kind, and their texts.
#pragma once

#include "recording/lists.h"
#include "records/records.h"

// Behind every debugged call that was made: the row's counter.
inline void count_call(thread_record *record, int row)
{
    ++record->per_proc->call_control[row].count;
    // While a list is compiled, every call's text goes into it.
    if (record->per_gl->list_capturing == 1)
        list_note_call(record, row);
}
// Adds the primitive in hand (primitive_mode, vertex_count of the current context) to the
// counters; called when a primitive ends (glEnd) or is drawn from arrays.
void count_primitive(thread_record *record);

// The Clear buttons of the two count windows. The GDI counters, prim_rects and the vertex
// totals are not cleared.
void clear_call_counts(per_proc *proc);
void clear_primitive_counts(per_proc *proc);

enum : int { COUNT_TEXT_SIZE = 256 };
// The value with thousands separators: 0, 999, 1,000, 1,234,567. out holds COUNT_TEXT_SIZE bytes.
void format_count(int64_t value, char *out);
