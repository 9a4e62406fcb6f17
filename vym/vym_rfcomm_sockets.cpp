// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The lists of connections and servers. Nothing in them is freed while a thread is inside a call on it:
// each such thread is counted, and the last one to leave what has ended cleans up.

#include "vym_rfcomm_impl.h"

#include "vym_thread.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <semaphore.h>

namespace {

// Put behind what was received, so that a blocked reader wakes.
constexpr char kEndMarker[] = "rfcomm_quit";
constexpr int kEndMarkerLength = sizeof kEndMarker - 1;
// As ever; the buffer has its own idea of its size.
constexpr int kBufferSize = 2056;

enum class phase : uint8_t {
    listed,    // found by events and data
    set_aside, // of a session that has been stopped: the application can read what it holds
    ended,     // gone for the application; reused when no thread is inside any more
};

// A record is never given back to the system: a thread that comes late with a pointer to a socket that
// another has just read to its end must find out, and must not touch foreign memory.
typedef struct rfcomm_connection_info_tag {
    vym_bluetooth_socket_t socket; // what the application has a pointer to
    uint8_t is_server;
    sem_t data_sync_event; // one post for each message and for the end
    phase at;
    bool given;       // the application has a pointer to the socket
    unsigned readers; // threads inside a read
    struct rfcomm_connection_info_tag* next;
} rfcomm_connection_info_t;

enum class service : uint8_t {
    open,   // found by events and by accept
    closed, // after it had accepted: whoever still waits is not woken
    ended,  // whoever still waits leaves, one thread waking the next
};

// Stays in the list until it is not open and nobody waits.
typedef struct rfcomm_server_info_tag {
    uint8_t connected; // a connection has been accepted
    vym_bluetooth_server_socket_t server_sock;
    sem_t server_conn_sync_event; // one post for each connection and for the end
    service at;
    unsigned waiters; // threads inside an accept
    struct rfcomm_server_info_tag* next;
} rfcomm_server_info_t;

using connection_t = rfcomm_connection_info_t;
using server_t = rfcomm_server_info_t;

struct lists_t {
    vym::mutex lock;                              // taken before a ring buffer's
    connection_t* conn_list VYM_GUARDED_BY(lock); // in the order of arrival
    connection_t* at_rest VYM_GUARDED_BY(lock);   // set aside, ended, or to be used again
    server_t* svr_list VYM_GUARDED_BY(lock);
};

lists_t s_lists = {};

template <class Node, class Predicate>
Node* first(Node* list, Predicate wanted) {
    while (list != nullptr && !wanted(*list)) {
        list = list->next;
    }
    return list;
}

template <class Node>
void append(Node** list, Node* node) {
    while (*list != nullptr) {
        list = &(*list)->next;
    }
    node->next = nullptr;
    *list = node;
}

// Returns whether it was in the list.
template <class Node>
bool take_out(Node** list, const Node* node) {
    while (*list != nullptr && *list != node) {
        list = &(*list)->next;
    }
    const bool found = *list != nullptr;
    if (found) {
        *list = (*list)->next;
    }
    return found;
}

void wait_for(sem_t* sem) {
    while (sem_wait(sem) != 0 && errno == EINTR) {
    }
}

// The two fields of a socket that change under the application's eyes.
void set_disconnected(vym_bluetooth_socket_t& socket) {
    __atomic_store_n(&socket.connected, uint8_t{0}, __ATOMIC_RELAXED);
}
void add_credit(vym_bluetooth_socket_t& socket, uint8_t credit) {
    __atomic_fetch_add(&socket.outgoing_credit, credit, __ATOMIC_RELAXED);
}

// --- Connections.

// The record behind the application's pointer; null when it is none of the module's.
connection_t* record_of(const vym_bluetooth_socket_t* sock) VYM_REQUIRES(s_lists.lock) {
    const auto same = [sock](const connection_t& one) { return &one.socket == sock; };
    connection_t* listed = first(s_lists.conn_list, same);
    return listed != nullptr ? listed : first(s_lists.at_rest, same);
}

connection_t* usable_record_of(const vym_bluetooth_socket_t* sock) VYM_REQUIRES(s_lists.lock) {
    connection_t* record = record_of(sock);
    return record != nullptr && record->at != phase::ended ? record : nullptr;
}

connection_t* unused_record() VYM_REQUIRES(s_lists.lock) {
    connection_t* record = first(s_lists.at_rest, [](const connection_t& one) {
        return one.at == phase::ended && one.readers == 0;
    });
    if (record != nullptr) {
        take_out(&s_lists.at_rest, record);
        return record;
    }
    return static_cast<connection_t*>(malloc(sizeof(connection_t)));
}

void add_connection(const vym_bluetooth_socket_t& values, uint8_t is_server)
    VYM_REQUIRES(s_lists.lock) {
    ring_buffer_t* buffer = ring_buffer_create(kBufferSize, 0, 1);
    connection_t* record = buffer != nullptr ? unused_record() : nullptr;
    if (record == nullptr) {
        ring_buffer_free(buffer);
        return;
    }
    *record = {};
    record->socket = values;
    record->socket.buffer = buffer;
    record->is_server = is_server;
    record->at = phase::listed;
    sem_init(&record->data_sync_event, 0, 0);
    append(&s_lists.conn_list, record);
}

void clean_up(connection_t* record) VYM_REQUIRES(s_lists.lock) {
    if (record->at == phase::ended && record->readers == 0) {
        ring_buffer_free(record->socket.buffer);
        record->socket.buffer = nullptr;
        sem_destroy(&record->data_sync_event);
    }
}

// Ends a connection for the application: whoever waits for its data leaves.
void end(connection_t* record) VYM_REQUIRES(s_lists.lock) {
    if (record->at == phase::ended) {
        return;
    }
    if (take_out(&s_lists.conn_list, record)) {
        append(&s_lists.at_rest, record);
    }
    record->at = phase::ended;
    set_disconnected(record->socket);
    ring_buffer_close(record->socket.buffer);
    sem_post(&record->data_sync_event);
}

connection_t* enter(const vym_bluetooth_socket_t* sock) {
    vym::lock_guard held(s_lists.lock);
    connection_t* record = usable_record_of(sock);
    if (record != nullptr) {
        ++record->readers;
    }
    return record;
}

void leave(connection_t* record, bool at_end) {
    vym::lock_guard held(s_lists.lock);
    if (at_end) {
        end(record);
    }
    --record->readers;
    sem_t* sem = &record->data_sync_event;
    if (record->at == phase::ended && record->readers > 0) {
        sem_post(sem); // wakes the next one
    }
    clean_up(record);
}

bool can_wait(const connection_t* record) {
    vym::lock_guard held(s_lists.lock);
    return record->at == phase::listed;
}

bool is_up(const connection_t* record) {
    vym::lock_guard held(s_lists.lock);
    return record->at == phase::listed && record->socket.connected != 0;
}

// Returns 0 when the connection has ended. The posts count messages and the buffer holds bytes, so a
// post may be left of a message that was read long ago: then it is the pull that waits.
int pull_or_wait(connection_t* record, unsigned char* buf, int count) {
    ring_buffer_t* buffer = record->socket.buffer;
    if (buffer->avail(buffer) > 0) {
        return buffer->pull(buffer, buf, count);
    }
    if (!can_wait(record)) {
        return 0;
    }
    wait_for(&record->data_sync_event);
    if (!is_up(record)) {
        return 0;
    }
    const int pulled = buffer->pull(buffer, buf, count);
    return is_up(record) ? pulled : 0; // what ended the pull may have been the end marker
}

// --- Servers.

void clean_up(server_t* server) VYM_REQUIRES(s_lists.lock) {
    if (server->at != service::open && server->waiters == 0) {
        take_out(&s_lists.svr_list, server);
        sem_destroy(&server->server_conn_sync_event);
        free(server);
    }
}

void end(server_t* server) VYM_REQUIRES(s_lists.lock) {
    server->at = service::ended;
    sem_post(&server->server_conn_sync_event);
    clean_up(server);
}

server_t* server_of_channel(uint8_t channel) VYM_REQUIRES(s_lists.lock) {
    return first(s_lists.svr_list, [channel](const server_t& one) {
        return one.at == service::open && one.server_sock.server_channel == channel;
    });
}

server_t* enter_server(const bt_uuid_t& uuid, uint8_t channel) {
    vym::lock_guard held(s_lists.lock);
    server_t* server = first(s_lists.svr_list, [&uuid, channel](const server_t& one) {
        return one.at == service::open && one.server_sock.server_channel == channel &&
               memcmp(&one.server_sock.uuid, &uuid, sizeof uuid) == 0;
    });
    if (server != nullptr) {
        ++server->waiters;
    }
    return server;
}

// Without a connection the wait was ended by a close, or the connection found no memory. Either way the
// server is given up.
vym_bluetooth_socket_t* leave_server(server_t* server, uint8_t channel) {
    vym::lock_guard held(s_lists.lock);
    connection_t* record = first(s_lists.conn_list, [channel](const connection_t& one) {
        return one.is_server != 0 && one.socket.server_handle == channel;
    });
    if (record != nullptr) {
        record->given = true;
        server->connected = 1;
    } else {
        server->at = service::ended;
    }
    --server->waiters;
    if (server->at == service::ended) {
        sem_post(&server->server_conn_sync_event); // wakes the next one
    }
    clean_up(server);
    return record != nullptr ? &record->socket : nullptr;
}

} // namespace

extern "C" {

void vym_rfcomm_forget_all(void) {
    vym::lock_guard held(s_lists.lock);
    for (server_t *server = s_lists.svr_list, *next = nullptr; server != nullptr; server = next) {
        next = server->next;
        end(server);
    }
    while (connection_t* record = s_lists.conn_list) {
        if (record->readers > 0 || !record->given) {
            end(record);
            clean_up(record);
            continue;
        }
        take_out(&s_lists.conn_list, record);
        append(&s_lists.at_rest, record);
        record->at = phase::set_aside;
    }
}

int vym_rfcomm_add_connection(const vym_bluetooth_socket_t* values, uint8_t is_server) {
    vym::lock_guard held(s_lists.lock);
    add_connection(*values, is_server);
    server_t* server = is_server != 0 ? server_of_channel(values->server_handle) : nullptr;
    if (server != nullptr) {
        sem_post(&server->server_conn_sync_event);
    }
    return server != nullptr ? 1 : 0;
}

void vym_rfcomm_mark_disconnected(int handle) {
    vym::lock_guard held(s_lists.lock);
    connection_t* record = first(
        s_lists.conn_list, [handle](const connection_t& one) { return one.socket.handle == handle; });
    if (record == nullptr) {
        return;
    }
    set_disconnected(record->socket);
    unsigned char marker[kEndMarkerLength];
    memcpy(marker, kEndMarker, sizeof marker);
    record->socket.buffer->push(record->socket.buffer, marker, kEndMarkerLength);
    sem_post(&record->data_sync_event);
}

// A handle above 0x7FFFFFFF is that number in the events and stays what it is here: such a connection
// gets no data.
void on_rfcomm_ipc_message(rfcomm_msg_header_t* message) {
    vym::lock_guard held(s_lists.lock);
    connection_t* last = nullptr;
    for (connection_t* one = s_lists.conn_list; one != nullptr; one = one->next) {
        last = static_cast<uint32_t>(one->socket.handle) == message->handle ? one : last;
    }
    if (last == nullptr) {
        return;
    }
    add_credit(last->socket, message->credit);
    if (message->len > 0) {
        last->socket.buffer->push(last->socket.buffer, message->data, message->len);
        sem_post(&last->data_sync_event);
    }
}

vym_bluetooth_socket_t* vym_rfcomm_find_client(bt_bdaddr_t address, uint8_t channel) {
    vym::lock_guard held(s_lists.lock);
    connection_t* record = first(s_lists.conn_list, [&address, channel](const connection_t& one) {
        return one.is_server == 0 && one.socket.server_handle == channel &&
               memcmp(&one.socket.address, &address, sizeof address) == 0;
    });
    if (record != nullptr) {
        record->given = true;
    }
    return record != nullptr ? &record->socket : nullptr;
}

int vym_rfcomm_add_server(const vym_bluetooth_server_socket_t* values) {
    auto* server = static_cast<server_t*>(calloc(1, sizeof(server_t)));
    if (server == nullptr) {
        return 0;
    }
    server->server_sock = *values;
    server->at = service::open;
    sem_init(&server->server_conn_sync_event, 0, 0);
    vym::lock_guard held(s_lists.lock);
    append(&s_lists.svr_list, server);
    return 1;
}

int vym_rfcomm_wait_for_client(const bt_uuid_t* uuid, uint8_t channel, vym_bluetooth_socket_t** sock) {
    server_t* server = enter_server(*uuid, channel);
    if (server == nullptr) {
        return 0;
    }
    wait_for(&server->server_conn_sync_event);
    *sock = leave_server(server, channel);
    return 1;
}

// A server that has accepted is not signalled: a thread that waits in another accept would only be
// given the first connection again, and goes on waiting.
void vym_rfcomm_remove_server(uint8_t channel) {
    vym::lock_guard held(s_lists.lock);
    server_t* server = server_of_channel(channel);
    if (server == nullptr) {
        return;
    }
    if (server->connected != 0) {
        server->at = service::closed;
        clean_up(server);
    } else {
        end(server);
    }
}

ssize_t vym_rfcomm_take_data(vym_bluetooth_socket_t* sock, void* buf, size_t count) {
    connection_t* record = enter(sock);
    if (record == nullptr) {
        return -1;
    }
    const auto most = static_cast<int>(std::min<size_t>(count, INT_MAX));
    const int taken = pull_or_wait(record, static_cast<unsigned char*>(buf), most);
    leave(record, taken == 0);
    return taken;
}

int vym_rfcomm_begin_write(vym_bluetooth_socket_t* sock, uint32_t* handle, uint8_t* credit) {
    vym::lock_guard held(s_lists.lock);
    connection_t* record = usable_record_of(sock);
    if (record == nullptr || record->socket.connected == 0) {
        return 0;
    }
    add_credit(record->socket, UINT8_MAX); // one less, and from 0 to 255
    *handle = static_cast<uint32_t>(record->socket.handle);
    *credit = record->socket.incoming_credit;
    return 1;
}

int vym_rfcomm_is_connected(const vym_bluetooth_socket_t* sock) {
    vym::lock_guard held(s_lists.lock);
    const connection_t* record = usable_record_of(sock);
    return record != nullptr && record->socket.connected != 0 ? 1 : 0;
}

int vym_rfcomm_look_up(const vym_bluetooth_socket_t* sock, bt_bdaddr_t* address, int* handle) {
    vym::lock_guard held(s_lists.lock);
    const connection_t* record = record_of(sock);
    if (record != nullptr && record->at == phase::ended) {
        return 0;
    }
    // A copy that the application has made of a socket is as good.
    *address = sock->address;
    *handle = sock->handle;
    return 1;
}

} // extern "C"
