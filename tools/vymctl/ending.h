// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// When a verb is done: what its event has to say.
#ifndef VYM_VYMCTL_ENDING_H
#define VYM_VYMCTL_ENDING_H

#include "event.h"
#include "verb.h"

namespace vymctl {

/// The event that a verb of the table ends with, for one call of it.
class Ending {
public:
    enum class Verdict { Open, Done, Failed };

    /// Throws Usage and std::logic_error for a row that is wrong.
    Ending(const Verb& verb, const Values& values);

    /// Nothing to wait for.
    bool is_empty() const { return type_ == nullptr; }
    void see(const Event& event);
    Verdict verdict() const { return verdict_; }
    /// What decided.
    const std::optional<Event>& event() const { return event_; }
    std::string awaited() const { return is_empty() ? "" : type_->name; }

private:
    Verdict judge(const Event& event) const;

    const EventType* type_ = nullptr;
    /// It is the event of this call when these hold.
    std::vector<Test> mine_;
    std::vector<Test> good_;
    std::vector<Test> bad_;
    Verdict verdict_ = Verdict::Open;
    std::optional<Event> event_;
};

} // namespace vymctl

#endif
