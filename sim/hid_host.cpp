// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// HID: a host that takes the client for its keyboard or mouse. Once connected it goes through what
// hosts ask of a device: a report, a protocol, the state of its lamps, and lamps again on the interrupt
// channel.
#include "modules.h"
#include "timer.h"

namespace sim {
namespace {

enum AppState : uint32_t { kNotRegistered = 0, kRegistered = 1 };

enum ReportType : uint8_t { kInput = 1, kOutput = 2, kFeature = 3 };

/// How a device refuses a request.
enum Refusal : uint8_t { kNoError = 0, kDeviceNotReady = 1, kFatal = 15 };

constexpr uint8_t kReportProtocol = 1;
constexpr uint8_t kReportId = 1;
constexpr uint32_t kReportRoom = 64;
constexpr char kCapsLock = 2;
/// How much of a report the log shows.
constexpr size_t kShown = 32;

std::string in_digits(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes.substr(0, kShown)) {
        const auto value = static_cast<uint8_t>(c);
        text += {' ', kDigits[value >> 4U], kDigits[value & 0xFU]};
    }
    return bytes.size() > kShown ? text + " ..." : text;
}

class HidHost : public Module {
public:
    explicit HidHost(Hub& hub) : Module(hub), link_timer_(hub.loop), step_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("DA", &HidHost::register_app), row("DB", &HidHost::unregister_app),
            row("DC", &HidHost::send_report),  row("DE", &HidHost::report_error),
            row("DF", &HidHost::unplug),       row("DG", &HidHost::connect),
            row("DH", &HidHost::disconnect),
        };
    }

    std::vector<Verb> verbs() override {
        return {
            verb("hid get-report input|output|feature ID=0..255", "the computer asks for a report",
                 &HidHost::ask),
            verb("hid set-report input|output|feature ID=0..255 HEX", "it sends one", &HidHost::tell),
            verb("hid interrupt ID=0..255 HEX", "it sends one on the interrupt channel",
                 &HidHost::interrupt),
            verb("hid set-protocol boot|report", "it chooses the protocol", &HidHost::choose_protocol),
            verb("hid unplug", "it gives the device up", &HidHost::unplug_by_host),
        };
    }

    void radio_off() override {
        drop();
        if (registered_) {
            registered_ = false;
            report_app();
        }
    }

    void link_down(const Address& address) override {
        if (host_ == address) {
            drop();
        }
    }

    void client_left() override {
        forget_connection();
        registered_ = false;
        plugged_ = {};
    }

private:
    /// As on the wire.
    enum class State : uint32_t { Connected = 0, Connecting = 1, Disconnected = 2, Disconnecting = 3 };

    // The device that the client is.

    /// With the host that the device is plugged into, if there is one.
    void report_app() {
        send(Event("DA").address(plugged_).dword(registered_ ? kRegistered : kNotRegistered));
    }

    void register_app(Fields& fields) {
        const uint8_t subclass = fields.byte("subclass");
        const std::string name = fields.block("name");
        fields.block("description");
        fields.block("provider");
        const std::string descriptor = fields.block("report descriptor");
        fields.block("incoming quality of service");
        fields.block("outgoing quality of service");
        fields.end();
        if (!world().adapter.powered) {
            hub().log.note("not registered: the adapter is off");
        } else if (registered_) {
            hub().log.note("refused: a device is registered; unregister it first");
        } else if (descriptor.empty()) {
            hub().log.note("not registered: the report descriptor is empty");
        } else {
            registered_ = true;
            hub().log.note('"' + printable(name) + "\", subclass " + std::to_string(subclass) +
                           ", report descriptor" + in_digits(descriptor));
        }
        report_app();
    }

    void unregister_app(Fields& fields) {
        fields.end();
        drop();
        registered_ = false;
        report_app();
    }

    // The connection.

    void report_link(const Address& address, State state) {
        send(Event("DB").address(address).dword(static_cast<uint32_t>(state)));
    }

    void change(State state) {
        state_ = state;
        report_link(host_, state);
    }

    const char* why_not(const Device* device) {
        if (!world().adapter.powered) {
            return "the adapter is off";
        }
        if (!registered_) {
            return "no device is registered";
        }
        if (device == nullptr) {
            return "no such device is near";
        }
        if (!device->is_hid_host) {
            return "it is no HID host";
        }
        if (!world().is_bonded(device->address)) {
            return "it is not bonded";
        }
        return state_ != State::Disconnected ? "another host is connected" : nullptr;
    }

    void connect(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (state_ != State::Disconnected && host_ == address) {
            report_link(host_, state_);
            return;
        }
        Device* device = world().reach(address);
        if (const char* reason = why_not(device)) {
            hub().log.note("no HID connection to " + to_string(address) + ": " + reason);
            report_link(address, State::Disconnected);
            return;
        }
        host_ = address;
        change(State::Connecting);
        set_link(hub(), *device, true);
        link_timer_.start(hub().pace.profile_connect, [this] {
            plugged_ = host_;
            change(State::Connected);
            ask_for_report();
        });
    }

    void disconnect(Fields& fields) {
        fields.end();
        if (state_ == State::Connected) {
            step_.stop();
            asking_ = false;
            change(State::Disconnecting);
            link_timer_.start(hub().pace.profile_connect, [this] { drop(); });
        } else if (state_ == State::Connecting) {
            drop();
        } else {
            hub().log.note("no HID host is connected");
        }
    }

    void forget_connection() {
        link_timer_.stop();
        step_.stop();
        asking_ = false;
        state_ = State::Disconnected;
    }

    void drop() {
        if (state_ != State::Disconnected) {
            forget_connection();
            report_link(host_, state_);
        }
    }

    // What the host wants.

    void ask_for_report() {
        asking_ = true;
        send(Event("DC").byte(kInput).byte(kReportId).dword(kReportRoom));
        step_.start(hub().pace.hid_step, [this] {
            hub().log.note("the host gets no report and goes on");
            set_protocol();
        });
    }

    void set_protocol() {
        asking_ = false;
        send(Event("DF").byte(kReportProtocol));
        step_.start(hub().pace.hid_step, [this] { set_report(); });
    }

    void set_report() {
        send(Event("DE").byte(kOutput).byte(kReportId).block(std::string(1, kCapsLock)));
        lamps_ = 0;
        wait_for_interrupt();
    }

    void wait_for_interrupt() {
        step_.start(hub().pace.hid_interrupt, [this] {
            send(Event("DG").byte(kReportId).block(std::string(1, lamps_)));
            lamps_ = static_cast<char>(lamps_ ^ kCapsLock);
            wait_for_interrupt();
        });
    }

    // For the verbs.

    void must_be_connected() {
        if (state_ != State::Connected) {
            throw Refused("no HID host is connected");
        }
    }

    static uint8_t type_of(const Given& given) {
        const std::string& name = given.text(0);
        return name == "input" ? kInput : name == "output" ? kOutput : kFeature;
    }

    void ask(Given& given) {
        must_be_connected();
        send(Event("DC").byte(type_of(given)).byte(given.number(1)).dword(kReportRoom));
    }

    void tell(Given& given) {
        must_be_connected();
        send(Event("DE").byte(type_of(given)).byte(given.number(1)).block(given.text(2)));
    }

    void interrupt(Given& given) {
        must_be_connected();
        send(Event("DG").byte(given.number(0)).block(given.text(1)));
    }

    void choose_protocol(Given& given) {
        must_be_connected();
        send(Event("DF").byte(given.text(0) == "report" ? kReportProtocol : uint8_t{0}));
    }

    void unplug_by_host(Given& /*given*/) {
        must_be_connected();
        send(Event("DH"));
        plugged_ = {};
        drop();
    }

    // What the device answers.

    bool needs_connection() {
        if (state_ != State::Connected) {
            hub().log.note("refused: no HID host is connected");
        }
        return state_ == State::Connected;
    }

    void send_report(Fields& fields) {
        const uint8_t type = fields.byte("type");
        const uint32_t id = fields.dword("id");
        const std::string report = fields.block("report");
        fields.end();
        if (!needs_connection()) {
            return;
        }
        if (type < kInput || type > kFeature) {
            hub().log.note("the host ignores a report of the unknown type " + std::to_string(type));
            return;
        }
        hub().log.note("the host has a report: type " + std::to_string(type) + ", id " +
                       std::to_string(id) + ", " + std::to_string(report.size()) +
                       " bytes:" + in_digits(report));
        if (asking_ && type == kInput && id == kReportId) {
            set_protocol();
        }
    }

    void report_error(Fields& fields) {
        const uint8_t error = fields.byte("error");
        fields.end();
        if (!needs_connection()) {
            return;
        }
        hub().log.note("the device reports error " + std::to_string(error));
        if (error == kFatal) {
            send(Event("DH"));
            plugged_ = {};
            drop();
        } else if (asking_ && error == kDeviceNotReady) {
            ask_for_report();
        } else if (asking_ && error != kNoError) {
            set_protocol();
        }
    }

    void unplug(Fields& fields) {
        fields.end();
        if (needs_connection()) {
            plugged_ = {};
            drop();
        }
    }

    bool registered_ = false;
    State state_ = State::Disconnected;
    Address host_;
    /// The host that the device belongs to, also while it is not connected; all zero when there is
    /// none.
    Address plugged_;
    /// Whether the host waits for a report.
    bool asking_ = false;
    char lamps_ = 0;
    Timer link_timer_;
    Timer step_;
};

} // namespace

std::unique_ptr<Module> make_hid_host(Hub& hub) {
    return std::make_unique<HidHost>(hub);
}

} // namespace sim
