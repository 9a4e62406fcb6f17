// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Where events come together: what is known by them, who waits for them, who sees them.
#ifndef VYM_VYMCTL_HUB_H
#define VYM_VYMCTL_HUB_H

#include "event.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <set>

namespace vymctl {

using Deadline = std::chrono::steady_clock::time_point;

enum class Wait { Met, TimedOut, ServerGone, Interrupted, Asked };

class Hub {
public:
    /// What is shown of what happens, and to whom. Called one at a time, with the hub locked.
    using Sink = std::function<void(const Event&)>;

    void publish(const EventType& type, std::vector<Json> values);

    void show_to(Sink sink);
    /// Sees every event, until it is set anew.
    void watch_with(Sink watch);

    /// Keeps what is to be shown, and calls `wake` when there is something.
    void hold(std::function<void()> wake);
    /// Shows what was kept, and everything at once from now on.
    void release();

    /// Waits until `met`, which is called with the hub locked, whenever something has changed.
    Wait wait_until(Deadline deadline, const std::function<bool()>& met);
    /// Changes what somebody may wait for.
    void change(const std::function<void()>& action);

    /// With the hub locked: inside `met`, a sink or `action`.
    bool is_true(const Condition& condition);
    size_t count(const std::string& event) const;
    /// Whether the last event of the one name came after the last of the other.
    bool is_newer(const std::string& event, const std::string& than) const;

    /// As fields of the events so far had them.
    std::set<std::string> known(Kind kind);
    std::vector<Event> latest();

    void server_gone(bool gone);
    bool is_server_gone();
    void interrupt();
    /// True once for each interrupt.
    bool take_interrupt();
    /// Somebody wants an answer from the user.
    void ask(const Event& request);
    std::optional<Event> take_question();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Event> latest_;
    std::map<std::string, size_t> counts_;
    /// Which event of all the last one of a name was.
    std::map<std::string, size_t> places_;
    size_t all_ = 0;
    /// Of events without a test: how many an earlier wait has used up.
    std::map<std::string, size_t> used_;
    Sink sink_;
    Sink watch_;
    std::function<void()> wake_;
    std::deque<Event> held_;
    std::optional<Event> question_;
    bool gone_ = false;
    bool interrupted_ = false;
};

Hub& hub();

} // namespace vymctl

#endif
