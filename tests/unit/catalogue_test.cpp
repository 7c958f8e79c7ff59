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

int row_of(const char *const *names, int count, const char *name)
{
    for (int row = 0; row < count; ++row)
        if (strcmp(names[row], name) == 0)
            return row;
    return -1;
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

TEST(Catalogue, ListsAreSortedWithoutCaseAndFitTheirRows)
{
    for (auto [names, count] : {std::pair{gl_call_names, (int)GL_CALL_COUNT},
                                std::pair{glu_call_names, (int)GLU_CALL_COUNT}}) {
        for (int row = 0; row < count; ++row) {
            ASSERT_NE(names[row], nullptr);
            EXPECT_LT(strlen(names[row]), (size_t)CALL_NAME_SIZE);
            if (row > 0)
                EXPECT_LT(strcasecmp(names[row - 1], names[row]), 0) << names[row];
        }
    }
}

TEST(Catalogue, FixedRowsStandWhereOtherCodeExpectsThem)
{
    const std::pair<const char *, int> rows[] = {
        {"glBegin", ROW_glBegin},         {"glEnd", ROW_glEnd},
        {"glEndList", ROW_glEndList},     {"glFlush", ROW_glFlush},
        {"glGetString", ROW_glGetString}, {"glNewList", ROW_glNewList},
        {"glViewport", ROW_glViewport},
    };
    for (auto [name, row] : rows)
        EXPECT_STREQ(gl_call_names[row], name);
    EXPECT_STREQ(gl_call_names[0], "glAccum");
    EXPECT_STREQ(gdi_call_names[ROW_SwapBuffers], "SwapBuffers");
    EXPECT_STREQ(gdi_call_names[0], "ChoosePixelFormat");
    EXPECT_STREQ(wgl_call_names[0], "wglChoosePixelFormat");
    EXPECT_STREQ(wgl_call_names[15], "wglMakeCurrent");
    EXPECT_STREQ(wgl_call_names[23], "wglUseFontOutlinesW");
    EXPECT_STREQ(glu_call_names[ROW_gluErrorString], "gluErrorString");
    EXPECT_STREQ(glu_call_names[56], "gluTessVertex");
    EXPECT_TRUE(vendor_suffixed(glu_call_names[57])) << glu_call_names[57];
    EXPECT_STREQ(glu_call_names[58], "gluUnProject");
}

TEST(Catalogue, VendorRowsFillTheGapsBetweenFixedRows)
{
    // 112 vendor rows, spread 2, 14, 0, 1, 34, 26, 35 between the fixed rows and none after.
    const int bounds[] = {0, ROW_glBegin, ROW_glEnd, ROW_glEndList, ROW_glFlush,
                          ROW_glGetString, ROW_glNewList, ROW_glViewport};
    const int expected[] = {2, 14, 0, 1, 34, 26, 35};
    int total = 0;
    for (int gap = 0; gap < 7; ++gap) {
        int count = 0;
        for (int row = bounds[gap]; row < bounds[gap + 1]; ++row)
            count += vendor_suffixed(gl_call_names[row]);
        EXPECT_EQ(count, expected[gap]) << "before " << gl_call_names[bounds[gap + 1]];
        total += count;
    }
    EXPECT_EQ(total, 112);
}

TEST(Catalogue, RowsShareOpcodesOnlyInPairsOfSpellings)
{
    std::map<int, std::vector<int>> rows_of_opcode;
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        int opcode = opcode_of_call[row];
        EXPECT_GE(opcode, 48);
        EXPECT_LE(opcode, 474);
        rows_of_opcode[opcode].push_back(row);
    }
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
    int bind_texture = row_of(gl_call_names, GL_CALL_COUNT, "glBindTexture");
    int bind_texture_ext = row_of(gl_call_names, GL_CALL_COUNT, "glBindTextureEXT");
    EXPECT_EQ(opcode_of_call[bind_texture], 328);
    EXPECT_EQ(opcode_of_call[bind_texture_ext], 328);
}

TEST(Catalogue, VendorRowsWithoutACommandStandOnUnnamedOpcodes)
{
    int unnamed = 0;
    for (int row = 0; row < GL_CALL_COUNT; ++row) {
        const char *command = gls_opcode_names[opcode_of_call[row]];
        if (command) {
            EXPECT_FALSE(vendor_suffixed(command)) << command;
        } else {
            ++unnamed;
            EXPECT_TRUE(vendor_suffixed(gl_call_names[row])) << gl_call_names[row];
        }
    }
    EXPECT_EQ(unnamed, 103);
}

TEST(OpcodeTables, CommandsAndBindList)
{
    int codec = 0, gl = 0;
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op) {
        if (!gls_opcode_names[op])
            continue;
        (op < 48 ? codec : gl) += 1;
        EXPECT_NE(gls_null_funcs[op], nullptr) << op;
        EXPECT_NE(gls_forwarders[op], nullptr) << op;
        EXPECT_NE(gls_default_capture[op], nullptr) << op;
    }
    EXPECT_EQ(codec, 30);
    EXPECT_EQ(gl, 305);
    for (int op = 16; op <= 45; ++op)
        EXPECT_NE(gls_opcode_names[op], nullptr) << op;
    EXPECT_STREQ(gls_opcode_names[16], "glsBeginGLS");
    EXPECT_STREQ(gls_opcode_names[45], "glsSwapBuffers");
    EXPECT_STREQ(gls_opcode_names[181], "glClear");
    EXPECT_STREQ(gls_opcode_names[376], "glPointParameterfvEXT");

    std::set<int> bound;
    int count = 0;
    for (const int32_t *op = gls_bind_list; *op; ++op, ++count) {
        EXPECT_TRUE(*op >= 48 && *op <= 376) << *op;
        EXPECT_NE(gls_opcode_names[*op], nullptr) << *op;
        bound.insert(*op);
    }
    EXPECT_EQ(count, 305);
    EXPECT_EQ(bound.size(), 305u);
}

TEST(OpcodeTables, AttributeBytes)
{
    std::map<int, int> rows_with;
    for (int op = 0; op < GLS_OPCODE_COUNT; ++op)
        rows_with[gls_attributes[op]]++;
    EXPECT_EQ(rows_with[1], 14);
    EXPECT_EQ(rows_with[2], 22);
    EXPECT_EQ(rows_with[3], 1);
    EXPECT_EQ(rows_with[4], 40);
    EXPECT_EQ(rows_with[5], 1);
    EXPECT_EQ(rows_with[6], 6);
    EXPECT_EQ(gls_attributes[235], 5);  // glGetError
    EXPECT_EQ(gls_attributes[350], 3);  // glPopClientAttrib
    EXPECT_EQ(gls_attributes[232], 6);  // glGetBooleanv
    EXPECT_EQ(gls_attributes[230], 4);  // glReadPixels
    EXPECT_EQ(gls_attributes[20], 1);   // glsEndGLS
    EXPECT_EQ(gls_attributes[181], 0);  // glClear
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
    int core = row_of(gl_call_names, GL_CALL_COUNT, "glBindTexture");
    int ext = row_of(gl_call_names, GL_CALL_COUNT, "glBindTextureEXT");
    EXPECT_EQ(ctx->captureFuncs[328], (GlsFunc)(void *)&fake_wrappers[ext]);
    EXPECT_NE(ctx->captureFuncs[328], (GlsFunc)(void *)&fake_wrappers[core]);
    int color_table_sgi = row_of(gl_call_names, GL_CALL_COUNT, "glColorTableSGI");
    EXPECT_EQ(ctx->captureFuncs[359], (GlsFunc)(void *)&fake_wrappers[color_table_sgi]);
    EXPECT_EQ(ctx->captureFuncs[249], (GlsFunc)(void *)&fake_wrappers[ROW_glGetString]);
    glsDeleteContext(id);
    glsContext(0);
    EXPECT_EQ(glsGetError(), GLS_NONE);
}

} // namespace
