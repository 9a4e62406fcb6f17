// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The decoders of fields: none reads behind its width or the text's end, and what stands behind its
// width does not matter.

#include "target.h"
#include "vym_field_reader.h"

#include <string>

namespace {

template <class Value>
void check(std::string_view text, size_t width, Value decode(char*)) {
    const fuzz::Exact whole(std::string(text) + '\0');
    const fuzz::Exact field(std::string(text.substr(0, width)) + '\0');
    const Value one = decode(whole.chars());
    const Value other = decode(field.chars());
    fuzz::require(std::memcmp(&one, &other, sizeof one) == 0, "a field ends with its width");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text = fuzz::text_of(data, size);
    check<unsigned char>(text, 2, parse_byte);
    check<unsigned char>(text, 2, [](char* p) { return parse_byte_with_base(p, 10); });
    check<unsigned char>(text, 1, [](char* p) { return parse_char_with_base(p, 16); });
    check<unsigned short>(text, 4, parse_short);
    check<unsigned int>(text, 8, parse_int);
    check<long>(text, 16, parse_long);
    check<bt_bdaddr_t>(text, 12, parse_address);
    const fuzz::Exact whole(std::string(text) + '\0');
    vym::field_reader reader(whole.data(), 0);
    reader.oob_data();
    reader.uuid128();
    fuzz::require(reader.pos() <= static_cast<int>(size), "the reader stays in the text");
    return 0;
}
