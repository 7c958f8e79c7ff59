// The call catalogue and the per-opcode tables generated from the table of signatures.
#include <gtest/gtest.h>

#include "gen/calls.h"
#include "gls/gls.h"
#include "gls/tables.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <strings.h>

namespace {

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

    GLuint id = glsGenContext();
    glsContext(id);
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
    glsDeleteContext(id);
    glsContext(0);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

} // namespace
