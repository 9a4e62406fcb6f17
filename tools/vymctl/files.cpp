// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "files.h"

#include "output.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace vymctl {
namespace {

std::string little_endian(uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return text;
}

/// Signs that would end a value.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') {
            result += "\\n";
        } else if (c != '\r') {
            result += std::string(c == '\\' || c == ';' || c == ',' ? "\\" : "") + c;
        }
    }
    return result;
}

std::string text_of(const Event& event, const char* field) {
    return event.value(field).get<std::string>();
}

} // namespace

void add_entry(std::vector<Contact>& contacts, const Event& entry) {
    const auto index = entry.value("index").get<int64_t>();
    const std::string time = text_of(entry, "call_time");
    if (contacts.empty() || contacts.back().index != index || contacts.back().time != time) {
        contacts.push_back({index, text_of(entry, "name"), time, {}});
    }
    if (const std::string number = text_of(entry, "number"); !number.empty()) {
        contacts.back().numbers.push_back(number);
    }
}

std::string to_vcards(const std::vector<Contact>& contacts) {
    std::string text;
    for (const Contact& contact : contacts) {
        text += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + escaped(contact.name) +
                ";;;;\r\nFN:" + escaped(contact.name) + "\r\n";
        for (const std::string& number : contact.numbers) {
            text += "TEL:" + escaped(number) + "\r\n";
        }
        if (!contact.time.empty()) {
            text += "X-IRMC-CALL-DATETIME:" + escaped(contact.time) + "\r\n";
        }
        text += "END:VCARD\r\n";
    }
    return text;
}

std::string to_json_text(const std::vector<Contact>& contacts) {
    Json list = Json::array();
    for (const Contact& contact : contacts) {
        Json object{{"index", contact.index}, {"name", contact.name}, {"numbers", contact.numbers}};
        if (!contact.time.empty()) {
            object["time"] = contact.time;
        }
        list.push_back(std::move(object));
    }
    return list.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string to_wav(const WavFormat& format, const std::string& samples) {
    constexpr uint16_t kSampleBytes = 2;
    const auto size = static_cast<uint32_t>(samples.size());
    const uint32_t frame = format.channels * kSampleBytes;
    return "RIFF" + little_endian(36 + size, 4) + "WAVEfmt " + little_endian(16, 4) +
           little_endian(1, 2) + little_endian(format.channels, 2) + little_endian(format.rate, 4) +
           little_endian(format.rate * frame, 4) + little_endian(frame, 2) +
           little_endian(8 * kSampleBytes, 2) + "data" + little_endian(size, 4) + samples;
}

bool write_file(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content << std::flush;
    if (!file) {
        message('"' + path + "\" cannot be written: " + std::strerror(errno));
    }
    return static_cast<bool>(file);
}

} // namespace vymctl
