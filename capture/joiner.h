// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The pieces of one direction, put together again.
#ifndef VYM_CAPTURE_JOINER_H
#define VYM_CAPTURE_JOINER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace capture {

class Joiner {
public:
    explicit Joiner(bool is_command) : is_command_(is_command) {}

    /// Takes the next piece when next() has found nothing more in the one before. It must stay where it
    /// is until then. Returns how much of its beginning was there already: an event that a read has cut
    /// is recorded once more from its beginning, with the next read.
    size_t add(std::string_view piece);

    /// The next whole command with its CR LF, or event without its NUL; valid until the next call of
    /// either function. An overlong text is handed out in parts, each but the last with `whole` false.
    bool next(std::string_view* text, bool* whole);

    /// What has no end yet.
    std::string_view unfinished() const { return handed_out_ ? std::string_view() : text_; }

    /// The position behind the text that next() has given, its end included, in the stream of bytes of
    /// this direction without repetitions.
    uint64_t position() const { return added_ - rest_.size(); }

private:
    std::string_view new_part_of(std::string_view piece);
    bool is_next_read(std::string_view piece) const;
    size_t find_end() const;
    void forget_handed_out();

    bool is_command_;
    /// What has no end mark yet.
    std::string text_;
    /// Text was handed out, so it is to be forgotten.
    bool handed_out_ = false;
    /// What next() has still to look at.
    std::string_view rest_;
    uint64_t added_ = 0;
    /// How much of the end of the text the next pieces repeat.
    size_t repeated_ = 0;
    size_t last_piece_ = 0;
};

} // namespace capture

#endif
