// For programs that test something other than the panel: a debugged thread halts at its first
// GL call and waits for the user. This presses Continue on the control window of the process
// the first time it says "Halted", from a thread of its own, and leaves the panel alone after.
#pragma once

void continue_first_halts();
