// The control loop of the debug wrappers, driven with a fake call: what happens to a call while
// the program runs, halts, steps, skips, and halts behind a call that found fault.
#include <gtest/gtest.h>

#include "gls/gls.h"
#include "interception/wrapper.h"
#include "records/panel_hooks.h"
#include "records/rings.h"

#include <cstring>
#include <fstream>
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

// No context: with the check on, every call finds fault behind itself.
void faulty(Session &s)
{
    s.proc->Check_for_GL_error = 1;
    s.gl->handle = 0;
}

void skip_set(Session &s)
{
    s.proc->Skip_GL_calls = 1;
    s.proc->call_control[ROW_glIsEnabled].skip = 1;
    snprintf(s.proc->last_call_text, LAST_CALL_TEXT_SIZE, "glClear(GL_COLOR_BUFFER_BIT);");
}

void break_set(Session &s)
{
    s.proc->Break_on_GL_calls = 1;
    s.proc->call_control[ROW_glIsEnabled].break_on = 1;
}

// What the application gets and what happened, per case, stand in debug_call_cases.txt.
struct call_case {
    const char *name;
    int32_t run_state;
    void (*set_up)(Session &);
    std::vector<int32_t> answers;             // what the user presses at a halt, one event a pass
    int count = -1;                           // the call's count after, where it is asked
    bool (*after)(const Session &) = nullptr; // what else the case leaves behind
};

const call_case cases[] = {
    {"running", RUN_RUNNING, nullptr, {}, 1},
    {"no capture open", RUN_RUNNING, [](Session &) { glsEndCapture(); }, {}, 1},
    // The halt's refresh comes once, before the first event; a step leaves the thread halted.
    {"halted, then step", RUN_HALTED, nullptr, {EVENT_HALT, EVENT_STEP}, -1,
     [](const Session &s) { return s.proc->run_state == RUN_HALTED; }},
    {"skip at a halt", RUN_HALTED, nullptr, {EVENT_SKIP}, 0},
    {"skip set", RUN_RUNNING, skip_set, {}, -1, [](const Session &s) {
         return strcmp(s.proc->last_call_text, "glClear(GL_COLOR_BUFFER_BIT); /* skip */") == 0;
     }},
    {"break set", RUN_RUNNING, break_set, {EVENT_CONTINUE}},
    {"fault behind the call", RUN_RUNNING, faulty, {EVENT_CONTINUE}, 1,
     [](const Session &s) { return strcmp(s.proc->pending_message, "\nWarning: No GL context.") == 0; }},
    {"skip behind a made call", RUN_RUNNING, faulty, {EVENT_SKIP}},
    {"an event taken while running", RUN_RUNNING, [](Session &s) { s.post(EVENT_HALT); }, {EVENT_CONTINUE}},
    {"a compiled list", RUN_RUNNING, [](Session &s) { s.gl->list_capturing = 1; }, {}},
};

} // namespace

thread_record *thread_entry() { return &session->record; }

TEST(DebugCall, WhatACallDoesInEachStateOfTheSession)
{
    std::string text;
    for (const call_case &c : cases) {
        Session s;
        session = &s;
        s.proc->run_state = c.run_state;
        if (c.set_up)
            c.set_up(s);
        s.answer(c.answers);
        text += std::string(c.name) + ": gives " + std::to_string(call_with(1)) + ": " + happened + "\n";
        if (c.count >= 0)
            EXPECT_EQ(s.proc->call_control[ROW_glIsEnabled].count, c.count) << c.name;
        EXPECT_TRUE(!c.after || c.after(s)) << c.name;
    }
    std::ifstream file(QUONDALE_EXPECTED "/debug_call_cases.txt", std::ios::binary);
    EXPECT_EQ(text, std::string(std::istreambuf_iterator<char>(file), {}));
}
