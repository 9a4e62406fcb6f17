// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_audio_stream.h"

#include "vym_bluetooth.h"
#include "vym_os.h"
#include "vym_thread.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A fixed stamp: the same sources make the same library, whenever they are built.
constexpr char kBuildDate[] = "Nov 21 2026";
constexpr char kBuildTime[] = "12:00:00";
// The numbers that the messages have always shown.
constexpr int kInitLine = 51;
constexpr int kReaderLine = 173;

// One reader thread and the descriptor that is its own: a second hand-over must not make two threads
// share one stream of bytes.
struct reader_t {
    reader_t* next;
    pthread_t thread;
    int fd;
    bool superseded; // another descriptor took its place, so nobody else knows this one
    std::atomic<int> alive;
    std::atomic<int> finished; // its thread is at its end: joining does not wait
};

struct tag_data_transport {
    vym::mutex lock; // never held while the application is called or a thread is waited for
    std::atomic<int> alive;
    std::atomic<int> fd; // -1 when none; keeps its number when the server ends the stream
    std::atomic<audio_stream_callback_t*> cbks;
    bool deaf VYM_GUARDED_BY(lock); // no reader could be started on `fd`, so none will close it
    reader_t* readers VYM_GUARDED_BY(lock);
};
typedef struct tag_data_transport vym_audio_stream_data_transport_t;

vym_audio_stream_data_transport_t s_data_transport = {};

void stop(reader_t* reader) {
    reader->alive = 0;
    if (reader->fd > 0) {
        shutdown(reader->fd, SHUT_RDWR);
    }
}

void stop_all(bool superseded) VYM_REQUIRES(s_data_transport.lock) {
    for (reader_t* reader = s_data_transport.readers; reader != nullptr; reader = reader->next) {
        stop(reader);
        reader->superseded = reader->superseded || superseded;
    }
}

// Another descriptor, or none, takes the place of the one in use.
void replace_descriptor(int fd) VYM_REQUIRES(s_data_transport.lock) {
    stop_all(true);
    if (s_data_transport.deaf && s_data_transport.fd > 0) {
        close(s_data_transport.fd);
    }
    s_data_transport.deaf = false;
    s_data_transport.fd = fd;
    s_data_transport.alive = 1;
}

// Waits for a stopped reader. The descriptor of the last session is left open, as ever: an application
// may still hold its number; one that was superseded is known to nobody.
void join(reader_t* reader) {
    pthread_join(reader->thread, nullptr);
    if (reader->superseded && reader->fd > 0) {
        close(reader->fd);
    }
    free(reader);
}

// Takes a reader out of the list, never the one whose thread is calling: a finished one, or any. It is
// stopped: a descriptor that comes while the end waits for others has started one that nobody stopped.
reader_t* take_other_reader(bool only_finished) {
    vym::lock_guard held(s_data_transport.lock);
    for (reader_t** link = &s_data_transport.readers; *link != nullptr; link = &(*link)->next) {
        reader_t* reader = *link;
        const bool wanted = !only_finished || reader->finished != 0;
        if (wanted && pthread_equal(reader->thread, pthread_self()) == 0) {
            *link = reader->next;
            stop(reader);
            return reader;
        }
    }
    return nullptr;
}

void join_others(bool only_finished) {
    while (reader_t* reader = take_other_reader(only_finished)) {
        join(reader);
    }
}

void call_back(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data) {
    const audio_stream_callback_t* cbks = s_data_transport.cbks;
    const vym_audio_stream_cbk call = cbks != nullptr ? cbks->vym_audio_stream_cb : nullptr;
    if (call != nullptr) {
        call(stream_type, codec_type, len, data);
    }
}

// One packet: type, codec, length (low byte first), data. Returns false when the stream ended.
bool read_packet(const reader_t* reader) {
    uint8_t stream_type = 0;
    uint8_t codec_type = 0;
    uint8_t length[2] = {};
    if (sock_recv_all(reader->fd, &stream_type, 1) < 0 ||
        sock_recv_all(reader->fd, &codec_type, 1) < 0 ||
        sock_recv_all(reader->fd, length, sizeof length) < 0) {
        return false;
    }
    const auto len = static_cast<uint16_t>(length[0] | length[1] << 8);
    // One byte more, so that an empty packet has data that is not NULL.
    const vym::malloc_ptr<uint8_t> data(static_cast<uint8_t*>(malloc(size_t{len} + 1)));
    if (data == nullptr || sock_recv_all(reader->fd, data.get(), len) < 0) {
        return false;
    }
    call_back(stream_type, codec_type, len, data.get());
    return true;
}

void* data_transport_thread_proc(void* arg) {
    auto* reader = static_cast<reader_t*>(arg);
    printf("%s->%d, s_data_transport.alive:%d, s_data_transport.fd:%d\r\n", __func__, kReaderLine,
           reader->alive.load(), reader->fd);
    while (reader->alive != 0 && reader->fd >= 1 && read_packet(reader)) {
    }
    puts("Data transport is broken!!! Type:Audio");
    reader->finished = 1;
    return nullptr;
}

void start_reader(int fd) {
    join_others(true); // a server that hands over again and again leaves no threads behind
    vym::lock_guard held(s_data_transport.lock);
    replace_descriptor(fd);
    s_data_transport.deaf = true;
    auto* reader = static_cast<reader_t*>(calloc(1, sizeof(reader_t)));
    if (reader == nullptr) {
        return;
    }
    reader->fd = fd;
    reader->alive = 1;
    if (pthread_create(&reader->thread, nullptr, data_transport_thread_proc, reader) != 0) {
        free(reader);
        return;
    }
    s_data_transport.deaf = false;
    reader->next = s_data_transport.readers;
    s_data_transport.readers = reader;
}

// Takes the descriptor over, on the receive thread.
void on_data_transport_established(uint8_t id, int fd) {
    printf("%s(id=%d, fd=%d):%s:%s\n", __func__, id, fd, kBuildDate, kBuildTime);
    if (id == IPC_ID_AUDIO) {
        start_reader(fd);
    }
}

// A descriptor of the sender's own: a hand-over may close the transport's while voice is being sent.
int take_copy() {
    vym::lock_guard held(s_data_transport.lock);
    const int fd = s_data_transport.fd;
    return fd > 0 ? fcntl(fd, F_DUPFD_CLOEXEC, 1) : -1;
}

void close_data_transport() {
    s_data_transport.alive = 0;
    {
        vym::lock_guard held(s_data_transport.lock);
        stop_all(false);
        const int fd = s_data_transport.fd;
        if (fd > 0) {
            shutdown(fd, SHUT_RDWR);
            s_data_transport.fd = -1;
        }
    }
    printf("%s fd closed.\n", __func__);
    join_others(false);
    printf("%s quit.\n", __func__);
}

} // namespace

extern "C" {

void vym_audio_stream_init(audio_stream_callback_t* cbks) {
    printf("%s->%d:%s->%s\r\n", __func__, kInitLine, kBuildDate, kBuildTime);
    {
        vym::lock_guard held(s_data_transport.lock);
        replace_descriptor(-1); // readers of an earlier init are joined at done
        s_data_transport.cbks = cbks;
    }
    vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, on_data_transport_established);
}

void vym_audio_stream_done(void) {
    close_data_transport();
}

int vym_audio_stream_send(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data) {
    (void)codec_type;
    const vym::owned_fd fd(take_copy());
    if (fd.get() <= 0) {
        puts("s_data_transport.fd is error\r");
        return -1;
    }
    return stream_type == AUDIO_STREAM_TYPE_SCO ? sock_send_all(fd.get(), data, len) : 0;
}

} // extern "C"
