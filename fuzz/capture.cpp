// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The reader of captures: it finds the same texts in whatever reads the file comes, and goes on behind
// damaged places.

#include "capture_bytes.h"

#include <string>

namespace {

struct Found {
    std::string texts;
    size_t problems = 0;
};

Found read_in_steps_of(size_t step, std::string_view bytes) {
    Found found;
    found.problems = fuzz::read_capture_bytes(bytes, step, [&](const capture::Text& text) {
        fuzz::require(text.text.size() <= bytes.size(), "texts come from the file");
        fuzz::require(text.offset <= bytes.size(), "records lie in the file");
        found.texts += std::to_string(text.record) + (text.is_command ? "c" : "e") +
                       (text.whole ? " " : "~") + std::string(text.text) + '\n';
    });
    return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes = fuzz::text_of(data, size);
    const Found at_once = read_in_steps_of(SIZE_MAX, bytes);
    const Found in_steps = read_in_steps_of(size / 100 + 37, bytes);
    fuzz::require(at_once.texts == in_steps.texts, "no text depends on the size of reads");
    fuzz::require(at_once.problems == in_steps.problems, "no damage depends on the size of reads");
    return 0;
}
