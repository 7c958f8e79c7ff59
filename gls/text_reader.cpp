// The text parser: the statements of a text group read back by the descriptors of the commands.
// It accepts more than the writer writes: hexadecimal, character constants, GLS_NAN, comments,
// strings in pieces. A fault in one statement is reported through the glsError row and the
// parser goes on at the next statement; only the end of the data ends a group early.
#include "gls/decode.h"

#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/containers.h"
#include "gls/gls.h"
#include "gls/gls_string.h"
#include "gls/names.h"
#include "gls/tables.h"

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>

// Character classes: 1 printable, 2 white space, 4 name character.
enum : uint8_t { PRINTABLE = 1, WHITE = 2, NAME = 4 };

static uint8_t char_class(int c)
{
    if (c < 0 || c > 126)
        return 0;
    if (c == ' ' || (c >= 9 && c <= 13))
        return PRINTABLE | WHITE;
    if (c < 32)
        return 0;
    if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
        c == '+' || c == '-' || c == '.')
        return PRINTABLE | NAME;
    return PRINTABLE;
}

// ---------------------------------------------------------------------------------------------
// Bytes and tokens

// The next byte, or -1 at the end of the data.
static int peek(GlsReader *r)
{
    if (r->cursor == r->limit && !gls_refill(r, 1, false))
        return -1;
    return *r->cursor;
}

static int take(GlsReader *r)
{
    int c = peek(r);
    if (c >= 0)
        ++r->cursor;
    return c;
}

static void fail(GlsReader *r, GLSenum error)
{
    if (!r->error)
        r->error = (uint32_t)error;
}

// Blanks and "#" comments up to the end of their line.
static void skip_blanks(GlsReader *r)
{
    for (;;) {
        int c = peek(r);
        if (c == '#') {
            while (c >= 0 && c != '\n' && c != '\r') {
                ++r->cursor;
                c = peek(r);
            }
        } else if (c >= 0 && (char_class(c) & WHITE)) {
            ++r->cursor;
        } else {
            return;
        }
    }
}

static bool get_name(GlsReader *r, GlsString *name)
{
    gls_string_clear(name);
    skip_blanks(r);
    int c = peek(r);
    if (c == '\'') {
        // A character constant: a printable character between single quotes.
        char text[3];
        text[0] = (char)take(r);
        int value = take(r);
        int close = value >= 0 && (char_class(value) & PRINTABLE) ? take(r) : -1;
        if (close != '\'') {
            fail(r, GLS_DECODE_ERROR);
            return false;
        }
        text[1] = (char)value;
        text[2] = '\'';
        return gls_string_append(name, text, 3) || (fail(r, GLS_RESOURCE_ERROR), false);
    }
    while (c >= 0 && (char_class(c) & NAME)) {
        if (name->length == GLS_NAME_LIMIT) {
            fail(r, GLS_DECODE_ERROR);
            return false;
        }
        char ch = (char)c;
        if (!gls_string_append(name, &ch, 1)) {
            fail(r, GLS_RESOURCE_ERROR);
            return false;
        }
        ++r->cursor;
        c = peek(r);
    }
    if (name->length == 0) {
        fail(r, GLS_DECODE_ERROR);
        return false;
    }
    return true;
}

static bool expect(GlsReader *r, int character, bool required)
{
    skip_blanks(r);
    if (peek(r) == character) {
        ++r->cursor;
        return true;
    }
    if (required)
        fail(r, GLS_DECODE_ERROR);
    return false;
}

// The head of every argument: nothing after an error, a comma between arguments.
static bool begin_argument(GlsReader *r)
{
    if (r->error)
        return false;
    if (r->argIndex && !expect(r, ',', true))
        return false;
    ++r->argIndex;
    return true;
}

// Up to the next semicolon outside a string; false when the data ends first.
static bool skip_statement(GlsReader *r)
{
    bool in_string = false;
    int before = 0;
    for (int c; (c = take(r)) >= 0; before = c) {
        if (c == '"' && (!in_string || before != '\\'))
            in_string = !in_string;
        else if (c == ';' && !in_string)
            return true;
    }
    return false;
}

// ---------------------------------------------------------------------------------------------
// Numbers

static const GlsDictionarySet *dictionaries;

static bool lookup(GlsDict *dict, const char *name, uint64_t *value)
{
    intptr_t found;
    if (!dict || !gls_dict_find(dict, name, &found))
        return false;
    *value = (uint64_t)(uint32_t)found;
    return true;
}

// The GL enumerants first, then the GLS ones.
static bool enumerant(const char *text, uint64_t *value)
{
    return dictionaries && (lookup(dictionaries->glEnumDict, text, value) || lookup(dictionaries->glsEnumDict, text, value));
}

static int hex_digit(int c)
{
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// Decimal (with a sign where allowed), hexadecimal of up to `bits` bits, a character constant,
// then the GL and GLS enumerants. `limit` is the type's largest value; a negative value may
// reach limit + 1. The value comes back as the two's complement bits.
static bool integer_rule(const char *text, bool is_signed, uint64_t limit, int bits, uint64_t *value)
{
    const char *p = text;
    bool negative = is_signed && *p == '-';
    if (negative)
        ++p;
    if (*p >= '0' && *p <= '9') {
        uint64_t bound = negative ? limit + 1 : limit, v = 0;
        const char *q = p;
        while (*q >= '0' && *q <= '9' && v <= (bound - (uint64_t)(*q - '0')) / 10) {
            v = v * 10 + (uint64_t)(*q - '0');
            ++q;
        }
        if (*q == 0) {
            *value = negative ? (uint64_t)0 - v : v;
            return true;
        }
    }
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && text[2]) {
        uint64_t v = 0;
        int digits = 0;
        const char *q = text + 2;
        while (*q == '0')
            ++q;
        for (; *q && hex_digit(*q) >= 0; ++q, ++digits)
            v = v << 4 | (uint64_t)hex_digit(*q);
        if (*q == 0 && digits * 4 <= bits && v <= limit) {
            *value = v;
            return true;
        }
    }
    if (text[0] == '\'' && text[1] && text[2] == '\'' && text[3] == 0) {
        *value = (uint8_t)text[1];
        return true;
    }
    return enumerant(text, value) && *value <= limit;
}

static int decimal_point(GlsContext *ctx)
{
    if (ctx->glInfo.decimalPoint == -1) {
        const char *point = localeconv()->decimal_point;
        ctx->glInfo.decimalPoint = point && point[0] && point[0] != '.' ? point[0] : 0;
    }
    return ctx->glInfo.decimalPoint;
}

// Digits and a point up to an exponent, converted whole; refused when it overflows or a
// non-zero number underflows to 0.
static bool number_rule(GlsContext *ctx, const char *text, double *value)
{
    bool negative = *text == '-';
    const char *p = text + negative;
    char copy[GLS_NAME_LIMIT + 1];
    size_t length = strlen(p);
    if (length == 0 || length > GLS_NAME_LIMIT)
        return false;
    bool nonzero = false, digit = false;
    for (const char *q = p; *q && *q != 'e' && *q != 'E'; ++q) {
        if (*q >= '0' && *q <= '9') {
            digit = true;
            nonzero |= *q != '0';
        } else if (*q != '.') {
            return false;
        }
    }
    if (!digit)
        return false;
    memcpy(copy, p, length + 1);
    if (int point = decimal_point(ctx))
        for (char *q = copy; *q; ++q)
            if (*q == '.')
                *q = (char)point;
    char *end;
    double v = strtod(copy, &end);
    if (*end != 0 || (nonzero && v == 0) || v > DBL_MAX)
        return false;
    *value = negative ? -v : v;
    return true;
}

static bool float_rule(GlsContext *ctx, const char *text, float *value)
{
    double d;
    if (number_rule(ctx, text, &d)) {
        double magnitude = std::fabs(d);
        if (magnitude != 0 && (magnitude < 1.1754943508222875e-38 || magnitude > 3.4028234663852886e38))
            return false;
        *value = (float)d;
        return true;
    }
    uint64_t bits;
    uint32_t pattern;
    if (text[0] == '0' && integer_rule(text, false, 0xFFFFFFFFu, 32, &bits)) {
        pattern = (uint32_t)bits;
    } else if (!strcmp(text, "GLS_NAN")) {
        pattern = 0xFFFFFFFFu;
    } else if (!strcmp(text, "GLS_INF") || !strcmp(text, "-GLS_INF")) {
        pattern = text[0] == '-' ? 0xFF800000u : 0x7F800000u;
    } else if (enumerant(text, &bits)) {
        *value = (float)bits;
        return true;
    } else {
        return false;
    }
    memcpy(value, &pattern, 4);
    return true;
}

static bool double_rule(GlsContext *ctx, const char *text, double *value)
{
    if (number_rule(ctx, text, value))
        return true;
    uint64_t bits;
    if (text[0] == '0' && integer_rule(text, false, UINT64_MAX, 64, &bits)) {
    } else if (!strcmp(text, "GLS_NAN")) {
        bits = UINT64_MAX;
    } else if (!strcmp(text, "GLS_INF") || !strcmp(text, "-GLS_INF")) {
        bits = text[0] == '-' ? 0xFFF0000000000000ull : 0x7FF0000000000000ull;
    } else if (enumerant(text, &bits)) {
        *value = (double)bits;
        return true;
    } else {
        return false;
    }
    memcpy(value, &bits, 8);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Elements and scalars

struct ElementLimit {
    bool is_signed;
    uint64_t limit;
};

static const ElementLimit element_limits[] = {
    {true, 127}, {false, 255}, {false, 255}, {true, 32767}, {false, 65535},
    {true, 2147483647}, {false, 4294967295u}, {false, 0}, {false, 0}, {true, INT64_MAX},
};

static void store_element(uint8_t *at, GlsElement element, const GlsArgValue *value)
{
    switch (element) {
    case GLS_ELEMENT_BYTE: case GLS_ELEMENT_UBYTE: case GLS_ELEMENT_BOOLEAN: *at = (uint8_t)value->u; break;
    case GLS_ELEMENT_SHORT: case GLS_ELEMENT_USHORT: { uint16_t v = (uint16_t)value->u; memcpy(at, &v, 2); break; }
    case GLS_ELEMENT_INT: case GLS_ELEMENT_UINT: { uint32_t v = (uint32_t)value->u; memcpy(at, &v, 4); break; }
    case GLS_ELEMENT_FLOAT: memcpy(at, &value->f, 4); break;
    case GLS_ELEMENT_DOUBLE: memcpy(at, &value->d, 8); break;
    case GLS_ELEMENT_LONG: memcpy(at, &value->i, 8); break;
    }
}

// One name token by the rule of its element and of the names it may take.
static bool element_value(GlsReader *r, GlsContext *ctx, GlsElement element, GlsArgName name, GlsArgValue *value)
{
    if (!get_name(r, &r->token))
        return false;
    const char *text = gls_string_text(&r->token);
    uint64_t bits = 0;
    bool ok;
    switch (element) {
    case GLS_ELEMENT_FLOAT:
        ok = float_rule(ctx, text, &value->f);
        break;
    case GLS_ELEMENT_DOUBLE:
        ok = double_rule(ctx, text, &value->d);
        break;
    case GLS_ELEMENT_BOOLEAN:
        ok = !strcmp(text, "GL_FALSE") ? (bits = 0, true) : !strcmp(text, "GL_TRUE") ? (bits = 1, true)
             : text[0] != '-' && integer_rule(text, false, 255, 32, &bits) && text[0] != 'G';
        value->u = bits;
        break;
    default: {
        const ElementLimit &limit = element_limits[element];
        if (name == GLS_NAME_OPCODE && !strncmp(text, "GLS_OP_", 7)) {
            ok = dictionaries && lookup(dictionaries->glsOpDict, text + 7, &bits);
        } else if (name == GLS_NAME_ENUM || name == GLS_NAME_GLS_ENUM) {
            GlsDict *first = name == GLS_NAME_ENUM ? dictionaries->glEnumDict : dictionaries->glsEnumDict;
            // An enumerant without a name is written as a signed number.
            ok = lookup(first, text, &bits) || integer_rule(text, true, limit.limit, 32, &bits);
        } else {
            ok = integer_rule(text, limit.is_signed, limit.limit, element == GLS_ELEMENT_LONG ? 64 : 32, &bits);
        }
        value->u = limit.is_signed ? (uint64_t)(element == GLS_ELEMENT_LONG ? (int64_t)bits : (int64_t)(int32_t)bits) : bits;
        if (element == GLS_ELEMENT_UINT || element == GLS_ELEMENT_USHORT || element == GLS_ELEMENT_UBYTE)
            value->u = bits & limit.limit;
        break;
    }
    }
    if (!ok)
        fail(r, GLS_DECODE_ERROR);
    return ok;
}

// A mask: names or numbers joined by "|".
static bool mask_value(GlsReader *r, GlsArgName name, GlsArgValue *value)
{
    GlsDict *dict = name == GLS_NAME_ATTRIB_MASK ? dictionaries->glAttribMaskDict : dictionaries->glClientAttribMaskDict;
    uint64_t mask = 0;
    do {
        if (!get_name(r, &r->token))
            return false;
        uint64_t bits;
        const char *text = gls_string_text(&r->token);
        if (!lookup(dict, text, &bits) && !integer_rule(text, false, 0xFFFFFFFFu, 32, &bits)) {
            fail(r, GLS_DECODE_ERROR);
            return false;
        }
        mask |= bits;
    } while (expect(r, '|', false));
    value->u = mask;
    return true;
}

// ---------------------------------------------------------------------------------------------
// Strings and arrays

static bool append_char(GlsReader *r, GlsString *text, uint32_t c)
{
    if (gls_string_append_utf8(text, c))
        return true;
    fail(r, GLS_RESOURCE_ERROR);
    return false;
}

// A string in one or more pieces, gathered as UTF-8 and handed out in the context's type.
static bool string_value(GlsReader *r, GlsContext *ctx, GlsString *text, int slot, const void **out)
{
    if (!expect(r, '"', true))
        return false;
    gls_string_clear(text);
    bool bad = false;
    for (;;) {
        int c = take(r);
        if (c <= 0) {
            fail(r, GLS_DECODE_ERROR);
            return false;
        }
        if (c == '\\') {
            int next = take(r);
            if (next == '"' || next == '\\') {
                if (!append_char(r, text, (uint32_t)next))
                    return false;
            } else if (next == '<') {
                uint32_t value = 0;
                int digits = 0, d;
                while ((d = hex_digit(peek(r))) >= 0 && digits < 9) {
                    value = value << 4 | (uint32_t)d;
                    ++digits;
                    ++r->cursor;
                }
                if (digits == 0 || digits > 8 || value > 0x7FFFFFFF || take(r) != '>')
                    bad = true;
                else if (!append_char(r, text, value))
                    return false;
            } else {
                bad = true;
            }
        } else if (c == '"') {
            skip_blanks(r);
            if (peek(r) != '"')
                break;
            ++r->cursor;
        } else if (!(char_class(c) & PRINTABLE)) {
            bad = true;
        } else if (!append_char(r, text, (uint32_t)c)) {
            return false;
        }
    }
    if (bad) {
        fail(r, GLS_DECODE_ERROR);
        return false;
    }
    const char *utf8 = gls_string_text(text);
    bool seven_bit = true;
    for (const char *p = utf8; *p; ++p)
        seven_bit &= (uint8_t)*p < 0x80;
    if (seven_bit && ctx->stringType == GLS_UCS1) {
        *out = utf8;
        return true;
    }
    GlsString converted = {};
    bool ok = gls_string_from_utf8(&converted, utf8, text->length, ctx->stringType);
    if (ok && r->slotSizes[slot] < converted.length) {
        uint8_t *grown = (uint8_t *)gls_malloc(converted.length);
        ok = grown != nullptr;
        if (ok) {
            gls_free(r->slots[slot]);
            r->slots[slot] = grown;
            r->slotSizes[slot] = converted.length;
        }
    }
    if (ok)
        memcpy(r->slots[slot], gls_string_text(&converted), converted.length);
    gls_string_free(&converted);
    if (!ok) {
        fail(r, GLS_RESOURCE_ERROR);
        return false;
    }
    *out = r->slots[slot];
    return true;
}

// Room for `bytes` in a slot; it grows as elements arrive, never ahead of the text.
static uint8_t *slot_room(GlsReader *r, int slot, size_t bytes)
{
    if (bytes <= r->slotSizes[slot])
        return r->slots[slot];
    size_t grown = r->slotSizes[slot] ? r->slotSizes[slot] * 2 : 256;
    while (grown < bytes)
        grown *= 2;
    uint8_t *block = (uint8_t *)gls_malloc(grown);
    if (!block)
        return nullptr;
    if (r->slotSizes[slot])
        memcpy(block, r->slots[slot], r->slotSizes[slot]);
    gls_free(r->slots[slot]);
    r->slots[slot] = block;
    r->slotSizes[slot] = grown;
    return block;
}

// Packed colour formats of glsDrawVertexArray: floats, four colour bytes, floats a vertex.
struct PackedLayout {
    GLenum format;
    uint32_t stride;
    uint32_t floatsBefore;
    uint32_t floatsAfter;
};

static const PackedLayout packed_layouts[3] = {
    {GL_C4UB_V2F, 12, 0, 2},
    {GL_C4UB_V3F, 16, 0, 3},
    {GL_T2F_C4UB_V3F, 24, 2, 3},
};

// A braced list of `count` elements into a slot.
static bool array_value(GlsReader *r, GlsContext *ctx, const GlsArgDesc *d, const GlsArgValue *values,
                        int slot, const void **out)
{
    GlsArrayShape shape = gls_array_shape(d, values);
    const PackedLayout *packed = nullptr;
    uint64_t vertices = 0;
    bool bad_format = false;
    if (d->kind == GLS_ARG_VERTEX_DATA) {
        GLenum format = (GLenum)values[d->refs[0]].u;
        bad_format = format < GL_V2F || format > GL_T4F_C4F_N3F_V4F;
        for (const PackedLayout &layout : packed_layouts)
            if (layout.format == format)
                packed = &layout;
        if (packed) {
            int64_t count = values[d->refs[1]].i;
            vertices = count > 0 ? (uint64_t)count : 0;
            shape.count = vertices * (packed->floatsBefore + 4 + packed->floatsAfter);
        }
    }
    if (!expect(r, '{', true))
        return false;
    if (expect(r, '}', false)) {
        // What the writer gives a null pointer. An image reads back as none, as the binary forms
        // carry it (a texture made without data). Where elements are due the command is refused,
        // as a binary item without its bytes is: GL is handed neither zeros nor a null pointer.
        uint64_t bytes = d->kind == GLS_ARG_VERTEX_DATA
            ? gls_vertex_data_bytes((GLenum)values[d->refs[0]].u, (GLint)values[d->refs[1]].i)
            : shape.count * shape.width;
        if (d->kind == GLS_ARG_IMAGE || d->kind == GLS_ARG_BITMAP || bytes == 0) {
            *out = nullptr;
            return true;
        }
        r->emptyItem = 1;
        fail(r, GLS_DECODE_ERROR);
        return false;
    }
    if (bad_format) {
        // The writer gives such a format no data: elements are a fault of the stream.
        fail(r, GLS_DECODE_ERROR);
        return false;
    }
    size_t used = 0;
    for (uint64_t i = 0; i < shape.count; ++i) {
        if (i && !expect(r, ',', true))
            return false;
        GlsElement element = shape.element;
        size_t width = shape.width;
        size_t at = used;
        if (packed) {
            uint32_t k = (uint32_t)(i % (packed->floatsBefore + 4 + packed->floatsAfter));
            bool color = k >= packed->floatsBefore && k < packed->floatsBefore + 4;
            element = color ? GLS_ELEMENT_UBYTE : GLS_ELEMENT_FLOAT;
            width = color ? 1 : 4;
        }
        GlsArgValue value;
        if (!element_value(r, ctx, element, GLS_NAME_NUMBER, &value))
            return false;
        uint8_t *room = slot_room(r, slot, at + width);
        if (!room) {
            fail(r, GLS_RESOURCE_ERROR);
            return false;
        }
        store_element(room + at, element, &value);
        used = at + width;
    }
    expect(r, ',', false);
    if (!expect(r, '}', true))
        return false;
    *out = slot_room(r, slot, used ? used : 1);
    if ((d->kind == GLS_ARG_IMAGE || d->kind == GLS_ARG_BITMAP) && used)
        gls_prepare_unpack(ctx);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Statements

void gls_text_command(GlsReader *r, int opcode)
{
    GlsContext *ctx = gls_current();
    const GlsCommandDesc *command = &gls_command_descs[opcode];
    GlsArgValue values[GLS_MAX_CALL_ARGS] = {};
    int slot = 0, string_index = 0;
    for (int i = 0; i < command->count && !r->error; ++i) {
        const GlsArgDesc *d = &command->args[i];
        GlsArgValue *value = d->arg >= 0 ? &values[d->arg] : nullptr;
        switch (d->kind) {
        case GLS_ARG_PAD:
            break;
        case GLS_ARG_IMAGE_FLAGS: {
            if (!begin_argument(r) || !get_name(r, &r->token))
                break;
            uint64_t flags;
            const char *text = gls_string_text(&r->token);
            if (!lookup(dictionaries->glsImageFlagsDict, text, &flags) && !integer_rule(text, false, 0xFFFFFFFFu, 32, &flags))
                fail(r, GLS_DECODE_ERROR);
            else if (flags != 0)
                fail(r, GLS_PARAMETER_ERROR);
            expect(r, ')', true);
            expect(r, '(', true);
            r->argIndex = 0;
            break;
        }
        case GLS_ARG_SCALAR:
            if (begin_argument(r)) {
                if (d->name == GLS_NAME_ATTRIB_MASK || d->name == GLS_NAME_CLIENT_ATTRIB_MASK)
                    mask_value(r, d->name, value);
                else
                    element_value(r, ctx, d->element, d->name, value);
            }
            break;
        case GLS_ARG_OUT:
        case GLS_ARG_POINTER: {
            // An address of the writing process, as an unsigned 64-bit number.
            uint64_t number;
            if (!begin_argument(r) || !get_name(r, &r->token))
                break;
            if (!integer_rule(gls_string_text(&r->token), false, UINT64_MAX, 64, &number)) {
                fail(r, GLS_DECODE_ERROR);
                break;
            }
            ctx->outArgPointers[d->refs[0]] = number;
            if (d->kind == GLS_ARG_POINTER)
                value->p = (const void *)(uintptr_t)number;
            else if (!(value->p = gls_out_area(ctx, opcode, values)))
                fail(r, GLS_RESOURCE_ERROR);
            break;
        }
        case GLS_ARG_STRING:
            if (begin_argument(r) && string_index < GLS_MAX_STRING_ARGS && slot < GLS_TEXT_SLOTS)
                string_value(r, ctx, &r->strings[string_index++], slot++, &value->p);
            break;
        default:
            if (begin_argument(r) && slot < GLS_TEXT_SLOTS)
                array_value(r, ctx, d, values, slot++, &value->p);
            break;
        }
    }
    if (!r->error) {
        command->call(ctx->callDispatch[opcode], values);
        gls_note_pixel_store(ctx, opcode, values);
    }
}

static bool begin_statement(GlsReader *r)
{
    r->error = 0;
    r->emptyItem = 0;
    r->argIndex = 0;
    return get_name(r, &r->token) && expect(r, '(', true);
}

static bool end_statement(GlsReader *r)
{
    if (!r->error) {
        expect(r, ')', true);
        expect(r, ';', true);
    }
    return r->error == 0;
}

void gls_text_skip_blanks(GlsReader *r) { skip_blanks(r); }

bool gls_text_start(GlsReader *r)
{
    if (!dictionaries)
        dictionaries = gls_dictionaries();
    if (!dictionaries)
        return false;
    uint32_t saved = r->error;
    r->error = 0;
    r->argIndex = 0;
    GlsArgValue major = {}, minor = {};
    GlsContext *ctx = gls_current();
    bool ok = begin_statement(r) && !strcmp(gls_string_text(&r->token), "glsBeginGLS") &&
              begin_argument(r) && element_value(r, ctx, GLS_ELEMENT_INT, GLS_NAME_NUMBER, &major) &&
              begin_argument(r) && element_value(r, ctx, GLS_ELEMENT_INT, GLS_NAME_NUMBER, &minor) &&
              end_statement(r);
    r->error = saved;
    if (ok) {
        r->version[0] = (int)major.i;
        r->version[1] = (int)minor.i;
    }
    return ok;
}

int gls_read_text(GlsContext *ctx, GlsReader *r)
{
    dictionaries = gls_dictionaries();
    if (!dictionaries)
        return 0;
    for (;;) {
        if (ctx->abortCall)
            return 0;
        skip_blanks(r);
        ctx->readConsumed = r->consumed + (size_t)(r->cursor - r->start);
        if (peek(r) < 0)
            return 0; // a stream may just end, as a program's history does
        if (!begin_statement(r)) {
            gls_report_error(0, GLS_DECODE_ERROR);
            if (!skip_statement(r))
                return 0;
            continue;
        }
        uint64_t opcode;
        if (!lookup(dictionaries->glsOpDict, gls_string_text(&r->token), &opcode)) {
            gls_report_unsupported(gls_string_text(&r->token));
            if (!skip_statement(r))
                return 0;
            continue;
        }
        if (opcode == OP_glsEndGLS) {
            if (!end_statement(r))
                gls_report_error((int)opcode, (GLSenum)r->error);
            return 1;
        }
        ((GlsTextRow)gls_text_table[opcode])(r);
        if (!end_statement(r)) {
            gls_report_error((int)opcode, (GLSenum)r->error, r->emptyItem);
            if (!skip_statement(r))
                return 0;
        }
    }
}

void gls_text_release(GlsReader *r)
{
    gls_string_free(&r->token);
    for (GlsString &s : r->strings)
        gls_string_free(&s);
    for (int i = 0; i < GLS_TEXT_SLOTS; ++i) {
        gls_free(r->slots[i]);
        r->slots[i] = nullptr;
        r->slotSizes[i] = 0;
    }
}
