// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "traffic.h"

#include "text_file.h"

namespace sim {

Traffic::Traffic(const std::string& path) {
    if (!path.empty()) {
        file_ = create_file(path, "traffic file");
    }
}

void Traffic::write(std::string_view mark, std::string_view bytes) {
    if (!file_.is_open() || bytes.empty()) {
        return;
    }
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string line(mark);
    for (const char c : bytes) {
        const auto value = static_cast<unsigned char>(c);
        line += kDigits[value >> 4];
        line += kDigits[value & 0xF];
    }
    file_ << line.append("\n") << std::flush;
}

} // namespace sim
