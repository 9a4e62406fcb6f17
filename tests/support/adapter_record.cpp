// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/adapter_record.h"

#include "support/text.h"

#include <sstream>

namespace support {
namespace {

std::string HexText(const uint8_t* data, size_t length) {
    static const char* const kDigits = "0123456789ABCDEF";
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 0x0F];
    }
    return text;
}

std::string Text(int value) {
    return std::to_string(value);
}

std::string Text(const bt_bdaddr_t& address) {
    return AddressText(address);
}

std::string Text(const char* text) {
    return text == nullptr ? "null" : "\"" + Escaped(text) + "\"";
}

std::string Text(const bt_oob_data_t& oob) {
    return HexText(oob.data, sizeof(oob.data));
}

template <typename... Arguments>
void Record(const char* name, const Arguments&... arguments) {
    std::string list;
    ((list += (list.empty() ? "" : ", ") + Text(arguments)), ...);
    AdapterRecord().Add(std::string(name) + "(" + list + ")");
}

void DeviceFound(bt_bdaddr_t address, uint8_t type, int device_class, uint8_t rssi, char* name,
                 uint8_t count,
                 uint16_t* uuids) { // NOLINT(readability-non-const-parameter): the table's type
    std::ostringstream list;
    list << (uuids == nullptr ? "null" : "[");
    for (int i = 0; uuids != nullptr && i < count; ++i) {
        const uint8_t bytes[2] = {static_cast<uint8_t>(uuids[i] >> 8),
                                  static_cast<uint8_t>(uuids[i] & 0xFF)};
        list << (i == 0 ? "" : " ") << HexText(bytes, 2);
    }
    list << (uuids == nullptr ? "" : "]");
    AdapterRecord().Add("device_found(" + Text(address) + ", " + Text(type) + ", " +
                        Text(device_class) + ", " + Text(rssi) + ", " + Text(name) + ", " +
                        Text(count) + ", " + list.str() + ")");
}

void AppGapStarted(uint16_t length, uint8_t* data) {
    const std::string bytes = data == nullptr && length > 0 ? "null" : HexText(data, length);
    AdapterRecord().Add("app_gap_started(" + Text(length) + ", " + bytes + ")");
}

bluetooth_callback_t MakeTable() {
    bluetooth_callback_t table{};
    table.state_changed_cb = [](uint8_t state) { Record("state_changed", state); };
    table.bt_version_cb = [](char* version) {
        Record("bt_version", static_cast<const char*>(version));
    };
    table.device_found_cb = DeviceFound;
    table.discovery_state_changed_cb = [](uint8_t state) { Record("discovery_state_changed", state); };
    table.pin_request_cb = [](bt_bdaddr_t address, int device_class, uint8_t min_16, char* name) {
        Record("pin_request", address, device_class, min_16, static_cast<const char*>(name));
    };
    table.ssp_request_cb = [](bt_bdaddr_t address, int device_class, uint8_t variant, int passkey,
                              char* name) {
        Record("ssp_request", address, device_class, variant, passkey, static_cast<const char*>(name));
    };
    table.bond_state_changed_cb = [](uint8_t status, bt_bdaddr_t address, uint8_t state) {
        Record("bond_state_changed", status, address, state);
    };
    table.acl_state_changed_cb = [](uint8_t status, bt_bdaddr_t address, uint8_t state) {
        Record("acl_state_changed", status, address, state);
    };
    table.app_gap_started_cb = AppGapStarted;
    table.connection_auth_req_cb = [](bt_bdaddr_t address, uint8_t profile) {
        Record("connection_auth_req", address, profile);
    };
    table.le_rx_test_cb = [](uint8_t status) { Record("le_rx_test", status); };
    table.le_tx_test_cb = [](uint8_t status) { Record("le_tx_test", status); };
    table.le_test_end_cb = [](uint8_t status, uint16_t packets) {
        Record("le_test_end", status, packets);
    };
    table.read_bt_address_cb = [](uint8_t status, bt_bdaddr_t address) {
        Record("read_bt_address", status, address);
    };
    table.read_rssi_cb = [](bt_bdaddr_t address, uint8_t status, uint8_t rssi) {
        Record("read_rssi", address, status, rssi);
    };
    table.read_local_device_oob_data_cb = [](uint8_t status, bt_oob_data_t c192, bt_oob_data_t r192) {
        Record("read_local_device_oob_data", status, c192, r192);
    };
    table.read_local_device_oob_data_ex_cb = [](uint8_t status, bt_oob_data_t c192, bt_oob_data_t r192,
                                                bt_oob_data_t c256, bt_oob_data_t r256) {
        Record("read_local_device_oob_data_ex", status, c192, r192, c256, r256);
    };
    return table;
}

} // namespace

Recorder& AdapterRecord() {
    static Recorder record;
    return record;
}

bluetooth_callback_t* AdapterRecordingTable() {
    static bluetooth_callback_t table = MakeTable();
    return &table;
}

std::string AddressText(const bt_bdaddr_t& address) {
    const uint8_t bytes[6] = {address.address[5], address.address[4], address.address[3],
                              address.address[2], address.address[1], address.address[0]};
    return HexText(bytes, sizeof(bytes));
}

bt_bdaddr_t Address(const std::string& digits) {
    bt_bdaddr_t address{};
    for (size_t i = 0; i < 6; ++i) {
        address.address[5 - i] = static_cast<uint8_t>(std::stoi(digits.substr(2 * i, 2), nullptr, 16));
    }
    return address;
}

} // namespace support
