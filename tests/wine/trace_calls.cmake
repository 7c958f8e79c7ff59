# Runs a test program twice under Wine's opengl32 trace, first with the system's opengl32 and then
# through quondale.dll, and checks which calls the real library received.
#   EMULATOR, PROGRAM         the runner and the program
#   SYSTEM_SEES               regex the trace must match without the debugger: proves the trace
#                             shows the call at all, so that its absence below means something
#   DEBUGGER_SEES             regex the trace must match through the debugger
#   DEBUGGER_NEVER            regex the trace must not match through the debugger

function(run_traced mode trace_variable)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env WINEDEBUG=trace+opengl QUONDALE_GL=${mode}
            ${EMULATOR} ${PROGRAM} --expect ${mode}
    RESULT_VARIABLE exit_code
    OUTPUT_VARIABLE output
    ERROR_VARIABLE trace)
  if(NOT exit_code EQUAL 0)
    # The program's own reports sit among the trace lines.
    string(REGEX MATCHALL "[^\n]*FAIL[^\n]*" reports "${output}${trace}")
    list(JOIN reports "\n" reports)
    message(FATAL_ERROR "FAIL: ${PROGRAM} --expect ${mode} exited with ${exit_code}\n${output}${reports}")
  endif()
  set(${trace_variable} "${trace}" PARENT_SCOPE)
endfunction()

run_traced(system system_trace)
if(NOT system_trace MATCHES "${SYSTEM_SEES}")
  message(FATAL_ERROR "FAIL: without the debugger the trace lacks '${SYSTEM_SEES}'; is Wine's opengl32 trace working?")
endif()

run_traced(debugger debugger_trace)
if(NOT debugger_trace MATCHES "${DEBUGGER_SEES}")
  message(FATAL_ERROR "FAIL: through quondale.dll the real library never saw '${DEBUGGER_SEES}'")
endif()
if(DEBUGGER_NEVER AND debugger_trace MATCHES "${DEBUGGER_NEVER}")
  message(FATAL_ERROR "FAIL: through quondale.dll the real library saw '${CMAKE_MATCH_0}'")
endif()
message(STATUS "trace as expected: '${SYSTEM_SEES}' without the debugger, '${DEBUGGER_SEES}' through it")
