# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Sanitizers and coverage work only when everything is built with them, GoogleTest included, so they are set
# for the whole tree.

function(vym_enable_sanitizers)
    if(VYM_SANITIZE)
        set(flags -fsanitize=${VYM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        # Without optimisation, and with line numbers only: compiling takes half the time.
        set_property(DIRECTORY APPEND PROPERTY COMPILE_OPTIONS ${flags} -g1)
        if(VYM_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # asio has fences, which this sanitizer does not see, beside the locks, which it does.
            set_property(DIRECTORY APPEND PROPERTY COMPILE_OPTIONS -Wno-tsan)
        endif()
        set_property(DIRECTORY APPEND PROPERTY LINK_OPTIONS ${flags})
    endif()
    if(VYM_FUZZ)
        # What the fuzzer learns from; the fuzzer itself is linked into its targets only.
        set_property(DIRECTORY APPEND PROPERTY COMPILE_OPTIONS -fsanitize=fuzzer-no-link)
    endif()
    if(VYM_COVERAGE)
        set_property(DIRECTORY APPEND PROPERTY COMPILE_OPTIONS --coverage -fprofile-update=atomic)
        set_property(DIRECTORY APPEND PROPERTY LINK_OPTIONS --coverage)
    endif()
endfunction()
