// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Events that call nobody and whose values the library keeps: properties, and what serial sockets are.

#include "protocol/generated_values.h"

#include "support/session.h"
#include "support/text.h"
#include "vym_bluetooth_impl.h"
#include "wire/rfcomm_support.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>

namespace {

using generated::Find;
using generated::Kind;
using protocol::Direction;
using protocol::Message;
using protocol::Value;

const Message& EventOf(std::string_view tag) {
    return *protocol::find(Direction::Event, tag).message;
}

std::string Raw(const void* bytes, size_t size) {
    return {static_cast<const char*>(bytes), size};
}

// What the getters' cache holds of an adapter's property, in the bytes of the property; "none" for what
// it does not keep.
std::string CachedOfAdapter(uint32_t type) {
    const vym::lock_guard held(vym::s_adapter.cache_lock);
    switch (type) {
    case 1:
        return reinterpret_cast<const char*>(vym::s_adapter.name.name);
    case 2:
        return Raw(&vym::s_adapter.address, sizeof vym::s_adapter.address);
    case 4:
        return Raw(&vym::s_adapter.class_of_device, 4);
    case 7:
        return Raw(&vym::s_adapter.scan_mode, 4);
    case 9:
        return Raw(&vym::s_adapter.discoverable_timeout, 4);
    case 35:
        return Raw(&vym::s_adapter.num_of_bonded_devices, 4);
    default:
        return "none";
    }
}

std::string CachedOfDevice(uint32_t type, size_t length) {
    const vym::lock_guard held(vym::s_adapter.cache_lock);
    switch (type) {
    case 3: { // at most five
        const bt_128_service_t uuids = vym::s_adapter.uuids;
        return Raw(uuids.services_128bit, size_t{16} * uuids.num_service_128bit);
    }
    case 32:
        return Raw(&vym::s_adapter.priority, 1);
    case 33:
        return Raw(&vym::s_adapter.manuf_code, length);
    default:
        return "none";
    }
}

// The last of the server's list of bonded devices.
bt_remote_device_t LastSaved() {
    const vym::lock_guard held(vym::s_adapter.cache_lock);
    return vym::s_adapter.bonded_devices[vym::s_adapter.bonded_device_number - 1];
}

class KeptValues : public support::AdapterTest {
protected:
    void Send(const Message& message, const std::vector<Value>& values) {
        const std::string text = protocol::encode(message, values);
        Server().Send(support::Event(text));
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Adapter().Take(), std::vector<std::string>{});
    }

    // The local list has the address, with this name and class where they are told.
    static void ExpectListed(const std::string& address, const std::string* name,
                             const uint32_t* device_class) {
        std::array<bt_remote_device_t, 64> devices{};
        const int count = vym_bonded_list_copy(devices.data(), devices.size());
        for (int i = 0; i < count; ++i) {
            const bt_remote_device_t& device = devices.at(static_cast<size_t>(i));
            if (Raw(&device.address, 6) != address) {
                continue;
            }
            if (name != nullptr) {
                EXPECT_EQ(Raw(device.name.name, name->size()), *name);
            }
            if (device_class != nullptr) {
                EXPECT_EQ(device.class_of_device, *device_class);
            }
            return;
        }
        ADD_FAILURE() << "not in the list of bonded devices: " << support::Escaped(address);
    }

    static void ExpectSaved(std::vector<Value> device) {
        if (Find(device, "total")->number == 0) {
            return; // no device at all
        }
        const bt_remote_device_t saved = LastSaved();
        EXPECT_EQ(Raw(&saved.address, 6), Find(device, "address")->bytes);
        EXPECT_EQ(saved.class_of_device, Find(device, "class")->number);
        EXPECT_EQ(saved.num_service, Find(device, "service_count")->number);
        for (size_t i = 0; i < 16; ++i) {
            EXPECT_EQ(saved.services[i], Find(device, "services")->members[i].number);
        }
        EXPECT_STREQ(reinterpret_cast<const char*>(saved.name.name),
                     Find(device, "name")->bytes.c_str());
    }

    static void ExpectKeptOfAdapter(std::vector<Value> property) {
        const uint32_t type = Find(property, "type")->number;
        const std::vector<Value>& value = Find(property, "value")->members;
        if (type == 8) {
            for (const Value& address : value[0].members) {
                ExpectListed(address.bytes, nullptr, nullptr);
            }
        } else if (type == 15) {
            ExpectSaved(value[0].members);
        } else {
            const std::string kept = CachedOfAdapter(type);
            EXPECT_EQ(kept, kept == "none" ? "none" : protocol::encode({}, value)) << "type " << type;
        }
    }

    static void ExpectKeptOfDevice(const std::string& address, std::vector<Value> property) {
        const uint32_t type = Find(property, "type")->number;
        const std::vector<Value>& value = Find(property, "value")->members;
        const std::string bytes = protocol::encode({}, value);
        if (type == 1) {
            ExpectListed(address, &bytes, nullptr);
        } else if (type == 4) {
            ExpectListed(address, nullptr, &value[0].number);
        } else {
            const std::string kept = CachedOfDevice(type, bytes.size());
            EXPECT_EQ(kept, kept == "none" ? "none" : bytes.substr(0, 80)) << "type " << type;
        }
    }

    // Sends the event with generated values of all kinds and hands each of its properties over.
    template <typename Check>
    void ForAllProperties(const Message& message, Check check) {
        for (const Kind kind : generated::kKinds) {
            for (size_t round = 0; round < generated::Rounds(message.fields); ++round) {
                std::vector<Value> values = generated::Values(kind, round).Of(message);
                SCOPED_TRACE(protocol::to_text(values));
                if (const Value* address = Find(values, "address")) {
                    Bond(*address);
                }
                Send(message, values);
                const Value* block = Find(values, "value");
                const size_t count = block->members.empty() ? 0 : block->members[0].members.size();
                for (size_t i = 0; i < count; ++i) {
                    check(values, block->members[0].members[i].members);
                }
            }
        }
    }

    void Bond(const Value& address) {
        bt_bdaddr_t device = {};
        memcpy(device.address, address.bytes.data(), sizeof device.address);
        Server().Send(support::Event("BH00" + support::AddressText(device) + "02"));
        EXPECT_TRUE(
            Adapter().WaitAndRemove("bond_state_changed(0, " + support::AddressText(device) + ", 2)"));
    }
};

TEST_F(KeptValues, TheAdaptersPropertiesAreInTheCache) {
    ForAllProperties(EventOf("BB"), [](const std::vector<Value>&, const std::vector<Value>& property) {
        ExpectKeptOfAdapter(property);
    });
}

TEST_F(KeptValues, ADevicesPropertiesAreInTheCacheAndInTheListOfBondedDevices) {
    ForAllProperties(EventOf("BC"), [](std::vector<Value> values, const std::vector<Value>& property) {
        ExpectKeptOfDevice(Find(values, "address")->bytes, property);
    });
}

class KeptSerialValues : public wire::RfcommTest {};

TEST_F(KeptSerialValues, AConnectionsResultIsItsSocketAndItsEndEndsIt) {
    for (const Kind kind : generated::kKinds) {
        wire::RfcommProfile::Init(wire::Table::kWhole); // great handles are one and the same
        std::vector<Value> values = generated::Values(kind, 0).Of(EventOf("SE"));
        Find(values, "status")->number = 0;
        Find(values, "is_server")->number = 0;
        SCOPED_TRACE(protocol::to_text(values));
        Handle({protocol::encode(EventOf("SE"), values)});
        const auto number = [&](const char* name) { return Find(values, name)->number; };
        bt_bdaddr_t address = {};
        memcpy(address.address, Find(values, "address")->bytes.data(), sizeof address.address);
        vym_bluetooth_socket_t* sock = vym_rfcomm_connect(
            address, wire::kSerialPort, static_cast<uint8_t>(number("server_channel")));
        ASSERT_NE(sock, nullptr);
        EXPECT_EQ(Raw(&sock->address, 6), Find(values, "address")->bytes);
        EXPECT_EQ(sock->server_handle, number("server_channel"));
        const auto handle = std::min<uint32_t>(number("handle"), INT32_MAX);
        EXPECT_EQ(sock->handle, static_cast<int>(handle));
        EXPECT_EQ(sock->outgoing_mfs, number("max_tx"));
        EXPECT_EQ(sock->incoming_mfs, number("max_rx"));
        EXPECT_EQ(sock->incoming_credit, number("credit_in"));
        EXPECT_EQ(sock->outgoing_credit, number("credit_out"));

        std::vector<Value> end = generated::Values(kind, 0).Of(EventOf("SF"));
        Find(end, "handle")->number = number("handle");
        Handle({protocol::encode(EventOf("SF"), end)});
        EXPECT_FALSE(IsConnected(sock));
    }
}

TEST_F(KeptSerialValues, AListensResultIsTheChannelOfItsSocket) {
    for (const Kind kind : generated::kKinds) {
        std::vector<Value> values = generated::Values(kind, 0).Of(EventOf("SL"));
        SCOPED_TRACE(protocol::to_text(values));
        Handle({protocol::encode(EventOf("SL"), values)});
        vym_bluetooth_server_socket_t* server = vym_rfcomm_listen(wire::kSerialPort, 0, nullptr);
        ASSERT_NE(server, nullptr);
        EXPECT_EQ(server->server_channel, Find(values, "server_channel")->number);
        EXPECT_EQ(vym_rfcomm_server_close(server), BT_STATUS_SUCCESS);
    }
}

} // namespace
