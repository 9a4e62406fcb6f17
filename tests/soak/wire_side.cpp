// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "soak/wire_side.h"

#include "capture/file.h"
#include "capture/texts.h"

#include <fstream>
#include <string_view>
#include <sys/stat.h>

namespace soak {
namespace {

std::string Made(const std::string& pipe) {
    mkfifo(pipe.c_str(), 0600);
    return pipe;
}

std::string FromHex(std::string_view digits) {
    const auto value = [](char c) { return c <= '9' ? c - '0' : c - 'A' + 10; };
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(value(digits[i]) * 16 + value(digits[i + 1]));
    }
    return bytes;
}

} // namespace

LibrarySide::LibrarySide(const std::string& pipe) : thread_(&LibrarySide::Read, this, Made(pipe)) {}

void LibrarySide::Read(const std::string& pipe) {
    capture::InputFile file;
    file.open(pipe);
    capture::TextReader reader;
    for (long count = 0; (count = file.read(reader.space())) > 0;) {
        reader.filled(static_cast<size_t>(count));
        for (capture::Text text; reader.next(&text);) {
            text.is_command ? AddCommand(text.text) : AddEvent(text.text);
        }
    }
}

SimSide::SimSide(const std::string& pipe) : thread_(&SimSide::Read, this, Made(pipe)) {}

void SimSide::Read(const std::string& pipe) {
    std::ifstream file(pipe);
    for (std::string line; std::getline(file, line);) {
        Take(line);
    }
}

void SimSide::Take(const std::string& line) {
    if (line.rfind("> fd", 0) == 0) {
        return; // a byte that a descriptor rode on
    }
    std::string text = FromHex(std::string_view(line).substr(2));
    if (line[0] == '<') {
        AddCommand(text);
    } else {
        text.pop_back();
        AddEvent(text);
    }
}

} // namespace soak
