// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The client's own advertising: who switched it on, and what it says.
#include "agenda.h"
#include "low_energy.h"
#include "modules.h"

#include <map>
#include <utility>

namespace sim {
namespace {

enum AdvertisingType : uint8_t {
    kConnectable = 0,
    kConnectableDirected = 1,
    kScannable = 2,
    kNonConnectable = 3,
};

/// Switching it on without naming a client.
constexpr uint8_t kNoClient = 0;

struct AdvertisingParameters {
    uint16_t least_interval;
    uint16_t most_interval;
    uint8_t type;
    uint8_t channels;
    uint16_t timeout_s;
};

bool are_intervals(uint16_t least, uint16_t most) {
    return least >= 0x20 && least <= most && most <= 0x4000;
}

bool are_good(const AdvertisingParameters& p) {
    return are_intervals(p.least_interval, p.most_interval) && p.type <= kNonConnectable &&
           p.channels >= 1 && p.channels <= 7;
}

class Advertising : public Module {
public:
    Advertising(Hub& hub, std::shared_ptr<LowEnergy> low_energy)
        : Module(hub), low_energy_(std::move(low_energy)), agenda_(hub.loop) {
        low_energy_->listen({[this](uint8_t client_if) {
                                 end({Source::Listen, client_if});
                                 end({Source::Instance, client_if});
                             },
                             {}});
    }

    std::vector<Command> commands() override {
        return {
            row("KD", &Advertising::listen),           row("KZA", &Advertising::listen_with_intervals),
            row("KZC", &Advertising::advertise),       row("KXO", &Advertising::enable),
            row("KXP", &Advertising::update),          row("KXN", &Advertising::disable),
            row("KXQ", &Advertising::set_client_data), row("KXR", &Advertising::set_server_data),
            row("KZB", &Advertising::set_raw_data),
        };
    }

    void radio_off() override { end_all(); }
    void client_left() override { end_all(); }

private:
    enum class Source { Listen, Instance };
    using Key = std::pair<Source, uint8_t>;

    struct Advertisement {
        bool inviting;
        /// What ends it, or 0.
        uint64_t end;
    };

    void begin(const Key& key, bool inviting, uint16_t timeout_s = 0) {
        end(key);
        uint64_t entry = 0;
        if (timeout_s > 0) {
            entry = agenda_.add(hub().pace.discoverable_second * timeout_s, [this, key] {
                end(key);
                answer("KZH", key.second, kGattSuccess);
            });
        }
        advertisements_[key] = {inviting, entry};
        if (inviting) {
            low_energy_->set_inviting(true);
        }
    }

    /// False when it was not there.
    bool end(const Key& key) {
        const auto it = advertisements_.find(key);
        if (it == advertisements_.end()) {
            return false;
        }
        agenda_.cancel(it->second.end);
        advertisements_.erase(it);
        for (const auto& other : advertisements_) {
            if (other.second.inviting) {
                return true;
            }
        }
        low_energy_->set_inviting(false);
        return true;
    }

    void end_all() {
        agenda_.clear();
        advertisements_.clear();
        low_energy_->set_inviting(false);
    }

    GattStatus permission(bool known) {
        return world().adapter.powered && known ? kGattSuccess : kGattError;
    }

    void answer(const char* tag, uint8_t id, GattStatus status) {
        send(Event(tag).byte(id).byte(status));
    }

    // Simple advertising.

    void listen(uint8_t client_if, bool on, GattStatus status) {
        if (status == kGattSuccess) {
            const Key key{Source::Listen, client_if};
            if (on) {
                begin(key, true);
            } else {
                end(key);
            }
            hub().log.note(on ? "the client advertises" : "the client no longer advertises");
        }
        // Unlike its neighbours with the status first.
        send(Event("KZA").byte(status).byte(client_if));
    }

    void listen(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const bool on = fields.byte("enable") != 0;
        fields.end();
        listen(client_if, on, permission(low_energy_->is_client(client_if)));
    }

    void listen_with_intervals(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const bool on = fields.byte("enable") != 0;
        const uint16_t least = fields.word("least interval");
        const uint16_t most = fields.word("longest interval");
        fields.end();
        const bool good = !on || are_intervals(least, most);
        listen(client_if, on, permission(good && low_energy_->is_client(client_if)));
    }

    void advertise(Fields& fields) {
        const bool on = fields.byte("enable") != 0;
        fields.end();
        listen(kNoClient, on, permission(true));
    }

    // Instances, one for each client.

    static AdvertisingParameters parameter_fields(Fields& fields) {
        AdvertisingParameters p{};
        p.least_interval = fields.word("least interval");
        p.most_interval = fields.word("longest interval");
        p.type = fields.byte("type");
        p.channels = fields.byte("channels");
        fields.byte("transmission power");
        p.timeout_s = fields.word("time-out");
        fields.end();
        return p;
    }

    void instance(const char* tag, Fields& fields, bool updating) {
        const uint8_t client_if = fields.byte("client");
        const AdvertisingParameters p = parameter_fields(fields);
        const Key key{Source::Instance, client_if};
        const bool is_there = advertisements_.count(key) > 0;
        const GattStatus status =
            permission(are_good(p) && low_energy_->is_client(client_if) && is_there == updating);
        answer(tag, client_if, status);
        if (status == kGattSuccess) {
            begin(key, p.type == kConnectable || p.type == kConnectableDirected, p.timeout_s);
        }
    }

    void enable(Fields& fields) { instance("KZE", fields, false); }
    void update(Fields& fields) { instance("KZF", fields, true); }

    void disable(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        fields.end();
        const bool was_there = end({Source::Instance, client_if});
        answer("KZH", client_if, was_there ? kGattSuccess : kGattError);
    }

    // What is advertised.

    /// The fields that say what is to be in it, up to the transmission power.
    struct Contents {
        bool response = false;
        bool name = false;
        bool power = false;
    };

    static Contents contents_fields(Fields& fields) {
        Contents contents;
        contents.response = fields.byte("is scan response") != 0;
        contents.name = fields.byte("with name") != 0;
        contents.power = fields.byte("with transmission power") != 0;
        return contents;
    }

    /// The flags, which every advertisement begins with, the name and the power.
    std::string common(const Contents& contents) {
        std::string data;
        if (!contents.response) {
            data += ad_structure(kAdFlags, "\x06");
        }
        if (contents.name) {
            data += ad_structure(kAdName, world().adapter.name);
        }
        if (contents.power) {
            data += ad_structure(kAdTxPower, std::string(1, '\0'));
        }
        return data;
    }

    /// Appearance, then what manufacturer and services have to say.
    static std::string specific(Fields& fields) {
        const uint16_t appearance = fields.word("appearance");
        std::string data = appearance == 0 ? "" : ad_structure(kAdAppearance, le16(appearance));
        const std::string manufacturer = fields.block("manufacturer data");
        const std::string service = fields.block("service data");
        const std::string uuids = fields.block("service UUIDs");
        fields.end();
        if (!manufacturer.empty()) {
            data += ad_structure(kAdManufacturer, manufacturer);
        }
        if (!service.empty()) {
            data += ad_structure(kAdServiceData, service);
        }
        if (!uuids.empty()) {
            const bool whole = uuids.size() % Octets16().size() == 0;
            data += ad_structure(whole ? kAdAllUuids128 : kAdAllUuids16, uuids);
        }
        return data;
    }

    void set_data(uint8_t id, bool known, bool response, const std::string& data) {
        GattStatus status = permission(known);
        if (status == kGattSuccess && data.size() > kLongestAdvertisement) {
            hub().log.note("refused: " + std::to_string(data.size()) +
                           " bytes of advertising data, at most 31 are possible");
            status = kInvalidLength;
        } else if (status == kGattSuccess && !is_well_formed_ad(data)) {
            hub().log.note("refused: the advertising data does not consist of whole structures");
            status = kGattError;
        }
        if (status == kGattSuccess) {
            hub().log.note(std::string(response ? "scan response: " : "advertisement: ") +
                           hex_text(data));
        }
        answer("KZG", id, status);
    }

    void set_client_data(Fields& fields) {
        const uint8_t client_if = fields.byte("client");
        const Contents contents = contents_fields(fields);
        const std::string data = common(contents) + specific(fields);
        set_data(client_if, low_energy_->is_client(client_if), contents.response, data);
    }

    void set_server_data(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const Contents contents = contents_fields(fields);
        std::string data = common(contents);
        const uint16_t least = fields.word("least connection interval");
        const uint16_t most = fields.word("longest connection interval");
        if (least != 0 || most != 0) {
            data += ad_structure(kAdConnectionIntervals, le16(least) + le16(most));
        }
        data += specific(fields);
        set_data(server_if, is_known(server_if), contents.response, data);
    }

    void set_raw_data(Fields& fields) {
        const uint8_t server_if = fields.byte("server");
        const bool response = fields.byte("is scan response") != 0;
        const std::string data = fields.block("data");
        fields.end();
        set_data(server_if, is_known(server_if), response, data);
    }

    /// A server may advertise as the client that it registered for this.
    bool is_known(uint8_t id) { return low_energy_->is_server(id) || low_energy_->is_client(id); }

    std::shared_ptr<LowEnergy> low_energy_;
    Agenda agenda_;
    std::map<Key, Advertisement> advertisements_;
};

} // namespace

std::unique_ptr<Module> make_advertising(Hub& hub, std::shared_ptr<LowEnergy> low_energy) {
    return std::make_unique<Advertising>(hub, std::move(low_energy));
}

} // namespace sim
