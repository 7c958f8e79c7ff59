# The history that player_sample kept, played natively (EGL on Mesa, no display): its third frame,
# read back raw, is byte for byte the frame the sample drew under Wine. Its report with the page of
# frame 3's draws lists them as DRAWS does, and the last draw's picture is the frame's own.
#   PLAYER   the native build's quondale_player
#   KEPT     player_sample's folder: spinning_cube.gls and frame.rgb
#   DRAWS    frame 3's draws, a line each: number, call, line in the history
if(NOT EXISTS ${PLAYER})
  message(FATAL_ERROR "FAIL: no native player at ${PLAYER}: ./quondale build makes it")
endif()
file(REMOVE_RECURSE ${KEPT}/native ${KEPT}/draws)
execute_process(COMMAND ${PLAYER} play ${KEPT}/spinning_cube.gls --out ${KEPT}/native --frames 1-3 --raw
  RESULT_VARIABLE exit_code ERROR_VARIABLE errors)
if(NOT exit_code EQUAL 0)
  message(FATAL_ERROR "FAIL: the native player ended with ${exit_code}:\n${errors}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${KEPT}/native/frame-0003.rgb ${KEPT}/frame.rgb
  RESULT_VARIABLE differ)
if(NOT differ EQUAL 0)
  message(FATAL_ERROR "FAIL: the native player's frame 3 differs from the one the sample drew")
endif()
execute_process(COMMAND ${PLAYER} report ${KEPT}/spinning_cube.gls --out ${KEPT}/draws/3 --draws 3
  RESULT_VARIABLE exit_code OUTPUT_QUIET ERROR_VARIABLE errors)
if(NOT exit_code EQUAL 0)
  message(FATAL_ERROR "FAIL: report --draws 3 ended with ${exit_code}:\n${errors}")
endif()
file(READ ${KEPT}/draws/3/frame-0003-draws.html page)
# A list's items part at semicolons: the calls' own are put back at the end.
string(REPLACE ";" "@semicolon@" page "${page}")
string(REGEX MATCHALL "<td>[0-9]+</td><td class=\"call\">[^<]*<br><small>line [0-9]+" rows "${page}")
set(listed "")
foreach(row IN LISTS rows)
  string(REGEX REPLACE "<td>([0-9]+)</td><td class=\"call\">([^<]*)<br><small>(line [0-9]+)" "\\1 \\2 \\3\n" row "${row}")
  string(APPEND listed "${row}")
endforeach()
string(REPLACE "@semicolon@" ";" listed "${listed}")
file(READ ${DRAWS} expected)
if(NOT listed STREQUAL expected)
  message(FATAL_ERROR "FAIL: frame 3's draws are\n${listed}expected\n${expected}")
endif()
file(READ ${KEPT}/draws/3/report.html report)
if(NOT report MATCHES "<a href=\"frame-0003-draws.html\">draws</a>")
  message(FATAL_ERROR "FAIL: the report's row of frame 3 does not link to its draws")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${KEPT}/draws/3/frame-0003-draw-004.png ${KEPT}/native/frame-0003.png
  RESULT_VARIABLE differ)
if(NOT differ EQUAL 0 OR NOT EXISTS ${KEPT}/draws/3/frame-0003-draw-004-small.png)
  message(FATAL_ERROR "FAIL: the picture of frame 3's last draw is not the frame's own")
endif()
message(STATUS "frame 3 played natively as the sample drew it under Wine, and its draws one by one")
