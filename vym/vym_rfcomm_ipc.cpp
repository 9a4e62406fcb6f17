// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_rfcomm_ipc.h"

#include "vym_bluetooth.h"
#include "vym_os.h"
#include "vym_thread.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr size_t kHeaderSize = 7;
static_assert(sizeof(rfcomm_msg_header_t) == kHeaderSize, "nothing may lie between the fields");

// One descriptor that was handed over. Its reader, the module while it is the channel in use, and each
// thread that sends on it hold a reference; the last one closes it, so that its number cannot belong to
// another file meanwhile.
struct channel_t {
    int fd;               // 0: the hand-over brought none
    unsigned generation;  // the init or done under which it came
    unsigned references;  // guarded by the transport's lock, as the next
    bool deaf;            // no reader could be started, so none will end it
    vym::mutex send_lock; // a message goes out in one piece
};

struct tag_data_transport {
    vym::mutex lock; // never held while anything blocks
    bool alive VYM_GUARDED_BY(lock);
    unsigned generation VYM_GUARDED_BY(lock);
    channel_t* channel VYM_GUARDED_BY(lock); // where data goes out, null when none
    rfcomm_ipc_message_cbk cbk VYM_GUARDED_BY(lock);
    vym::mutex delivery; // held while a message is delivered; taken before `lock`
};
typedef struct tag_data_transport rfcomm_data_transport_t;

rfcomm_data_transport_t s_data_transport = {};

void drop(channel_t* channel) VYM_REQUIRES(s_data_transport.lock) {
    if (channel != nullptr && --channel->references == 0) {
        if (channel->fd > 0) {
            close(channel->fd);
        }
        free(channel);
    }
}

channel_t* make_channel(int fd) {
    void* room = malloc(sizeof(channel_t));
    return room != nullptr ? new (room) channel_t{fd, 0, 0, false, {}} : nullptr;
}

// A channel that another hand-over has replaced is read to its end: the server may still have messages
// in it. It ends with its session, and with a hand-over that brought no descriptor.
bool may_run(const channel_t* own) VYM_REQUIRES(s_data_transport.lock) {
    const channel_t* current = s_data_transport.channel;
    return s_data_transport.alive && own->generation == s_data_transport.generation && own->fd > 0 &&
           current != nullptr && current->fd > 0;
}

// One turn of the reader: whether to go on is asked anew before each part of a message.
bool receive(const channel_t* own, uint8_t* into, size_t count) {
    {
        vym::lock_guard held(s_data_transport.lock);
        if (!may_run(own)) {
            return false;
        }
    }
    return sock_recv_all(own->fd, into, static_cast<int>(count)) >= 0;
}

// done() waits for the delivery in progress, and none begins after it.
void deliver(const channel_t* own, rfcomm_msg_header_t* message) {
    vym::lock_guard one_at_a_time(s_data_transport.delivery);
    rfcomm_ipc_message_cbk cbk = nullptr;
    {
        vym::lock_guard held(s_data_transport.lock);
        cbk = may_run(own) ? s_data_transport.cbk : nullptr;
    }
    if (cbk != nullptr) {
        cbk(message);
    }
}

// Returns false when the channel is to end.
bool read_message(const channel_t* own) {
    uint8_t handle[4];
    uint8_t credit = 0;
    uint8_t length[2];
    if (!receive(own, handle, sizeof handle) || !receive(own, &credit, 1) ||
        !receive(own, length, sizeof length)) {
        return false;
    }
    const auto len = static_cast<uint16_t>(length[0] | length[1] << 8);
    const vym::malloc_ptr<rfcomm_msg_header_t> message(
        static_cast<rfcomm_msg_header_t*>(malloc(kHeaderSize + len)));
    if (message == nullptr) {
        return false; // the bytes that follow could not be told from a header any more
    }
    message->handle = handle[0] | static_cast<uint32_t>(handle[1]) << 8 |
                      static_cast<uint32_t>(handle[2]) << 16 | static_cast<uint32_t>(handle[3]) << 24;
    message->credit = credit;
    message->len = len;
    if (len > 0 && !receive(own, message->data, len)) {
        return false;
    }
    deliver(own, message.get());
    return true;
}

void* data_transport_thread_proc(void* arg) {
    auto* own = static_cast<channel_t*>(arg);
    while (read_message(own)) {
    }
    printf("Data transport is broken!!! Type:Rfcomm");
    if (own->fd > 0) {
        shutdown(own->fd, SHUT_RDWR); // also ends a send that waits for room
    }
    {
        vym::lock_guard held(s_data_transport.lock);
        if (s_data_transport.channel == own && own->fd > 0) {
            s_data_transport.channel = nullptr;
            --own->references; // its reader's is left
        }
        drop(own);
    }
    printf("%s quit.\n", __func__);
    return nullptr;
}

// Makes the channel the one in use, with one reference for its reader.
void use_channel(channel_t* channel) {
    vym::lock_guard held(s_data_transport.lock);
    s_data_transport.alive = true;
    drop(s_data_transport.channel);
    s_data_transport.channel = channel;
    if (channel != nullptr) {
        channel->generation = s_data_transport.generation;
        channel->references = 2;
    }
}

void start_reader(channel_t* channel) {
    pthread_t thread;
    const int result = pthread_create(&thread, nullptr, data_transport_thread_proc, channel);
    if (result == 0) {
        pthread_detach(thread);
    } else {
        vym::lock_guard held(s_data_transport.lock);
        channel->deaf = true; // it can still be written to
        drop(channel);
    }
    // Failures are positive numbers, so the first message never comes. It has always been like this.
    if (result < 0) {
        printf("%s  thread creaet : %s\n", __func__, strerror(-result));
    } else {
        printf("thread create success.");
    }
}

// Takes the descriptor over, on the receive thread.
void on_data_transport_established(uint8_t id, int fd) {
    printf("%s(id=%d, fd=%d)\n", __func__, id, fd);
    if (id != IPC_ID_SPP) {
        return;
    }
    channel_t* channel = make_channel(fd);
    use_channel(channel);
    if (channel != nullptr) {
        start_reader(channel);
    } else if (fd > 0) {
        close(fd);
    }
}

channel_t* take_channel() {
    vym::lock_guard held(s_data_transport.lock);
    channel_t* channel = s_data_transport.channel;
    if (channel == nullptr || channel->fd < 1) {
        return nullptr;
    }
    ++channel->references;
    return channel;
}

// The length has 16 bits on the wire. More data than that goes out all the same, behind a header that
// does not tell: this is how the server knows this client.
void put_header(uint8_t* out, uint32_t handle, uint8_t credit, size_t size) {
    out[0] = static_cast<uint8_t>(handle);
    out[1] = static_cast<uint8_t>(handle >> 8);
    out[2] = static_cast<uint8_t>(handle >> 16);
    out[3] = static_cast<uint8_t>(handle >> 24);
    out[4] = credit;
    out[5] = static_cast<uint8_t>(size);
    out[6] = static_cast<uint8_t>(size >> 8);
}

int send_message(channel_t* channel, uint32_t handle, uint8_t credit, const void* buf, size_t size) {
    const size_t count = kHeaderSize + size;
    const vym::malloc_ptr<uint8_t> message(static_cast<uint8_t*>(calloc(1, count)));
    if (message == nullptr) {
        return -1;
    }
    put_header(message.get(), handle, credit, size);
    if (buf != nullptr) {
        memcpy(message.get() + kHeaderSize, buf, size);
    }
    vym::lock_guard in_one_piece(channel->send_lock);
    const int sent = sock_send_all(channel->fd, message.get(), static_cast<int>(count));
    return sent < 0 ? -1 : sent - static_cast<int>(kHeaderSize);
}

// A message on its way in has left the module when this returns.
void end_deliveries() {
    vym::lock_guard none(s_data_transport.delivery);
}

// Ends the session: readers leave at their next turn.
void close_session(bool alive, rfcomm_ipc_message_cbk cbk) {
    {
        vym::lock_guard held(s_data_transport.lock);
        s_data_transport.alive = alive;
        ++s_data_transport.generation;
        s_data_transport.cbk = cbk;
    }
    end_deliveries();
}

void close_data_transport() {
    close_session(false, nullptr);
    {
        vym::lock_guard held(s_data_transport.lock);
        if (s_data_transport.channel != nullptr && s_data_transport.channel->deaf) {
            drop(s_data_transport.channel);
            s_data_transport.channel = nullptr;
        }
    }
    printf("%s quit.\n", __func__);
}

} // namespace

extern "C" {

void rfcomm_ipc_init_client(rfcomm_ipc_message_cbk cbk) {
    close_session(true, cbk);
    {
        vym::lock_guard held(s_data_transport.lock);
        drop(s_data_transport.channel);
        s_data_transport.channel = nullptr;
    }
    vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, on_data_transport_established);
}

void rfcomm_ipc_done_client(void) {
    close_data_transport();
}

int rfcomm_ipc_send_data_client(uint32_t handle, uint8_t credit, void* buf, size_t size) {
    if (size > INT_MAX - kHeaderSize) {
        return -1; // the answer could not tell what was sent
    }
    channel_t* channel = take_channel();
    if (channel == nullptr) {
        return -1;
    }
    const int sent = send_message(channel, handle, credit, buf, size);
    vym::lock_guard held(s_data_transport.lock);
    drop(channel);
    return sent;
}

} // extern "C"
