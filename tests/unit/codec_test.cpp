// The stream codec's writing side: the text form of every kind of argument, capture flags and
// callbacks, writers and streams, and the name tables.
#include "gen/dispatch_calls.h"
#include "gen/gl_enums.h"
#include "gls/gls.h"
#include "gls/names.h"
#include "gls/writer.h"
#include "gls/containers.h"
#include "gls/capture.h"
#include "gls/streams.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>
#include <unistd.h>
#include <vector>

void gls_call_sample(int opcode);

namespace {

std::string written;

size_t collect(size_t count, const void *bytes)
{
    written.append((const char *)bytes, count);
    return count;
}

size_t refuse(size_t, const void *) { return 0; }

std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// A hand-written expected text of the folder beside the tests.
std::string expected(const char *name) { return read_file(std::string(QUONDALE_EXPECTED) + "/" + name); }

// A new directory under /tmp, with its trailing slash.
std::string make_directory()
{
    char directory[] = "/tmp/codec_testXXXXXX";
    EXPECT_TRUE(mkdtemp(directory));
    return std::string(directory) + "/";
}

// A context of its own for each test, with text going to `written`.
class Codec : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static bool attached = gls_process_attach();
        ASSERT_TRUE(attached);
    }

    void SetUp() override
    {
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
    }

    // Opens an unnamed text capture without frame: `written` then holds statements only.
    void capture() { ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME)); }

    // Closes the capture and hands back what it wrote.
    std::string text()
    {
        glsEndCapture();
        std::string result = written;
        written.clear();
        return result;
    }

    GLuint id = 0;
    GlsContext *ctx = nullptr;
};

// ---------------------------------------------------------------------------------------------
// Text form

// Every kind of argument, a few calls each, against one file of the statements they write.
TEST_F(Codec, EveryKindOfArgumentWritesItsTextForm)
{
    const float inf = std::numeric_limits<float>::infinity();
    const GLfloat values[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const GLfloat identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.5f, -2, 0, 1};
    const GLdouble scaled[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    const GLushort wide[] = {'a', 0x263A, '"', 0};
    capture();
    // Scalars by their type.
    dispatch_glClearColor(0, 0.5f, -2.25f, 1);
    dispatch_glClearDepth(0.125);
    dispatch_glRasterPos2iv((const GLint[]){-7, 2147483647});
    dispatch_glColor3ubv((const GLubyte[]){255, 0, 128});
    dispatch_glColorMask(1, 0, 1, 2);
    dispatch_glCallList(4294967295u);
    dispatch_glLineStipple(3, 0xF0F0);
    dispatch_glStencilFunc(0x0207, 1, 0xFF);
    // Enumerants by name, unknown ones as numbers.
    dispatch_glBegin(0x0004);
    dispatch_glMatrixMode(0x1701);
    dispatch_glEnable(0x0B71);
    dispatch_glEnable(0x8000);  // GL_ABGR_EXT: a value of the extension list
    dispatch_glEnable(0x7777);
    dispatch_glBlendFunc(0, 1);
    dispatch_glBlendFunc(0x0302, 0x0303);
    dispatch_glStencilOp(0, 0x1E00, 0x1E01);
    dispatch_glDrawBuffer(0);
    dispatch_glTexImage2D(0x0DE1, 0, 3, 1, 1, 0, 0x1907, 0x1401, nullptr);
    dispatch_glTexImage2D(0x0DE1, 0, 0x8051, 1, 1, 0, 0x1907, 0x1401, nullptr);
    // Masks: their bits in table order.
    dispatch_glClear(0x4000);
    dispatch_glClear(16640);
    dispatch_glClear(0);
    dispatch_glPushAttrib(0xFFFFF);
    dispatch_glPushAttrib(0x40000002);
    dispatch_glPushAttrib(0x20000000 | 0x80);
    dispatch_glPushClientAttrib(2);
    dispatch_glPushClientAttrib(0xFFFFFFFF);
    // Floats and doubles by the number rule.
    dispatch_glVertex3fv((const GLfloat[]){1.5f, 0, -2});
    dispatch_glVertex3fv((const GLfloat[]){1e5f, 1.25e-7f, 3.14159274f});
    dispatch_glVertex3fv((const GLfloat[]){inf, -inf, -0.0f});
    dispatch_glVertex2fv((const GLfloat[]){std::numeric_limits<float>::quiet_NaN(), 12345678});
    dispatch_glVertex2dv((const GLdouble[]){0.1, 1e300});
    dispatch_glVertex2dv((const GLdouble[]){std::numeric_limits<double>::infinity(), 1.0 / 3});
    // Parameters named where the pname says so.
    dispatch_glFogi(0x0B65, 0x2601);                      // GL_FOG_MODE, GL_LINEAR
    dispatch_glFogf(0x0B65, 2048.0f);                     // GL_EXP as a float
    dispatch_glFogf(0x0B62, 0.5f);                        // GL_FOG_DENSITY: a number
    dispatch_glPixelStorei(0x0CF0, 1);                    // GL_UNPACK_SWAP_BYTES
    dispatch_glTexParameteri(0x0DE1, 0x2801, 0x2703);     // GL_TEXTURE_MIN_FILTER
    dispatch_glTexParameterfv(0x0DE1, 0x1004, (const GLfloat[]){0, 0.25f, 1, 1});
    dispatch_glTexEnviv(0x2300, 0x2200, (const GLint[]){0x2100});
    dispatch_glTexGendv(0x2000, 0x2500, (const GLdouble[]){0x2400});
    dispatch_glLightModeli(0x0B52, 1);                    // GL_LIGHT_MODEL_TWO_SIDE: boolean
    dispatch_glFogi(0x0B63, 1);                           // GL_FOG_START: a number
    dispatch_glFogiv(0x0B65, (const GLint[]){77777});     // no name: the number
    // Vector counts from the commands' rules.
    dispatch_glLightfv(0x4000, 0x1203, (const GLfloat[]){1, 2, 3, 0});   // GL_POSITION: 4
    dispatch_glLightfv(0x4000, 0x1204, (const GLfloat[]){0, 0, -1});     // GL_SPOT_DIRECTION: 3
    dispatch_glMaterialfv(0x0408, 0x1601, (const GLfloat[]){32});        // GL_SHININESS: 1
    dispatch_glLightfv(0x4000, 0x9999, (const GLfloat[]){1});            // unknown pname: none
    dispatch_glDeleteTextures(3, (const GLuint[]){1, 2, 3});
    dispatch_glDeleteTextures(-1, (const GLuint[]){1});
    dispatch_glClipPlane(0x3000, (const GLdouble[]){1, 0, 0, -0.5});
    dispatch_glRectsv((const GLshort[]){0, 1}, (const GLshort[]){2, 3});
    dispatch_glEdgeFlagv((const GLboolean[]){0});
    dispatch_glPixelMapusv(0x0C70, 2, (const GLushort[]){0, 65535});
    // Long vectors break every eight elements; matrices write four aligned rows.
    dispatch_glsNumfv((const GLubyte *)"four", 4, values);
    dispatch_glsNumfv((const GLubyte *)"five", 5, values);
    dispatch_glsNumfv((const GLubyte *)"nine", 9, values);
    dispatch_glsNumfv((const GLubyte *)"none", 0, values);
    dispatch_glLoadMatrixf(identity);
    dispatch_glMultMatrixd(scaled);
    // The codec's own commands and kinds.
    dispatch_glsBlock(GLS_HEADER);
    dispatch_glsError(OP_glClear, GLS_IO_ERROR);
    dispatch_glsError(7, 999);
    dispatch_glsHeaderi(GLS_DOUBLEBUFFER, 1);
    dispatch_glsHeaderi(GLS_DEPTH_BITS, 24);
    dispatch_glsHeaderfv(GLS_RED_POINT, (const GLfloat[]){0.25f, 0.5f});
    dispatch_glsHeaderiv(GLS_CREATE_TIME, (const GLint[]){2024, 1, 2, 3, 4, 5});
    dispatch_glsNumd((const GLubyte *)"d", 0.5);
    dispatch_glsNuml((const GLubyte *)"l", -5000000000LL);
    dispatch_glsNumbv((const GLubyte *)"b", 2, (const GLbyte[]){-1, 1});
    dispatch_glsRequireVersion(GLS_API_GL, 1, 1);
    dispatch_glsEndObj();
    dispatch_glsDrawVertexArray(0x0004, 10785, 1, (const GLfloat[]){1, 2, 3});
    dispatch_glsDrawVertexArray(0x0000, 10786, 1, (const GLubyte[]){1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0});
    // Array commands by their rules.
    dispatch_glCallLists(3, 0x1401, (const GLubyte[]){1, 2, 3});
    dispatch_glCallLists(2, 0x1407, (const GLubyte[]){1, 2, 3, 4});   // GL_2_BYTES
    dispatch_glCallLists(2, 0x9999, (const GLubyte[]){1, 2});
    dispatch_glDrawElements(0x0004, 3, 0x1403, (const GLushort[]){0, 1, 2});
    dispatch_glDrawElements(0x0004, 3, 0x1406, (const GLfloat[]){0, 1, 2});
    dispatch_glMap1f(0x0D97, 0, 1, 3, 2, (const GLfloat[]){1, 2, 3, 4, 5, 6});
    dispatch_glMap1f(0x0D97, 0, 1, 4, 2, (const GLfloat[]){1, 2, 3, 99, 4, 5, 6, 99});
    dispatch_glMap1d(0x0D97, 0, 1, 2, 2, (const GLdouble[]){1, 2, 3, 4});
    dispatch_glMap2f(0x0DB3, 0, 1, 1, 2, 0, 1, 2, 2, (const GLfloat[]){1, 2, 3, 4});
    dispatch_glMapGrid2d(10, 0, 1, 20, 0.5, 1);
    // Output pointers and addresses as numbers, at the pointer's full width; a get is written only.
    dispatch_glGetFloatv(0x0BA6, (GLfloat *)(uintptr_t)0xFEDCBA9870ull);
    dispatch_glVertexPointer(3, 0x1406, 0, (const void *)0x1234);
    dispatch_glColorPointerEXT(4, 0x1401, 0, 10, (const void *)0xABC0);
    // Strings escape quotes, backslashes and unprintables; wide types walk their characters.
    dispatch_glsComment((const GLubyte *)"say \"hi\"\\ now\tand\x01 caf\xE9");
    dispatch_glsString((const GLubyte *)"Info", (const GLubyte *)"");
    glsStringType(GLS_UCS2);
    dispatch_glsComment((const GLubyte *)wide);
    EXPECT_EQ(text(), expected("codec_text_form.txt"));
}

TEST_F(Codec, MasksFitWhereverInTheBufferTheyStart)
{
    // Every name of the table is longer than the buffer's reserve: such a mask fits wherever
    // in the buffer it starts, which comments of every length before it move about.
    capture();
    dispatch_glPushAttrib(0xFFFFFFFE);
    std::string mask = text(), expected;
    capture();
    for (int length = 0; length < 400; ++length) {
        std::string comment(length, 'x');
        dispatch_glsComment((const GLubyte *)comment.c_str());
        dispatch_glPushAttrib(0xFFFFFFFE);
        expected += "glsComment(\"" + comment + "\");\n" + mask;
    }
    EXPECT_EQ(text(), expected);
}

// ---------------------------------------------------------------------------------------------
// Capture flags, callbacks and the execute step

int fake_clears;
GLbitfield fake_clear_mask;
void GLS_APIENTRY fake_glClear(GLbitfield mask)
{
    ++fake_clears;
    fake_clear_mask = mask;
    // A call of the codec's own: the guard keeps it from being captured again.
    dispatch_glFlush();
}

GLint fake_have_context;
void GLS_APIENTRY fake_glGetIntegerv(GLenum, GLint *data) { *data = fake_have_context; }

class Execute : public Codec {
protected:
    void SetUp() override
    {
        saved_clear = gls_default_dispatch[OP_glClear];
        saved_get = gls_default_dispatch[OP_glGetIntegerv];
        gls_default_dispatch[OP_glClear] = (GlsFunc)fake_glClear;
        gls_default_dispatch[OP_glGetIntegerv] = (GlsFunc)fake_glGetIntegerv;
        fake_clears = 0;
        fake_have_context = 0;
        Codec::SetUp();
    }

    void TearDown() override
    {
        Codec::TearDown();
        gls_default_dispatch[OP_glClear] = saved_clear;
        gls_default_dispatch[OP_glGetIntegerv] = saved_get;
    }

    GlsFunc saved_clear = nullptr, saved_get = nullptr;
};

TEST_F(Execute, FlagsChooseExecuteWriteOrBoth)
{
    // Flags, the mask cleared under them, and the real calls made so far.
    const struct { GLbitfield flags, mask; int clears; } steps[] = {
        {1, 0x100, 2}, {2, 0x200, 2}, {3, 0x400, 3}, {0, 0x4000, 3}};
    dispatch_glClear(0x4000);  // without a capture: straight to the real entry
    EXPECT_EQ(fake_clears, 1);
    EXPECT_EQ(written, "");
    capture();
    for (auto step : steps) {
        glsCaptureFlags(OP_glClear, step.flags);
        dispatch_glClear(step.mask);
        EXPECT_EQ(fake_clears, step.clears) << step.flags;
    }
    EXPECT_EQ(fake_clear_mask, 0x400u);
    EXPECT_EQ(text(), "glClear(GL_ACCUM_BUFFER_BIT);\nglClear(GL_STENCIL_BUFFER_BIT);\n");
    EXPECT_EQ(ctx->directCallDepth, 0);
}

std::vector<int> callback_log;
void entry_lowers_flags(GLSopcode opcode)
{
    callback_log.push_back(opcode);
    glsCaptureFlags(opcode, 4 | 1);
}
void exit_logs(GLSopcode opcode) { callback_log.push_back(-opcode); }

TEST_F(Execute, EntryCallbackMayChangeTheFlagsOfTheCall)
{
    callback_log.clear();
    glsCaptureFunc(GLS_CAPTURE_ENTRY_FUNC, entry_lowers_flags);
    glsCaptureFunc(GLS_CAPTURE_EXIT_FUNC, exit_logs);
    capture();
    glsCaptureFlags(OP_glClear, 7);
    dispatch_glClear(0x4000);   // entry leaves execute only: nothing is written
    glsCaptureFlags(OP_glClear, 2);
    dispatch_glClear(0x4000);   // no callback bit: neither callback runs
    EXPECT_EQ(text(), "glClear(GL_COLOR_BUFFER_BIT);\n");
    EXPECT_EQ(fake_clears, 1);
    EXPECT_EQ(callback_log, (std::vector<int>{OP_glClear, -OP_glClear}));
}

TEST_F(Execute, ClientCommandsKeepTheShadow)
{
    capture();
    const GLfloat vertices[6] = {};
    dispatch_glVertexPointer(2, 0x1406, 8, vertices);
    dispatch_glEnableClientState(32884);
    dispatch_glPixelStorei(0x0CF5, 1);
    dispatch_glSelectBuffer(64, (GLuint *)0x40);
    text();
    EXPECT_EQ(ctx->clientState.vertexArray.pointer, vertices);
    EXPECT_EQ(ctx->clientState.vertexArray.size, 2);
    EXPECT_EQ(ctx->clientState.vertexArray.stride, 8);
    EXPECT_EQ(ctx->clientState.vertexArray.enabled, 1);
    EXPECT_EQ(ctx->clientState.unpack.alignment, 1);
    EXPECT_EQ(ctx->clientState.selectBufferSize, 64);
}

// ---------------------------------------------------------------------------------------------
// Writers and streams

TEST_F(Codec, NestingStopsAtSixteen)
{
    for (int i = 0; i < GLS_CAPTURE_NESTING_LIMIT; ++i)
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME));
    GlsWriter *top = ctx->currentWriter;
    EXPECT_FALSE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME));
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    EXPECT_EQ(ctx->captureNesting, 16);
    EXPECT_EQ(ctx->currentWriter, top);
    dispatch_glEnd();
    for (int i = 0; i < GLS_CAPTURE_NESTING_LIMIT; ++i)
        glsEndCapture();
    EXPECT_EQ(written, "glEnd();\n");  // the innermost writer only
    glsEndCapture();
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
}

TEST_F(Codec, FailingWriterGivesOneIoErrorAndSwallowsTheRest)
{
    // A callback that takes nothing, and /dev/full, which accepts the open and refuses every write.
    for (const char *name : {"", "/dev/full"}) {
        glsWriteFunc(*name ? collect : refuse);
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)name, GLS_TEXT, GLS_WRITE_NO_FRAME)) << name;
        dispatch_glEnd();
        glsFlush();
        EXPECT_EQ(glsGetError(), GLS_IO_ERROR) << name;
        dispatch_glEnd();
        glsFlush();
        EXPECT_EQ(glsGetError(), GLS_NONE) << name;
        EXPECT_TRUE(ctx->currentWriter->failed) << name;
        glsEndCapture();
        EXPECT_EQ(ctx->captureNesting, 0);
    }
}

TEST_F(Codec, FrameOpensAndClosesTheStream)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, 0));
    EXPECT_EQ(written, "glsBeginGLS(1, 0);\n");  // flushed at once
    dispatch_glEnd();
    glsEndCapture();
    EXPECT_EQ(written, "glsBeginGLS(1, 0);\nglEnd();\nglsEndGLS();\n");
}

TEST_F(Codec, NamedFilesTakeTheWritePrefixAndAppend)
{
    std::string directory = make_directory();
    glsWritePrefix((const GLubyte *)directory.c_str());
    for (GLbitfield flags : {0u, (GLbitfield)GLS_WRITE_APPEND}) {
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)"out.gls", GLS_TEXT, flags));
        dispatch_glEnd();
        glsEndCapture();
    }
    const std::string framed = "glsBeginGLS(1, 0);\nglEnd();\nglsEndGLS();\n";
    EXPECT_EQ(read_file(directory + "out.gls"), framed + framed);
    EXPECT_EQ(glsGetStreamSize((const GLubyte *)"out.gls"), 2 * framed.size());
    glsDeleteStream((const GLubyte *)"out.gls");
    EXPECT_EQ(glsGetError(), GLS_NONE);
    EXPECT_NE(access((directory + "out.gls").c_str(), F_OK), 0);
    rmdir(directory.c_str());
}

TEST_F(Codec, BigStatementsPassThroughTheBuffer)
{
    std::vector<GLfloat> values(20000, 0.5f);
    capture();
    dispatch_glsNumfv((const GLubyte *)"big", (GLuint)values.size(), values.data());
    std::string statement = text();
    EXPECT_EQ(statement.size(), strlen("glsNumfv(\"big\", 20000, {") + 20000 * 5 + 2500 * 4 + strlen("\n});\n") - 1);
    EXPECT_EQ(statement.substr(statement.size() - 12), ".5, 0.5\n});\n");
}

// ---------------------------------------------------------------------------------------------
// Binary forms and context streams

// Commands of a binary stream as (opcode, payload) pairs, pads and end records left out.
typedef std::vector<std::pair<uint32_t, std::string>> Commands;

void parse_commands(const uint8_t *p, size_t length, Commands *commands)
{
    const uint8_t *end = p + length;
    while (p + 4 <= end) {
        uint16_t head[2];
        memcpy(head, p, 4);
        uint32_t opcode = head[0], size = head[1], header = 4;
        if (opcode == 0) {
            uint32_t words[2];
            memcpy(words, p + 4, 8);
            opcode = words[0];
            size = words[1];
            header = 12;
            if (opcode == 0)
                return; // an end record
        }
        ASSERT_GE(size, header);
        if (opcode != OP_glsPad)
            commands->push_back({opcode, std::string((const char *)p + header, size - header)});
        p += size;
    }
}

Commands context_stream_commands(GlsContext *ctx, const char *name)
{
    Commands commands;
    intptr_t value = 0;
    EXPECT_TRUE(gls_dict_find(ctx->contextStreamDict, name, &value));
    GlsContextStream *stream = (GlsContextStream *)value;
    GlsBlock *block = stream->blocks;
    do {
        parse_commands(block->base, (size_t)(block->writePos - block->base), &commands);
        block = block->listNext;
    } while (block != stream->blocks);
    return commands;
}

// Every command writes a statement of its own name, whatever its arguments. In the binary forms
// a size that does not match the items ends the process: reaching the end is the check.
TEST_F(Codec, EveryCommandWritesItselfInEveryForm)
{
    for (GLSenum type : {GLS_TEXT, GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST, GLS_CONTEXT}) {
        GLbitfield flags = type == GLS_TEXT ? GLS_WRITE_NO_FRAME : 0;
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)(type == GLS_CONTEXT ? "all" : ""), type, flags));
        int commands = 0;
        for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
            if (!gls_opcode_exists(op))
                continue;
            ++commands;
            written.clear();
            ctx->captureFlags[op] = GLS_CAPTURE_WRITE_BIT;  // also the three the writer keeps for itself
            gls_call_sample(op);
            glsFlush();
            if (type != GLS_TEXT)
                continue;
            std::string name = gls_opcode_names[op];
            EXPECT_EQ(written.compare(0, name.size() + 1, name + "("), 0) << written;
            EXPECT_EQ(written.find(");\n"), written.size() - 3) << "one statement: " << written;
        }
        glsEndCapture();
        EXPECT_EQ(commands, 335);
    }
    // All 335 and the frame, but the glsPad, which the parse leaves out.
    EXPECT_EQ(context_stream_commands(ctx, "all").size(), 335u + 2 - 1);
}

TEST_F(Codec, ContextStreamHoldsWhatABinaryStreamHolds)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_BINARY_LSB_FIRST, 0));
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"scene", GLS_CONTEXT, 0));
    GlsWriter *file_writer = ctx->writerStack[0], *stream_writer = ctx->writerStack[1];
    // The same calls go to both writers: the context stream's and, by hand, the external one.
    for (int i = 0; i < 30000; ++i) {
        const GLfloat v[3] = {(GLfloat)i, 1, 2};
        for (GlsWriter *writer : {stream_writer, file_writer}) {
            ctx->currentWriter = writer;
            dispatch_glColor3dv((const GLdouble[]){0.5, 0.25, 1});
            dispatch_glVertex3fv(v);
            dispatch_glsComment((const GLubyte *)"odd");
        }
    }
    ctx->currentWriter = stream_writer;
    glsEndCapture();
    glsEndCapture();
    Commands external;
    parse_commands((const uint8_t *)written.data(), written.size(), &external);
    Commands inside = context_stream_commands(ctx, "scene");
    EXPECT_EQ(inside.size(), 90002u);
    EXPECT_TRUE(inside == external);
    intptr_t value = 0;
    gls_dict_find(ctx->contextStreamDict, "scene", &value);
    EXPECT_NE(((GlsContextStream *)value)->blocks->listNext, ((GlsContextStream *)value)->blocks) << "grew into blocks";
}

TEST_F(Codec, ContextStreamsAppendOrStartOver)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"list", GLS_CONTEXT, 0));
    dispatch_glEnd();
    glsEndCapture();
    EXPECT_EQ(glsGetStreamSize((const GLubyte *)"list"), 20u + 4 + 12 + 4);  // a glsPad before the end record
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"list", GLS_CONTEXT, GLS_WRITE_APPEND | GLS_WRITE_NO_FRAME));
    dispatch_glFlush();
    EXPECT_FALSE(glsBeginCapture((const GLubyte *)"list", GLS_CONTEXT, 0)) << "being written";
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    glsEndCapture();
    Commands commands = context_stream_commands(ctx, "list");
    ASSERT_EQ(commands.size(), 4u);  // pads left out
    EXPECT_EQ(commands[1].first, 74u);   // glEnd
    EXPECT_EQ(commands[2].first, 20u);   // glsEndGLS
    EXPECT_EQ(commands[3].first, 195u);  // glFlush, appended behind the old end
    EXPECT_EQ(glsGetStreamSize((const GLubyte *)"list"), 20u + 4 + 12 + 4 + 4 + 4);
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"list", GLS_CONTEXT, GLS_WRITE_NO_FRAME));
    glsEndCapture();
    EXPECT_EQ(glsGetStreamSize((const GLubyte *)"list"), 0u);
    EXPECT_TRUE(glsIsContextStream((const GLubyte *)"list"));
    EXPECT_EQ(glsGetStreamType(GLS_STREAM_TYPE, (const GLubyte *)"list"), (GLuint)GLS_CONTEXT);
    glsDeleteStream((const GLubyte *)"list");
    EXPECT_FALSE(glsIsContextStream((const GLubyte *)"list"));
    EXPECT_EQ(ctx->contextStreamList.count, 0);
}

TEST_F(Codec, ContextStreamBlockEndsOnAnEightByteBoundary)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"pad", GLS_CONTEXT, GLS_WRITE_NO_FRAME));
    dispatch_glEnd();
    glsEndCapture();
    intptr_t value = 0;
    ASSERT_TRUE(gls_dict_find(ctx->contextStreamDict, "pad", &value));
    // The first block, of 24 bytes, has no room: the command went to a block of its own.
    GlsBlock *block = ((GlsContextStream *)value)->blocks->listPrev;
    ASSERT_EQ(block->writePos - block->base, 4 + 4 + 20);
    const uint16_t expected[14] = {OP_glEnd, 4, OP_glsPad, 4};
    EXPECT_EQ(memcmp(block->base, expected, sizeof expected), 0);
}

TEST_F(Codec, DoublesAreAlignedInTheBinaryForm)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_BINARY_LSB_FIRST, GLS_WRITE_NO_FRAME));
    dispatch_glColor3dv((const GLdouble[]){1, 2, 3});  // at the start: a glsPad first
    dispatch_glEnd();
    dispatch_glEnd();                                  // grows by a word for the next one
    dispatch_glColor3dv((const GLdouble[]){4, 5, 6});
    dispatch_glMapGrid2d(1, 0, 1, 2, 0, 1);            // a word between its int and its doubles
    glsEndCapture();
    const uint8_t *bytes = (const uint8_t *)written.data();
    auto header = [&](size_t at) { uint16_t h[2]; memcpy(h, bytes + at, 4); return std::make_pair(h[0], h[1]); };
    auto number = [&](size_t at) { double d; memcpy(&d, bytes + at, 8); return d; };
    EXPECT_EQ(header(0), std::make_pair((uint16_t)OP_glsPad, (uint16_t)4));
    EXPECT_EQ(header(4), std::make_pair((uint16_t)OP_glColor3dv, (uint16_t)28));
    EXPECT_EQ(header(32), std::make_pair((uint16_t)OP_glEnd, (uint16_t)4));
    EXPECT_EQ(header(36), std::make_pair((uint16_t)OP_glEnd, (uint16_t)8));
    EXPECT_EQ(header(44), std::make_pair((uint16_t)OP_glColor3dv, (uint16_t)28));
    EXPECT_EQ(number(48), 4);
    EXPECT_EQ(header(72), std::make_pair((uint16_t)OP_glMapGrid2d, (uint16_t)48));
    EXPECT_EQ(number(80), 0);   // u1
    EXPECT_EQ(number(88), 1);   // u2
    EXPECT_EQ(number(104), 0);  // v1, behind vn and the empty word
    EXPECT_EQ(written.size(), 120u);
}

TEST_F(Codec, BinaryHeadersTakeTheLongFormAboveTheShortLimit)
{
    static GLbyte data[65536];
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_BINARY_LSB_FIRST, 0));
    dispatch_glsNumbv((const GLubyte *)"t", 65516, data);  // payload 65528: short
    dispatch_glsNumbv((const GLubyte *)"t", 65519, data);  // payload 65531, padded to 65532: long
    glsEndCapture();
    auto word = [&](size_t at) { uint32_t w; memcpy(&w, written.data() + at, 4); return w; };
    const uint32_t begin[5] = {0, 16, 20, 1, 0};
    EXPECT_EQ(written.compare(0, 20, std::string((const char *)begin, 20)), 0);
    EXPECT_EQ(word(20), 33u | 65532u << 16);
    EXPECT_EQ(word(24), 8u | 1);
    const size_t second = 20 + 65532;
    EXPECT_EQ(word(second), 0u);
    EXPECT_EQ(word(second + 4), 33u);
    EXPECT_EQ(word(second + 8), 65532u + 12);
    const size_t end = second + 65544;
    EXPECT_EQ(word(end), 0u);
    EXPECT_EQ(word(end + 4), 20u);
    EXPECT_EQ(word(end + 8), 12u);
    EXPECT_EQ(written.size(), end + 12);
}

TEST_F(Codec, NullVectorsKeepTheSizeTheyPromised)
{
    // A null pointer is data: the process lives and each command carries zeros in its place.
    for (GLSenum type : {GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST, GLS_CONTEXT}) {
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)(type == GLS_CONTEXT ? "nulls" : ""), type, GLS_WRITE_NO_FRAME));
        dispatch_glColor3fv(nullptr);
        dispatch_glLoadMatrixf(nullptr);
        dispatch_glsNumfv((const GLubyte *)"t", 2, nullptr);
        dispatch_glRectsv(nullptr, (const GLshort[]){1, 2});
        dispatch_glCallLists(2, GL_UNSIGNED_SHORT, nullptr);
        dispatch_glsDrawVertexArray(GL_POINTS, GL_V2F, 1, nullptr);
        glsEndCapture();
    }
    const uint32_t words[] = {
        OP_glColor3fv | 16 << 16, 0, 0, 0,
        OP_glLoadMatrixf | 68 << 16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        OP_glsNumfv | 24 << 16, 8 | 1, 't', 2, 0, 0, // tag, count, zeros
        OP_glRectsv | 12 << 16, 0, 1 | 2 << 16,
        OP_glCallLists | 16 << 16, 2, GL_UNSIGNED_SHORT, 0,
        OP_glsDrawVertexArray | 24 << 16, GL_POINTS, GL_V2F, 1, 0, 0,
    };
    std::string little = written.substr(0, sizeof words);
    EXPECT_EQ(little, std::string((const char *)words, sizeof words));
    EXPECT_EQ(written.size(), 2 * sizeof words);
    EXPECT_EQ(glsGetStreamSize((const GLubyte *)"nulls"), sizeof words);
}

TEST_F(Codec, SizesThatDoNotFitACommandAreRefused)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_BINARY_LSB_FIRST, GLS_WRITE_NO_FRAME));
    static const GLint few[4] = {1, 2, 3, 4};
    // 4 * 2^30 bytes wrap a 32-bit sum to 0; 2^32 - 1 bytes and the header do not fit.
    dispatch_glsNumiv((const GLubyte *)"wrap", 0x40000000u, few);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    dispatch_glsNumbv((const GLubyte *)"max", 0xFFFFFFFFu, (const GLbyte *)few);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    dispatch_glDeleteTextures(0x7FFFFFFF, (const GLuint *)few);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    dispatch_glsNumiv((const GLubyte *)"ok", 4, few);
    glsEndCapture();
    EXPECT_EQ(written.size(), 4u + 8 + 4 + 16) << "only the command that fits";
}

TEST_F(Codec, NamesInWideStringTypesAreTurnedIntoUtf8)
{
    std::string prefix = make_directory();
    glsWritePrefix((const GLubyte *)prefix.c_str());
    glsStringType(GLS_UCS4);
    const GLuint name[] = {'s', 0xE9, '.', 'g', 0};  // "sé.g"
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)name, GLS_TEXT, 0));
    glsEndCapture();
    EXPECT_EQ(access((prefix + "s\xC3\xA9.g").c_str(), F_OK), 0);
    const GLuint *full = (const GLuint *)glsGetStreamAttrib(GLS_WRITE_NAME, (const GLubyte *)name);
    ASSERT_NE(full, nullptr);
    std::u32string wide;
    while (*full)
        wide += (char32_t)*full++;
    EXPECT_EQ(wide, std::u32string(prefix.begin(), prefix.end()) + U"s\u00E9.g");
    glsStringType(GLS_UCS2);
    const GLushort read_prefix[] = {'r', 0x263A, '/', 0};
    glsPrependReadPrefix((const GLubyte *)read_prefix);
    EXPECT_STREQ(gls_read_prefix(ctx, 0), "r\xE2\x98\xBA/");
    glsStringType(GLS_UCS1);
    glsDeleteStream((const GLubyte *)"s\xE9.g");  // Latin-1 in the byte form
    EXPECT_NE(access((prefix + "s\xC3\xA9.g").c_str(), F_OK), 0);
    rmdir(prefix.c_str());
}

// ---------------------------------------------------------------------------------------------
// Stream names, prefixes, types

TEST_F(Codec, ReadPrefixesComeFromTheEnvironment)
{
    // The default separator, and a prefix longer than any buffer of names.
    std::string long_prefix(2000, 'p');
    setenv("GLS_READ_PREFIX_LIST", (long_prefix + ":b").c_str(), 1);
    GLuint whole = glsGenContext();
    setenv("GLS_READ_PREFIX_LIST", "first;second", 1);
    setenv("GLS_LIST_SEPARATOR", ";", 1);
    setenv("GLS_WRITE_PREFIX", "out/", 1);
    GLuint other = glsGenContext();
    unsetenv("GLS_READ_PREFIX_LIST");
    unsetenv("GLS_LIST_SEPARATOR");
    unsetenv("GLS_WRITE_PREFIX");
    glsContext(whole);
    EXPECT_EQ(std::string(gls_read_prefix(gls_current(), 0)), long_prefix);
    EXPECT_STREQ(gls_read_prefix(gls_current(), 1), "b");
    glsDeleteContext(whole);
    glsContext(other);
    GlsContext *made = gls_current();
    ASSERT_EQ(made->readPrefixList.count, 3);
    EXPECT_STREQ(gls_read_prefix(made, 0), "first");
    EXPECT_STREQ(gls_read_prefix(made, 1), "second");
    EXPECT_STREQ(gls_read_prefix(made, 2), "");
    glsPrependReadPrefix((const GLubyte *)"zero");
    EXPECT_STREQ(gls_read_prefix(made, 0), "zero");
    glsRemoveReadPrefix(1);
    EXPECT_STREQ(gls_read_prefix(made, 1), "second");
    glsRemoveReadPrefix(3);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_STREQ((const char *)glsGetStreamAttrib(GLS_WRITE_NAME, (const GLubyte *)"a.gls"), "out/a.gls");
    glsDeleteContext(other);
    glsContext(id);
}

TEST_F(Codec, StreamTypeAndCrcOfFiles)
{
    std::string directory = make_directory();
    glsWritePrefix((const GLubyte *)directory.c_str());
    glsPrependReadPrefix((const GLubyte *)directory.c_str());
    const GLSenum types[3] = {GLS_TEXT, GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST};
    for (GLSenum type : types) {
        std::string name = "stream" + std::to_string(type);
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)name.c_str(), type, 0));
        dispatch_glEnd();
        glsEndCapture();
        EXPECT_EQ(glsGetStreamType(GLS_STREAM_TYPE, (const GLubyte *)name.c_str()), (GLuint)type);
        EXPECT_EQ(std::string((const char *)glsGetStreamAttrib(GLS_READ_NAME, (const GLubyte *)name.c_str())),
                  directory + name);
        glsDeleteStream((const GLubyte *)name.c_str());
    }
    FILE *file = fopen((directory + "check").c_str(), "wb");
    fputs("123456789", file);
    fclose(file);
    EXPECT_EQ(glsGetStreamType(GLS_CRC32, (const GLubyte *)"check"), 0xFC891918u);
    glsDeleteStream((const GLubyte *)"check");
    glsDeleteStream((const GLubyte *)"check");
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    rmdir(directory.c_str());
}

// ---------------------------------------------------------------------------------------------
// Name tables and dictionaries

TEST(Names, PagesHoldOneNameAValue)
{
    EXPECT_STREQ(gls_gl_enum_name(0), "GL_POINTS");
    EXPECT_STREQ(gls_gl_enum_name(0x0B71), "GL_DEPTH_TEST");
    EXPECT_STREQ(gls_gl_enum_name(0x8074), "GL_VERTEX_ARRAY");
    EXPECT_STREQ(gls_gl_enum_name(0x8011), "GL_CONVOLUTION_2D");  // the imaging subset
    EXPECT_STREQ(gls_gl_enum_name(0x0100), "GL_ACCUM");           // not GL_DEPTH_BUFFER_BIT
    EXPECT_EQ(gls_gl_enum_name(133 * 256), nullptr);
    EXPECT_EQ(gls_gl_enum_name(0xFFFFFFFF), nullptr);
    EXPECT_STREQ(gls_gls_enum_name(GLS_TILEABLE), "GLS_TILEABLE");
    EXPECT_STREQ(gls_gls_enum_name(341), "GLS_MAX_CAPTURE_NESTING");
    EXPECT_EQ(gls_gls_enum_name(15), nullptr);
    EXPECT_EQ(gls_gls_enum_name(-1), nullptr);
}

TEST(Names, DictionariesFindEveryName)
{
    const GlsDictionarySet *set = gls_dictionaries();
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set, gls_dictionaries()) << "built once";
    const struct { GlsDict *dict; const char *name; intptr_t value; } found[] = {
        {set->glEnumDict, "GL_TRUE", 1},
        {set->glEnumDict, "GL_NO_ERROR", 0},
        {set->glEnumDict, "GL_CONVOLUTION_BORDER_MODE_EXT", 0x8013},
        {set->glsEnumDict, "GLS_TEXT", 67},
        {set->glsOpDict, "glClear", OP_glClear},
        {set->glAttribMaskDict, "GL_MULTISAMPLE_BIT_EXT", 0x20000000},
    };
    intptr_t value = -1;
    for (auto item : found) {
        EXPECT_TRUE(gls_dict_find(item.dict, item.name, &value)) << item.name;
        EXPECT_EQ(value, item.value) << item.name;
    }
    EXPECT_EQ(set->glsOpDict->count, 335);
    EXPECT_EQ(set->glClientAttribMaskDict->count, 4);
    EXPECT_FALSE(gls_dict_find(set->glEnumDict, "GL_NOT_A_NAME", &value));
    // Every page row is found again under its own name.
    for (uint32_t v = 0; v < 133 * 256; ++v) {
        if (const char *name = gls_gl_enum_name(v)) {
            ASSERT_TRUE(gls_dict_find(set->glEnumDict, name, &value)) << name;
            ASSERT_EQ((uint32_t)value, v) << name;
        }
    }
}

TEST(Containers, DictionaryGrowsAndCopiesKeys)
{
    EXPECT_EQ(gls_dict_create(0, 0), nullptr);
    GlsDict *dict = gls_dict_create(1, 0);
    ASSERT_NE(dict, nullptr);
    char key[16];
    for (int i = 0; i < 1000; ++i) {
        snprintf(key, sizeof key, "k%d", i);
        ASSERT_TRUE(gls_dict_insert(dict, key, i));
    }
    EXPECT_FALSE(gls_dict_insert(dict, "k7", 0)) << "a key is refused twice";
    EXPECT_GE(dict->mask + 1, 1000u);
    intptr_t value;
    for (int i = 0; i < 1000; ++i) {
        snprintf(key, sizeof key, "k%d", i);
        ASSERT_TRUE(gls_dict_find(dict, key, &value));
        ASSERT_EQ(value, i);
    }
    EXPECT_TRUE(gls_dict_remove(dict, "k500"));
    EXPECT_FALSE(gls_dict_find(dict, "k500", &value));
    EXPECT_EQ(dict->count, 999);
    gls_dict_delete(dict);
}

TEST(Containers, CountedListKeepsItsCursorIndex)
{
    GlsList list = {};
    GlsBox boxes[3];
    gls_list_append(&list, &boxes[0]);
    gls_list_append(&list, &boxes[1]);
    list.cursor = &boxes[1];
    list.cursorIndex = 1;
    gls_list_prepend(&list, &boxes[2]);
    EXPECT_EQ(list.cursorIndex, 2);
    EXPECT_EQ(gls_list_at(&list, 0), &boxes[2]);
    EXPECT_EQ(gls_list_at(&list, 2), &boxes[1]);
    gls_list_remove(&list, &boxes[0]);
    EXPECT_EQ(list.cursor, nullptr);
    EXPECT_EQ(list.count, 2);
    EXPECT_EQ(gls_list_at(&list, 1), &boxes[1]);
}

}  // namespace
