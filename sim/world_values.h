// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Reading the single values of a world's file: each place in the document knows what it is called and
// where it stands, and what does not fit is refused there.
#ifndef VYM_SIM_WORLD_VALUES_H
#define VYM_SIM_WORLD_VALUES_H

#include "document.h"
#include "text_file.h"
#include "world_fields.h"

#include <string>
#include <utility>

namespace sim {

/// A place in a document.
struct Place {
    const std::string& file;
    const DocumentValue& value;
    /// "devices[2].address"; empty for the whole.
    std::string path;

    Place item(size_t index) const;
    Place member(const DocumentMember& member) const;
    [[noreturn]] void fail(const std::string& problem) const;
    /// It is something else than what was expected.
    [[noreturn]] void refuse(const std::string& is_no, const std::string& expected) const;
    const DocumentValue& list() const;
    const std::string& text() const;
    int64_t number(int64_t low, int64_t high) const;
    /// Digits that stand for bytes, perhaps with spaces between bytes.
    std::string bytes(size_t most) const;
};

void read(const Place& place, bool& value);
void read(const Place& place, Address& value);
void read(const Place& place, Text wanted);
void read(const Place& place, TelephoneNumber wanted);
void read(const Place& place, Bytes wanted);
void read(const Place& place, Uuid wanted);
void read(const Place& place, HexOctets wanted);
void read(const Place& place, const Delay& wanted);

uint64_t hex_number(const Place& place, unsigned digits);
/// The number that the place's text stands for.
unsigned named_value(const Place& place, const Names& names);

/// Longer than any list of a reasonable world.
constexpr size_t kLongestList = 10000;

template <typename T>
void read(const Place& place, Ranged<T> wanted) {
    wanted.value = static_cast<T>(place.number(wanted.low, wanted.high));
}

template <typename T>
void read(const Place& place, HexNumber<T> wanted) {
    wanted.value = static_cast<T>(hex_number(place, wanted.digits));
}

template <typename T>
void read(const Place& place, const Choice<T>& wanted) {
    wanted.value = static_cast<T>(named_value(place, wanted.names));
}

template <typename T>
void read(const Place& place, const Flags<T>& wanted) {
    unsigned bits = 0;
    const size_t count = place.list().items.size();
    for (size_t i = 0; i < count; ++i) {
        bits |= named_value(place.item(i), wanted.names);
    }
    wanted.value = static_cast<T>(bits);
}

template <typename T, typename Wrap>
void read(const Place& place, const Many<T, Wrap>& wanted) {
    wanted.values.clear();
    const size_t count = place.list().items.size();
    for (size_t i = 0; i < count; ++i) {
        read(place.item(i), wanted.wrap(wanted.values.emplace_back()));
    }
}

} // namespace sim

#endif
