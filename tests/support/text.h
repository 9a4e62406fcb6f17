// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_TEXT_H
#define VYM_TESTS_SUPPORT_TEXT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/** An event as the server writes it: the text and its NUL. */
std::string Event(std::string_view text);

/** Bytes from numbers, for payloads that are no text: Bytes({0xDC, 0xDD}). */
std::string Bytes(const std::vector<int>& values);

/** Printable form: CR, LF, NUL and other bytes that cannot be seen become \r, \n, \0, \xHH. */
std::string Escaped(std::string_view bytes);

/** Success when equal; otherwise expected, received and the place where they part. */
::testing::AssertionResult SameBytes(std::string_view expected, std::string_view received);

/** The lines of `text` without their line ends (LF or CR LF). */
std::vector<std::string> Lines(const std::string& text);

/** The lines of `text` that contain `part`. */
std::vector<std::string> LinesWith(const std::string& text, std::string_view part);

/**
 * The part of `text` that fits the extended regular expression and its groups; empty when nothing does.
 * POSIX's, because compilers warn of the standard library's own code for std::regex under sanitizers.
 */
std::vector<std::string> Match(const std::string& text, const std::string& expression);

/** Whether the whole text fits. */
::testing::AssertionResult Fits(const std::string& text, const std::string& expression);

/** Whether a part of the text fits. */
::testing::AssertionResult HasPart(const std::string& text, const std::string& expression);

} // namespace support

#endif
