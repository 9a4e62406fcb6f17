// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The application as a keyboard, a mouse or a game controller.

#include "fields.h"

namespace protocol {
namespace {

constexpr Message kCommands[] = {
    {"DA",
     "register_app",
     0,
     {byte("subclass"), block("name"), block("description"), block("provider"),
      block("report_descriptor"), block("in_qos"), block("out_qos")}},
    {"DB", "unregister_app"},
    {"DC", "send_report", 0, {byte("type"), dword("id"), a_secret(block("report"))}},
    {"DE", "report_error", 0, {byte("error")}},
    {"DF", "unplug"},
    {"DG", "connect", 0, {address()}},
    {"DH", "disconnect"},
};

constexpr Message kEvents[] = {
    {"DA", "onApplicationStateChanged", 20, {address(), dword("state")}},
    {"DB", "onConnectionState", 20, {address(), dword("state")}},
    {"DC", "onGetReport", 12, {byte("type"), byte("id"), dword("buffer_size")}},
    {"DE", "onSetReport", 8, {byte("type"), byte("id"), of_peer(block("data"))}},
    {"DF", "onSetProtocol", 2, {byte("protocol")}},
    {"DG", "onIntrData", 6, {byte("report_id"), of_peer(block("data"))}},
    {"DH", "onVirCableUnplug", 0},
};

} // namespace

const Profile kHid{"hid", "Human interface device (HID)", kCommands, kEvents};

} // namespace protocol
