// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Escaped blocks and structured names, in memory of exactly their size; the tables' own codec knows
// what is right.

#include "bt_utils.h"
#include "protocol/codec.h"
#include "target.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    size = std::min<size_t>(size, 0x7FFF);
    const std::string_view text = fuzz::text_of(data, size);
    const fuzz::Exact input(text);
    const auto count = static_cast<unsigned short>(size);
    unsigned short len = 0;

    const fuzz::Exact escaped(std::string(vym_escaped_length(input.data(), size), '-'));
    raw_bytes_to_str_bytes(input.data(), count, escaped.data(), &len);
    fuzz::require(fuzz::text_of(escaped.data(), len) == protocol::escape(text), "a block is escaped");
    const fuzz::Exact back(std::string(size, '-'));
    str_bytes_to_raw_bytes(escaped.data(), len, back.data(), &len);
    fuzz::require(fuzz::text_of(back.data(), len) == text, "what was escaped comes back");

    std::string right;
    const bool is_valid = protocol::unescape(text, &right);
    const fuzz::Exact plain(std::string(size, '\0'));
    str_bytes_to_raw_bytes(input.data(), count, plain.data(), &len);
    fuzz::require(!is_valid || fuzz::text_of(plain.data(), len) == right, "a block is unescaped");

    const fuzz::Exact name(std::string(size / 2, '\0'));
    combine_name(name.data(), static_cast<int>(name.size()), input.data(), static_cast<int>(size));
    return 0;
}
