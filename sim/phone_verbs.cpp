// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_verbs.h"

#include <string>

namespace sim {
namespace {

void append(std::vector<Verb>& all, std::vector<Verb> more) {
    all.insert(all.end(), more.begin(), more.end());
}

} // namespace

std::vector<Verb> PhoneVerbs::verbs() {
    std::vector<Verb> all = call_verbs();
    append(all, status_verbs());
    return all;
}

std::vector<Verb> PhoneVerbs::call_verbs() {
    return {
        {"phone call DIGITS", "somebody calls the phone", [this](Given& given) { call(given); }},
        {"phone answer", "whoever is rung up answers: the far end, or else somebody at the phone",
         [this](Given&) { answer(); }},
        {"phone alert", "it rings at the far end", [this](Given&) { alert(); }},
        {"phone hang-up [INDEX=1..7]",
         "the far end of this call hangs up; without INDEX the one that rings, or the last one",
         [this](Given& given) { hang_up(given); }},
        {"phone reject", "somebody at the phone rejects or ends the call",
         [this](Given&) { act(CallAction::HangUp, "there is no call to reject or to end"); }},
        {"phone hold", "hold the conversation, or take it up again; a waiting caller is answered",
         [this](Given&) {
             act(CallAction::HoldActive, "there is no call to hold, or no place for it");
         }},
        {"phone swap", "change between the conversation and the call on hold",
         [this](Given&) {
             const Calls& calls = gateway_.calls();
             if (calls.count(CallState::Active) == 0 || calls.count(CallState::Held) == 0) {
                 throw Refused("swapping needs a conversation and a call on hold");
             }
             act(CallAction::HoldActive, "somebody else is calling");
         }},
        {"phone join", "the call on hold joins the conversation",
         [this](Given&) { act(CallAction::Join, "joining needs a conversation and a call on hold"); }},
        {"phone response-and-hold", "the incoming call is put on hold instead of being answered",
         [this](Given&) { hold_by_response(); }},
    };
}

std::vector<Verb> PhoneVerbs::status_verbs() {
    return {
        {"phone battery LEVEL=0..5", "its battery",
         [this](Given& given) {
             phone().battery = given.number(0);
             gateway_.tell(Event("HG").word(phone().battery));
         }},
        {"phone signal LEVEL=0..5", "the strength of its network",
         [this](Given& given) {
             phone().signal = given.number(0);
             gateway_.tell(Event("HF").word(phone().signal));
         }},
        {"phone roaming on|off", "whether it is in a foreign network",
         [this](Given& given) {
             phone().roaming = given.is_on(0);
             gateway_.tell(Event("HE").byte(phone().roaming ? 1 : 0));
         }},
        {"phone operator TEXT", "the name of its network",
         [this](Given& given) {
             phone().operator_name = given.text(0);
             gateway_.tell(Event("HH").text(phone().operator_name));
         }},
        {"phone network on|off", "whether it has a network; all calls end without",
         [this](Given& given) { set_network(given.is_on(0)); }},
        {"phone in-band-ring on|off", "whether its own ring tone is heard",
         [this](Given& given) {
             phone().in_band_ring = given.is_on(0);
             gateway_.tell(Event("HS").byte(phone().in_band_ring ? 1 : 0));
         }},
        {"phone voice-recognition on|off", "somebody at the phone starts or ends it",
         [this](Given& given) { set_voice_recognition(given.is_on(0)); }},
        {"phone volume speaker|microphone LEVEL=0..15", "somebody at the phone changes it",
         [this](Given& given) { set_volume(given); }},
        {"phone audio on|off", "somebody at the phone moves the sound to the client, or takes it back",
         [this](Given& given) { set_audio(given.is_on(0)); }},
    };
}

// Calls.

void PhoneVerbs::changed(bool done, const char* refusal) {
    if (!done) {
        throw Refused(refusal);
    }
    gateway_.calls_changed();
}

void PhoneVerbs::act(CallAction action, const char* refusal) {
    changed(gateway_.calls().act(static_cast<uint8_t>(action), 0), refusal);
}

void PhoneVerbs::call(Given& given) {
    if (!phone().network) {
        throw Refused("the phone has no network; \"phone network on\" comes first");
    }
    changed(gateway_.calls().ring(given.text(0)), "the line is busy: another call is being set up");
}

void PhoneVerbs::answer() {
    Calls& calls = gateway_.calls();
    if (calls.outgoing() == nullptr) {
        act(CallAction::Answer, "nobody is rung up");
        return;
    }
    // Each step of it is told.
    while (calls.outgoing() != nullptr) {
        calls.progress();
        gateway_.calls_changed();
    }
}

void PhoneVerbs::alert() {
    Calls& calls = gateway_.calls();
    changed(calls.first(CallState::Dialing) != nullptr && calls.progress(), "no call is being dialled");
}

void PhoneVerbs::hang_up(Given& given) {
    Calls& calls = gateway_.calls();
    const bool was_held = calls.first(CallState::HeldByResponse) != nullptr;
    const bool done = calls.leave(given.has(0) ? given.number(0) : uint8_t{0});
    if (!done) {
        throw Refused(given.has(0) ? "there is no call " + std::to_string(given.number(0))
                                   : std::string("there is no call"));
    }
    if (was_held && calls.first(CallState::HeldByResponse) == nullptr) {
        gateway_.tell(Event("HL").byte(2));
    }
    gateway_.calls_changed();
}

void PhoneVerbs::hold_by_response() {
    if (!gateway_.calls().hold_by_response()) {
        throw Refused("there is no incoming call");
    }
    gateway_.tell(Event("HL").byte(0));
    gateway_.calls_changed();
}

// Everything else.

void PhoneVerbs::set_network(bool on) {
    if (phone().network == on) {
        return;
    }
    phone().network = on;
    gateway_.tell(Event("HD").byte(on ? 1 : 0));
    while (!on && gateway_.calls().leave(0)) {
        gateway_.calls_changed();
    }
}

void PhoneVerbs::set_voice_recognition(bool on) {
    if (!gateway_.is_up()) {
        throw Refused("there is no hands-free connection");
    }
    if (on && !gateway_.calls().list().empty()) {
        throw Refused("there is a call; the phone has no ear for words now");
    }
    gateway_.recognise(on);
}

void PhoneVerbs::set_volume(Given& given) {
    if (!gateway_.is_up()) {
        throw Refused("there is no hands-free connection");
    }
    gateway_.tell(Event("HP").byte(given.text(0) == "speaker" ? 0 : 1).word(given.number(1)));
}

void PhoneVerbs::set_audio(bool to_client) {
    if (!gateway_.is_up()) {
        throw Refused("there is no hands-free connection");
    }
    if (gateway_.calls().list().empty()) {
        throw Refused("there is no call");
    }
    gateway_.move_audio(to_client);
}

} // namespace sim
