// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The text that goes over the socket.
#ifndef VYM_BENCH_WORKLOAD_H
#define VYM_BENCH_WORKLOAD_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

constexpr std::array<uint8_t, 20> kPayload = {'s', 't', 'e', 'p', 's', '=', '0', '0', '1', '2',
                                              '3', '4', ';', 'p', 'u', 'l', 's', 'e', '=', '7'};
constexpr uint16_t kConnection = 1;
constexpr uint16_t kServiceInstance = 0x10;
constexpr uint16_t kValueInstance = 0x20;
constexpr std::array<uint8_t, 6> kAddress = {0x13, 0x71, 0xDA, 0x7D, 0x1A, 0x00};
constexpr std::array<uint8_t, 16> kService = {0x00, 0x00, 0x18, 0x0D, 0x00, 0x00, 0x10, 0x00,
                                              0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB};
constexpr std::array<uint8_t, 16> kCharacteristic = {0x00, 0x00, 0x2A, 0x37, 0x00, 0x00, 0x10, 0x00,
                                                     0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB};

/// A notification of kPayload, without its NUL.
std::string notification();
/// The write of kPayload, with its line end, as the library writes it.
std::string write_command();

/// What a server answers when asked for the adapter's name.
std::string name_answer();

/// Events over and over, each with its NUL.
struct Stream {
    std::string text;
    long events = 0;
    /// How many of these events the client's callback counts.
    long counted = 0;
};

/// Of these names: "event", "flood", "ten-million" notifications; "mixed" events of all profiles, the
/// last of them a notification; "phone-book" 5,000 entries; "hall" 5,000 advertisers; "first-tag" and
/// "last-tag" events that are decoded alike, from the beginning and the end of one table. Empty for
/// other names.
Stream stream(std::string_view workload);

} // namespace bench

#endif
