// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "calls.h"

#include <algorithm>

namespace sim {

const Call* Calls::first(CallState state) const {
    const auto it = std::find_if(calls_.begin(), calls_.end(),
                                 [state](const Call& call) { return call.state == state; });
    return it == calls_.end() ? nullptr : &*it;
}

Call* Calls::find(CallState state) {
    return const_cast<Call*>(first(state));
}

size_t Calls::count(CallState state) const {
    return static_cast<size_t>(std::count_if(
        calls_.begin(), calls_.end(), [state](const Call& call) { return call.state == state; }));
}

const Call* Calls::outgoing() const {
    const Call* dialing = first(CallState::Dialing);
    return dialing != nullptr ? dialing : first(CallState::Alerting);
}

const Call* Calls::ringing() const {
    const Call* incoming = first(CallState::Incoming);
    return incoming != nullptr ? incoming : first(CallState::Waiting);
}

bool Calls::in_setup() const {
    return outgoing() != nullptr || ringing() != nullptr || any(CallState::HeldByResponse);
}

void Calls::add(std::string number, bool incoming, CallState state) {
    uint8_t index = 1;
    auto place = calls_.begin();
    while (place != calls_.end() && place->index == index) {
        ++place;
        ++index;
    }
    calls_.insert(place, Call{index, incoming, state, false, std::move(number)});
}

void Calls::move(CallState from, CallState to) {
    for (Call& call : calls_) {
        if (call.state == from) {
            call.state = to;
        }
    }
}

bool Calls::release(CallState state) {
    const size_t before = calls_.size();
    calls_.erase(std::remove_if(calls_.begin(), calls_.end(),
                                [state](const Call& call) { return call.state == state; }),
                 calls_.end());
    return calls_.size() < before;
}

/// Every change ends here: what follows from it by itself.
bool Calls::settle(bool changed) {
    // The last conversation has ended: the caller who waited beside it now rings.
    if (calls_.size() == 1 && calls_.front().state == CallState::Waiting) {
        calls_.front().state = CallState::Incoming;
    }
    for (Call& call : calls_) {
        const bool group = call.state == CallState::Active || call.state == CallState::Held;
        call.multiparty = group && count(call.state) > 1;
    }
    return changed;
}

bool Calls::dial(std::string number) {
    // With a conversation and a call on hold there is no place to put the conversation.
    if (number.empty() || in_setup() || (any(CallState::Active) && any(CallState::Held))) {
        return false;
    }
    move(CallState::Active, CallState::Held);
    add(std::move(number), false, CallState::Dialing);
    return settle(true);
}

bool Calls::ring(std::string number) {
    if (in_setup() || calls_.size() >= kMost) {
        return false;
    }
    add(std::move(number), true, calls_.empty() ? CallState::Incoming : CallState::Waiting);
    return settle(true);
}

bool Calls::progress() {
    if (Call* alerting = find(CallState::Alerting)) {
        alerting->state = CallState::Active;
    } else if (Call* dialing = find(CallState::Dialing)) {
        dialing->state = CallState::Alerting;
    } else {
        return false;
    }
    return settle(true);
}

bool Calls::give_up() {
    const bool incoming = release(CallState::Incoming);
    return settle(release(CallState::Waiting) || incoming);
}

bool Calls::leave(uint8_t index) {
    if (index == 0 && !calls_.empty()) {
        const Call* one = ringing();
        one = one != nullptr ? one : outgoing();
        index = one != nullptr ? one->index : calls_.back().index;
    }
    const auto it = std::find_if(calls_.begin(), calls_.end(),
                                 [index](const Call& call) { return call.index == index; });
    if (it == calls_.end()) {
        return false;
    }
    calls_.erase(it);
    return settle(true);
}

bool Calls::hold_by_response() {
    Call* incoming = find(CallState::Incoming);
    if (incoming == nullptr) {
        return false;
    }
    incoming->state = CallState::HeldByResponse;
    return settle(true);
}

bool Calls::release_held() {
    // Where both could be meant, the waiting call is.
    return release(CallState::Waiting) || release(CallState::Held);
}

bool Calls::release_active() {
    // Nobody can be accepted beside a call that is being placed.
    if (outgoing() != nullptr) {
        return false;
    }
    const bool released = release(CallState::Active);
    if (any(CallState::Waiting)) {
        move(CallState::Waiting, CallState::Active);
        return true;
    }
    const bool held = any(CallState::Held);
    move(CallState::Held, CallState::Active);
    return released || held;
}

bool Calls::hold_active() {
    const bool active = any(CallState::Active);
    const bool held = any(CallState::Held);
    const bool waiting = any(CallState::Waiting);
    // There is one place on hold only.
    if (outgoing() != nullptr || !(active || held || waiting) || (active && held && waiting)) {
        return false;
    }
    if (waiting) {
        move(CallState::Active, CallState::Held);
        move(CallState::Waiting, CallState::Active);
        return true;
    }
    for (Call& call : calls_) {
        call.state = call.state == CallState::Active ? CallState::Held : CallState::Active;
    }
    return true;
}

bool Calls::join() {
    const size_t parties = count(CallState::Active) + count(CallState::Held);
    if (!any(CallState::Active) || !any(CallState::Held) || parties > kMostParties) {
        return false;
    }
    move(CallState::Held, CallState::Active);
    return true;
}

bool Calls::answer() {
    Call* ringing = find(CallState::Incoming);
    if (ringing == nullptr && !any(CallState::Active)) {
        ringing = find(CallState::Waiting);
    }
    if (ringing == nullptr) {
        return false;
    }
    ringing->state = CallState::Active;
    return true;
}

bool Calls::release_index(uint8_t index, bool only_active) {
    const auto it = std::find_if(calls_.begin(), calls_.end(),
                                 [index](const Call& call) { return call.index == index; });
    if (it == calls_.end() || (only_active && it->state != CallState::Active) ||
        it->state == CallState::Held || it->state == CallState::Waiting) {
        return false;
    }
    calls_.erase(it);
    return true;
}

bool Calls::hang_up(uint8_t index) {
    if (index != 0) {
        return release_index(index, false);
    }
    // Not a held or a waiting call: there are actions of their own for these.
    for (const CallState state : {CallState::Incoming, CallState::HeldByResponse, CallState::Dialing,
                                  CallState::Alerting, CallState::Active}) {
        if (release(state)) {
            return true;
        }
    }
    return false;
}

bool Calls::perform(CallAction action, uint8_t index) {
    switch (action) {
    case CallAction::ReleaseHeld:
        return release_held();
    case CallAction::ReleaseActive:
        return release_active();
    case CallAction::HoldActive:
        return hold_active();
    case CallAction::Join:
        return join();
    case CallAction::ReleaseOne:
        return release_index(index, true);
    case CallAction::Answer:
        return answer();
    case CallAction::HangUp:
        return hang_up(index);
    case CallAction::AcceptHeldByResponse:
        if (!any(CallState::HeldByResponse)) {
            return false;
        }
        move(CallState::HeldByResponse, CallState::Active);
        return true;
    case CallAction::RejectHeldByResponse:
        return release(CallState::HeldByResponse);
    }
    return false;
}

bool Calls::act(uint8_t action, uint8_t index) {
    return settle(perform(static_cast<CallAction>(action), index));
}

uint8_t Calls::call_indicator() const {
    const bool any_call =
        any(CallState::Active) || any(CallState::Held) || any(CallState::HeldByResponse);
    return any_call ? 1 : 0;
}

uint8_t Calls::setup_indicator() const {
    if (ringing() != nullptr) {
        return 1;
    }
    if (any(CallState::Dialing)) {
        return 2;
    }
    return any(CallState::Alerting) ? 3 : 0;
}

uint8_t Calls::held_indicator() const {
    if (!any(CallState::Held)) {
        return 0;
    }
    return any(CallState::Active) ? 1 : 2;
}

} // namespace sim
