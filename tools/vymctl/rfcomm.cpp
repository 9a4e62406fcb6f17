// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <map>
#include <mutex>
#include <vym/vym_rfcomm.h>

namespace vymctl {
namespace {

using callbacks = rfcomm_callback_t;

/// What the library's pointers are called here: numbers from 1, as they come.
template <typename T>
class Numbered {
public:
    int add(T* object) {
        const std::lock_guard lock(mutex_);
        for (const auto& [number, known] : objects_) {
            if (known == object) {
                return number;
            }
        }
        objects_[++last_] = object;
        return last_;
    }
    /// Throws Usage.
    T* find(int number) {
        const std::lock_guard lock(mutex_);
        const auto it = objects_.find(number);
        if (it == objects_.end()) {
            throw Usage("there is no socket " + std::to_string(number) + " in this session");
        }
        return it->second;
    }
    void remove(int number) {
        const std::lock_guard lock(mutex_);
        objects_.erase(number);
    }

private:
    std::mutex mutex_;
    std::map<int, T*> objects_;
    int last_ = 0;
};

Numbered<vym_bluetooth_socket_t> s_sockets;
Numbered<vym_bluetooth_server_socket_t> s_servers;

Outcome socket_outcome(vym_bluetooth_socket_t* socket) {
    if (socket == nullptr) {
        return {"no connection", {}};
    }
    return {"", Json{{"socket", s_sockets.add(socket)},
                     {"address", to_text(vym_rfcomm_get_address(socket))},
                     {"handle", socket->handle}}};
}

Outcome connect(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
    return socket_outcome(vym_rfcomm_connect(address, uuid, channel));
}

Outcome listen(bt_uuid_t uuid, uint8_t channel, std::string name) {
    vym_bluetooth_server_socket_t* server = vym_rfcomm_listen(uuid, channel, name.data());
    if (server == nullptr) {
        return {"the server opened no channel", {}};
    }
    return {"", Json{{"server", s_servers.add(server)}, {"channel", server->server_channel}}};
}

Outcome accept(int server) {
    return socket_outcome(vym_rfcomm_accept(s_servers.find(server)));
}

Outcome read(int socket, int count) {
    std::string bytes(static_cast<size_t>(count), '\0');
    const ssize_t got = vym_rfcomm_read(s_sockets.find(socket), bytes.data(), bytes.size());
    if (got < 0) {
        // The library has freed it.
        s_sockets.remove(socket);
        return {"the connection has ended", {}};
    }
    bytes.resize(static_cast<size_t>(got));
    return {"", Json{{"data", to_hex(bytes)}, {"text", bytes}}};
}

Outcome write(int socket, const std::string& text) {
    const ssize_t sent = vym_rfcomm_write(s_sockets.find(socket), text.data(), text.size());
    return sent < 0 ? Outcome{"not sent: the connection has ended", {}} : Outcome{};
}

Outcome server_close(int server) {
    const bt_status_t status = vym_rfcomm_server_close(s_servers.find(server));
    s_servers.remove(server);
    return status_outcome(status);
}

constexpr const char* kSocket = "socket=1..2147483647";

std::vector<Verb> verbs() {
    return {
        verb(
            "init", "vym_rfcomm_init", [] { restart("rfcomm"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_rfcomm_done", [] { halt("rfcomm"); }, "", "stops the module")
            .alone(),
        verb("channels", VYMCTL_CALL(vym_rfcomm_fetch_channels), "address uuid?1101",
             "asks which channels a device offers", "rfcomm.channels-end"),
        verb("connect", "vym_rfcomm_connect", &connect, "address uuid channel=1..30",
             "connects to a serial service and shows its socket"),
        verb("disconnect", VYMCTL_CALL(vym_rfcomm_disconnect), "handle=0..2147483647",
             "ends the connection with this handle"),
        verb("listen", "vym_rfcomm_listen", &listen, "uuid channel=0..30 name=text",
             "offers a serial service and shows its server"),
        verb("accept", "vym_rfcomm_accept", &accept, "server=1..2147483647",
             "waits for a connection to a server"),
        verb("read", "vym_rfcomm_read", &read, "socket=1..2147483647 count=1..65535?1024",
             "waits for data and shows it"),
        verb("write", "vym_rfcomm_write", &write, "socket=1..2147483647 data=text", "sends data"),
        verb(
            "close", "vym_rfcomm_close",
            [](int socket) { return vym_rfcomm_close(s_sockets.find(socket)); }, kSocket,
            "asks to end a socket's connection"),
        verb(
            "address", "vym_rfcomm_get_address",
            [](int socket) { return vym_rfcomm_get_address(s_sockets.find(socket)); }, kSocket,
            "shows whom a socket is connected to")
            .alone(),
        verb("server-close", "vym_rfcomm_server_close", &server_close, "server=1..2147483647",
             "ends a service"),
        verb("server-disconnect", VYMCTL_CALL(vym_rfcomm_server_disconnect), "channel=1..30",
             "asks the server to end the service on a channel"),
    };
}

std::vector<EventRow> events() {
    return {
        on<&callbacks::rfcomm_fetch_channels_cb>("rfcomm.channel", "address uuid channel"),
        on<&callbacks::rfcomm_fetch_channels_end_cb>("rfcomm.channels-end", "address uuid channel"),
    };
}

} // namespace

Profile rfcomm_profile() {
    return make_profile<callbacks, vym_rfcomm_init, vym_rfcomm_done>(
        "rfcomm", "Serial channels (RFCOMM)", verbs(), events());
}

} // namespace vymctl
