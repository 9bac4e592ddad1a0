# SPDX-License-Identifier: MIT
# The JSON library: headers alone, the same for every system. A cross build takes those of the machine that builds, without
# the other headers of their folder.
if(NOT CMAKE_CROSSCOMPILING)
    find_package(nlohmann_json ${nlohmann_json_FIND_VERSION} CONFIG)
    return()
endif()

find_path(MOVER_JSON nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(nlohmann_json REQUIRED_VARS MOVER_JSON)
if(nlohmann_json_FOUND AND NOT TARGET nlohmann_json::nlohmann_json)
    set(folder ${CMAKE_BINARY_DIR}/json)
    file(MAKE_DIRECTORY ${folder})
    file(CREATE_LINK ${MOVER_JSON}/nlohmann ${folder}/nlohmann SYMBOLIC)
    add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
    target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${folder})
endif()
