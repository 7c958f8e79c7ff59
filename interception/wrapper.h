// The debug wrappers. Each of the 460 generated wrappers is a thin thunk that packs its
// arguments and hands them, with a constant description of its row, to debug_call: the one
// control loop of every debugged call, which a reviewer reads once.
#pragma once

#include "gen/calls.h"
#include "records/records.h"

// What varies from one wrapper to another.
struct WrapperRow {
    int32_t row;    // GL catalogue row: counter, break, trace and skip bytes
    int32_t opcode; // the codec command behind it
    // The call through the capture path with the packed arguments; a result goes to result.
    // With the opcode's capture flags at write-only it gives the call's text alone.
    void (*call)(const void *args, void *result);
    // The after-call hook with the packed arguments, or null.
    void (*hook)(thread_record *record, const void *args);
};

// Runs one debugged call: halts before it, skips it, makes it, counts it, checks it, halts
// behind it, as run control and the panel ask. False when the call was skipped: the
// application then gets 0, even if the real function ran before a halt behind it.
bool debug_call(const WrapperRow *row, const void *args, void *result);

// The generated wrappers, by GL catalogue row.
extern const GlsFunc debug_wrappers[GL_CALL_COUNT];
