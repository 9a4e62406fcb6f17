// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "console/line_editor.h"
#include "console/words.h"
#include "output.h"
#include "session.h"

#include <array>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace vymctl {
namespace {

class Terminal {
public:
    explicit Terminal(Session& session)
        : session_(session), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          out_(fdopen(dup(output().descriptor()), "w")),
          editor_(console::make_line_editor("vymctl", out_, complete)) {}
    ~Terminal() {
        editor_.reset();
        std::fclose(out_);
        close(wake_);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    Terminal(Terminal&&) = delete;
    Terminal& operator=(Terminal&&) = delete;

    int run() {
        int code = kDone;
        bool more = true;
        while (more) {
            hub().hold([this] { eventfd_write(wake_, 1); });
            editor_->show();
            more = wait_for_input(code);
        }
        editor_->hide();
        hub().release();
        return code;
    }

private:
    /// False at the end.
    bool wait_for_input(int& code) {
        if (hub().take_interrupt()) {
            code = kInterrupted;
            return false;
        }
        std::array<pollfd, 2> entries{{{STDIN_FILENO, POLLIN, 0}, {wake_, POLLIN, 0}}};
        const int ready = poll(entries.data(), entries.size(), -1);
        if (ready <= 0) {
            return true;
        }
        if (entries[1].revents != 0) {
            eventfd_t count = 0;
            eventfd_read(wake_, &count);
            editor_->hide();
            std::fputc('\n', out_);
            std::fflush(out_);
            hub().release();
            return true;
        }
        std::string line;
        switch (editor_->read(line)) {
        case console::LineEditor::Input::Nothing:
            return true;
        case console::LineEditor::Input::End:
            return false;
        case console::LineEditor::Input::Line:
            break;
        }
        hub().release();
        code = carry_out(line);
        return !session_.wants_to_end();
    }

    int carry_out(const std::string& line) {
        try {
            const Words words = console::split_words(line);
            return words.empty() ? kDone : session_.run(words);
        } catch (const console::Refused& error) {
            message(error.what());
            return kUsage;
        }
    }

    Session& session_;
    int wake_;
    std::FILE* out_;
    std::unique_ptr<console::LineEditor> editor_;
};

} // namespace

int run_prompt(Session& session) {
    session.be_at_prompt();
    session.connect();
    return Terminal(session).run();
}

} // namespace vymctl
