// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "session.h"

#include "console/words.h"
#include "output.h"

#include <algorithm>
#include <iostream>
#include <poll.h>
#include <unistd.h>
#include <vym/vym_bluetooth.h>

namespace vymctl {
namespace {

constexpr const char* kPackets = "audio.packet";
constexpr const char* kNoPackets = "-audio.packet";

} // namespace

/// A function of the library on a thread of its own: it may never come back.
// NOLINTNEXTLINE(bugprone-exception-escape): see Outcome.
struct Session::Call {
    std::thread thread;
    bool done = false;
    Outcome outcome;
    std::exception_ptr error;

    /// It is waited for no longer.
    void give_up() {
        thread.detach();
        library().abandon();
    }
};

Session::Session(Options options) : options_(std::move(options)), pairing_(options_.pairing) {
    if (options_.pairing.empty() && isatty(STDIN_FILENO) != 0) {
        pairing_.set_policy("ask");
    }
    if (options_.events) {
        shown_.insert("*");
    }
    hub().watch_with([this](const Event& event) { see(event); });
    hub().show_to([this](const Event& event) {
        if (is_shown(event)) {
            show(event);
        }
    });
}

bool Session::is_shown(const Event& event) const {
    const std::string& name = event.type->name;
    if (quiet_) {
        return false;
    }
    if (shown_.count(name) > 0) {
        return true;
    }
    // The answer to our own question whether the server is there is no news.
    if (name == "adapter.version" && (confirming_ || shown_.count("*") == 0)) {
        return false;
    }
    const bool all = shown_.count("*") > 0 && !(name == kPackets && shown_.count(kNoPackets) > 0);
    return all || shown_.count(name.substr(0, name.find('.'))) > 0;
}

Session::~Session() {
    hub().watch_with({});
    hub().show_to({});
}

void Session::be_at_prompt() {
    // Fifty packets a second while somebody talks would leave no room for typing.
    if (shown_.insert("*").second) {
        shown_.insert(kNoPackets);
    }
}

void Session::connect() {
    // At the prompt the server may have been started anew.
    if (!library().is_started() || hub().is_server_gone()) {
        library().start(options_.directory, options_.capture);
    }
}

void Session::see(const Event& event) {
    if (ending_ != nullptr) {
        ending_->see(event);
    }
    if (collector_) {
        collector_(event);
    }
    if (working_ != nullptr && !quiet_ && event.type->name.rfind(working_->group + '.', 0) == 0) {
        ++seen_;
        Progress::show(working_->title() + ": " + std::to_string(seen_) +
                       (seen_ == 1 ? " event" : " events"));
    }
    if (!Pairing::is_request(event) || pairing_.answer_by_policy(event)) {
        return;
    }
    if (pairing_.policy() == "ask") {
        hub().ask(event);
    } else {
        message(Pairing::question(event) + " (--pairing says how to answer)");
    }
}

void Session::show(const Event& event) const {
    std::string time;
    if (show_time_ && !options_.json) {
        const std::time_t seconds = std::chrono::system_clock::to_time_t(event.time);
        std::tm local{};
        localtime_r(&seconds, &local);
        char text[16];
        std::strftime(text, sizeof text, "%H:%M:%S ", &local);
        time = text;
    }
    output().line(options_.json ? dump(event.json()) : time + event.text());
}

Session::Order Session::read(Words line, std::chrono::milliseconds timeout) {
    Order order;
    order.timeout = take_timeout(line, timeout);
    if (line.empty()) {
        throw Usage("a verb is missing (vymctl help lists them)");
    }
    for (const OwnVerb& own : own_verbs()) {
        if (own.name == line[0]) {
            order.own = &own;
            order.arguments.assign(line.begin() + 1, line.end());
            if (order.arguments.size() < own.least || order.arguments.size() > own.most) {
                throw Usage("it is: " + own.usage());
            }
            if (own.check != nullptr) {
                own.check(order.arguments);
            }
            return order;
        }
    }
    order.verb = line.size() > 1 ? find_verb(line[0], line[1]) : nullptr;
    if (order.verb == nullptr) {
        const auto known = std::find_if(profiles().begin(), profiles().end(),
                                        [&line](const Profile& one) { return one.name == line[0]; });
        if (known == profiles().end()) {
            throw Usage("there is no verb \"" + console::printable(line[0]) +
                        "\" (vymctl help lists them)");
        }
        throw Usage(
            line[0] +
            (line.size() > 1 ? " has no \"" + console::printable(line[1]) + '"' : " needs a verb") +
            " (vymctl help " + line[0] + " lists what it has)");
    }
    order.values = read_values(*order.verb, {line.begin() + 2, line.end()});
    return order;
}

int Session::run(const Words& line) {
    std::string what;
    try {
        has_time_ = options_.timeout_given || std::count(line.begin(), line.end(), "--timeout") > 0;
        const Order order = read(line, options_.timeout);
        what = order.own != nullptr ? order.own->name : order.verb->title();
        const Deadline deadline = std::chrono::steady_clock::now() + order.timeout;
        return order.own != nullptr ? (this->*order.own->run)(order.arguments, deadline)
                                    : carry_out(*order.verb, order.values, deadline);
    } catch (const Usage& error) {
        message(error.what());
        return kUsage;
    } catch (const NoServer& error) {
        message("no server: " + std::string(error.what()) + " (vymctl doctor tells more)");
        return kNoServer;
    }
}

std::shared_ptr<Session::Call> Session::start_call(std::function<Outcome()> function) {
    auto call = std::make_shared<Call>();
    call->thread = std::thread([call, function = std::move(function)] {
        Outcome outcome;
        std::exception_ptr error;
        try {
            outcome = function();
        } catch (...) {
            error = std::current_exception();
        }
        hub().change([&] {
            call->outcome = std::move(outcome);
            call->error = error;
            call->done = true;
        });
    });
    return call;
}

Wait Session::wait(Deadline deadline, const std::function<bool()>& met) {
    for (;;) {
        const Wait result = hub().wait_until(deadline, met);
        if (result != Wait::Asked) {
            return result;
        }
        put_question(deadline);
    }
}

void Session::put_question(Deadline deadline) {
    const std::optional<Event> request = hub().take_question();
    message(Pairing::question(request.value()));
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    std::string reply;
    if (poll(&input, 1, static_cast<int>(std::max<int64_t>(left.count(), 0))) == 1 &&
        std::getline(std::cin, reply)) {
        try {
            Pairing::answer(*request, reply);
        } catch (const Usage& error) {
            message(error.what());
            hub().change([&] { hub().ask(*request); });
        }
    }
}

int Session::failure(Wait wait, const std::string& what) const {
    switch (wait) {
    case Wait::ServerGone:
        message(what + ": the server has closed the connection");
        return kNoServer;
    case Wait::Interrupted:
        message(what + ": interrupted");
        hub().take_interrupt();
        return kInterrupted;
    default:
        message(what + ": timed out");
        return kTimedOut;
    }
}

int Session::carry_out(const Verb& verb, const Values& values, Deadline deadline) {
    if (!verb.local) {
        connect();
    }
    Ending ending(verb, values);
    bool shown = false;
    hub().change([&] {
        ending_ = &ending;
        shown = shown_.insert(verb.group).second;
    });
    const std::shared_ptr<Call> call =
        start_call([function = verb.call, copy = values]() mutable { return function(copy); });
    int code = kUsage;
    std::exception_ptr error;
    try {
        code = finish(verb, *call, ending, deadline);
    } catch (...) {
        error = std::current_exception();
    }
    hub().change([&] {
        ending_ = nullptr;
        if (shown) {
            shown_.erase(verb.group);
        }
    });
    if (error) {
        std::rethrow_exception(error);
    }
    Outcome outcome;
    hub().change([&] { outcome = call->outcome; });
    report(verb, code, outcome);
    return code;
}

int Session::finish(const Verb& verb, Call& call, const Ending& ending, Deadline deadline) {
    Wait result = wait(deadline, [&call] { return call.done; });
    if (result != Wait::Met) {
        call.give_up();
        return failure(result, verb.title());
    }
    call.thread.join();
    if (call.error) {
        std::rethrow_exception(call.error);
    }
    if (!call.outcome.refusal.empty()) {
        message(verb.title() + ": refused: " + call.outcome.refusal);
        return kFailed;
    }
    if (ending.is_empty()) {
        return verb.local ? kDone : confirm(deadline);
    }
    {
        const Progress progress;
        const auto work = [this](const Verb* which) {
            hub().change([&] {
                working_ = which;
                seen_ = 0;
            });
        };
        work(&verb);
        result = wait(deadline, [&ending] { return ending.verdict() != Ending::Verdict::Open; });
        work(nullptr);
    }
    if (result != Wait::Met) {
        return failure(result, verb.title() + ": waiting for " + ending.awaited());
    }
    if (ending.verdict() == Ending::Verdict::Failed) {
        message(verb.title() + ": failed: " + ending.event()->text());
        return kFailed;
    }
    return kDone;
}

/// Commands are carried out one after the other: when the server answers one more, it has taken those
/// before.
int Session::confirm(Deadline deadline) {
    // Without the adapter's module nobody would tell.
    if (!library().is_started() || !is_running("adapter")) {
        return kDone;
    }
    size_t before = 0;
    hub().change([&before] { before = hub().count("adapter.version"); });
    confirming_ = true;
    const std::shared_ptr<Call> call = start_call([] {
        vym_bluetooth_get_version();
        return Outcome{};
    });
    const Wait result = wait(
        deadline, [&call, before] { return call->done && hub().count("adapter.version") > before; });
    confirming_ = false;
    if (result != Wait::Met) {
        call->give_up();
        return failure(result, "waiting for the server to take the command");
    }
    call->thread.join();
    return kDone;
}

void Session::report(const Verb& verb, int code, const Outcome& outcome) const {
    if (quiet_) {
        return;
    }
    if (options_.json) {
        Json line{{"result", verb.group + '.' + verb.name}, {"code", code}};
        if (!outcome.refusal.empty()) {
            line["refusal"] = outcome.refusal;
        }
        if (!outcome.value.is_null() && code == kDone) {
            line["value"] = outcome.value;
        }
        output().line(dump(line));
        return;
    }
    const auto as_text = [](const Json& value) {
        std::string text;
        for (const auto& [name, member] : value.items()) {
            text += (text.empty() ? "" : " ") + name + '=' + to_word(member);
        }
        return text;
    };
    const Json list = outcome.value.is_array() ? outcome.value : Json::array({outcome.value});
    for (const Json& value : list) {
        if (value.is_null() || code != kDone) {
            continue;
        }
        if (value.is_object()) {
            output().line(as_text(value));
        } else {
            output().line(value.is_string() ? value.get<std::string>() : dump(value));
        }
    }
}

} // namespace vymctl
