#include "tools/player/text_buffer.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static bool reserve(text_buffer *buffer, size_t more)
{
    if (buffer->failed)
        return false;
    size_t need = buffer->length + more + 1;
    if (need <= buffer->capacity)
        return true;
    size_t capacity = buffer->capacity ? buffer->capacity : 256;
    while (capacity < need)
        capacity *= 2;
    char *grown = (char *)realloc(buffer->data, capacity);
    if (!grown) {
        buffer->failed = true;
        return false;
    }
    buffer->data = grown;
    buffer->capacity = capacity;
    return true;
}

void text_append(text_buffer *buffer, const void *bytes, size_t count)
{
    if (count == 0 && buffer->data)
        return;
    if (!reserve(buffer, count))
        return;
    if (count)
        memcpy(buffer->data + buffer->length, bytes, count);
    buffer->length += count;
    buffer->data[buffer->length] = 0;
}

void text_append(text_buffer *buffer, const char *text) { text_append(buffer, text, strlen(text)); }

void text_appendf(text_buffer *buffer, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    int length = vsnprintf(nullptr, 0, format, args);
    va_end(args);
    if (length >= 0 && reserve(buffer, (size_t)length)) {
        vsnprintf(buffer->data + buffer->length, (size_t)length + 1, format, again);
        buffer->length += (size_t)length;
    }
    va_end(again);
}

void text_append_html(text_buffer *buffer, const char *text)
{
    for (const char *run = text; *text; run = text) {
        while (*text && !strchr("&<>\"", *text))
            ++text;
        text_append(buffer, run, (size_t)(text - run));
        if (!*text)
            break;
        switch (*text++) {
        case '&': text_append(buffer, "&amp;"); break;
        case '<': text_append(buffer, "&lt;"); break;
        case '>': text_append(buffer, "&gt;"); break;
        default: text_append(buffer, "&quot;"); break;
        }
    }
}

void text_free(text_buffer *buffer)
{
    free(buffer->data);
    *buffer = text_buffer{};
}

bool text_write_file(const text_buffer *buffer, const char *path)
{
    if (buffer->failed)
        return false;
    FILE *file = fopen(path, "wb");
    if (!file)
        return false;
    bool written = fwrite(buffer->data ? buffer->data : "", 1, buffer->length, file) == buffer->length;
    return fclose(file) == 0 && written;
}
