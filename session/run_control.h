// Run control: whether the application's thread goes through a call, halts before it, or
// leaves it out; the reaction to the panel's events; the work on the way into a halt.
#pragma once

#include "session/records.h"

enum : int {
    EVENT_RESULT_GO_ON = 1,
    EVENT_RESULT_STAY = 2,
    EVENT_RESULT_SKIP = 3,
};

void test_break(thread_record *record, int row);
void test_break_on_swap(thread_record *record, int gdi_row);
bool test_skip(thread_record *record, int row);
int handle_event(thread_record *record);
void set_status(thread_record *record, const char *format, ...);
void update_panel(thread_record *record);
