# SPDX-License-Identifier: MIT
# The catalogue check lets a finished catalogue pass and stops each kind of unfinished one.

function(expect outcome attribute)
    file(WRITE ${FOLDER}/catalogueCheck.ts "<TS version=\"2.1\"><context><name>C</name><message><source>确认</source>"
        "<translation${attribute}>OK</translation></message></context></TS>\n")
    execute_process(COMMAND ${CMAKE_COMMAND} -DCATALOGUE=${FOLDER}/catalogueCheck.ts -P ${CHECK}
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
    if(result EQUAL 0)
        set(seen passes)
    else()
        set(seen fails)
    endif()
    if(NOT seen STREQUAL outcome)
        message(FATAL_ERROR "a catalogue with <translation${attribute}> ${seen}")
    endif()
endfunction()

expect(passes "")
expect(fails " type=\"unfinished\"")
expect(fails " type=\"vanished\"")
expect(fails " type=\"obsolete\"")
