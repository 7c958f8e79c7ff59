// The text writer's slots fed random values: the input is a run of operations, each a byte that
// picks a slot and the bytes of its arguments. Data is sized to exactly what a caller of the
// slot hands over, so that a read behind it is seen. Every number is also checked against the
// C library's "%.7G" and "%.16G", which the writer's own formatting stands in for.
#include "gls/gls.h"
#include "gls/writer.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct Input {
    const uint8_t *p;
    size_t left;

    bool empty() const { return left == 0; }
    uint64_t bytes(int n)
    {
        uint64_t v = 0;
        for (int i = 0; i < n && left; ++i, --left)
            v |= (uint64_t)*p++ << (8 * i);
        return v;
    }
    uint8_t byte() { return (uint8_t)bytes(1); }
    uint32_t word() { return (uint32_t)bytes(4); }
    // A copy of exactly n bytes (zeros where the input ends).
    std::vector<uint8_t> data(size_t n)
    {
        std::vector<uint8_t> copy(n);
        for (size_t i = 0; i < n && left; ++i, --left)
            copy[i] = *p++;
        return copy;
    }
};

// Heap blocks of exactly the size asked for, freed after each input.
std::vector<void *> blocks;
const void *block(const std::vector<uint8_t> &bytes)
{
    void *b = malloc(bytes.size() ? bytes.size() : 1);
    if (!bytes.empty())
        memcpy(b, bytes.data(), bytes.size());
    blocks.push_back(b);
    return b;
}

size_t sink_fails_at, sink_taken;
size_t sink(size_t count, const void *)
{
    sink_taken += count;
    return sink_fails_at && sink_taken > sink_fails_at ? 0 : count;
}

void check_number(const char *ours, const char *expected)
{
    if (strcmp(ours, expected)) {
        fprintf(stderr, "number written as %s, expected %s\n", ours, expected);
        abort();
    }
}

void check_float(float value)
{
    char ours[32], expected[40];
    gls_format_float(ours, value);
    uint32_t bits;
    memcpy(&bits, &value, 4);
    if (std::isnan(value))
        snprintf(expected, sizeof expected, "0x%X", bits);
    else if (std::isinf(value))
        snprintf(expected, sizeof expected, "%sGLS_INF", value < 0 ? "-" : "");
    else
        snprintf(expected, sizeof expected, "%.7G", value);
    check_number(ours, expected);
}

void check_double(double value)
{
    char ours[32], expected[40];
    gls_format_double(ours, value);
    uint64_t bits;
    memcpy(&bits, &value, 8);
    if (std::isnan(value))
        snprintf(expected, sizeof expected, "0x%llX", (unsigned long long)bits);
    else if (std::isinf(value))
        snprintf(expected, sizeof expected, "%sGLS_INF", value < 0 ? "-" : "");
    else
        snprintf(expected, sizeof expected, "%.16G", value);
    check_number(ours, expected);
}

const size_t element_sizes[] = {1, 1, 1, 2, 2, 4, 4, 8, 4, 8};

void vector_slot(GlsWriter *w, Input &in, int kind)
{
    GlsVectorSlot slots[] = {w->putGLbyteVector, w->putGLubyteVector, w->putGLbooleanVector, w->putGLshortVector,
                             w->putGLushortVector, w->putGLintVector, w->putGLuintVector, w->putGLlongVector,
                             w->putGLfloatVector, w->putGLdoubleVector};
    size_t size = element_sizes[kind];
    GLuint count = in.byte() % 64;
    bool null = count & 1 && in.byte() == 0;
    std::vector<uint8_t> bytes = in.data(count * size);
    if (kind == 8)
        for (GLuint i = 0; i < count; ++i)
            check_float(((const float *)bytes.data())[i]);
    slots[kind](w, count, null ? nullptr : block(bytes));
}

void by_enum_slot(GlsWriter *w, Input &in, int kind)
{
    GLenum pname = in.word();
    if (kind < 3) {
        GLuint count = in.byte() % 32;
        size_t size = kind == 2 ? 8 : 4;
        const void *data = block(in.data(count * size));
        (kind == 0 ? w->putGLintVectorByEnum : kind == 1 ? w->putGLfloatVectorByEnum : w->putGLdoubleVectorByEnum)(
            w, pname, count, data);
    } else if (kind == 3) {
        w->putGLintByEnum(w, pname, (GLint)in.word());
    } else if (kind == 4) {
        uint32_t bits = in.word();
        float value;
        memcpy(&value, &bits, 4);
        w->putGLfloatByEnum(w, pname, value);
    } else {
        uint64_t bits = in.bytes(8);
        double value;
        memcpy(&value, &bits, 8);
        w->putGLdoubleByEnum(w, pname, value);
    }
}

// The elements lie at their place in rows, images and volumes, with the gaps between them; the
// gaps behind the last element are not part of the data.
void image_slot(GlsWriter *w, Input &in, int kind)
{
    GlsImageSlot slots[] = {w->putGLbyteImage, w->putGLubyteImage, w->putGLbooleanImage, w->putGLshortImage,
                            w->putGLushortImage, w->putGLintImage, w->putGLuintImage, w->putGLfloatImage,
                            w->putGLdoubleImage};
    const size_t sizes[] = {1, 1, 1, 2, 2, 4, 4, 4, 8};
    kind %= 9;
    size_t size = sizes[kind];
    GLboolean swap = in.byte() & 1;
    GLuint perRow = in.byte() % 17, rowGap = in.byte() % 9, rows = in.byte() % 9;
    GLuint imageGap = in.byte() % 9, images = in.byte() % 4, volumeGap = in.byte() % 9, volumes = in.byte() % 3;
    uint64_t total = (uint64_t)volumes * (images * (rows * (perRow * size + rowGap) + imageGap) + volumeGap);
    bool any = (uint64_t)perRow * rows * images * volumes != 0;
    size_t bytes = any ? (size_t)(total - rowGap - imageGap - volumeGap) : 0;
    slots[kind](w, swap, perRow, rowGap, rows, imageGap, images, volumeGap, volumes, block(in.data(bytes)));
}

// Each row holds the bits from firstBit to firstBit + bitsPerRow, and the next row starts
// (firstBit + bitsPerRow + gapBits) / 8 bytes behind it.
void bitmap_slot(GlsWriter *w, Input &in)
{
    GLboolean lsbFirst = in.byte() & 1;
    GLuint firstBit = in.byte() % 8, bitsPerRow = in.byte() % 65, gapBits = in.byte() % 65, rows = in.byte() % 9;
    size_t rowBytes = (firstBit + bitsPerRow + 7) / 8, step = (firstBit + bitsPerRow + gapBits) / 8;
    size_t bytes = rows && rowBytes ? (rows - 1) * step + rowBytes : 0;
    w->putGLbitmap(w, lsbFirst, firstBit, bitsPerRow, gapBits, rows, (const GLubyte *)block(in.data(bytes)));
}

// A zero-terminated string of the context's character width.
void string_slot(GlsWriter *w, Input &in)
{
    int type = in.byte() % 3;
    glsStringType(GLS_UCS1 + type);
    size_t width = type == 0 ? 1 : type == 1 ? 2 : 4;
    size_t length = in.byte() % 80;
    std::vector<uint8_t> bytes = in.data(length * width);
    for (size_t i = 0; i < length; ++i) {
        // A zero would end the string early; keep the length.
        bool zero = true;
        for (size_t b = 0; b < width; ++b)
            zero &= bytes[i * width + b] == 0;
        if (zero)
            bytes[i * width] = 'z';
    }
    bytes.resize(bytes.size() + width, 0);
    w->putString(w, 0, (const GLubyte *)block(bytes));
}

// As a capture function calls them: endCommand once behind each beginCommand that succeeded,
// since only the items test the buffer's limit.
bool command_open;

void end_command(GlsWriter *w)
{
    if (command_open)
        w->endCommand(w);
    command_open = false;
}

void one_operation(GlsWriter *w, Input &in)
{
    uint8_t op = in.byte();
    switch (op % 48) {
    case 0:
        end_command(w);
        command_open = w->beginCommand(w, (GLSopcode)in.bytes(2), in.word());
        break;
    case 1: end_command(w); break;
    case 2: w->nextList(w); break;
    case 3: string_slot(w, in); break;
    case 4: w->putGLSenum(w, (GLint)in.word()); break;
    case 5: w->putGLSimageFlags(w, in.word()); break;
    case 6: w->putGLlong(w, (GLlong)in.bytes(8)); break;
    case 7: w->putGLulongHex(w, in.bytes(8)); break;
    case 8: w->putGLSopcode(w, (GLint)in.word()); break;
    case 9: w->putGLattribMask(w, in.word()); break;
    case 10: bitmap_slot(w, in); break;
    case 11: w->putGLblendFactor(w, in.word()); break;
    case 12: w->putGLboolean(w, in.byte()); break;
    case 13: w->putGLbyte(w, (GLbyte)in.byte()); break;
    case 14: w->putGLclearMask(w, in.word()); break;
    case 15: w->putGLclientAttribMask(w, in.word()); break;
    case 16: {
        uint64_t bits = in.bytes(8);
        double value;
        memcpy(&value, &bits, 8);
        check_double(value);
        w->putGLdouble(w, value);
        break;
    }
    case 17: {
        uint32_t bits = in.word();
        float value;
        memcpy(&value, &bits, 4);
        check_float(value);
        w->putGLfloat(w, value);
        break;
    }
    case 18: case 19: {
        bool is_float = op % 48 == 18;
        bool null = in.byte() == 0;
        const void *matrix = block(in.data(16 * (is_float ? 4 : 8)));
        (is_float ? w->putGLfloatMatrix : w->putGLdoubleMatrix)(w, null ? nullptr : matrix);
        break;
    }
    case 20: w->putGLdrawBuffer(w, in.word()); break;
    case 21: w->putGLenum(w, in.word()); break;
    case 22: w->putGLint(w, (GLint)in.word()); break;
    case 23: w->putGLintHeader(w, in.word(), (GLint)in.word()); break;
    case 24: {
        GLuint index = in.byte() % 8;
        w->putGLoutArg(w, index, (const GLvoid *)(uintptr_t)in.bytes(8));
        break;
    }
    case 25: w->putGLshort(w, (GLshort)in.bytes(2)); break;
    case 26: w->putGLstencilOp(w, in.word()); break;
    case 27: w->putGLtextureComponents(w, (GLint)in.word()); break;
    case 28: w->putGLubyte(w, in.byte()); break;
    case 29: w->putGLuint(w, in.word()); break;
    case 30: w->putGLuintHex(w, in.word()); break;
    case 31: w->putGLushort(w, (GLushort)in.bytes(2)); break;
    case 32: w->putGLushortHex(w, (GLushort)in.bytes(2)); break;
    case 33: {
        GLenum format = in.byte() % 2 ? 10784 + in.byte() % 14 : in.word();
        GLuint size = in.bytes(2) % 1024;
        bool null = in.byte() == 0;
        const void *data = block(in.data(size));
        w->putGLvertexData(w, format, size, null ? nullptr : data);
        break;
    }
    case 34: w->putGLpointer(w, (const GLvoid *)(uintptr_t)in.bytes(8)); break;
    case 35: w->putGLnothing(w, in.word()); break;
    case 36: w->padToDouble(w, in.byte() & 1); break;
    case 37: glsFlush(); break;
    case 38: case 39: case 40: case 41: case 42: case 43: by_enum_slot(w, in, op % 48 - 38); break;
    case 44: vector_slot(w, in, in.byte() % 10); break;
    case 45: image_slot(w, in, in.byte() % 10); break;
    case 46: w->putGLuint(w, in.word()); break;
    default: w->putGLenum(w, 10784 + in.byte() % 14); break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static bool attached = gls_process_attach();
    if (!attached || size < 1)
        return 0;
    Input in = {data, size};
    uint8_t setup = in.byte();
    // One context for all inputs: a writer keeps nothing in it but the string type.
    static GLuint id = glsGenContext();
    glsContext(id);
    glsStringType(GLS_UCS1);
    glsWriteFunc(sink);
    sink_taken = 0;
    sink_fails_at = setup & 1 ? (size_t)in.bytes(2) : 0;
    if (glsBeginCapture((const GLubyte *)"", GLS_TEXT, setup & 2 ? GLS_WRITE_NO_FRAME : 0)) {
        GlsWriter *w = gls_current()->currentWriter;
        command_open = false;
        while (!in.empty())
            one_operation(w, in);
        end_command(w);
        glsEndCapture();
    }
    glsGetError();
    for (void *b : blocks)
        free(b);
    blocks.clear();
    return 0;
}
