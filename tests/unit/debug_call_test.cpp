// The control loop of the debug wrappers, driven with a fake call: what happens to a call while
// the program runs, halts, steps, skips, and halts behind a call that found fault.
#include <gtest/gtest.h>

#include "gls/gls.h"
#include "interception/wrapper.h"
#include "records/panel_hooks.h"
#include "records/rings.h"

#include <memory>
#include <string>
#include <vector>

namespace {

std::string happened; // what the fake call, the hook and the panel saw, in order
// What the user presses when the panel shows a halt: the events a halt's refresh posts.
std::vector<int32_t> answers;

struct Session;
Session *session;

struct Session {
    thread_record record = {};
    std::unique_ptr<per_proc> proc = std::make_unique<per_proc>();
    std::unique_ptr<per_gl> gl = std::make_unique<per_gl>();
    std::unique_ptr<master> names = std::make_unique<master>();
    library_table libraries = {};
    GLuint codec = 0;

    Session()
    {
        fill_per_proc(proc.get(), 7);
        fill_per_gl(gl.get(), 1, 0x10000);
        fill_master(names.get(), 7);
        record.per_proc = proc.get();
        record.per_gl = gl.get();
        record.master = names.get();
        record.library_table = &libraries;
        codec = glsGenContext();
        glsContext(codec);
        libraries.gls_context = libraries.current_gls_context = (int32_t)codec;
        glsCaptureFlags(OP_glIsEnabled, GLS_CAPTURE_EXECUTE_BIT | GLS_CAPTURE_WRITE_BIT); // traced
        // A session's capture stays open: the history's, or its stand-in with History off.
        glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME);
        happened.clear();
        panel.show_status = [](const char *text) { happened += std::string("status ") + text + ";"; };
        panel.update_all = [] {
            happened += "refresh;";
            for (int32_t event : answers)
                post_event(&session->proc->ring_to_app, event);
            answers.clear();
        };
    }
    ~Session()
    {
        glsEndCapture();
        glsContext(0);
        glsDeleteContext(codec);
        panel.show_status = [](const char *) {};
        panel.update_all = [] {};
    }
    void post(int32_t event) { post_event(&proc->ring_to_app, event); }
    void answer(std::vector<int32_t> events) { answers = events; }
};

// The wrapper of glIsEnabled, with a fake in place of the capture path: it tells a text capture
// (write-only flags) from the real call.
void fake_call(const void *args, void *result)
{
    bool text = glsGetCaptureFlags(OP_glIsEnabled) == GLS_CAPTURE_WRITE_BIT;
    happened += text ? "text;" : "call;";
    if (!text)
        *(GLboolean *)result = *(const GLenum *)args == 1 ? 1 : 0;
}

void fake_hook(thread_record *, const void *) { happened += "hook;"; }

const WrapperRow fake_row = {ROW_glIsEnabled, OP_glIsEnabled, fake_call, fake_hook};

// Runs one call the way a generated wrapper does, and gives what the application got.
int call_with(GLenum argument)
{
    GLboolean result = 0;
    return debug_call(&fake_row, &argument, &result) ? result : 0;
}

struct DebugCall : testing::Test {
    Session s;
    void SetUp() override { session = &s; }
};

} // namespace

thread_record *thread_entry() { return &session->record; }

TEST_F(DebugCall, RunningCallIsMadeCountedAndHookedWithoutItsText)
{
    s.proc->run_state = RUN_RUNNING;
    EXPECT_EQ(call_with(1), 1);
    EXPECT_EQ(happened, "call;hook;");
    EXPECT_EQ(s.proc->call_control[ROW_glIsEnabled].count, 1);
}

TEST_F(DebugCall, WithNoCaptureOpenTheCallIsCountedButNotMade)
{
    s.proc->run_state = RUN_RUNNING;
    glsEndCapture();
    EXPECT_EQ(call_with(1), 0);
    glsBeginCapture((const GLubyte *)"", GLS_TEXT, GLS_WRITE_NO_FRAME);
    EXPECT_EQ(happened, "hook;");
    EXPECT_EQ(s.proc->call_control[ROW_glIsEnabled].count, 1);
}

TEST_F(DebugCall, HaltedCallShowsItsTextRefreshesOnceAndWaitsForStep)
{
    // The events are read one a pass; the halt's refresh comes once, before the first of them.
    s.answer({EVENT_HALT, EVENT_STEP});
    EXPECT_EQ(call_with(1), 1);
    EXPECT_EQ(happened, "text;status Updating ...;refresh;status Halted;status Halted;status Step;call;hook;");
    EXPECT_EQ(s.proc->run_state, RUN_HALTED); // a step leaves the thread halted for the next call
}

TEST_F(DebugCall, SkipAtAHaltLeavesTheCallUnmadeAndGivesZero)
{
    s.answer({EVENT_SKIP});
    EXPECT_EQ(call_with(1), 0);
    EXPECT_EQ(happened, "text;status Updating ...;refresh;status Halted;status Call skipped;");
    EXPECT_EQ(s.proc->call_control[ROW_glIsEnabled].count, 0);
}

TEST_F(DebugCall, SkipSetMarksThePreviousTextAndSkipsWithoutStopping)
{
    s.proc->run_state = RUN_RUNNING;
    s.proc->Skip_GL_calls = 1;
    s.proc->call_control[ROW_glIsEnabled].skip = 1;
    snprintf(s.proc->last_call_text, LAST_CALL_TEXT_SIZE, "glClear(GL_COLOR_BUFFER_BIT);");
    EXPECT_EQ(call_with(1), 0);
    EXPECT_EQ(happened, "");
    EXPECT_STREQ(s.proc->last_call_text, "glClear(GL_COLOR_BUFFER_BIT); /* skip */");
}

TEST_F(DebugCall, BreakHaltsBeforeTheCallWithTheRowsName)
{
    s.proc->run_state = RUN_RUNNING;
    s.proc->Break_on_GL_calls = 1;
    s.proc->call_control[ROW_glIsEnabled].break_on = 1;
    s.answer({EVENT_CONTINUE});
    EXPECT_EQ(call_with(1), 1);
    EXPECT_EQ(happened, "status Halted (Break on glIsEnabled);text;status Updating ...;refresh;status Halted;"
                        "status Running;call;hook;");
}

TEST_F(DebugCall, FaultBehindTheCallHaltsThereWithoutMakingItTwice)
{
    // No context: with the check on, every call finds fault behind itself.
    s.proc->run_state = RUN_RUNNING;
    s.proc->Check_for_GL_error = 1;
    s.gl->handle = 0;
    s.answer({EVENT_CONTINUE});
    EXPECT_EQ(call_with(1), 1);
    EXPECT_EQ(happened, "call;hook;text;status Updating ...;refresh;status Halted;status Running;");
    EXPECT_STREQ(s.proc->pending_message, "\nWarning: No GL context.");
    EXPECT_EQ(s.proc->call_control[ROW_glIsEnabled].count, 1);
}

TEST_F(DebugCall, SkipBehindAMadeCallStillGivesZero)
{
    s.proc->run_state = RUN_RUNNING;
    s.proc->Check_for_GL_error = 1;
    s.gl->handle = 0;
    s.answer({EVENT_SKIP});
    EXPECT_EQ(call_with(1), 0);
    EXPECT_EQ(happened, "call;hook;text;status Updating ...;refresh;status Halted;status Call skipped;");
}

TEST_F(DebugCall, AnEventTakenWhileRunningHaltsThisCall)
{
    s.proc->run_state = RUN_RUNNING;
    s.post(EVENT_HALT);
    s.answer({EVENT_CONTINUE});
    EXPECT_EQ(call_with(1), 1);
    EXPECT_EQ(happened, "text;status Halted;status Updating ...;refresh;status Halted;status Running;call;hook;");
}

TEST_F(DebugCall, ACompiledListNeedsTheTextOfEveryCallWhileRunning)
{
    s.proc->run_state = RUN_RUNNING;
    s.gl->list_capturing = 1;
    EXPECT_EQ(call_with(1), 1);
    EXPECT_EQ(happened, "text;call;hook;");
}
