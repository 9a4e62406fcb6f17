// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A line with editing, history and completion, one sign at a time: nobody who waits for something else
// beside the terminal is kept waiting.
#ifndef VYM_CONSOLE_LINE_EDITOR_H
#define VYM_CONSOLE_LINE_EDITOR_H

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace console {

/// What the word at the end of a line may be, as it is typed.
using Completer = std::function<std::vector<std::string>(const std::string& line)>;

class LineEditor {
public:
    enum class Input { Nothing, Line, End };

    virtual ~LineEditor() = default;
    LineEditor() = default;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    LineEditor(LineEditor&&) = delete;
    LineEditor& operator=(LineEditor&&) = delete;

    virtual void show() = 0;
    /// Before anything else is written to the terminal. What is half typed is kept and shown again.
    virtual void hide() = 0;
    /// To be called when standard input has something. A line is put into the history, and the prompt
    /// is hidden, as at the end.
    virtual Input read(std::string& line) = 0;
};

/// Edits at standard input, which must be a terminal, and writes to `out`. The prompt is not shown yet.
/// Throws std::runtime_error when that cannot be, and when this build has no line editing.
std::unique_ptr<LineEditor> make_line_editor(const std::string& program, std::FILE* out,
                                             Completer complete);

/// What Tab makes of a line: how many signs at its end it replaces, by what, and what else to list.
struct Completion {
    size_t replaced = 0;
    std::string text;
    std::vector<std::string> choices;
};
Completion complete_line(const std::string& line, const std::vector<std::string>& found);

} // namespace console

#endif
