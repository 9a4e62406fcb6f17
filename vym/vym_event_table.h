// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A profile's events as a table that the compiler checks. An event whose fields go in wire order to one
// slot is one row:
//
//     plain<&callbacks::bond_state_changed, byte, address, byte>("BH", "onBondStateChanged", 16),
//
// an event that does more is a row with a function of its own.
#ifndef VYM_EVENT_TABLE_H
#define VYM_EVENT_TABLE_H

#include "vym_delegate.h"
#include "vym_event_parser.h"
#include "vym_field_reader.h"

#include <array>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <tuple>
#include <utility>

namespace vym {

struct event_row {
    const char* tag;
    const char* name;
    int min_length;
    // Delivered only when its NUL is there: it has a variable tail, or its minimum is shorter than its
    // fields.
    bool waits_for_end;
    // Reads the fields and calls back, if `callbacks` is not NULL; false when the event is malformed.
    bool (*decode)(field_reader& in, void* callbacks);
};

// The kinds of field that a plain row lists.
struct byte {
    static constexpr int width = 2;
    static uint8_t read(field_reader& in) { return in.byte(); }
};
// Read without moving on: what follows counts from here.
struct peeked_byte {
    static constexpr int width = 2;
    static uint8_t read(field_reader& in) { return in.peek_byte(); }
};
struct uint16 {
    static constexpr int width = 4;
    static uint16_t read(field_reader& in) { return in.uint16(); }
};
struct int32 {
    static constexpr int width = 8;
    static int read(field_reader& in) { return static_cast<int>(in.uint32()); }
};
struct address {
    static constexpr int width = 12;
    static bt_bdaddr_t read(field_reader& in) { return in.address(); }
};
struct oob_data {
    static constexpr int width = 32;
    static bt_oob_data_t read(field_reader& in) { return in.oob_data(); }
};
struct uuid128 {
    static constexpr int width = 32;
    static bt_uuid_t read(field_reader& in) { return in.uuid128(); }
};
struct rest {
    static constexpr int width = 0;
    static char* read(field_reader& in) { return in.rest(); }
};

template <class Field>
constexpr bool is_tail = false;
template <>
inline constexpr bool is_tail<rest> = true;

template <class Slot>
struct slot_of;
template <class Callbacks, class Function>
struct slot_of<Function Callbacks::*> {
    using callbacks = Callbacks;
};

// Reads fields and calls back. Not inlined: the events with these fields share it, in all profiles.
template <class... Fields>
struct fields {
    template <class... Parameters>
    __attribute__((noinline)) static bool decode(field_reader& in, void (*call)(Parameters...)) {
        // Braces read the fields in wire order.
        const auto values = std::tuple<decltype(Fields::read(in))...>{Fields::read(in)...};
        if (call != nullptr) {
            std::apply(call, values);
        }
        return true;
    }
};

// Static, as all of which the address is taken: then it is known without the table of the library's
// addresses, which costs 28 bytes for each on 32-bit ARM.
template <auto Slot, class... Fields>
static bool decode_plain(field_reader& in, void* callbacks) {
    auto* table = static_cast<typename slot_of<decltype(Slot)>::callbacks*>(callbacks);
    return fields<Fields...>::decode(in, table != nullptr ? table->*Slot : nullptr);
}

// Fields in wire order, handed to one slot.
template <auto Slot, class... Fields>
constexpr event_row plain(const char* tag, const char* name, int min_length) {
    constexpr int width = (0 + ... + Fields::width);
    constexpr bool tail = (false || ... || is_tail<Fields>);
    return {tag, name, min_length, tail || min_length < width, decode_plain<Slot, Fields...>};
}

template <class Callbacks, bool (*Body)(field_reader&, Callbacks*)>
static bool decode_body(field_reader& in, void* callbacks) {
    return Body(in, static_cast<Callbacks*>(callbacks));
}

// Rows with a function of their own: `fixed` for fixed fields of `width` characters, `with_tail` for
// events that end in a block or a text.
template <class Callbacks>
struct bodies {
    template <bool (*Body)(field_reader&, Callbacks*)>
    static constexpr event_row fixed(const char* tag, const char* name, int min_length, int width) {
        return {tag, name, min_length, min_length < width, decode_body<Callbacks, Body>};
    }
    template <bool (*Body)(field_reader&, Callbacks*)>
    static constexpr event_row with_tail(const char* tag, const char* name, int min_length) {
        return {tag, name, min_length, true, decode_body<Callbacks, Body>};
    }
};

// Tags have two or three capital letters and none begins with another, so the order of rows never
// decides.
template <size_t N>
constexpr bool tags_are_distinct(const event_row (&rows)[N]) {
    for (size_t i = 0; i < N; ++i) {
        const std::string_view tag = rows[i].tag;
        if (tag.size() < 2 || tag.size() > 3) {
            return false;
        }
        for (const char letter : tag) {
            if (letter < 'A' || letter > 'Z') {
                return false;
            }
        }
        for (size_t j = 0; j < N; ++j) {
            const std::string_view other = rows[j].tag;
            if (i != j && other.size() >= tag.size() && other.compare(0, tag.size(), tag) == 0) {
                return false;
            }
        }
    }
    return true;
}

// Where the rows are by the letters that tell them apart: the second, or the third where rows share the
// second. So finding one costs the same for each.
struct tag_index {
    static constexpr uint8_t kNone = 0xFF;
    static constexpr size_t kPlaces = 64;
    uint8_t two[kPlaces];
    uint8_t three[kPlaces / 2];

    static constexpr size_t place_of_two(unsigned first, unsigned second) {
        return ((first & 2U) << 4 | (second & 0x1FU)) % kPlaces;
    }
    static constexpr size_t place_of_three(unsigned third) { return third & 0x1FU; }
};

template <size_t N>
constexpr tag_index index_of(const event_row (&rows)[N]) {
    tag_index index{};
    for (uint8_t& place : index.two) {
        place = tag_index::kNone;
    }
    for (uint8_t& place : index.three) {
        place = tag_index::kNone;
    }
    for (size_t i = 0; i < N; ++i) {
        const char* tag = rows[i].tag;
        uint8_t& place =
            tag[2] == '\0' ? index.two[tag_index::place_of_two(static_cast<unsigned char>(tag[0]),
                                                               static_cast<unsigned char>(tag[1]))]
                           : index.three[tag_index::place_of_three(static_cast<unsigned char>(tag[2]))];
        place = place == tag_index::kNone ? static_cast<uint8_t>(i) : place;
    }
    return index;
}

// Whether each row is found by its tag.
template <size_t N>
constexpr bool finds_all(const tag_index& index, const event_row (&rows)[N]) {
    for (size_t i = 0; i < N; ++i) {
        const char* tag = rows[i].tag;
        const uint8_t two = index.two[tag_index::place_of_two(static_cast<unsigned char>(tag[0]),
                                                              static_cast<unsigned char>(tag[1]))];
        const uint8_t found =
            tag[2] == '\0' ? two
                           : index.three[tag_index::place_of_three(static_cast<unsigned char>(tag[2]))];
        // A row of two letters would be tried in place of one with three.
        if (found != i || (tag[2] != '\0' && two != tag_index::kNone)) {
            return false;
        }
    }
    return true;
}

// process_event_impl() for the one entry of the table that may have the text's tag.
int process_indexed(event_parser_t* evt_parser, const tag_index& index, uint8_t* buffer, int offset,
                    int length);

template <const auto& Rows>
int process_rows(event_parser_t* evt_parser, uint8_t* buffer, int offset, int length) {
    static constexpr tag_index index = index_of(Rows);
    static_assert(finds_all(index, Rows));
    return process_indexed(evt_parser, index, buffer, offset, length);
}

using decode_function = bool (*)(field_reader& in, void* callbacks);

int decode_event(decode_function decode, bool waits_for_end, void* callbacks, uint8_t* buffer, int pos);

// What is the same for several entries stands outside of them: there are many.
template <auto& Parser>
__attribute__((noinline)) int decode_for(uint8_t* buffer, int pos, decode_function decode,
                                         bool waits_for_end) {
    const auto* parser = Parser.load();
    return decode_event(decode, waits_for_end, parser != nullptr ? parser->cbk : nullptr, buffer, pos);
}

template <int Length>
int min_length() {
    return Length;
}

// The four functions that the framework wants of row `I`. The rows themselves are not in the library.
template <const auto& Rows, auto& Parser, size_t I>
struct entry {
    static const char* get_keyword() {
        constexpr const char* tag = Rows[I].tag;
        return tag;
    }
    static const char* get_tag() {
        constexpr const char* name = Rows[I].name;
        return name;
    }
    static int parse(uint8_t* buffer, int pos) {
        constexpr decode_function decode = Rows[I].decode;
        constexpr bool waits_for_end = Rows[I].waits_for_end;
        return decode_for<Parser>(buffer, pos, decode, waits_for_end);
    }
};

template <const auto& Rows, auto& Parser, size_t... I>
constexpr std::array<parser_t, sizeof...(I)> entries_of(std::index_sequence<I...>) {
    return {{{entry<Rows, Parser, I>::get_keyword, entry<Rows, Parser, I>::get_tag,
              min_length<Rows[I].min_length>, entry<Rows, Parser, I>::parse}...}};
}

// A parser of `size` bytes, whose first member is an event_parser_t, with a copy of `entries`. NULL
// without memory.
event_parser_t* create_with_entries(size_t size, const parser_t* entries, size_t count);

// Makes a profile's parser of its rows. `Parser` is the profile's pointer to the parser in use, through
// which the entries reach the callbacks. NULL without memory.
template <const auto& Rows, auto& Parser, class Derived, class Callbacks>
event_parser_t* create_profile_parser(Callbacks* callbacks) {
    constexpr size_t count = std::size(Rows);
    static_assert(tags_are_distinct(Rows));
    static constexpr auto entries = entries_of<Rows, Parser>(std::make_index_sequence<count>());
    event_parser_t* base = create_with_entries(sizeof(Derived), entries.data(), count);
    if (base == nullptr) {
        return nullptr;
    }
    auto* parser = reinterpret_cast<Derived*>(base);
    base->process_event = process_rows<Rows>;
    parser->cbk = callbacks;
    Parser = parser;
    return base;
}

template <auto& Parser>
void destroy_profile_parser(event_parser_t* parser) {
    if (parser == nullptr) {
        return;
    }
    auto* derived = reinterpret_cast<decltype(Parser.load())>(parser);
    Parser.compare_exchange_strong(derived, nullptr); // unless a newer one is in use already
    free(parser->parser_list);
    free(parser);
}

} // namespace vym

#endif
