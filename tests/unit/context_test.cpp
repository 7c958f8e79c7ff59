// Codec contexts: binding, the error word, capture flags, command functions and the dispatch
// tables that route a call to the real library or to the capture path; the call catalogue and
// the per-opcode tables generated from the table of signatures.
#include <gtest/gtest.h>

#include "gen/calls.h"
#include "gen/commands.h"
#include "gls/gls.h"
#include "gls/tables.h"

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <thread>

// A number inside the opcode range that no command has.
static const int UNUSED_OPCODE = 400;

namespace {

// A context made current for one test and deleted after it.
struct ScopedContext {
    GLuint id;
    ScopedContext() : id(glsGenContext()) { glsContext(id); }
    ~ScopedContext()
    {
        glsDeleteContext(id);
        glsContext(0);
        glsGetError();
    }
};

size_t discard_bytes(size_t count, const void *) { return count; }

TEST(ErrorWord, WithoutAContextStateErrorKeptFirstUntilReadOnItsOwnThread)
{
    glsContext(0);
    glsGetError();
    EXPECT_EQ(glsGetCurrentContext(), 0u);
    EXPECT_EQ(glsGetError(), GLS_NONE); // asking for the current context is no error
    EXPECT_EQ(glsBeginCapture((const GLubyte *)"", GLS_TEXT, 0), 0);
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    glsDataPointer(nullptr);
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    glsCaptureFlags(OP_glNewList, 3);
    glsStringType(999); // would be a parameter error
    GLSenum seen_elsewhere = -1;
    std::thread other([&] { seen_elsewhere = glsGetError(); });
    other.join();
    EXPECT_EQ(seen_elsewhere, GLS_NONE);
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

TEST(Contexts, IdsCountUpAndAreNeverReused)
{
    GLuint first = glsGenContext();
    GLuint second = glsGenContext();
    EXPECT_GT(first, 0u);
    EXPECT_EQ(second, first + 1);
    glsContext(second);
    glsDeleteContext(first);
    EXPECT_FALSE(glsIsContext(first));
    EXPECT_TRUE(glsIsContext(second));
    GLuint third = glsGenContext();
    EXPECT_EQ(third, second + 1);
    glsDeleteContext(third);
    glsDeleteContext(second);
    EXPECT_EQ(glsGetCurrentContext(), second); // deletion of the current one waits
    glsContext(0);
    EXPECT_EQ(glsGetCurrentContext(), 0u);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

TEST(Contexts, BindingRules)
{
    ScopedContext scope;
    glsContext(100000);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_EQ(glsGetCurrentContext(), scope.id);

    // Rebinding the current context is allowed.
    glsContext(scope.id);
    EXPECT_EQ(glsGetError(), GLS_NONE);

    // Current on this thread: another thread may not take it.
    GLSenum other_error = GLS_NONE;
    GLuint other_current = 1;
    std::thread other([&] {
        glsContext(scope.id);
        other_error = glsGetError();
        other_current = glsGetCurrentContext();
    });
    other.join();
    EXPECT_EQ(other_error, GLS_STATE_ERROR);
    EXPECT_EQ(other_current, 0u);
}

TEST(CaptureFlags, StartValuesFollowTheAttributeBytesAndRefusalsLeaveTheByte)
{
    ScopedContext scope;
    std::string flags;
    for (int op : {OP_glClear, OP_glEnable, OP_glVertexPointer, OP_glGetIntegerv, OP_glPopClientAttrib,
                   OP_glsBeginGLS, OP_glsEndGLS, OP_glsPad, OP_glsString})
        flags += std::to_string(glsGetCaptureFlags(op));
    EXPECT_EQ(flags, "233230002");
    EXPECT_EQ(glsGetError(), GLS_NONE);

    glsCaptureFlags(OP_glsBeginGLS, 3);
    EXPECT_EQ(glsGetError(), GLS_NONE);
    EXPECT_EQ(glsGetCaptureFlags(OP_glsBeginGLS), 0u);

    glsCaptureFlags(OP_glNewList, 8);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_EQ(glsGetCaptureFlags(OP_glNewList), 2u);

    glsCaptureFlags(5, 1);
    EXPECT_EQ(glsGetError(), GLS_UNSUPPORTED_COMMAND);
    EXPECT_EQ(glsGetCaptureFlags(UNUSED_OPCODE), 0u);
    EXPECT_EQ(glsGetError(), GLS_UNSUPPORTED_COMMAND);

    glsCaptureFlags(OP_glClear, 7);
    EXPECT_EQ(glsGetCaptureFlags(OP_glClear), 7u);
}

TEST(Enable, AbortCallSilencesDecodingAndVertexArrayFlag)
{
    ScopedContext scope;
    GlsContext *ctx = gls_current();
    glsEnable(GLS_ABORT_CALL);
    EXPECT_TRUE(glsIsEnabled(GLS_ABORT_CALL));
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        ASSERT_EQ(ctx->decodeDispatch[op], (GlsFunc)gls_abort_stub) << op;
    glsDisable(GLS_ABORT_CALL);
    EXPECT_EQ(ctx->decodeDispatch[OP_glClear], gls_decode_table[OP_glClear]);

    glsEnable(GLS_CAPTURE_VERTEX_ARRAYS);
    EXPECT_TRUE(glsIsEnabled(GLS_CAPTURE_VERTEX_ARRAYS));
    glsDisable(GLS_CAPTURE_VERTEX_ARRAYS);
    EXPECT_FALSE(glsIsEnabled(GLS_CAPTURE_VERTEX_ARRAYS));
    glsEnable(50);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
}

// Fake real functions and capture functions for glClear.
int real_clear_calls;
int real_clear_depth_seen;
int capture_clear_calls;
GLbitfield last_mask;

void GLS_APIENTRY fake_real_clear(GLbitfield mask)
{
    ++real_clear_calls;
    last_mask = mask;
    real_clear_depth_seen = gls_current() ? gls_current()->directCallDepth : -1;
}

void GLS_APIENTRY fake_capture_clear(GLbitfield mask)
{
    ++capture_clear_calls;
    last_mask = mask;
}

struct FakeClear {
    GlsFunc saved = gls_default_dispatch[OP_glClear];
    FakeClear()
    {
        gls_default_dispatch[OP_glClear] = (GlsFunc)fake_real_clear;
        real_clear_calls = capture_clear_calls = 0;
        real_clear_depth_seen = -1;
    }
    ~FakeClear() { gls_default_dispatch[OP_glClear] = saved; }
};


TEST(Dispatch, CaptureSwitchesTheThreadTableToForwarders)
{
    FakeClear fake;
    ScopedContext scope;
    GlsContext *ctx = gls_current();
    EXPECT_EQ(ctx->defaultDispatch[OP_glClear], (GlsFunc)fake_real_clear);

    glsWriteFunc(discard_bytes);
    ASSERT_TRUE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, 0));
    EXPECT_EQ(ctx->defaultDispatch[OP_glClear], gls_forwarders[OP_glClear]);
    EXPECT_EQ(ctx->callDispatch[OP_glClear], gls_forwarders[OP_glClear]);

    // The forwarder hands the call to the capture function of the opcode...
    glsCommandFunc(GLS_CAPTURE_FUNC, OP_glClear, (GlsFunc)fake_capture_clear);
    ((fn_glClear)ctx->defaultDispatch[OP_glClear])(16384);
    EXPECT_EQ(capture_clear_calls, 1);
    EXPECT_EQ(real_clear_calls, 0);

    // ...unless the codec itself is inside a real call: then it goes straight to GL.
    ctx->directCallDepth = 1;
    ((fn_glClear)ctx->defaultDispatch[OP_glClear])(256);
    ctx->directCallDepth = 0;
    EXPECT_EQ(capture_clear_calls, 1);
    EXPECT_EQ(real_clear_calls, 1);
    EXPECT_EQ(real_clear_depth_seen, 2);

    glsEndCapture();
    EXPECT_EQ(ctx->defaultDispatch[OP_glClear], (GlsFunc)fake_real_clear);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

TEST(Dispatch, CaptureFunctionExecutesInsideTheGuard)
{
    FakeClear fake;
    ScopedContext scope;
    GlsContext *ctx = gls_current();
    fn_glClear capture = (fn_glClear)ctx->captureFuncs[OP_glClear];

    glsCaptureFlags(OP_glClear, 2); // write only
    capture(16384);
    EXPECT_EQ(real_clear_calls, 0);
    glsCaptureFlags(OP_glClear, 1); // execute
    capture(16384);
    EXPECT_EQ(real_clear_calls, 1);
    EXPECT_EQ(real_clear_depth_seen, 1);
    EXPECT_EQ(ctx->directCallDepth, 0);
    EXPECT_EQ(last_mask, 16384u);
}

TEST(CommandFunc, CallAndCaptureOverridesAndTheirDefaults)
{
    FakeClear fake;
    ScopedContext scope;
    GlsContext *ctx = gls_current();
    glsCommandFunc(GLS_CALL_FUNC, OP_glClear, (GlsFunc)fake_capture_clear);
    EXPECT_EQ(ctx->callDispatch[OP_glClear], (GlsFunc)fake_capture_clear);
    // Every command has a decode row, which checks the stored arguments and then calls callDispatch.
    EXPECT_EQ(ctx->decodeDispatch[OP_glClear], gls_decode_table[OP_glClear]);
    EXPECT_EQ(glsGetCommandFunc(GLS_CALL_FUNC, OP_glClear), (GlsFunc)fake_capture_clear);
    glsCommandFunc(GLS_CALL_FUNC, OP_glClear, nullptr);
    EXPECT_EQ(ctx->callDispatch[OP_glClear], (GlsFunc)fake_real_clear);

    EXPECT_EQ(glsGetCommandFunc(GLS_CAPTURE_FUNC, OP_glClear), nullptr);
    glsCommandFunc(GLS_CAPTURE_FUNC, OP_glClear, (GlsFunc)fake_capture_clear);
    EXPECT_EQ(glsGetCommandFunc(GLS_CAPTURE_FUNC, OP_glClear), (GlsFunc)fake_capture_clear);
    glsCommandFunc(GLS_CAPTURE_FUNC, OP_glClear, nullptr);
    EXPECT_EQ(ctx->captureFuncs[OP_glClear], gls_default_capture[OP_glClear]);
    EXPECT_EQ(glsGetCommandFunc(GLS_NULL_FUNC, OP_glClear), gls_null_funcs[OP_glClear]);

    glsCommandFunc(GLS_CAPTURE_FUNC, UNUSED_OPCODE, (GlsFunc)fake_capture_clear);
    EXPECT_EQ(glsGetError(), GLS_UNSUPPORTED_COMMAND);
    glsCommandFunc(999, OP_glClear, nullptr);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
}

TEST(Capture, BadArgumentsAreParameterErrors)
{
    ScopedContext scope;
    EXPECT_FALSE(glsBeginCapture((const GLubyte *)"", GLS_TEXT, 4));
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_FALSE(glsBeginCapture((const GLubyte *)"", 68, 0));
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    EXPECT_FALSE(glsBeginCapture((const GLubyte *)"/nonexistent-dir/x.gls", GLS_TEXT, 0));
    EXPECT_EQ(glsGetError(), GLS_IO_ERROR);
    EXPECT_EQ(gls_current()->captureNesting, 0);
}

TEST(CodecCommands, HeaderValuesCountOnlyInAHeaderBlock)
{
    ScopedContext scope;
    GlsHeader *header = &gls_current()->header;
    execute_glsHeaderf(GLS_ASPECT, 2.0f);
    EXPECT_EQ(glsGetError(), GLS_STATE_ERROR);
    EXPECT_EQ(header->aspect, 0.0f);

    execute_glsBlock(GLS_HEADER);
    execute_glsHeaderf(GLS_ASPECT, 2.0f);
    EXPECT_EQ(header->aspect, 2.0f);
    execute_glsHeaderf(GLS_ASPECT, -1.0f);
    EXPECT_EQ(header->aspect, 0.0f);
    execute_glsHeaderi(GLS_DEPTH_BITS, -5);
    EXPECT_EQ(header->depthBits, 0);
    execute_glsHeaderi(GLS_STEREO, 7);
    EXPECT_EQ(header->stereo, 1);
    execute_glsHeaderi(GLS_COLOR_RED_BITS, 8);
    EXPECT_EQ(glsGetError(), GLS_NONE);

    // A new header block starts again from the start values.
    execute_glsBlock(GLS_HEADER);
    EXPECT_EQ(header->colorRedBits, 1);
    EXPECT_EQ(header->tileable, 1);
    EXPECT_EQ(header->stereo, 0);
    execute_glsBlock(GLS_FRAME);
    EXPECT_EQ(gls_current()->blockType, GLS_FRAME);
    execute_glsBlock(99);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
}

TEST(CodecCommands, ErrorCommandChecksItsArguments)
{
    ScopedContext scope;
    execute_glsError(OP_glClear, GLS_UNSUPPORTED_VERSION);
    EXPECT_EQ(glsGetError(), GLS_PARAMETER_ERROR);
    execute_glsError(5, GLS_IO_ERROR);
    EXPECT_EQ(glsGetError(), GLS_UNSUPPORTED_COMMAND);
    execute_glsError(OP_glClear, GLS_IO_ERROR);
    EXPECT_EQ(glsGetError(), GLS_IO_ERROR);
    execute_glsUnsupportedCommand((const GLubyte *)"glFoo");
    EXPECT_EQ(glsGetError(), GLS_UNSUPPORTED_COMMAND);
}


bool vendor_suffixed(const std::string &name)
{
    static const char *const suffixes[] = {"SGI", "SGIS", "SGIX", "ATI", "NV", "NVX", "INTEL", "IBM", "SUN"};
    for (const char *suffix : suffixes) {
        size_t length = strlen(suffix);
        if (name.size() > length && name.compare(name.size() - length, length, suffix) == 0)
            return true;
    }
    return false;
}

std::string stem(std::string name)
{
    for (const char *suffix : {"EXT", "SGIS", "SGI"}) {
        size_t length = strlen(suffix);
        if (name.size() > length && name.compare(name.size() - length, length, suffix) == 0)
            return name.substr(0, name.size() - length);
    }
    return name;
}

// The call catalogue and the per-opcode tables generated from the table of signatures.

// The rows that other code and the settings file reach by number, and the vendor rows between
// them: 112 of them, spread 2, 14, 0, 1, 34, 26, 35 between the fixed rows and none after.
TEST(Catalogue, FixedRowsAndTheVendorRowsBetweenThem)
{
    const int fixed[] = {ROW_glBegin, ROW_glEnd, ROW_glEndList, ROW_glFlush, ROW_glGetString, ROW_glNewList,
                         ROW_glViewport};
    const int numbers[] = {8, 110, 111, 123, 209, 296, 459};
    const int vendor_rows_before[] = {2, 14, 0, 1, 34, 26, 35};
    int from = 0, total = 0;
    for (int at = 0; at < 7; ++at) {
        EXPECT_EQ(fixed[at], numbers[at]);
        int count = 0;
        for (int row = from; row < fixed[at]; ++row)
            count += vendor_suffixed(gl_call_names[row]);
        EXPECT_EQ(count, vendor_rows_before[at]) << "before " << gl_call_names[fixed[at]];
        total += count;
        from = fixed[at];
    }
    EXPECT_EQ(total, 112);
    EXPECT_EQ(GL_CALL_COUNT, 460);
    EXPECT_EQ(ROW_SwapBuffers, 4);
    EXPECT_EQ(ROW_wglMakeCurrent, 15);
    EXPECT_EQ(ROW_gluErrorString, 20);
    EXPECT_EQ(ROW_gluTessVertex, 56);
    EXPECT_TRUE(vendor_suffixed(glu_call_names[57])) << glu_call_names[57];
    EXPECT_EQ(ROW_gluUnProject, 58);
}

// Rows share opcodes only in pairs of spellings; vendor rows without a command stand on unnamed opcodes.
TEST(Catalogue, OpcodesOfTheRows)
{
    std::map<int, std::vector<int>> rows_of_opcode;
    int unnamed = 0;
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        int opcode = opcode_of_call[row];
        EXPECT_GE(opcode, 48);
        EXPECT_LE(opcode, 474);
        rows_of_opcode[opcode].push_back(row);
        const char *command = gls_opcode_names[opcode];
        unnamed += !command;
        // A command has no vendor suffix, and only vendor rows stand on no command.
        EXPECT_EQ(vendor_suffixed(command ? command : gl_call_names[row]), !command) << gl_call_names[row];
    }
    EXPECT_EQ(unnamed, 103);
    EXPECT_EQ(rows_of_opcode.size(), 408u);
    int shared = 0;
    for (auto &[opcode, rows] : rows_of_opcode) {
        ASSERT_LE(rows.size(), 2u) << opcode;
        if (rows.size() == 2) {
            ++shared;
            // Two spellings of one command, the command's own name first.
            std::string first = gl_call_names[rows[0]], second = gl_call_names[rows[1]];
            EXPECT_EQ(stem(first), stem(second)) << first << " / " << second;
            EXPECT_STREQ(gls_opcode_names[opcode], first.c_str());
        }
    }
    EXPECT_EQ(shared, 52);
    EXPECT_EQ(OP_glBindTexture, 328);
    EXPECT_EQ(OP_glBindTextureEXT, 328);
}

TEST(OpcodeTables, EveryCommandHasItsRowsAndIsBound)
{
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
        if (!gls_opcode_names[op])
            continue;
        EXPECT_NE(gls_null_funcs[op], nullptr) << op;
        EXPECT_NE(gls_forwarders[op], nullptr) << op;
        EXPECT_NE(gls_default_capture[op], nullptr) << op;
    }
    EXPECT_EQ(OP_glsBeginGLS, 16);
    EXPECT_EQ(OP_glsSwapBuffers, 45);
    EXPECT_EQ(OP_glClear, 181);
    EXPECT_EQ(OP_glPointParameterfvEXT, 376);
    std::set<int> bound;
    for (const int32_t *op = gls_bind_list; *op; ++op) {
        EXPECT_TRUE(*op >= 48 && *op <= 376 && gls_opcode_names[*op]) << *op;
        bound.insert(*op);
    }
    EXPECT_EQ(bound.size(), 305u);
}

TEST(OpcodeTables, AttributeBytes)
{
    std::map<int, int> rows_with;
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        rows_with[gls_attributes[op]]++;
    std::string counts;
    for (auto [attribute, rows] : rows_with)
        counts += attribute ? std::to_string(attribute) + ":" + std::to_string(rows) + " " : "";
    EXPECT_EQ(counts, "1:14 2:22 3:1 4:40 5:1 6:6 ");
    std::string some;
    for (int op : {OP_glGetError, OP_glPopClientAttrib, OP_glGetBooleanv, OP_glReadPixels, OP_glsEndGLS, OP_glClear})
        some += std::to_string(gls_attributes[op]);
    EXPECT_EQ(some, "536410");
}

// Distinct addresses to stand for the wrappers; never called.
char fake_wrappers[GL_CALL_COUNT];

TEST(WrapperOfOpcode, LaterRowOnAnOpcodeWins)
{
    EXPECT_EQ(wrapper_of_opcode_rows[0].row, ROW_glGetString);
    for (int i = 0; i < GL_CALL_COUNT; ++i)
        EXPECT_EQ(wrapper_of_opcode_rows[i].opcode, opcode_of_call[wrapper_of_opcode_rows[i].row]);

    ScopedContext scope;
    int refused = 0;
    for (const CallRowOpcode &entry : wrapper_of_opcode_rows) {
        glsCommandFunc(GLS_CAPTURE_FUNC, entry.opcode, (GlsFunc)(void *)&fake_wrappers[entry.row]);
        if (glsGetError() == GLS_UNSUPPORTED_COMMAND)
            ++refused;
    }
    EXPECT_EQ(refused, 103);
    GlsContext *ctx = gls_current();
    EXPECT_EQ(ctx->captureFuncs[OP_glBindTexture], (GlsFunc)(void *)&fake_wrappers[ROW_glBindTextureEXT]);
    EXPECT_EQ(ctx->captureFuncs[OP_glColorTable], (GlsFunc)(void *)&fake_wrappers[ROW_glColorTableSGI]);
    EXPECT_EQ(ctx->captureFuncs[OP_glGetString], (GlsFunc)(void *)&fake_wrappers[ROW_glGetString]);
}

} // namespace
