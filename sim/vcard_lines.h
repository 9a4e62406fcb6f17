// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The lines of a .vcf file: unfolded, taken apart into property, parameters and value, and decoded.
#ifndef VYM_SIM_VCARD_LINES_H
#define VYM_SIM_VCARD_LINES_H

#include <string>
#include <string_view>
#include <vector>

namespace sim {

struct VcardLine {
    /// Where it begins.
    unsigned line = 0;
    /// In capitals, without a group.
    std::string property;
    /// Values of parameters in capitals, whether their names are written or not: CELL, BASE64.
    std::vector<std::string> parameters;
    /// As it stands in the file, unfolded.
    std::string value;

    bool has(std::string_view parameter) const;
};

/// Reads one line after the other. Throws FileError.
class VcardReader {
public:
    VcardReader(std::string file, std::string_view text);

    /// False at the end of the file.
    bool next(VcardLine& line);
    /// A version 3.0 folds and escapes in other ways than 2.1.
    void set_version_3(bool on) { version_3_ = on; }

    /// The value without transfer encoding, as UTF-8 text.
    std::string text_of(const VcardLine& line) const;
    /// The text's components: N has some, divided by semicolons. Escapes are resolved.
    std::vector<std::string> components_of(const VcardLine& line) const;
    /// The bytes of a value in base 64.
    std::string bytes_of(const VcardLine& line, size_t most) const;

    [[noreturn]] void fail(unsigned line, const std::string& problem) const;

private:
    std::string_view physical_line();
    bool begins_continuation() const;
    std::string logical_line();
    void take_apart(std::string_view head, VcardLine& line) const;

    std::string file_;
    std::string_view rest_;
    unsigned line_ = 0;
    bool version_3_ = false;
};

} // namespace sim

#endif
