// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The calls of a phone, as a state machine without time: what the far ends and the hands-free side do
// to them, and the indicators that follow.
#ifndef VYM_SIM_CALLS_H
#define VYM_SIM_CALLS_H

#include <cstdint>
#include <string>
#include <vector>

namespace sim {

enum class CallState : uint8_t {
    Active = 0,
    Held = 1,
    Dialing = 2,
    Alerting = 3,
    Incoming = 4,
    Waiting = 5,
    HeldByResponse = 6, // an incoming call that was put on hold instead of being answered
};

struct Call {
    /// Counts from 1; a freed index is used again.
    uint8_t index;
    bool incoming;
    CallState state;
    bool multiparty;
    std::string number;

    bool operator==(const Call& other) const {
        return index == other.index && incoming == other.incoming && state == other.state &&
               multiparty == other.multiparty && number == other.number;
    }
};

/// What the hands-free side may ask for.
enum class CallAction : uint8_t {
    ReleaseHeld = 0,   // or reject the waiting call
    ReleaseActive = 1, // and accept the waiting or held one
    HoldActive = 2,    // and accept the waiting or held one
    Join = 3,          // the held call joins the conversation
    ReleaseOne = 5,    // the active call with the given index
    Answer = 7,
    HangUp = 8,
    AcceptHeldByResponse = 10,
    RejectHeldByResponse = 11,
};

class Calls {
public:
    /// The usual limit of networks: a conversation of five, one call on hold, one waiting.
    static constexpr size_t kMost = 7;
    static constexpr size_t kMostParties = 5;

    const std::vector<Call>& list() const { return calls_; }
    /// The call in this state with the lowest index, or nullptr.
    const Call* first(CallState state) const;
    size_t count(CallState state) const;
    /// A call that is placed and not yet answered, or nullptr.
    const Call* outgoing() const;
    /// A call that somebody lets ring, in either state, or nullptr.
    const Call* ringing() const;

    // Each of these returns false and changes nothing when it cannot be.
    bool dial(std::string number);
    /// Somebody calls.
    bool ring(std::string number);
    /// The far end of the outgoing call goes a step on: it rings, it answers.
    bool progress();
    /// The caller gives up.
    bool give_up();
    /// The far end of a call hangs up, whatever the call's state. Without an index it is the one that
    /// rings or is placed, else the one with the highest index.
    bool leave(uint8_t index);
    /// The phone's own side puts the incoming call on hold.
    bool hold_by_response();
    /// `index` counts only where the action takes one; 0 is none.
    bool act(uint8_t action, uint8_t index);

    // The indicators of the hands-free profile.
    uint8_t call_indicator() const;
    uint8_t setup_indicator() const;
    uint8_t held_indicator() const;

private:
    Call* find(CallState state);
    bool any(CallState state) const { return first(state) != nullptr; }
    /// A call is being placed, rings, or was held instead of answered: no second one can be set up.
    bool in_setup() const;
    void add(std::string number, bool incoming, CallState state);
    void move(CallState from, CallState to);
    bool release(CallState state);
    bool release_index(uint8_t index, bool only_active);
    bool settle(bool changed);

    bool release_held();
    bool release_active();
    bool hold_active();
    bool join();
    bool answer();
    bool hang_up(uint8_t index);
    bool perform(CallAction action, uint8_t index);

    /// By index.
    std::vector<Call> calls_;
};

} // namespace sim

#endif
