// The control window's texts and commands, as plain functions of the records.
#include "panel/panel_text.h"

#include "records/mmaps.h"
#include "panel/resource.h"
#include "panel/settings_file.h"
#include "records/rings.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

struct panel_records {
    thread_record *record;
    per_proc *proc;
};

panel_records make_records(uint32_t id)
{
    panel_records made;
    made.record = (thread_record *)block_alloc(sizeof(thread_record));
    made.proc = (per_proc *)block_alloc(sizeof(per_proc));
    fill_thread_record(made.record, id);
    fill_per_proc(made.proc, id);
    made.record->per_proc = made.proc;
    return made;
}

void free_records(panel_records made)
{
    block_free(made.proc);
    block_free(made.record);
}

std::string thread_banner(uint32_t id)
{
    panel_records made = make_records(id);
    char text[PANEL_TEXT_SIZE];
    thread_banner_text(made.proc, text);
    free_records(made);
    return text;
}

std::string context_banner(const per_gl *gl)
{
    char text[PANEL_TEXT_SIZE];
    context_banner_text(gl, text);
    return text;
}

TEST(Banners, ThreadIdUnderTheProcessLabel)
{
    EXPECT_EQ(thread_banner(36), "App Process ID = 36");
    EXPECT_EQ(thread_banner(4294967295u), "App Process ID = 4294967295");
}

TEST(Banners, ContextByOrdinalNotByHandle)
{
    EXPECT_EQ(context_banner(nullptr), "GL context = Unstable");
    per_gl *gl = (per_gl *)block_alloc(sizeof(per_gl));
    fill_per_gl(gl, 0, 0);
    EXPECT_EQ(context_banner(gl), "GL context = NULL");
    fill_per_gl(gl, 3, 0x10002);
    EXPECT_EQ(context_banner(gl), "GL context = 3");
    block_free(gl);
}

struct expected_run {
    int id;
    int32_t run_state;
    const char *status;
    int32_t event;
};

TEST(RunButtons, StatusAndEventFollowTheRunState)
{
    const expected_run cases[] = {
        {IDC_HALT, RUN_HALTED, "Halt requested", EVENT_HALT},
        {IDC_HALT, RUN_RUNNING, "Halt requested", EVENT_HALT},
        {IDC_CONTINUE, RUN_HALTED, "Continue requested", EVENT_CONTINUE},
        {IDC_CONTINUE, RUN_RUNNING, "Continue requested", EVENT_CONTINUE},
        {IDC_STEP, RUN_HALTED, "Step requested", EVENT_STEP},
        {IDC_STEP, RUN_RUNNING, "Halt requested", EVENT_HALT},
        {IDC_SKIP, RUN_HALTED, "Skip call requested", EVENT_SKIP},
        {IDC_SKIP, RUN_RUNNING, "Halt requested", EVENT_HALT},
    };
    panel_records made = make_records(1);
    for (const expected_run &expected : cases) {
        made.proc->run_state = expected.run_state;
        control_action action = control_command(made.proc, expected.id, 0);
        EXPECT_EQ(action.kind, COMMAND_RUN) << expected.id;
        ASSERT_NE(action.status, nullptr) << expected.id;
        EXPECT_STREQ(action.status, expected.status) << expected.id << " in state " << expected.run_state;
        EXPECT_EQ(action.event, expected.event) << expected.id << " in state " << expected.run_state;
        EXPECT_EQ(action.shown_index, SHOWN_NONE) << expected.id;
        EXPECT_EQ(made.proc->run_state, expected.run_state) << "the panel never writes run_state";
    }
    free_records(made);
}

struct box_flag {
    int id;
    int32_t per_proc::*flag;
};

const box_flag boxes[] = {
    {IDC_GL_ERRORS, &per_proc::Check_for_GL_error},
    {IDC_CONTROL_DRAWING, &per_proc::Control_draw},
    {IDC_HISTORY, &per_proc::History},
    {IDC_BREAK_ON_CALLS, &per_proc::Break_on_GL_calls},
    {IDC_BREAK_ON_SWAP, &per_proc::Break_on_SwapBuffers},
    {IDC_SKIP_CALLS, &per_proc::Skip_GL_calls},
};

// The option flags from shown[] on, as one text, to see that a box writes its own flag only.
std::string flag_words(const per_proc *proc)
{
    std::string text;
    const int32_t *word = proc->shown;
    for (int at = 0; at < PER_PROC_FLAG_WORDS; ++at)
        text += std::to_string(word[at]) + " ";
    return text;
}

TEST(CheckBoxes, EachBoxWritesItsOwnFlagOnlyExactlyOneIsOn)
{
    panel_records made = make_records(1);
    for (const box_flag &box : boxes) {
        fill_per_proc(made.proc, 1);
        std::string untouched = flag_words(made.proc);
        control_action action = control_command(made.proc, box.id, 1);
        EXPECT_EQ(action.kind, COMMAND_BOX) << box.id;
        EXPECT_EQ(action.status, nullptr) << box.id;
        EXPECT_EQ(made.proc->*box.flag, 1) << box.id;
        made.proc->*box.flag = 0;
        EXPECT_EQ(flag_words(made.proc), untouched) << box.id << " wrote another flag";

        // BST_INDETERMINATE (2) and anything else but 1 count as off.
        for (int check : {0, 2, -1}) {
            made.proc->*box.flag = 1;
            control_command(made.proc, box.id, check);
            EXPECT_EQ(made.proc->*box.flag, 0) << box.id << " with check " << check;
        }
    }
    free_records(made);
}

TEST(CheckBoxes, OnlyControlDrawingPostsEvents)
{
    panel_records made = make_records(1);
    for (const box_flag &box : boxes) {
        int32_t on = control_command(made.proc, box.id, 1).event;
        int32_t off = control_command(made.proc, box.id, 0).event;
        if (box.id == IDC_CONTROL_DRAWING) {
            EXPECT_EQ(on, EVENT_CONTROL_DRAW_ON);
            EXPECT_EQ(off, EVENT_CONTROL_DRAW_OFF);
        } else {
            EXPECT_EQ(on, 0) << box.id;
            EXPECT_EQ(off, 0) << box.id;
        }
    }
    free_records(made);
}

struct expected_window {
    int id;
    int32_t event;
    bool refresh;
    int shown_index;
};

TEST(WindowCommands, InformationWindowsHaltFirstSetupAndAboutDoNot)
{
    const expected_window cases[] = {
        {IDM_ABOUT, 0, false, SHOWN_ABOUT},
        {IDM_ABOUT_QUONDALE, 0, false, SHOWN_ABOUT},
        {IDM_CALL_COUNT, EVENT_HALT, true, SHOWN_CALL_COUNT},
        {IDM_CALL_HISTORY, EVENT_HALT, true, SHOWN_HISTORY_SELECT},
        {IDM_DISPLAY_LIST, EVENT_HALT, true, SHOWN_LIST_SELECT},
        {IDM_PRIMITIVE_COUNT, EVENT_HALT, true, SHOWN_PRIM_COUNT},
        {IDM_STATE, EVENT_HALT, true, SHOWN_STATE_SELECT},
        {IDM_WINDOW, EVENT_HALT, true, SHOWN_WINDOW_INFO},
        // Enumerants halts although it shows nothing of the application.
        {IDM_ENUMERANTS, EVENT_HALT, false, SHOWN_ENUMERANTS},
        {IDC_TRACE_SETUP, 0, true, SHOWN_TRACE_SELECT},
        {IDC_BREAK_SETUP, 0, true, SHOWN_BREAK_SELECT},
        {IDC_SKIP_SETUP, 0, true, SHOWN_SKIP_SELECT},
    };
    panel_records made = make_records(1);
    for (int32_t run_state : {RUN_HALTED, RUN_RUNNING}) {
        made.proc->run_state = run_state;
        for (const expected_window &expected : cases) {
            control_action action = control_command(made.proc, expected.id, 0);
            EXPECT_EQ(action.kind, COMMAND_SHOW_WINDOW) << expected.id;
            EXPECT_EQ(action.status, nullptr) << expected.id;
            EXPECT_EQ(action.event, expected.event) << expected.id;
            EXPECT_EQ(action.refresh, expected.refresh) << expected.id;
            EXPECT_EQ(action.shown_index, expected.shown_index) << expected.id;
        }
    }
    free_records(made);
}

TEST(WindowCommands, FileMenuAndUnknownIds)
{
    panel_records made = make_records(1);
    EXPECT_EQ(control_command(made.proc, IDM_SAVE_CONFIGURATION, 0).kind, COMMAND_SAVE_SETTINGS);
    EXPECT_EQ(control_command(made.proc, IDM_LOAD_CONFIGURATION, 0).kind, COMMAND_LOAD_SETTINGS);
    EXPECT_EQ(control_command(made.proc, IDM_QUIT, 0).kind, COMMAND_QUIT);
    // Banners, status line, frames: WM_COMMAND from them does nothing.
    for (int id : {0, IDC_THREAD_BANNER, IDC_LAST_CALL, IDC_STATUS, IDC_LEFT_FRAME, 12, 40014}) {
        std::string before = flag_words(made.proc);
        control_action action = control_command(made.proc, id, 1);
        EXPECT_EQ(action.kind, COMMAND_NONE) << id;
        EXPECT_EQ(action.event, 0) << id;
        EXPECT_EQ(action.shown_index, SHOWN_NONE) << id;
        EXPECT_EQ(flag_words(made.proc), before) << id;
    }
    free_records(made);
}

TEST(ShownIndex, EachIndexNamesItsWindow)
{
    panel_records made = make_records(1);
    thread_record *record = made.record;
    // Distinct fake handles, so that a swapped row shows.
    WindowHandle thread_record::*windows[] = {
        &thread_record::about_window, &thread_record::call_count_window, &thread_record::prim_count_window,
        &thread_record::history_select_window, &thread_record::list_select_window, &thread_record::control_window,
        &thread_record::enum_window, &thread_record::break_select_window, &thread_record::skip_select_window,
        &thread_record::trace_select_window, &thread_record::state_select_window, &thread_record::window_info_window,
    };
    const int indices[] = {0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (int at = 0; at < 12; ++at)
        record->*windows[at] = (WindowHandle)(uintptr_t)(0x100 + indices[at]);
    for (int index = 0; index < SHOWN_COUNT; ++index) {
        WindowHandle expected = index == 3 ? nullptr : (WindowHandle)(uintptr_t)(0x100 + index);
        EXPECT_EQ(window_of_shown_index(record, index), expected) << index;
    }
    EXPECT_EQ(window_of_shown_index(record, SHOWN_NONE), nullptr);
    EXPECT_EQ(window_of_shown_index(record, SHOWN_COUNT), nullptr);
    free_records(made);
}

std::string temp_path(const char *name)
{
    return (testing::TempDir() + name);
}

TEST(ReadWholeFile, WholeTextZeroTerminatedOrNullWhenMissing)
{
    std::string path = temp_path("panel_read_whole_file.txt");
    std::string content = "glClear(GL_COLOR_BUFFER_BIT);\nglFlush();\n";
    for (int i = 0; i < 200; ++i)
        content += "glVertex3f(" + std::to_string(i) + ", 0, 0);\n";
    FILE *file = fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    fwrite(content.data(), 1, content.size(), file);
    fclose(file);
    char *text = read_whole_file(path.c_str());
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(text), content);
    block_free(text);

    file = fopen(path.c_str(), "wb");
    fclose(file);
    text = read_whole_file(path.c_str());
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "");
    block_free(text);
    remove(path.c_str());

    EXPECT_EQ(read_whole_file(path.c_str()), nullptr);
}

TEST(ListHeadLine, NameStateCallsAndUses)
{
    auto head = [](int32_t list, int32_t status, int32_t lines, int32_t calls) {
        list_info_row row = {list, status, lines, calls, 0, 0, nullptr};
        char text[PANEL_TEXT_SIZE];
        list_head_line(&row, text);
        return std::string(text);
    };
    EXPECT_EQ(head(1, 3, 1, 0), "List 1; contains 1 call;");
    EXPECT_EQ(head(3, 3, 12, 1), "List 3; contains 12 calls; called 1 time;");
    EXPECT_EQ(head(1, 1, 2, 0), "List 1; deleted; contains 2 calls;");
    EXPECT_EQ(head(7, 2, 0, 5), "List 7; capturing calls now; contains 0 calls; called 5 times;");
}

TEST(SettingsFile, AFileCutShortRepeatsItsLastRowInEveryLaterRowAndSection)
{
    FILE *file = tmpfile();
    fputs("quondale\na: 1\nb: 0\nc: 1\nd: 0\ne: 0\nf: 0\ng: ALL\nh: 1\ni: 0\nbreak\nglAccum: 1 2 3 4\n", file);
    rewind(file);
    static settings_values values;
    ASSERT_TRUE(settings_read(file, &values));
    fclose(file);
    const settings_section &skip = values.sections[SETTINGS_SECTIONS - 1];
    EXPECT_TRUE(skip.selected[GL_CALL_COUNT - 1] == 1 && !memcmp(skip.sets[GL_CALL_COUNT - 1], "\2\3\4", 3));
}

} // namespace
