# The history that player_sample kept, played natively (EGL on Mesa, no display): its third frame,
# read back raw, is byte for byte the frame the sample drew under Wine.
#   PLAYER   the native build's quondale_player
#   KEPT     player_sample's folder: spinning_cube.gls and frame.rgb
if(NOT EXISTS ${PLAYER})
  message(FATAL_ERROR "FAIL: no native player at ${PLAYER}: ./quondale build makes it")
endif()
file(REMOVE_RECURSE ${KEPT}/native)
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
message(STATUS "frame 3 played natively as the sample drew it under Wine")
