// The text form: every command is one statement, "name(arg, arg);" and a newline. Each item
// tests the buffer limit once; no item is longer than the reserve above the limit.
#include "gls/writer.h"
#include "gen/gl_enums.h"

#include "gls/gls.h"
#include "gls/capture.h"
#include "gls/names.h"
#include "gls/tables.h"

#include <cfloat>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>

// Elements of a vector are written by one of these; pname serves the by-enum forms only.
typedef void (*ElementWriter)(GlsWriter *, const void *element, GLenum pname);

static inline void put_char(GlsWriter *w, char c) { *w->writePos++ = (uint8_t)c; }

static inline void put_text(GlsWriter *w, const char *text, size_t length)
{
    memcpy(w->writePos, text, length);
    w->writePos += length;
}

#define PUT_LITERAL(w, text) put_text(w, text, sizeof text - 1)

// A fixed word: "^" and the double quote get a "^" before them.
static void put_word(GlsWriter *w, const char *word)
{
    for (; *word; ++word) {
        if (*word == '^' || *word == '"')
            put_char(w, '^');
        put_char(w, *word);
    }
}

// The test before each item: flush at or past the limit; a failed writer writes nothing.
static inline bool item_room(GlsWriter *w)
{
    if (w->failed)
        return false;
    return w->writePos < w->writeLimit || gls_flush_writer(w);
}

static inline bool begin_item(GlsWriter *w)
{
    if (!item_room(w))
        return false;
    if (w->argCount++)
        PUT_LITERAL(w, ", ");
    return true;
}

// ---------------------------------------------------------------------------------------------
// Numbers

static void put_unsigned(GlsWriter *w, uint64_t value)
{
    char digits[24];
    int n = 0;
    do {
        digits[n++] = (char)('0' + value % 10);
        value /= 10;
    } while (value);
    while (n)
        put_char(w, digits[--n]);
}

static void put_signed(GlsWriter *w, int64_t value)
{
    if (value < 0) {
        put_char(w, '-');
        put_unsigned(w, 0 - (uint64_t)value);
    } else {
        put_unsigned(w, (uint64_t)value);
    }
}

static void put_hex(GlsWriter *w, uint64_t value)
{
    static const char hex[] = "0123456789ABCDEF";
    char digits[16];
    int n = 0;
    do {
        digits[n++] = hex[value & 15];
        value >>= 4;
    } while (value);
    PUT_LITERAL(w, "0x");
    while (n)
        put_char(w, digits[--n]);
}

// The locale's decimal character when it is not the full stop, else 0; cached in glInfo.
static int decimal_point()
{
    GlsContext *ctx = gls_current();
    if (ctx && ctx->glInfo.decimalPoint != -1)
        return ctx->glInfo.decimalPoint;
    char c = localeconv()->decimal_point[0];
    int point = c == '.' ? 0 : (unsigned char)c;
    if (ctx)
        ctx->glInfo.decimalPoint = point;
    return point;
}

// The two repairs of printf's text: the full stop as decimal point, and two exponent digits.
static int repair_number(char *text, int length)
{
    if (int point = decimal_point()) {
        if (char *p = strchr(text, point))
            *p = '.';
    }
    if (length >= 6 && text[length - 5] == 'E' && text[length - 3] == '0') {
        memmove(text + length - 3, text + length - 2, 3);
        --length;
    }
    return length;
}

// Formats a value by the number rule into text (at least 32 bytes); returns the length.
static int format_number(char *text, double value, bool is_float, uint64_t nan_bits)
{
    if (std::isnan(value))
        return snprintf(text, 32, "0x%llX", (unsigned long long)nan_bits);
    double highest = is_float ? FLT_MAX : DBL_MAX;
    if (value < -highest)
        return snprintf(text, 32, "-GLS_INF");
    if (value > highest)
        return snprintf(text, 32, "GLS_INF");
    // Whole numbers of up to seven digits print as %G would print them, without printf.
    // The range comes first: converting a value outside int32_t is undefined.
    if (value > -1e7 && value < 1e7 && value == (double)(int32_t)value && (value != 0 || !std::signbit(value))) {
        int32_t whole = (int32_t)value;
        char *p = text;
        uint32_t magnitude = whole < 0 ? 0u - (uint32_t)whole : (uint32_t)whole;
        if (whole < 0)
            *p++ = '-';
        char digits[12];
        int n = 0;
        do {
            digits[n++] = (char)('0' + magnitude % 10);
            magnitude /= 10;
        } while (magnitude);
        while (n)
            *p++ = digits[--n];
        *p = 0;
        return (int)(p - text);
    }
    // std::to_chars gives exactly what "%.7G" and "%.16G" give, in lower case and without the C
    // library's locale and call costs (which are large on some platforms).
    std::to_chars_result result = std::to_chars(text, text + 31, value, std::chars_format::general, is_float ? 7 : 16);
    *result.ptr = 0;
    int length = (int)(result.ptr - text);
    for (char *p = text; *p; ++p)
        if (*p == 'e')
            *p = 'E';
    return repair_number(text, length);
}

// Powers of ten from 1E-46 to 1E+52 as doubles: a float's decimal exponent lies within, and so
// does the factor that scales its seven digits into [1E+06, 1E+07).
enum : int { POWER_LOW = -46, POWER_HIGH = 52 };
struct PowerTable {
    double values[POWER_HIGH - POWER_LOW + 1];
};
static PowerTable make_powers()
{
    PowerTable table;
    for (int i = POWER_LOW; i <= POWER_HIGH; ++i)
        table.values[i - POWER_LOW] = std::pow(10.0, i);
    return table;
}
// Made at load, so that no call asks whether it is made yet.
static const PowerTable power_table = make_powers();
static const double *const pow10 = power_table.values - POWER_LOW;

// "%.7G" of a non-zero finite float, from one multiplication: the float times a power of ten
// is within a few units of 1E-9 of the exact product, so rounding it to an integer gives the
// exact seven digits unless the product lies that close to a half. Then, and at the range's
// edges, 0: the exact path decides.
static int fast_float_text(char *text, float value)
{
    // No calls into the C library here: on some platforms each is a call across libraries.
    uint32_t bits;
    memcpy(&bits, &value, 4);
    bits &= 0x7FFFFFFFu;
    float positive;
    memcpy(&positive, &bits, 4);
    double magnitude = positive;
    // The decimal exponent: from the binary one (floor of log10(2) times it, in fixed point),
    // then corrected against the table. Subnormals start from the lowest.
    int binary_exponent = (int)(bits >> 23) - 127;
    if (binary_exponent < -126)
        binary_exponent = -150;
    int exponent = (binary_exponent * 78913) >> 18;
    if (exponent < POWER_LOW || exponent + 1 > 38)
        return 0;
    while (exponent + 1 <= 38 && magnitude >= pow10[exponent + 1])
        ++exponent;
    while (exponent > POWER_LOW && magnitude < pow10[exponent])
        --exponent;
    if (6 - exponent < POWER_LOW || 6 - exponent > POWER_HIGH)
        return 0;
    double scaled = magnitude * pow10[6 - exponent];
    if (scaled < 999999.5 || scaled >= 9999999.5)
        return 0;
    uint32_t whole = (uint32_t)scaled; // scaled is positive: truncation is the floor
    double fraction = scaled - (double)whole;
    if (fraction > 0.5 - 1e-6 && fraction < 0.5 + 1e-6)
        return 0;
    uint32_t digits = whole + (fraction > 0.5);
    if (digits >= 10000000) {
        digits /= 10;
        ++exponent;
    }
    if (digits < 1000000)
        return 0;
    // The seven digits: the first alone, then three pairs, so that the divisions do not wait
    // on each other.
    static const char pairs[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839404142434445464748495051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899";
    char d[7];
    uint32_t rest = digits % 1000000;
    d[0] = (char)('0' + digits / 1000000);
    memcpy(d + 1, pairs + 2 * (rest / 10000), 2);
    memcpy(d + 3, pairs + 2 * (rest / 100 % 100), 2);
    memcpy(d + 5, pairs + 2 * (rest % 100), 2);
    int last = 6; // the last digit kept: trailing zeros go
    while (last > 0 && d[last] == '0')
        --last;
    char *p = text;
    if (value < 0)
        *p++ = '-';
    if (exponent < -4 || exponent >= 7) {
        *p++ = d[0];
        if (last > 0) {
            *p++ = '.';
            for (int i = 1; i <= last; ++i)
                *p++ = d[i];
        }
        *p++ = 'E';
        *p++ = exponent < 0 ? '-' : '+';
        int e = exponent < 0 ? -exponent : exponent;
        *p++ = (char)('0' + e / 10);
        *p++ = (char)('0' + e % 10);
    } else if (exponent >= 0) {
        for (int i = 0; i <= exponent; ++i)
            *p++ = d[i];
        if (last > exponent) {
            *p++ = '.';
            for (int i = exponent + 1; i <= last; ++i)
                *p++ = d[i];
        }
    } else {
        *p++ = '0';
        *p++ = '.';
        for (int i = 1; i < -exponent; ++i)
            *p++ = '0';
        for (int i = 0; i <= last; ++i)
            *p++ = d[i];
    }
    *p = 0;
    return (int)(p - text);
}

int gls_format_float(char *text, GLfloat value)
{
    // Whole numbers, zeros and what is not finite take the general path: a float of 2^23 and
    // above is whole.
    float magnitude = value < 0 ? -value : value;
    if (magnitude > 0 && magnitude < 8388608.0f && (float)(int32_t)magnitude != magnitude)
        if (int length = fast_float_text(text, value))
            return length;
    uint32_t bits;
    memcpy(&bits, &value, 4);
    return format_number(text, value, true, bits);
}

int gls_format_double(char *text, GLdouble value)
{
    uint64_t bits;
    memcpy(&bits, &value, 8);
    return format_number(text, value, false, bits);
}

// ---------------------------------------------------------------------------------------------
// Element writers

// Elements may lie anywhere: a stream being read hands its commands' vectors where they lie,
// and a damaged one need not keep them aligned.
template <typename T>
static inline T load(const void *e)
{
    T value;
    memcpy(&value, e, sizeof value);
    return value;
}

static void element_byte(GlsWriter *w, const void *e, GLenum) { put_signed(w, load<GLbyte>(e)); }
static void element_ubyte(GlsWriter *w, const void *e, GLenum) { put_unsigned(w, load<GLubyte>(e)); }
static void element_short(GlsWriter *w, const void *e, GLenum) { put_signed(w, load<GLshort>(e)); }
static void element_ushort(GlsWriter *w, const void *e, GLenum) { put_unsigned(w, load<GLushort>(e)); }
static void element_int(GlsWriter *w, const void *e, GLenum) { put_signed(w, load<GLint>(e)); }
static void element_uint(GlsWriter *w, const void *e, GLenum) { put_unsigned(w, load<GLuint>(e)); }
static void element_long(GlsWriter *w, const void *e, GLenum) { put_signed(w, load<GLlong>(e)); }

static void element_boolean(GlsWriter *w, const void *e, GLenum)
{
    GLubyte value = load<GLubyte>(e);
    if (value == 0)
        PUT_LITERAL(w, "GL_FALSE");
    else if (value == 1)
        PUT_LITERAL(w, "GL_TRUE");
    else
        put_unsigned(w, value);
}

// A number's text from its 32-byte buffer: a copy of fixed size is a few moves, where one of
// the text's own length is a call into the C library. The writer's reserve behind its limit
// takes the bytes beyond the text, which the next item overwrites.
static inline void put_number_text(GlsWriter *w, const char (&text)[32], int length)
{
    static_assert(GLS_WRITE_RESERVE >= 32, "a number's buffer fits the reserve");
    __builtin_memcpy(w->writePos, text, 32);
    w->writePos += length;
}

// A float's text through the context's table of recent ones, written at pos; returns the end.
// Every text is under 16 bytes.
static inline uint8_t *put_float_at(GlsFloatText *texts, uint8_t *pos, GLfloat value)
{
    uint32_t bits;
    memcpy(&bits, &value, 4);
    GlsFloatText *entry = &texts[((bits * 0x9E3779B1u) >> (32 - GLS_FLOAT_TEXT_BITS)) * 2];
    if (entry->bits != bits || entry->length == 0) {
        GlsFloatText *older = entry + 1;
        GlsFloatText found;
        if (older->bits == bits && older->length != 0) {
            found = *older;
        } else {
            char text[32];
            int length = gls_format_float(text, value);
            if (length >= (int)sizeof entry->text) {
                __builtin_memcpy(pos, text, 32);
                return pos + length;
            }
            __builtin_memcpy(found.text, text, sizeof found.text);
            found.bits = bits;
            found.length = (uint32_t)length;
        }
        *older = *entry;
        *entry = found;
    }
    __builtin_memcpy(pos, entry->text, sizeof entry->text);
    return pos + entry->length;
}

static inline void put_float(GlsWriter *w, GLfloat value)
{
    static_assert(GLS_WRITE_RESERVE >= 32, "a number's buffer fits the reserve");
    w->writePos = put_float_at(w->floatTexts, w->writePos, value);
}

static void element_float(GlsWriter *w, const void *e, GLenum) { put_float(w, load<GLfloat>(e)); }

static void element_double(GlsWriter *w, const void *e, GLenum)
{
    char text[32];
    put_number_text(w, text, gls_format_double(text, load<GLdouble>(e)));
}

// By-enum values: these parameters take GL_FALSE and GL_TRUE, those a GL enumerant.
static bool listed(const GLenum *pnames, int count, GLenum pname)
{
    for (int i = 0; i < count; ++i)
        if (pnames[i] == pname)
            return true;
    return false;
}

static bool names_boolean(GLenum pname)
{
    return listed(gls_named_boolean_pnames, gls_named_boolean_pname_count, pname);
}

static bool names_enum(GLenum pname) { return listed(gls_named_enum_pnames, gls_named_enum_pname_count, pname); }

// Writes the name a by-enum value has, if any.
static bool put_by_enum_name(GlsWriter *w, GLenum pname, uint32_t value)
{
    if (names_boolean(pname) && value <= 1) {
        if (value)
            PUT_LITERAL(w, "GL_TRUE");
        else
            PUT_LITERAL(w, "GL_FALSE");
        return true;
    }
    if (names_enum(pname)) {
        if (const char *name = gls_gl_enum_name(value)) {
            put_word(w, name);
            return true;
        }
    }
    return false;
}

static void element_int_by_enum(GlsWriter *w, const void *e, GLenum pname)
{
    GLint value = load<GLint>(e);
    if (value < 0 || !put_by_enum_name(w, pname, (uint32_t)value))
        put_signed(w, value);
}

static bool whole_uint(double value) { return value >= 0 && value <= 4294967295.0 && value == std::floor(value); }

static void element_float_by_enum(GlsWriter *w, const void *e, GLenum pname)
{
    GLfloat value = load<GLfloat>(e);
    if (!whole_uint(value) || !put_by_enum_name(w, pname, (uint32_t)value))
        element_float(w, e, pname);
}

static void element_double_by_enum(GlsWriter *w, const void *e, GLenum pname)
{
    GLdouble value = load<GLdouble>(e);
    if (!whole_uint(value) || !put_by_enum_name(w, pname, (uint32_t)value))
        element_double(w, e, pname);
}

// ---------------------------------------------------------------------------------------------
// Vectors: up to four elements on the line; longer ones eight a line, indented, and the closing
// brace on a line of its own.

static inline bool vector_separator(GlsWriter *w, GLuint i, GLuint count)
{
    if (!item_room(w))
        return false;
    if (i)
        put_char(w, ',');
    if (count > 4 && i % 8 == 0)
        PUT_LITERAL(w, "\n    ");
    else if (i)
        put_char(w, ' ');
    return true;
}

static inline void vector_end(GlsWriter *w, GLuint count)
{
    if (count < 5)
        put_char(w, '}');
    else
        PUT_LITERAL(w, "\n}");
}

static void put_vector(GlsWriter *w, GLuint count, const void *data, size_t size, ElementWriter element, GLenum pname)
{
    if (!begin_item(w))
        return;
    if (!data)
        count = 0; // bad input writes an empty vector
    put_char(w, '{');
    const uint8_t *p = (const uint8_t *)data;
    for (GLuint i = 0; i < count; ++i, p += size) {
        if (!vector_separator(w, i, count))
            return;
        element(w, p, pname);
    }
    vector_end(w, count);
}

#define VECTOR_SLOT(NAME, TYPE, ELEMENT)                                          \
    static void NAME(GlsWriter *w, GLuint count, const void *data)               \
    {                                                                             \
        put_vector(w, count, data, sizeof(TYPE), ELEMENT, 0);                     \
    }
VECTOR_SLOT(text_byte_vector, GLbyte, element_byte)
VECTOR_SLOT(text_ubyte_vector, GLubyte, element_ubyte)
VECTOR_SLOT(text_boolean_vector, GLboolean, element_boolean)
VECTOR_SLOT(text_short_vector, GLshort, element_short)
VECTOR_SLOT(text_ushort_vector, GLushort, element_ushort)
VECTOR_SLOT(text_int_vector, GLint, element_int)
VECTOR_SLOT(text_uint_vector, GLuint, element_uint)
VECTOR_SLOT(text_long_vector, GLlong, element_long)

// The short float vectors of colours, normals and vertices, without a call per element. The
// position stays in a register: a store through the buffer could alias the writer's fields. A
// writer that was not failed at the vector's start fails only in a flush.
static void text_float_vector(GlsWriter *w, GLuint count, const void *data)
{
    if (count > 4 || !data) {
        put_vector(w, count, data, sizeof(GLfloat), element_float, 0);
        return;
    }
    if (!begin_item(w))
        return;
    uint8_t *pos = w->writePos;
    GlsFloatText *texts = w->floatTexts;
    *pos++ = '{';
    const GLfloat *v = (const GLfloat *)data;
    for (GLuint i = 0; i < count; ++i) {
        if (pos >= w->writeLimit) {
            w->writePos = pos;
            if (!gls_flush_writer(w))
                return;
            pos = w->writePos;
        }
        if (i) {
            __builtin_memcpy(pos, ", ", 2);
            pos += 2;
        }
        pos = put_float_at(texts, pos, load<GLfloat>(v + i));
    }
    *pos++ = '}';
    w->writePos = pos;
}

VECTOR_SLOT(text_double_vector, GLdouble, element_double)

static void text_int_vector_by_enum(GlsWriter *w, GLenum pname, GLuint count, const void *data)
{
    put_vector(w, count, data, sizeof(GLint), element_int_by_enum, pname);
}

static void text_float_vector_by_enum(GlsWriter *w, GLenum pname, GLuint count, const void *data)
{
    put_vector(w, count, data, sizeof(GLfloat), element_float_by_enum, pname);
}

static void text_double_vector_by_enum(GlsWriter *w, GLenum pname, GLuint count, const void *data)
{
    put_vector(w, count, data, sizeof(GLdouble), element_double_by_enum, pname);
}

// Images: one vector in the order volume, image, row, element, the gaps (in bytes) skipped.
static void put_image(GlsWriter *w, GLboolean swapBytes, GLuint elementsPerRow, GLuint rowGap,
                      GLuint rows, GLuint imageGap, GLuint images, GLuint volumeGap, GLuint volumes,
                      const void *data, size_t size, ElementWriter element)
{
    if (!begin_item(w))
        return;
    uint64_t total = (uint64_t)elementsPerRow * rows * images * volumes;
    GLuint count = data && total <= 0xFFFFFFFFu ? (GLuint)total : 0;
    put_char(w, '{');
    const uint8_t *p = (const uint8_t *)data;
    GLuint i = 0;
    for (GLuint v = 0; count && v < volumes; ++v, p += volumeGap) {
        for (GLuint m = 0; m < images; ++m, p += imageGap) {
            for (GLuint r = 0; r < rows; ++r, p += rowGap) {
                for (GLuint e = 0; e < elementsPerRow; ++e, ++i, p += size) {
                    if (!vector_separator(w, i, count))
                        return;
                    if (swapBytes && size > 1) {
                        uint8_t swapped[8];
                        for (size_t b = 0; b < size; ++b)
                            swapped[b] = p[size - 1 - b];
                        element(w, swapped, 0);
                    } else {
                        element(w, p, 0);
                    }
                }
            }
        }
    }
    vector_end(w, count);
}

#define IMAGE_SLOT(NAME, TYPE, ELEMENT)                                                        \
    static void NAME(GlsWriter *w, GLboolean swapBytes, GLuint elementsPerRow, GLuint rowGap,  \
                     GLuint rows, GLuint imageGap, GLuint images, GLuint volumeGap,            \
                     GLuint volumes, const void *data)                                         \
    {                                                                                          \
        put_image(w, swapBytes, elementsPerRow, rowGap, rows, imageGap, images, volumeGap,     \
                  volumes, data, sizeof(TYPE), ELEMENT);                                       \
    }
IMAGE_SLOT(text_byte_image, GLbyte, element_byte)
IMAGE_SLOT(text_ubyte_image, GLubyte, element_ubyte)
IMAGE_SLOT(text_boolean_image, GLboolean, element_boolean)
IMAGE_SLOT(text_short_image, GLshort, element_short)
IMAGE_SLOT(text_ushort_image, GLushort, element_ushort)
IMAGE_SLOT(text_int_image, GLint, element_int)
IMAGE_SLOT(text_uint_image, GLuint, element_uint)
IMAGE_SLOT(text_float_image, GLfloat, element_float)
IMAGE_SLOT(text_double_image, GLdouble, element_double)

// ---------------------------------------------------------------------------------------------
// Scalars

static void text_int(GlsWriter *w, GLint value)
{
    if (begin_item(w))
        put_signed(w, value);
}

static void text_uint(GlsWriter *w, GLuint value)
{
    if (begin_item(w))
        put_unsigned(w, value);
}

static void text_short(GlsWriter *w, GLshort value) { text_int(w, value); }
static void text_byte(GlsWriter *w, GLbyte value) { text_int(w, value); }
static void text_ushort(GlsWriter *w, GLushort value) { text_uint(w, value); }
static void text_ubyte(GlsWriter *w, GLubyte value) { text_uint(w, value); }

static void text_long(GlsWriter *w, GLlong value)
{
    if (begin_item(w))
        put_signed(w, value);
}

static void text_ulong_hex(GlsWriter *w, GLulong value)
{
    if (begin_item(w))
        put_hex(w, value);
}

static void text_uint_hex(GlsWriter *w, GLuint value) { text_ulong_hex(w, value); }
static void text_ushort_hex(GlsWriter *w, GLushort value) { text_ulong_hex(w, value); }

static void text_float(GlsWriter *w, GLfloat value)
{
    if (begin_item(w))
        element_float(w, &value, 0);
}

static void text_double(GlsWriter *w, GLdouble value)
{
    if (begin_item(w))
        element_double(w, &value, 0);
}

static void text_boolean(GlsWriter *w, GLboolean value)
{
    if (begin_item(w))
        element_boolean(w, &value, 0);
}

static void put_enum_value(GlsWriter *w, GLenum value)
{
    if (const char *name = gls_gl_enum_name(value))
        put_word(w, name);
    else
        put_signed(w, (GLint)value);
}

static void text_enum(GlsWriter *w, GLenum value)
{
    if (begin_item(w))
        put_enum_value(w, value);
}

static void text_gls_enum(GlsWriter *w, GLint value)
{
    if (!begin_item(w))
        return;
    if (const char *name = gls_gls_enum_name(value))
        put_word(w, name);
    else
        put_signed(w, value);
}

static void text_gls_opcode(GlsWriter *w, GLint opcode)
{
    if (!begin_item(w))
        return;
    if (gls_opcode_exists(opcode)) {
        PUT_LITERAL(w, "GLS_OP_");
        put_word(w, gls_opcode_names[opcode]);
    } else {
        put_signed(w, opcode);
    }
}

// Enums whose zero (and one) have their own name.
static void text_blend_factor(GlsWriter *w, GLenum value)
{
    if (!begin_item(w))
        return;
    if (value == 0)
        PUT_LITERAL(w, "GL_ZERO");
    else if (value == 1)
        PUT_LITERAL(w, "GL_ONE");
    else
        put_enum_value(w, value);
}

static void text_stencil_op(GlsWriter *w, GLenum value)
{
    if (!begin_item(w))
        return;
    if (value == 0)
        PUT_LITERAL(w, "GL_ZERO");
    else
        put_enum_value(w, value);
}

static void text_draw_buffer(GlsWriter *w, GLenum value)
{
    if (!begin_item(w))
        return;
    if (value == 0)
        PUT_LITERAL(w, "GL_NONE");
    else
        put_enum_value(w, value);
}

static void text_texture_components(GlsWriter *w, GLint value)
{
    if (!begin_item(w))
        return;
    const char *name = value > 4 ? gls_gl_enum_name((GLenum)value) : nullptr;
    if (name)
        put_word(w, name);
    else
        put_signed(w, value);
}

// Masks: an exact row first; else every row with a bit in the value, in table order, and the
// bits no row names in hexadecimal.
static void put_mask(GlsWriter *w, GLbitfield value, const GlsNameValue *rows, int count)
{
    if (!begin_item(w))
        return;
    for (int i = 0; i < count; ++i) {
        if (rows[i].value == value) {
            put_word(w, rows[i].name);
            return;
        }
    }
    // All names of a mask are longer than the reserve: each is an item of its own for the test.
    bool first = true;
    for (int i = 0; i < count; ++i) {
        if (value & rows[i].value) {
            value &= ~rows[i].value;
            if (!item_room(w))
                return;
            if (!first)
                PUT_LITERAL(w, " | ");
            put_word(w, rows[i].name);
            first = false;
        }
    }
    if (value && item_room(w)) {
        if (!first)
            PUT_LITERAL(w, " | ");
        put_hex(w, value);
    }
}

static void text_attrib_mask(GlsWriter *w, GLbitfield value)
{
    put_mask(w, value, gls_attrib_mask_rows, GLS_ATTRIB_MASK_ROWS);
}

static void text_client_attrib_mask(GlsWriter *w, GLbitfield value)
{
    put_mask(w, value, gls_client_attrib_mask_rows, GLS_CLIENT_ATTRIB_MASK_ROWS);
}

static void text_image_flags(GlsWriter *w, GLbitfield value)
{
    put_mask(w, value, gls_image_flag_rows, GLS_IMAGE_FLAG_ROWS);
}

static void text_int_by_enum(GlsWriter *w, GLenum pname, GLint value)
{
    if (begin_item(w))
        element_int_by_enum(w, &value, pname);
}

static void text_float_by_enum(GlsWriter *w, GLenum pname, GLfloat value)
{
    if (begin_item(w))
        element_float_by_enum(w, &value, pname);
}

static void text_double_by_enum(GlsWriter *w, GLenum pname, GLdouble value)
{
    if (begin_item(w))
        element_double_by_enum(w, &value, pname);
}

static void text_int_header(GlsWriter *w, GLenum attrib, GLint value)
{
    if (!begin_item(w))
        return;
    bool flag = attrib == GLS_DOUBLEBUFFER || attrib == GLS_RGBA_MODE || attrib == GLS_STEREO || attrib == GLS_TILEABLE;
    if (flag && value == 0)
        PUT_LITERAL(w, "GL_FALSE");
    else if (flag && value == 1)
        PUT_LITERAL(w, "GL_TRUE");
    else
        put_signed(w, value);
}

// The number that stands for an output pointer: in a stream being read, the reader's number.
static GLulong out_arg_value(GlsWriter *w, GLuint index, const GLvoid *pointer)
{
    GlsContext *ctx = gls_current();
    if (ctx && ctx->callNesting > 0 && index < GLS_MAX_OUT_ARGS && !ctx->callFuncs[w->opcode])
        return ctx->outArgPointers[index];
    return (GLulong)(uintptr_t)pointer;
}

static void text_out_arg(GlsWriter *w, GLuint index, const GLvoid *pointer)
{
    text_ulong_hex(w, out_arg_value(w, index, pointer));
}

static void text_pointer(GlsWriter *w, const GLvoid *pointer) { text_out_arg(w, 4, pointer); }

// ---------------------------------------------------------------------------------------------
// Strings, matrices, bitmaps, vertex data

static bool printable(uint32_t c)
{
    return (c >= 32 && c <= 126) || (c >= 9 && c <= 13);
}

static void text_string(GlsWriter *w, GLuint, const GLubyte *string)
{
    if (!begin_item(w))
        return;
    GlsContext *ctx = gls_current();
    int width = !ctx || ctx->stringType == GLS_UCS1 ? 1 : ctx->stringType == GLS_UCS2 ? 2 : 4;
    put_char(w, '"');
    for (const uint8_t *p = string; p; p += width) {
        uint32_t c = width == 1 ? *p : width == 2 ? load<uint16_t>(p) : load<uint32_t>(p);
        if (c == 0)
            break;
        if (!item_room(w))
            return;
        if (c < 128 && printable(c)) {
            if (c == '"' || c == '\\')
                put_char(w, '\\');
            put_char(w, (char)c);
        } else {
            PUT_LITERAL(w, "\\<");
            char digits[9];
            int n = 0;
            do {
                digits[n++] = "0123456789ABCDEF"[c & 15];
                c >>= 4;
            } while (c);
            while (n)
                put_char(w, digits[--n]);
            put_char(w, '>');
        }
    }
    put_char(w, '"');
}

static void put_matrix(GlsWriter *w, const void *matrix, bool is_float)
{
    if (!begin_item(w))
        return;
    put_char(w, '{');
    int width = is_float ? 11 : 17;
    for (int i = 0; matrix && i < 16; ++i) {
        if (!item_room(w))
            return;
        if (i % 4 == 0 && i)
            PUT_LITERAL(w, ",\n    ");
        else if (i % 4 == 0)
            PUT_LITERAL(w, "\n    ");
        else
            PUT_LITERAL(w, ", ");
        char text[32];
        int length = is_float ? gls_format_float(text, load<GLfloat>((const GLfloat *)matrix + i))
                              : gls_format_double(text, load<GLdouble>((const GLdouble *)matrix + i));
        put_text(w, text, (size_t)length);
        // Padding lines the columns up; the words for infinity and NaN stand unpadded.
        bool word = text[0] == 'G' || text[1] == 'G' || (text[0] == '0' && text[1] == 'x');
        for (int pad = length; !word && pad < width; ++pad)
            put_char(w, ' ');
    }
    PUT_LITERAL(w, "\n}");
}

static void text_float_matrix(GlsWriter *w, const void *matrix) { put_matrix(w, matrix, true); }
static void text_double_matrix(GlsWriter *w, const void *matrix) { put_matrix(w, matrix, false); }

static uint8_t reverse_bits(uint8_t b)
{
    b = (uint8_t)((b & 0xF0) >> 4 | (b & 0x0F) << 4);
    b = (uint8_t)((b & 0xCC) >> 2 | (b & 0x33) << 2);
    return (uint8_t)((b & 0xAA) >> 1 | (b & 0x55) << 1);
}

// Bitmap rows of (bitsPerRow + 7) / 8 bytes, MSB first, each byte as 0x and two digits.
static void text_bitmap(GlsWriter *w, GLboolean lsbFirst, GLuint firstBit, GLuint bitsPerRow,
                        GLuint gapBits, GLuint rows, const GLubyte *data)
{
    if (!begin_item(w))
        return;
    GLuint rowBytes = (bitsPerRow + 7) / 8;
    GLuint count = data ? (GLuint)((uint64_t)bitsPerRow * rows / 8) : 0;
    uint8_t lastMask = bitsPerRow & 7 ? (uint8_t)(255 << (8 - (bitsPerRow & 7))) : 255;
    firstBit &= 7;
    put_char(w, '{');
    const GLubyte *row = data;
    GLuint i = 0;
    for (GLuint r = 0; data && r < rows; ++r) {
        for (GLuint b = 0; b < rowBytes; ++b, ++i) {
            if (!vector_separator(w, i, count))
                return;
            uint8_t byte = lsbFirst ? reverse_bits(row[b]) : row[b];
            // A shifted row takes the next source byte only where the row's bits reach into it.
            if (firstBit && firstBit + bitsPerRow - b * 8 > 8) {
                uint8_t next = lsbFirst ? reverse_bits(row[b + 1]) : row[b + 1];
                byte = (uint8_t)(byte << firstBit | next >> (8 - firstBit));
            } else if (firstBit) {
                byte = (uint8_t)(byte << firstBit);
            }
            if (b == rowBytes - 1)
                byte &= lastMask;
            static const char hex[] = "0123456789ABCDEF";
            char text[4] = {'0', 'x', hex[byte >> 4], hex[byte & 15]};
            put_text(w, text, 4);
        }
        row += (firstBit + bitsPerRow + gapBits) / 8;
    }
    vector_end(w, count);
}

// Vertex data of glsDrawVertexArray: floats, or per vertex the packed colour's bytes among them.
struct PackedFormat {
    GLenum format;
    int stride;
    int floatsBefore; // floats ahead of the four colour bytes
    int floatsAfter;
};

static const PackedFormat packed_formats[3] = {
    {GL_C4UB_V2F, 12, 0, 2},
    {GL_C4UB_V3F, 16, 0, 3},
    {GL_T2F_C4UB_V3F, 24, 2, 3},
};

static void text_vertex_data(GlsWriter *w, GLenum format, GLuint size, const GLvoid *data)
{
    if (size == 0 || !data || format < GL_V2F || format > GL_T4F_C4F_N3F_V4F) {
        text_ubyte_vector(w, 0, nullptr);
        return;
    }
    const PackedFormat *packed = nullptr;
    for (const PackedFormat &row : packed_formats)
        if (row.format == format)
            packed = &row;
    if (!packed) {
        text_float_vector(w, size / 4, data);
        return;
    }
    if (!begin_item(w))
        return;
    put_char(w, '{');
    int items = packed->floatsBefore + 4 + packed->floatsAfter;
    GLuint vertices = size / (GLuint)packed->stride;
    const uint8_t *vertex = (const uint8_t *)data;
    GLuint i = 0;
    for (GLuint v = 0; v < vertices; ++v, vertex += packed->stride) {
        for (int k = 0; k < items; ++k, ++i) {
            if (!vector_separator(w, i, 8))
                return;
            if (k < packed->floatsBefore)
                element_float(w, vertex + 4 * k, 0);
            else if (k < packed->floatsBefore + 4)
                element_ubyte(w, vertex + 4 * packed->floatsBefore + (k - packed->floatsBefore), 0);
            else
                element_float(w, vertex + 4 * (k - 3), 0);
        }
    }
    PUT_LITERAL(w, "\n}");
}

// ---------------------------------------------------------------------------------------------
// Statement frame

static GLboolean text_pad(GlsWriter *, GLuint) { return 1; }
static GLboolean text_allocate(GlsWriter *, size_t) { return 1; }
static void text_nothing(GlsWriter *, GLuint) {}

// Each opcode's "name(" padded to a fixed size, made at load: a statement starts with one copy
// of fixed size. Length 0: the name needs the general path.
struct CommandOpenings {
    char text[GLS_OPCODE_COUNT][32];
    uint8_t length[GLS_OPCODE_COUNT];
};
static CommandOpenings make_openings()
{
    CommandOpenings openings = {};
    for (int opcode = 0; opcode < GLS_OPCODE_COUNT; ++opcode) {
        const char *name = gls_opcode_exists(opcode) ? gls_opcode_names[opcode] : "glsUnsupportedCommand";
        size_t length = strlen(name);
        if (length + 1 >= sizeof openings.text[0] || strpbrk(name, "^\""))
            continue;
        memcpy(openings.text[opcode], name, length);
        openings.text[opcode][length] = '(';
        openings.length[opcode] = (uint8_t)(length + 1);
    }
    return openings;
}
static const CommandOpenings command_openings = make_openings();

static GLboolean text_begin_command(GlsWriter *w, GLSopcode opcode, uint64_t)
{
    if (!item_room(w))
        return 0;
    w->opcode = opcode;
    w->argCount = 0;
    if (opcode >= 0 && opcode < GLS_OPCODE_COUNT && command_openings.length[opcode]) {
        static_assert(GLS_WRITE_RESERVE >= sizeof command_openings.text[0], "an opening fits the reserve");
        __builtin_memcpy(w->writePos, command_openings.text[opcode], sizeof command_openings.text[0]);
        w->writePos += command_openings.length[opcode];
        return 1;
    }
    put_word(w, gls_opcode_exists(opcode) ? gls_opcode_names[opcode] : "glsUnsupportedCommand");
    put_char(w, '(');
    return 1;
}

static void text_end_command(GlsWriter *w)
{
    if (!w->failed)
        PUT_LITERAL(w, ");\n");
}

static void text_next_list(GlsWriter *w)
{
    if (!item_room(w))
        return;
    PUT_LITERAL(w, ")(");
    w->argCount = 0;
}

void gls_init_text_slots(GlsWriter *w)
{
    GLS_TEXT_WRITER_SLOTS(w);
}
