// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The library itself: its start and stop, its internal messages, its capture.
#include "library.h"
#include "output.h"
#include "profiles.h"

#include <thread>
#include <vym/internal_ev_process.h>
#include <vym/vym_debug.h>
#include <vym/vym_sdk.h>

namespace vymctl {
namespace {

void on_internal(ev_data_t* message) {
    const size_t size = std::min<size_t>(message->len, VYM_INTERNAL_EVENT_MAX_LEN);
    publish(event_type("core.message"),
            {message->type, to_hex({reinterpret_cast<const char*>(message->value), size})});
}

/// The library takes what it is given as writable.
unsigned char* data_of(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

/// Throws Usage when there is less than the packet's own header says: the library reads as much.
void check_packet(const std::string& packet, size_t length_at, size_t length_size) {
    size_t size = length_at + length_size;
    for (size_t i = 0; packet.size() >= length_at + length_size && i < length_size; ++i) {
        size += static_cast<size_t>(static_cast<unsigned char>(packet[length_at + i])) << (8 * i);
    }
    if (packet.size() < size) {
        throw Usage("the packet has " + std::to_string(packet.size()) + " bytes, but needs " +
                    std::to_string(size) + " by its own header");
    }
}

struct PacketType {
    size_t length_at;
    size_t length_size;
};
// Command, ACL, SCO, event: behind the type byte.
constexpr PacketType kPackets[] = {{2, 1}, {2, 2}, {2, 1}, {1, 1}};

void capture(std::string packet, uint8_t received) {
    const size_t type = packet.empty() ? 0 : static_cast<unsigned char>(packet[0]);
    if (type < 1 || type > std::size(kPackets)) {
        throw Usage("the packet begins with its type: 01 command, 02 ACL, 03 SCO, 04 event");
    }
    check_packet(packet.substr(1), kPackets[type - 1].length_at, kPackets[type - 1].length_size);
    vym_debug_capture(data_of(packet), static_cast<uint32_t>(packet.size()), received);
}

/// A row for one of the four writers of packets.
template <typename F>
Verb packet_verb(const char* name, const char* function, F write, size_t type) {
    return verb(
               name, function,
               [write, type](std::string packet, uint8_t received) {
                   check_packet(packet, kPackets[type].length_at, kPackets[type].length_size);
                   write(data_of(packet), received);
               },
               "packet direction=sent|received?sent", "appends such a packet to the capture")
        .alone();
}

Outcome open_log(std::string path) {
    return vym_debug_log_open(path.data()) == 1 ? Outcome{} : Outcome{"the file cannot be opened", {}};
}

Outcome send_message(uint8_t type, std::string value) {
    const int sent = vym_internal_event_send(type, static_cast<uint8_t>(value.size()), value.data());
    return sent == 1 ? Outcome{} : Outcome{"not sent: the library is not started", {}};
}

Outcome hex(std::string bytes) {
    return {"", printed_by([&bytes] { hex_dump(data_of(bytes), bytes.size()); })};
}

void start_parser() {
    // It ends in its own time, or with the process.
    library().abandon();
    std::thread(ext_parser_thread, nullptr).detach();
}

std::vector<Verb> library_verbs() {
    return {
        verb(
            "init", "vym_sdk_init", [] { return library().start_as_an_application(nullptr); }, "",
            "starts the library with the server's own directory")
            .alone(),
        verb(
            "init-in", "vym_sdk_init_ex",
            [](const std::string& dir) { return library().start_as_an_application(dir.c_str()); },
            "directory=text", "starts the library with this directory, its capture included")
            .alone(),
        verb(
            "done", "vym_sdk_done", [] { library().stop(); }, "", "shuts the library down")
            .alone(),
        verb("message-init", VYMCTL_CALL(vym_internal_event_init), "",
             "prepares the channel of internal messages")
            .alone(),
        verb("message-done", VYMCTL_CALL(vym_internal_event_done), "", "closes it").alone(),
        verb(
            "message-listen", "vym_internal_event_register",
            [] { vym_internal_event_register(on_internal); }, "", "has core.message tell messages")
            .alone(),
        verb(
            "message-ignore", "vym_internal_event_unregister",
            [] { vym_internal_event_unregister(on_internal); }, "", "ends that")
            .alone(),
        verb("message", "vym_internal_event_send", &send_message, "type value?", "sends a message")
            .alone(),
    };
}

std::vector<Verb> capture_verbs() {
    return {
        verb("debug-init", VYMCTL_CALL(vym_debug_init), "", "sets the debug status to 1").alone(),
        verb("debug-cleanup", VYMCTL_CALL(vym_debug_cleanup), "", "sets the debug status to 0").alone(),
        verb("debug-status", VYMCTL_CALL(get_vym_debug_status), "", "shows the debug status").alone(),
        verb("set-debug-status", VYMCTL_CALL(set_vym_debug_status), "status", "sets the debug status")
            .alone(),
        verb(
            "capture", "vym_debug_open", [](std::string path) { vym_debug_open(path.data()); },
            "file=text", "captures the traffic in a file")
            .alone(),
        verb("capture-close", VYMCTL_CALL(vym_debug_close), "", "ends the capture").alone(),
        verb("log-open", "vym_debug_log_open", &open_log, "file=text",
             "captures in a file, or says that it cannot")
            .alone(),
        verb(
            "log-close", "vym_debug_log_close",
            [] {
                return vym_debug_log_close() == 1 ? Outcome{} : Outcome{"no capture is open", {}};
            },
            "", "ends the capture, or says that there is none")
            .alone(),
        verb(
            "capturing", "vym_debug_is_open",
            [] {
                return Outcome{"", vym_debug_is_open() != 0 ? "yes" : "no"};
            },
            "", "shows whether the traffic is captured")
            .alone(),
        verb(
            "capture-fd", "hci_vym_debug_fd", [] { return hci_vym_debug_fd; }, "",
            "shows the capture's descriptor, -1 for none")
            .alone(),
        verb("packet", "vym_debug_capture", &capture, "packet direction=sent|received?sent",
             "appends a packet with its type byte to the capture")
            .alone(),
        packet_verb(
            "packet-command", "vym_debug_hci_cmd",
            [](unsigned char* p, uint8_t /*received*/) { vym_debug_hci_cmd(p); }, 0),
        packet_verb("packet-acl", VYMCTL_CALL(vym_debug_acl_data), 1),
        packet_verb("packet-sco", VYMCTL_CALL(vym_debug_sco_data), 2),
        packet_verb(
            "packet-event", "vym_debug_hci_evt",
            [](unsigned char* p, uint8_t /*received*/) { vym_debug_hci_evt(p); }, 3),
        verb("hex-dump", "hex_dump", &hex, "data=text", "prints bytes in columns").alone(),
        verb("parser-start", "ext_parser_thread", &start_parser, "",
             "awaits an external parser on TCP port 4338")
            .alone(),
        verb("parser-stop", VYMCTL_CALL(vym_debug_stop_listener), "", "ends that").alone(),
        verb(
            "parser-send", "send_ext_parser",
            [](std::string data) {
                return send_ext_parser(data.data(), static_cast<int>(data.size()));
            },
            "data=text", "sends data to the external parser")
            .alone(),
    };
}

} // namespace

Profile core_profile() {
    std::vector<Verb> verbs = library_verbs();
    std::vector<Verb> more = capture_verbs();
    std::move(more.begin(), more.end(), std::back_inserter(verbs));
    Profile profile;
    profile.name = "core";
    profile.title = "The library, its messages and its capture";
    profile.verbs = std::move(verbs);
    profile.events = {own<uint8_t, std::string>("core.message", "type value"),
                      own<>("core.server-gone")};
    profile.start = [] {};
    profile.stop = [] {};
    return profile;
}

} // namespace vymctl
