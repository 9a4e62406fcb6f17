// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a long download or recording leaves behind: files in formats that others read.
#ifndef VYM_VYMCTL_FILES_H
#define VYM_VYMCTL_FILES_H

#include "event.h"

namespace vymctl {

/// One person or call: the entries of a phone book that have one index.
struct Contact {
    int64_t index = 0;
    std::string name;
    std::string time;
    std::vector<std::string> numbers;
};

/// Joins the entries of one index, which come one behind the other.
void add_entry(std::vector<Contact>& contacts, const Event& entry);

/// vCard 3.0 (RFC 2426).
std::string to_vcards(const std::vector<Contact>& contacts);
std::string to_json_text(const std::vector<Contact>& contacts);

struct WavFormat {
    uint32_t rate = 8000;
    uint16_t channels = 1;
};
/// 16-bit samples, low byte first.
std::string to_wav(const WavFormat& format, const std::string& samples);

/// False when it cannot be written; says so.
bool write_file(const std::string& path, const std::string& content);

} // namespace vymctl

#endif
