// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// One command or event on its way through the program.
#ifndef VYMTRACE_ITEM_H
#define VYMTRACE_ITEM_H

#include "capture/texts.h"
#include "protocol/codec.h"

#include <string_view>

namespace trace {

class Item {
public:
    Item() = default;
    explicit Item(const capture::Text& text) { set(text); }

    /// The next one: who goes through a long capture uses one item, and its memory, for all.
    void set(const capture::Text& text);

    const capture::Text& text() const { return text_; }
    protocol::Direction direction() const {
        return text_.is_command ? protocol::Direction::Command : protocol::Direction::Event;
    }
    /// Without what is around every command or event.
    std::string_view body() const { return body_; }
    const protocol::Found& found() const { return found_; }

    /// Looked at when it is first asked for: most of a large capture is only counted or passed over.
    const protocol::Decoded& decoded() const;
    /// What is wrong with it, in one line; empty when nothing is.
    std::string_view problem() const;

private:
    capture::Text text_;
    std::string_view body_;
    protocol::Found found_;
    mutable protocol::Decoded decoded_;
    mutable bool is_decoded_ = false;
};

/// What is done with the items.
class Consumer {
public:
    Consumer() = default;
    virtual ~Consumer() = default;
    Consumer(const Consumer&) = delete;
    Consumer& operator=(const Consumer&) = delete;
    Consumer(Consumer&&) = delete;
    Consumer& operator=(Consumer&&) = delete;

    virtual void take(const Item& item) = 0;
    /// Everything that has come so far is to be seen.
    virtual void flush() {}
    virtual void end() {}
};

} // namespace trace

#endif
