// Run control: whether the application's thread goes through a call, halts before it, or
// leaves it out; the reaction to the panel's events; the work on the way into a halt.
#pragma once

#include "records/records.h"
#include "records/rings.h"

enum : int {
    EVENT_RESULT_GO_ON = 1,
    EVENT_RESULT_STAY = 2,
    EVENT_RESULT_SKIP = 3,
};

// Every call tests the switches first: their rows only when a switch is on.
void halt_on_break(thread_record *record, int row);
inline void test_break(thread_record *record, int row)
{
    const per_proc *proc = record->per_proc;
    if (proc->Break_on_GL_calls == 1 && proc->call_control[row].break_on == 1 && proc->run_state == RUN_RUNNING)
        halt_on_break(record, row);
}
void test_break_on_swap(thread_record *record, int gdi_row);
void mark_skipped(thread_record *record);
inline bool test_skip(thread_record *record, int row)
{
    const per_proc *proc = record->per_proc;
    if (proc->Skip_GL_calls != 1 || proc->call_control[row].skip != 1)
        return false;
    mark_skipped(record);
    return true;
}
int handle_event(thread_record *record);
void set_status(thread_record *record, const char *format, ...);
void update_panel(thread_record *record);

// A point where the thread may wait: a GL call, or a swap. The text of what comes next is shown
// once, by show_text, whatever the events; a halt refreshes the panel once.
struct halt_point {
    void (*show_text)(thread_record *record, const void *data);
    const void *data;
    bool wait_for_list; // a GL call: a list being compiled needs its text while running
    bool text_shown;
    bool panel_updated;
};

// True when the thread must stop at the point: an event waits, it is halted, or it compiles a list.
inline bool must_wait(const thread_record *record, const halt_point *point)
{
    const per_proc *proc = record->per_proc;
    return ring_pending(&proc->ring_to_app) || proc->run_state == RUN_HALTED ||
           (point->wait_for_list && record->per_gl->list_capturing == 1);
}

// The halt-wait loop: shows the text, refreshes the panel on a halt, and takes the panel's
// events until the thread may go on. EVENT_RESULT_GO_ON, or EVENT_RESULT_SKIP for Skip.
int wait_at_halt(thread_record *record, halt_point *point);
