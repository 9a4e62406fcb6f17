// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "prompt.h"

#include <array>
#include <asio/posix/stream_descriptor.hpp>
#include <clocale>
#include <histedit.h>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace sim {
namespace {

constexpr int kRemembered = 500;
constexpr char kEndOfInput = 4;

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

class LineEditor : public Prompt {
public:
    LineEditor(asio::io_context& loop, Control& control, std::function<void()> end)
        : control_(control), session_(control.open_session(control.desk())), end_(std::move(end)),
          // Its own copy: closing it must not close the program's standard input.
          input_(loop, dup(STDIN_FILENO)) {
        // Which bytes make up a character.
        static_cast<void>(std::setlocale(LC_CTYPE, ""));
        edit_ = el_init("vym-sim", stdin, stdout, stderr);
        history_ = history_init();
        if (edit_ == nullptr || history_ == nullptr) {
            throw std::runtime_error("no prompt: the terminal cannot be used for line editing");
        }
        HistEvent event{};
        history(history_, &event, H_SETSIZE, kRemembered);
        history(history_, &event, H_SETUNIQUE, 1);
        el_set(edit_, EL_CLIENTDATA, this);
        el_set(edit_, EL_PROMPT, prompt_text);
        el_set(edit_, EL_EDITOR, "emacs");
        el_set(edit_, EL_HIST, history, history_);
        // With narrow text libedit keeps copies that it never frees.
        el_wset(edit_, EL_ADDFN, L"vym-complete", L"complete the word", on_tab);
        el_set(edit_, EL_BIND, "^I", "vym-complete", nullptr);
        show_prompt();
        await_input();
    }

    ~LineEditor() override {
        session_->cancel();
        hide_prompt();
        el_end(edit_);
        history_end(history_);
    }

private:
    static char* prompt_text(EditLine* /*edit*/) {
        static std::array<char, 10> text{"vym-sim> "};
        return text.data();
    }

    /// One sign at a time, so that the event loop is never kept waiting.
    void show_prompt() {
        std::cout << std::flush;
        el_set(edit_, EL_UNBUFFERED, 1);
        shown_ = true;
    }

    void hide_prompt() {
        if (shown_) {
            el_set(edit_, EL_UNBUFFERED, 0);
            shown_ = false;
        }
    }

    void await_input() {
        input_.async_wait(asio::posix::stream_descriptor::wait_read,
                          [this, alive = std::weak_ptr<int>(alive_)](const asio::error_code& error) {
                              if (!alive.expired() && !error && read_sign()) {
                                  await_input();
                              }
                          });
    }

    /// False at the end of the input.
    bool read_sign() {
        int count = 0;
        const char* text = el_gets(edit_, &count);
        if (text == nullptr || count <= 0) {
            // Nothing yet, or nothing more: a terminal that has gone is not worth waiting for.
            return is_open() || finish();
        }
        const std::string_view line(text, static_cast<size_t>(count));
        if (line.size() == 1 && line[0] == kEndOfInput) {
            return finish();
        }
        if (line.back() == '\n' || line.back() == '\r') {
            const std::string whole(line.substr(0, line.size() - 1));
            hide_prompt();
            carry_out(whole);
        }
        return true;
    }

    static bool is_open() { return isatty(STDIN_FILENO) != 0; }

    bool finish() {
        hide_prompt();
        std::cout << std::endl;
        end_();
        return false;
    }

    void carry_out(const std::string& line) {
        if (line.find_first_not_of(" \t") != std::string::npos) {
            HistEvent event{};
            history(history_, &event, H_ENTER, line.c_str());
        }
        // A new line ends what the one before it waits for.
        session_->cancel();
        try {
            if (std::optional<Step> step = control_.parse(line)) {
                std::optional<Result> result =
                    session_->run(std::move(*step), [this](const Result& later) {
                        hide_prompt();
                        std::cout << '\n';
                        show(later);
                        show_prompt();
                    });
                if (result) {
                    show(*result);
                }
            }
        } catch (const Refused& error) {
            show({error.what(), {}, {}});
        }
        show_prompt();
    }

    static void show(const Result& result) {
        for (const std::string& line : result.lines) {
            std::cout << line << '\n';
        }
        if (!result.problem.empty()) {
            std::cout << "error: " << result.problem << '\n';
        }
        std::cout << std::flush;
        if (result.afterwards) {
            result.afterwards();
        }
    }

    // Completion.

    static unsigned char on_tab(EditLine* edit, int /*sign*/) {
        void* self = nullptr;
        el_get(edit, EL_CLIENTDATA, &self);
        return static_cast<LineEditor*>(self)->complete();
    }

    unsigned char complete() {
        const LineInfo* info = el_line(edit_);
        const std::string before(info->buffer, info->cursor);
        const std::vector<std::string> found = control_.complete(before);
        if (found.empty()) {
            return CC_REFRESH_BEEP;
        }
        // The words are as they are typed: a quote that is begun is part of what is replaced.
        const size_t begun = length_of_begun_word(before, found);
        std::string text = common_beginning(found);
        const bool whole = found.size() == 1 && text.back() != '=';
        text += whole ? " " : "";
        if (text.size() > begun) {
            el_deletestr(edit_, static_cast<int>(begun));
            el_insertstr(edit_, text.c_str());
            return CC_REFRESH;
        }
        std::cout << '\n';
        for (const std::string& word : found) {
            std::cout << word << "  ";
        }
        std::cout << std::endl;
        return CC_REDISPLAY;
    }

    /// How many signs at the end belong to the word: the longest end of the line with which one of the
    /// words, with its quotes or without, begins.
    static size_t length_of_begun_word(const std::string& line, const std::vector<std::string>& found) {
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

    Control& control_;
    std::shared_ptr<Session> session_;
    std::function<void()> end_;
    asio::posix::stream_descriptor input_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    EditLine* edit_ = nullptr;
    ::History* history_ = nullptr;
    bool shown_ = false;
};

} // namespace

std::unique_ptr<Prompt> make_prompt(asio::io_context& loop, Control& control,
                                    const std::function<void()>& end) {
    if (isatty(STDIN_FILENO) == 0) {
        throw std::runtime_error("--prompt needs a terminal as standard input; without one use "
                                 "--script - or vym-sim ctl");
    }
    return std::make_unique<LineEditor>(loop, control, end);
}

} // namespace sim
