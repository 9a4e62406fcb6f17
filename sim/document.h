// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A JSON document that remembers in which line each of its values stands.
#ifndef VYM_SIM_DOCUMENT_H
#define VYM_SIM_DOCUMENT_H

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

struct DocumentMember;

struct DocumentValue {
    enum class Kind { Null, Boolean, Integer, Fraction, Text, List, Object };

    Kind kind = Kind::Null;
    unsigned line = 0;
    bool boolean = false;
    int64_t integer = 0;
    /// A text, or a number as it is written.
    std::string text;
    std::vector<DocumentValue> items;
    std::vector<DocumentMember> members;

    /// The value of a key, or nullptr.
    const DocumentValue* find(const std::string& key) const;
    /// What it is, for somebody who expected something else.
    std::string description() const;
};

struct DocumentMember {
    std::string key;
    unsigned line = 0;
    DocumentValue value;
};

/// Throws FileError for what is no JSON, for a key that stands twice in one object, and for lists and
/// objects that lie too deep in one another. `file` is what the error names.
DocumentValue parse_document(const std::string& file, const std::string& text);

} // namespace sim

#endif
