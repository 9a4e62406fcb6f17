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

void Item::set(const capture::Text& text) {
    text_ = text;
    body_ = body_of(text);
    found_ =
        !text.is_command || is_started(text) ? protocol::find(direction(), body_) : protocol::Found();
    is_decoded_ = false;
}

const protocol::Decoded& Item::decoded() const {
    if (!is_decoded_) {
        is_decoded_ = true;
        if (found_) {
            protocol::decode(direction(), found_, body_, &decoded_);
        } else {
            decoded_ = {};
            decoded_.problem =
                text_.is_command && !is_started(text_) ? "does not begin with AT#" : "unknown tag";
        }
    }
    return decoded_;
}

std::string_view Item::problem() const {
    const std::string_view problem = decoded().problem;
    return problem.empty() && !text_.whole ? "has no end" : problem;
}

} // namespace trace
