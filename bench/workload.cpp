// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "workload.h"

#include <cstdio>
#include <initializer_list>

namespace bench {
namespace {

constexpr int kEntries = 5000;
constexpr char kAddressText[] = "001A7DDA7113";

std::string hex(uint32_t number, int digits) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%0*X", digits, number);
    return text.data();
}

template <size_t Size>
std::string hex(const std::array<uint8_t, Size>& bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        text += hex(byte, 2);
    }
    return text;
}

// Nothing in what is sent here needs an escape.
std::string block(std::string_view bytes) {
    return hex(static_cast<uint32_t>(bytes.size()), 4) + std::string(bytes);
}

std::string payload() {
    return block({reinterpret_cast<const char*>(kPayload.data()), kPayload.size()});
}

void add(Stream* stream, const std::string& event, bool counted = true) {
    stream->text += event;
    stream->text += '\0';
    ++stream->events;
    stream->counted += counted ? 1 : 0;
}

Stream mixed() {
    const std::string address = kAddressText;
    const std::string uuid = hex(kService);
    Stream all;
    const std::initializer_list<std::string> events = {
        "PA01",
        "BE01",
        "BH00" + address + "02",
        "BI00" + address + "00",
        "BD" + address + "0100240404C40004" + "\x12\x11\x1E\x11" + "Headset",
        "BS" + address + "00C4",
        "BC00" + address + "01" + block("0107Headset"),
        std::string("SM") + address + uuid + "05",
        "SL0105",
        "HF0004",
        "HG0003",
        "HP000009",
        "HQ0000",
        "HS01",
        "HWMaker",
        "AA" + address + "02",
        "AB" + address + "02",
        "AC" + address + "0000AC4402",
        "RA4401",
        "RK" + address + "0003A98000001F40",
        "RL" + address + "01",
        "RWB" + address + "0001",
        "TE000100640000",
        "TD600012050914Miller;Ann;;0301234567",
        "KB" + address + "C400" + block("\x02\x01\x06\x05\x09Lamp"),
        "KC" + address + block("Lamp"),
        "KG000100",
        "KR01" + address + "C400",
        "KM0001000000" + hex(kServiceInstance, 2) + uuid + "0020" + uuid + "01" + payload(),
        "JJ000001",
        "JN000100",
        "JP000100F7",
        "JL" + address + "00010002002000000100" + payload(),
        "DF01",
        "DC010200000040",
        "DG01" + block("\x01\x02\x03\x04")};
    for (const std::string& event : events) {
        add(&all, event, false);
    }
    add(&all, notification());
    return all;
}

// Contacts: target, index, kind of number, lengths of name (hexadecimal) and number (decimal).
Stream phone_book() {
    Stream book;
    for (int i = 0; i < kEntries; ++i) {
        const std::string number = std::to_string(i);
        const std::string name = std::string("Surname").append(number) + ";Given" + number + ";;;";
        const std::string phone = "+4930" + std::to_string(1000000 + i);
        std::string entry = "TD6" + hex(static_cast<uint32_t>(i), 4) + "1";
        entry += hex(static_cast<uint32_t>(name.size()), 2);
        entry += std::to_string(phone.size());
        entry += name;
        entry += phone;
        add(&book, entry);
    }
    return book;
}

Stream hall() {
    Stream adverts;
    for (int i = 0; i < kEntries; ++i) {
        const std::string address = "C0FFEE" + hex(static_cast<uint32_t>(i), 6);
        const std::string name = "Badge " + std::to_string(1000 + i);
        add(&adverts, "KB" + address + hex(static_cast<uint32_t>(0xA0 + i % 64), 2) + "00" +
                          block("\x02\x01\x06\x0B\x09" + name));
        add(&adverts, "KC" + address + block(name), false);
    }
    return adverts;
}

Stream repeated(const std::string& event) {
    Stream same;
    for (int i = 0; i < 1000; ++i) {
        add(&same, event);
    }
    return same;
}

} // namespace

std::string notification() {
    return "KD" + hex(kConnection, 4) + kAddressText + "00" + hex(kServiceInstance, 4) + hex(kService) +
           hex(kValueInstance, 4) + hex(kCharacteristic) + "01" + payload();
}

std::string write_command() {
    std::array<uint8_t, 16> service = kService;
    std::array<uint8_t, 16> characteristic = kCharacteristic;
    for (size_t i = 0; i < service.size(); ++i) {
        service[i] = kService[service.size() - 1 - i];
        characteristic[i] = kCharacteristic[service.size() - 1 - i];
    }
    return "AT#KM" + hex(kConnection, 4) + "00" + hex(kServiceInstance, 4) + hex(service) +
           hex(kValueInstance, 4) + hex(characteristic) + "0200" + payload() + "\r\n";
}

std::string name_answer() {
    return "BB0001" + block("010BKitchenUnit");
}

Stream stream(std::string_view workload) {
    const std::string address = kAddressText;
    if (workload == "event" || workload == "flood" || workload == "ten-million") {
        return repeated(notification());
    }
    if (workload == "mixed") {
        return mixed();
    }
    if (workload == "phone-book") {
        return phone_book();
    }
    if (workload == "hall") {
        return hall();
    }
    if (workload == "first-tag") {
        return repeated("RC01" + address);
    }
    if (workload == "last-tag") {
        return repeated("RWG" + address + "01");
    }
    return {};
}

} // namespace bench
