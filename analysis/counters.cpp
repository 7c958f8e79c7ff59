#include "analysis/counters.h"

void count_call(thread_record *record, int row)
{
    ++record->per_proc->call_control[row].count;
}
