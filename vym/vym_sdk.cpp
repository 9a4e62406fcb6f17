// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_sdk.h"

#include "bt_utils.h"
#include "internal_ev_process.h"
#include "vym_debug.h"
#include "vym_os.h"
#include "vym_thread.h"
#include "vym_unknown_event.h"
#include "vym_wire.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int kSlots = 16;
constexpr int kUnknownSlot = kSlots - 1;
constexpr int kBufferSize = 4096;
constexpr int kBufferFill = kBufferSize - 1; // one byte stays free for a NUL after the text
constexpr int kPathSize = 256;
constexpr int kCapturePiece = 255; // the most that a vendor command's or event's length byte can tell
constexpr useconds_t kPauseUs = 500000;
constexpr char kDefaultDirectory[] = "/etc/backup";
constexpr char kDefaultSocket[] = "/home/tesk/morvel/qel_socket";

vym::mutex s_lifecycle_lock; // start and stop exclude each other
vym::mutex parsers_lock;     // held while parsers, and so the application's callbacks, run

event_parser_t* s_parsers[kSlots] VYM_GUARDED_BY(parsers_lock);
int s_parser_list_count VYM_GUARDED_BY(parsers_lock);
event_parser_t* s_unknown_evt_parser VYM_GUARDED_BY(parsers_lock);

bool s_prepared VYM_GUARDED_BY(s_lifecycle_lock); // started and not yet shut down
char s_socket_path[kPathSize];
std::atomic<int> s_client_fd{0}; // 0 when not connected
std::atomic<int> s_senders{0};   // commands being written
std::atomic<int> s_running{0};

pthread_t s_thread;
std::atomic<int> s_thread_started{0}; // there is a thread to join
thread_local bool t_is_receive_thread;

// The receive thread's own.
uint8_t s_buffer[kBufferSize];
size_t s_offset;           // bytes at the front of the buffer kept from the previous read
int s_text_len;            // bytes in the buffer, what will be kept included
bool s_skip_to_nul;        // what comes up to the next NUL belongs to an event already dealt with
uint64_t s_event_position; // where in the stream the event being parsed begins

int go_on() {
    return s_running.load();
}

int skip_nuls(const uint8_t* buffer, int offset, int n_bytes) {
    while (offset < n_bytes && buffer[offset] == 0) {
        ++offset;
    }
    return offset;
}

bool in_receive_buffer(const uint8_t* text) {
    const auto at = reinterpret_cast<uintptr_t>(text);
    const auto first = reinterpret_cast<uintptr_t>(s_buffer);
    return at >= first && at < first + sizeof s_buffer;
}

// Remembers where in the stream the event begins, for the descriptor that may belong to it: the end of
// the text in the buffer is what has been read of the stream.
void note_position(const uint8_t* event) {
    const auto ahead = static_cast<uint64_t>(s_buffer + s_text_len - event);
    const uint64_t position = vym_wire_position();
    s_event_position = position > ahead ? position - ahead : 0;
}

// Offers the text to each slot. Returns the index after what was taken, or `offset` when nobody took
// it.
int offer(uint8_t* buffer, int offset, int n_bytes) VYM_REQUIRES(parsers_lock) {
    for (event_parser_t* parser : s_parsers) {
        if (parser == nullptr) {
            continue;
        }
        const int taken = parser->process_event(parser, buffer, offset, n_bytes - offset);
        if (taken > offset) {
            return taken < n_bytes ? taken : n_bytes;
        }
    }
    // A whole event is never kept: it would stand in the way of all that follow.
    const int end = check_event_end_pos(buffer, offset, n_bytes - offset);
    return end > offset ? end : offset;
}

void capture_pieces(const uint8_t* data, size_t count, const uint8_t* prefix, size_t prefix_len,
                    uint8_t is_rcvd) {
    uint8_t record[4 + kCapturePiece];
    while (count > 0) {
        const size_t piece = count < kCapturePiece ? count : kCapturePiece;
        memcpy(record, prefix, prefix_len);
        record[prefix_len] = static_cast<uint8_t>(piece);
        memcpy(record + prefix_len + 1, data, piece);
        vym_debug_capture(record, static_cast<uint32_t>(prefix_len + 1 + piece), is_rcvd);
        data += piece;
        count -= piece;
    }
}

void capture_sent(const char* command, size_t len) {
    static const uint8_t kVendorCommand[] = {0x01, 0x01, 0xFC};
    capture_pieces(reinterpret_cast<const uint8_t*>(command), len, kVendorCommand,
                   sizeof kVendorCommand, 0);
}

void capture_received(const uint8_t* text, size_t len) {
    static const uint8_t kVendorEvent[] = {0x04, 0xFF};
    capture_pieces(text, len, kVendorEvent, sizeof kVendorEvent, 1);
}

int count_nul_runs(const uint8_t* buffer, int n_bytes) {
    int runs = 0;
    for (int i = 0; i < n_bytes; ++i) {
        if (buffer[i] == 0 && (i == 0 || buffer[i - 1] != 0)) {
            ++runs;
        }
    }
    return runs;
}

void log_read(int read_bytes, int total) {
    char count_text[32];
    snprintf(count_text, sizeof count_text, " evt_num:%4d ", count_nul_runs(s_buffer, total));
    s_buffer[total] = 0; // ends the text for the line below; the byte is never part of a read
    printf("[%-17s], buf[%04d + %04d]%s, evt_buf:%-25.25s\r\n", get_current_time_string(),
           static_cast<int>(s_offset), read_bytes, count_text, reinterpret_cast<const char*>(s_buffer));
}

// The buffer is full: only what ends with a NUL is parsed now. Returns where that part ends.
int end_of_whole_events(int read_bytes, int total) {
    dump_at_event(s_buffer, static_cast<size_t>(total));
    printf("Buffer is full after read[%d] bytes(remain %d bytes in buffer before read). should keep "
           "the tail "
           "part.\n",
           read_bytes, total - read_bytes);
    for (int i = kBufferFill - 1; i > 0; --i) {
        if (s_buffer[i] == 0) {
            printf("tail position: %d.\n", i);
            return i + 1;
        }
    }
    return total;
}

// Where parsing begins: behind the rest of an event already dealt with.
int begin_of_new_events(int end) {
    if (!s_skip_to_nul) {
        return 0;
    }
    const int nul = check_event_end_pos(s_buffer, 0, end);
    if (nul < 0) {
        return end;
    }
    s_skip_to_nul = false;
    return nul;
}

void handle_text(int read_bytes, int expected_bytes) {
    const int total = static_cast<int>(s_offset) + read_bytes;
    s_text_len = total;
    capture_received(s_buffer, static_cast<size_t>(total));
    log_read(read_bytes, total);
    const int end = read_bytes == expected_bytes ? end_of_whole_events(read_bytes, total) : total;

    int kept_from = begin_of_new_events(end);
    if (kept_from < end) {
        kept_from += process_event(s_buffer + kept_from, end - kept_from);
    }
    if (end < total) {
        kept_from = end;
    }
    const int kept = total - kept_from;
    if (kept >= kBufferFill) {
        // Text without an end that fills the buffer is no event; its rest is none either.
        s_skip_to_nul = true;
        s_offset = 0;
        return;
    }
    memmove(s_buffer, s_buffer + kept_from, static_cast<size_t>(kept));
    s_offset = static_cast<size_t>(kept);
    // Descriptors that nobody asked for must not crowd out one that is.
    vym_wire_close_before(vym_wire_position() - s_offset);
}

// "<directory>/<name>", cut to what fits.
template <size_t Room>
void make_path(char (&out)[Room], const char* directory, const char* name) {
    size_t at = 0;
    for (const char* part : {directory, "/", name}) {
        for (; *part != '\0' && at + 1 < Room; ++part) {
            out[at++] = *part;
        }
    }
    out[at] = '\0';
}

int connect_socket(const char* server_path) {
    sockaddr_un address = {};
    const size_t len = strlen(server_path);
    if (len >= sizeof address.sun_path) {
        return -1;
    }
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, server_path, len);
    const int fd = vym_os_not_zero(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (fd < 0) {
        printf("create socket failed:%s.\n", strerror(errno));
        return -1;
    }
    int result = 0;
    do {
        result = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (result < 0 && errno == EINTR);
    if (result < 0) {
        printf("connect socket failed:%s.\n", strerror(errno));
        close(fd);
        return -1;
    }
    return fd;
}

void start_receive_thread(int fd) {
    void* arg = reinterpret_cast<void*>(static_cast<intptr_t>(fd));
    s_thread_started = pthread_create(&s_thread, nullptr, receive_message_proc, arg) == 0 ? 1 : 0;
}

void place_unknown_parser() {
    vym::lock_guard held(parsers_lock);
    s_parser_list_count = 0;
    for (event_parser_t*& slot : s_parsers) {
        slot = nullptr;
    }
    s_unknown_evt_parser = create_unknown_event_parser();
    s_parsers[kUnknownSlot] = s_unknown_evt_parser;
}

void remove_unknown_parser() {
    vym::lock_guard held(parsers_lock);
    if (s_unknown_evt_parser != nullptr) {
        s_parsers[kUnknownSlot] = nullptr;
        destroy_unknown_event_parser(s_unknown_evt_parser);
        s_unknown_evt_parser = nullptr;
    }
}

// Puts a parser where another was; false when that has no slot (a new start emptied the registry).
bool take_slot_of(const event_parser_t* old, event_parser_t* fresh) {
    vym::lock_guard held(parsers_lock);
    for (event_parser_t*& slot : s_parsers) {
        if (old != nullptr && slot == old) {
            slot = fresh;
            return true;
        }
    }
    return false;
}

void shut_down() {
    s_running = 0; // ends a wait for a descriptor, which would hold the parsers' lock
    vym_debug_close();
    vym_debug_cleanup();
    if (t_is_receive_thread) {
        // In a callback: this thread cannot wait for its own end and may hold the parsers' lock.
        disconnect_from_server();
        return;
    }
    remove_unknown_parser();
    disconnect_from_server();
    vym_internal_event_done();
}

} // namespace

extern "C" {

int vym_sdk_init(void) {
    return vym_sdk_init_ex(nullptr);
}

int vym_sdk_init_ex(const char* path) {
    const char* directory = path != nullptr ? path : kDefaultDirectory;
    if (strlen(directory) >= sizeof s_socket_path || t_is_receive_thread) {
        return -1;
    }
    vym::lock_guard held(s_lifecycle_lock);
    if (s_prepared) {
        shut_down(); // what an earlier start has left
    }
    s_prepared = true;
    place_unknown_parser();
    memset(s_socket_path, 0, sizeof s_socket_path);
    memcpy(s_socket_path, directory, strlen(directory));
    vym_internal_event_init();

    char capture_name[kPathSize];
    make_path(capture_name, s_socket_path, "client_sock.log");
    vym_debug_init();
    vym_debug_open(capture_name);
    return connect_to_server(s_socket_path);
}

void vym_sdk_done(void) {
    if (t_is_receive_thread) {
        shut_down();
        return;
    }
    vym::lock_guard held(s_lifecycle_lock);
    shut_down();
    s_prepared = false;
}

int connect_to_server(const char* path) {
    char server_path[128]; // a path that is cut here is too long for a socket's address anyway
    if (path != nullptr) {
        make_path(server_path, path, "vym_socket");
    }
    const int fd = connect_socket(path != nullptr ? server_path : kDefaultSocket);
    if (fd < 0) {
        return -1;
    }
    printf("[%s] connect socket successed. sd:%d\n", get_current_time_string(), fd);
    s_offset = 0;
    s_skip_to_nul = false;
    vym_wire_reset();
    s_client_fd = fd;
    s_running = 1;
    start_receive_thread(fd);
    return fd;
}

void disconnect_from_server(void) {
    s_running = 0;
    const int fd = s_client_fd;
    if (fd > 0) {
        shutdown(fd, SHUT_RDWR);
    }
    if (t_is_receive_thread) {
        return;
    }
    if (s_thread_started.exchange(0) != 0) {
        pthread_join(s_thread, nullptr);
    }
    s_client_fd = 0;
    while (s_senders.load() > 0) {
        usleep(1000); // a command on its way fails at once, since the socket is shut down
    }
    if (fd > 0) {
        close(fd);
    }
    vym_wire_reset();
}

void send_at_command(char* command, int len) {
    (void)len;
    ++s_senders;
    const int fd = s_client_fd;
    if (fd > 0) {
        const size_t length = strlen(command);
        const ssize_t sent = vym_os_send(fd, command, length, 0);
        (void)sent; // a failed or short write is neither repeated nor reported
        capture_sent(command, length);
    }
    --s_senders;
}

void* receive_message_proc(void* arg) {
    const int server = static_cast<int>(reinterpret_cast<intptr_t>(arg));
    if (server < 1) {
        return nullptr;
    }
    t_is_receive_thread = true;
    while (s_running != 0) {
        const int expected_bytes = kBufferFill - static_cast<int>(s_offset);
        const ssize_t read_bytes =
            read_all(server, s_buffer + s_offset, static_cast<size_t>(expected_bytes));
        if (read_bytes > 0) {
            handle_text(static_cast<int>(read_bytes), expected_bytes);
        } else if (s_running != 0) {
            // Nothing from the server, or it is gone; there is no reconnection, and no spinning either.
            usleep(kPauseUs);
        }
    }
    t_is_receive_thread = false;
    return nullptr;
}

int process_event(uint8_t* buffer, int n_bytes) {
    const bool received = in_receive_buffer(buffer);
    vym::lock_guard held(parsers_lock);
    int offset = skip_nuls(buffer, 0, n_bytes);
    while (offset < n_bytes) {
        if (received) {
            note_position(buffer + offset);
        }
        const int taken = offer(buffer, offset, n_bytes);
        if (taken == offset) {
            break;
        }
        offset = taken;
        if (received && check_event_end_pos(buffer, offset, n_bytes - offset) < 0) {
            // Decoded before its NUL arrived: whatever comes up to it is surplus, never another event.
            s_skip_to_nul = true;
            return n_bytes;
        }
        offset = skip_nuls(buffer, offset, n_bytes);
    }
    return offset;
}

void dump_at_event(void* buf, size_t len) {
    (void)buf;
    (void)len;
}

void register_event_parser(event_parser_t* parser) {
    vym::lock_guard held(parsers_lock);
    // The sixteenth takes the unknown-event parser's place, as it always did; a seventeenth has none.
    if (parser != nullptr && s_parser_list_count < kSlots) {
        s_parsers[s_parser_list_count++] = parser;
    }
}

void unregister_event_parser(event_parser_t* parser) {
    vym::lock_guard held(parsers_lock);
    for (event_parser_t*& slot : s_parsers) {
        if (slot == parser && parser != nullptr) {
            slot = nullptr;
            s_parser_list_count -= s_parser_list_count > 0 ? 1 : 0;
        }
    }
}

void vym_profile_start(event_parser_t** current, event_parser_t* fresh,
                       void (*destroy)(event_parser_t*)) {
    if (fresh == nullptr) {
        return;
    }
    event_parser_t* old = *current;
    if (!take_slot_of(old, fresh)) {
        register_event_parser(fresh);
    }
    *current = fresh;
    destroy(old);
}

void vym_profile_stop(event_parser_t** current, void (*destroy)(event_parser_t*)) {
    unregister_event_parser(*current);
    destroy(*current);
    *current = nullptr;
}

int recv_data_transport_fd(void) {
    return vym_wire_take_descriptor(s_client_fd, s_event_position, go_on);
}

int vym_receive_thread_will_read(void) {
    return s_running != 0 && s_thread_started != 0 && !t_is_receive_thread ? 1 : 0;
}

} // extern "C"
