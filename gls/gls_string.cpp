#include "gls/gls_string.h"

#include "gls/gls.h"

#include <cstring>

static char *storage(GlsString *string) { return string->head ? string->head : string->storage; }

const char *gls_string_text(const GlsString *string)
{
    return string->head ? string->head : string->storage;
}

bool gls_string_append(GlsString *string, const char *text, size_t length)
{
    size_t capacity = string->head ? string->capacity : sizeof string->storage;
    size_t needed = string->length + length + 1;
    if (needed > capacity) {
        size_t grown = capacity * 2;
        while (grown < needed)
            grown *= 2;
        char *head = (char *)gls_malloc(grown);
        if (!head)
            return false;
        memcpy(head, storage(string), string->length);
        gls_free(string->head);
        string->head = head;
        string->capacity = (uint32_t)grown;
    }
    char *base = storage(string);
    memcpy(base + string->length, text, length);
    string->length += (uint32_t)length;
    base[string->length] = 0;
    return true;
}

bool gls_string_set(GlsString *string, const char *text)
{
    gls_string_clear(string);
    return gls_string_append(string, text, strlen(text));
}

void gls_string_clear(GlsString *string)
{
    string->length = 0;
    storage(string)[0] = 0;
}

void gls_string_free(GlsString *string)
{
    gls_free(string->head);
    string->head = nullptr;
    string->capacity = 0;
    string->length = 0;
    string->storage[0] = 0;
}
