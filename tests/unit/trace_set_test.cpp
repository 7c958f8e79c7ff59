// The trace set as the codec sees it: capture flags per opcode.
#include <gtest/gtest.h>

#include "gen/calls.h"
#include "gls/gls.h"
#include "recording/history.h"
#include "records/records.h"

#include <cstring>
#include <memory>

namespace {

int row_of(const char *name)
{
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        if (strcmp(gl_call_names[row], name) == 0)
            return row;
    return -1;
}

struct TraceSession {
    std::unique_ptr<per_proc> proc = std::make_unique<per_proc>();
    thread_record record = {};
    GLuint context;
    TraceSession()
    {
        fill_per_proc(proc.get(), 1);
        record.per_proc = proc.get();
        context = glsGenContext();
        glsContext(context);
    }
    ~TraceSession()
    {
        glsDeleteContext(context);
        glsContext(0);
    }
    void trace(const char *name, uint8_t value) { proc->call_control[row_of(name)].trace = value; }
};

TEST(TraceSet, TracedFunctionsExecuteAndWriteOthersOnlyExecute)
{
    TraceSession session;
    session.trace("glColor3fv", 0);
    session.trace("glVertex3fv", 0);
    apply_trace_set(&session.record);
    EXPECT_EQ(glsGetCaptureFlags(OP_glColor3fv), 1u);
    EXPECT_EQ(glsGetCaptureFlags(OP_glVertex3fv), 1u);
    EXPECT_EQ(glsGetCaptureFlags(OP_glClear), 3u);
    EXPECT_EQ(glsGetCaptureFlags(OP_glEnable), 3u);
    EXPECT_EQ(glsGetError(), GLS_NONE); // vendor rows without a command are not asked for

    // The later spelling of an opcode decides.
    session.trace("glBindTexture", 0);
    apply_trace_set(&session.record);
    EXPECT_EQ(glsGetCaptureFlags(OP_glBindTexture), 3u); // glBindTextureEXT is still traced
    session.trace("glBindTexture", 1);
    session.trace("glBindTextureEXT", 0);
    apply_trace_set(&session.record);
    EXPECT_EQ(glsGetCaptureFlags(OP_glBindTexture), 1u);

    // Vertex array data is written even with nothing traced.
    for (int row = 0; row < GL_CALL_COUNT; ++row)
        session.proc->call_control[row].trace = 0;
    apply_trace_set(&session.record);
    EXPECT_EQ(glsGetCaptureFlags(OP_glsDrawVertexArray), 3u);
    EXPECT_EQ(glsGetCaptureFlags(OP_glDrawArrays), 1u);
}

} // namespace
