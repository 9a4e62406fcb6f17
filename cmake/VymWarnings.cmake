# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

# Warnings. The library is held to the strict list; programs around it, which use other people's templates
# and macros, to the same list without what those trip over.

set(VYM_COMMON_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wundef -Wvla)
set(VYM_CXX_WARNINGS -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi)
set(VYM_C_WARNINGS -Wstrict-prototypes -Wmissing-prototypes)
set(VYM_GNU_WARNINGS -Wlogical-op -Wduplicated-cond -Wduplicated-branches)
set(VYM_STRICT_WARNINGS -Wcast-qual)
set(VYM_STRICT_CXX_WARNINGS -Wold-style-cast)

function(vym_warnings target)
    target_compile_options(${target} PRIVATE ${VYM_COMMON_WARNINGS}
        $<$<COMPILE_LANGUAGE:CXX>:${VYM_CXX_WARNINGS}>
        $<$<COMPILE_LANGUAGE:C>:${VYM_C_WARNINGS}>
        $<$<CXX_COMPILER_ID:GNU>:${VYM_GNU_WARNINGS}>
        $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
endfunction()

function(vym_strict_warnings target)
    vym_warnings(${target})
    target_compile_options(${target} PRIVATE ${VYM_STRICT_WARNINGS}
        $<$<COMPILE_LANGUAGE:CXX>:${VYM_STRICT_CXX_WARNINGS}>)
endfunction()
