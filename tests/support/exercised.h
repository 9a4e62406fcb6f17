// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Which of the library's functions a test program exercises, so that one without a test is noticed.
#ifndef VYM_TESTS_SUPPORT_EXERCISED_H
#define VYM_TESTS_SUPPORT_EXERCISED_H

#include <set>
#include <string>

/**
 * A function (or variable) of the library, noted as exercised in this program: CALL(vym_hfp_dial)(...).
 * The note is made when the program is built, whichever of its tests run; so it must not stand in a
 * function that is inline or a template.
 */
#define CALL(name)                                                                                     \
    ([] {                                                                                              \
        [[gnu::section("exercised"), gnu::used]] static const char* const exercised = #name;           \
        return &::name;                                                                                \
    }())

/** Where the linker puts the notes of CALL. */
extern const char* const first_exercised[] asm("__start_exercised");
extern const char* const end_of_exercised[] asm("__stop_exercised");

namespace support {

/** What the library exports, as the linker's map of symbols lists it. */
std::set<std::string> ExportedNames(const std::string& map);

/** What is exported and has no CALL among these, or the other way round, fails the test. */
void ExpectEveryExportExercised(const std::string& map, const std::set<std::string>& exercised);

} // namespace support

#endif
