// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Batch scanning: advertisements are kept until the client asks for them all at once.
#include "hall.h"
#include "low_energy.h"
#include "modules.h"
#include "scan_filters.h"
#include "timer.h"

#include <algorithm>
#include <chrono>

namespace sim {
namespace {

/// Bits of the scan mode; one of them is also the format of a report.
enum Format : uint16_t { kTruncated = 1, kFull = 2 };

enum DiscardRule : uint16_t { kDiscardOldest = 0, kDiscardWeakest = 1 };

/// As many as one event holds even when each byte is escaped to two: a client's buffer holds 4 KiB.
constexpr size_t kRoom = 20;

struct Record {
    Address address;
    int8_t rssi;
    Clock::time_point heard;
    std::string advertisement;
    std::string response;
};

struct Store {
    unsigned percent = 50;
    std::vector<Record> records;

    size_t room() const { return kRoom * percent / 100; }
};

std::string counted(const std::string& data) {
    return std::string(1, static_cast<char>(data.size())) + data;
}

/// Address, its type (random), transmission power (unknown), RSSI, age in units of 50 ms.
std::string head_of(const Record& record, Clock::time_point now) {
    constexpr std::string_view kRandomUnknown = "\x01\x7F";
    const auto age = (now - record.heard) / std::chrono::milliseconds(50);
    return raw(record.address).append(kRandomUnknown) + static_cast<char>(record.rssi) +
           le16(static_cast<uint16_t>(std::min<int64_t>(age, 0xFFFF)));
}

class BatchScan : public Module {
public:
    BatchScan(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)), timer_(hub.loop), hall_(hub.world.hall) {
        low_energy_->listen({[this](uint8_t client_if) {
                                 if (running_ && client_if == client_if_) {
                                     stop();
                                 }
                             },
                             {}});
    }

    std::vector<Command> commands() override {
        return {
            row("KXJ", &BatchScan::configure),
            row("KXK", &BatchScan::start),
            row("KXL", &BatchScan::stop),
            row("KXM", &BatchScan::read),
        };
    }

    void radio_off() override { stop(); }

    void client_left() override {
        stop();
        truncated_ = full_ = Store();
        threshold_percent_ = 0;
    }

private:
    bool may(uint8_t client_if) { return world().adapter.powered && low_energy_->is_client(client_if); }

    void configure(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const unsigned full = fields.word("full reports");
        const unsigned truncated = fields.word("truncated reports");
        const uint16_t threshold = fields.word("threshold");
        fields.end();
        const bool good = may(client_if) && full + truncated <= 100 && threshold <= 100;
        if (good) {
            full_ = {full, {}};
            truncated_ = {truncated, {}};
            threshold_percent_ = threshold;
            told_ = false;
        }
        send(Event("KZJ").byte(client_if).byte(good ? kGattSuccess : kGattError));
    }

    void report(bool starting, uint8_t client_if, bool good) {
        send(Event("KZK")
                 .dword(starting ? 1 : 0)
                 .byte(client_if)
                 .byte(good ? kGattSuccess : kGattError));
    }

    void start(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const uint16_t mode = fields.word("scan mode");
        const uint16_t interval = fields.word("interval");
        const uint16_t window = fields.word("window");
        fields.word("address type");
        const uint16_t rule = fields.word("discard rule");
        fields.end();
        const bool good = may(client_if) && !running_ && mode != 0 && mode <= (kTruncated | kFull) &&
                          window <= interval && rule <= kDiscardWeakest;
        if (good) {
            running_ = true;
            client_if_ = client_if;
            mode_ = mode;
            rule_ = rule;
            wait();
        }
        report(true, client_if, good);
    }

    void stop(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        fields.end();
        const bool good = running_ && client_if == client_if_;
        if (good) {
            stop();
        }
        report(false, client_if, good);
    }

    void stop() {
        running_ = false;
        timer_.stop();
    }

    void wait() {
        timer_.start(hub().pace.advertising_interval, [this] { listen(); });
    }

    void listen() {
        for (const Device& device : world().devices) {
            if (is_advertising(device)) {
                keep(device);
            }
        }
        const auto interval = hub().pace.advertising_interval;
        hall_.pass_time(interval, interval, [this](const Device& device, uint32_t) {
            // Who has been connected to speaks for itself.
            if (world().find(device.address) == nullptr) {
                keep(device);
            }
        });
        tell();
        wait();
    }

    void keep(const Device& device) {
        const Record record{device.address, hub().chance.rssi(device.rssi), Clock::of(hub().loop).now(),
                            advertisement_of(device), scan_response_of(device)};
        if ((mode_ & kFull) != 0) {
            keep(full_, record);
        }
        if ((mode_ & kTruncated) != 0) {
            // Of each device the newest only.
            std::vector<Record>& all = truncated_.records;
            all.erase(std::remove_if(all.begin(), all.end(),
                                     [&](const Record& r) { return r.address == record.address; }),
                      all.end());
            keep(truncated_, record);
        }
    }

    void keep(Store& store, const Record& record) const {
        store.records.push_back(record);
        if (store.records.size() > store.room()) {
            const auto weakest =
                std::min_element(store.records.begin(), store.records.end(),
                                 [](const Record& a, const Record& b) { return a.rssi < b.rssi; });
            store.records.erase(rule_ == kDiscardWeakest ? weakest : store.records.begin());
        }
    }

    /// Once, until the reports are read.
    void tell() {
        const auto is_full = [this](const Store& store) {
            return store.room() > 0 && store.records.size() * 100 >= store.room() * threshold_percent_;
        };
        if (threshold_percent_ > 0 && !told_ && (is_full(full_) || is_full(truncated_))) {
            told_ = true;
            send(Event("KZM").byte(client_if_));
        }
    }

    void read(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const uint16_t format = fields.word("scan type");
        fields.end();
        const bool good = may(client_if) && (format == kTruncated || format == kFull);
        std::string data;
        size_t count = 0;
        if (good) {
            Store& store = format == kFull ? full_ : truncated_;
            count = store.records.size();
            for (const Record& record : store.records) {
                data += head_of(record, Clock::of(hub().loop).now());
                if (format == kFull) {
                    data += counted(record.advertisement) + counted(record.response);
                }
            }
            store.records.clear();
            told_ = false;
        }
        send(Event("KZL")
                 .byte(client_if)
                 .byte(good ? kGattSuccess : kGattError)
                 .dword(format)
                 .dword(static_cast<uint32_t>(count))
                 .block(data));
    }

    std::shared_ptr<LowEnergy> low_energy_;
    Timer timer_;
    Hall hall_;
    bool running_ = false;
    uint8_t client_if_ = 0;
    uint16_t mode_ = 0;
    uint16_t rule_ = kDiscardOldest;
    Store truncated_;
    Store full_;
    unsigned threshold_percent_ = 0;
    bool told_ = false;
};

} // namespace

std::unique_ptr<Module> make_batch_scan(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<BatchScan>(hub, std::move(low_energy));
}

} // namespace sim
