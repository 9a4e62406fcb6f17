// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A server that lists bonded devices, and what the application is given of them.
#ifndef VYM_TESTS_WIRE_ADAPTER_BONDED_SUPPORT_H
#define VYM_TESTS_WIRE_ADAPTER_BONDED_SUPPORT_H

#include "wire/adapter_support.h"

#include <cstring>

namespace wire {

// Three devices whose addresses differ in their first and last bytes.
constexpr bt_bdaddr_t kA = {{0xA0, 1, 2, 3, 4, 0xA5}};
constexpr bt_bdaddr_t kB = {{0xB0, 1, 2, 3, 4, 0xB5}};
constexpr bt_bdaddr_t kC = {{0xC0, 1, 2, 3, 4, 0xC5}};

/** One device of the server's list. */
struct Saved {
    bt_bdaddr_t address;
    std::string name;
    unsigned class_of_device = 0;
};

class BondedTest : public AdapterWireTest {
protected:
    /** Addresses and names, "A504030201A0 name", of what the application was given, and `*size`. */
    struct Delivered {
        std::vector<std::string> devices;
        int size = 0;
        std::vector<bt_remote_device_t> raw;
    };

    /** One event for each device, as the server streams them. */
    static std::vector<std::string> Stream(const std::vector<Saved>& list) {
        std::vector<std::string> events;
        const int total = static_cast<int>(list.size());
        for (int i = 0; i < total; ++i) {
            const Saved& one = list[static_cast<size_t>(i)];
            events.push_back(AdapterProperties(
                {Record(15, SavedDevice(total, i, one.address, one.class_of_device, one.name))}));
        }
        return list.empty() ? std::vector<std::string>{NoSavedDevices()} : events;
    }

    static std::string Text(const bt_remote_device_t& device) {
        return AddressText(device.address) + " " + NameText(device.name);
    }

    /** Asks with this room and answers with these events. Entries that were not written must be as they
     *  were, those beyond the room too. */
    Delivered GetWith(int room, const std::vector<std::string>& answer) {
        Delivered result;
        result.size = room;
        result.raw.resize(room > 0 ? static_cast<size_t>(room) + 4 : 4);
        memset(result.raw.data(), kUntouched, result.raw.size() * sizeof(bt_remote_device_t));
        const auto get = [&result] {
            return vym_bluetooth_get_bonded_devices(result.raw.data(), &result.size);
        };
        EXPECT_EQ(Ask(get, "AT#BA0F\r\n", answer), BT_STATUS_SUCCESS);
        size_t written = 0;
        while (written < result.raw.size() && IsWritten(result.raw[written])) {
            result.devices.push_back(Text(result.raw[written++]));
        }
        for (size_t i = written; i < result.raw.size(); ++i) {
            EXPECT_FALSE(IsWritten(result.raw[i])) << "entry " << i;
        }
        EXPECT_LE(written, room > 0 ? static_cast<size_t>(room) : 0U);
        result.raw.resize(written);
        return result;
    }

    Delivered Get(int room, const std::vector<Saved>& list) { return GetWith(room, Stream(list)); }

    /** Asks only for the count. */
    int Count(int size, const std::vector<Saved>& list) {
        const auto get = [&size] { return vym_bluetooth_get_bonded_devices(nullptr, &size); };
        EXPECT_EQ(Ask(get, "AT#BA0F\r\n", Stream(list)), BT_STATUS_SUCCESS);
        return size;
    }

    /** The local list, last entry first, as it is delivered when the server has no bonded device. */
    std::vector<std::string> LocalList() { return Get(10, {}).devices; }

private:
    static constexpr int kUntouched = 0xEE;

    static bool IsWritten(const bt_remote_device_t& device) {
        const std::string bytes(reinterpret_cast<const char*>(&device), sizeof device);
        return bytes != std::string(sizeof device, static_cast<char>(kUntouched));
    }
};

} // namespace wire

#endif
