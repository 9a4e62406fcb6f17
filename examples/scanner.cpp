// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A scanner: listens to what advertises nearby and shows the devices that pass all filters given.
//
// usage: scanner DIRECTORY [FILTER...]      (the directory of the server's socket)
//   service=180D   offers this service
//   name=Heart     has a name that begins so
//   rssi=-80       is received with at least so many dBm

#include "radio.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>
#include <vym/vym_gatt_client.h>

namespace {

constexpr int kAdvertisements = 20;
// Types of AD structures (Assigned Numbers, 2.3).
enum AdType : uint8_t { kSomeUuids16 = 0x02, kAllUuids16 = 0x03, kShortName = 0x08, kName = 0x09 };

struct Device {
    int rssi = 0;
    std::string name;
    std::vector<unsigned> services;
};

using Filter = std::function<bool(const Device&)>;
using Address = std::array<uint8_t, sizeof(bt_bdaddr_t::address)>;

// What the callback has heard; guarded by the scene's lock.
std::map<Address, Device> nearby;
int heard = 0;

// Advertising data is a row of structures: length, type, and length - 1 bytes.
void take_over(Device& device, const uint8_t* data, size_t size) {
    for (size_t at = 0; at + 1 < size && data[at] > 0 && at + data[at] < size;
         at += data[at] + size_t{1}) {
        const uint8_t* value = data + at + 2;
        const size_t length = data[at] - size_t{1};
        switch (data[at + 1]) {
        case kShortName:
        case kName:
            device.name.assign(value, value + length);
            break;
        case kSomeUuids16:
        case kAllUuids16:
            device.services.clear();
            for (size_t i = 0; i + 1 < length; i += 2) {
                device.services.push_back(value[i] | static_cast<unsigned>(value[i + 1]) << 8);
            }
            break;
        default:
            break;
        }
    }
}

// A callback, on the library's receive thread. A device's name often comes in a packet of its own, the
// scan response, so what is known of a device grows.
void on_scan_result(bt_bdaddr_t address, uint8_t rssi, uint16_t length, uint8_t* data, uint8_t) {
    Address key{};
    std::copy(std::begin(address.address), std::end(address.address), key.begin());
    pthread_mutex_lock(&scene.lock);
    Device& device = nearby[key];
    device.rssi = static_cast<int8_t>(rssi);
    take_over(device, data, length);
    const int count = heard + 1;
    pthread_mutex_unlock(&scene.lock);
    if (count <= kAdvertisements) {
        note(&heard, count);
    }
}

Filter filter_of(const std::string& text) {
    const size_t equals = text.find('=');
    const std::string kind = text.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : text.substr(equals + 1);
    char* end = nullptr;
    const long number = std::strtol(value.c_str(), &end, kind == "service" ? 16 : 10);
    const bool is_number = !value.empty() && *end == '\0';
    if (kind == "service" && is_number) {
        return [number](const Device& device) {
            return std::find(device.services.begin(), device.services.end(), number) !=
                   device.services.end();
        };
    }
    if (kind == "name" && !value.empty()) {
        return [value](const Device& device) { return device.name.rfind(value, 0) == 0; };
    }
    if (kind == "rssi" && is_number) {
        return [number](const Device& device) { return device.rssi >= number; };
    }
    throw std::invalid_argument(text + " is no filter; say service=180D, name=Heart or rssi=-80");
}

void show(const Address& address, const Device& device) {
    bt_bdaddr_t octets{};
    std::copy(address.begin(), address.end(), std::begin(octets.address));
    std::string services;
    for (const unsigned service : device.services) {
        std::array<char, 8> digits{};
        snprintf(digits.data(), digits.size(), " %04X", service);
        services += digits.data();
    }
    char text[18];
    say("   %s  %4d dBm  \"%s\" %s", address_text(octets, text), device.rssi, device.name.c_str(),
        services.c_str());
}

void show_who_passes(const std::vector<Filter>& filters) {
    size_t passed = 0;
    for (const auto& [address, device] : nearby) {
        const auto passes = [&seen = device](const Filter& filter) { return filter(seen); };
        if (std::all_of(filters.begin(), filters.end(), passes)) {
            ++passed;
            show(address, device);
        }
    }
    say("   %zu of %zu devices", passed, nearby.size());
}

int scan(char** argv, const std::vector<Filter>& filters) {
    radio_begin("scanner", 2, argv);
    gatt_client_callback_t callbacks{};
    callbacks.scan_result_cb = on_scan_result;
    vym_gatt_client_init(&callbacks);
    radio_on();

    say("1. Listen");
    vym_gatt_client_scan(1);
    await(&heard, kAdvertisements, "enough advertisements");
    vym_gatt_client_scan(0);
    radio_off();
    vym_gatt_client_done(); // no callback runs any more

    say("2. Who passes?");
    show_who_passes(filters);
    radio_end();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: scanner DIRECTORY [service=UUID|name=TEXT|rssi=DBM ...]\n");
        return 2;
    }
    try {
        std::vector<Filter> filters;
        for (int i = 2; i < argc; ++i) {
            filters.push_back(filter_of(argv[i]));
        }
        return scan(argv, filters);
    } catch (const std::invalid_argument& wrong) {
        fprintf(stderr, "scanner: %s\n", wrong.what());
        return 2;
    }
}
