# SPDX-License-Identifier: MIT
# The functions of the motion library, as its C header declares them: for whatever the build writes from that list.

set(MOVER_LIBRARY_HEADER ${CMAKE_SOURCE_DIR}/device/moverLibrary.h)

# mover_functions(NAMES [DECLARATIONS]): a list of names, and one of declarations "TYPE NAME(ARGUMENTS)" in the same
# order. CMake runs again when the header changes.
function(mover_functions namesVariable)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${MOVER_LIBRARY_HEADER})
    file(STRINGS ${MOVER_LIBRARY_HEADER} lines REGEX "^MOVER_API ")
    set(names "")
    set(declarations "")
    foreach(line IN LISTS lines)
        if(NOT line MATCHES "^MOVER_API ([a-z]+ ([A-Za-z]+)\\(.*\\))[^)]*$")
            message(FATAL_ERROR "Not a declaration on one line: ${line}")
        endif()
        list(APPEND declarations "${CMAKE_MATCH_1}")
        list(APPEND names "${CMAKE_MATCH_2}")
    endforeach()
    set(${namesVariable} "${names}" PARENT_SCOPE)
    if(ARGC GREATER 1)
        set(${ARGV1} "${declarations}" PARENT_SCOPE)
    endif()
endfunction()
