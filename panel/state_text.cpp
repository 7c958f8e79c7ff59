#include "panel/state_text.h"

#include "panel/enum_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

// A text that grows up to its room and is cut there.
struct text_cursor {
    char *out;
    int room;
    int used;
};

void put(text_cursor *text, const char *format, ...)
{
    if (text->used >= text->room - 1)
        return;
    va_list args;
    va_start(args, format);
    int written = vsnprintf(text->out + text->used, text->room - text->used, format, args);
    va_end(args);
    if (written > 0)
        text->used += written < text->room - text->used ? written : text->room - 1 - text->used;
}

// Values are floats also for names and masks: truncated toward zero. What no int can hold
// becomes the x86 conversion's answer, INT32_MIN, rather than undefined behaviour.
int32_t truncated(float value)
{
    if (!(value > -2147483648.0f && value < 2147483648.0f))
        return INT32_MIN;
    return (int32_t)value;
}

} // namespace

void state_text(const char *prefix, int32_t type, int32_t count, const float *values,
                const enumerant_row *enumerants, char *out)
{
    text_cursor text = {out, STATE_TEXT_SIZE, 0};
    out[0] = 0;
    char padding[STATE_PREFIX_SIZE] = "";
    if (prefix[0] != 0) {
        put(&text, "%.*s", STATE_PREFIX_SIZE - 1, prefix);
        snprintf(padding, sizeof padding, "%*c", (int)strnlen(prefix, STATE_PREFIX_SIZE - 1), ' ');
    }
    if (count < 0)
        count = 0;
    if (count > STATE_VALUE_COUNT)
        count = STATE_VALUE_COUNT;
    switch (type) {
    case STATE_TYPE_BOOLEAN:
    case STATE_TYPE_ENUM:
    case STATE_TYPE_HEX:
    case STATE_TYPE_REAL:
        for (int i = 0; i < count; ++i) {
            if (type == STATE_TYPE_BOOLEAN)
                put(&text, "%s ", enum_name(truncated(values[i]), boolean_names, 2));
            else if (type == STATE_TYPE_ENUM)
                put(&text, "%s ", enum_name(truncated(values[i]), enumerants, ENUMERANT_ROWS));
            else if (type == STATE_TYPE_HEX)
                put(&text, "0x%X ", (unsigned)truncated(values[i]) & 0xFFFFu);
            else
                put(&text, "%6.4f ", (double)values[i]);
        }
        put(&text, "\r\n");
        break;
    case STATE_TYPE_MATRIX:
        // Four lines whatever the count; the first stands behind the prefix.
        for (int line = 0; line < 4; ++line) {
            const float *v = values + 4 * line;
            put(&text, "%s%6.4f %6.4f %6.4f %6.4f\r\n", line == 0 ? "" : padding, (double)v[0],
                (double)v[1], (double)v[2], (double)v[3]);
        }
        break;
    case STATE_TYPE_STIPPLE:
        // Whole lines of four bytes; the values array has room behind a count that is no multiple.
        for (int i = 0; i < count && i + 4 <= STATE_VALUE_COUNT; i += 4)
            put(&text, "%s0x%X 0x%X 0x%X 0x%X\r\n", i == 0 ? "" : padding,
                (unsigned)truncated(values[i]) & 0xFFu, (unsigned)truncated(values[i + 1]) & 0xFFu,
                (unsigned)truncated(values[i + 2]) & 0xFFu, (unsigned)truncated(values[i + 3]) & 0xFFu);
        break;
    default:
        break;
    }
}

void state_save_block(const state_row *row, const state_values *values, bool current_is_fresh,
                      const enumerant_row *enumerants, char *out)
{
    text_cursor block = {out, STATE_SAVE_BLOCK_SIZE, 0};
    out[0] = 0;
    char value_text[STATE_TEXT_SIZE];
    put(&block, "%.*s\n", CALL_NAME_SIZE, row->name);
    state_text(current_is_fresh ? "Current Value: " : "Last Valid Value: ", row->type, row->count,
               values->current, enumerants, value_text);
    put(&block, "%s", value_text);
    state_text("Default Value: ", row->type, row->count, values->default_values, enumerants, value_text);
    put(&block, "%s\n", value_text);
}
