// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "console/line_editor.h"

namespace console {
namespace {

/// What several words have in common.
std::string common_beginning(const std::vector<std::string>& words) {
    std::string common = words.empty() ? "" : words.front();
    for (const std::string& word : words) {
        size_t same = 0;
        while (same < common.size() && same < word.size() && common[same] == word[same]) {
            ++same;
        }
        common.resize(same);
    }
    return common;
}

/// How many signs at the end belong to the word: the longest end of the line with which one of the
/// words, with its quotes or without, begins.
size_t length_of_begun_word(const std::string& line, const std::vector<std::string>& found) {
    for (size_t start = 0; start < line.size(); ++start) {
        const std::string end = line.substr(start);
        for (const std::string& word : found) {
            if (word.rfind(end, 0) == 0 || (word[0] == '"' && word.rfind(end, 1) == 1)) {
                return end.size();
            }
        }
    }
    return 0;
}

} // namespace

Completion complete_line(const std::string& line, const std::vector<std::string>& found) {
    if (found.empty()) {
        return {};
    }
    // The words are as they are typed: a quote that is begun is part of what is replaced.
    const size_t begun = length_of_begun_word(line, found);
    std::string text = common_beginning(found);
    const bool whole = found.size() == 1 && text.back() != '=';
    text += whole ? " " : "";
    if (text.size() > begun) {
        return {begun, text, {}};
    }
    return {0, "", found};
}

} // namespace console
