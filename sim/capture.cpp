// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "capture.h"

#include "capture/file.h"
#include "capture/texts.h"
#include "text_file.h"

#include <cerrno>
#include <system_error>

namespace sim {
namespace {

[[noreturn]] void fail_reading(const std::string& path) {
    throw FileError(path, "cannot be read: " + std::generic_category().message(errno) +
                              "; expected a capture");
}

} // namespace

std::vector<CapturedText> read_capture(const std::string& path) {
    capture::InputFile file;
    if (!file.open(path)) {
        fail_reading(path);
    }
    capture::TextReader reader;
    std::vector<CapturedText> texts;
    for (bool at_end = false; !at_end;) {
        const long count = file.read(reader.space());
        if (count < 0) {
            fail_reading(path);
        }
        reader.filled(static_cast<size_t>(count));
        capture::Text text;
        while (reader.next(&text)) {
            texts.push_back({text.is_command, text.record, std::string(text.text), text.time_us});
        }
        at_end = count == 0;
        if (at_end) {
            reader.finish();
        }
        if (reader.problem()) {
            throw FileError(path, capture::to_text(*reader.problem()));
        }
    }
    if (texts.empty()) {
        throw FileError(path, "holds no command and no event; expected a recorded conversation");
    }
    return texts;
}

} // namespace sim
