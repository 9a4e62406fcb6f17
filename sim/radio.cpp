// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is asked of the radio itself: signal strength, address, out-of-band data, LE tests, loopback.
#include "clock.h"
#include "modules.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace sim {
namespace {

enum LeTest : uint16_t { kReceive = 1, kTransmit = 2, kEnd = 3 };

constexpr uint8_t kLastLeChannel = 39;
constexpr uint8_t kLastPayload = 7;

class Radio : public Module {
public:
    using Module::Module;

    std::vector<Command> commands() override {
        return {
            row("BTB", &Radio::read_rssi), row("BTOR", &Radio::read_address),
            row("BTL", &Radio::le_test),   row("BTP", &Radio::loopback),
            row("BEA", &Radio::oob_data),  row("BEB", &Radio::oob_data_extended),
        };
    }

    void radio_off() override { test_.reset(); }
    void client_left() override { test_.reset(); }

private:
    struct Test {
        uint16_t operation;
        Clock::time_point begun;
    };

    void read_rssi(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        const Device* device = world().find(address);
        const bool connected = device != nullptr && device->connected;
        Status status = connected ? kSuccess : kFail;
        if (!world().adapter.powered) {
            status = kNotReady;
        }
        send(Event("BS").address(address).byte(status).byte(
            static_cast<uint8_t>(connected ? hub().chance.rssi(device->rssi) : 0)));
    }

    void read_address(Fields& fields) {
        fields.end();
        send(Event("BR").byte(kSuccess).address(world().adapter.address));
    }

    void le_test(Fields& fields) {
        const uint16_t operation = fields.word("operation");
        const uint16_t count = fields.word("parameter count");
        std::vector<uint8_t> parameters;
        // Not reserved ahead: the count may claim more than the command holds.
        for (uint16_t i = 0; i < count; ++i) {
            parameters.push_back(fields.byte("parameter"));
        }
        fields.end();
        uint16_t packets = 0;
        const Status status = run_test(operation, parameters, packets);
        send(Event("BQ").byte(static_cast<uint8_t>(operation)).byte(status).word(packets));
    }

    Status run_test(uint16_t operation, const std::vector<uint8_t>& parameters, uint16_t& packets) {
        if (!world().adapter.powered) {
            return kNotReady;
        }
        if (operation == kEnd && parameters.empty()) {
            return end_test(packets);
        }
        const bool receive = operation == kReceive && parameters.size() == 1;
        const bool transmit =
            operation == kTransmit && parameters.size() == 3 && parameters[2] <= kLastPayload;
        if (!(receive || transmit) || parameters[0] > kLastLeChannel) {
            return kInvalid;
        }
        if (test_) {
            return kBusy;
        }
        test_ = Test{operation, Clock::of(hub().loop).now()};
        return kSuccess;
    }

    Status end_test(uint16_t& packets) {
        if (!test_) {
            return kFail;
        }
        if (test_->operation == kReceive) {
            // A tester sends one packet in 625 microseconds; the first is on its way when the test
            // begins.
            const auto received =
                1 + (Clock::of(hub().loop).now() - test_->begun) / std::chrono::microseconds(625);
            packets = static_cast<uint16_t>(std::min<int64_t>(received, 0xFFFF));
        }
        test_.reset();
        return kSuccess;
    }

    void loopback(Fields& fields) {
        const uint8_t mode = fields.byte("mode");
        fields.end();
        world().adapter.loopback_mode = mode;
    }

    void oob_data(Fields& fields) {
        fields.end();
        const Adapter& a = world().adapter;
        const Octets16 none{};
        send(Event("BU")
                 .byte(a.powered ? kSuccess : kNotReady)
                 .octets(a.powered ? a.oob_c192 : none)
                 .octets(a.powered ? a.oob_r192 : none));
    }

    void oob_data_extended(Fields& fields) {
        fields.end();
        const Adapter& a = world().adapter;
        const Octets16 none{};
        send(Event("BV")
                 .byte(a.powered ? kSuccess : kNotReady)
                 .octets(a.powered ? a.oob_c192 : none)
                 .octets(a.powered ? a.oob_r192 : none)
                 .octets(a.powered ? a.oob_c256 : none)
                 .octets(a.powered ? a.oob_r256 : none));
    }

    std::optional<Test> test_;
};

} // namespace

std::unique_ptr<Module> make_radio(Hub& hub) {
    return std::make_unique<Radio>(hub);
}

} // namespace sim
