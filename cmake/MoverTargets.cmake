# SPDX-License-Identifier: MIT
# How this project declares a folder's library, and how every target is compiled.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(mover_options INTERFACE)
add_library(mover::options ALIAS mover_options)
target_include_directories(mover_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_definitions(mover_options INTERFACE QT_NO_CAST_TO_ASCII QT_DEPRECATED_WARNINGS)
if(MSVC)
    target_compile_options(mover_options INTERFACE /W4 /utf-8 /permissive- $<$<BOOL:${MOVER_WERROR}>:/WX>)
    # getenv() and the like stay: what is offered instead is not portable.
    target_compile_definitions(mover_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(mover_options INTERFACE -Wall -Wextra -Wpedantic $<$<BOOL:${MOVER_WERROR}>:-Werror>
        # Qt's qCDebug() gives a variadic macro no argument, which only clang minds.
        $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-gnu-zero-variadic-macro-arguments>)
endif()
# A test's own lines are not counted, and only its addresses are watched: that takes a third off the time to build them.
set(test $<BOOL:$<TARGET_PROPERTY:MOVER_TEST>>)
if(MOVER_SANITIZE)
    # The first finding ends the process, so that a test cannot pass over it.
    set(flags -fsanitize=${MOVER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    # The instrumentation makes GCC see uses of uninitialised variables where there are none.
    target_compile_options(mover_options INTERFACE ${flags} $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    if(MOVER_SANITIZE MATCHES undefined)
        target_compile_options(mover_options INTERFACE $<${test}:-fno-sanitize=undefined>)
    endif()
    target_compile_definitions(mover_options INTERFACE $<${test}:MOVER_SANITIZED>)
    target_link_options(mover_options INTERFACE ${flags})
endif()
if(MOVER_COVERAGE)
    # Atomic: a worker thread counts too.
    target_compile_options(mover_options INTERFACE $<$<NOT:${test}>:--coverage> $<$<NOT:${test}>:-fprofile-update=atomic>)
    target_link_options(mover_options INTERFACE --coverage)
endif()

# mover_build_tool(NAME SOURCE ... LIBRARIES ...): a program that runs during the build, so that it is never built with the
# sanitizers of the program. A cross build takes it from a build tree for the machine that builds (MOVER_HOST_BUILD).
function(mover_build_tool name)
    cmake_parse_arguments(arg "" "SOURCE" "LIBRARIES" ${ARGN})
    if(CMAKE_CROSSCOMPILING)
        file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
        add_executable(${name} IMPORTED GLOBAL)
        set_target_properties(${name} PROPERTIES IMPORTED_LOCATION ${MOVER_HOST_BUILD}/${folder}/${name})
    else()
        add_executable(${name} ${arg_SOURCE})
        target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    endif()
endfunction()

# mover_library(NAME SOURCES ... [DEPENDS ...]): the static library of one folder, reached as mover::NAME.
# A folder's forms are found beside the class of the same name.
function(mover_library name)
    cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(mover_${name} STATIC ${arg_SOURCES})
    add_library(mover::${name} ALIAS mover_${name})
    set_target_properties(mover_${name} PROPERTIES AUTOMOC ON AUTOUIC ON)
    target_link_libraries(mover_${name} PUBLIC mover::options ${arg_DEPENDS})
endfunction()
