// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Who answers when a device wants to pair or to connect.
#ifndef VYM_VYMCTL_PAIRING_H
#define VYM_VYMCTL_PAIRING_H

#include "event.h"

namespace vymctl {

/// Throws Usage: accept, reject, ask, pin=<1 to 16 characters>.
void check_pairing_policy(const std::string& policy);

class Pairing {
public:
    /// An empty policy leaves requests to verbs.
    explicit Pairing(std::string policy) : policy_(std::move(policy)) {}
    void set_policy(std::string policy) { policy_ = std::move(policy); }
    const std::string& policy() const { return policy_; }

    static bool is_request(const Event& event);
    /// By the policy; false when the user is to be asked. Any thread may call.
    bool answer_by_policy(const Event& request) const;
    /// "2A:41:6E:6E:61:01 "Anna's phone" wants to pair and shows 123456".
    static std::string question(const Event& request);
    /// What the user types: yes, no, or a PIN or passkey. Throws Usage.
    static void answer(const Event& request, const std::string& reply);

private:
    std::string policy_;
};

} // namespace vymctl

#endif
