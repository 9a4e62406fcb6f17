// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "soak/command_soak.h"

#include "soak/application.h"
#include "soak/process_size.h"
#include "soak/wire_side.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace soak {
namespace {

constexpr support::Milliseconds kPatience{60000};
constexpr uint64_t kAhead = 500;
constexpr bt_bdaddr_t kPhone{{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};

bt_bdaddr_t AddressOf(uint64_t number) {
    bt_bdaddr_t address{};
    for (size_t i = 0; i < sizeof address.address; ++i) {
        address.address[i] = static_cast<uint8_t>(number >> (8 * i));
    }
    return address;
}

void SetName(uint64_t i) {
    bt_bdname_t name{};
    std::snprintf(reinterpret_cast<char*>(name.name), sizeof name.name, "Soak %llu",
                  static_cast<unsigned long long>(i));
    vym_bluetooth_set_name(name);
}

void ReplyToPin(uint64_t i) {
    uint8_t pin[] = {'0', 0xDC, 0, static_cast<uint8_t>(i)};
    vym_bluetooth_pin_reply(AddressOf(i), 1, sizeof pin, pin);
}

void SendReport(uint64_t i) {
    uint8_t report[8] = {0, 0, static_cast<uint8_t>(i)};
    vym_hid_send_report(1, static_cast<int>(i), sizeof report, report);
}

/** Each sends one command, and waits for nothing. */
void (*const kCommands[])(uint64_t) = {
    SetName,
    ReplyToPin,
    SendReport,
    [](uint64_t) { vym_bluetooth_read_address(); },
    [](uint64_t) { vym_bluetooth_read_connected_device_rssi(kPhone); },
    [](uint64_t i) { vym_bluetooth_set_discoverable_timeout(static_cast<int>(i)); },
    [](uint64_t i) { vym_bluetooth_ssp_reply(AddressOf(i), 0, 1, static_cast<int>(i)); },
    [](uint64_t i) { vym_bluetooth_connection_auth(AddressOf(i), 1, 1); },
    [](uint64_t) { vym_bluetooth_read_local_device_oob_data(); },
    [](uint64_t i) { vym_hfp_volume_control(0, static_cast<uint16_t>(i % 16)); },
    [](uint64_t i) { vym_hfp_send_dtmf(static_cast<uint8_t>('0' + i % 10)); },
    [](uint64_t) { vym_hfp_query_last_voice_tag_name(); },
    [](uint64_t) { vym_avrcp_get_total_number_of_items(kPhone); },
    [](uint64_t i) { vym_avrcp_send_abs_vol_rsp(kPhone, static_cast<uint8_t>(i % 128)); },
    [](uint64_t) { vym_pbap_get_phonebook_size(SYNC_PHONE_CONTACT); },
    [](uint64_t i) { vym_gatt_client_configure_mtu(static_cast<uint16_t>(i), 100); },
    [](uint64_t i) { vym_gatt_client_read_remote_rssi(1, AddressOf(i)); },
    [](uint64_t i) { vym_a2dp_inform_audio_trace_gain(static_cast<uint16_t>(i)); },
    [](uint64_t i) { vym_rfcomm_disconnect(static_cast<int>(i)); },
};

class Soak {
public:
    Soak(const std::vector<std::string>& sim, const std::string& directory)
        : library_(directory + "/client_sock.log"), server_(directory + "/traffic"),
          sim_(WithOptions(sim, directory)), library_size_("library", getpid()),
          sim_size_("simulator", sim_.Id()) {
        if (!sim_.WaitForOut("listening")) {
            std::fprintf(stderr, "soak: the simulator does not start: %s\n", sim_.Err().c_str());
            _exit(EXIT_FAILURE); // there are readers that wait for it
        }
    }

    bool Run(uint64_t count, const std::string& directory) {
        bool good = true;
        {
            const Application application(directory);
            // Without connections: what the library answers to their events by itself is sent by
            // another thread, and two threads may record in another order than they sent.
            vym_bluetooth_enable();
            for (uint64_t i = 0; i < count && good; ++i) {
                kCommands[i % (sizeof kCommands / sizeof *kCommands)](i);
                if (i % kAhead == 0) {
                    good = Arrive(i + 1);
                }
                if (i == count / 5) {
                    library_size_.WarmedUp();
                    sim_size_.WarmedUp();
                }
            }
            good = good && Arrive(count) && IsFlat();
            vym_bluetooth_disable();
            good = good && ComesToRest();
        }
        sim_.Signal(SIGTERM);
        return Compare() && good;
    }

private:
    static std::vector<std::string> WithOptions(std::vector<std::string> sim,
                                                const std::string& directory) {
        sim.insert(sim.end(), {"--dir", directory, "--traffic", directory + "/traffic", "--quiet"});
        return sim;
    }

    /** The simulator has what was sent: these, and what the library itself has answered. */
    bool Arrive(uint64_t commands) {
        const auto there = [&] {
            const uint64_t received = server_.Now().commands.count;
            return received >= commands && received == library_.Now().commands.count;
        };
        return support::WaitUntil(there, kPatience) ||
               Wrong("commands: " + std::to_string(server_.Now().commands.count) + " of " +
                     std::to_string(library_.Now().commands.count) + " have arrived");
    }

    bool IsFlat() {
        const bool library = library_size_.IsFlat();
        const bool sim = sim_size_.IsFlat();
        return (library && sim) || Wrong("a process has grown");
    }

    /** The adapter is off on both sides, so that nothing is under way. */
    bool ComesToRest() {
        const auto at_rest = [&] {
            const WireSide::Record here = library_.Now();
            return here.last_event == "PA00" && here.events.count == server_.Now().events.count;
        };
        return support::WaitUntil(at_rest, kPatience) || Wrong("not all events have come");
    }

    bool Compare() {
        const WireSide::Record here = library_.Now();
        const WireSide::Record there = server_.Now();
        std::fprintf(stderr, "  %llu commands sent, %llu received; %llu events sent, %llu received\n",
                     static_cast<unsigned long long>(here.commands.count),
                     static_cast<unsigned long long>(there.commands.count),
                     static_cast<unsigned long long>(there.events.count),
                     static_cast<unsigned long long>(here.events.count));
        return (here.commands == there.commands || Wrong("commands differ")) &&
               (here.events == there.events || Wrong("events differ"));
    }

    static bool Wrong(const std::string& what) {
        std::fprintf(stderr, "  WRONG: %s\n", what.c_str());
        return false;
    }

    LibrarySide library_;
    SimSide server_;
    support::Process sim_;
    Flatness library_size_;
    Flatness sim_size_;
};

} // namespace

bool SoakCommands(uint64_t count, const std::vector<std::string>& sim) {
    e2e::Taker() = [](const std::string&) {};
    const support::TempDir directory;
    return Soak(sim, directory.Path()).Run(count, directory.Path());
}

} // namespace soak
