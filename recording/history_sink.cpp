// The history sink's way to its file. On Windows a full buffer goes to a writer thread of the
// sink's own, so that the program's thread does not wait for the system's file writes; anything
// that reads the file, or ends it, drains first and finds the file complete.
#include "recording/line_format.h"
#include "records/report.h"

#if defined(_WIN32)
#  include <io.h>
#  include <windows.h>
#endif

static volatile int32_t warned; // once a process: every history stands on the same disk

// A file that takes no more bytes (a full disk) stops the history there: the program goes on.
static void stop_growing(history_sink *sink)
{
    if (sink->stopped)
        return;
    sink->stopped = 1;
    if (warned)
        return;
    warned = 1;
    warning_report("history", __LINE__,
                   "The history file cannot grow (is the disk full?): its lines stop here, and the program goes on.");
}

#if defined(_WIN32)

// Writes bytes at their own place in the file: a second write of the same bytes, by a rescue
// while the writer thread is still at it, leaves the file as it was.
static void write_at(history_sink *sink, void *handle, const char *bytes, int count, uint64_t offset)
{
    if (!handle || count <= 0 || sink->stopped)
        return;
    OVERLAPPED place = {};
    place.Offset = (DWORD)offset;
    place.OffsetHigh = (DWORD)(offset >> 32);
    DWORD written = 0;
    if (!WriteFile((HANDLE)handle, bytes, (DWORD)count, &written, &place) || written != (DWORD)count)
        stop_growing(sink);
}

static DWORD WINAPI sink_writer(void *parameter)
{
    history_sink *sink = (history_sink *)parameter;
    for (;;) {
        WaitForSingleObject((HANDLE)sink->work_event, INFINITE);
        write_at(sink, sink->flight_handle, sink->flight_data, sink->flight_count, sink->flight_offset);
        InterlockedExchange((volatile LONG *)&sink->in_flight, 0);
        SetEvent((HANDLE)sink->done_event);
    }
}

static void wait_for_flight(history_sink *sink)
{
    while (sink->in_flight)
        WaitForSingleObject((HANDLE)sink->done_event, INFINITE);
}

// The writer thread, started with the first full buffer; false where it cannot be had.
static bool have_writer(history_sink *sink)
{
    if (sink->thread)
        return true;
    sink->work_event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    sink->done_event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    if (sink->work_event && sink->done_event)
        sink->thread = CreateThread(nullptr, 64 * 1024, sink_writer, sink, 0, nullptr);
    if (!sink->thread) {
        if (sink->work_event)
            CloseHandle((HANDLE)sink->work_event);
        if (sink->done_event)
            CloseHandle((HANDLE)sink->done_event);
        sink->work_event = sink->done_event = nullptr;
    }
    return sink->thread != nullptr;
}

void history_sink_start(history_sink *sink, FILE *file)
{
    wait_for_flight(sink);
    sink->stopped = 0;
    sink->file = file;
    sink->handle = (void *)_get_osfhandle(_fileno(file));
    sink->data = sink->data ? sink->data : sink->buffers[0];
    sink->used = 0;
    LARGE_INTEGER size = {};
    GetFileSizeEx((HANDLE)sink->handle, &size);
    sink->offset = (uint64_t)size.QuadPart;
}

void history_sink_pass(history_sink *sink)
{
    if (sink->used <= 0)
        return;
    if (!have_writer(sink)) {
        history_sink_drain(sink);
        return;
    }
    wait_for_flight(sink);
    sink->flight_data = sink->data;
    sink->flight_count = sink->used;
    sink->flight_handle = sink->handle;
    sink->flight_offset = sink->offset;
    sink->in_flight = 1;
    SetEvent((HANDLE)sink->work_event);
    sink->offset += (uint64_t)sink->used;
    sink->data = sink->data == sink->buffers[0] ? sink->buffers[1] : sink->buffers[0];
    sink->used = 0;
}

void history_sink_drain(history_sink *sink)
{
    wait_for_flight(sink);
    write_at(sink, sink->handle, sink->data, sink->used, sink->offset);
    sink->offset += (uint64_t)(sink->used > 0 ? sink->used : 0);
    sink->used = 0;
}

void history_sink_write_through(history_sink *sink, const char *bytes, int count)
{
    history_sink_drain(sink);
    write_at(sink, sink->handle, bytes, count, sink->offset);
    sink->offset += (uint64_t)count;
}

void history_sink_rescue(history_sink *sink)
{
    // Nothing changes and nothing waits: the writer thread may be gone with the program's end,
    // and a program that goes on after a fault writes the same bytes again, in the same place.
    if (sink->in_flight)
        write_at(sink, sink->flight_handle, sink->flight_data, sink->flight_count, sink->flight_offset);
    write_at(sink, sink->handle, sink->data, sink->used, sink->offset);
}

#else

// Natively the sink is the file's: plain writes in order.
void history_sink_start(history_sink *sink, FILE *file)
{
    sink->stopped = 0;
    sink->file = file;
    sink->handle = nullptr;
    sink->data = sink->buffers[0];
    sink->used = 0;
}

static void write_through(history_sink *sink, const char *bytes, int count)
{
    if (sink->file && count > 0 && !sink->stopped && fwrite(bytes, 1, (size_t)count, sink->file) != (size_t)count)
        stop_growing(sink);
}

void history_sink_drain(history_sink *sink)
{
    write_through(sink, sink->data, sink->used);
    sink->used = 0;
}

void history_sink_pass(history_sink *sink) { history_sink_drain(sink); }

void history_sink_write_through(history_sink *sink, const char *bytes, int count)
{
    history_sink_drain(sink);
    write_through(sink, bytes, count);
}

void history_sink_rescue(history_sink *sink) { history_sink_drain(sink); }

#endif
