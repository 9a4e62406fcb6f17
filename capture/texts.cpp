// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "texts.h"

#include "format.h"

namespace capture {

std::optional<Piece> piece_of(const Record& record, std::optional<Problem>* problem) {
    Piece piece;
    piece.is_command = begins_with(record.packet, kVendorCommand);
    if (!piece.is_command && !begins_with(record.packet, kVendorEvent)) {
        return std::nullopt;
    }
    const size_t count_at = piece.is_command ? kVendorCommand.size() : kVendorEvent.size();
    if (record.packet.size() <= count_at ||
        static_cast<uint8_t>(record.packet[count_at]) != record.packet.size() - count_at - 1) {
        *problem = {record.offset + kRecordHeader, "record " + std::to_string(record.number) +
                                                       " is not as long as it says; the capture is "
                                                       "damaged"};
        return std::nullopt;
    }
    piece.text = record.packet.substr(count_at + 1);
    return piece;
}

bool TextReader::next(Text* text) {
    while (!problem_) {
        if (current_ != nullptr && current_->next(&text->text, &text->whole)) {
            text->is_command = current_ == &commands_;
            text->record = record_.number;
            text->offset = record_.offset;
            text->time_us = record_.time_us;
            return true;
        }
        current_ = nullptr;
        if (!records_.next(&record_)) {
            return false;
        }
        if (const auto piece = piece_of(record_, &problem_)) {
            current_ = piece->is_command ? &commands_ : &events_;
            (piece->is_command ? last_command_ : last_event_) = record_;
            current_->add(piece->text);
        }
    }
    return false;
}

bool TextReader::recover() {
    if (!problem_) {
        return records_.recover();
    }
    // The record's own length was good, so the next one is where it should be.
    problem_.reset();
    return true;
}

Text TextReader::unfinished(bool is_command) const {
    const Record& record = is_command ? last_command_ : last_event_;
    const Joiner& joiner = is_command ? commands_ : events_;
    return {is_command, false, record.number, record.offset, record.time_us, joiner.unfinished()};
}

} // namespace capture
