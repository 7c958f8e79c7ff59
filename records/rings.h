// The two event rings of a session. The panel queues requests in ring_to_app, which the
// wrappers poll; the other direction is delivered by calling panel code directly.
#pragma once

#include "records/records.h"

enum : int32_t {
    EVENT_MESSAGE_CHANGED = 1,
    EVENT_CONTEXT_CHANGED = 2,
    EVENT_CONTROL_DRAW_OFF = 3,
    EVENT_CONTROL_DRAW_ON = 4,
    EVENT_HALT = 5,
    EVENT_CLEAR_HISTORY = 6,
    EVENT_HISTORY_CHANGED = 7,
    EVENT_APPLY_TRACE_SET = 8,
    EVENT_STATUS_TEXT = 9,
    EVENT_CONTINUE = 12,
    EVENT_REFRESH_ALL = 13,
    EVENT_SKIP = 14,
    EVENT_STEP = 15,
    EVENT_VERTEX_ARRAYS_OFF = 16,
    EVENT_VERTEX_ARRAYS_ON = 17,
    EVENT_NONE = -1,
};

inline bool ring_pending(const ring *r) { return r->tail != r->head; }

// Copies the slot at tail and advances; an empty ring gives the code -1.
void ring_read(ring *r, ring_slot *slot);
// Queues, delivers directly, or drops an event, by its code.
void post_event(ring *r, int32_t code);
// Code 9 delivers the text to the status line; code 1 shows last_call_text.
void post_status(ring *r, int32_t code, const char *text);
// Code 2 refreshes the thread and context banners.
void post_context_changed(ring *r, int32_t code, uint32_t context);
