// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "joiner.h"

#include "format.h"

#include <algorithm>

namespace capture {
namespace {

// A kept beginning is at least a tag and a character; less may well stand in an event twice.
constexpr size_t kRecognisable = 3;
// Far beyond any command; it keeps the memory within bounds when a damaged file has no end marks.
constexpr size_t kLongestText = size_t{1024} * 1024;

} // namespace

void Joiner::forget_handed_out() {
    if (handed_out_) {
        text_.clear();
        handed_out_ = false;
    }
}

size_t Joiner::add(std::string_view piece) {
    forget_handed_out();
    rest_ = is_command_ ? piece : new_part_of(piece);
    added_ += rest_.size();
    return piece.size() - rest_.size();
}

std::string_view Joiner::new_part_of(std::string_view piece) {
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
bool Joiner::is_next_read(std::string_view piece) const {
    return repeated_ == 0 &&
           (last_piece_ < kPiece || (text_.size() >= kRecognisable &&
                                     begins_with(piece, std::string_view(text_).substr(0, kPiece))));
}

/// Where in the rest the text ends, behind its end mark; npos when it does not.
size_t Joiner::find_end() const {
    if (!is_command_) {
        const size_t nul = rest_.find('\0');
        return nul == std::string_view::npos ? nul : nul + 1;
    }
    // The end mark may lie across two pieces.
    if (!text_.empty() && text_.back() == '\r' && rest_.front() == '\n') {
        return 1;
    }
    const size_t mark = rest_.find("\r\n");
    return mark == std::string_view::npos ? mark : mark + 2;
}

bool Joiner::next(std::string_view* text, bool* whole) {
    forget_handed_out();
    while (!rest_.empty()) {
        const size_t end = find_end();
        *whole = end != std::string_view::npos;
        const std::string_view head = rest_.substr(0, end);
        rest_.remove_prefix(head.size());
        if (!*whole) {
            text_ += head;
            handed_out_ = text_.size() > kLongestText;
            *text = text_;
            // The next piece is not a repetition of what is gone.
            repeated_ = handed_out_ ? 0 : repeated_;
            return handed_out_;
        }
        if (text_.empty()) {
            *text = head;
        } else {
            text_ += head;
            *text = text_;
            handed_out_ = true;
        }
        text->remove_suffix(is_command_ ? 0 : 1);
        // Two NULs in a row: the second one carried a descriptor.
        if (!text->empty()) {
            return true;
        }
        forget_handed_out();
    }
    return false;
}

} // namespace capture
