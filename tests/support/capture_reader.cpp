// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/capture_reader.h"

#include <fstream>
#include <iterator>

namespace support {
namespace {

constexpr size_t kFileHeader = 16;
constexpr size_t kRecordHeader = 24;

uint64_t BigEndian(const std::string& bytes, size_t offset, size_t width) {
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        value = value << 8 | static_cast<uint8_t>(bytes[offset + i]);
    }
    return value;
}

uint32_t Word(const std::string& bytes, size_t offset) {
    return static_cast<uint32_t>(BigEndian(bytes, offset, 4));
}

std::string Joined(const CaptureFile& file, bool commands) {
    std::string text;
    for (const CaptureRecord& record : file.records) {
        text += record.IsCommand() == commands ? record.Text() : "";
    }
    return text;
}

} // namespace

std::string CaptureRecord::Text() const {
    const size_t header = IsCommand() ? 4 : 3;
    return packet.size() < header ? "" : packet.substr(header);
}

std::string CaptureFile::Commands() const {
    return Joined(*this, true);
}

std::string CaptureFile::Events() const {
    return Joined(*this, false);
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

CaptureFile ReadCapture(const std::string& path) {
    const std::string bytes = ReadFile(path);
    CaptureFile file;
    file.header = bytes.substr(0, kFileHeader);
    size_t at = file.header.size();
    while (bytes.size() - at >= kRecordHeader) {
        CaptureRecord record{};
        record.original_length = Word(bytes, at);
        record.included_length = Word(bytes, at + 4);
        record.flags = Word(bytes, at + 8);
        record.drops = Word(bytes, at + 12);
        record.timestamp = BigEndian(bytes, at + 16, 8);
        if (bytes.size() - at - kRecordHeader < record.included_length) {
            break;
        }
        record.packet = bytes.substr(at + kRecordHeader, record.included_length);
        file.records.push_back(record);
        at += kRecordHeader + record.included_length;
    }
    file.rest = bytes.substr(at);
    return file;
}

} // namespace support
