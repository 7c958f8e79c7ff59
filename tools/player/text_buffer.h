// A growing block of bytes for the texts and files the player makes. A failed allocation leaves
// the block as it was and sets `failed`, which the writer of the file then reports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

struct text_buffer {
    char *data;
    size_t length;
    size_t capacity;
    bool failed;
};

void text_append(text_buffer *buffer, const void *bytes, size_t count);
void text_append(text_buffer *buffer, const char *text);
void text_appendf(text_buffer *buffer, const char *format, ...) __attribute__((format(printf, 2, 3)));
// Text with &, <, > and " as HTML writes them.
void text_append_html(text_buffer *buffer, const char *text);
void text_free(text_buffer *buffer);
// The whole buffer into a file; false when it could not be written.
bool text_write_file(const text_buffer *buffer, const char *path);

// Room for one more item in a growing array of *capacity items; false (the array as it was) when
// there is no memory for it.
template <typename T> bool grow_items(T **items, int count, int *capacity)
{
    if (count < *capacity)
        return true;
    int more = *capacity ? *capacity * 2 : 64;
    T *grown = (T *)realloc(*items, (size_t)more * sizeof(T));
    if (!grown)
        return false;
    *items = grown;
    *capacity = more;
    return true;
}
