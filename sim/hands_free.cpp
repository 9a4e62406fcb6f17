// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Hands-free: the phone as the audio gateway. The calls themselves are in calls.h; here are the time
// that passes in them, what the client hears of them, and its commands.
#include "calls.h"
#include "modules.h"
#include "phone_verbs.h"
#include "profile_link.h"

#include <algorithm>
#include <string>
#include <utility>

namespace sim {
namespace {

constexpr uint16_t kAudioGateway = 0x111F;

enum LinkCode : uint8_t { kDisconnected = 0, kConnecting = 1, kConnected = 2, kServiceLevel = 3 };
enum AudioCode : uint8_t { kAudioDown = 0, kAudioConnecting = 1, kAudioUp = 2 };

/// Three-way calling, voice recognition, in-band ring, voice tags, rejecting, call status and control.
constexpr uint32_t kFeatures = 0xFD;
/// Release held, release active and accept, release one, hold and accept, join.
constexpr uint32_t kCallHoldFeatures = 0x2F;

/// What a completion reports on. Clients know the number of the call list; the others differ from it.
enum Completed : uint8_t {
    kVoiceRecognition = 1,
    kVolume = 2,
    kDial = 3,
    kDialMemory = 4,
    kCallAction = 5,
    kOperator = 6,
    kSubscriber = 7,
    kTone = 8,
    kVoiceTag = 9,
    kFreeCommand = 10,
    kCallList = 21,
};

/// What the gateway as a whole is at.
enum GatewayState : uint8_t {
    kStandby = 5,
    kCallIncoming = 6,
    kCallOutgoing = 7,
    kCallActive = 8,
    kSeveralCalls = 9,
    kCallsHeld = 10,
};

constexpr uint8_t kMostVolume = 15;
constexpr uint8_t kServiceVoice = 1;

GatewayState gateway_state(const Calls& calls) {
    if (calls.list().empty()) {
        return kStandby;
    }
    if (calls.first(CallState::Incoming) != nullptr ||
        calls.first(CallState::HeldByResponse) != nullptr) {
        return kCallIncoming;
    }
    const size_t all = calls.list().size();
    if (calls.outgoing() != nullptr && all == 1) {
        return kCallOutgoing;
    }
    if (calls.count(CallState::Held) == all) {
        return kCallsHeld;
    }
    return calls.count(CallState::Active) == all ? kCallActive : kSeveralCalls;
}

bool is_dialable(const std::string& number) {
    return !number.empty() && number.find_first_not_of("0123456789*#+ABCD,;") == std::string::npos;
}

/// What the client was told last.
struct Shown {
    uint8_t call = 0;
    uint8_t setup = 0;
    uint8_t held = 0;
    GatewayState state = kStandby;
    std::vector<Call> calls;
};

std::vector<uint8_t> held_calls(const std::vector<Call>& calls) {
    std::vector<uint8_t> held;
    for (const Call& call : calls) {
        if (call.state == CallState::Held) {
            held.push_back(call.index);
        }
    }
    return held;
}

class HandsFree : public Module, private Gateway {
public:
    explicit HandsFree(Hub& hub)
        : Module(hub), link_(hub, "hands-free", kAudioGateway,
                             [this](const Address& a, ProfileLink::State s) { link_changed(a, s); }),
          verbs_(hub, *this), arrival_(hub.loop), far_end_(hub.loop), ring_(hub.loop),
          patience_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("HA", &HandsFree::connect),
            row("HB", &HandsFree::disconnect),
            row("HC", &HandsFree::connect_audio),
            row("HD", &HandsFree::disconnect_audio),
            row("HE", &HandsFree::start_voice_recognition),
            row("HF", &HandsFree::stop_voice_recognition),
            row("HG", &HandsFree::volume),
            row("HH", &HandsFree::dial),
            row("HI", &HandsFree::dial_memory),
            row("HJ", &HandsFree::call_action),
            row("HK", &HandsFree::list_calls),
            row("HL", &HandsFree::operator_name),
            row("HM", &HandsFree::subscriber),
            row("HN", &HandsFree::tone),
            row("HO", &HandsFree::voice_tag),
            row("HP", &HandsFree::free_command),
            row("HQ", &HandsFree::switch_hardware),
            row("HR", &HandsFree::mute),
        };
    }

    std::vector<Verb> verbs() override { return verbs_.verbs(); }
    void link_down(const Address& address) override { link_.lost(address); }

private:
    const Phone& phone() { return world().phone; }

    // For the verbs.

    Calls& calls() override { return calls_; }
    bool is_up() const override { return link_.is_up(); }
    void recognise(bool on) override { set_voice_recognition(on, link_.peer()); }
    void move_audio(bool to_client) override { set_audio(to_client, link_.peer()); }

    // The connection.

    void connect(Fields& fields) { link_.connect(fields); }
    void disconnect(Fields& fields) { link_.disconnect(fields); }

    void link_changed(const Address& address, ProfileLink::State state) {
        switch (state) {
        case ProfileLink::State::Connecting:
            report_link(address, kConnecting);
            break;
        case ProfileLink::State::Up:
            report_link(address, kConnected);
            report_link(address, kServiceLevel);
            report_phone();
            if (!std::exchange(greeted_, true)) {
                connected_anew();
            }
            break;
        case ProfileLink::State::Down:
            // Not when it is only a second device that was refused.
            if (!link_.is_up()) {
                set_voice_recognition(false, address);
                set_audio(false, address);
                arrival_.stop();
                greeted_ = false;
            }
            report_link(address, kDisconnected);
            break;
        }
    }

    void report_link(const Address& address, LinkCode code) {
        const bool ready = code == kServiceLevel;
        send(Event("HA")
                 .byte(code)
                 .dword(ready ? kFeatures : 0)
                 .dword(ready ? kCallHoldFeatures : 0)
                 .address(address));
    }

    /// Everything that the indicators say now; nothing of it need have changed.
    void report_phone() {
        send(Event("HV").text(phone().model));
        send(Event("HW").text(phone().manufacturer));
        send(Event("HS").byte(phone().in_band_ring ? 1 : 0));
        send(Event("HD").byte(phone().network ? 1 : 0));
        send(Event("HE").byte(phone().roaming ? 1 : 0));
        send(Event("HF").word(phone().signal));
        send(Event("HG").word(phone().battery));
        shown_ = current();
        send(Event("HI").byte(shown_.call));
        send(Event("HJ").byte(shown_.setup));
        send(Event("HK").byte(shown_.held));
        send(Event("HX").byte(shown_.state));
    }

    /// Sends what only a connected client may hear.
    void tell(const Event& event) override {
        if (link_.is_up()) {
            send(event);
        }
    }

    /// Every command that goes to the phone ends with its "OK" or "ERROR".
    void complete(Completed command, bool done) {
        send(Event("HQ").byte(done ? kSuccess : kFail).byte(command));
    }

    /// Whether the phone can be asked at all; if not, the command is completed here.
    bool reaches_phone(Completed command) {
        if (!link_.is_up()) {
            hub().log.note("refused: no hands-free connection");
            complete(command, false);
        }
        return link_.is_up();
    }

    // Call audio and voice recognition.

    void set_audio(bool up, const Address& address) {
        bool& audio = world().phone.call_audio;
        if (audio == up) {
            return;
        }
        audio = up;
        if (up) {
            report_audio(address, kAudioConnecting);
        }
        report_audio(address, up ? kAudioUp : kAudioDown);
    }

    void report_audio(const Address& address, AudioCode code) {
        send(Event("HB").byte(code).address(address));
    }

    void connect_audio(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (!link_.is_up() || link_.peer() != address) {
            hub().log.note("no call audio: no hands-free connection to " + to_string(address));
            report_audio(address, kAudioDown);
        } else if (phone().call_audio) {
            report_audio(address, kAudioUp);
        } else {
            set_audio(true, address);
        }
    }

    void disconnect_audio(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (phone().call_audio && link_.peer() == address) {
            set_audio(false, address);
        } else {
            report_audio(address, kAudioDown);
        }
    }

    void set_voice_recognition(bool on, const Address& address) {
        if (recognising_ == on) {
            return;
        }
        recognising_ = on;
        send(Event("HC").byte(on ? 1 : 0));
        set_audio(on || wants_audio(), address);
    }

    void start_voice_recognition(Fields& fields) {
        fields.end();
        if (!reaches_phone(kVoiceRecognition)) {
            return;
        }
        // In a call the phone has no ear for commands.
        const bool can = calls_.list().empty() && !recognising_;
        complete(kVoiceRecognition, can);
        if (can) {
            set_voice_recognition(true, link_.peer());
        }
    }

    void stop_voice_recognition(Fields& fields) {
        fields.end();
        if (reaches_phone(kVoiceRecognition)) {
            complete(kVoiceRecognition, recognising_);
            set_voice_recognition(false, link_.peer());
        }
    }

    void volume(Fields& fields) {
        const uint8_t type = fields.byte("type");
        const uint16_t level = fields.word("volume");
        fields.end();
        if (!reaches_phone(kVolume)) {
            return;
        }
        // Type 0 is the loudspeaker, 1 the microphone.
        const bool good = type <= 1 && level <= kMostVolume;
        complete(kVolume, good);
        if (good) {
            send(Event("HP").byte(type).word(level));
        }
    }

    // Calls.

    void dial(Fields& fields) {
        const std::string number = fields.rest();
        if (reaches_phone(kDial)) {
            // An empty number dials the last one again.
            place(number.empty() ? last_dialled_ : number, kDial);
        }
    }

    void dial_memory(Fields& fields) {
        const uint8_t location = fields.byte("location");
        fields.end();
        if (reaches_phone(kDialMemory)) {
            const std::vector<std::string>& memory = phone().memory;
            const bool known = location >= 1 && location <= memory.size();
            place(known ? memory[location - 1U] : std::string(), kDialMemory);
        }
    }

    void place(const std::string& number, Completed command) {
        const bool placed = phone().network && is_dialable(number) && calls_.dial(number);
        complete(command, placed);
        if (placed) {
            last_dialled_ = number;
            calls_changed();
        } else {
            hub().log.note("no call to \"" + printable(number, 40) + '"');
        }
    }

    void call_action(Fields& fields) {
        const uint8_t action = fields.byte("action");
        const uint8_t index = fields.byte("index");
        fields.end();
        if (!reaches_phone(kCallAction)) {
            return;
        }
        const bool from_hold = calls_.first(CallState::HeldByResponse) != nullptr;
        const bool done = calls_.act(action, index);
        complete(kCallAction, done);
        if (!done) {
            hub().log.note("call action " + std::to_string(action) + " does not fit the calls");
            return;
        }
        if (from_hold) {
            const bool accepted = !calls_.list().empty();
            send(Event("HL").byte(accepted ? 1 : 2));
        }
        calls_changed();
    }

    void list_calls(Fields& fields) {
        fields.end();
        if (!reaches_phone(kCallList)) {
            return;
        }
        for (const Call& call : calls_.list()) {
            send(Event("HO")
                     .byte(call.index)
                     .byte(call.incoming ? 1 : 0)
                     .byte(static_cast<uint8_t>(call.state))
                     .byte(call.multiparty ? 1 : 0)
                     .text(call.number));
        }
        complete(kCallList, true);
    }

    Shown current() const {
        return {calls_.call_indicator(), calls_.setup_indicator(), calls_.held_indicator(),
                gateway_state(calls_), calls_.list()};
    }

    void calls_changed() override {
        const Shown before = std::exchange(shown_, current());
        report_change(before);
        update_audio(before);
        update_timers();
    }

    void report_change(const Shown& before) {
        bool told = false;
        const auto indicator = [this, &told](const char* tag, uint8_t value) {
            tell(Event(tag).byte(value));
            told = true;
        };
        if (before.call != shown_.call) {
            indicator("HI", shown_.call);
        }
        if (before.setup != shown_.setup) {
            indicator("HJ", shown_.setup);
        }
        // Two calls that changed places leave the indicator as it was, and it is told all the same.
        if (before.held != shown_.held || held_calls(before.calls) != held_calls(shown_.calls)) {
            indicator("HK", shown_.held);
        }
        // A change that moves no indicator would not be noticed otherwise.
        if (before.state != shown_.state || (!told && !(before.calls == shown_.calls))) {
            tell(Event("HX").byte(shown_.state));
        }
    }

    bool wants_audio() { return wants_audio(calls_.list()); }

    bool wants_audio(const std::vector<Call>& calls) {
        const bool ring = phone().in_band_ring;
        return std::any_of(calls.begin(), calls.end(), [ring](const Call& call) {
            return call.state == CallState::Active || call.state == CallState::Dialing ||
                   call.state == CallState::Alerting || (ring && call.state == CallState::Incoming);
        });
    }

    /// Audio comes with the first call that needs it and goes with the last call; in between the client
    /// may have moved it away.
    void update_audio(const Shown& before) {
        if (!link_.is_up()) {
            return;
        }
        if (!shown_.calls.empty()) {
            set_voice_recognition(false, link_.peer());
        }
        if (shown_.calls.empty()) {
            set_audio(recognising_, link_.peer());
        } else if (wants_audio() && !wants_audio(before.calls)) {
            set_audio(true, link_.peer());
        }
    }

    // The time that passes.

    void update_timers() {
        if (calls_.outgoing() == nullptr) {
            far_end_.stop();
        } else if (progressing_ != calls_.outgoing()->state) {
            far_end_.start(hub().pace.call_step, [this] { far_end_acts(); });
        }
        progressing_ = calls_.outgoing() == nullptr ? CallState::Active : calls_.outgoing()->state;
        const Call* ringing = calls_.ringing();
        const bool rings = ringing != nullptr && ringing->state == CallState::Incoming;
        if (rings != rings_) {
            rings_ = rings;
            if (rings) {
                ring_once();
            } else {
                ring_.stop();
            }
        }
        if (ringing == nullptr) {
            patience_.stop();
        } else if (!caller_waits_) {
            begin_patience(*ringing);
        }
        caller_waits_ = ringing != nullptr;
    }

    void far_end_acts() {
        const FarEnd far_end = phone().far_end;
        if (far_end == FarEnd::IsBusy) {
            hub().log.note("the number is busy");
            calls_.act(static_cast<uint8_t>(CallAction::HangUp), 0);
        } else if (far_end == FarEnd::Answers || calls_.outgoing()->state == CallState::Dialing) {
            calls_.progress();
        }
        calls_changed();
    }

    void ring_once() {
        tell(Event("HU"));
        tell(Event("HM").text(calls_.ringing()->number));
        ring_.start(hub().pace.ring_period, [this] { ring_once(); });
    }

    void begin_patience(const Call& ringing) {
        if (ringing.state == CallState::Waiting) {
            tell(Event("HN").text(ringing.number));
        }
        patience_.start(hub().pace.ring_timeout, [this] {
            hub().log.note("the caller gives up");
            calls_.give_up();
            calls_changed();
        });
    }

    void connected_anew() {
        // A call that goes on is heard here from now on.
        if (wants_audio()) {
            set_audio(true, link_.peer());
        }
        if (phone().ring_after) {
            arrival_.start(*phone().ring_after, [this] { ring(phone().ring_number); });
        }
    }

    void ring(const std::string& number) {
        if (phone().network && calls_.ring(number)) {
            calls_changed();
        } else {
            hub().log.note("the line is busy for " + printable(number, 40));
        }
    }

    // Questions and the rest.

    void operator_name(Fields& fields) {
        fields.end();
        if (reaches_phone(kOperator)) {
            send(Event("HH").text(phone().operator_name));
            complete(kOperator, true);
        }
    }

    void subscriber(Fields& fields) {
        fields.end();
        if (reaches_phone(kSubscriber)) {
            send(Event("HR").byte(kServiceVoice).text(phone().subscriber));
            complete(kSubscriber, true);
        }
    }

    void tone(Fields& fields) {
        const auto code = static_cast<char>(fields.byte("code"));
        fields.end();
        if (!reaches_phone(kTone)) {
            return;
        }
        const bool good = std::string_view("0123456789*#ABCD").find(code) != std::string_view::npos &&
                          calls_.first(CallState::Active) != nullptr;
        hub().log.note(std::string(good ? "tone " : "no call for the tone ") +
                       printable(std::string_view(&code, 1)));
        complete(kTone, good);
    }

    void voice_tag(Fields& fields) {
        fields.end();
        if (!reaches_phone(kVoiceTag)) {
            return;
        }
        const bool known = !phone().voice_tag_number.empty();
        if (known) {
            send(Event("HT").text(phone().voice_tag_number));
        }
        complete(kVoiceTag, known);
    }

    void free_command(Fields& fields) {
        const uint16_t command = fields.word("command");
        const uint16_t first = fields.word("first value");
        const uint16_t second = fields.word("second value");
        const std::string text = fields.rest();
        if (reaches_phone(kFreeCommand)) {
            hub().log.note("the phone does not know command " + std::to_string(command) + " (" +
                           std::to_string(first) + ", " + std::to_string(second) + ", \"" +
                           printable(text, 40) + "\")");
            complete(kFreeCommand, false);
        }
    }

    void switch_hardware(Fields& fields) {
        const bool on = fields.byte("on") != 0;
        fields.end();
        hub().log.note(std::string("call audio hardware ") + (on ? "on" : "off"));
    }

    void mute(Fields& fields) {
        const bool muted = fields.byte("mute") != 0;
        fields.end();
        hub().log.note(std::string("microphone ") + (muted ? "muted" : "open"));
    }

    ProfileLink link_;
    Calls calls_;
    PhoneVerbs verbs_;
    Shown shown_;
    std::string last_dialled_;
    bool recognising_ = false;
    /// Whether this connection has been reported before.
    bool greeted_ = false;

    /// Somebody is about to call.
    Timer arrival_;
    /// The far end of the call that is being placed.
    Timer far_end_;
    CallState progressing_ = CallState::Active;
    Timer ring_;
    bool rings_ = false;
    /// The caller's.
    Timer patience_;
    bool caller_waits_ = false;
};

} // namespace

std::unique_ptr<Module> make_hands_free(Hub& hub) {
    return std::make_unique<HandsFree>(hub);
}

} // namespace sim
