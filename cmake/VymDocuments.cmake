# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# What the programs write about themselves: man pages, completions, the plug-in for Wireshark. A program for
# another machine can be asked only through an emulator; without one they are left out.

# The day of the release, which man pages show: the same whenever they are written.
set(VYM_RELEASE_EPOCH 1795305600)

if((CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR) OR VYM_SANITIZE)
    set(VYM_CAN_ASK_PROGRAMS OFF)
else()
    set(VYM_CAN_ASK_PROGRAMS ON)
endif()

find_program(VYM_HELP2MAN help2man)
mark_as_advanced(VYM_HELP2MAN)

# vym_man_page(<program> <what it is>): made from --help and --version, where help2man is there.
function(vym_man_page program summary)
    if(NOT VYM_CAN_ASK_PROGRAMS OR NOT VYM_HELP2MAN)
        message(STATUS "No man page of ${program}: it needs help2man, and a program that can be run here")
        return()
    endif()
    # help2man runs a program by its bare name.
    set(runner "${CMAKE_CURRENT_BINARY_DIR}/help/${program}")
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    file(GENERATE OUTPUT "${runner}" CONTENT "#!/bin/sh\nexec ${emulator} '$<TARGET_FILE:${program}>' \"$@\"\n"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set(page "${CMAKE_CURRENT_BINARY_DIR}/${program}.1")
    add_custom_command(OUTPUT "${page}" DEPENDS ${program} VERBATIM
        COMMAND "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=${VYM_RELEASE_EPOCH} TZ=UTC "${VYM_HELP2MAN}"
            --no-info "--name=${summary}" "--source=vym ${PROJECT_VERSION}" "--version-string=${PROJECT_VERSION}"
            "--output=${page}" "${runner}")
    add_custom_target(${program}_man_page ALL DEPENDS "${page}")
    install(FILES "${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
endfunction()
