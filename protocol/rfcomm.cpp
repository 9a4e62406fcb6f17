// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Serial channels. Their payload travels on a descriptor of its own.

#include "fields.h"

namespace protocol {
namespace {

constexpr Message kCommands[] = {
    {"SE", "connect", 0, {address(), uuid_last("uuid"), byte("port")}},
    {"SF", "disconnect", 0, {dword("handle")}},
    {"SL", "listen", 0, {uuid_last("uuid"), byte("port"), text("service_name")}},
    {"SM", "fetch_channels", 0, {address(), uuid_last("uuid")}},
    {"SN", "server_disconnect", 0, {byte("channel")}},
};

constexpr Message kEvents[] = {
    {"SE",
     "onRfcommConnectionResult",
     32,
     {byte("status"), address(), byte("server_channel"), dword("handle"), word("max_tx"),
      word("max_rx"), byte("credit_in"), byte("credit_out"), byte("is_server")}},
    {"SF", "onRfcommDisconnectionResult", 10, {byte("status"), dword("handle")}},
    {"SL", "onRfcommListenResult", 4, {byte("status"), byte("server_channel")}},
    {"SM", "onRfcommFetchChannels", 46, {address(), uuid_first("uuid"), byte("channel")}},
    {"SN", "onRfcommFetchChannelsEnd", 46, {address(), uuid_first("uuid"), byte("channel")}},
};

} // namespace

const Profile kRfcomm{"rfcomm", "Serial port (RFCOMM)", kCommands, kEvents};

} // namespace protocol
