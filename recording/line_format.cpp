#include "recording/line_format.h"

#include <cstdint>
#include <cstring>


// Eight bytes at a time: a statement is a few dozen bytes with its one line feed at the end.
int find_char(char c, int from, int to, const char *text)
{
    const uint64_t ones = 0x0101010101010101ull, highs = 0x8080808080808080ull;
    const uint64_t pattern = ones * (unsigned char)c;
    int i = from;
    for (; i + 8 <= to; i += 8) {
        uint64_t word;
        __builtin_memcpy(&word, text + i, 8);
        word ^= pattern;
        uint64_t found = (word - ones) & ~word & highs;
        if (found)
            return i + __builtin_ctzll(found) / 8; // the lowest match is exact: little-endian
    }
    for (; i < to; ++i)
        if (text[i] == c)
            return i;
    return -1;
}

const char *find_char_ptr(char c, int count, const char *text)
{
    return (const char *)memchr(text, c, (size_t)(count > 0 ? count : 0));
}

bool shorten_data(int count, const char *text, char *out)
{
    int p = find_char('{', 0, count, text);
    if (p < 0)
        return false;
    // The comma search runs on behind a closing brace: commas after the array count too.
    for (int i = 0; i < SHORTENED_COMMAS; ++i) {
        p = find_char(',', p + 1, count, text);
        if (p < 0)
            return false;
    }
    int keep = p + 1;
    int q = find_char('}', keep, count, text);
    if (q < 0)
        return false;
    // A piece whose shortened form would not fit the buffer is written whole instead.
    if (keep + 4 + (count - q) >= SHORTEN_BUFFER)
        return false;
    int written = snprintf(out, SHORTEN_BUFFER, "%.*s ...", keep, text);
    snprintf(out + written, (size_t)(SHORTEN_BUFFER - written), "%.*s", count - q, text + q);
    return true;
}

// A copy of a line's few dozen bytes in moves of fixed size, the last ones overlapping, instead
// of a call into the C library.
static inline void copy_bytes(char *to, const char *from, int count)
{
    if (count >= 16) {
        int i = 0;
        for (; i + 16 <= count; i += 16)
            __builtin_memcpy(to + i, from + i, 16);
        if (i < count)
            __builtin_memcpy(to + count - 16, from + count - 16, 16);
    } else if (count >= 8) {
        __builtin_memcpy(to, from, 8);
        __builtin_memcpy(to + count - 8, from + count - 8, 8);
    } else {
        for (int i = 0; i < count; ++i)
            to[i] = from[i];
    }
}

static void output_put(history_sink *out, const char *text, int count)
{
    if (count > HISTORY_SINK_SIZE - out->used) {
        if (count > HISTORY_SINK_SIZE) {
            history_sink_write_through(out, text, count);
            return;
        }
        history_sink_pass(out);
    }
    if (count > 256)
        memcpy(out->data + out->used, text, (size_t)count);
    else
        copy_bytes(out->data + out->used, text, count);
    out->used += count;
}

static void output_line(history_sink *out, int indent, const char *text, int count, bool line_end)
{
    // The indent stands in for the format "%*c" with a blank: at least one character.
    if (indent > 0) {
        char blanks[64];
        int width = indent < 1 ? 1 : indent;
        while (width > 0) {
            int take = width < (int)sizeof blanks ? width : (int)sizeof blanks;
            memset(blanks, ' ', (size_t)take);
            output_put(out, blanks, take);
            width -= take;
        }
    }
    output_put(out, text, count);
    if (line_end)
        output_put(out, HISTORY_LINE_END, (int)sizeof HISTORY_LINE_END - 1);
}

// The usual piece: one statement at depth 0, its only line feed at its end. Its words are
// copied while they are searched for another line feed; one found leaves the sink as it was.
static bool put_one_line(history_sink *out, int count, const char *text)
{
    const int line_end = (int)sizeof HISTORY_LINE_END - 1;
    int last = count - 1;
    if (last < 8 || count > 256 || text[last] != '\n' || last + line_end > HISTORY_SINK_SIZE - out->used)
        return false;
    const uint64_t ones = 0x0101010101010101ull, highs = 0x8080808080808080ull, feeds = ones * '\n';
    char *to = out->data + out->used;
    auto take = [&](int at) {
        uint64_t word;
        __builtin_memcpy(&word, text + at, 8);
        uint64_t x = word ^ feeds;
        __builtin_memcpy(to + at, &word, 8);
        return ((x - ones) & ~x & highs) == 0;
    };
    for (int i = 0; i + 8 < last; i += 8)
        if (!take(i))
            return false;
    if (!take(last - 8)) // the last word overlaps the one before
        return false;
    __builtin_memcpy(to + last, HISTORY_LINE_END, line_end);
    out->used += last + line_end;
    return true;
}

void history_format(history_sink *out, int count, const char *text, int call_depth, bool limit_data_dumps)
{
    if (call_depth <= 0 && !limit_data_dumps && put_one_line(out, count, text))
        return;
    char shortened[SHORTEN_BUFFER];
    if (limit_data_dumps && shorten_data(count, text, shortened)) {
        text = shortened;
        count = (int)strlen(shortened);
    }
    int indent = call_depth > 0 ? call_depth * INDENT_PER_DEPTH : 0;
    int start = 0;
    for (;;) {
        int end = find_char('\n', start, count, text);
        if (end < 0)
            break;
        output_line(out, indent, text + start, end - start, true);
        start = end + 1;
    }
    if (start == 0) {
        // No line feed at all: the piece goes on the current line.
        output_line(out, indent, text, count, false);
    } else if (start < count) {
        // Only the unindented rest gets a line end.
        output_line(out, indent, text + start, count - start, call_depth <= 0);
    }
    if (count > LONG_PIECE)
        history_sink_drain(out);
}

void last_call_format(int count, const char *text, char *field)
{
    bool long_piece = count > LONG_PIECE;
    // The last byte is taken to be the line feed that ends the command.
    bool has_line_end = count > 1 && find_char_ptr('\n', count - 1, text) != nullptr;
    if (!has_line_end) {
        if (long_piece) {
            snprintf(field, LAST_CALL_TEXT_SIZE, "%.*s...", (int)LONG_PIECE_KEPT, text);
        } else if (count > 0) {
            memcpy(field, text, (size_t)count);
            field[count - 1] = 0;
        } else {
            field[0] = 0;
        }
        return;
    }
    // Room for the three points and the terminator stays free, so that the cut survives.
    const int room = LAST_CALL_TEXT_SIZE - 4;
    int limit = long_piece ? LONG_PIECE_KEPT : count;
    int length = 0;
    int start = 0;
    while (start < limit && length < room) {
        int end = find_char('\n', start, limit, text);
        int line_end = end < 0 ? limit : end;
        int take = line_end - start;
        if (take > room - length)
            take = room - length;
        memcpy(field + length, text + start, (size_t)take);
        length += take;
        if (end < 0)
            break;
        if (length + 2 <= room) {
            field[length++] = '\r';
            field[length++] = '\n';
        }
        start = end + 1;
    }
    if (long_piece) {
        memcpy(field + length, "...", 3);
        length += 3;
    } else {
        length = length >= 2 ? length - 2 : 0;
    }
    field[length] = 0;
}
