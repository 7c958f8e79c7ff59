#include "records/rings.h"

#include "records/panel_hooks.h"

static void ring_queue(ring *r, int32_t code)
{
    int32_t next = (r->head + 1) & (RING_SLOTS - 1);
    if (next == r->tail)
        return; // full: dropped in silence
    // The slot first, then head: the reader sees the event only once it is complete.
    r->slots[r->head].code = code;
    r->head = next;
}

void ring_read(ring *r, ring_slot *slot)
{
    if (!ring_pending(r)) {
        slot->code = EVENT_NONE;
        return;
    }
    *slot = r->slots[r->tail];
    r->tail = (r->tail + 1) & (RING_SLOTS - 1);
}

// What post_event does with each code. Requests to the application's thread are queued; the two
// refreshes are delivered to the panel at once; the rest (1, 2 and 8 to 11) have no effect here.
enum : uint8_t { DROP, QUEUE, HISTORY_CHANGED, REFRESH_ALL };

static const uint8_t delivery_of_event[EVENT_VERTEX_ARRAYS_ON + 1] = {
    DROP,            // 0
    DROP,            // 1 message changed: a wrapper's post of it behind a second halt
    DROP,            // 2 context changed: only post_context_changed delivers it
    QUEUE,           // 3 control drawing off
    QUEUE,           // 4 control drawing on
    QUEUE,           // 5 halt
    QUEUE,           // 6 clear history
    HISTORY_CHANGED, // 7
    DROP,            // 8 apply trace set: nothing posts it, and it isn't stored
    DROP,            // 9 status text: post_status delivers it
    DROP,            // 10
    DROP,            // 11
    QUEUE,           // 12 continue
    REFRESH_ALL,     // 13
    QUEUE,           // 14 skip
    QUEUE,           // 15 step
    QUEUE,           // 16 vertex arrays off
    QUEUE,           // 17 vertex arrays on
};

void post_event(ring *r, int32_t code)
{
    if (code < 0 || code > EVENT_VERTEX_ARRAYS_ON)
        return;
    switch (delivery_of_event[code]) {
    case QUEUE:
        ring_queue(r, code);
        break;
    case HISTORY_CHANGED:
        panel.history_changed();
        break;
    case REFRESH_ALL:
        panel.update_all();
        break;
    default:
        break;
    }
}

void post_status(ring *, int32_t code, const char *text)
{
    if (code == EVENT_STATUS_TEXT)
        panel.show_status(text);
    else if (code == EVENT_MESSAGE_CHANGED)
        panel.show_last_call();
}

void post_context_changed(ring *, int32_t code, uint32_t)
{
    if (code == EVENT_CONTEXT_CHANGED)
        panel.show_thread_and_context();
}
