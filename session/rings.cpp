#include "rings.h"

#include "panel.h"

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

void post_event(ring *r, int32_t code)
{
    switch (code) {
    case EVENT_CONTROL_DRAW_OFF:
    case EVENT_CONTROL_DRAW_ON:
    case EVENT_HALT:
    case EVENT_CLEAR_HISTORY:
    case EVENT_CONTINUE:
    case EVENT_SKIP:
    case EVENT_STEP:
    case EVENT_VERTEX_ARRAYS_OFF:
    case EVENT_VERTEX_ARRAYS_ON:
        ring_queue(r, code);
        break;
    case EVENT_HISTORY_CHANGED:
        panel_history_changed();
        break;
    case EVENT_REFRESH_ALL:
        panel_update_all();
        break;
    default:
        break; // 1, 2, 8 to 11 and anything out of range have no effect here
    }
}

void post_status(ring *, int32_t code, const char *text)
{
    if (code == EVENT_STATUS_TEXT)
        show_status(text);
    else if (code == EVENT_MESSAGE_CHANGED)
        show_last_call();
}

void post_context_changed(ring *, int32_t code, uint32_t)
{
    if (code == EVENT_CONTEXT_CHANGED)
        show_thread_and_context();
}
