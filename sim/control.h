// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The control language: lines become steps, and sessions carry steps out - at once, or when what they
// wait for has happened. A script, a client of the control socket and the prompt have a session each.
#ifndef VYM_SIM_CONTROL_H
#define VYM_SIM_CONTROL_H

#include "expectation.h"
#include "history.h"
#include "timer.h"
#include "verb.h"

#include <asio/io_context.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim {

/// One line, understood.
struct Step {
    enum class Kind { Verb, Wait, Expect, Client, NoClient, Pause };

    Kind kind = Kind::Verb;
    /// As it was written.
    std::string line;
    Order order;
    std::optional<Expectation> expectation;
    /// How long it may take, or lasts.
    std::chrono::milliseconds time{};
};

/// What a step came to.
struct Result {
    /// Why it failed; empty when it did not.
    std::string problem;
    /// For whoever asked; when it failed, more about why.
    std::vector<std::string> lines;
    /// To be called when the rest has been delivered.
    std::function<void()> afterwards;
};

/// From where on somebody looks at what happened: behind what was found last, and behind the last verb
/// that somebody may react to.
struct Mark {
    uint64_t command = 0;
    uint64_t event = 0;
};

class Session;

class Control {
public:
    using Lines = std::vector<std::pair<std::string, std::string>>;

    /// `client_here` says whether a client is connected.
    Control(asio::io_context& loop, World& world, std::function<bool()> client_here);

    /// Is told of each order before it is carried out, unless it only asks.
    void on_order(std::function<void(const std::string& line)> listener) {
        on_order_ = std::move(listener);
    }
    void add(std::vector<Verb> verbs) { verbs_.add(std::move(verbs)); }
    /// A comment and an empty line are no steps. Throws Refused.
    std::optional<Step> parse(std::string_view line) const;
    /// The words that the last, unfinished one may become; what needs quotes has them.
    std::vector<std::string> complete(std::string_view line) const;

    std::shared_ptr<Session> open_session(Mark& mark);
    /// The mark of those who are served by hand: what one asked for, the next may wait for.
    Mark& desk() { return desk_; }

    // What happens on the wire.

    /// Before the command is carried out.
    void command_came(std::string_view line);
    void event_sent(std::string_view text);
    /// Sessions look at what has happened. Not from within a module.
    void look();
    /// Whether somebody has said "pause".
    bool is_pausing() const;

private:
    friend class Session;

    bool any_session(bool (Session::*is_so)() const) const;
    Step parse_wait(std::vector<std::string> words) const;
    Lines help(const std::vector<std::string>& words) const;
    void give_help(Given& given) const;
    std::vector<std::string> candidates(const std::vector<std::string>& words) const;
    Result carry_out(const Step& step, Mark& mark);

    asio::io_context& loop_;
    World& world_;
    std::function<bool()> client_here_;
    std::function<void(const std::string& line)> on_order_;
    Verbs verbs_;
    History history_;
    Mark desk_;
    std::vector<std::weak_ptr<Session>> sessions_;
    bool look_posted_ = false;
};

/// Carries out one step at a time.
class Session {
public:
    using Done = std::function<void(Result)>;

    Session(Control& control, Mark& mark) : control_(control), mark_(mark), timer_(control.loop_) {}

    /// The result, when there is one at once; else `done` is called with it later.
    std::optional<Result> run(Step step, Done done);
    /// The step under way is forgotten.
    void cancel();
    bool is_busy() const { return step_.has_value(); }
    /// Whether what it waits for has happened.
    void look();
    bool waits_for_event() const;
    bool is_pausing() const { return step_ && step_->kind == Step::Kind::Pause; }

private:
    std::optional<Result> check();
    std::optional<Result> check_messages();
    void finish(Result result);
    Result time_is_up() const;
    Result failure(std::string problem, std::vector<std::string> lines) const;

    Control& control_;
    /// Moved on when something is found. Another session may share it and wait at the same time.
    Mark& mark_;
    Mark own_;
    Timer timer_;
    std::optional<Step> step_;
    Done done_;
};

} // namespace sim

#endif
