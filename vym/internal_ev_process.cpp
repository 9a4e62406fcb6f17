// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "internal_ev_process.h"

#include "vym_os.h"
#include "vym_sdk.h"
#include "vym_thread.h"
#include "vym_wire.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int kStagingStep = 64;
constexpr int kSendRetryMs = 50;

enum state_t { STATE_TYPE = 0, STATE_LEN = 1, STATE_VALUE = 2 };

vym::mutex s_pair_lock;    // guards the descriptors of the pair
vym::mutex s_handler_lock; // guards the list; held while handlers run

// The staging buffer, the state and the message in progress belong to the receive thread.
typedef struct tag_internal_event_block {
    int sock_fds[2] VYM_GUARDED_BY(
        s_pair_lock); // [0] the receive thread reads, [1] senders write; 0 is none
    uint8_t* ev_buf;
    int buf_off;
    int buf_size;
    uint8_t state;
    ev_data_t ev_data;
    struct list_head ev_cbk_list VYM_GUARDED_BY(s_handler_lock);
} internal_ev_block_t;

internal_ev_block_t s_block = {
    {0, 0}, nullptr, 0, 0, STATE_TYPE, {0, 0, {0}, 0}, {&s_block.ev_cbk_list, &s_block.ev_cbk_list}};

internal_ev_cbk_node_t* node_of(struct list_head* entry) {
    return reinterpret_cast<internal_ev_cbk_node_t*>(reinterpret_cast<char*>(entry) -
                                                     offsetof(internal_ev_cbk_node_t, node));
}

void close_pair() {
    vym::lock_guard held(s_pair_lock);
    for (int& fd : s_block.sock_fds) {
        if (fd > 0) {
            close(fd);
        }
        fd = 0;
    }
}

void free_handlers() {
    vym::lock_guard held(s_handler_lock);
    struct list_head* head = &s_block.ev_cbk_list;
    struct list_head* entry = head->next;
    INIT_LIST_HEAD(head);
    while (entry != head) {
        struct list_head* next = entry->next;
        free(node_of(entry));
        entry = next;
    }
}

int read_end() {
    vym::lock_guard held(s_pair_lock);
    return s_block.sock_fds[0];
}

// Returns the descriptor to wait on when the pair is full, -1 when the message is done with.
int try_send(const uint8_t* message, size_t len, int* written) {
    vym::lock_guard held(s_pair_lock);
    const int fd = s_block.sock_fds[1];
    if (fd <= 0) {
        return -1;
    }
    ssize_t n = 0;
    do {
        n = vym_os_send(fd, message, len, MSG_DONTWAIT);
    } while (n < 0 && errno == EINTR);
    *written = n == static_cast<ssize_t>(len) ? 1 : 0;
    return n < 0 && errno == EAGAIN ? fd : -1;
}

void handle_internal_input(int fd) {
    // A buffer of its own: the server's may hold half an event and have no room.
    uint8_t bytes[4096];
    const ssize_t n = read(fd, bytes, sizeof bytes);
    if (n > 0) {
        push_ev_data(bytes, static_cast<size_t>(n));
        process_ev_data();
    }
}

void begin_value(uint8_t len) {
    ev_data_t* ev = &s_block.ev_data;
    ev->len = len;
    ev->off = 0;
    if (len > VYM_INTERNAL_EVENT_MAX_LEN) {
        printf("Warning!!! The maximum length of internal event data size should be less than %d, "
               "current len:%d.type:%d.\n",
               VYM_INTERNAL_EVENT_MAX_LEN, len, ev->type);
    }
    s_block.state = len == 0 ? STATE_TYPE : STATE_VALUE;
    if (len == 0) {
        notify_internal_event(ev);
    }
}

// Consumes value bytes; `off` counts all of them, of which the first 64 are kept. Returns how many.
int take_value(const uint8_t* bytes, int available) {
    ev_data_t* ev = &s_block.ev_data;
    const size_t needed = ev->len - ev->off;
    const size_t taken =
        static_cast<size_t>(available) < needed ? static_cast<size_t>(available) : needed;
    if (ev->off < sizeof ev->value) {
        const size_t room = sizeof ev->value - ev->off;
        memcpy(ev->value + ev->off, bytes, taken < room ? taken : room);
    }
    ev->off += taken;
    if (taken == needed) {
        ev->off = 0;
        s_block.state = STATE_TYPE;
        notify_internal_event(ev);
    }
    return static_cast<int>(taken);
}

} // namespace

extern "C" {

void INIT_LIST_HEAD(struct list_head* list) {
    list->next = list;
    list->prev = list;
}

void __list_add(struct list_head* node, struct list_head* prev, struct list_head* next) {
    next->prev = node;
    node->next = next;
    node->prev = prev;
    prev->next = node;
}

void list_add(struct list_head* node, struct list_head* head) {
    __list_add(node, head, head->next);
}

void __list_del(struct list_head* prev, struct list_head* next) {
    next->prev = prev;
    prev->next = next;
}

void list_del(struct list_head* entry) {
    __list_del(entry->prev, entry->next);
}

internal_ev_cbk_node_t* node_alloc(internal_event_callback cbk) {
    auto* node = static_cast<internal_ev_cbk_node_t*>(calloc(1, sizeof(internal_ev_cbk_node_t)));
    if (node != nullptr) {
        node->cbk = cbk;
    }
    return node;
}

void vym_internal_event_init(void) {
    vym_internal_event_done(); // what a start that failed has left
    int pair[2] = {0, 0};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) == 0) {
        pair[0] = vym_os_not_zero(pair[0]);
        pair[1] = vym_os_not_zero(pair[1]);
    } else {
        printf("Create socketpair failed in %s. Error:%s.\n", "vym_internal_event_init",
               strerror(errno));
    }
    s_block.ev_buf = static_cast<uint8_t*>(malloc(kStagingStep));
    s_block.buf_off = 0;
    s_block.buf_size = s_block.ev_buf != nullptr ? kStagingStep : 0;
    s_block.state = STATE_TYPE;
    s_block.ev_data = {};
    vym::lock_guard held(s_pair_lock);
    s_block.sock_fds[0] = pair[0];
    s_block.sock_fds[1] = pair[1];
}

void vym_internal_event_done(void) {
    close_pair();
    free(s_block.ev_buf);
    s_block.ev_buf = nullptr;
    s_block.buf_off = 0;
    s_block.buf_size = 0;
    free_handlers();
}

void vym_internal_event_register(internal_event_callback cbk) {
    internal_ev_cbk_node_t* node = cbk != nullptr ? node_alloc(cbk) : nullptr;
    vym::lock_guard held(s_handler_lock);
    if (node != nullptr) {
        list_add(&node->node, &s_block.ev_cbk_list);
    }
}

void vym_internal_event_unregister(internal_event_callback cbk) {
    vym::lock_guard held(s_handler_lock);
    struct list_head* head = &s_block.ev_cbk_list;
    for (struct list_head* entry = head->next; entry != head; entry = entry->next) {
        internal_ev_cbk_node_t* node = node_of(entry);
        if (node->cbk == cbk) {
            list_del(entry);
            free(node);
            return;
        }
    }
}

int vym_internal_event_send(uint8_t event, uint8_t data_len, void* data) {
    uint8_t message[2 + VYM_INTERNAL_EVENT_MAX_LEN];
    uint8_t len = data_len < VYM_INTERNAL_EVENT_MAX_LEN ? data_len : VYM_INTERNAL_EVENT_MAX_LEN;
    if (data == nullptr) {
        len = 0;
    }
    message[0] = event;
    message[1] = len;
    if (len > 0) {
        memcpy(message + 2, data, len);
    }
    int written = 0;
    for (;;) {
        const int full = try_send(message, 2u + len, &written);
        // A full channel is waited for only while somebody else is there to drain it.
        if (full < 0 || vym_receive_thread_will_read() == 0) {
            return written;
        }
        pollfd room = {full, POLLOUT, 0};
        poll(&room, 1, kSendRetryMs);
    }
}

ssize_t read_all(int fd, void* buf, size_t count) {
    const int internal_fd = read_end();
    const bool pending = vym_wire_pending() != 0;
    pollfd inputs[2] = {{internal_fd > 0 ? internal_fd : -1, POLLIN, 0}, {fd, POLLIN, 0}};
    const int ready = poll(inputs, 2, pending ? 0 : -1);
    if (ready < 0) {
        return -1;
    }
    if (inputs[0].revents != 0) {
        handle_internal_input(internal_fd);
        return 0;
    }
    if (inputs[1].revents == 0 && !pending) {
        return 0;
    }
    return vym_wire_read(fd, buf, count);
}

void push_ev_data(void* buf, size_t count) {
    const size_t total = static_cast<size_t>(s_block.buf_off) + count;
    if (total > static_cast<size_t>(s_block.buf_size)) {
        const size_t growth = (count + kStagingStep - 1) / kStagingStep * kStagingStep;
        const size_t size = static_cast<size_t>(s_block.buf_size) + growth;
        auto* grown = static_cast<uint8_t*>(realloc(s_block.ev_buf, size));
        if (grown == nullptr) {
            return;
        }
        s_block.ev_buf = grown;
        s_block.buf_size = static_cast<int>(size);
    }
    if (count > 0) {
        memcpy(s_block.ev_buf + s_block.buf_off, buf, count);
    }
    s_block.buf_off += static_cast<int>(count);
}

void process_ev_data(void) {
    int i = 0;
    while (i < s_block.buf_off) {
        switch (s_block.state) {
        case STATE_TYPE:
            s_block.ev_data.type = s_block.ev_buf[i++];
            s_block.state = STATE_LEN;
            break;
        case STATE_LEN:
            begin_value(s_block.ev_buf[i++]);
            break;
        case STATE_VALUE:
            i += take_value(s_block.ev_buf + i, s_block.buf_off - i);
            break;
        default:
            i = s_block.buf_off;
            break;
        }
    }
    s_block.buf_off = 0;
}

void notify_internal_event(ev_data_t* ev) {
    if (ev == nullptr) {
        return;
    }
    vym::lock_guard held(s_handler_lock);
    struct list_head* head = &s_block.ev_cbk_list;
    for (struct list_head* entry = head->next; entry != head; entry = entry->next) {
        node_of(entry)->cbk(ev);
    }
}

} // extern "C"
