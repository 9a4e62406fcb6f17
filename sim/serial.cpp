// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// RFCOMM: serial connections to services of devices, and of devices to the client's servers. What they
// carry is on the serial data descriptor, which is handed over with power like the audio descriptor,
// and again before a connection when the client has closed it.
#include "modules.h"
#include "serial_data.h"
#include "timer.h"

#include <algorithm>
#include <optional>

namespace sim {
namespace {

constexpr uint8_t kMostChannel = 30;
constexpr uint32_t kMostHandle = 0x7FFFFFFF;
constexpr std::string_view kBye = "bye\r";

/// One sentence of a receiver that has been on since noon and lies still.
std::string position_line(uint32_t seconds) {
    const auto two_digits = [](uint32_t value) {
        return std::string{static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
    };
    const std::string text = "GPGGA," + two_digits((12 + seconds / 3600) % 24) +
                             two_digits(seconds / 60 % 60) + two_digits(seconds % 60) +
                             ".00,5231.2000,N,01324.3000,E,1,08,0.9,34.0,M,44.0,M,,";
    uint8_t sum = 0;
    for (const char c : text) {
        sum ^= static_cast<uint8_t>(c);
    }
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    return '$' + text + '*' + kDigits[sum >> 4U] + kDigits[sum & 0xFU] + "\r\n";
}

struct Port {
    Port(Hub& hub, const Address& address, uint8_t its_channel)
        : peer(address), channel(its_channel), timer(hub.loop) {}

    Address peer;
    uint8_t channel;
    /// 0 while it is still connecting.
    uint32_t handle = 0;
    /// A device that has connected to a server of the client.
    bool is_server = false;
    SerialTalk talk = SerialTalk::Echo;
    uint32_t lines = 0;
    /// The beginning of the line that the device is getting.
    std::string line;
    /// Until it is connected, then for what it sends by itself.
    Timer timer;
};

struct Listening {
    Listening(Hub& hub, uint8_t its_channel) : channel(its_channel), timer(hub.loop) {}

    uint8_t channel;
    Timer timer;
};

template <typename T>
using Owned = std::vector<std::unique_ptr<T>>;

class Serial : public Module {
public:
    explicit Serial(Hub& hub)
        : Module(hub),
          data_(hub, [this](uint32_t handle, std::string_view text) { received(handle, text); }) {}

    std::vector<Command> commands() override {
        return {
            row("SE", &Serial::connect),      row("SF", &Serial::disconnect),
            row("SL", &Serial::listen),       row("SM", &Serial::fetch_channels),
            row("SN", &Serial::close_server),
        };
    }

    std::vector<Verb> verbs() override {
        return {
            verb("serial DEVICE send TEXT", "it sends this text over its serial connection",
                 &Serial::send_by_device),
            verb("serial DEVICE connect CHANNEL=1..30", "it connects to this server of the client",
                 &Serial::connect_by_device),
            verb("serial DEVICE disconnect", "it ends its serial connection", &Serial::end_by_device),
        };
    }

    void radio_on() override { open_data(); }

    void radio_off() override {
        servers_.clear();
        while (!ports_.empty()) {
            end(*ports_.front(), kNotReady);
        }
        data_.close();
    }

    void link_down(const Address& address) override {
        // Those that are reported are gone: look again from the beginning.
        while (Port* port = find_port([&](const Port& p) { return p.peer == address; })) {
            end(*port, kDeviceDown);
        }
    }

    void client_left() override {
        servers_.clear();
        for (const auto& port : ports_) {
            data_.end(port->handle);
        }
        ports_.clear();
        data_.close();
    }

private:
    // What there is.

    template <typename Predicate>
    Port* find_port(Predicate is_it) {
        const auto it = std::find_if(ports_.begin(), ports_.end(),
                                     [&is_it](const auto& port) { return is_it(*port); });
        return it == ports_.end() ? nullptr : it->get();
    }

    Port* by_handle(uint32_t handle) {
        return find_port([handle](const Port& p) { return p.handle == handle; });
    }

    void remove(const Port& port) {
        ports_.erase(std::find_if(ports_.begin(), ports_.end(),
                                  [&port](const auto& p) { return p.get() == &port; }));
    }

    auto server_on(uint8_t channel) {
        return std::find_if(servers_.begin(), servers_.end(),
                            [channel](const auto& server) { return server->channel == channel; });
    }

    void open_data() {
        if (!data_.is_open()) {
            data_.open();
        }
    }

    uint32_t fresh_handle() {
        do {
            last_handle_ = last_handle_ < kMostHandle ? last_handle_ + 1 : 1;
        } while (by_handle(last_handle_) != nullptr);
        return last_handle_;
    }

    // Connections, of either direction.

    void report(Status status, const Port& port) {
        const bool up = status == kSuccess;
        const uint16_t size = up ? SerialData::kFrameSize : 0;
        const uint8_t credits = up ? SerialData::kCredits : 0;
        send(Event("SE")
                 .byte(status)
                 .address(port.peer)
                 .byte(port.channel)
                 .dword(port.handle)
                 .word(size)
                 .word(size)
                 .byte(credits)
                 .byte(credits)
                 .byte(port.is_server ? 1 : 0));
    }

    void come_up(Port& port) {
        open_data();
        port.handle = fresh_handle();
        data_.begin(port.handle);
        report(kSuccess, port);
    }

    void end(Port& port, Status why) {
        if (port.handle == 0) {
            report(why, port);
        } else {
            data_.end(port.handle);
            send(Event("SF").byte(why).dword(port.handle));
        }
        remove(port);
    }

    void disconnect(Fields& fields) {
        const uint32_t handle = fields.dword("handle");
        fields.end();
        Port* port = handle == 0 ? nullptr : by_handle(handle);
        if (port == nullptr) {
            hub().log.note("no serial connection has this handle");
        } else {
            end(*port, kSuccess);
        }
    }

    void received(uint32_t handle, std::string_view text) {
        Port* port = by_handle(handle);
        if (port == nullptr) {
            return;
        }
        if (port->talk == SerialTalk::Positions) {
            hub().log.note("the receiver takes no orders: \"" + printable(text) + '"');
        } else if (port->is_server && says_bye(*port, text)) {
            end(*port, kSuccess);
        } else {
            data_.write(handle, text);
        }
    }

    /// Whether a line that ends in this text is the one that sends the device away.
    static bool says_bye(Port& port, std::string_view text) {
        for (const char c : text) {
            if (c == '\n') {
                if (port.line == kBye) {
                    return true;
                }
                port.line.clear();
            } else if (port.line.size() <= kBye.size()) {
                port.line += c;
            }
        }
        return false;
    }

    // To a service of a device.

    void connect(Fields& fields) {
        const Address address = fields.address();
        const Octets16 uuid = fields.octets_reversed("UUID");
        const uint8_t asked = fields.byte("port");
        fields.end();
        const SerialService* service = service_of(address, uuid, asked);
        auto port =
            std::make_unique<Port>(hub(), address, service != nullptr ? service->channel : asked);
        Status status = kSuccess;
        if (!world().adapter.powered) {
            status = kNotReady;
        } else if (world().reach(address) == nullptr) {
            status = kDeviceDown;
        } else if (service == nullptr) {
            status = kFail;
        } else if (find_port([&](const Port& p) {
                       return !p.is_server && p.peer == address && p.channel == service->channel;
                   }) != nullptr) {
            status = kBusy;
        }
        if (status != kSuccess) {
            report(status, *port);
            return;
        }
        port->talk = service->talk;
        ports_.push_back(std::move(port));
        Port& kept = *ports_.back();
        kept.timer.start(hub().pace.profile_connect, [this, &kept] { connected(kept); });
        set_link(hub(), *world().find(address), true);
    }

    /// The service on a channel, or the first with the UUID when no channel is asked for.
    const SerialService* service_of(const Address& address, const Octets16& uuid, uint8_t channel) {
        const Device* device = world().find(address);
        if (device == nullptr) {
            return nullptr;
        }
        const std::vector<SerialService>& all = device->serial_services;
        const auto it = std::find_if(all.begin(), all.end(), [&](const SerialService& service) {
            return channel == 0 ? service.uuid == uuid : service.channel == channel;
        });
        return it == all.end() ? nullptr : &*it;
    }

    void connected(Port& port) {
        come_up(port);
        if (port.talk == SerialTalk::Positions) {
            next_line(port);
        }
    }

    void next_line(Port& port) {
        port.timer.start(hub().pace.serial_line, [this, &port] {
            // Of what a slow client misses, it gets nothing later: an old position is of no use.
            if (!data_.has_backlog(port.handle)) {
                data_.write(port.handle, position_line(port.lines));
            }
            ++port.lines;
            next_line(port);
        });
    }

    void fetch_channels(Fields& fields) {
        const Address address = fields.address();
        const Octets16 uuid = fields.octets_reversed("UUID");
        fields.end();
        const Device* device = world().reach(address);
        if (device != nullptr && world().adapter.powered) {
            for (const SerialService& service : device->serial_services) {
                if (service.uuid == uuid) {
                    send(Event("SM").address(address).octets(uuid).byte(service.channel));
                }
            }
        }
        send(Event("SN").address(address).octets(uuid).byte(0));
    }

    // Servers of the client.

    void listen(Fields& fields) {
        // Which service the client offers is of no interest to the devices of this world.
        fields.octets_reversed("UUID");
        const uint8_t asked = fields.byte("port");
        const std::string name = fields.rest();
        Status status = kSuccess;
        const std::optional<uint8_t> channel = asked == 0 ? free_channel() : asked;
        if (!world().adapter.powered) {
            status = kNotReady;
        } else if (asked > kMostChannel) {
            status = kInvalid;
        } else if (!channel || is_taken(*channel)) {
            status = kBusy;
        }
        send(Event("SL").byte(status).byte(status == kSuccess ? *channel : 0));
        if (status == kSuccess) {
            hub().log.note("offered as \"" + printable(name) + '"');
            open_server(*channel);
        }
    }

    void open_server(uint8_t channel) {
        servers_.push_back(std::make_unique<Listening>(hub(), channel));
        servers_.back()->timer.start(hub().pace.serial_dial, [this, channel] { dial(channel); });
    }

    bool is_taken(uint8_t channel) {
        // A channel of a closed server stays taken by whoever is still connected to it.
        return server_on(channel) != servers_.end() ||
               find_port([channel](const Port& p) { return p.is_server && p.channel == channel; });
    }

    std::optional<uint8_t> free_channel() {
        for (uint8_t channel = 1; channel <= kMostChannel; ++channel) {
            if (!is_taken(channel)) {
                return channel;
            }
        }
        return std::nullopt;
    }

    void dial(uint8_t channel) {
        std::vector<Device>& all = world().devices;
        const auto caller = std::find_if(all.begin(), all.end(), [](const Device& d) {
            return d.dials_serial_servers && d.in_range;
        });
        if (caller != all.end()) {
            dial(*caller, channel);
        }
    }

    void dial(Device& caller, uint8_t channel) {
        ports_.push_back(std::make_unique<Port>(hub(), caller.address, channel));
        Port& port = *ports_.back();
        port.is_server = true;
        set_link(hub(), caller, true);
        come_up(port);
        const std::string greeting = "hello from " + caller.name + "\r\n";
        port.timer.start(hub().pace.serial_greeting,
                         [this, &port, greeting] { data_.write(port.handle, greeting); });
    }

    // For the verbs.

    /// The newest connection of the device that is meant.
    Port& port_of(Given& given) {
        const Device& device = given.device(0);
        const auto it = std::find_if(ports_.rbegin(), ports_.rend(), [&device](const auto& port) {
            return port->peer == device.address && port->handle != 0;
        });
        if (it == ports_.rend()) {
            throw Refused('"' + device.name + "\" has no serial connection");
        }
        return **it;
    }

    void send_by_device(Given& given) { data_.write(port_of(given).handle, given.text(1)); }

    void end_by_device(Given& given) { end(port_of(given), kSuccess); }

    void connect_by_device(Given& given) {
        Device& device = given.device(0);
        const auto channel = given.number(1);
        if (!device.in_range) {
            throw Refused('"' + device.name + "\" is out of range");
        }
        if (server_on(channel) == servers_.end()) {
            throw Refused("the client has no serial server on channel " + std::to_string(channel));
        }
        const bool there = find_port([&](const Port& port) {
            return port.is_server && port.channel == channel && port.peer == device.address;
        });
        if (there) {
            throw Refused('"' + device.name + "\" is connected to this channel already");
        }
        dial(device, channel);
    }

    /// Connections that were made through it stay.
    void close_server(Fields& fields) {
        const uint8_t channel = fields.byte("channel");
        fields.end();
        const auto server = server_on(channel);
        if (server == servers_.end()) {
            hub().log.note("no serial server has this channel");
        } else {
            servers_.erase(server);
        }
    }

    SerialData data_;
    Owned<Port> ports_;
    Owned<Listening> servers_;
    uint32_t last_handle_ = 0;
};

} // namespace

std::unique_ptr<Module> make_serial(Hub& hub) {
    return std::make_unique<Serial>(hub);
}

} // namespace sim
