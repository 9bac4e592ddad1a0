# SPDX-License-Identifier: MIT
# Runs PROGRAM, by the EMULATOR if there is one, with the wrong SCENARIO: it has to end with code 2 and one line that says where and what.
set(ENV{MOVER_SCENARIO} ${SCENARIO})
execute_process(COMMAND ${EMULATOR} ${PROGRAM} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE error)
if(NOT code EQUAL 2)
    message(FATAL_ERROR "ended with ${code} instead of 2")
endif()
if(NOT output STREQUAL "")
    message(FATAL_ERROR "went on after the error: ${output}")
endif()
string(REPLACE "\r\n" "\n" error "${error}")
if(NOT error STREQUAL "${SCENARIO}:3: the controller lacks \"axes\"\n")
    message(FATAL_ERROR "said: ${error}")
endif()
