// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "capture.h"

#include "text_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <system_error>

namespace sim {
namespace {

// "btsnoop", NUL, version 1, datalink 1002: HCI packets with their type byte.
constexpr std::string_view kHeader("btsnoop\0\0\0\0\1\0\0\x03\xEA", 16);
constexpr size_t kMagic = 8;
constexpr size_t kRecordHeader = 24;
// The type byte and the longest packet of any type.
constexpr uint32_t kLongestPacket = 1 + 4 + 0xFFFF;
// The library cuts text into pieces of this size.
constexpr size_t kPiece = 255;
// A kept beginning is at least a tag and a character; less may well stand in an event twice.
constexpr size_t kRecognisable = 3;

constexpr std::string_view kVendorCommand("\x01\x01\xFC", 3);
constexpr std::string_view kVendorEvent("\x04\xFF", 2);

/// The bytes of the file, and where reading is.
class Reader {
public:
    explicit Reader(const std::string& path) : path_(path) {
        errno = 0;
        file_.open(path, std::ios::binary);
        if (!file_ || file_.peek() == std::ifstream::traits_type::eof()) {
            throw FileError(path, errno != 0
                                      ? "cannot be read: " + std::generic_category().message(errno) +
                                            "; expected a capture"
                                      : "is empty; expected a capture (client_sock.log)");
        }
    }

    void read_header() {
        const std::string header = read(kHeader.size());
        if (header.compare(0, kMagic, kHeader, 0, std::min(kMagic, header.size())) != 0) {
            fail(0, "this is no capture; expected the library's client_sock.log");
        }
        if (header.size() < kHeader.size()) {
            fail(offset_, "the capture is cut off in its header; expected " +
                              std::to_string(kHeader.size()) + " bytes");
        }
        if (header != kHeader) {
            fail(kMagic, "this is another kind of capture; expected version 1 and link type 1002");
        }
    }

    /// The next packet with its type byte; empty at the end of the file.
    std::string packet() {
        const size_t begin = offset_;
        const std::string header = read(kRecordHeader);
        if (header.empty()) {
            return {};
        }
        ++record_;
        if (header.size() < kRecordHeader) {
            fail_cut(begin, header.size(), "header of 24");
        }
        const uint32_t length = word(header, 4);
        time_us_ = static_cast<int64_t>(uint64_t{word(header, 16)} << 32 | word(header, 20));
        if (length == 0 || length > kLongestPacket || word(header, 0) != length) {
            fail(begin, name() + " has a wrong length (" + std::to_string(length) + " of " +
                            std::to_string(word(header, 0)) + " bytes); the capture is damaged");
        }
        std::string bytes = read(length);
        if (bytes.size() < length) {
            fail_cut(begin, bytes.size(), "packet of " + std::to_string(length));
        }
        return bytes;
    }

    /// What a packet carries behind `prefix` and a byte that counts it.
    std::string_view text(std::string_view packet, size_t prefix) const {
        const size_t begin = prefix + 1;
        if (packet.size() < begin || static_cast<uint8_t>(packet[prefix]) != packet.size() - begin) {
            fail(offset_ - packet.size(),
                 name() + " is not as long as it says; the capture is damaged");
        }
        return packet.substr(begin);
    }

    size_t record() const { return record_; }
    int64_t time_us() const { return time_us_; }
    [[noreturn]] void fail(size_t offset, const std::string& problem) const {
        throw FileError(path_, "at byte " + std::to_string(offset) + ": " + problem);
    }

private:
    std::string name() const { return "record " + std::to_string(record_); }

    [[noreturn]] void fail_cut(size_t begin, size_t there, const std::string& whole) const {
        fail(begin, name() + " is cut off: " + std::to_string(there) + " bytes of a " + whole +
                        "; expected a whole capture");
    }

    std::string read(size_t count) {
        std::string bytes(count, '\0');
        file_.read(bytes.data(), static_cast<std::streamsize>(count));
        bytes.resize(static_cast<size_t>(file_.gcount()));
        offset_ += bytes.size();
        return bytes;
    }

    static uint32_t word(const std::string& bytes, size_t at) {
        uint32_t value = 0;
        for (size_t i = at; i < at + 4; ++i) {
            value = value << 8 | static_cast<uint8_t>(bytes[i]);
        }
        return value;
    }

    std::string path_;
    std::ifstream file_;
    size_t offset_ = 0;
    size_t record_ = 0;
    int64_t time_us_ = 0;
};

bool begins_with(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// Puts the pieces of one direction together.
class Joiner {
public:
    Joiner(bool is_command, std::string_view end_mark, std::vector<CapturedText>& out)
        : is_command_(is_command), end_mark_(end_mark), out_(out) {}

    void add(std::string_view piece, size_t record, int64_t time_us) {
        if (!is_command_) {
            piece = new_part_of(piece);
        }
        // The end mark may lie across two pieces.
        size_t from = text_.empty() ? 0 : text_.size() - 1;
        text_ += piece;
        size_t end = 0;
        while ((end = text_.find(end_mark_, from)) != std::string::npos) {
            // Two NULs in a row: the second one carried a descriptor.
            if (is_command_ || end > 0) {
                out_.push_back(
                    {is_command_, record, text_.substr(0, is_command_ ? end + 2 : end), time_us});
            }
            text_.erase(0, end + end_mark_.size());
            from = 0;
        }
    }

private:
    /// An event that a read has cut is recorded once more from its beginning, with the next read.
    std::string_view new_part_of(std::string_view piece) {
        if (is_next_read(piece)) {
            repeated_ = text_.size();
        }
        last_piece_ = piece.size();
        const size_t count = std::min(repeated_, piece.size());
        if (text_.compare(text_.size() - repeated_, count, piece, 0, count) != 0) {
            // Text too long for the library's buffer is not kept.
            repeated_ = 0;
            return piece;
        }
        repeated_ -= count;
        return piece.substr(count);
    }

    /// A short piece is the last one of a read. A full one rarely is.
    bool is_next_read(std::string_view piece) const {
        return repeated_ == 0 && (last_piece_ < kPiece ||
                                  (text_.size() >= kRecognisable &&
                                   begins_with(piece, std::string_view(text_).substr(0, kPiece))));
    }

    bool is_command_;
    std::string_view end_mark_;
    std::vector<CapturedText>& out_;
    /// What has no end mark yet.
    std::string text_;
    /// How much of its end the next pieces repeat.
    size_t repeated_ = 0;
    size_t last_piece_ = 0;
};

} // namespace

std::vector<CapturedText> read_capture(const std::string& path) {
    Reader reader(path);
    reader.read_header();
    std::vector<CapturedText> texts;
    Joiner commands(true, "\r\n", texts);
    Joiner events(false, std::string_view("\0", 1), texts);
    for (std::string packet = reader.packet(); !packet.empty(); packet = reader.packet()) {
        // Packets of other types are no text: an application may record them, too.
        if (begins_with(packet, kVendorCommand)) {
            commands.add(reader.text(packet, kVendorCommand.size()), reader.record(), reader.time_us());
        } else if (begins_with(packet, kVendorEvent)) {
            events.add(reader.text(packet, kVendorEvent.size()), reader.record(), reader.time_us());
        }
    }
    if (texts.empty()) {
        throw FileError(path, "holds no command and no event; expected a recorded conversation");
    }
    return texts;
}

} // namespace sim
