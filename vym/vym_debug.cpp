// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_debug.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

int hci_vym_debug_fd = -1;

namespace {

std::atomic<int> s_vym_debug_status{0};

/// Serialises capture records, the opening and closing of the capture, and everything of the listener.
pthread_mutex_t utils_mutex = PTHREAD_MUTEX_INITIALIZER;

// ---- capture ----

enum packet_type : uint8_t { TYPE_COMMAND = 1, TYPE_ACL = 2, TYPE_SCO = 3, TYPE_EVENT = 4 };

/// Flags of a record: bit 0 is set for what came from the controller, bit 1 for commands and events.
constexpr uint32_t FLAGS_COMMAND = 2;
constexpr uint32_t FLAGS_EVENT = 3;

constexpr size_t RECORD_TIME_OFFSET = 16;
constexpr size_t RECORD_HEAD_LEN = 25;

/// Microseconds from midnight, 1 January of year 0, to 1970.
constexpr uint64_t EPOCH_1970_US = 0x00DCDDB30F2F8000;

/// "btsnoop", version 1, datalink 1002: HCI UART with a one-byte packet type.
constexpr uint8_t FILE_HEADER[] = {'b', 't', 's', 'n', 'o', 'o', 'p', 0, 0, 0, 0, 1, 0, 0, 0x03, 0xEA};

/// Atomic although the writers hold the lock: the exported number is looked at without it.
int capture_fd() {
    return __atomic_load_n(&hci_vym_debug_fd, __ATOMIC_ACQUIRE);
}

void set_capture_fd(int fd) {
    __atomic_store_n(&hci_vym_debug_fd, fd, __ATOMIC_RELEASE);
}

/// The unlocked look spares the lock while there is no capture; append_record() looks again.
bool is_wanted(const unsigned char* packet) {
    return packet != nullptr && capture_fd() != -1;
}

uint8_t* put_be32(uint8_t* at, uint32_t value) {
    const uint32_t big_endian = l_to_be(value);
    memcpy(at, &big_endian, sizeof(big_endian));
    return at + sizeof(big_endian);
}

void put_time(uint8_t* at) {
    timeval now{};
    uint32_t lo = 0;
    uint32_t hi = 0;
    gettimeofday(&now, nullptr);
    tv_to_vym_debug_ts(&lo, &hi, &now);
    put_be32(put_be32(at, hi), lo);
}

/// All but the time.
uint8_t* put_head(uint8_t* at, packet_type type, uint32_t flags, size_t packet_len) {
    const auto len = static_cast<uint32_t>(packet_len + 1);
    constexpr uint32_t drops = 0;
    put_be32(put_be32(put_be32(put_be32(at, len), len), flags), drops);
    at[RECORD_HEAD_LEN - 1] = type;
    return at + RECORD_HEAD_LEN;
}

void append_record(packet_type type, uint32_t flags, unsigned char* packet, size_t packet_len) {
    uint8_t head[RECORD_HEAD_LEN];
    put_head(head, type, flags, packet_len);
    iovec parts[] = {{head, sizeof(head)}, {packet, packet_len}};

    utils_lock();
    const int fd = capture_fd();
    if (fd != -1) {
        // Read under the lock, so that time stamps do not go backwards within the file.
        put_time(head + RECORD_TIME_OFFSET);
        // One write for the whole record: a process that is killed leaves whole records behind (the
        // kernel may still cut the very last one where a page of the file ends).
        const ssize_t written = writev(fd, parts, 2);
        static_cast<void>(written);
    }
    utils_unlock();
}

// ---- capture of the library's own text, wrapped as vendor commands and events ----

/// The most that the length byte of a command or an event can tell.
constexpr size_t PIECE = 255;
/// What one read can fill, so that each read is one write.
constexpr size_t RECORDS_AT_ONCE = 17;
constexpr size_t LONGEST_RECORD = RECORD_HEAD_LEN + 3 + PIECE;

uint8_t* put_text_record(uint8_t* at, const uint8_t* text, size_t piece, bool received) {
    if (received) {
        at = put_head(at, TYPE_EVENT, FLAGS_EVENT, 2 + piece);
        *at++ = 0xFF;
    } else {
        at = put_head(at, TYPE_COMMAND, FLAGS_COMMAND, 3 + piece);
        *at++ = 0x01;
        *at++ = 0xFC;
    }
    *at++ = static_cast<uint8_t>(piece);
    memcpy(at, text, piece);
    return at + piece;
}

/// Appends the records of some text, all with the same time. @return how much of the text that was.
size_t append_text_records(int fd, const uint8_t* text, size_t len, bool received) {
    // Side by side in one piece: gathering many small pieces costs the kernel more than copying here.
    uint8_t records[RECORDS_AT_ONCE * LONGEST_RECORD];
    uint8_t* end = records;
    size_t taken = 0;
    uint8_t time[8];
    put_time(time);
    for (size_t i = 0; i < RECORDS_AT_ONCE && taken < len; ++i) {
        const size_t piece = std::min(PIECE, len - taken);
        uint8_t* record = end;
        end = put_text_record(record, text + taken, piece, received);
        memcpy(record + RECORD_TIME_OFFSET, time, sizeof(time));
        taken += piece;
    }
    const ssize_t written = write(fd, records, static_cast<size_t>(end - records));
    static_cast<void>(written);
    return taken;
}

// ---- external parser: state, all of it guarded by utils_mutex unless atomic ----

constexpr int PARSER_PORT = 4338;
constexpr int BACKLOG = 1;
constexpr timespec RETRY_PAUSE = {1, 0};
/// A parser that stops reading must not hold the lock, and with it every captured command, for ever.
constexpr timeval SEND_TIMEOUT = {2, 0};

int s_listen = -1;
int ext_parser_fd = -1;
/// The listener thread; valid while s_listener_tid is not 0.
pthread_t thread_id;
pthread_cond_t s_listener_ended = PTHREAD_COND_INITIALIZER;
/// Kernel's number of the listener thread, 0 when there is none. Written under the lock.
std::atomic<pid_t> s_listener_tid{0};
/// Set once the listener thread is to end.
std::atomic<bool> s_listener_stop{false};

pid_t own_tid() {
    return static_cast<pid_t>(syscall(SYS_gettid));
}

bool is_listener() {
    return s_listener_tid.load() == own_tid();
}

bool must_end() {
    return is_listener() && s_listener_stop.load();
}

/// Handler of SIGUSR2. The listener ends by its own code: to end it right here could leave a lock held
/// for ever. Any other thread that happens to receive the signal is left alone.
void interruptFn(int /*signal_number*/) {
    if (is_listener()) {
        s_listener_stop.store(true);
    }
}

void close_and_clear(int* fd) {
    if (*fd != -1) {
        close(*fd);
        *fd = -1;
    }
}

void detach_locked() {
    close_and_clear(&ext_parser_fd);
    if (s_listen != -1) {
        // Closing alone would not wake a thread that waits for clients.
        shutdown(s_listen, SHUT_RDWR);
        close_and_clear(&s_listen);
    }
}

/// The signals to be blocked while waiting. Only then may SIGUSR2 come through to the listener.
sigset_t mask_for_waiting() {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    if (is_listener()) {
        sigdelset(&mask, SIGUSR2);
    }
    return mask;
}

void pause_before_retry() {
    if (must_end()) {
        return;
    }
    const sigset_t mask = mask_for_waiting();
    ppoll(nullptr, 0, &RETRY_PAUSE, &mask);
}

/// @return a socket that listens, if its failures allow; -1 when there is none.
int open_listening_socket(int port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd == -1) {
        return -1;
    }
    const int on = 1;
    if (setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) == -1) {
        perror("setsockopt");
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    // Each failure is told and the next step taken all the same: when the port is another's, the kernel
    // chooses one.
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == -1) {
        perror("bind");
    }
    if (listen(fd, BACKLOG) == -1) {
        perror("listen");
    }
    return fd;
}

/// Makes the listening socket known to detach_locked(), under a descriptor of its own: the one on which
/// this thread waits is closed by this thread only, so its number cannot become another file meanwhile.
bool publish_listening_socket(int fd) {
    utils_lock();
    if (!must_end()) {
        s_listen = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    }
    const bool published = s_listen != -1;
    utils_unlock();
    return published;
}

/// Whether the client that was announced went away before it was accepted.
bool is_passing_error(int error) {
    return error == EAGAIN || error == ECONNABORTED || error == EPROTO || error == EINTR;
}

/// @return the client's socket; -1 with errno when there is none to wait for.
int wait_for_client(int fd) {
    const sigset_t mask = mask_for_waiting();
    while (!must_end()) {
        pollfd waited = {fd, POLLIN, 0};
        if (ppoll(&waited, 1, nullptr, &mask) == -1) {
            if (errno != EINTR) {
                return -1;
            }
            continue;
        }
        const int client = accept4(fd, nullptr, nullptr, SOCK_CLOEXEC);
        if (client != -1) {
            setsockopt(client, SOL_SOCKET, SO_SNDTIMEO, &SEND_TIMEOUT, sizeof(SEND_TIMEOUT));
            return client;
        }
        if (!is_passing_error(errno)) {
            return -1;
        }
    }
    return -1;
}

/// Whether the wait for a client ended because nobody wants it any more.
bool is_called_off() {
    utils_lock();
    const bool detached = s_listen == -1;
    utils_unlock();
    return detached || must_end();
}

/// There is one listener at a time; one that is about to end is waited for.
bool become_listener() {
    utils_lock();
    while (s_listener_tid.load() != 0 && s_listener_stop.load()) {
        pthread_cond_wait(&s_listener_ended, &utils_mutex);
    }
    const bool free_place = s_listener_tid.load() == 0;
    if (free_place) {
        s_listener_stop.store(false);
        thread_id = pthread_self();
        s_listener_tid.store(own_tid());
    }
    utils_unlock();
    return free_place;
}

void cease_to_be_listener() {
    utils_lock();
    // Nobody accepts any more, so nobody should be able to connect.
    close_and_clear(&s_listen);
    thread_id = pthread_t{};
    s_listener_tid.store(0);
    pthread_cond_broadcast(&s_listener_ended);
    utils_unlock();
}

void listen_until_stopped() {
    while (!s_listener_stop.load()) {
        int fd = ext_parser_accept(PARSER_PORT);
        utils_lock();
        if (!s_listener_stop.load()) {
            std::swap(fd, ext_parser_fd);
        }
        close_and_clear(&fd);
        utils_unlock();
    }
}

// ---- hex dump ----

constexpr size_t BYTES_PER_LINE = 16;

char printable(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
}

void print_hex_line(const unsigned char* bytes, size_t count, size_t offset) {
    // Put together first: lines of several threads are not mixed.
    char hex[BYTES_PER_LINE * 3 + 1] = {};
    char text[BYTES_PER_LINE + 1] = {};
    for (size_t i = 0; i < count; ++i) {
        snprintf(hex + i * 3, sizeof(hex) - i * 3, " %02x", static_cast<unsigned int>(bytes[i]));
        text[i] = printable(bytes[i]);
    }
    printf("%08zx %-48s  |%s|\n", offset, hex, text);
}

} // namespace

void utils_lock(void) {
    pthread_mutex_lock(&utils_mutex);
}

void utils_unlock(void) {
    pthread_mutex_unlock(&utils_mutex);
}

void vym_debug_init(void) {
    int unset = 0;
    s_vym_debug_status.compare_exchange_strong(unset, 1);
}

void vym_debug_cleanup(void) {
    set_vym_debug_status(0);
}

void set_vym_debug_status(int status) {
    s_vym_debug_status.store(status);
}

int get_vym_debug_status(void) {
    return s_vym_debug_status.load();
}

void vym_debug_open(char* p_path) {
    vym_debug_log_open(p_path);
}

void vym_debug_close(void) {
    vym_debug_log_close();
}

int vym_debug_is_open(void) {
    return capture_fd() != -1 ? 1 : 0;
}

int vym_debug_log_open(char* vym_debug_logfile) {
    const bool has_path = vym_debug_logfile != nullptr && *vym_debug_logfile != '\0';
    utils_lock();
    // Intended: a capture that is still open is forgotten and its descriptor stays open.
    set_capture_fd(-1);
    int fd = -1;
    int error = 0;
    if (has_path) {
        fd = open(vym_debug_logfile, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0664);
        error = errno;
    }
    if (fd != -1) {
        const ssize_t written = write(fd, FILE_HEADER, sizeof(FILE_HEADER));
        static_cast<void>(written);
        set_capture_fd(fd);
    }
    utils_unlock();
    if (!has_path) {
        return 2;
    }
    if (fd == -1) {
        errno = error;
        perror("open");
        return 0;
    }
    return 1;
}

int vym_debug_log_close(void) {
    utils_lock();
    int fd = capture_fd();
    const int was_open = fd != -1 ? 1 : 0;
    set_capture_fd(-1);
    close_and_clear(&fd);
    utils_unlock();
    return was_open;
}

void vym_debug_capture(unsigned char* p_buf, uint32_t /*len*/, uint8_t is_rcvd) {
    if (!is_wanted(p_buf)) {
        return;
    }
    switch (p_buf[0]) {
    case TYPE_COMMAND:
        vym_debug_hci_cmd(p_buf + 1);
        break;
    case TYPE_ACL:
        vym_debug_acl_data(p_buf + 1, is_rcvd);
        break;
    case TYPE_SCO:
        vym_debug_sco_data(p_buf + 1, is_rcvd);
        break;
    case TYPE_EVENT:
        vym_debug_hci_evt(p_buf + 1);
        break;
    default:
        break;
    }
}

void vym_debug_capture_text(const uint8_t* text, size_t len, int received) {
    if (!is_wanted(text)) {
        return;
    }
    utils_lock();
    // All pieces under one lock: those of another thread's text do not come between them.
    for (size_t at = 0; at < len && capture_fd() != -1;) {
        at += append_text_records(capture_fd(), text + at, len - at, received != 0);
    }
    utils_unlock();
}

void vym_debug_hci_cmd(unsigned char* p) {
    if (is_wanted(p)) {
        append_record(TYPE_COMMAND, FLAGS_COMMAND, p, p[2] + size_t{3});
    }
}

void vym_debug_hci_evt(unsigned char* p) {
    if (is_wanted(p)) {
        append_record(TYPE_EVENT, FLAGS_EVENT, p, p[1] + size_t{2});
    }
}

void vym_debug_sco_data(unsigned char* p, uint8_t is_rcvd) {
    if (is_wanted(p)) {
        append_record(TYPE_SCO, is_rcvd != 0 ? 1 : 0, p, p[2] + size_t{3});
    }
}

void vym_debug_acl_data(unsigned char* p, uint8_t is_rcvd) {
    if (is_wanted(p)) {
        append_record(TYPE_ACL, is_rcvd != 0 ? 1 : 0, p, p[3] * size_t{256} + p[2] + 4);
    }
}

void tv_to_vym_debug_ts(uint32_t* out_lo, uint32_t* out_hi, struct timeval* tv) {
    const uint64_t us = static_cast<uint64_t>(tv->tv_sec) * 1000000 +
                        static_cast<uint64_t>(tv->tv_usec) + EPOCH_1970_US;
    *out_lo = static_cast<uint32_t>(us);
    *out_hi = static_cast<uint32_t>(us >> 32);
}

uint32_t l_to_be(uint32_t value) {
    return htonl(value);
}

void* ext_parser_thread(void* /*param*/) {
    sigset_t stop_signal;
    sigset_t previous;
    sigemptyset(&stop_signal);
    sigaddset(&stop_signal, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &stop_signal, &previous);

    struct sigaction action {};
    action.sa_handler = interruptFn;
    action.sa_flags =
        SA_RESTART; // for the application's threads; a wait in ppoll is interrupted all the same
    sigemptyset(&action.sa_mask);
    sigaction(SIGUSR2, &action, nullptr);

    if (become_listener()) {
        prctl(PR_SET_NAME, "BtsnoopExtParser");
        listen_until_stopped();
        cease_to_be_listener();
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return nullptr;
}

void vym_debug_stop_listener(void) {
    utils_lock();
    detach_locked();
    if (s_listener_tid.load() != 0) {
        s_listener_stop.store(true);
        // The thread needs the lock to end, so it is still there.
        pthread_kill(thread_id, SIGUSR2);
    }
    utils_unlock();
}

int ext_parser_accept(int port) {
    utils_lock();
    close_and_clear(&s_listen);
    utils_unlock();

    const int fd = open_listening_socket(port);
    if (fd == -1 || !publish_listening_socket(fd)) {
        if (fd != -1) {
            close(fd);
        }
        pause_before_retry();
        return -1;
    }
    const int client = wait_for_client(fd);
    const int error = errno;
    close(fd);
    if (client == -1 && !is_called_off()) {
        errno = error;
        perror("accept");
        pause_before_retry();
    }
    return client;
}

void ext_parser_detached(void) {
    utils_lock();
    detach_locked();
    utils_unlock();
}

int send_ext_parser(char* p, int len) {
    utils_lock();
    if (ext_parser_fd == -1) {
        utils_unlock();
        return 0;
    }
    ssize_t sent = len < 0 ? -1 : 0;
    if (ext_parser_fd > 0 && len >= 0) {
        do {
            // A parser that is gone must not end the process with SIGPIPE.
            sent = send(ext_parser_fd, p, static_cast<size_t>(len), MSG_NOSIGNAL);
        } while (sent == -1 && errno == EINTR);
    }
    if (sent < 1) {
        detach_locked();
    }
    utils_unlock();
    return static_cast<int>(sent);
}

void hex_dump(unsigned char* data, size_t len) {
    if (data == nullptr) {
        return;
    }
    for (size_t offset = 0; offset < len; offset += BYTES_PER_LINE) {
        print_hex_line(data + offset, std::min(BYTES_PER_LINE, len - offset), offset);
    }
}
