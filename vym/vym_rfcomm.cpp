// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_rfcomm.h"

#include "vym_command.h"
#include "vym_os.h"
#include "vym_rfcomm_event.h"
#include "vym_rfcomm_impl.h"
#include "vym_rfcomm_ipc.h"
#include "vym_sdk.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using vym::hex2;
using vym::hex8;
using vym::send_command;
using vym::tag;

constexpr int kListenSeconds = 5;

event_parser_t* s_rfcomm_event_parser;
std::atomic<int> s_errno; // why the last read failed

} // namespace

extern "C" {

void vym_rfcomm_init(rfcomm_callback_t* cbk) {
    vym_rfcomm_forget_all();
    vym_rfcomm_clear_events();
    vym_rfcomm_set_delegate(cbk);
    vym_profile_start(&s_rfcomm_event_parser, create_rfcomm_event_parser(vym_rfcomm_handlers()),
                      destroy_rfcomm_event_parser);
    rfcomm_ipc_init_client(on_rfcomm_ipc_message);
}

void vym_rfcomm_done(void) {
    vym_profile_stop(&s_rfcomm_event_parser, destroy_rfcomm_event_parser);
    rfcomm_ipc_done_client();
    vym_rfcomm_forget_all();
}

vym_bluetooth_socket_t* vym_rfcomm_connect(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t port) {
    if (vym_rfcomm_connect_impl(address, uuid, port) != BT_STATUS_SUCCESS) {
        return nullptr;
    }
    uint8_t unused = 0;
    vym_rfcomm_wait_for_event(RFCOMM_EVENT_CONNECT, 0, &unused);
    vym_bluetooth_socket_t* sock = vym_rfcomm_find_client(address, port);
    if (sock == nullptr) {
        printf("%s, can not find connection info, return NULL\n", __func__);
    }
    return sock;
}

bt_status_t vym_rfcomm_disconnect(int handle) {
    return send_command<tag("SF")>(hex8(handle));
}

vym_bluetooth_server_socket_t* vym_rfcomm_listen(bt_uuid_t uuid, uint8_t port, char* service_name) {
    uint8_t channel = 0;
    if (vym_rfcomm_listen_impl(uuid, port, service_name) != BT_STATUS_SUCCESS ||
        vym_rfcomm_wait_for_event(RFCOMM_EVENT_LISTEN, kListenSeconds, &channel) != 0) {
        return nullptr;
    }
    auto* server =
        static_cast<vym_bluetooth_server_socket_t*>(calloc(1, sizeof(vym_bluetooth_server_socket_t)));
    if (server == nullptr) {
        return nullptr;
    }
    server->uuid = uuid;
    server->server_channel = channel;
    if (service_name != nullptr) {
        memcpy(server->service_name, service_name,
               strnlen(service_name, sizeof server->service_name - 1));
    }
    vym_rfcomm_add_server(server); // without memory there is just nothing to accept on
    return server;
}

vym_bluetooth_socket_t* vym_rfcomm_accept(vym_bluetooth_server_socket_t* server) {
    if (server == nullptr) {
        return nullptr;
    }
    // Another thread may close, and so free, the server socket meanwhile.
    const bt_uuid_t uuid = server->uuid;
    const uint8_t channel = server->server_channel;
    vym_bluetooth_socket_t* sock = nullptr;
    while (vym_rfcomm_wait_for_client(&uuid, channel, &sock) != 0) {
        if (sock != nullptr) {
            return sock;
        }
        printf("%s, can not find connection info, return NULL\n", __func__);
    }
    printf("%s can not find saved server info\n", __func__);
    return nullptr;
}

ssize_t vym_rfcomm_read(vym_bluetooth_socket_t* sock, void* buf, size_t count) {
    if (sock == nullptr || buf == nullptr || count == 0) {
        s_errno = BT_STATUS_PARM_INVALID;
        return -1;
    }
    const ssize_t taken = vym_rfcomm_take_data(sock, buf, count);
    if (taken > 0) {
        return taken;
    }
    s_errno = taken == 0 ? BT_STATUS_RMT_DEV_DOWN : BT_STATUS_PARM_INVALID;
    return -1;
}

ssize_t vym_rfcomm_write(vym_bluetooth_socket_t* sock, const void* buf, size_t count) {
    uint32_t handle = 0;
    uint8_t credit = 0;
    if (sock == nullptr || buf == nullptr || count == 0 ||
        vym_rfcomm_begin_write(sock, &handle, &credit) == 0) {
        return -1;
    }
    const int sent = rfcomm_ipc_send_data_client(handle, credit, const_cast<void*>(buf), count);
    return vym_rfcomm_is_connected(sock) != 0 ? sent : -1;
}

bt_status_t vym_rfcomm_close(vym_bluetooth_socket_t* sock) {
    bt_bdaddr_t unused = {};
    int handle = 0;
    if (sock == nullptr || vym_rfcomm_look_up(sock, &unused, &handle) == 0) {
        return BT_STATUS_PARM_INVALID;
    }
    vym_rfcomm_disconnect(handle);
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_rfcomm_server_close(vym_bluetooth_server_socket_t* sock) {
    if (sock == nullptr) {
        return BT_STATUS_PARM_INVALID;
    }
    const uint8_t channel = sock->server_channel;
    printf("%s(%d)\n", __func__, channel);
    vym_rfcomm_remove_server(channel); // by its channel alone, whatever its UUID
    vym_rfcomm_server_disconnect(channel);
    free(sock);
    return BT_STATUS_SUCCESS;
}

bt_status_t vym_rfcomm_server_disconnect(uint8_t channel) {
    return send_command<tag("SN")>(hex2(channel));
}

bt_bdaddr_t vym_rfcomm_get_address(vym_bluetooth_socket_t* socket) {
    bt_bdaddr_t address = {};
    int unused = 0;
    if (socket != nullptr) {
        vym_rfcomm_look_up(socket, &address, &unused);
    }
    return address;
}

bt_status_t vym_rfcomm_fetch_channels(bt_bdaddr_t address, bt_uuid_t uuid) {
    return send_command<tag("SM")>(address, vym::uuid_reverse(uuid));
}

int vym_rfcomm_read_error(void) {
    return s_errno;
}

} // extern "C"
