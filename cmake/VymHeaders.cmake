# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Which headers of vym/ an application gets: all of them but these. This is the one list.

# By name: what only the library's own sources use.
set(VYM_PRIVATE_HEADERS
    vym_command.h
    vym_delegate.h
    vym_event_table.h
    vym_field_reader.h
    vym_os.h
    vym_rfcomm_ipc.h
    vym_thread.h
    vym_wire.h)
# By pattern: what a profile's files share with each other.
set(VYM_PRIVATE_HEADER_PATTERNS "_impl\\.h$" "_event\\.h$")

# Sets `public` to the names of the headers in `dir` that are installed, `private` to the others.
function(vym_list_headers dir public private)
    file(GLOB headers CONFIGURE_DEPENDS RELATIVE "${dir}" "${dir}/*.h")
    set(inside ${headers})
    list(REMOVE_ITEM headers ${VYM_PRIVATE_HEADERS})
    foreach(pattern IN LISTS VYM_PRIVATE_HEADER_PATTERNS)
        list(FILTER headers EXCLUDE REGEX "${pattern}")
    endforeach()
    list(REMOVE_ITEM inside ${headers})
    set(${public} ${headers} PARENT_SCOPE)
    set(${private} ${inside} PARENT_SCOPE)
endfunction()
