// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "hub.h"
#include "profiles.h"

#include <vym/vym_hfp.h>

namespace vymctl {

template <>
struct slot::Record<bluetooth_call_t> {
    static constexpr const char* kFields =
        "index direction=out|in "
        "state=active|held|dialing|alerting|incoming|waiting|held-by-phone|terminated "
        "conference=no|yes number=text";
    static void add(Collector& to, const bluetooth_call_t& call) {
        to.add(call.idx);
        to.add(call.direction);
        to.add(call.state);
        to.add(call.mpty);
        to.add(std::string(call.number));
    }
};

namespace {

using callbacks = hfp_callback_t;

/// The library sees a call only when the list that brought it is complete: while one is coming in, a
/// refusal may be too early.
bt_status_t once_listed(const std::function<bt_status_t()>& act) {
    constexpr auto kLongestList = std::chrono::seconds(2);
    size_t lists = 0;
    bool is_coming = false;
    hub().change([&] {
        lists = hub().count("hfp.calls");
        is_coming = hub().is_newer("hfp.call", "hfp.calls");
    });
    const bt_status_t status = act();
    if (status != BT_STATUS_FAIL || !is_coming) {
        return status;
    }
    hub().wait_until(std::chrono::steady_clock::now() + kLongestList,
                     [lists] { return hub().count("hfp.calls") > lists; });
    return act();
}

std::vector<Verb> verbs() {
    return {
        verb(
            "init", "vym_hfp_init", [] { restart("hfp"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_hfp_done", [] { halt("hfp"); }, "", "stops the module")
            .alone(),
        verb("connect", VYMCTL_CALL(vym_hfp_connect), "address", "connects to a phone",
             "hfp.connection state==ready !state==disconnected"),
        verb("disconnect", VYMCTL_CALL(vym_hfp_disconnect), "address", "ends the connection to a phone",
             "hfp.connection state==disconnected"),
        verb("audio-connect", VYMCTL_CALL(vym_hfp_connect_audio), "address",
             "moves the voice to this device", "hfp.audio state==connected !state==disconnected"),
        verb("audio-disconnect", VYMCTL_CALL(vym_hfp_disconnect_audio), "address",
             "moves the voice back to the phone", "hfp.audio state==disconnected"),
        verb("voice-start", VYMCTL_CALL(vym_hfp_start_voice_recognition), "",
             "starts the phone's voice recognition"),
        verb("voice-stop", VYMCTL_CALL(vym_hfp_stop_voice_recognition), "",
             "stops the phone's voice recognition"),
        verb("volume", VYMCTL_CALL(vym_hfp_volume_control), "type=speaker|microphone level=0..15",
             "tells the phone the volume"),
        verb("dial", VYMCTL_CALL(vym_hfp_dial), "number", "calls a number"),
        verb("dial-memory", VYMCTL_CALL(vym_hfp_dial_memory), "location",
             "calls a number from the phone's memory"),
        verb(
            "dtmf", "vym_hfp_send_dtmf",
            [](const std::string& tone) {
                if (tone.size() != 1) {
                    throw Usage("tone is one of 0 to 9, *, #, A to D");
                }
                return vym_hfp_send_dtmf(static_cast<uint8_t>(tone[0]));
            },
            "tone=text", "sends a tone"),
        verb("voice-tag", VYMCTL_CALL(vym_hfp_query_last_voice_tag_name), "",
             "asks for the number behind the last voice tag", "hfp.voice-tag"),
        verb("mute", VYMCTL_CALL(vym_hfp_switch_mic_state), "state=off|on", "mutes the microphone"),
        verb(
            "accept", "vym_hfp_accept_call",
            [](accept_flag_t other) {
                return once_listed([other] { return vym_hfp_accept_call({}, other); });
            },
            "other=none|hold|terminate?none",
            "accepts the call that rings or waits, or takes up one that is held"),
        verb(
            "reject", "vym_hfp_reject_call",
            [] { return once_listed([] { return vym_hfp_reject_call({}); }); }, "",
            "rejects the call that rings or waits, or releases one that is held"),
        verb(
            "hang-up", "vym_hfp_terminate_call",
            [](int index) {
                return once_listed([index] { return vym_hfp_terminate_call({}, index); });
            },
            "index=0..255?0", "ends a call; without an index whatever is active"),
    };
}

std::vector<EventRow> events() {
    return {
        on<&callbacks::connection_state_cb>(
            "hfp.connection",
            "state=disconnected|connecting|connected|ready phone_features call_hold_features address"),
        on<&callbacks::audio_state_cb>("hfp.audio", "state=disconnected|connecting|connected address"),
        on<&callbacks::vr_cmd_cb>("hfp.voice-recognition", "state=off|on"),
        on<&callbacks::network_state_cb>("hfp.network", "state=off|on"),
        on<&callbacks::network_roaming_cb>("hfp.roaming", "state=off|on"),
        on<&callbacks::network_signal_cb>("hfp.signal", "level"),
        on<&callbacks::battery_level_cb>("hfp.battery", "level"),
        on<&callbacks::current_operator_cb>("hfp.operator", "name"),
        on<&callbacks::resp_and_hold_cb>("hfp.response-and-hold", "state=held|accepted|rejected"),
        on<&callbacks::clip_cb>("hfp.caller", "number"),
        on<&callbacks::call_waiting_cb>("hfp.call-waiting", "number"),
        on<&callbacks::current_calls_cb>("hfp.call"),
        on<&callbacks::volume_change_cb>("hfp.volume", "type=speaker|microphone level"),
        on<&callbacks::subscriber_info_cb>("hfp.subscriber", "service number"),
        on<&callbacks::in_band_ring_tone_cb>("hfp.in-band-ring", "state=off|on"),
        on<&callbacks::last_voice_tag_number_cb>("hfp.voice-tag", "number"),
        on<&callbacks::ring_indication_cb>("hfp.ring"),
        on<&callbacks::ag_model_name_cb>("hfp.model", "name"),
        on<&callbacks::ag_manufacturer_id_cb>("hfp.manufacturer", "name"),
        on<&callbacks::call_action_complete_cb>("hfp.action", "command result"),
        on<&callbacks::standby_indication_cb>("hfp.standby"),
        on<&callbacks::ios_aplsiri_cb>("hfp.assistant", "state"),
        on<&callbacks::current_call_num_cb>("hfp.calls", "count"),
    };
}

} // namespace

Profile hfp_profile() {
    return make_profile<callbacks, vym_hfp_init, vym_hfp_done>("hfp", "Calls (hands-free unit)",
                                                               verbs(), events());
}

} // namespace vymctl
