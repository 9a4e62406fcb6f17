// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the adapter's wire tests share: values as they travel, and a session in which calls are
// answered.
#ifndef VYM_TESTS_WIRE_ADAPTER_SUPPORT_H
#define VYM_TESTS_WIRE_ADAPTER_SUPPORT_H

#include "support/probe_parser.h"
#include "support/session.h"

#include "vym_bluetooth.h"

#include <future>
#include <regex.h>
#include <string>
#include <string_view>
#include <vector>

namespace wire {

using support::Address;
using support::AddressText;
using support::Bytes;
using support::Event;

/** A1:B2:C3:D4:E5:F6, whose bytes show any change of their order. */
constexpr bt_bdaddr_t kDevice = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};

/** The number in so many upper-case digits. */
inline std::string Hex(unsigned value, int digits) {
    std::string text;
    for (int i = digits - 1; i >= 0; --i) {
        text += "0123456789ABCDEF"[value >> (4 * i) & 0xFU];
    }
    return text;
}

/** The number's 32 bits, lowest byte first. */
inline std::string Number(unsigned value) {
    return Bytes({static_cast<int>(value & 0xFFU), static_cast<int>(value >> 8 & 0xFFU),
                  static_cast<int>(value >> 16 & 0xFFU), static_cast<int>(value >> 24)});
}

/** The address as it lies in memory, address[0] first. */
inline std::string Raw(const bt_bdaddr_t& address) {
    return {reinterpret_cast<const char*>(address.address), sizeof address.address};
}

/** An escaped block behind the four digits that count its escaped bytes. */
inline std::string Block(const std::string& bytes) {
    std::string escaped;
    for (const char byte : bytes) {
        switch (static_cast<uint8_t>(byte)) {
        case 0x00:
            escaped += "\xDC\xDD";
            break;
        case 0x0D:
            escaped += "\xDC\xDE";
            break;
        case 0x0A:
            escaped += "\xDC\xDF";
            break;
        case 0xDC:
            escaped += "\xDC\xDC";
            break;
        default:
            escaped += byte;
        }
    }
    return Hex(static_cast<unsigned>(escaped.size()), 4) + escaped;
}

/** One property: type and length in two digits each, then the bytes. */
inline std::string Record(unsigned type, const std::string& bytes) {
    return Hex(type, 2) + Hex(static_cast<unsigned>(bytes.size()), 2) + bytes;
}

inline std::string Joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += part;
    }
    return text;
}

/** The event that brings these properties of the adapter, without its NUL. */
inline std::string AdapterProperties(const std::vector<std::string>& records) {
    return "BB00" + Hex(static_cast<unsigned>(records.size()), 2) + Block(Joined(records));
}

/** The event that brings these properties of a remote device, without its NUL. */
inline std::string DeviceProperties(const bt_bdaddr_t& device,
                                    const std::vector<std::string>& records) {
    return "BC00" + AddressText(device) + Hex(static_cast<unsigned>(records.size()), 2) +
           Block(Joined(records));
}

/** The value of the bonded-device property, one device of the server's list. */
inline std::string SavedDevice(int total, int index, const bt_bdaddr_t& address,
                               unsigned class_of_device, const std::string& name) {
    const std::string no_services(33, '\0');
    return Bytes({total, index}) + Raw(address) + Number(class_of_device) + no_services + name;
}

/** The event that says that the server has no bonded devices, without its NUL. */
inline std::string NoSavedDevices() {
    return AdapterProperties({Record(15, Bytes({0}))});
}

inline std::string NameText(const bt_bdname_t& name) {
    return {reinterpret_cast<const char*>(name.name),
            strnlen(reinterpret_cast<const char*>(name.name), sizeof name.name)};
}

/** Whether the extended regular expression occurs in the text. */
inline bool Occurs(const std::string& expression, const std::string& text) {
    regex_t compiled;
    if (regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
        ADD_FAILURE() << "this is no regular expression: " << expression;
        return false;
    }
    const bool found = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    return found;
}

/** A session with the adapter started, in which calls that wait are answered. */
class AdapterWireTest : public support::AdapterTest {
protected:
    /** Makes the call on a thread of its own. */
    template <typename Call>
    [[nodiscard]] static auto Start(Call call) {
        return std::async(std::launch::async, call);
    }

    /** Makes the call, expects its command and answers with these events; returns what it returned. */
    template <typename Call>
    auto Ask(Call call, std::string_view command, const std::vector<std::string>& answer) {
        auto result = Start(call);
        Server().ExpectCommand(command);
        Server().SendEvents(answer);
        return result.get();
    }

    /** Makes the call and does not answer. */
    template <typename Call>
    auto AskInVain(Call call, std::string_view command) {
        auto result = call();
        Server().ExpectCommand(command);
        return result;
    }

    /** Sends the events and waits until they have been handled. */
    void Handle(const std::vector<std::string>& events) {
        Server().SendEvents(events);
        EXPECT_TRUE(Session().EventsAreHandled());
    }

    /** Sends an event: exactly these callbacks come of it, and the library lives on. */
    void ExpectDelivered(const std::string& event, const std::vector<std::string>& entries) {
        SCOPED_TRACE(support::Escaped(event));
        Handle({event});
        EXPECT_EQ(Adapter().Take(), entries);
    }

    /** How often the library has printed this. */
    [[nodiscard]] size_t Printed(const std::string& text) {
        const std::string out = Output().Out();
        size_t count = 0;
        for (size_t at = out.find(text); at != std::string::npos; at = out.find(text, at + 1)) {
            ++count;
        }
        return count;
    }

    /** How many waits for any answer have ended without one. */
    [[nodiscard]] size_t TimeOuts() { return Printed("wait for sync event("); }

    /** Puts a value into the cache of the getters; nobody is waiting for it. */
    void Cache(unsigned type, const std::string& bytes) {
        Handle({AdapterProperties({Record(type, bytes)})});
    }
};

} // namespace wire

#endif
