// The history sink's way to its file. On Windows a full buffer goes to a writer thread of the
// sink's own, so that the program's thread does not wait for the system's file writes; anything
// that reads the file, or ends it, drains first and finds the file complete.
#include "recording/line_format.h"

#if defined(_WIN32)
#  include <io.h>
#  include <windows.h>
#endif

#if defined(_WIN32)

// Writes bytes at their own place in the file: a second write of the same bytes, by a rescue
// while the writer thread is still at it, leaves the file as it was.
static void write_at(void *handle, const char *bytes, int count, uint64_t offset)
{
    if (!handle || count <= 0)
        return;
    OVERLAPPED place = {};
    place.Offset = (DWORD)offset;
    place.OffsetHigh = (DWORD)(offset >> 32);
    DWORD written;
    WriteFile((HANDLE)handle, bytes, (DWORD)count, &written, &place);
}

static DWORD WINAPI sink_writer(void *parameter)
{
    history_sink *sink = (history_sink *)parameter;
    for (;;) {
        WaitForSingleObject((HANDLE)sink->work_event, INFINITE);
        write_at(sink->flight_handle, sink->flight_data, sink->flight_count, sink->flight_offset);
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
    write_at(sink->handle, sink->data, sink->used, sink->offset);
    sink->offset += (uint64_t)(sink->used > 0 ? sink->used : 0);
    sink->used = 0;
}

void history_sink_write_through(history_sink *sink, const char *bytes, int count)
{
    history_sink_drain(sink);
    write_at(sink->handle, bytes, count, sink->offset);
    sink->offset += (uint64_t)count;
}

void history_sink_rescue(history_sink *sink)
{
    // Nothing changes and nothing waits: the writer thread may be gone with the program's end,
    // and a program that goes on after a fault writes the same bytes again, in the same place.
    if (sink->in_flight)
        write_at(sink->flight_handle, sink->flight_data, sink->flight_count, sink->flight_offset);
    write_at(sink->handle, sink->data, sink->used, sink->offset);
}

#else

// Natively the sink is the file's: plain writes in order.
void history_sink_start(history_sink *sink, FILE *file)
{
    sink->file = file;
    sink->handle = nullptr;
    sink->data = sink->buffers[0];
    sink->used = 0;
}

void history_sink_drain(history_sink *sink)
{
    if (sink->file && sink->used > 0)
        fwrite(sink->data, 1, (size_t)sink->used, sink->file);
    sink->used = 0;
}

void history_sink_pass(history_sink *sink) { history_sink_drain(sink); }

void history_sink_write_through(history_sink *sink, const char *bytes, int count)
{
    history_sink_drain(sink);
    if (sink->file)
        fwrite(bytes, 1, (size_t)count, sink->file);
}

void history_sink_rescue(history_sink *sink) { history_sink_drain(sink); }

#endif
