// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "prompt.h"

#include "console/line_editor.h"

#include <asio/posix/stream_descriptor.hpp>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace sim {
namespace {

class Terminal : public Prompt {
public:
    Terminal(asio::io_context& loop, Control& control, std::function<void()> end)
        : control_(control), session_(control.open_session(control.desk())), end_(std::move(end)),
          // Its own copy: closing it must not close the program's standard input.
          input_(loop, dup(STDIN_FILENO)),
          editor_(console::make_line_editor(
              "vym-sim", stdout, [this](const std::string& line) { return control_.complete(line); })) {
        show_prompt();
        await_input();
    }

    ~Terminal() override { session_->cancel(); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    Terminal(Terminal&&) = delete;
    Terminal& operator=(Terminal&&) = delete;

private:
    void show_prompt() {
        std::cout << std::flush;
        editor_->show();
    }

    void await_input() {
        input_.async_wait(asio::posix::stream_descriptor::wait_read,
                          [this, alive = std::weak_ptr<int>(alive_)](const asio::error_code& error) {
                              if (!alive.expired() && !error && read()) {
                                  await_input();
                              }
                          });
    }

    /// False at the end of the input.
    bool read() {
        std::string line;
        switch (editor_->read(line)) {
        case console::LineEditor::Input::Nothing:
            return true;
        case console::LineEditor::Input::Line:
            carry_out(line);
            return true;
        case console::LineEditor::Input::End:
            end_();
            return false;
        }
        return false;
    }

    void carry_out(const std::string& line) {
        // A new line ends what the one before it waits for.
        session_->cancel();
        try {
            if (std::optional<Step> step = control_.parse(line)) {
                std::optional<Result> result =
                    session_->run(std::move(*step), [this](const Result& later) {
                        editor_->hide();
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

    Control& control_;
    std::shared_ptr<Session> session_;
    std::function<void()> end_;
    asio::posix::stream_descriptor input_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    std::unique_ptr<console::LineEditor> editor_;
};

} // namespace

std::unique_ptr<Prompt> make_prompt(asio::io_context& loop, Control& control,
                                    const std::function<void()>& end) {
    if (isatty(STDIN_FILENO) == 0) {
        throw std::runtime_error("--prompt needs a terminal as standard input; without one use "
                                 "--script - or vym-sim ctl");
    }
    return std::make_unique<Terminal>(loop, control, end);
}

} // namespace sim
