// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "records.h"

#include "format.h"

#include <algorithm>
#include <cstring>

namespace capture {
namespace {

constexpr size_t kMagic = 8;
// Blocks of this size keep the number of system calls out of the account.
constexpr size_t kBuffer = size_t{1024} * 1024;
static_assert(kBuffer > 2 * (kRecordHeader + kLongestPacket),
              "a record must fit whatever is before it");
// The packet's first bytes tell its own length.
constexpr size_t kPacketHeader = 5;

uint32_t word(const char* at) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 8U | static_cast<uint8_t>(at[i]);
    }
    return value;
}

/// The length that a packet with its type byte tells of itself; 0 for what is no packet.
uint32_t own_length(const char* packet) {
    const auto byte = [packet](size_t i) { return uint32_t{static_cast<uint8_t>(packet[i])}; };
    switch (packet[0]) {
    case 1: // command
    case 3: // SCO
        return 4 + byte(3);
    case 2: // ACL
        return 5 + byte(3) + (byte(4) << 8U);
    case 4: // event
        return 3 + byte(2);
    default:
        return 0;
    }
}

/// Whether a record may begin here; there are kRecordHeader + kPacketHeader bytes.
bool looks_like_record(const char* at) {
    const uint32_t length = word(at);
    return length != 0 && length == word(at + 4) && word(at + 8) <= kEventFlags && word(at + 12) == 0 &&
           length == own_length(at + kRecordHeader);
}

} // namespace

std::string to_text(const Problem& problem) {
    return problem.offset ? "at byte " + std::to_string(*problem.offset) + ": " + problem.what
                          : problem.what;
}

RecordReader::RecordReader() : buffer_(new char[kBuffer]) {}

RecordReader::Space RecordReader::space() {
    // What is left is less than a record: little to move.
    if (at_ > 0) {
        std::memmove(buffer_.get(), buffer_.get() + at_, left());
        base_ += at_;
        end_ -= at_;
        at_ = 0;
    }
    return {buffer_.get() + end_, kBuffer - end_};
}

void RecordReader::fail_cut(size_t there, const std::string& whole) {
    fail(offset(), "record " + std::to_string(number_ + 1) + " is cut off: " + std::to_string(there) +
                       " bytes of a " + whole + "; expected a whole capture");
}

void RecordReader::finish() {
    finished_ = true;
    check_end();
}

/// At the end of the bytes there must be nothing left.
void RecordReader::check_end() {
    if (!finished_ || problem_ || searching_) {
        return;
    }
    if (!in_records_) {
        if (offset() + left() == 0) {
            fail(std::nullopt, "is empty; expected a capture (client_sock.log)");
        } else {
            fail(offset() + left(), "the capture is cut off in its header; expected " +
                                        std::to_string(kFileHeader.size()) + " bytes");
        }
    } else if (left() >= kRecordHeader) {
        fail_cut(left() - kRecordHeader, "packet of " + std::to_string(word(&buffer_[at_ + 4])));
    } else if (left() > 0) {
        fail_cut(left(), "header of " + std::to_string(kRecordHeader));
    }
}

bool RecordReader::read_header() {
    const std::string_view header(buffer_.get(), std::min(left(), kFileHeader.size()));
    // Told as soon as it is seen: a file that grows may never get as long as a header.
    if (header.substr(0, kMagic) != kFileHeader.substr(0, std::min(header.size(), kMagic))) {
        fail(0, "this is no capture; expected the library's client_sock.log");
    } else if (header.size() == kFileHeader.size() && header != kFileHeader) {
        fail(kMagic, "this is another kind of capture; expected version 1 and link type 1002");
    } else if (header == kFileHeader) {
        at_ = header.size();
        in_records_ = true;
    }
    return in_records_;
}

bool RecordReader::next(Record* record) {
    if (problem_ || (!in_records_ && !read_header()) || (searching_ && !find_record())) {
        return false;
    }
    if (left() < kRecordHeader) {
        check_end();
        return false;
    }
    const char* header = &buffer_[at_];
    const uint32_t length = word(header + 4);
    if (length == 0 || length > kLongestPacket || word(header) != length) {
        fail(offset(), "record " + std::to_string(number_ + 1) + " has a wrong length (" +
                           std::to_string(length) + " of " + std::to_string(word(header)) +
                           " bytes); the capture is damaged");
        return false;
    }
    if (left() < kRecordHeader + length) {
        check_end();
        return false;
    }
    record->number = ++number_;
    record->offset = offset();
    const uint64_t time = uint64_t{word(header + 16)} << 32U | word(header + 20);
    record->time_us =
        std::clamp(static_cast<int64_t>(time - kEpoch1970Us), -kFarthestTime, kFarthestTime);
    record->flags = word(header + 8);
    record->packet = {header + kRecordHeader, length};
    at_ += kRecordHeader + length;
    return true;
}

bool RecordReader::recover() {
    if (!in_records_) {
        return false;
    }
    problem_.reset();
    searching_ = true;
    // Not the same place again.
    at_ += left() > 0 ? 1 : 0;
    ++number_;
    return find_record() || !finished_;
}

bool RecordReader::find_record() {
    constexpr size_t kSeen = kRecordHeader + kPacketHeader;
    // The shortest packet, an event without parameters, has fewer bytes than that. It is the library's
    // own packets that are looked for: they have text.
    for (; left() >= kSeen; ++at_) {
        if (looks_like_record(&buffer_[at_])) {
            searching_ = false;
            return true;
        }
    }
    return false;
}

} // namespace capture
