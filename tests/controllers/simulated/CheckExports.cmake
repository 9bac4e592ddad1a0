# SPDX-License-Identifier: MIT
# Compares what LIBRARY exports, as NM lists it, or OBJDUMP for a DLL, with the functions that HEADER declares. The
# mark and the ways to messages and reports are data, not functions; objdump does not tell the difference.
if(LIBRARY MATCHES "\\.dll$")
    execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "^.*\\[Ordinal/Name Pointer\\] Table" "" exported "${exported}")
    string(REGEX MATCHALL "\t\\[ *[0-9]+\\] [A-Za-z]+" exported "${exported}")
    list(TRANSFORM exported REPLACE "^.* ([A-Za-z]+)$" "\\1 D ")
else()
    execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
        OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]+" exported "${exported}")
endif()
list(REMOVE_ITEM exported "")
list(FILTER exported EXCLUDE REGEX "^moverLibrary(Mark|Messages|Reports|SetUp) [RD] ")
list(TRANSFORM exported REPLACE " .*$" "")
list(SORT exported)

file(READ ${HEADER} text)
string(REGEX MATCHALL "MOVER_API [a-z]+ [A-Za-z]+\\(" declared "${text}")
list(TRANSFORM declared REPLACE "^MOVER_API [a-z]+ ([A-Za-z]+)\\($" "\\1")
list(SORT declared)

list(LENGTH declared count)
if(NOT count EQUAL 71)
    message(FATAL_ERROR "the header declares ${count} functions instead of 71")
endif()
if(NOT exported STREQUAL declared)
    message(FATAL_ERROR "exported: ${exported}\ndeclared: ${declared}")
endif()
