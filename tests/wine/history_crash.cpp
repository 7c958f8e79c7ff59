// A program that crashes under the debugger leaves its history complete up to the call that
// crashed: the lines still on their way to the file are written when the fault is seen.
#include "tests/wine/harness.h"

enum : int { CALLS = 1000 };

// The fault ends the process at once with its code, with no debugger brought up for it.
static LONG WINAPI end_at_fault(EXCEPTION_POINTERS *exception)
{
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

static void fault()
{
    volatile int *nowhere = nullptr;
    *nowhere = 1;
}

static int child()
{
    SetUnhandledExceptionFilter(end_at_fault);
    write_fact("thread", GetCurrentThreadId());
    continue_first_halt();
    gl_window window = open_gl_window(128, 16);
    write_fact("context", (uint32_t)(uintptr_t)window.context);
    for (int i = 0; i < CALLS; ++i)
        glClearStencil(i);
    fault();
    return child_end();
}

int main(int argc, char **argv)
{
    if (argc > 1 && !strcmp(argv[1], "fault")) {
        SetUnhandledExceptionFilter(end_at_fault);
        fault();
    }
    if (is_child(argc, argv))
        return child();
    // The same fault without the debugger gives the code to expect: qemu-i386 reports a write to
    // address 0 as an illegal instruction.
    DWORD plain = (DWORD)run_self(false, "fault");
    check(plain == EXCEPTION_ACCESS_VIOLATION || plain == EXCEPTION_ILLEGAL_INSTRUCTION,
          "the fault without the debugger ended with 0x%lX", (unsigned long)plain);
    child_run run = run_child("crash");
    check(!run.timed_out && run.exit_code == plain, "the child ended with 0x%lX, expected 0x%lX as without the "
          "debugger", (unsigned long)run.exit_code, (unsigned long)plain);
    std::string expected = "glsBeginGLS(1, 0);\n" + first_sight(128, 16);
    for (int i = 0; i < CALLS; ++i)
        expected += "glClearStencil(" + std::to_string(i) + ");\n";
    std::string file = session_directory(run.temp, (DWORD)fact(run, "thread")) + "\\history\\" +
                       std::to_string((int)(uint32_t)fact(run, "context")) + ".gls";
    check_text("the crashed program's history", without_visual_info(read_file(file)), on_disk(expected));
    clean_up(run);
    return finish("history_crash");
}
