# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# The header-only libraries that the programs around the library use: asio, CLI11 and nlohmann's JSON.
# They do not depend on the machine, so a cross build takes them from the host - through a directory that
# holds them alone, because the host's include directory as a whole would hide the target's C library.

set(VYM_TOOL_HEADERS asio asio.hpp CLI nlohmann)

# A cross compiler's own search would be confined to the target's files.
macro(vym_find_tool_headers)
    foreach(entry IN LISTS VYM_TOOL_HEADERS)
        find_path(VYM_HEADER_${entry} ${entry} PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH)
        mark_as_advanced(VYM_HEADER_${entry})
    endforeach()
endmacro()

function(vym_have_tool_headers result)
    vym_find_tool_headers()
    set(${result} ON PARENT_SCOPE)
    foreach(entry IN LISTS VYM_TOOL_HEADERS)
        if(NOT VYM_HEADER_${entry})
            set(${result} OFF PARENT_SCOPE)
        endif()
    endforeach()
endfunction()

# Makes them includable for the directories that are added from here on.
macro(vym_use_tool_headers)
    vym_find_tool_headers()
    foreach(entry IN LISTS VYM_TOOL_HEADERS)
        if(NOT VYM_HEADER_${entry})
            message(FATAL_ERROR "The header '${entry}' is missing. Run scripts/install-packages demo, or "
                "configure with -DVYM_BUILD_SIM=OFF -DVYM_BUILD_TOOLS=OFF -DBUILD_TESTING=OFF to build the "
                "library alone.")
        endif()
        file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/tool-headers")
        file(CREATE_LINK "${VYM_HEADER_${entry}}/${entry}" "${PROJECT_BINARY_DIR}/tool-headers/${entry}"
            SYMBOLIC)
    endforeach()
    include_directories(SYSTEM "${PROJECT_BINARY_DIR}/tool-headers")
endmacro()
