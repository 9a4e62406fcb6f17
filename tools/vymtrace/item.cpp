// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "item.h"

namespace trace {
namespace {

constexpr std::string_view kStart = "AT#";
constexpr std::string_view kEnd = "\r\n";

bool is_started(const capture::Text& text) {
    return text.text.substr(0, kStart.size()) == kStart;
}

std::string_view body_of(const capture::Text& text) {
    std::string_view body = text.text;
    if (text.is_command) {
        body.remove_suffix(text.whole ? kEnd.size() : 0);
        body.remove_prefix(is_started(text) ? kStart.size() : 0);
    }
    return body;
}

} // namespace

Item::Item(const capture::Text& text) : text_(text), body_(body_of(text)) {
    if (!text.is_command || is_started(text)) {
        found_ = protocol::find(direction(), body_);
    }
}

const protocol::Decoded& Item::decoded() const {
    if (!decoded_) {
        decoded_.emplace();
        if (found_) {
            *decoded_ = protocol::decode(direction(), body_);
        } else {
            decoded_->problem =
                text_.is_command && !is_started(text_) ? "does not begin with AT#" : "unknown tag";
        }
    }
    return *decoded_;
}

std::string Item::problem() const {
    return decoded().problem.empty() && !text_.whole ? "has no end" : decoded().problem;
}

} // namespace trace
