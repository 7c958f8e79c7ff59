// The GL state of the current context, read on the application's thread: the defaults when a
// context is first seen, the current values at each halt.
#pragma once

#include "records/records.h"

// One catalogue row's query into its current values.
void state_query(thread_record *record, int row);
// At a context's first sight: every row into current and default; the snapshot starts as zeros.
void state_baseline(thread_record *record);
// At a halt, outside glBegin/glEnd and with a context: every row into current.
void state_scan(thread_record *record);
