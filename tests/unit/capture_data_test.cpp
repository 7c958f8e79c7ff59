// Pixel data and vertex arrays in the capture: images in the layout that the unpack state gives
// them (asked of a stub GL, or kept in the shadow without a context), in the text and binary
// forms; vertex arrays packed into glsDrawVertexArray or expanded into per-vertex commands; and
// glsDrawVertexArray executed. The expected texts follow the format's rules, written by hand.
#include "gen/dispatch_calls.h"
#include "gen/gl_enums.h"
#include "gls/capture.h"
#include "gls/gls.h"
#include "gls/names.h"
#include "gls/tables.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string written;

std::string file_text(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

size_t collect(size_t count, const void *bytes)
{
    written.append((const char *)bytes, count);
    return count;
}

// The stub GL: a context that answers the pixel-store and array queries from these records, and
// notes the drawing calls it is given.
struct StubArray {
    GLboolean enabled;
    GLint size;
    GLenum type;
    GLint stride;
    const void *pointer;
    GLint buffer;
};

struct StubGl {
    bool context;
    const char *version;
    const char *extensions;
    GlsPixelStore unpack;
    StubArray vertex;
    std::string calls;  // a call a line
};

StubGl stub;

std::string expected(const char *name) { return file_text(std::string(QUONDALE_TEST_EXPECTED) + "/capture_data/" + name); }

// Bytes of a binary stream written by hand in hexadecimal.
std::string expected_bytes(const char *name)
{
    std::istringstream hex(expected(name));
    std::string bytes;
    for (unsigned byte; hex >> std::hex >> byte;)
        bytes += (char)byte;
    return bytes;
}

std::string name(GLenum value)
{
    const char *text = gls_gl_enum_name(value);
    return text ? text : std::to_string(value);
}

void note(const std::string &call) { stub.calls += call + "\n"; }

void GLS_APIENTRY stub_glGetIntegerv(GLenum pname, GLint *data)
{
    switch (pname) {
    case GL_MAX_LIGHTS: *data = stub.context ? 8 : 0; break;
    case GL_UNPACK_ALIGNMENT: *data = stub.unpack.alignment; break;
    case GL_UNPACK_LSB_FIRST: *data = stub.unpack.lsbFirst; break;
    case GL_UNPACK_ROW_LENGTH: *data = stub.unpack.rowLength; break;
    case GL_UNPACK_SKIP_ROWS: *data = stub.unpack.skipRows; break;
    case GL_UNPACK_SKIP_PIXELS: *data = stub.unpack.skipPixels; break;
    case GL_UNPACK_SWAP_BYTES: *data = stub.unpack.swapBytes; break;
    case GL_UNPACK_IMAGE_HEIGHT_EXT: *data = stub.unpack.imageHeight; break;
    case GL_UNPACK_SKIP_IMAGES_EXT: *data = stub.unpack.skipImages; break;
    case GL_VERTEX_ARRAY_SIZE: *data = stub.vertex.size; break;
    case GL_VERTEX_ARRAY_TYPE: *data = (GLint)stub.vertex.type; break;
    case GL_VERTEX_ARRAY_STRIDE: *data = stub.vertex.stride; break;
    case GL_VERTEX_ARRAY_BUFFER_BINDING: *data = stub.vertex.buffer; break;
    default: *data = 0; break;
    }
    // Buffer objects exist from GL 1.5 on: a query before that would be a GL error of ours.
    if (pname >= GL_ARRAY_BUFFER_BINDING && pname <= GL_EDGE_FLAG_ARRAY_BUFFER_BINDING && strcmp(stub.version, "1.5") < 0)
        note("glGetIntegerv(" + name(pname) + ")");
}

GLboolean GLS_APIENTRY stub_glIsEnabled(GLenum cap) { return cap == GL_VERTEX_ARRAY && stub.vertex.enabled; }

void GLS_APIENTRY stub_glGetPointerv(GLenum pname, void **pointer)
{
    *pointer = pname == GL_VERTEX_ARRAY_POINTER ? (void *)stub.vertex.pointer : nullptr;
}

const GLubyte *GLS_APIENTRY stub_glGetString(GLenum which)
{
    return (const GLubyte *)(which == GL_VERSION ? stub.version : which == GL_EXTENSIONS ? stub.extensions : nullptr);
}

void GLS_APIENTRY stub_glInterleavedArrays(GLenum format, GLsizei stride, const void *)
{
    note("glInterleavedArrays(" + name(format) + ", " + std::to_string(stride) + ")");
}

void GLS_APIENTRY stub_glDrawArrays(GLenum mode, GLint first, GLsizei count)
{
    note("glDrawArrays(" + name(mode) + ", " + std::to_string(first) + ", " + std::to_string(count) + ")");
}

void GLS_APIENTRY stub_glVertexPointer(GLint size, GLenum type, GLsizei stride, const void *pointer)
{
    note("glVertexPointer(" + std::to_string(size) + ", " + name(type) + ", " + std::to_string(stride) +
                         (pointer == stub.vertex.pointer ? ", the application's)" : ", another)"));
}

void GLS_APIENTRY stub_glEnableClientState(GLenum cap) { note("glEnableClientState(" + name(cap) + ")"); }
void GLS_APIENTRY stub_glDisableClientState(GLenum cap) { note("glDisableClientState(" + name(cap) + ")"); }
void GLS_APIENTRY stub_glBegin(GLenum mode) { note("glBegin(" + name(mode) + ")"); }
void GLS_APIENTRY stub_glEnd() { note("glEnd()"); }

void GLS_APIENTRY stub_glColor4ubv(const GLubyte *v)
{
    note("glColor4ubv(" + std::to_string(v[0]) + " " + std::to_string(v[1]) + " " +
                         std::to_string(v[2]) + " " + std::to_string(v[3]) + ")");
}

void GLS_APIENTRY stub_glVertex3fv(const GLfloat *v)
{
    note("glVertex3fv(" + std::to_string((int)v[0]) + " " + std::to_string((int)v[1]) + " " +
                         std::to_string((int)v[2]) + ")");
}

class CaptureData : public ::testing::Test {
protected:
    void SetUp() override
    {
        memcpy(saved_dispatch, gls_default_dispatch, sizeof saved_dispatch);
        gls_default_dispatch[OP_glGetIntegerv] = (GlsFunc)stub_glGetIntegerv;
        gls_default_dispatch[OP_glIsEnabled] = (GlsFunc)stub_glIsEnabled;
        gls_default_dispatch[OP_glGetPointerv] = (GlsFunc)stub_glGetPointerv;
        gls_default_dispatch[OP_glGetString] = (GlsFunc)stub_glGetString;
        gls_default_dispatch[OP_glInterleavedArrays] = (GlsFunc)stub_glInterleavedArrays;
        gls_default_dispatch[OP_glDrawArrays] = (GlsFunc)stub_glDrawArrays;
        gls_default_dispatch[OP_glVertexPointer] = (GlsFunc)stub_glVertexPointer;
        gls_default_dispatch[OP_glEnableClientState] = (GlsFunc)stub_glEnableClientState;
        gls_default_dispatch[OP_glDisableClientState] = (GlsFunc)stub_glDisableClientState;
        gls_default_dispatch[OP_glBegin] = (GlsFunc)stub_glBegin;
        gls_default_dispatch[OP_glEnd] = (GlsFunc)stub_glEnd;
        gls_default_dispatch[OP_glColor4ubv] = (GlsFunc)stub_glColor4ubv;
        gls_default_dispatch[OP_glVertex3fv] = (GlsFunc)stub_glVertex3fv;
        stub = {};
        stub.context = true;
        stub.version = "1.1.0 stub";
        stub.extensions = "GL_EXT_abgr GL_EXT_texture3D";
        stub.unpack.alignment = 4;
        id = glsGenContext();
        ASSERT_NE(id, 0u);
        glsContext(id);
        ctx = gls_current();
        glsWriteFunc(collect);
        written.clear();
        glsGetError();
    }

    void TearDown() override
    {
        glsDeleteContext(id);
        glsContext(0);
        glsGetError();
        memcpy(gls_default_dispatch, saved_dispatch, sizeof saved_dispatch);
    }

    // A capture without frame; the facts about GL are asked afresh at its start.
    void capture(GLSenum type = GLS_TEXT) { ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", type, GLS_WRITE_NO_FRAME)); }

    std::string text()
    {
        glsEndCapture();
        std::string result = written;
        written.clear();
        return result;
    }

    // Vertex arrays captured, from the shadow, with the array set-up executed but not written.
    void capture_arrays()
    {
        stub.context = false;
        capture();
        glsEnable(GLS_CAPTURE_VERTEX_ARRAYS);
        for (int op : {OP_glVertexPointer, OP_glVertexPointerEXT, OP_glColorPointer, OP_glNormalPointer,
                       OP_glTexCoordPointer, OP_glEdgeFlagPointer, OP_glInterleavedArrays,
                       OP_glEnableClientState, OP_glDisableClientState})
            glsCaptureFlags(op, GLS_CAPTURE_EXECUTE_BIT);
    }

    GlsFunc saved_dispatch[GLS_OPCODE_COUNT];
    GLuint id = 0;
    GlsContext *ctx = nullptr;
};

// ---------------------------------------------------------------------------------------------
// Images

TEST_F(CaptureData, TheUnpackStateOfGlShapesEachImage)
{
    const GLubyte padded[8] = {1, 2, 3, 99, 4, 5, 6, 99};
    const GLubyte square[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    const GLushort shorts[2] = {0x0201, 0x0403};
    const GLfloat floats[8] = {0.5f, 1, 2, 99, 3, 4, -1, 99};
    const GLushort packed[2] = {0x1234, 0xF00F};
    capture();
    dispatch_glDrawPixels(2, 1, GL_RGB, GL_UNSIGNED_BYTE, (const GLubyte[]){255, 0, 0, 0, 255, 0});
    dispatch_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 1, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, padded);
    stub.unpack = {1, 0, 3, 1, 1, 0, 0, 0};  // row length 3, one row and one pixel skipped
    dispatch_glTexSubImage2D(GL_TEXTURE_2D, 1, 4, 5, 2, 2, GL_LUMINANCE, GL_UNSIGNED_BYTE, square);
    stub.unpack = {2, 0, 0, 0, 0, 1, 0, 0};  // bytes swapped
    dispatch_glDrawPixels(2, 1, GL_LUMINANCE, GL_UNSIGNED_SHORT, shorts);
    stub.unpack = {8, 0, 0, 0, 0, 0, 0, 0};  // rows of 12 bytes padded to 16
    dispatch_glDrawPixels(1, 2, GL_RGB, GL_FLOAT, floats);
    stub.unpack = {4, 0, 0, 0, 0, 0, 0, 0};
    dispatch_glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_SHORT_4_4_4_4_EXT, packed);
    dispatch_glTexImage2D(GL_TEXTURE_2D, 0, 4, 64, 64, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    dispatch_glDrawPixels(1, 1, GL_RGB, 0x9999, padded);
    // Bitmap rows are masked, shifted and reversed.
    stub.unpack = {1, 0, 0, 0, 0, 0, 0, 0};
    dispatch_glBitmap(10, 2, 0, 0, 10, 0, (const GLubyte[]){0xFF, 0xFF, 0x80, 0x40});
    stub.unpack.lsbFirst = 1;
    stub.unpack.skipPixels = 3;
    dispatch_glBitmap(5, 1, 0.5f, 0, 0, 0, (const GLubyte[]){0xF8});
    stub.unpack.lsbFirst = 0;
    stub.unpack.skipPixels = 6;  // the row's four bits span two bytes
    dispatch_glBitmap(4, 1, 0, 0, 0, 0, (const GLubyte[]){0x03, 0xC0});
    dispatch_glReadPixels(0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, (void *)0x1000);  // its pointer only
    EXPECT_EQ(text(), expected("images.txt"));
}

TEST_F(CaptureData, VolumesSkipImagesWhereGlHasTheParameters)
{
    const GLubyte source[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    stub.unpack = {1, 0, 0, 0, 0, 0, 3, 1};  // images of three rows, the first skipped
    capture();
    dispatch_glTexImage3D(GL_TEXTURE_3D_EXT, 0, GL_LUMINANCE, 1, 2, 2, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, source);
    dispatch_glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 2, GL_LUMINANCE, GL_UNSIGNED_BYTE, source);
    std::string with = text();
    stub.extensions = "GL_EXT_texture3Dx";  // a GL 1.1 without the extension has no such parameters
    capture();
    dispatch_glTexImage3D(GL_TEXTURE_3D_EXT, 0, GL_LUMINANCE, 1, 2, 2, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, source);
    EXPECT_EQ(with + text(), expected("volumes.txt"));
}

TEST_F(CaptureData, WithoutAContextTheShadowKeepsTheStore)
{
    GLubyte stipple[128];
    for (int i = 0; i < 128; ++i)
        stipple[i] = i % 2 ? 0x55 : 0xAA;
    stub.context = false;
    stub.unpack.alignment = 8;  // GL's answer must not count
    capture();
    dispatch_glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    dispatch_glPixelStorei(GL_UNPACK_ALIGNMENT, 3);      // refused, as GL refuses it
    dispatch_glPixelStorei(GL_UNPACK_ROW_LENGTH, -2);    // refused
    dispatch_glPixelStoref(GL_UNPACK_LSB_FIRST, 1);
    dispatch_glPolygonStipple(stipple);
    dispatch_glPixelStorei(GL_UNPACK_SKIP_PIXELS, 1);
    dispatch_glDrawPixels(1, 1, GL_LUMINANCE, GL_UNSIGNED_BYTE, (const GLubyte[]){7, 9});
    EXPECT_EQ(text(), expected("shadow.txt"));
}

TEST(ImageBytes, FollowFormatAndType)
{
    EXPECT_EQ(gls_image_bytes(GL_RGB, GL_UNSIGNED_BYTE, 2, 1, 1), 6u);
    EXPECT_EQ(gls_image_bytes(GL_LUMINANCE_ALPHA, GL_FLOAT, 3, 2, 1), 48u);
    EXPECT_EQ(gls_image_bytes(GL_CMYKA_EXT, GL_SHORT, 1, 1, 2), 20u);
    EXPECT_EQ(gls_image_bytes(GL_ABGR_EXT, GL_UNSIGNED_INT, 1, 1, 1), 16u);
    EXPECT_EQ(gls_image_bytes(GL_RGB, GL_UNSIGNED_BYTE_3_3_2_EXT, 4, 1, 1), 4u);
    EXPECT_EQ(gls_image_bytes(GL_RGBA, GL_UNSIGNED_BYTE_3_3_2_EXT, 4, 1, 1), 0u) << "3_3_2 needs three";
    EXPECT_EQ(gls_image_bytes(GL_CMYK_EXT, GL_UNSIGNED_SHORT_5_5_5_1_EXT, 3, 1, 1), 6u);
    EXPECT_EQ(gls_image_bytes(GL_RGB, GL_UNSIGNED_INT_8_8_8_8_EXT, 1, 1, 1), 0u) << "8_8_8_8 needs four";
    EXPECT_EQ(gls_image_bytes(GL_COLOR_INDEX, GL_BITMAP, 9, 2, 1), 4u);
    EXPECT_EQ(gls_image_bytes(GL_STENCIL_INDEX, GL_BITMAP, 8, 1, 1), 1u);
    EXPECT_EQ(gls_image_bytes(GL_RGB, GL_BITMAP, 8, 1, 1), 0u);
    EXPECT_EQ(gls_image_bytes(0x1234, GL_UNSIGNED_BYTE, 1, 1, 1), 0u);
    EXPECT_EQ(gls_image_bytes(GL_RGB, GL_DOUBLE, 1, 1, 1), 0u);
    EXPECT_EQ(gls_image_bytes(GL_RGB, GL_UNSIGNED_BYTE, -1, 1, 1), 0u);
    EXPECT_EQ(gls_image_bytes(GL_RGBA, GL_FLOAT, 8192, 16384, 1), 0x80000000u) << "2^31 bytes is the limit";
    EXPECT_EQ(gls_image_bytes(GL_RGBA, GL_FLOAT, 8192, 16385, 1), 0u);
}

// Each of these would read far outside what it was given, or cannot be written tight: the data
// item is empty and nothing is read (a read would fault on the small source).
TEST_F(CaptureData, BadImagesWriteEmptyDataAndReadNothing)
{
    const GLubyte small[4] = {};
    capture();
    dispatch_glDrawPixels(65536, 65536, GL_RGBA, GL_FLOAT, small);
    dispatch_glDrawPixels(-1, 1, GL_RGBA, GL_UNSIGNED_BYTE, small);
    stub.unpack.alignment = 3;
    dispatch_glDrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, small);
    stub.unpack = {1, 0, 1, 0, 0, 0, 0, 0};  // a row length below the width: rows overlap
    dispatch_glDrawPixels(2, 1, GL_LUMINANCE, GL_UNSIGNED_BYTE, small);
    stub.unpack = {4, 0, 0, 0x40000000, 0, 0, 0, 0};
    dispatch_glDrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, small);
    stub.unpack = {4, 0, 0, 0, 0x7FFFFFFF, 0, 0, 0};
    dispatch_glDrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, small);
    stub.unpack = {4, 0, 0x7FFFFFFF, 0, 0, 0, 0, 0};
    dispatch_glDrawPixels(1, 2, GL_RGBA, GL_FLOAT, small);
    stub.unpack = {8, 0, 0, 0, 0, 0, 0x7FFFFFFF, 0x7FFFFFFF};
    dispatch_glTexImage3D(GL_TEXTURE_3D_EXT, 0, GL_LUMINANCE, 1, 1, 1, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, small);
    stub.unpack = {1, 0, 0, 0, 0, 0, 1, 0};  // an image height below the height
    dispatch_glTexImage3D(GL_TEXTURE_3D_EXT, 0, GL_LUMINANCE, 1, 2, 1, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, small);
    stub.unpack = {1, 0, 0, 0, 0, 0, 0, 0};
    dispatch_glTexImage3D(GL_TEXTURE_3D_EXT, 0, GL_LUMINANCE, 8, 1, 2, 0, GL_COLOR_INDEX, GL_BITMAP, small);
    EXPECT_EQ(text(), expected("bad_images.txt"));
}

TEST_F(CaptureData, BinaryFormsHoldImagesTightInTheirByteOrder)
{
    const GLushort shorts[2] = {0x0102, 0x0304};
    stub.unpack = {1, 0, 0, 0, 0, 1, 0, 0};  // bytes swapped in memory: the values are 0x0201, 0x0403
    capture(GLS_BINARY_LSB_FIRST);
    dispatch_glDrawPixels(2, 1, GL_RGB, GL_UNSIGNED_BYTE, (const GLubyte[]){255, 0, 0, 0, 255, 0});
    dispatch_glDrawPixels(2, 1, GL_LUMINANCE, GL_UNSIGNED_SHORT, shorts);
    dispatch_glBitmap(10, 2, 0, 0, 10, 0, (const GLubyte[]){0xFF, 0xFF, 0x80, 0x40});
    EXPECT_EQ(text(), expected_bytes("images_lsb.hex"));
    capture(GLS_BINARY_MSB_FIRST);
    dispatch_glDrawPixels(2, 1, GL_LUMINANCE, GL_UNSIGNED_SHORT, shorts);
    EXPECT_EQ(text(), expected_bytes("images_msb.hex"));
}

// A size that does not match what the items write ends the process: reaching the end and the
// byte count, command by command as the payload rounds up, are the check.
TEST_F(CaptureData, EveryImageCommandFitsItsSizeInTheBinaryForms)
{
    const GLubyte data[128] = {1, 2, 3, 4, 5, 6, 7, 8};
    const GLenum L = GL_LUMINANCE, B = GL_UNSIGNED_BYTE;
    stub.unpack.alignment = 1;
    for (GLSenum type : {GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST}) {
        capture(type);
        dispatch_glBitmap(2, 2, 0, 0, 0, 0, data);                               // 28 + 2
        dispatch_glDrawPixels(2, 2, L, B, data);                                 // 20 + 4
        dispatch_glTexImage1D(GL_TEXTURE_1D, 0, 1, 2, 0, L, B, data);            // 32 + 2
        dispatch_glTexImage2D(GL_TEXTURE_2D, 0, 1, 2, 2, 0, L, B, data);         // 36 + 4
        dispatch_glTexImage3D(GL_TEXTURE_3D_EXT, 0, 1, 2, 2, 2, 0, L, B, data);  // 40 + 8
        dispatch_glTexSubImage1D(GL_TEXTURE_1D, 0, 0, 2, L, B, data);            // 28 + 2
        dispatch_glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 2, 2, L, B, data);      // 36 + 4
        dispatch_glTexSubImage3D(GL_TEXTURE_3D_EXT, 0, 0, 0, 0, 2, 2, 2, L, B, data);  // 44 + 8
        dispatch_glPolygonStipple(data);                                         // 4 + 128
        dispatch_glColorTable(GL_COLOR_TABLE, L, 2, L, B, data);                 // 24 + 2
        dispatch_glConvolutionFilter1D(GL_CONVOLUTION_1D, L, 2, L, B, data);     // 24 + 2
        dispatch_glConvolutionFilter2D(GL_CONVOLUTION_2D, L, 2, 2, L, B, data);  // 28 + 4
        dispatch_glSeparableFilter2D(GL_SEPARABLE_2D, L, 2, 2, L, B, data, data + 2);  // 28 + 2 + 2
        EXPECT_EQ(text().size(), 36u + 28 + 40 + 44 + 52 + 36 + 44 + 56 + 136 + 32 + 32 + 36 + 36);
    }
}

// ---------------------------------------------------------------------------------------------
// Vertex arrays

struct ColorVertex {
    GLubyte color[4];
    GLfloat vertex[3];
};
const ColorVertex block[2] = {{{10, 20, 30, 40}, {1, 2, 3}}, {{50, 60, 70, 80}, {4, 5, 6}}};

TEST_F(CaptureData, FloatArraysDrawAsOnePackedCommand)
{
    const GLfloat triangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const GLfloat strided[8] = {9, 9, 9, 9, 1, 2, 3, -1};
    const GLubyte colors[8] = {255, 0, 0, 255, 0, 255, 0, 128};
    const GLfloat corners[4] = {0.5f, 0.5f, -1, 2};
    const GLfloat uv[2] = {0.25f, 0.75f}, normal[3] = {0, 0, 1}, point[3] = {1, 2, 3};
    const GLfloat spaced[6] = {0.5f, 1, 7, 8, 9, 99};  // T2F_V3F with a float of its own behind
    capture_arrays();
    dispatch_glVertexPointer(3, GL_FLOAT, 0, triangle);
    dispatch_glEnableClientState(GL_VERTEX_ARRAY);
    dispatch_glDrawArrays(GL_TRIANGLES, 0, 3);
    dispatch_glVertexPointer(3, GL_FLOAT, 16, strided);
    dispatch_glDrawArrays(GL_POINTS, 1, 1);
    dispatch_glVertexPointer(2, GL_FLOAT, 0, corners);
    dispatch_glColorPointer(4, GL_UNSIGNED_BYTE, 0, colors);
    dispatch_glEnableClientState(GL_COLOR_ARRAY);
    dispatch_glDrawArrays(GL_LINES, 0, 2);
    dispatch_glDisableClientState(GL_COLOR_ARRAY);
    dispatch_glVertexPointer(3, GL_FLOAT, 0, point);
    dispatch_glTexCoordPointer(2, GL_FLOAT, 0, uv);
    dispatch_glNormalPointer(GL_FLOAT, 0, normal);
    dispatch_glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    dispatch_glEnableClientState(GL_NORMAL_ARRAY);
    dispatch_glDrawArrays(GL_POINTS, 0, 1);
    // Interleaved arrays come back packed.
    dispatch_glInterleavedArrays(GL_C4UB_V3F, 0, block);
    dispatch_glDrawArrays(GL_LINES, 0, 2);
    dispatch_glInterleavedArrays(GL_T2F_V3F, 24, spaced);
    dispatch_glDrawArrays(GL_POINTS, 0, 1);
    EXPECT_EQ(text(), expected("float_arrays.txt"));
}

TEST_F(CaptureData, OtherArraysExpandIntoPerVertexCommands)
{
    const GLshort shorts[6] = {1, 2, 3, 4, 5, 6};
    const GLfloat colors[6] = {1, 0, 0, 0, 1, 0};
    const GLdouble corners[4] = {1, 2, 3, 4};
    const GLboolean edges[2] = {1, 0};
    capture_arrays();
    dispatch_glVertexPointer(3, GL_SHORT, 0, shorts);
    dispatch_glEnableClientState(GL_VERTEX_ARRAY);
    dispatch_glDrawArrays(GL_LINES, 0, 2);
    dispatch_glVertexPointer(2, GL_DOUBLE, 0, corners);
    dispatch_glColorPointer(3, GL_FLOAT, 0, colors);
    dispatch_glEdgeFlagPointer(0, edges);
    dispatch_glEnableClientState(GL_COLOR_ARRAY);
    dispatch_glEnableClientState(GL_EDGE_FLAG_ARRAY);
    dispatch_glDrawArrays(GL_TRIANGLES, 0, 2);
    dispatch_glArrayElement(1);
    dispatch_glDisableClientState(GL_VERTEX_ARRAY);
    dispatch_glDrawArrays(GL_POINTS, 0, 1);  // no vertex: the attributes alone, as GL takes them
    EXPECT_EQ(text(), expected("per_vertex.txt"));
}

std::vector<std::string> row_calls;
void GLS_APIENTRY row_glVertex3sv(const GLshort *v) { row_calls.push_back("glVertex3sv " + std::to_string(v[2])); }
void GLS_APIENTRY row_glBegin(GLenum mode) { row_calls.push_back("glBegin " + name(mode)); }

// A session installs its wrappers in the capture rows: the per-vertex commands reach them.
TEST_F(CaptureData, PerVertexCommandsPassTheCaptureRows)
{
    const GLshort shorts[6] = {1, 2, 3, 4, 5, 6};
    row_calls.clear();
    capture_arrays();
    glsCommandFunc(GLS_CAPTURE_FUNC, OP_glVertex3sv, (GlsFunc)row_glVertex3sv);
    glsCommandFunc(GLS_CAPTURE_FUNC, OP_glBegin, (GlsFunc)row_glBegin);
    dispatch_glVertexPointer(3, GL_SHORT, 0, shorts);
    dispatch_glEnableClientState(GL_VERTEX_ARRAY);
    dispatch_glDrawArrays(GL_LINES, 0, 2);
    EXPECT_EQ(text(), "glEnd();\n");
    EXPECT_EQ(row_calls, (std::vector<std::string>{"glBegin GL_LINES", "glVertex3sv 3", "glVertex3sv 6"}));
}

TEST_F(CaptureData, DrawElementsTakeTheirIndicesOfEachType)
{
    const GLfloat square[8] = {0, 0, 1, 0, 1, 1, 0, 1};
    const GLshort shorts[4] = {1, 2, 3, 4};
    capture_arrays();
    dispatch_glVertexPointer(2, GL_FLOAT, 0, square);
    dispatch_glEnableClientState(GL_VERTEX_ARRAY);
    dispatch_glDrawElements(GL_LINES, 2, GL_UNSIGNED_BYTE, (const GLubyte[]){3, 0});
    dispatch_glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, (const GLushort[]){1, 2, 3});
    dispatch_glDrawElements(GL_POINTS, 1, GL_UNSIGNED_INT, (const GLuint[]){2});
    dispatch_glDrawElements(GL_POINTS, 1, GL_FLOAT, (const GLfloat[]){2});  // no such index type: nothing
    dispatch_glVertexPointer(2, GL_SHORT, 0, shorts);
    dispatch_glDrawElements(GL_LINES, 2, GL_UNSIGNED_SHORT, (const GLushort[]){1, 0});
    EXPECT_EQ(text(), expected("draw_elements.txt"));
}

// Draws that the arrays cannot serve: nothing at all where GL draws nothing, else the ordinary
// command, with no element read out of reach.
TEST_F(CaptureData, BadDrawsNeitherCrashNorReadOutOfReach)
{
    const GLfloat pair[4] = {1, 2, 3, 4};
    capture_arrays();
    dispatch_glDrawArrays(GL_TRIANGLES, 0, 3);  // no array enabled
    dispatch_glVertexPointer(2, GL_FLOAT, 0, pair);
    dispatch_glEnableClientState(GL_VERTEX_ARRAY);
    dispatch_glDrawArrays(GL_TRIANGLES, 0, -1);
    dispatch_glDrawArrays(GL_TRIANGLES, -1, 3);
    dispatch_glDrawElements(GL_POINTS, 2, GL_UNSIGNED_SHORT, nullptr);
    dispatch_glDrawElements(GL_POINTS, 1, GL_UNSIGNED_INT, (const GLuint[]){0xFFFFFFFF});
    dispatch_glArrayElement(-1);
    dispatch_glVertexPointer(2, GL_FLOAT, -8, nullptr);  // refused: the pair stays
    dispatch_glVertexPointerEXT(2, GL_FLOAT, 0, 2, pair);
    dispatch_glDrawElements(GL_POINTS, 1, GL_UNSIGNED_INT, (const GLuint[]){2});  // past the EXT count
    dispatch_glDrawElements(GL_POINTS, 1, GL_UNSIGNED_INT, (const GLuint[]){1});
    dispatch_glVertexPointer(2, GL_FLOAT, 0, nullptr);
    dispatch_glDrawArrays(GL_POINTS, 0, 1);
    EXPECT_EQ(text(), expected("bad_draws.txt"));
}

TEST_F(CaptureData, ArraysInBufferObjectsStayOrdinaryCommands)
{
    const GLfloat triangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    stub.vertex = {1, 3, GL_FLOAT, 0, triangle, 1};  // the pointer is an offset into buffer 1
    stub.version = "2.1";
    capture();
    glsEnable(GLS_CAPTURE_VERTEX_ARRAYS);
    dispatch_glDrawArrays(GL_TRIANGLES, 0, 3);
    EXPECT_EQ(text(), "glDrawArrays(GL_TRIANGLES, 0, 3);\n");
}

// What is written, then what GL is given; no buffer query before GL 1.5.
TEST_F(CaptureData, DrawVertexArrayExecutesAndGivesTheArraysBack)
{
    const GLfloat triangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    stub.vertex = {1, 3, GL_FLOAT, 0, triangle, 0};
    capture();
    glsEnable(GLS_CAPTURE_VERTEX_ARRAYS);
    glsCaptureFlags(OP_glsDrawVertexArray, GLS_CAPTURE_EXECUTE_BIT | GLS_CAPTURE_WRITE_BIT);
    dispatch_glDrawArrays(GL_TRIANGLES, 0, 3);
    EXPECT_EQ(text() + stub.calls, expected("draw_vertex_array.txt"));
}

TEST_F(CaptureData, DrawVertexArrayOnGl10DrawsVertexByVertex)
{
    stub.version = "1.0";
    capture();
    glsCaptureFlags(OP_glsDrawVertexArray, GLS_CAPTURE_EXECUTE_BIT);
    dispatch_glsDrawVertexArray(GL_POINTS, GL_C4UB_V3F, 2, block);
    dispatch_glsDrawVertexArray(GL_POINTS, 0x9999, 2, block);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    dispatch_glsDrawVertexArray(GL_POINTS, GL_V3F, -1, block);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_EQ(text() + stub.calls, expected("draw_vertex_array_gl10.txt"));
}

}  // namespace
