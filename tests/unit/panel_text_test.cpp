// The control window's texts and commands, as plain functions of the records; the texts of state
// values, enumerant names and pixel formats.
#include "panel/panel_text.h"

#include "gen/gl_enums.h"
#include "panel/enum_text.h"
#include "panel/resource.h"
#include "panel/settings_file.h"
#include "panel/state_text.h"
#include "records/mmaps.h"
#include "records/records.h"
#include "records/rings.h"
#include "state/window_info.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

namespace {

// A thread's records as the panel gets them.
struct Panel : testing::Test {
    std::unique_ptr<thread_record> record = std::make_unique<thread_record>();
    std::unique_ptr<per_proc> proc = std::make_unique<per_proc>();
    void SetUp() override
    {
        fill_thread_record(record.get(), 1);
        fill_per_proc(proc.get(), 1);
        record->per_proc = proc.get();
    }
};

TEST_F(Panel, BannersThreadIdUnderTheProcessLabelAndContextByOrdinalNotByHandle)
{
    char text[PANEL_TEXT_SIZE];
    std::string banners;
    for (uint32_t id : {36u, 4294967295u}) {
        fill_per_proc(proc.get(), id);
        thread_banner_text(proc.get(), text);
        banners += std::string(text) + "\n";
    }
    std::unique_ptr<per_gl> gl = std::make_unique<per_gl>();
    context_banner_text(nullptr, text);
    banners += std::string(text) + "\n";
    fill_per_gl(gl.get(), 0, 0);
    context_banner_text(gl.get(), text);
    banners += std::string(text) + "\n";
    fill_per_gl(gl.get(), 3, 0x10002);
    context_banner_text(gl.get(), text);
    banners += std::string(text) + "\n";
    EXPECT_EQ(banners, "App Process ID = 36\nApp Process ID = 4294967295\nGL context = Unstable\nGL context = NULL\n"
                       "GL context = 3\n");
}

struct expected_run {
    int id;
    int32_t run_state;
    const char *status;
    int32_t event;
};

TEST_F(Panel, RunButtonsStatusAndEventFollowTheRunState)
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
    for (const expected_run &expected : cases) {
        proc.get()->run_state = expected.run_state;
        control_action action = control_command(proc.get(), expected.id, 0);
        EXPECT_EQ(action.kind, COMMAND_RUN) << expected.id;
        EXPECT_STREQ(action.status, expected.status) << expected.id << " in state " << expected.run_state;
        EXPECT_EQ(action.event, expected.event) << expected.id << " in state " << expected.run_state;
        EXPECT_EQ(action.shown_index, SHOWN_NONE) << expected.id;
        EXPECT_EQ(proc.get()->run_state, expected.run_state) << "the panel never writes run_state";
    }
}

struct box_flag {
    int id;
    int32_t per_proc::*flag;
    int32_t on_event, off_event; // only control drawing posts events
};

const box_flag boxes[] = {
    {IDC_GL_ERRORS, &per_proc::Check_for_GL_error, 0, 0},
    {IDC_CONTROL_DRAWING, &per_proc::Control_draw, EVENT_CONTROL_DRAW_ON, EVENT_CONTROL_DRAW_OFF},
    {IDC_HISTORY, &per_proc::History, 0, 0},
    {IDC_BREAK_ON_CALLS, &per_proc::Break_on_GL_calls, 0, 0},
    {IDC_BREAK_ON_SWAP, &per_proc::Break_on_SwapBuffers, 0, 0},
    {IDC_SKIP_CALLS, &per_proc::Skip_GL_calls, 0, 0},
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

TEST_F(Panel, CheckBoxesEachBoxWritesItsOwnFlagOnlyExactlyOneIsOnAndControlDrawingPostsEvents)
{
    for (const box_flag &box : boxes) {
        fill_per_proc(proc.get(), 1);
        std::string untouched = flag_words(proc.get());
        control_action action = control_command(proc.get(), box.id, 1);
        EXPECT_EQ(action.kind, COMMAND_BOX) << box.id;
        EXPECT_EQ(action.status, nullptr) << box.id;
        EXPECT_EQ(action.event, box.on_event) << box.id;
        EXPECT_EQ(proc.get()->*box.flag, 1) << box.id;
        proc.get()->*box.flag = 0;
        EXPECT_EQ(flag_words(proc.get()), untouched) << box.id << " wrote another flag";

        // BST_INDETERMINATE (2) and anything else but 1 count as off.
        for (int check : {0, 2, -1}) {
            proc.get()->*box.flag = 1;
            EXPECT_EQ(control_command(proc.get(), box.id, check).event, box.off_event) << box.id << " with " << check;
            EXPECT_EQ(proc.get()->*box.flag, 0) << box.id << " with check " << check;
        }
    }
}

struct expected_window {
    int id;
    int32_t event;
    bool refresh;
    int shown_index;
};

TEST_F(Panel, WindowCommandsInformationWindowsHaltFirstSetupAndAboutDoNot)
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
    for (int32_t run_state : {RUN_HALTED, RUN_RUNNING}) {
        proc.get()->run_state = run_state;
        for (const expected_window &expected : cases) {
            control_action action = control_command(proc.get(), expected.id, 0);
            EXPECT_EQ(action.kind, COMMAND_SHOW_WINDOW) << expected.id;
            EXPECT_EQ(action.status, nullptr) << expected.id;
            EXPECT_EQ(action.event, expected.event) << expected.id;
            EXPECT_EQ(action.refresh, expected.refresh) << expected.id;
            EXPECT_EQ(action.shown_index, expected.shown_index) << expected.id;
        }
    }
}

TEST_F(Panel, WindowCommandsFileMenuAndUnknownIds)
{
    EXPECT_EQ(control_command(proc.get(), IDM_SAVE_CONFIGURATION, 0).kind, COMMAND_SAVE_SETTINGS);
    EXPECT_EQ(control_command(proc.get(), IDM_LOAD_CONFIGURATION, 0).kind, COMMAND_LOAD_SETTINGS);
    EXPECT_EQ(control_command(proc.get(), IDM_QUIT, 0).kind, COMMAND_QUIT);
    // Banners, status line, frames: WM_COMMAND from them does nothing.
    for (int id : {0, IDC_THREAD_BANNER, IDC_LAST_CALL, IDC_STATUS, IDC_LEFT_FRAME, 12, 40014}) {
        std::string before = flag_words(proc.get());
        control_action action = control_command(proc.get(), id, 1);
        EXPECT_EQ(action.kind, COMMAND_NONE) << id;
        EXPECT_EQ(action.event, 0) << id;
        EXPECT_EQ(action.shown_index, SHOWN_NONE) << id;
        EXPECT_EQ(flag_words(proc.get()), before) << id;
    }
}

TEST_F(Panel, ShownIndexEachIndexNamesItsWindow)
{
    // Distinct fake handles, so that a swapped row shows.
    WindowHandle thread_record::*windows[] = {
        &thread_record::about_window, &thread_record::call_count_window, &thread_record::prim_count_window,
        &thread_record::history_select_window, &thread_record::list_select_window, &thread_record::control_window,
        &thread_record::enum_window, &thread_record::break_select_window, &thread_record::skip_select_window,
        &thread_record::trace_select_window, &thread_record::state_select_window, &thread_record::window_info_window,
    };
    const int indices[] = {0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    for (int at = 0; at < 12; ++at)
        record.get()->*windows[at] = (WindowHandle)(uintptr_t)(0x100 + indices[at]);
    for (int index = 0; index < SHOWN_COUNT; ++index) {
        WindowHandle expected = index == 3 ? nullptr : (WindowHandle)(uintptr_t)(0x100 + index);
        EXPECT_EQ(window_of_shown_index(record.get(), index), expected) << index;
    }
    EXPECT_EQ(window_of_shown_index(record.get(), SHOWN_NONE), nullptr);
    EXPECT_EQ(window_of_shown_index(record.get(), SHOWN_COUNT), nullptr);
}

TEST(ReadWholeFile, WholeTextZeroTerminatedOrNullWhenMissing)
{
    std::string path = testing::TempDir() + "panel_read_whole_file.txt";
    std::string content = "glClear(GL_COLOR_BUFFER_BIT);\nglFlush();\n";
    for (int i = 0; i < 200; ++i)
        content += "glVertex3f(" + std::to_string(i) + ", 0, 0);\n";
    for (const std::string &written : {content, std::string()}) {
        std::ofstream(path, std::ios::binary) << written;
        char *text = read_whole_file(path.c_str());
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(std::string(text), written);
        block_free(text);
    }
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

// Texts of state values, enumerant names and pixel formats, compared whole with texts written
// from the rules.

std::string expected_text(const char *name)
{
    std::ifstream file(std::string(QUONDALE_EXPECTED "/") + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The room of master.enumerants: the copied names, then zero rows.
const enumerant_row *enumerant_room()
{
    static enumerant_row room[ENUMERANT_ROWS];
    memcpy(room, enumerant_table, sizeof enumerant_table);
    return room;
}

std::string text_of(const char *prefix, int32_t type, int32_t count, std::initializer_list<float> given)
{
    static float values[STATE_VALUE_COUNT];
    std::fill(values, values + STATE_VALUE_COUNT, 0.0f);
    std::copy(given.begin(), given.end(), values);
    static char out[STATE_TEXT_SIZE];
    state_text(prefix, type, count, values, enumerant_room(), out);
    return out;
}

TEST(StateSaveBlock, MatrixLinesStandUnderTheirPrefix)
{
    static state_values values;
    for (int i = 0; i < 16; ++i)
        values.current[i] = values.default_values[i] = i % 5 == 0 ? 1.0f : 0.0f;
    values.default_values[12] = -2.5f;
    values.default_values[13] = 10.0f;
    values.default_values[14] = 0.25f;
    const state_row row = {1, 0x0BA6, -1, 0, 4, 16, "glGet(GL_MODELVIEW_MATRIX)"};
    char matrix[STATE_SAVE_BLOCK_SIZE], mask_block[STATE_SAVE_BLOCK_SIZE];
    state_save_block(&row, &values, true, enumerant_room(), matrix);
    // Without a usable context the values of the last scan stand under another prefix.
    const state_row mask = {1, 0x0C23, -1, 0, 1, 4, "glGet(GL_COLOR_WRITEMASK)"};
    const float current[4] = {1, 0, 1, 2};
    std::copy(current, current + 4, values.current);
    std::fill(values.default_values, values.default_values + 4, 1.0f);
    state_save_block(&mask, &values, false, enumerant_room(), mask_block);
    EXPECT_EQ(std::string(matrix) + mask_block, expected_text("state_save_blocks.txt"));
}

TEST(StateText, EachValueFollowedByABlankOrInLinesOfFour)
{
    EXPECT_EQ(text_of("", 2, 2, {0x1B02, 0x1B01}), "GL_FILL GL_LINE \r\n");
    // Several names: the first in byte order. No name: four hexadecimal digits at least.
    EXPECT_EQ(text_of("", 2, 5, {0x8074, 0x0BF1, 0, 0x0BF5, NAN}),
              "GL_VERTEX_ARRAY GL_INDEX_LOGIC_OP GL_FALSE 0x0BF5 0x80000000 \r\n");
    EXPECT_EQ(text_of("", 3, 3, {65535, 0x1ABCD, 0x25}), "0xFFFF 0xABCD 0x25 \r\n");
    EXPECT_EQ(text_of("Now: ", 5, 4, {1.5f, -2, 100, 0.00004f}), "Now: 1.5000 -2.0000 100.0000 0.0000 \r\n");
    EXPECT_EQ(text_of("", 5, 0, {1}), "\r\n");
    EXPECT_EQ(text_of("P: ", 6, 8, {255, 0, 1, 0xAA, 0x155, 0x80, 127, 511}), "P: 0xFF 0x0 0x1 0xAA\r\n"
                                                                            "   0x55 0x80 0x7F 0xFF\r\n");
    std::string stipple;
    for (int line = 0; line < 32; ++line)
        stipple += "0x0 0x0 0x0 0x0\r\n";
    EXPECT_EQ(text_of("", 6, 128, {}), stipple);
    EXPECT_EQ(text_of("Default Value: ", 7, 1, {1}), "Default Value: ");
}

TEST(EnumerantNames, FirstRowOfTheValueElseHexadecimalAndTheListRows)
{
    EXPECT_STREQ(enum_name(1, enumerant_room(), ENUMERANT_ROWS), "GL_LINES");
    EXPECT_STREQ(enum_name(0x12345, enumerant_room(), ENUMERANT_ROWS), "0x12345");
    EXPECT_STREQ(enum_name(-1, enumerant_room(), ENUMERANT_ROWS), "0xFFFFFFFF");
    // The walk goes through spare room: a zero row answers for 0, with an empty name.
    const enumerant_row spare[2] = {{5, "GL_FIVE"}, {0, ""}};
    EXPECT_STREQ(enum_name(0, spare, 2), "");
    EXPECT_STREQ(enum_name(0, spare, 1), "0x0000");

    // The list: name, then hexadecimal and decimal of four digits at least.
    char out[ENUM_LIST_TEXT_SIZE];
    enumerant_list_text(&enumerant_table[0], out);
    EXPECT_STREQ(out, "GL_2D - 0x0600, 1536");
    const enumerant_row lines = {1, "GL_LINES"}, abgr = {0x8000, "GL_ABGR_EXT"};
    enumerant_list_text(&lines, out);
    EXPECT_STREQ(out, "GL_LINES - 0x0001, 0001");
    enumerant_list_text(&abgr, out);
    EXPECT_STREQ(out, "GL_ABGR_EXT - 0x8000, 32768");
}

// A context's pixel format in its two texts: the history's GLX-style line and the window's lines.
per_gl &format(int32_t handle, uint8_t double_buffer, int32_t pixel_type, std::initializer_list<int32_t> color,
               std::initializer_list<int32_t> accum, int32_t index, int32_t stencil, int32_t depth)
{
    static per_gl gl;
    gl.handle = handle;
    gl.direct_render = 0;
    gl.double_buffer = double_buffer;
    gl.stereo = 0;
    gl.aux_buffers = 0;
    gl.pixel_type = pixel_type;
    std::copy(color.begin(), color.end(), gl.color_bits);
    std::copy(accum.begin(), accum.end(), gl.accum_bits);
    gl.index_bits = index;
    gl.stencil_bits = stencil;
    gl.depth_bits = depth;
    return gl;
}

// The history's line then the window's lines of each format, as one text.
TEST(PixelFormatTexts, EveryBufferInItsPlaceAndAccumulationForRgbaOnly)
{
    std::string text;
    auto add = [&](const per_gl &gl) {
        char visual[VISUAL_INFO_SIZE];
        static char window[WINDOW_INFO_TEXT_SIZE];
        visual_info_text(&gl, visual);
        window_info_text(&gl, window);
        text += std::string(visual) + "\n" + window + "\n";
    };
    add(format(1, 1, GL_RGBA, {8, 8, 8, 0}, {0, 0, 0, 0}, 0, 0, 24));
    // An accumulation buffer with alpha bits alone still has its line.
    per_gl &gl = format(1, 0, GL_RGBA, {5, 6, 5, 8}, {0, 0, 0, 16}, 0, 8, 16);
    gl.stereo = 1;
    gl.aux_buffers = 2;
    add(gl);
    add(format(1, 0, GL_COLOR_INDEX, {0, 0, 0, 0}, {8, 8, 8, 8}, 8, 0, 0));
    EXPECT_EQ(text, expected_text("pixel_formats.txt"));

    char window[WINDOW_INFO_TEXT_SIZE];
    window_info_text(&format(0, 0, GL_RGBA, {8, 8, 8, 8}, {0, 0, 0, 0}, 0, 0, 0), window);
    EXPECT_STREQ(window, ""); // no context
}

} // namespace
