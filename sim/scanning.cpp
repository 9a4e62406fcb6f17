// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Scanning for Low Energy devices: what they advertise, again and again, past the filters.
#include "hall.h"
#include "low_energy.h"
#include "modules.h"
#include "scan_filters.h"
#include "timer.h"

#include <algorithm>

namespace sim {
namespace {

enum DataType : uint8_t { kAdvertisement = 0, kScanResponse = 1 };

enum FilterAction : uint32_t { kActionAdd = 0, kActionDelete = 1, kActionClear = 2 };

class Scanning : public Module {
public:
    Scanning(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)), timer_(hub.loop), hall_timer_(hub.loop),
          hall_(hub.world.hall) {}

    std::vector<Command> commands() override {
        return {
            row("KC", &Scanning::scan),
            row("KXB", &Scanning::parameters),
            row("KXC", &Scanning::add_filter),
            row("KXD", &Scanning::delete_filter),
            row("KXE", &Scanning::add_filter_parameters),
            row("KXF", &Scanning::clear_filter_parameters),
            row("KXG", &Scanning::delete_filter_parameters),
            row("KXH", &Scanning::clear_filters),
            row("KXI", &Scanning::enable_filters),
        };
    }

    void radio_off() override { stop(); }

    void client_left() override {
        stop();
        filters_.reset();
    }

private:
    void scan(Fields& fields) {
        const bool on = fields.byte("start") != 0;
        fields.end();
        if (!on) {
            stop();
        } else if (!world().adapter.powered) {
            hub().log.note("no scan: the adapter is off");
        } else if (!running_) {
            running_ = true;
            named_.clear();
            hall_.begin();
            hall_named_.assign(hall_.size(), false);
            wait();
            wait_for_hall();
        }
    }

    void stop() {
        running_ = false;
        timer_.stop();
        hall_timer_.stop();
    }

    void wait() {
        timer_.start(hub().chance.around(hub().pace.advertising_interval), [this] { listen(); });
    }

    void listen() {
        // What a client that does not keep up misses, it hears the next time.
        for (const Device& device : world().devices) {
            if (!hub().out.is_congested() && is_advertising(device) && filters_.pass(device)) {
                report(device);
                if (std::find(named_.begin(), named_.end(), device.address) == named_.end()) {
                    named_.push_back(device.address);
                    report_name(device);
                }
            }
        }
        wait();
    }

    void report(const Device& device) {
        report(device, kAdvertisement, advertisement_of(device));
        report(device, kScanResponse, scan_response_of(device));
    }

    void report_name(const Device& device) {
        send(Event("KC").address(device.address).block(device.name));
    }

    // The crowd: evenly over the time in which everybody advertises once, as far as the radio can
    // follow.

    void wait_for_hall() {
        if (hall_.size() > 0) {
            hall_timer_.start(hub().pace.hall_step, [this] { listen_to_hall(); });
        }
    }

    void listen_to_hall() {
        if (!hub().out.is_congested()) {
            hall_.pass_time(hub().pace.hall_step, hub().pace.advertising_interval,
                            [this](const Device& device, uint32_t number) { met(device, number); });
        }
        wait_for_hall();
    }

    void met(const Device& device, uint32_t number) {
        // Who has been connected to speaks for itself.
        if (!filters_.pass(device) || world().find(device.address) != nullptr) {
            return;
        }
        report(device);
        if (!hall_named_[number]) {
            hall_named_[number] = true;
            report_name(device);
        }
    }

    void report(const Device& device, DataType type, const std::string& data) {
        send(Event("KB")
                 .address(device.address)
                 .byte(static_cast<uint8_t>(hub().chance.rssi(device.rssi)))
                 .byte(type)
                 .block(data));
    }

    void parameters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const uint16_t interval = fields.word("interval");
        const uint16_t window = fields.word("window");
        fields.end();
        constexpr uint16_t kShortest = 4;
        constexpr uint16_t kLongest = 0x4000;
        const bool good = window >= kShortest && window <= interval && interval <= kLongest;
        send(Event("KZN").byte(client_if).byte(good ? permission(client_if) : kGattError));
    }

    /// Whether a client may ask for something of the radio.
    GattStatus permission(uint8_t client_if) {
        return world().adapter.powered && low_energy_->is_client(client_if) ? kGattSuccess : kGattError;
    }

    // Filters.

    static ScanFilter filter_fields(Fields& fields) {
        ScanFilter filter;
        filter.kind = fields.word("filter type");
        filter.index = fields.word("filter index");
        filter.company = fields.word("company");
        filter.company_mask = fields.word("company mask");
        filter.uuid = fields.dword("UUID, low part");
        filter.uuid |= static_cast<uint64_t>(fields.dword("UUID, high part")) << 32;
        filter.uuid_mask = fields.dword("UUID mask, low part");
        filter.uuid_mask |= static_cast<uint64_t>(fields.dword("UUID mask, high part")) << 32;
        filter.address_type = fields.byte("address type");
        filter.name = fields.block("name");
        filter.address = fields.block("address");
        filter.data = fields.block("data");
        filter.mask = fields.block("mask");
        fields.end();
        return filter;
    }

    void send_filter(FilterAction action, uint8_t client_if, GattStatus status, uint16_t kind) {
        send(Event("KZB").dword(action).byte(client_if).byte(status).dword(kind).dword(
            static_cast<uint32_t>(filters_.space())));
    }

    void add_filter(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const ScanFilter filter = filter_fields(fields);
        GattStatus status = permission(client_if);
        if (const char* problem = filter.problem()) {
            hub().log.note(std::string("no such filter: ") + problem);
            status = kGattError;
        }
        if (status == kGattSuccess && !filters_.add(filter)) {
            status = kGattNoResources;
        }
        send_filter(kActionAdd, client_if, status, filter.kind);
    }

    void delete_filter(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const ScanFilter filter = filter_fields(fields);
        GattStatus status = permission(client_if);
        if (status == kGattSuccess && !filters_.remove(filter)) {
            status = kGattError;
        }
        send_filter(kActionDelete, client_if, status, filter.kind);
    }

    void clear_filters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const uint16_t index = fields.word("filter index");
        fields.end();
        const GattStatus status = permission(client_if);
        if (status == kGattSuccess) {
            filters_.remove_index(index);
        }
        send_filter(kActionClear, client_if, status, kFilterAny);
    }

    void send_parameters(FilterAction action, uint8_t client_if, GattStatus status) {
        send(Event("KZC").dword(action).byte(client_if).byte(status).dword(
            static_cast<uint32_t>(filters_.parameter_space())));
    }

    void add_filter_parameters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const uint16_t index = fields.word("filter index");
        fields.word("selected features");
        fields.word("list logic");
        ScanFilters::Parameters parameters;
        parameters.all_kinds = fields.word("filter logic") != 0;
        parameters.least_rssi = static_cast<int8_t>(fields.word("high RSSI"));
        // What is left concerns devices that come and go.
        for (const char* what : {"low RSSI", "delivery mode", "found time-out", "lost time-out",
                                 "found count", "tracked entries"}) {
            fields.word(what);
        }
        fields.end();
        GattStatus status = permission(client_if);
        if (status == kGattSuccess && !filters_.set_parameters(index, parameters)) {
            status = kGattNoResources;
        }
        send_parameters(kActionAdd, client_if, status);
    }

    void clear_filter_parameters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        fields.end();
        const GattStatus status = permission(client_if);
        if (status == kGattSuccess) {
            filters_.clear_parameters();
        }
        send_parameters(kActionClear, client_if, status);
    }

    void delete_filter_parameters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const uint16_t index = fields.word("filter index");
        fields.end();
        GattStatus status = permission(client_if);
        if (status == kGattSuccess && !filters_.remove_parameters(index)) {
            status = kGattError;
        }
        send_parameters(kActionDelete, client_if, status);
    }

    void enable_filters(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const bool on = fields.byte("enable") != 0;
        fields.end();
        const GattStatus status = permission(client_if);
        if (status == kGattSuccess) {
            filters_.enable(on);
        }
        send(Event("KZD").dword(on ? 1 : 0).byte(client_if).byte(status));
    }

    std::shared_ptr<LowEnergy> low_energy_;
    Timer timer_;
    Timer hall_timer_;
    Hall hall_;
    std::vector<bool> hall_named_;
    bool running_ = false;
    std::vector<Address> named_;
    ScanFilters filters_;
};

} // namespace

std::unique_ptr<Module> make_scanning(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<Scanning>(hub, std::move(low_energy));
}

} // namespace sim
