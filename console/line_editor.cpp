// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "console/line_editor.h"

#include <clocale>
#include <cwchar>
#include <histedit.h>
#include <stdexcept>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace console {
namespace {

constexpr int kRemembered = 500;
constexpr char kEndOfInput = 4;

class Libedit : public LineEditor {
public:
    Libedit(const std::string& program, std::FILE* out, Completer complete)
        : prompt_(program + "> "), out_(out), complete_(std::move(complete)) {
        // Which bytes make up a character.
        static_cast<void>(std::setlocale(LC_CTYPE, ""));
        edit_ = el_init(program.c_str(), stdin, out, stderr);
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
    }

    ~Libedit() override {
        put_away();
        el_end(edit_);
        history_end(history_);
    }
    Libedit(const Libedit&) = delete;
    Libedit& operator=(const Libedit&) = delete;
    Libedit(Libedit&&) = delete;
    Libedit& operator=(Libedit&&) = delete;

    void show() override {
        if (!shown_) {
            std::fflush(out_);
            el_set(edit_, EL_UNBUFFERED, 1);
            shown_ = true;
            put_back();
        }
    }

    void hide() override {
        if (shown_) {
            const LineInfo* info = el_line(edit_);
            half_typed_.assign(info->buffer, info->lastchar);
            cursor_ = static_cast<size_t>(info->cursor - info->buffer);
        }
        put_away();
    }

    Input read(std::string& line) override {
        int count = 0;
        const char* text = el_gets(edit_, &count);
        if (text == nullptr || count <= 0) {
            // Nothing yet, or nothing more: a terminal that has gone is not worth waiting for.
            return isatty(STDIN_FILENO) != 0 ? Input::Nothing : end();
        }
        const std::string_view typed(text, static_cast<size_t>(count));
        if (typed.size() == 1 && typed[0] == kEndOfInput) {
            return end();
        }
        if (typed.back() != '\n' && typed.back() != '\r') {
            return Input::Nothing;
        }
        line = typed.substr(0, typed.size() - 1);
        put_away();
        if (line.find_first_not_of(" \t") != std::string::npos) {
            HistEvent event{};
            history(history_, &event, H_ENTER, line.c_str());
        }
        return Input::Line;
    }

private:
    static char* prompt_text(EditLine* edit) { return self(edit)->prompt_.data(); }
    static unsigned char on_tab(EditLine* edit, int /*sign*/) { return self(edit)->complete(); }

    static Libedit* self(EditLine* edit) {
        void* data = nullptr;
        el_get(edit, EL_CLIENTDATA, &data);
        return static_cast<Libedit*>(data);
    }

    void put_away() {
        if (shown_) {
            el_set(edit_, EL_UNBUFFERED, 0);
            shown_ = false;
        }
    }

    // What was typed when the prompt was hidden: libedit forgets it.
    void put_back() {
        if (!half_typed_.empty()) {
            el_insertstr(edit_, half_typed_.c_str());
            el_cursor(edit_, -characters(std::string_view(half_typed_).substr(cursor_)));
            el_set(edit_, EL_REFRESH);
            half_typed_.clear();
        }
    }

    // libedit counts characters, not bytes.
    static int characters(std::string_view text) {
        mbstate_t state{};
        int count = 0;
        while (!text.empty()) {
            const size_t length = std::mbrlen(text.data(), text.size(), &state);
            if (length == 0 || length > text.size()) {
                break; // not a character of this locale
            }
            text.remove_prefix(length);
            ++count;
        }
        return count;
    }

    Input end() {
        put_away();
        std::fputc('\n', out_);
        std::fflush(out_);
        return Input::End;
    }

    unsigned char complete() {
        const LineInfo* info = el_line(edit_);
        const std::string before(info->buffer, info->cursor);
        const Completion completion = complete_line(before, complete_(before));
        if (!completion.text.empty()) {
            el_deletestr(edit_, static_cast<int>(completion.replaced));
            el_insertstr(edit_, completion.text.c_str());
            return CC_REFRESH;
        }
        if (completion.choices.empty()) {
            return CC_REFRESH_BEEP;
        }
        std::fputc('\n', out_);
        for (const std::string& word : completion.choices) {
            std::fprintf(out_, "%s  ", word.c_str());
        }
        std::fputc('\n', out_);
        std::fflush(out_);
        return CC_REDISPLAY;
    }

    std::string prompt_;
    std::FILE* out_;
    Completer complete_;
    EditLine* edit_ = nullptr;
    ::History* history_ = nullptr;
    bool shown_ = false;
    std::string half_typed_;
    size_t cursor_ = 0;
};

} // namespace

std::unique_ptr<LineEditor> make_line_editor(const std::string& program, std::FILE* out,
                                             Completer complete) {
    return std::make_unique<Libedit>(program, out, std::move(complete));
}

} // namespace console
