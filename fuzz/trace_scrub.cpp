// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vymtrace --scrub: whatever it is given, what it writes is a whole capture with as many texts.

#include "capture_bytes.h"
#include "memory_file.h"
#include "tools/vymtrace/scrub.h"

#include <fstream>
#include <string>

namespace {

struct Counted {
    size_t texts = 0;
    size_t problems = 0;
};

Counted count(std::string_view bytes) {
    Counted counted;
    counted.problems =
        fuzz::read_capture_bytes(bytes, SIZE_MAX, [&](const capture::Text&) { ++counted.texts; });
    return counted;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::MemoryFile from(fuzz::text_of(data, size)), to;
    std::ostream nowhere(nullptr);
    const bool is_whole = trace::scrub(from.path(), to.path(), nowhere) == 0;
    std::ifstream written(to.path(), std::ios::binary);
    const Counted after = count(std::string{std::istreambuf_iterator<char>(written), {}});
    fuzz::require(after.problems == 0, "a whole capture is written");
    fuzz::require(!is_whole || after.texts == count(fuzz::text_of(data, size)).texts,
                  "no text is lost");
    return 0;
}
