// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The reader of vCards: contacts and calls from the same text, or one line that says what is wrong.

#include "sim/text_file.h"
#include "sim/vcard.h"
#include "target.h"

#include <string>

namespace {

template <class Read>
void check(Read read, std::string_view text) {
    try {
        const auto all = read("cards.vcf", std::string(text));
        fuzz::require(all.size() <= text.size(), "each has a card");
    } catch (const sim::FileError& error) {
        const std::string_view message = error.what();
        fuzz::require(message.find('\n') == std::string_view::npos, "one line says it");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    check(sim::contacts_from_vcards, fuzz::text_of(data, size));
    check(sim::calls_from_vcards, fuzz::text_of(data, size));
    return 0;
}
