// The stream codec's reading side: round trips through every form, the text parser's rules, bad
// input, and the queries. A recording stub stands in for the real functions: each executed call
// is written by a second context's text capture, so what a read did is compared as one text.
#include "gen/commands.h"
#include "gen/dispatch_calls.h"
#include "gen/gl_enums.h"
#include "gls/gls.h"
#include "gls/streams.h"
#include "gls/tables.h"
#include "gls/writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

void gls_call_sample(int opcode);
extern const GlsFunc gls_recorders[GLS_OPCODE_COUNT];
extern GlsContext *gls_recording_context;

namespace {

std::string written, recorded;

template <std::string *into> size_t collect(size_t count, const void *bytes)
{
    into->append((const char *)bytes, count);
    return count;
}

std::string file_text(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

const std::string data_dir = QUONDALE_TEST_DATA;

std::string expected(const char *name) { return file_text(std::string(QUONDALE_TEST_EXPECTED) + "/reader/" + name); }

// A reading context, and a recording context whose capture writes what the reads execute.
class Reader : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        static bool attached = gls_process_attach();
        ASSERT_TRUE(attached);
    }

    void SetUp() override
    {
        memcpy(saved_dispatch, gls_default_dispatch, sizeof saved_dispatch);
        recording_id = glsGenContext();
        glsContext(recording_id);
        glsWriteFunc(collect<&recorded>);
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME));
        gls_recording_context = gls_current();
        memset(gls_recording_context->captureFlags, GLS_CAPTURE_WRITE_BIT, GLS_OPCODE_COUNT);
        id = glsGenContext();
        glsContext(id);
        ctx = gls_current();
        glsWriteFunc(collect<&written>);
        // Write only: the samples are not executed, and a copy writes what it reads.
        for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
            if (op != OP_glsBeginGLS && op != OP_glsEndGLS && op != OP_glsPad)
                ctx->captureFlags[op] = GLS_CAPTURE_WRITE_BIT;
        written.clear();
        recorded.clear();
        glsGetError();
    }

    void TearDown() override
    {
        memcpy(gls_default_dispatch, saved_dispatch, sizeof saved_dispatch);
        glsDeleteContext(recording_id);
        glsDeleteContext(id);
        glsContext(0);
        glsGetError();
        if (!folder.empty())
            std::filesystem::remove_all(folder);
    }

    // A folder of its own for the streams the test writes, where the captures write them.
    void make_folder()
    {
        char name[] = "/tmp/reader_XXXXXX";
        ASSERT_TRUE(mkdtemp(name));
        folder = std::string(name) + "/";
        glsWritePrefix((const GLubyte *)folder.c_str());
    }

    // From here on the reads' calls go to the recorder. It stands in for GL, which each read
    // sets to tight rows before its first image: its capture reads images that way.
    void record()
    {
        gls_recording_context->clientState.unpack.alignment = 1;
        for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
            if (gls_opcode_exists(op))
                gls_default_dispatch[op] = gls_recorders[op];
        gls_update_dispatch(ctx);
    }

    std::string take_recorded()
    {
        gls_flush_writer(gls_recording_context->currentWriter);
        std::string text = recorded;
        recorded.clear();
        return text;
    }

    // Every command's sample call but the frame's own, captured in one stream.
    std::string samples(GLSenum type, const char *name = "")
    {
        written.clear();
        EXPECT_TRUE(glsBeginCapture((const GLubyte *)name, type, 0));
        for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
            if (gls_opcode_exists(op) && op != OP_glsBeginGLS && op != OP_glsEndGLS && op != OP_glsPad)
                gls_call_sample(op);
        glsEndCapture();
        std::string stream = written;
        written.clear();
        return stream;
    }

    // Reads a stream of one form from memory while a capture of another form is open.
    std::string copy(GLSenum from, const std::string &stream, GLSenum to)
    {
        written.clear();
        EXPECT_TRUE(glsBeginCapture((const GLubyte *)"", to, 0));
        glsCallArray(from, stream.size(), (const GLubyte *)stream.data());
        glsEndCapture();
        std::string result = written;
        written.clear();
        return result;
    }

    std::string play(GLSenum type, const std::string &stream)
    {
        glsCallArray(type, stream.size(), (const GLubyte *)stream.data());
        return take_recorded();
    }

    GlsFunc saved_dispatch[GLS_OPCODE_COUNT];
    GLuint id = 0, recording_id = 0;
    std::string folder;
    GlsContext *ctx = nullptr;
};

// What an executing read makes GL do beside the stream's own calls: tight unpack and pack state
// once, before the first image and the first read of pixels, and the level's size asked before
// a texture image is got, so that the area handed to GL is big enough.
std::string as_played(std::string text, const char *first_image)
{
    auto insert_before = [&](size_t at, const std::string &lines) {
        if (at != std::string::npos)
            text.insert(at, lines);
    };
    const std::string store = "glPixelStorei(GL_%s_ALIGNMENT, 1);\n"
                              "glPixelStorei(GL_%s_LSB_FIRST, GL_FALSE);\n"
                              "glPixelStorei(GL_%s_ROW_LENGTH, 0);\n"
                              "glPixelStorei(GL_%s_SKIP_ROWS, 0);\n"
                              "glPixelStorei(GL_%s_SKIP_PIXELS, 0);\n"
                              "glPixelStorei(GL_%s_SWAP_BYTES, GL_FALSE);\n";
    auto state = [&](const char *kind) {
        std::string lines = store;
        for (size_t at; (at = lines.find("%s")) != std::string::npos;)
            lines.replace(at, 2, kind);
        return lines;
    };
    if (first_image)
        insert_before(text.find(first_image), state("UNPACK"));
    size_t get = text.find("glGetTexImage(");
    if (get != std::string::npos) {
        // glGetTexImage(TARGET, LEVEL, ..., POINTER): the level's queries write to the same area.
        size_t level_end = text.find(',', text.find(',', get) + 1);
        std::string head = "glGetTexLevelParameteriv(" + text.substr(get + 14, level_end - get - 14);
        size_t end = text.find(");", get), comma = text.rfind(", ", end);
        std::string pointer = text.substr(comma, end - comma);
        insert_before(get, head + ", GL_TEXTURE_WIDTH" + pointer + ");\n" + head + ", GL_TEXTURE_HEIGHT" + pointer +
                               ");\n");
    }
    size_t read = std::min(text.find("glReadPixels("), text.find("glGetTexLevelParameteriv("));
    insert_before(read, state("PACK"));
    return text;
}

// ---------------------------------------------------------------------------------------------
// Round trips

TEST_F(Reader, EveryCommandComesBackThroughEveryForm)
{
    std::string text = samples(GLS_TEXT);
    std::string lsb = samples(GLS_BINARY_LSB_FIRST);
    std::string msb = samples(GLS_BINARY_MSB_FIRST);
    samples(GLS_CONTEXT, "samples");
    ASSERT_EQ(std::count(text.begin(), text.end(), ';'), 335 - 3 + 2);

    EXPECT_EQ(copy(GLS_TEXT, text, GLS_TEXT), text);
    EXPECT_EQ(copy(GLS_BINARY_LSB_FIRST, lsb, GLS_BINARY_LSB_FIRST), lsb);
    EXPECT_EQ(copy(GLS_BINARY_MSB_FIRST, msb, GLS_BINARY_MSB_FIRST), msb);
    EXPECT_EQ(copy(GLS_BINARY_MSB_FIRST, msb, GLS_BINARY_LSB_FIRST), lsb);
    EXPECT_EQ(copy(GLS_BINARY_LSB_FIRST, lsb, GLS_TEXT), text);
    EXPECT_EQ(glsGetError(), GLS_NONE);

    std::string played = as_played(text, "glBitmap(");
    record();
    EXPECT_EQ(play(GLS_TEXT, text), played);
    EXPECT_EQ(play(GLS_BINARY_LSB_FIRST, lsb), played);
    EXPECT_EQ(play(GLS_BINARY_MSB_FIRST, msb), played);
    EXPECT_EQ(glsCallStream((const GLubyte *)"samples"), GLS_CONTEXT);
    EXPECT_EQ(take_recorded(), played);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

// A corpus of every kind of argument with telling values, written by hand in the text form.
TEST_F(Reader, EveryKindOfArgumentKeepsItsValueThroughEveryForm)
{
    std::string kinds = file_text(data_dir + "/kinds.gls");
    ASSERT_GT(kinds.size(), 2000u);
    EXPECT_EQ(copy(GLS_TEXT, kinds, GLS_TEXT), kinds);
    for (GLSenum binary : {GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST})
        EXPECT_EQ(copy(binary, copy(GLS_TEXT, kinds, binary), GLS_TEXT), kinds) << binary;
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"kinds", GLS_CONTEXT, 0));
    glsCallArray(GLS_TEXT, kinds.size(), (const GLubyte *)kinds.data());
    glsEndCapture();
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, 0));
    EXPECT_EQ(glsCallStream((const GLubyte *)"kinds"), GLS_CONTEXT);
    glsEndCapture();
    EXPECT_EQ(written, kinds);
    EXPECT_EQ(glsGetError(), GLS_NONE);
    record();
    EXPECT_EQ(play(GLS_TEXT, kinds), as_played(kinds, nullptr));
}

// Images with their data: the reader sizes each from its format, type and extent, tight. Where the
// stream sets the unpack state itself, the tight state comes again before its next image, so that
// GL reads no more than the stream holds.
TEST_F(Reader, ImagesKeepTheirDataThroughEveryForm)
{
    const std::string images = file_text(data_dir + "/images.gls");
    EXPECT_EQ(copy(GLS_TEXT, images, GLS_TEXT), images);
    for (GLSenum binary : {GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST})
        EXPECT_EQ(copy(binary, copy(GLS_TEXT, images, binary), GLS_TEXT), images) << binary;
    record();
    EXPECT_EQ(play(GLS_TEXT, images), expected("images_played.txt"));
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

std::string fed;
size_t fed_at;

// Hands the stream out seven bytes at a time, so that tokens and commands straddle refills.
size_t feed(size_t count, void *bytes)
{
    size_t n = std::min({count, (size_t)7, fed.size() - fed_at});
    memcpy(bytes, fed.data() + fed_at, n);
    fed_at += n;
    return n;
}

TEST_F(Reader, AnUnnamedStreamReadsThroughTheReadCallbackInPieces)
{
    std::string kinds = file_text(data_dir + "/kinds.gls");
    std::string msb = copy(GLS_TEXT, kinds, GLS_BINARY_MSB_FIRST);
    glsReadFunc(feed);
    record();
    for (GLSenum type : {GLS_TEXT, GLS_BINARY_MSB_FIRST}) {
        fed = type == GLS_TEXT ? kinds : msb;
        fed_at = 0;
        EXPECT_EQ(glsCallStream((const GLubyte *)""), type);
        EXPECT_EQ(take_recorded(), as_played(kinds, nullptr));
    }
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

int misaligned_doubles, color_calls;
void GLS_APIENTRY check_alignment(const GLdouble *v)
{
    ++color_calls;
    misaligned_doubles += (uintptr_t)v % 8 != 0;
}

TEST_F(Reader, DoublesAreHandedOutAlignedAcrossRefills)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_BINARY_LSB_FIRST, 0));
    for (int i = 0; i < 3000; ++i) {
        const GLdouble color[3] = {0.5, (double)i, 1};
        dispatch_glColor3dv(color);
        if (i % 3)
            dispatch_glEnd();
    }
    glsEndCapture();
    fed = written;
    fed_at = 0;
    glsReadFunc(feed);
    glsCommandFunc(GLS_CALL_FUNC, OP_glColor3dv, (GlsFunc)check_alignment);
    EXPECT_EQ(glsCallStream((const GLubyte *)""), GLS_BINARY_LSB_FIRST);
    EXPECT_EQ(color_calls, 3000);
    EXPECT_EQ(misaligned_doubles, 0);
}

TEST_F(Reader, TheSampleProgramsHistoryReadsBackWhole)
{
    std::string history = file_text(data_dir + "/spinning_cube.gls");
    ASSERT_GT(history.size(), 3000u);
    EXPECT_EQ(copy(GLS_TEXT, history, GLS_TEXT), history);
    std::string binary = copy(GLS_TEXT, history, GLS_BINARY_MSB_FIRST);
    EXPECT_EQ(copy(GLS_BINARY_MSB_FIRST, binary, GLS_TEXT), history);
    // What the debugger saves: CR CR LF, "#" comments, and no glsEndGLS when the program exited.
    make_folder();
    glsPrependReadPrefix((const GLubyte *)(data_dir + "/").c_str());
    glsCopyStream((const GLubyte *)"history_crcrlf.gls", (const GLubyte *)"copy.gls", GLS_TEXT, 0);
    EXPECT_EQ(file_text(folder + "copy.gls"), history) << "the copy's frame is its own";
    record();
    EXPECT_EQ(play(GLS_TEXT, history), history);
    EXPECT_EQ(glsCallStream((const GLubyte *)"history_crcrlf.gls"), GLS_TEXT);
    EXPECT_EQ(take_recorded(), history.substr(0, history.size() - strlen("glsEndGLS();\n")));
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

// Words of a big-endian stream, written by hand.
struct Bytes {
    std::string bytes;
    bool big = true;
    Bytes &word(uint32_t w)
    {
        for (int i = 0; i < 4; ++i)
            bytes += (char)(big ? w >> (24 - 8 * i) : w >> (8 * i));
        return *this;
    }
    Bytes &half(uint16_t a, uint16_t b) { return word(big ? (uint32_t)a << 16 | b : (uint32_t)b << 16 | a); }
    Bytes &doubles(std::initializer_list<double> values)
    {
        for (double d : values) {
            uint64_t bits;
            memcpy(&bits, &d, 8);
            word(big ? (uint32_t)(bits >> 32) : (uint32_t)bits).word(big ? (uint32_t)bits : (uint32_t)(bits >> 32));
        }
        return *this;
    }
    Bytes &text(const char *t, size_t field)
    {
        std::string s(t);
        s.resize(field, '\0');
        bytes += s;
        return *this;
    }
};

Bytes sample_group(bool big)
{
    Bytes b;
    b.big = big;
    b.word(0).word(OP_glsBeginGLS).word(20).word(1).word(0);
    b.half(OP_glClear, 8).word(0x4000);
    b.half(OP_glColor3dv, 28).doubles({1, 2, 3});                 // at 28: the doubles lie at 32
    b.half(OP_glsString, 24).word(12 | 1).text("Info", 8).word(8 | 1).text("x", 4);
    b.half(500, 8).word(7);                                      // no such command
    b.half(0, 0).word(0).word(0).word(0);                        // an end record: never in a file
    return b;
}

TEST_F(Reader, BinaryStreamsOfBothByteOrdersAndMixedGroups)
{
    record();
    for (bool big : {true, false}) {
        GLSenum type = big ? GLS_BINARY_MSB_FIRST : GLS_BINARY_LSB_FIRST;
        Bytes b = sample_group(big);
        // Without its zero words the group ends in glsEndGLS, and a text group follows.
        b.bytes.resize(b.bytes.size() - 16);
        b.word(0).word(OP_glsEndGLS).word(12);
        b.bytes += "glsBeginGLS(1, 0);\nglEnd();\nglsEndGLS();\n";
        std::string played = play(type, b.bytes);
        // Behind a text group, as a binary capture appended to a history.
        played += play(GLS_TEXT, "glsBeginGLS(1, 0);\nglsEndGLS();\r\n# appended:\n" + b.bytes);
        // Bytes that are no command end the read.
        played += play(type, sample_group(big).bytes);
        EXPECT_EQ(glsGetError(), GLS_DECODE_ERROR);
        EXPECT_EQ(played, expected("binary_groups.txt")) << big;
    }
}

TEST_F(Reader, DoublesOutOfTheirPlaceStillRead)
{
    // A damaged stream need not keep its doubles aligned: glEnd puts them at 4 modulo 8.
    Bytes b;
    b.big = false;
    b.word(0).word(OP_glsBeginGLS).word(20).word(1).word(0).half(OP_glEnd, 4).half(OP_glColor3dv, 28).doubles({1, 2, 3});
    EXPECT_EQ(copy(GLS_BINARY_LSB_FIRST, b.bytes, GLS_TEXT),
              "glsBeginGLS(1, 0);\nglEnd();\nglColor3dv({1, 2, 3});\nglsEndGLS();\n");
}

TEST_F(Reader, ACommandLargerThanTheBufferGrowsIt)
{
    std::vector<GLint> values(20000, 7);
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_BINARY_LSB_FIRST, 0));
    dispatch_glsNumiv((const GLubyte *)"big", (GLuint)values.size(), values.data());
    dispatch_glEnd();
    glsEndCapture();
    std::string stream = written;
    make_folder();
    std::ofstream(folder + "big.gls", std::ios::binary) << stream;
    glsPrependReadPrefix((const GLubyte *)folder.c_str());
    glsCopyStream((const GLubyte *)"big.gls", (const GLubyte *)"again.gls", GLS_BINARY_LSB_FIRST, 0);
    EXPECT_EQ(file_text(folder + "again.gls"), stream);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

// ---------------------------------------------------------------------------------------------
// The text parser

TEST_F(Reader, TextAcceptsMoreThanTheWriterWrites)
{
    record();
    // Comments, numbers in every notation, strings in pieces, and what the parser must refuse.
    EXPECT_EQ(play(GLS_TEXT, file_text(data_dir + "/parser_input.gls")), expected("parser.txt"));
}

std::string refusals;
void GLS_APIENTRY note_refusal(GLSopcode, GLSenum) { refusals += gls_current()->readEmptyItem ? "empty " : "other "; }

// Null indices (a buffer object's offset) are refused in every form as an empty item.
TEST_F(Reader, NullIndicesAreRefusedInEveryForm)
{
    glsCommandFunc(GLS_CALL_FUNC, OP_glsError, (GlsFunc)note_refusal);
    for (GLSenum type : {GLS_TEXT, GLS_BINARY_LSB_FIRST, GLS_BINARY_MSB_FIRST}) {
        ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", type, 0));
        dispatch_glDrawElements(GL_POINTS, 2, GL_UNSIGNED_SHORT, nullptr);
        glsEndCapture();
        std::string stream = written;
        written.clear();
        glsCallArray(type, stream.size(), (const GLubyte *)stream.data());
    }
    EXPECT_EQ(refusals, "empty empty empty ");
}

TEST_F(Reader, StreamStartsAndTheirRefusals)
{
    record();
    EXPECT_EQ(play(GLS_TEXT, "glsBeginGLS(1, 0);"), "glsBeginGLS(1, 0);\n") << "a start alone, 18 bytes";
    EXPECT_EQ(glsGetError(), GLS_NONE);
    for (std::string refused : {std::string(10, '\0'), std::string("glsBeginGLS(1 0);"),
                                Bytes().word(0).word(OP_glsBlock).word(20).word(1).word(0).bytes}) {
        EXPECT_EQ(play(GLS_BINARY_MSB_FIRST, refused), "");
        EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    }
    EXPECT_EQ(glsCallStream((const GLubyte *)"no such stream"), GLS_NONE);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
}

// ---------------------------------------------------------------------------------------------
// Bad input: the named error or a skip, never a crash or an allocation without bound

TEST_F(Reader, TruncatedStreamsEndAtEveryByte)
{
    std::string lsb = samples(GLS_BINARY_LSB_FIRST), msb = samples(GLS_BINARY_MSB_FIRST);
    std::string text = samples(GLS_TEXT);
    for (size_t n = 0; n < lsb.size(); ++n) {
        glsCallArray(GLS_BINARY_LSB_FIRST, n, (const GLubyte *)lsb.data());
        glsCallArray(GLS_BINARY_MSB_FIRST, n, (const GLubyte *)msb.data());
        EXPECT_NE(glsGetError(), GLS_NONE) << n;
    }
    for (size_t n = 0; n < text.size(); ++n)
        glsCallArray(GLS_TEXT, n, (const GLubyte *)text.data());
    glsGetError();
    EXPECT_EQ(ctx->callNesting, 0);
}

TEST_F(Reader, EveryOpcodeNumberIsDecodedOrPassedOver)
{
    // Every opcode with eight zero bytes, in both header forms.
    Bytes b;
    b.big = false;
    b.word(0).word(OP_glsBeginGLS).word(20).word(1).word(0);
    for (uint32_t op = 1; op < 65536; ++op)
        b.half((uint16_t)op, 12).word(0).word(0);
    for (uint32_t op = 1; op < 65536; op += 97)
        b.word(0).word(op).word(20).word(0).word(0);
    b.word(0).word(OP_glsEndGLS).word(12);
    glsCallArray(GLS_BINARY_LSB_FIRST, b.bytes.size(), (const GLubyte *)b.bytes.data());
    EXPECT_EQ(ctx->callNesting, 0);
    glsGetError();
}

TEST_F(Reader, LyingLengthsAndCountsAreRefused)
{
    record();
    auto group = [](Bytes body) {
        Bytes b;
        b.big = false;
        b.word(0).word(OP_glsBeginGLS).word(20).word(1).word(0);
        b.bytes += body.bytes;
        return b.bytes;
    };
    Bytes past, wrap, count, string;
    past.big = wrap.big = count.big = string.big = false;
    past.half(OP_glEnd, 0xFFFC).word(0);                          // past the end of the data
    wrap.word(0).word(OP_glEnd).word(0xFFFFFFFC);                 // a size that wraps 32 bits
    count.half(OP_glsNumbv, 16).word(8 | 1).text("t", 4).word(0x40000000);  // a 1 GB vector
    string.half(OP_glsComment, 12).word(64 | 1).text("abcd", 4);  // a field longer than its command
    static const char nul[] = "glsBeginGLS(1, 0);\nglEnd();\0\0glFlush();glFinish();\n";
    // Where the read must end on the lie, its error; elsewhere the stream notes the error itself.
    const GLSenum noted = ~0u;
    const struct {
        const char *name;
        GLSenum type;
        std::string stream;
        GLSenum error;
    } cases[] = {
        {"past the end of the data", GLS_BINARY_LSB_FIRST, group(past), GLS_DECODE_ERROR},
        {"a size that wraps 32 bits", GLS_BINARY_LSB_FIRST, group(wrap), GLS_DECODE_ERROR},
        {"a 1 GB vector", GLS_BINARY_LSB_FIRST, group(count), noted},
        {"a field longer than its command", GLS_BINARY_LSB_FIRST, group(string), noted},
        {"text: a 1 GB count, a string left open", GLS_TEXT,
         "glsBeginGLS(1, 0);\nglsNumbv(\"t\", 1073741824, {1, 2});\nglsComment(\"open", noted},
        // Evaluator points are read as far as the strides reach, which the stream's own writer
        // keeps tight; a copy makes them tight again.
        {"evaluator points: loose strides made tight, strides past the points", GLS_TEXT,
         "glsBeginGLS(1, 0);\nglMap1f(GL_MAP1_VERTEX_3, 0, 1, 4, 2, {1, 2, 3, 0, 4, 5, 6});\n"
         "glMap1f(GL_MAP1_VERTEX_3, 0, 1, 1000, 2, {1, 2, 3, 4, 5, 6});\n",
         noted},
        // An area that GL would fill is made only up to 256 MB: a few bytes ask for no gigabytes.
        {"an area of gigabytes for GL to fill", GLS_TEXT, "glsBeginGLS(1, 0);\nglFeedbackBuffer(100000000, GL_3D, 0x10);\n",
         noted},
        {"NUL bytes", GLS_TEXT, std::string(nul, sizeof nul - 1), noted},
    };
    std::string played;
    for (const auto &c : cases) {
        played += std::string("# ") + c.name + "\n" + play(c.type, c.stream);
        GLSenum error = glsGetError();
        if (c.error != noted)
            EXPECT_EQ(error, c.error) << c.name;
    }
    EXPECT_EQ(played, expected("lying_lengths.txt"));
    std::string line = "glsBeginGLS(1, 0);\nglsComment(\"" + std::string(10 << 20, 'x') + "\");\n" +
                       std::string(10 << 20, 'y') + ";glEnd();";
    played = play(GLS_TEXT, line);
    std::string tail = "\");\nglsError(0, GLS_DECODE_ERROR);\nglEnd();\n";
    EXPECT_EQ(played.size(), strlen("glsBeginGLS(1, 0);\nglsComment(\"") + (10u << 20) + tail.size());
    EXPECT_EQ(played.substr(played.size() - tail.size()), tail);
}

TEST_F(Reader, NestingStopsAtSixtyFourAndAbortsTheRest)
{
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"self", GLS_CONTEXT, 0));
    dispatch_glsCallStream((const GLubyte *)"self");
    dispatch_glEnd();
    glsEndCapture();
    record();
    // The recorder stands in for glEnd only: glsCallStream executes for real.
    gls_default_dispatch[OP_glsCallStream] = saved_dispatch[OP_glsCallStream];
    gls_update_dispatch(ctx);
    EXPECT_EQ(glsCallStream((const GLubyte *)"self"), GLS_CONTEXT);
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    std::string begins;
    for (int level = 0; level < 64; ++level)
        begins += "glsBeginGLS(1, 0);\n";
    EXPECT_EQ(take_recorded(), begins) << "the 65th read aborts everything behind it";
    EXPECT_FALSE(glsIsEnabled(GLS_ABORT_CALL));
    EXPECT_EQ(glsGeti(GLS_CALL_NESTING), 0);
    // Nor is a stream read while it is written: a copy onto itself would never end. One written
    // below the capture in hand is read as far as it is written, into the capture in hand.
    glsCopyStream((const GLubyte *)"self", (const GLubyte *)"self", GLS_CONTEXT, GLS_WRITE_APPEND);
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"a", GLS_CONTEXT, GLS_WRITE_NO_FRAME));
    dispatch_glEnd();
    glsCopyStream((const GLubyte *)"a", (const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME);
    glsEndCapture();
    EXPECT_EQ(written, "glEnd();\n");
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

// ---------------------------------------------------------------------------------------------
// Queries

GLsizei consumed_at_end[2];
int end_calls;
void GLS_APIENTRY note_consumed() { consumed_at_end[end_calls++ % 2] = (GLsizei)glsGetConsumedBytes(); }

TEST_F(Reader, ConsumedBytesCountUpToTheCommandInHand)
{
    glsCommandFunc(GLS_CALL_FUNC, OP_glEnd, (GlsFunc)note_consumed);
    Bytes b;
    b.big = false;
    b.word(0).word(OP_glsBeginGLS).word(20).word(1).word(0).half(OP_glEnd, 4).half(OP_glEnd, 4).word(0).word(OP_glsEndGLS).word(12);
    glsCallArray(GLS_BINARY_LSB_FIRST, b.bytes.size(), (const GLubyte *)b.bytes.data());
    EXPECT_EQ(consumed_at_end[0], 20);
    EXPECT_EQ(consumed_at_end[1], 24);
    std::string text = "glsBeginGLS(1, 0);\nglEnd();\n  glEnd();\n";
    glsCallArray(GLS_TEXT, text.size(), (const GLubyte *)text.data());
    EXPECT_EQ(consumed_at_end[0], 19);
    EXPECT_EQ(consumed_at_end[1], 30);
}

TEST_F(Reader, QueriesGiveTheirExactAnswers)
{
    EXPECT_EQ(glsGetOpcodeCount(GLS_API_GLS), 30u);
    EXPECT_EQ(glsGetOpcodeCount(GLS_API_GL), 305u);
    EXPECT_EQ(glsGetOpcodes(GLS_API_GLS)[29], OP_glsSwapBuffers);
    EXPECT_EQ(glsGetOpcodes(GLS_API_GL)[304], OP_glPointParameterfvEXT);
    EXPECT_EQ(glsGetCommandi(OP_glsNumf, GLS_API), GLS_API_GLS);
    EXPECT_EQ(glsGetCommandi(OP_glClear, GLS_API), GLS_API_GL);
    EXPECT_EQ(glsGetCommandi(OP_glPixelStorei, GLS_IS_CLIENT_COMMAND), 1);
    EXPECT_EQ(glsGetCommandi(OP_glGetIntegerv, GLS_IS_GET_COMMAND), 1);
    EXPECT_EQ(glsGetCommandi(OP_glClear, GLS_IS_GET_COMMAND), 0);
    EXPECT_EQ(glsGetEnumi(GLS_API_GL, GL_UNPACK_ALIGNMENT, GLS_IS_CLIENT_ENUM), 1);
    EXPECT_EQ(glsGetEnumi(GLS_API_GL, GL_UNPACK_ALIGNMENT + 1, GLS_IS_CLIENT_ENUM), 0);
    EXPECT_STREQ((const char *)glsGetOpcodeName(OP_glClear), "glClear");
    EXPECT_EQ(glsGetOpcode((const GLubyte *)"glClear"), OP_glClear);
    EXPECT_EQ(glsGetOpcode((const GLubyte *)"glClearer"), 0);
    EXPECT_STREQ((const char *)glsGetEnumName(GLS_API_GL, GL_DEPTH_TEST), "GL_DEPTH_TEST");
    EXPECT_STREQ((const char *)glsGetEnumName(GLS_API_GLS, 512), "GLS_DISPLAY_LIST_SGIX");
    EXPECT_EQ(glsGetEnumName(GLS_API_GLS, 513), nullptr);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_EQ(glsGetEnumValue(GLS_API_GLS, (const GLubyte *)"GLS_TRUE"), 1);
    EXPECT_EQ(glsGetEnumValue(GLS_API_GLS, (const GLubyte *)"GLS_FALSE"), 0);
    EXPECT_EQ(glsGetEnumValue(GLS_API_GL, (const GLubyte *)"GL_FALSE"), 0);
    EXPECT_EQ(glsGetEnumValue(GLS_API_GL, (const GLubyte *)"GL_NOTHING"), -1);
    EXPECT_EQ(glsGeti(GLS_MAX_CALL_NESTING), 64);
    EXPECT_EQ(glsGeti(GLS_MAX_CAPTURE_NESTING), 16);
    EXPECT_EQ(glsGeti(GLS_VERSION_MAJOR), 1);
    EXPECT_EQ(glsGeti(GLS_STRING_TYPE), GLS_UCS1);
    EXPECT_STREQ((const char *)glsGetc(GLS_VENDOR), "ARB");
    EXPECT_EQ(glsBinary(0), GLS_BINARY_LSB_FIRST);
    EXPECT_EQ(glsBinary(1), GLS_BINARY_MSB_FIRST);
    EXPECT_EQ(glsBinary(2), GLS_BINARY_LSB_FIRST);
    EXPECT_TRUE(glsIsVersionSupported(GLS_API_GLS, 1, 0));
    EXPECT_FALSE(glsIsVersionSupported(GLS_API_GLS, 1, 1));
    EXPECT_TRUE(glsIsVersionSupported(GLS_API_GL, 1, 1)) << "1.1 without a GL context";
    EXPECT_FALSE(glsIsVersionSupported(GLS_API_GL, 2, 0));
    EXPECT_EQ(glsGetError(), GLS_NONE);
    GLint now[6];
    glsGetl(GLS_CURRENT_TIME, now);
    EXPECT_GE(now[0], 2024);
    EXPECT_TRUE(now[1] >= 1 && now[1] <= 12);
    glsDataPointer(&now);
    EXPECT_EQ(glsGetPointer(GLS_DATA_POINTER), (void *)&now);
    EXPECT_EQ(glsGetFunc(GLS_WRITE_FUNC), (GlsFunc)collect<&written>);
    EXPECT_STREQ((const char *)glsGetListc(GLS_READ_PREFIX_LIST, glsGeti(GLS_READ_PREFIX_COUNT) - 1), "");
    // A pipe cannot be sought: its type is unknown, and its bytes stay for its reader.
    int ends[2];
    ASSERT_TRUE(pipe(ends) == 0 && write(ends[1], "glsBeginGLS(1, 0);", 18) == 18 && close(ends[1]) == 0);
    glsChannel(GLS_DEFAULT_READ_CHANNEL, fdopen(ends[0], "rb"));
    EXPECT_EQ(glsGetStreamType(GLS_STREAM_TYPE, (const GLubyte *)""), (GLuint)GLS_UNKNOWN);
    EXPECT_EQ(glsCallStream((const GLubyte *)""), GLS_TEXT);
    fclose((FILE *)glsGetPointer(GLS_DEFAULT_READ_CHANNEL));
    execute_glsBlock(GLS_HEADER);
    execute_glsHeaderi(GLS_DEPTH_BITS, 24);
    execute_glsHeaderc(GLS_TITLE, (const GLubyte *)"cube");
    EXPECT_EQ(glsGetHeaderi(GLS_DEPTH_BITS), 24);
    EXPECT_EQ(glsGetHeaderi(GLS_TILEABLE), 1);
    EXPECT_STREQ((const char *)glsGetHeaderc(GLS_TITLE), "cube");
}

TEST_F(Reader, ExtensionsMatchAtTheirEndOnly)
{
    EXPECT_TRUE(glsIsExtensionSupported((const GLubyte *)"__GL_EXT_texture"));
    EXPECT_TRUE(glsIsExtensionSupported((const GLubyte *)"__GL_EXT_texture3D"));
    EXPECT_TRUE(glsIsExtensionSupported((const GLubyte *)"GL_EXT_abgr")) << "the start is not tested";
    EXPECT_FALSE(glsIsExtensionSupported((const GLubyte *)"GL_EXT_textur"));
    EXPECT_FALSE(glsIsExtensionSupported((const GLubyte *)"GL_EXT_texture3"));
    EXPECT_FALSE(glsIsExtensionSupported((const GLubyte *)""));
    std::string list = (const char *)glsGetc(GLS_EXTENSIONS);
    EXPECT_EQ(list.compare(0, 28, "__GL_EXT_abgr __GL_EXT_blend"), 0);
    EXPECT_EQ(list.back(), ' ');
}

}  // namespace
