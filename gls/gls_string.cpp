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
    return !text || gls_string_append(string, text, strlen(text));
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

bool gls_string_append_utf8(GlsString *string, uint32_t c)
{
    char bytes[4];
    size_t length;
    if (c < 0x80) {
        bytes[0] = (char)c;
        length = 1;
    } else if (c < 0x800) {
        bytes[0] = (char)(0xC0 | c >> 6);
        bytes[1] = (char)(0x80 | (c & 0x3F));
        length = 2;
    } else if (c < 0x10000) {
        bytes[0] = (char)(0xE0 | c >> 12);
        bytes[1] = (char)(0x80 | (c >> 6 & 0x3F));
        bytes[2] = (char)(0x80 | (c & 0x3F));
        length = 3;
    } else {
        bytes[0] = (char)(0xF0 | (c >> 18 & 0x07));
        bytes[1] = (char)(0x80 | (c >> 12 & 0x3F));
        bytes[2] = (char)(0x80 | (c >> 6 & 0x3F));
        bytes[3] = (char)(0x80 | (c & 0x3F));
        length = 4;
    }
    return gls_string_append(string, bytes, length);
}

static int unit_width(GLSenum type) { return type == GLS_UCS2 ? 2 : type == GLS_UCS4 ? 4 : 1; }

const char *gls_utf8_name(const GlsContext *ctx, const GLubyte *name, GlsString *scratch)
{
    if (!name)
        return nullptr;
    int width = unit_width(ctx ? ctx->stringType : GLS_UCS1);
    if (width == 1) {
        const GLubyte *p = name;
        while (*p && *p < 0x80)
            ++p;
        if (!*p)
            return (const char *)name;
    }
    gls_string_clear(scratch);
    for (const uint8_t *p = name;; p += width) {
        uint32_t c = 0;
        memcpy(&c, p, (size_t)width); // little-endian host: the unit lands in the low bytes
        if (c == 0)
            break;
        if (!gls_string_append_utf8(scratch, c))
            return nullptr;
    }
    return gls_string_text(scratch);
}

// Decodes one UTF-8 character; 0 bytes used means a broken sequence.
static size_t decode_utf8(const uint8_t *p, size_t left, uint32_t *c)
{
    uint8_t lead = p[0];
    if (lead < 0x80) {
        *c = lead;
        return 1;
    }
    size_t extra = lead >= 0xF0 && lead < 0xF8 ? 3 : lead >= 0xE0 && lead < 0xF0 ? 2 : lead >= 0xC0 && lead < 0xE0 ? 1 : 0;
    if (extra == 0 || extra >= left)
        return 0;
    uint32_t value = lead & (0x3F >> extra);
    for (size_t i = 1; i <= extra; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        value = value << 6 | (p[i] & 0x3F);
    }
    *c = value;
    return extra + 1;
}

bool gls_string_from_utf8(GlsString *out, const char *utf8, size_t length, GLSenum type)
{
    int width = unit_width(type);
    uint32_t limit = width == 1 ? 0xFF : width == 2 ? 0xFFFF : 0x7FFFFFFF;
    gls_string_clear(out);
    const uint8_t *p = (const uint8_t *)utf8, *end = p + length;
    while (p < end) {
        uint32_t c;
        size_t used = decode_utf8(p, (size_t)(end - p), &c);
        if (used == 0 || c > limit)
            return false;
        p += used;
        if (!gls_string_append(out, (const char *)&c, (size_t)width))
            return false;
    }
    // The zero unit is part of the text; the append adds one more zero byte behind it.
    static const char zeros[4] = {0, 0, 0, 0};
    return gls_string_append(out, zeros, (size_t)width);
}

const GLubyte *gls_return_string(GlsContext *ctx, const char *utf8)
{
    GlsString *result = &ctx->returnString;
    if (ctx->stringType == GLS_UCS1) {
        const uint8_t *p = (const uint8_t *)utf8;
        while (*p && *p < 0x80)
            ++p;
        if (!*p)
            return gls_string_set(result, utf8) ? (const GLubyte *)gls_string_text(result) : nullptr;
    }
    GlsString converted = {};
    bool ok = gls_string_from_utf8(&converted, utf8, strlen(utf8), ctx->stringType);
    if (ok) {
        gls_string_clear(result);
        ok = gls_string_append(result, gls_string_text(&converted), converted.length);
    }
    gls_string_free(&converted);
    return ok ? (const GLubyte *)gls_string_text(result) : nullptr;
}
