// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What stands for a private value: always the same for the same value, as long as it, and with nothing
// of it. They are counted in the order in which they are first needed, so nothing can be computed back.
#ifndef VYMTRACE_PSEUDONYMS_H
#define VYMTRACE_PSEUDONYMS_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace trace {

class Pseudonyms {
public:
    /// Six bytes, address[0] first. The bits that tell the kind of a random address stay, and so do
    /// addresses that are none: all bits 0, all bits 1.
    std::string address(const std::string& address);

    /// "Name1xx". Semicolons stay, for they part the components of a name.
    std::string name(std::string_view name);

    /// Like a name; but what is a number, such as the length of a track, stays.
    std::string title(std::string_view title);

    /// Its digits are others, its signs are the same.
    std::string number(std::string_view number);

    /// Digits for digits, other bytes for bytes; nothing but zeros stays.
    std::string secret(std::string_view secret);
    /// Of six decimal digits at most; 0 stays.
    uint32_t passkey(uint32_t passkey);

    /// A line of a vCard: what kind of line it is can still be seen.
    std::string contact_line(std::string_view line);

    /// Letters become x and digits 0, but for the words that a vCard is made of. For text that may
    /// begin and end anywhere.
    static std::string masked(std::string_view text);

    /// Names in the structures of advertising data.
    std::string advertised(std::string_view data);

    /// Text among the bytes of an application's own protocol.
    std::string data(std::string_view bytes);

private:
    enum class Kind : uint8_t { Address, Name, Title, Number, Secret };
    uint32_t number_of(Kind kind, std::string_view value);
    std::string worded(Kind kind, std::string_view word, std::string_view text);

    std::map<std::pair<Kind, size_t>, uint32_t> counts_;
    std::map<Kind, std::unordered_map<std::string, uint32_t>> known_;
};

} // namespace trace

#endif
