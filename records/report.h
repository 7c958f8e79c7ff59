// The fatal report: a failure of memory or of a needed file ends the session's process.
#pragma once

// Shows the formatted message in a stop box titled "<source>, line <line>." and returns; the
// caller then ends the process with session_exit(1). With QUONDALE_FATAL_TO_STDERR set to 1 the
// box becomes one line on standard error, so that tests can run without anyone to press OK.
void fatal_report(const char *source, int line, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

// A warning that lets the program go on: the same box, shown by a thread of its own so that
// nobody waits for its OK, or the same line on standard error.
void warning_report(const char *source, int line, const char *format, ...) __attribute__((format(printf, 3, 4)));

[[noreturn]] void session_exit(int code);
