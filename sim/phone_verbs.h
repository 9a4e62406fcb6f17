// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What happens at the phone and at the far ends of its calls.
#ifndef VYM_SIM_PHONE_VERBS_H
#define VYM_SIM_PHONE_VERBS_H

#include "calls.h"
#include "module.h"

#include <vector>

namespace sim {

/// What is needed of the hands-free gateway.
class Gateway {
public:
    virtual ~Gateway() = default;
    virtual Calls& calls() = 0;
    /// To be called after each change of the calls.
    virtual void calls_changed() = 0;
    virtual bool is_up() const = 0;
    /// Sends an event unless there is no connection.
    virtual void tell(const Event& event) = 0;
    virtual void recognise(bool on) = 0;
    virtual void move_audio(bool to_client) = 0;
};

class PhoneVerbs {
public:
    PhoneVerbs(Hub& hub, Gateway& gateway) : hub_(hub), gateway_(gateway) {}

    std::vector<Verb> verbs();

private:
    Phone& phone() { return hub_.world.phone; }
    std::vector<Verb> call_verbs();
    std::vector<Verb> status_verbs();
    void act(CallAction action, const char* refusal);
    void changed(bool done, const char* refusal);

    void call(Given& given);
    void answer();
    void alert();
    void hang_up(Given& given);
    void hold_by_response();
    void set_network(bool on);
    void set_voice_recognition(bool on);
    void set_volume(Given& given);
    void set_audio(bool to_client);

    Hub& hub_;
    Gateway& gateway_;
};

} // namespace sim

#endif
