// The settings file. Saved at a halt, it has 1,393 lines: the switches, then a row for each GL
// function in each of the three sections. Read at the start from the current directory, a file
// that traces glClear alone leaves a history without the program's other calls, and its
// "History: 0" takes the box off while the recording goes on. A file whose first word is wrong
// gets the warning box.
#include "tests/wine/harness.h"

#include "panel/resource.h"

#include <regex>

static std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

static void save_scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClearColor(0, 0, 0, 1);");
    post_command(control, IDM_SAVE_CONFIGURATION);
    std::vector<std::string> lines = lines_of(save_as(temp_path("saved.cfg")));
    check(lines.size() == 1393, "%d lines saved, expected 1393", (int)lines.size());
    if (lines.size() == 1393) {
        std::string head;
        for (int i = 0; i < 12; ++i)
            head += lines[i] + "\n";
        check_text("the saved head", head,
                   "quondale\nCheck_for_GL_error: 0\nControl_draw: 0\nHistory: 1\nBreak_on_GL_calls: 0\n"
                   "Break_on_SwapBuffers: 0\nSkip_GL_calls: 0\nCall_Count_Show: NON_ZERO\n"
                   "State_Show_NonDefault: 1\nState_Show_SnapDiff: 0\nCONFIGURATION_break_GL_select\n"
                   "glAccum: 0 0 0 0\n");
        check_text("line 472", lines[471], "CONFIGURATION_history_select");
        check_text("line 933", lines[932], "CONFIGURATION_skip_GL_select");
        // No list box was shown: no function is selected in any, and no set was remembered.
        int rows = 0;
        for (const std::string &line : lines)
            rows += std::regex_match(line, std::regex("gl\\w+: 0 0 0 0"));
        check(rows == 3 * 460, "%d rows of the form \"glName: 0 0 0 0\", expected 1380", rows);
    }
    driver_done();
    click(control, IDC_CONTINUE);
}

static void load_scenario()
{
    HWND control = control_window();
    expect_halt_at(control, "glClearColor(0, 0, 0, 1);");
    check(checked(control, IDC_HISTORY) == BST_UNCHECKED, "the History box is on after a file that said 0");
    driver_done();
    click(control, IDC_CONTINUE);
}

static void bad_word_scenario()
{
    HWND box = find_dialog("Warning");
    if (!box)
        give_up("no warning for the file's first word");
    check_text("the warning", control_text(box, 0xFFFF), "quondale.cfg is not valid.");
    click(box, IDOK);
    HWND control = control_window();
    expect_halt_at(control, "glClearColor(0, 0, 0, 1);");
    driver_done();
    click(control, IDC_CONTINUE);
}

static int child(const char *run)
{
    write_fact("thread", GetCurrentThreadId());
    if (!strcmp(run, "junk"))
        continue_first_halt();
    else
        start_driver(!strcmp(run, "save") ? save_scenario : !strcmp(run, "load") ? load_scenario : bad_word_scenario);
    gl_window window = open_gl_window(128, 32);
    write_fact("context", (uint32_t)(uintptr_t)window.context);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glFlush();
    close_gl_window(&window);
    return child_end();
}

int main(int argc, char **argv)
{
    if (is_child(argc, argv))
        return child(argc > 2 ? argv[2] : "");
    child_run saved = run_child("settings_save", "save");
    expect_end(saved);
    std::string file = read_file(saved.temp + "\\saved.cfg");
    clean_up(saved);
    if (file.empty())
        return finish("panel_settings");

    // The same file with the trace section holding glClear alone, and History off.
    size_t trace = file.find("CONFIGURATION_history_select");
    size_t row = file.find("glClear: 0 0 0 0", trace);
    check(trace != std::string::npos && row != std::string::npos, "no glClear row in the trace section");
    if (row != std::string::npos)
        file.replace(row, 16, "glClear: 1 0 0 0");
    file.replace(file.find("History: 1"), 10, "History: 0");
    child_settings(file);
    child_run loaded = run_child("settings_load", "load");
    expect_end(loaded);
    std::string history = read_file(session_directory(loaded.temp, (DWORD)fact(loaded, "thread")) + "\\history\\" +
                                    std::to_string((int)(uint32_t)fact(loaded, "context")) + ".gls");
    check_text("the history traced by the file", without_visual_info(history),
               on_disk("glsBeginGLS(1, 0);\n" + first_sight(128, 32) +
                       "glClear(GL_COLOR_BUFFER_BIT);\n"
                       "glsString(\"Info\", \"wglMakeCurrent\");\n"
                       "glsEndGLS();\n"));
    clean_up(loaded);

    child_settings("settings\nCheck_for_GL_error: 1\n");
    child_run bad = run_child("settings_bad", "bad");
    expect_end(bad);
    clean_up(bad);

    // A right first word and rubbish behind it: a line of 10,000 characters, numbers out of
    // range, binary bytes, a file that ends in the middle. It loads without a word, and the
    // program runs to its own end.
    std::string junk = "quondale\nCheck_for_GL_error: 99999999999\n" + std::string(10000, 'x') + "\n";
    for (int i = 0; i < 256; ++i)
        junk += (char)i;
    child_settings(junk + "\nCONFIGURATION_break_GL_select\nglAccum: 1 2");
    child_run rubbish = run_child("settings_junk", "junk");
    expect_end(rubbish);
    clean_up(rubbish);
    return finish("panel_settings");
}
