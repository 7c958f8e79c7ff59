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
#include <iterator>
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

// The C library's text for a float ("%.7G") or a double ("%.16G"), with the writer's NaN and
// infinity forms.
template <typename T> void check_number(T value)
{
    char ours[32], expected[40];
    sizeof value == 4 ? gls_format_float(ours, value) : gls_format_double(ours, value);
    uint64_t bits = 0;
    memcpy(&bits, &value, sizeof value);
    if (std::isnan(value))
        snprintf(expected, sizeof expected, "0x%llX", (unsigned long long)bits);
    else if (std::isinf(value))
        snprintf(expected, sizeof expected, "%sGLS_INF", value < 0 ? "-" : "");
    else
        snprintf(expected, sizeof expected, sizeof value == 4 ? "%.7G" : "%.16G", (double)value);
    if (strcmp(ours, expected)) {
        fprintf(stderr, "number written as %s, expected %s\n", ours, expected);
        abort();
    }
}

template <typename T> T number(Input &in)
{
    uint64_t bits = in.bytes(sizeof(T));
    T value;
    memcpy(&value, &bits, sizeof value);
    return value;
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
            check_number(((const float *)bytes.data())[i]);
    slots[kind](w, count, null ? nullptr : block(bytes));
}

template <int kind> void by_enum_slot(GlsWriter *w, Input &in)
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
        w->putGLfloatByEnum(w, pname, number<float>(in));
    } else {
        w->putGLdoubleByEnum(w, pname, number<double>(in));
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

// Slots of one number, read from the next bytes of the input; floats and doubles are checked too.
template <auto Slot, int Bytes> void scalar(GlsWriter *w, Input &in) { (w->*Slot)(w, in.bytes(Bytes)); }
template <auto Slot, typename T> void checked(GlsWriter *w, Input &in)
{
    T value = number<T>(in);
    check_number(value);
    (w->*Slot)(w, value);
}
template <auto Slot, int Bytes> void matrix(GlsWriter *w, Input &in)
{
    bool null = in.byte() == 0;
    const void *data = block(in.data(16 * Bytes));
    (w->*Slot)(w, null ? nullptr : data);
}

using Operation = void (*)(GlsWriter *, Input &);
// By the operation's byte, modulo their count.
const Operation operations[] = {
    [](GlsWriter *w, Input &in) {
        end_command(w);
        command_open = w->beginCommand(w, (GLSopcode)in.bytes(2), in.word());
    },
    [](GlsWriter *w, Input &) { end_command(w); },
    [](GlsWriter *w, Input &) { w->nextList(w); },
    string_slot,
    scalar<&GlsWriter::putGLSenum, 4>, scalar<&GlsWriter::putGLSimageFlags, 4>, scalar<&GlsWriter::putGLlong, 8>,
    scalar<&GlsWriter::putGLulongHex, 8>, scalar<&GlsWriter::putGLSopcode, 4>, scalar<&GlsWriter::putGLattribMask, 4>,
    bitmap_slot,
    scalar<&GlsWriter::putGLblendFactor, 4>, scalar<&GlsWriter::putGLboolean, 1>, scalar<&GlsWriter::putGLbyte, 1>,
    scalar<&GlsWriter::putGLclearMask, 4>, scalar<&GlsWriter::putGLclientAttribMask, 4>,
    checked<&GlsWriter::putGLdouble, double>, checked<&GlsWriter::putGLfloat, float>,
    matrix<&GlsWriter::putGLfloatMatrix, 4>, matrix<&GlsWriter::putGLdoubleMatrix, 8>,
    scalar<&GlsWriter::putGLdrawBuffer, 4>, scalar<&GlsWriter::putGLenum, 4>, scalar<&GlsWriter::putGLint, 4>,
    [](GlsWriter *w, Input &in) { w->putGLintHeader(w, in.word(), (GLint)in.word()); },
    [](GlsWriter *w, Input &in) {
        GLuint index = in.byte() % 8;
        w->putGLoutArg(w, index, (const GLvoid *)(uintptr_t)in.bytes(8));
    },
    scalar<&GlsWriter::putGLshort, 2>, scalar<&GlsWriter::putGLstencilOp, 4>,
    scalar<&GlsWriter::putGLtextureComponents, 4>, scalar<&GlsWriter::putGLubyte, 1>, scalar<&GlsWriter::putGLuint, 4>,
    scalar<&GlsWriter::putGLuintHex, 4>, scalar<&GlsWriter::putGLushort, 2>, scalar<&GlsWriter::putGLushortHex, 2>,
    [](GlsWriter *w, Input &in) {
        GLenum format = in.byte() % 2 ? 10784 + in.byte() % 14 : in.word();
        GLuint size = in.bytes(2) % 1024;
        bool null = in.byte() == 0;
        const void *data = block(in.data(size));
        w->putGLvertexData(w, format, size, null ? nullptr : data);
    },
    [](GlsWriter *w, Input &in) { w->putGLpointer(w, (const GLvoid *)(uintptr_t)in.bytes(8)); },
    scalar<&GlsWriter::putGLnothing, 4>,
    [](GlsWriter *w, Input &in) { w->padToDouble(w, in.byte() & 1); },
    [](GlsWriter *, Input &) { glsFlush(); },
    by_enum_slot<0>, by_enum_slot<1>, by_enum_slot<2>, by_enum_slot<3>, by_enum_slot<4>, by_enum_slot<5>,
    [](GlsWriter *w, Input &in) { vector_slot(w, in, in.byte() % 10); },
    [](GlsWriter *w, Input &in) { image_slot(w, in, in.byte() % 10); },
    scalar<&GlsWriter::putGLuint, 4>,
    [](GlsWriter *w, Input &in) { w->putGLenum(w, 10784 + in.byte() % 14); },
};

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
            operations[in.byte() % std::size(operations)](w, in);
        end_command(w);
        glsEndCapture();
    }
    glsGetError();
    for (void *b : blocks)
        free(b);
    blocks.clear();
    return 0;
}
