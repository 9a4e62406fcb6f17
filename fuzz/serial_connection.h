// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A serial connection as the server's events make one, and an application that reads it to its end.
#ifndef VYM_FUZZ_SERIAL_CONNECTION_H
#define VYM_FUZZ_SERIAL_CONNECTION_H

#include "target.h"
#include "vym_rfcomm_impl.h"

#include <string>

namespace fuzz {

class SerialConnection {
public:
    explicit SerialConnection(uint8_t handle) {
        vym_bluetooth_socket_t values = {};
        values.handle = values.server_handle = handle;
        values.connected = 1;
        vym_rfcomm_add_connection(&values, 0);
        socket_ = vym_rfcomm_find_client(values.address, handle);
    }

    /// As after a disconnection, so many bytes at a time.
    void read_to_end(size_t step) {
        const Exact room(std::string(step, '\0'));
        vym_rfcomm_mark_disconnected(socket_->handle);
        while (vym_rfcomm_take_data(socket_, room.data(), room.size()) > 0) {
        }
    }

private:
    vym_bluetooth_socket_t* socket_;
};

} // namespace fuzz

#endif
