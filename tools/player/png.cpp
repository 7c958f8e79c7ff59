#include "tools/player/png.h"

#include <cstdlib>
#include <cstring>

// ---------------------------------------------------------------------------------------------
// Deflate with the fixed codes

struct bit_writer {
    text_buffer *out;
    uint32_t bits;
    int count;
};

static void put_bits(bit_writer *w, uint32_t value, int count)
{
    w->bits |= value << w->count;
    w->count += count;
    while (w->count >= 8) {
        char byte = (char)(w->bits & 0xFF);
        text_append(w->out, &byte, 1);
        w->bits >>= 8;
        w->count -= 8;
    }
}

// Huffman codes go most significant bit first into a stream that is filled from the least.
static void put_code(bit_writer *w, uint32_t code, int length)
{
    uint32_t reversed = 0;
    for (int i = 0; i < length; ++i)
        reversed |= ((code >> i) & 1) << (length - 1 - i);
    put_bits(w, reversed, length);
}

static void put_literal(bit_writer *w, int symbol)
{
    if (symbol < 144)
        put_code(w, 0x30 + symbol, 8);
    else if (symbol < 256)
        put_code(w, 0x190 + symbol - 144, 9);
    else if (symbol < 280)
        put_code(w, symbol - 256, 7);
    else
        put_code(w, 0xC0 + symbol - 280, 8);
}

static const uint16_t length_base[29] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                         31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
static const uint8_t length_extra[29] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                         2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
static const uint16_t distance_base[30] = {1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
                                           193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
static const uint8_t distance_extra[30] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                           6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

static void put_match(bit_writer *w, int length, int distance)
{
    int code = 28;
    while (length_base[code] > length)
        --code;
    put_literal(w, 257 + code);
    put_bits(w, (uint32_t)(length - length_base[code]), length_extra[code]);
    code = 29;
    while (distance_base[code] > distance)
        --code;
    put_code(w, (uint32_t)code, 5);
    put_bits(w, (uint32_t)(distance - distance_base[code]), distance_extra[code]);
}

enum : int { WINDOW = 32768, HASH_SIZE = 1 << 15, MAX_MATCH = 258, MAX_PROBES = 48 };

static uint32_t hash3(const uint8_t *p) { return ((p[0] << 10) ^ (p[1] << 5) ^ p[2]) & (HASH_SIZE - 1); }

static uint32_t adler32(const uint8_t *data, size_t size)
{
    uint32_t a = 1, b = 0;
    while (size > 0) {
        size_t run = size < 5552 ? size : 5552;
        size -= run;
        while (run--) {
            a += *data++;
            b += a;
        }
        a %= 65521;
        b %= 65521;
    }
    return (b << 16) | a;
}

static void put_big_endian(text_buffer *out, uint32_t value)
{
    uint8_t bytes[4] = {(uint8_t)(value >> 24), (uint8_t)(value >> 16), (uint8_t)(value >> 8), (uint8_t)value};
    text_append(out, bytes, 4);
}

void zlib_compress(const uint8_t *data, size_t size, text_buffer *out)
{
    static const uint8_t header[2] = {0x78, 0x01};
    text_append(out, header, 2);
    bit_writer w = {out, 0, 0};
    put_bits(&w, 1, 1); // the last block
    put_bits(&w, 1, 2); // fixed codes
    int32_t *head = (int32_t *)malloc(HASH_SIZE * sizeof(int32_t));
    int32_t *previous = (int32_t *)malloc(WINDOW * sizeof(int32_t));
    if (!head || !previous) {
        // Without the tables every byte goes as a literal: a larger stream, still a right one.
        for (size_t i = 0; i < size; ++i)
            put_literal(&w, data[i]);
    } else {
        for (int i = 0; i < HASH_SIZE; ++i)
            head[i] = -1;
        size_t at = 0;
        auto insert = [&](size_t position) {
            if (position + 3 > size)
                return;
            uint32_t h = hash3(data + position);
            previous[position % WINDOW] = head[h];
            head[h] = (int32_t)position;
        };
        while (at < size) {
            int best = 0;
            size_t best_distance = 0;
            if (at + 3 <= size) {
                int32_t candidate = head[hash3(data + at)];
                size_t limit = size - at < (size_t)MAX_MATCH ? size - at : (size_t)MAX_MATCH;
                for (int probe = 0; candidate >= 0 && probe < MAX_PROBES; ++probe) {
                    size_t distance = at - (size_t)candidate;
                    if (distance > WINDOW - 1 || distance == 0)
                        break;
                    const uint8_t *a = data + candidate, *b = data + at;
                    size_t length = 0;
                    while (length < limit && a[length] == b[length])
                        ++length;
                    if ((int)length > best) {
                        best = (int)length;
                        best_distance = distance;
                        if (length == limit)
                            break;
                    }
                    int32_t next = previous[candidate % WINDOW];
                    if (next >= candidate)
                        break;
                    candidate = next;
                }
            }
            if (best >= 3) {
                put_match(&w, best, (int)best_distance);
                for (int i = 0; i < best; ++i)
                    insert(at + i);
                at += best;
            } else {
                put_literal(&w, data[at]);
                insert(at);
                ++at;
            }
        }
    }
    free(head);
    free(previous);
    put_literal(&w, 256);
    put_bits(&w, 0, 7); // the last byte filled up
    put_big_endian(out, adler32(data, size));
}

// ---------------------------------------------------------------------------------------------
// PNG

static uint32_t crc_table[256];

static uint32_t crc32_of(const uint8_t *data, size_t size)
{
    if (crc_table[1] == 0)
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            crc_table[n] = c;
        }
    uint32_t c = 0xFFFFFFFFu;
    for (size_t i = 0; i < size; ++i)
        c = crc_table[(c ^ data[i]) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

static void put_chunk(text_buffer *out, const char *type, const uint8_t *data, size_t size)
{
    put_big_endian(out, (uint32_t)size);
    size_t start = out->length;
    text_append(out, type, 4);
    text_append(out, data, size);
    uint32_t crc = out->failed ? 0 : crc32_of((const uint8_t *)out->data + start, size + 4);
    put_big_endian(out, crc);
}

static int paeth(int a, int b, int c)
{
    int p = a + b - c, pa = abs(p - a), pb = abs(p - b), pc = abs(p - c);
    return pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
}

// Each row gets the filter whose output bytes are smallest as signed numbers: the usual guess at
// what compresses best.
static void filter_row(const uint8_t *row, const uint8_t *above, size_t bytes, uint8_t *out)
{
    static uint8_t trial[4][1 + 3 * 16384];
    long best_sum = -1;
    int best = 0;
    for (int filter = 0; filter < 4; ++filter) {
        uint8_t *t = trial[filter];
        t[0] = (uint8_t)(filter == 3 ? 4 : filter);
        long sum = 0;
        for (size_t i = 0; i < bytes; ++i) {
            int left = i >= 3 ? row[i - 3] : 0, up = above ? above[i] : 0, corner = above && i >= 3 ? above[i - 3] : 0;
            int predicted = filter == 0 ? 0 : filter == 1 ? left : filter == 2 ? up : paeth(left, up, corner);
            uint8_t value = (uint8_t)(row[i] - predicted);
            t[1 + i] = value;
            sum += value < 128 ? value : 256 - value;
        }
        if (best_sum < 0 || sum < best_sum) {
            best_sum = sum;
            best = filter;
        }
    }
    memcpy(out, trial[best], bytes + 1);
}

void png_from_rgb(const uint8_t *rgb, int width, int height, text_buffer *out)
{
    static const uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    text_append(out, signature, 8);
    uint8_t header[13] = {0};
    for (int i = 0; i < 4; ++i) {
        header[i] = (uint8_t)((uint32_t)width >> (24 - 8 * i));
        header[4 + i] = (uint8_t)((uint32_t)height >> (24 - 8 * i));
    }
    header[8] = 8; // bits a sample
    header[9] = 2; // RGB
    put_chunk(out, "IHDR", header, sizeof header);
    size_t row_bytes = (size_t)width * 3;
    if (width > 16384) {
        out->failed = true;
        return;
    }
    uint8_t *filtered = (uint8_t *)malloc((row_bytes + 1) * (size_t)height);
    if (!filtered) {
        out->failed = true;
        return;
    }
    // PNG rows run from the top.
    for (int y = 0; y < height; ++y) {
        const uint8_t *row = rgb + (size_t)(height - 1 - y) * row_bytes;
        const uint8_t *above = y > 0 ? row + row_bytes : nullptr;
        filter_row(row, above, row_bytes, filtered + (size_t)y * (row_bytes + 1));
    }
    text_buffer compressed = {};
    zlib_compress(filtered, (row_bytes + 1) * (size_t)height, &compressed);
    free(filtered);
    if (compressed.failed)
        out->failed = true;
    else
        put_chunk(out, "IDAT", (const uint8_t *)compressed.data, compressed.length);
    text_free(&compressed);
    put_chunk(out, "IEND", nullptr, 0);
}

bool shrink_rgb(const uint8_t *rgb, int width, int height, int max_width, uint8_t **out, int *out_width,
                int *out_height)
{
    int step = (width + max_width - 1) / max_width;
    if (step < 1)
        step = 1;
    int w = width / step > 0 ? width / step : 1, h = height / step > 0 ? height / step : 1;
    uint8_t *small = (uint8_t *)malloc((size_t)w * h * 3);
    if (!small)
        return false;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                unsigned sum = 0, n = 0;
                for (int dy = 0; dy < step && y * step + dy < height; ++dy)
                    for (int dx = 0; dx < step && x * step + dx < width; ++dx, ++n)
                        sum += rgb[((size_t)(y * step + dy) * width + x * step + dx) * 3 + c];
                small[((size_t)y * w + x) * 3 + c] = (uint8_t)((sum + n / 2) / (n ? n : 1));
            }
    *out = small;
    *out_width = w;
    *out_height = h;
    return true;
}

void base64_append(text_buffer *out, const void *data, size_t size)
{
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const uint8_t *p = (const uint8_t *)data;
    char quad[4];
    for (size_t i = 0; i < size; i += 3) {
        uint32_t v = (uint32_t)p[i] << 16;
        if (i + 1 < size)
            v |= (uint32_t)p[i + 1] << 8;
        if (i + 2 < size)
            v |= p[i + 2];
        quad[0] = digits[v >> 18];
        quad[1] = digits[(v >> 12) & 63];
        quad[2] = i + 1 < size ? digits[(v >> 6) & 63] : '=';
        quad[3] = i + 2 < size ? digits[v & 63] : '=';
        text_append(out, quad, 4);
    }
}
