// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_CAPTURE_READER_H
#define VYM_TESTS_SUPPORT_CAPTURE_READER_H

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/** One record of a btsnoop file. */
struct CaptureRecord {
    uint32_t original_length;
    uint32_t included_length;
    uint32_t flags;
    uint32_t drops;
    uint64_t timestamp;
    /** The packet with its type byte in front. */
    std::string packet;

    /** Without the packet's header: 4 bytes for a command, 3 for an event. */
    [[nodiscard]] std::string Text() const;
    [[nodiscard]] bool IsCommand() const { return !packet.empty() && packet[0] == 1; }
};

/** A btsnoop file taken to pieces; written apart from the library's own writer. */
struct CaptureFile {
    /** The first 16 bytes. */
    std::string header;
    std::vector<CaptureRecord> records;
    /** Bytes behind the last whole record; empty in a sound file. */
    std::string rest;

    /** The joined texts of all commands, or of all events. */
    [[nodiscard]] std::string Commands() const;
    [[nodiscard]] std::string Events() const;
};

/** The whole file, "" when it cannot be read. */
std::string ReadFile(const std::string& path);

CaptureFile ReadCapture(const std::string& path);

} // namespace support

#endif
