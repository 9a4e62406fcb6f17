// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "control.h"

#include <algorithm>
#include <asio/post.hpp>

namespace sim {
namespace {

using protocol::Direction;

constexpr std::chrono::seconds kPatience{30};
constexpr size_t kShown = 8;

/// What is no verb of a module.
const Control::Lines kStatements{
    {"wait command NAME [FIELD=VALUE ...] [within SECONDS]",
     "wait until the client sends this command; others may come before it"},
    {"expect command NAME [FIELD=VALUE ...] [within SECONDS]",
     "the next command must be this one, in time (30 s)"},
    {"wait event NAME [FIELD=VALUE ...] [within SECONDS]",
     "wait until this event has been sent to the client"},
    {"expect event NAME [FIELD=VALUE ...] [within SECONDS]", "the next event must be this one"},
    {"wait client [within SECONDS]", "wait until a client is connected"},
    {"wait client gone [within SECONDS]", "wait until no client is connected"},
    {"pause SECONDS", "do nothing for that long (2s, 200ms)"},
};

bool begins_with(const std::string& text, const std::string& beginning) {
    return text.rfind(beginning, 0) == 0;
}

std::string joined(const std::vector<std::string>& words, size_t from) {
    std::string text;
    for (size_t i = from; i < words.size(); ++i) {
        text += (i > from ? " " : "") + words[i];
    }
    return text;
}

std::string in_seconds(std::chrono::milliseconds time) {
    const auto count = time.count();
    return count % 1000 == 0 ? std::to_string(count / 1000) + " s" : std::to_string(count) + " ms";
}

/// Takes "within SECONDS" off the end.
std::chrono::milliseconds take_limit(std::vector<std::string>& words) {
    if (words.back() == "within") {
        throw Refused("after \"within\": expected a time such as 5s, found the end of the line");
    }
    if (words.size() < 2 || words[words.size() - 2] != "within") {
        return kPatience;
    }
    const std::chrono::milliseconds limit = to_duration(words.back());
    words.resize(words.size() - 2);
    return limit;
}

uint64_t& place(Mark& mark, Direction direction) {
    return direction == Direction::Command ? mark.command : mark.event;
}

} // namespace

Control::Control(asio::io_context& loop, World& world, std::function<bool()> client_here)
    : loop_(loop), world_(world), client_here_(std::move(client_here)), verbs_(world) {
    add({{"help [TEXT]", "what can be said, or what begins so",
          [this](Given& given) { give_help(given); }, false}});
}

// Lines.

std::optional<Step> Control::parse(std::string_view line) const {
    std::vector<std::string> words = split_words(line);
    if (words.empty()) {
        return std::nullopt;
    }
    Step step;
    // Their text needs no quotes.
    if ((words.front() == "log" || words.front() == "help") && words.size() > 2) {
        words = {words.front(), joined(words, 1)};
    }
    if (words.front() == "wait" || words.front() == "expect") {
        step = parse_wait(std::move(words));
    } else if (words.front() == "pause") {
        if (words.size() != 2) {
            throw Refused("after \"pause\": expected one time such as 2s");
        }
        step.kind = Step::Kind::Pause;
        step.time = to_duration(words[1]);
    } else {
        step.order = verbs_.parse(words);
    }
    step.line = printable(line.substr(std::min(line.find_first_not_of(" \t"), line.size())), 200);
    return step;
}

Step Control::parse_wait(std::vector<std::string> words) const {
    Step step;
    step.time = take_limit(words);
    const bool is_wait = words.front() == "wait";
    const std::string what = words.size() < 2 ? "" : words[1];
    if (is_wait && what == "client") {
        const bool gone = words.size() == 3 && words[2] == "gone";
        if (words.size() > 2 && !gone) {
            throw Refused("after \"wait client\": expected gone, within or nothing more, found \"" +
                          printable(words[2]) + '"');
        }
        step.kind = gone ? Step::Kind::NoClient : Step::Kind::Client;
        return step;
    }
    if (what != "command" && what != "event") {
        const std::string found = what.empty() ? "the end of the line" : '"' + printable(what) + '"';
        throw Refused("after \"" + words.front() + "\": expected command" +
                      (is_wait ? ", event or client" : " or event") + ", found " + found);
    }
    step.kind = is_wait ? Step::Kind::Wait : Step::Kind::Expect;
    step.expectation.emplace(what == "command" ? Direction::Command : Direction::Event,
                             std::vector<std::string>(words.begin() + 2, words.end()), world_);
    return step;
}

// Help and completion.

Control::Lines Control::help(const std::vector<std::string>& words) const {
    Lines lines = verbs_.help(words);
    const std::string beginning = joined(words, 0);
    for (const auto& line : kStatements) {
        if (begins_with(line.first, beginning)) {
            lines.push_back(line);
        }
    }
    return lines;
}

void Control::give_help(Given& given) const {
    const Lines lines = help(given.has(0) ? split_words(given.text(0)) : std::vector<std::string>());
    if (lines.empty()) {
        throw Refused("nothing begins with \"" + printable(given.text(0)) +
                      "\"; help alone lists everything");
    }
    size_t width = 0;
    for (const auto& [usage, text] : lines) {
        width = std::max(width, usage.size());
    }
    for (const auto& [usage, text] : lines) {
        std::string line = usage;
        line.resize(width + 2, ' ');
        given.answer(line + text);
    }
}

std::vector<std::string> Control::candidates(const std::vector<std::string>& words) const {
    if (words.empty()) {
        std::vector<std::string> all = verbs_.continuations(words);
        all.insert(all.end(), {"expect", "pause", "wait"});
        return all;
    }
    const bool is_wait = words[0] == "wait";
    if (!is_wait && words[0] != "expect") {
        return verbs_.continuations(words);
    }
    if (words.size() == 1) {
        return is_wait ? std::vector<std::string>{"client", "command", "event"}
                       : std::vector<std::string>{"command", "event"};
    }
    if (words[1] != "command" && words[1] != "event") {
        return {"gone", "within"};
    }
    const Direction direction = words[1] == "command" ? Direction::Command : Direction::Event;
    if (words.size() == 2) {
        return Expectation::names(direction);
    }
    std::vector<std::string> all = Expectation::fields(direction, words[2]);
    all.emplace_back("within");
    return all;
}

std::vector<std::string> Control::complete(std::string_view line) const {
    std::vector<std::string> words;
    try {
        // An open quote belongs to the word that is to be completed.
        const bool open = std::count(line.begin(), line.end(), '"') % 2 != 0;
        words = split_words(std::string(line) + (open ? "\"" : ""));
        const bool begun = open || (!line.empty() && line.back() != ' ' && line.back() != '\t');
        words.resize(begun ? words.size() : words.size() + 1);
    } catch (const Refused&) {
        return {};
    }
    if (words.empty()) {
        return {};
    }
    const std::string begun = words.back();
    words.pop_back();
    std::vector<std::string> found;
    for (const std::string& candidate : candidates(words)) {
        if (begins_with(candidate, begun)) {
            const bool plain = candidate.find_first_of(" \t\"#") == std::string::npos;
            found.push_back(plain ? candidate : '"' + candidate + '"');
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

// What happens.

std::shared_ptr<Session> Control::open_session(Mark& mark) {
    sessions_.erase(std::remove_if(sessions_.begin(), sessions_.end(),
                                   [](const auto& session) { return session.expired(); }),
                    sessions_.end());
    auto session = std::make_shared<Session>(*this, mark);
    sessions_.push_back(session);
    return session;
}

void Control::command_came(std::string_view line) {
    constexpr std::string_view kPrefix = "AT#";
    const std::string_view text = line.substr(0, line.find_last_not_of("\r\n") + 1);
    history_.add(Direction::Command,
                 text.substr(0, kPrefix.size()) == kPrefix ? text.substr(kPrefix.size()) : text);
}

bool Control::any_session(bool (Session::*is_so)() const) const {
    return std::any_of(sessions_.begin(), sessions_.end(), [is_so](const auto& weak) {
        const std::shared_ptr<Session> session = weak.lock();
        return session && (*session.*is_so)();
    });
}

bool Control::is_pausing() const {
    return any_session(&Session::is_pausing);
}

void Control::event_sent(std::string_view text) {
    history_.add(Direction::Event, text);
    // A module is at work now; what a session does next may be another order to it.
    if (any_session(&Session::waits_for_event) && !look_posted_) {
        look_posted_ = true;
        asio::post(loop_, [this] {
            look_posted_ = false;
            look();
        });
    }
}

void Control::look() {
    // Sessions come and go while they do what they waited to do.
    const std::vector<std::weak_ptr<Session>> all = sessions_;
    for (const std::weak_ptr<Session>& weak : all) {
        if (const std::shared_ptr<Session> session = weak.lock()) {
            session->look();
        }
    }
}

Result Control::carry_out(const Step& step, Mark& mark) {
    const Order& order = step.order;
    if (order.verb->acts) {
        if (on_order_) {
            on_order_(step.line);
        }
        mark = {history_.next_number(), history_.next_number()};
    }
    Given given(world_, order.arguments);
    Result result;
    try {
        order.verb->run(given);
    } catch (const std::exception& error) {
        result.problem = error.what();
    }
    result.lines = given.lines();
    result.afterwards = given.afterwards();
    return result;
}

// Sessions.

std::optional<Result> Session::run(Step step, Done done) {
    if (step.kind == Step::Kind::Verb) {
        return control_.carry_out(step, mark_);
    }
    step_ = std::move(step);
    own_ = mark_;
    if (std::optional<Result> result = check()) {
        cancel();
        return result;
    }
    done_ = std::move(done);
    if (step_->kind == Step::Kind::Pause) {
        timer_.start(step_->time, [this] { finish({}); });
    } else {
        // The client has all the time of the real world, however fast that of the simulated one passes.
        timer_.start_real(step_->time, [this] { finish(time_is_up()); });
    }
    return std::nullopt;
}

void Session::cancel() {
    timer_.stop();
    step_.reset();
    done_ = nullptr;
}

void Session::look() {
    if (step_) {
        if (std::optional<Result> result = check()) {
            finish(std::move(*result));
        }
    }
}

bool Session::waits_for_event() const {
    return step_ && step_->expectation && step_->expectation->direction() == Direction::Event;
}

void Session::finish(Result result) {
    const Done done = std::move(done_);
    cancel();
    done(std::move(result));
}

std::optional<Result> Session::check() {
    switch (step_->kind) {
    case Step::Kind::Client:
    case Step::Kind::NoClient:
        if (control_.client_here_() == (step_->kind == Step::Kind::Client)) {
            return Result{};
        }
        return std::nullopt;
    case Step::Kind::Wait:
    case Step::Kind::Expect:
        return check_messages();
    default:
        return std::nullopt;
    }
}

std::optional<Result> Session::check_messages() {
    const Expectation& expectation = *step_->expectation;
    const Direction direction = expectation.direction();
    uint64_t& from = place(own_, direction);
    while (const History::Entry* entry = control_.history_.find(direction, from)) {
        // One that a wait has passed over counts no more: it came before what is waited for next.
        from = entry->number + 1;
        const std::string difference = expectation.difference(entry->text);
        if (difference.empty() || step_->kind == Step::Kind::Expect) {
            place(mark_, direction) = std::max(place(mark_, direction), from);
        }
        if (difference.empty()) {
            return Result{};
        }
        if (step_->kind == Step::Kind::Expect) {
            const std::string what = direction == Direction::Command ? "command" : "event";
            return failure(
                "another " + what + " came",
                {"came      " + in_words(direction, entry->text), "differs   " + difference});
        }
    }
    return std::nullopt;
}

Result Session::time_is_up() const {
    const std::string time = in_seconds(step_->time);
    if (!step_->expectation) {
        const bool here = step_->kind == Step::Kind::Client;
        return {std::string(here ? "no client came" : "the client did not leave") + " within " + time,
                {},
                {}};
    }
    return failure("it did not come within " + time, {});
}

Result Session::failure(std::string problem, std::vector<std::string> lines) const {
    const Expectation& expectation = *step_->expectation;
    const Direction direction = expectation.direction();
    lines.insert(lines.begin(), "expected  " + expectation.text());
    const std::vector<std::string> last = control_.history_.last(direction, kShown);
    const std::string what = direction == Direction::Command ? "commands" : "events";
    lines.push_back(last.empty() ? "there have been no " + what : "last " + what + ":");
    for (const std::string& line : last) {
        lines.push_back("  " + line);
    }
    return {std::move(problem), std::move(lines), {}};
}

} // namespace sim
