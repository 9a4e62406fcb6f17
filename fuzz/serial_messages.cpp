// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial reader: messages go to their connections, and the application reads what they hold.

#include "applications.h"
#include "hand_over.h"
#include "target.h"
#include "vym_bluetooth.h"
#include "vym_rfcomm_impl.h"

#include <string>

namespace {

constexpr int kConnections = 2;

vym_bluetooth_socket_t* connect(uint8_t handle) {
    vym_bluetooth_socket_t values = {};
    values.handle = values.server_handle = handle;
    values.connected = 1;
    vym_rfcomm_add_connection(&values, 0);
    return vym_rfcomm_find_client(values.address, handle);
}

void read_to_end(vym_bluetooth_socket_t* socket, size_t step) {
    const fuzz::Exact room(std::string(step, '\0'));
    vym_rfcomm_mark_disconnected(socket->handle);
    while (vym_rfcomm_take_data(socket, room.data(), room.size()) > 0) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::require(fuzz::be_quiet(), "standard output can be closed");
    fuzz::Pair pair;
    vym_application_of("bluetooth")->start();
    vym_application_of("rfcomm")->start();
    vym_bluetooth_socket_t* sockets[kConnections] = {connect(1), connect(2)};
    fuzz::hand_over(IPC_ID_SPP, pair.theirs());
    pair.close_theirs();
    fuzz::send_all_and_end(pair.ours(), fuzz::text_of(data, size));
    fuzz::wait_for_end(pair.ours());
    read_to_end(sockets[0], 1);
    read_to_end(sockets[1], 1000);
    vym_application_of("rfcomm")->stop();
    vym_application_of("bluetooth")->stop();
    return 0;
}
