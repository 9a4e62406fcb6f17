// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <vym/vym_hid.h>

namespace vymctl {
namespace {

using callbacks = hid_callback_t;

Outcome register_app(uint8_t subclass, std::string name, std::string description, std::string provider,
                     std::string descriptor, std::string in_qos, std::string out_qos) {
    const auto bytes = [](std::string& text) { return reinterpret_cast<uint8_t*>(text.data()); };
    const auto size = [](const std::string& text) { return static_cast<uint16_t>(text.size()); };
    return status_outcome(vym_hid_register_app(subclass, size(name), bytes(name), size(description),
                                               bytes(description), size(provider), bytes(provider),
                                               size(descriptor), bytes(descriptor), size(in_qos),
                                               bytes(in_qos), size(out_qos), bytes(out_qos)));
}

std::vector<Verb> verbs() {
    return {
        verb(
            "init", "vym_hid_init", [] { restart("hid"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_hid_done", [] { halt("hid"); }, "", "stops the module")
            .alone(),
        verb("register", "vym_hid_register_app", &register_app,
             "subclass=keyboard:0x40|pointer:0x80 name=text description=text provider=text descriptor "
             "in_qos? out_qos?",
             "registers this device with its report descriptor", "hid.application state==registered"),
        verb("unregister", VYMCTL_CALL(vym_hid_unregister_app), "", "takes the registration back",
             "hid.application state==unregistered"),
        verb("report", VYMCTL_CALL(vym_hid_send_report), "type=input:1|output|feature id=0..255 report",
             "sends a report to the host"),
        verb("error", VYMCTL_CALL(vym_hid_report_error_impl), "code", "refuses the host's request"),
        verb("unplug", VYMCTL_CALL(vym_hid_unplug_impl), "", "ends the host's relation to this device"),
        verb("connect", VYMCTL_CALL(vym_hid_connect), "address", "connects to a host",
             "hid.connection state==connected !state==disconnected"),
        verb("disconnect", VYMCTL_CALL(vym_hid_disconnect), "", "ends the connection to the host",
             "hid.connection state==disconnected"),
    };
}

std::vector<EventRow> events() {
    return {
        on<&callbacks::application_state_changed_cb>("hid.application",
                                                     "address state=unregistered|registered"),
        on<&callbacks::hid_connection_state_cb>(
            "hid.connection", "address state=connected|connecting|disconnected|disconnecting"),
    };
}

} // namespace

Profile hid_profile() {
    return make_profile<callbacks, vym_hid_init, vym_hid_done>("hid", "Keyboard or mouse (HID device)",
                                                               verbs(), events());
}

} // namespace vymctl
