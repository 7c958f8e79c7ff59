// The sample program, run under the debugger for one frame with Continue pressed at its first
// call (by tools/panel_press), leaves the history that expected/spinning_cube.gls holds, line for
// line.
#include "tests/wine/harness.h"

#include <regex>

// Addresses of output arguments differ from run to run; the rest is the same every time.
static std::string without_addresses(const std::string &text)
{
    return std::regex_replace(text, std::regex("0x[0-9A-F]{5,}"), "0xADDRESS");
}

int main()
{
    std::string temp = child_temp("sample");
    sample_run run = run_sample(temp, "--frames 1");
    check(run.files.size() == 2, "%d history files, expected 0.gls and the context's", (int)run.files.size());
    for (const std::string &name : run.files) {
        std::string expected_name = name == "0.gls" ? "spinning_cube_0.gls" : "spinning_cube.gls";
        std::string expected = read_file(program_folder() + "expected\\" + expected_name);
        check(!expected.empty(), "no %s", expected_name.c_str());
        check_text(name.c_str(), without_addresses(without_visual_info(read_file(run.history_folder + name))),
                   on_disk(expected));
    }
    clean_up(child_run{temp, 0, false, "", "", ""});
    return finish("sample_history");
}
