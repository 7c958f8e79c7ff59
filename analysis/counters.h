// Counts of calls, by catalogue row.
#pragma once

#include "session/records.h"

// Behind every debugged call that was made: the row's counter.
void count_call(thread_record *record, int row);
