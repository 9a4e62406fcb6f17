// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The numbers of the capture format, btsnoop, and how the library puts its text into it.
#ifndef VYM_CAPTURE_FORMAT_H
#define VYM_CAPTURE_FORMAT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace capture {

// "btsnoop", NUL, version 1, datalink 1002: HCI packets with their type byte.
inline constexpr std::string_view kFileHeader("btsnoop\0\0\0\0\1\0\0\x03\xEA", 16);
inline constexpr size_t kRecordHeader = 24;
/// The type byte and the longest packet of any type.
inline constexpr uint32_t kLongestPacket = 1 + 4 + 0xFFFF;
/// Microseconds from the beginning of year 0 to 1970.
inline constexpr uint64_t kEpoch1970Us = 0x00DCDDB30F2F8000;

/// The library cuts text into pieces of this size.
inline constexpr size_t kPiece = 255;
/// What stands before the byte that counts a piece.
inline constexpr std::string_view kVendorCommand("\x01\x01\xFC", 3);
inline constexpr std::string_view kVendorEvent("\x04\xFF", 2);
inline constexpr uint32_t kCommandFlags = 2;
inline constexpr uint32_t kEventFlags = 3;

constexpr bool begins_with(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

} // namespace capture

#endif
