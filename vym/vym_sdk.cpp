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
constexpr unsigned kLetters = 'Z' - 'A' + 1;
constexpr int kBufferSize = 4096;
constexpr int kBufferFill = kBufferSize - 1; // one byte stays free for a NUL after the text
constexpr int kPathSize = 256;
constexpr useconds_t kPauseUs = 500000;
constexpr char kDefaultDirectory[] = "/etc/backup";
constexpr char kDefaultSocket[] = "/home/tesk/morvel/qel_socket";

vym::mutex s_lifecycle_lock; // start and stop exclude each other
vym::mutex parsers_lock;     // held while parsers, and so the application's callbacks, run

event_parser_t* s_parsers[kSlots] VYM_GUARDED_BY(parsers_lock);
int s_parser_list_count VYM_GUARDED_BY(parsers_lock);
// Which slots are to be asked about a text, by its first two letters: those whose table has such a tag,
// and those of which nothing is known. So what an event costs does not depend on how many profiles
// there are, and each slot that may want it is asked in its turn all the same.
uint16_t s_asked[kLetters][kLetters] VYM_GUARDED_BY(parsers_lock);
uint16_t s_always_asked VYM_GUARDED_BY(parsers_lock);
uint16_t s_has_table VYM_GUARDED_BY(parsers_lock); // slots with a profile's parser
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

// The place of a capital letter, or kLetters.
unsigned letter_of(char c) {
    const unsigned place = static_cast<unsigned char>(c) - static_cast<unsigned>('A');
    return place < kLetters ? place : kLetters;
}

// To be called when slots have changed.
void note_tags() VYM_REQUIRES(parsers_lock) {
    memset(s_asked, 0, sizeof s_asked);
    s_always_asked = 0;
    for (unsigned slot = 0; slot < kSlots; ++slot) {
        const event_parser_t* parser = s_parsers[slot];
        const auto bit = static_cast<uint16_t>(1U << slot);
        if (parser == nullptr) {
            continue;
        }
        if ((s_has_table & bit) == 0) {
            s_always_asked = static_cast<uint16_t>(s_always_asked | bit);
            continue;
        }
        for (int i = 0; i < parser->num_of_parsers; ++i) {
            const char* tag = parser->parser_list[i].get_keyword();
            uint16_t& asked = s_asked[letter_of(tag[0])][letter_of(tag[1])];
            asked = static_cast<uint16_t>(asked | bit);
        }
    }
}

void put_in_slot(int slot, event_parser_t* parser, bool has_table) VYM_REQUIRES(parsers_lock) {
    const auto bit = static_cast<uint16_t>(1U << slot);
    s_parsers[slot] = parser;
    s_has_table = static_cast<uint16_t>(has_table ? s_has_table | bit : s_has_table & ~bit);
    note_tags();
}

unsigned slots_to_ask(const uint8_t* text, int length) VYM_REQUIRES(parsers_lock) {
    if (length < 2) {
        return s_always_asked; // shorter than any tag
    }
    const unsigned first = letter_of(static_cast<char>(text[0]));
    const unsigned second = letter_of(static_cast<char>(text[1]));
    return s_always_asked | (first < kLetters && second < kLetters ? s_asked[first][second] : 0U);
}

// Offers the text to each slot. Returns the index after what was taken, or `offset` when nobody took
// it.
int offer(uint8_t* buffer, int offset, int n_bytes) VYM_REQUIRES(parsers_lock) {
    unsigned asked = slots_to_ask(buffer + offset, n_bytes - offset);
    for (; asked != 0; asked &= asked - 1) {
        event_parser_t* parser = s_parsers[__builtin_ctz(asked)];
        const int taken = parser->process_event(parser, buffer, offset, n_bytes - offset);
        if (taken > offset) {
            return taken < n_bytes ? taken : n_bytes;
        }
    }
    // A whole event is never kept: it would stand in the way of all that follow.
    const int end = check_event_end_pos(buffer, offset, n_bytes - offset);
    return end > offset ? end : offset;
}

int count_nul_runs(const uint8_t* buffer, int n_bytes) {
    int runs = 0;
    int at = 0;
    while (at < n_bytes) {
        const void* nul = memchr(buffer + at, 0, static_cast<size_t>(n_bytes - at));
        if (nul == nullptr) {
            break;
        }
        ++runs;
        at = skip_nuls(buffer, static_cast<int>(static_cast<const uint8_t*>(nul) - buffer), n_bytes);
    }
    return runs;
}

char* put_text(char* at, const char* text, size_t length) {
    memcpy(at, text, length);
    return at + length;
}

char* put_padding(char* at, size_t length, size_t width) {
    for (; length < width; ++length) {
        *at++ = ' ';
    }
    return at;
}

template <size_t Size>
char* put_literal(char* at, const char (&text)[Size]) {
    return put_text(at, text, Size - 1);
}

// "[%-17s], buf[%04d + %04d] evt_num:%4d , evt_buf:%-25.25s\r\n", of the time, what was kept, what was
// read, the number of events and the text. It comes with every read, so it is put together by hand.
void log_read(int read_bytes, int total) {
    constexpr size_t kTimeWidth = 17;
    constexpr size_t kTextWidth = 25;
    char line[192];
    const char* time = get_current_time_string();
    const size_t time_len = strlen(time);
    char* at = put_text(put_literal(line, "["), time, time_len);
    at = put_literal(put_padding(at, time_len, kTimeWidth), "], buf[");
    at = vym_put_number(at, static_cast<unsigned>(s_offset), 4, '0');
    at = vym_put_number(put_literal(at, " + "), static_cast<unsigned>(read_bytes), 4, '0');
    at = put_literal(at, "] evt_num:");
    at = vym_put_number(at, static_cast<unsigned>(count_nul_runs(s_buffer, total)), 4, ' ');
    at = put_literal(at, " , evt_buf:");
    s_buffer[total] = 0; // ends the text for the line below; the byte is never part of a read
    const auto* text = reinterpret_cast<const char*>(s_buffer);
    const size_t text_len = strnlen(text, kTextWidth);
    at = put_padding(put_text(at, text, text_len), text_len, kTextWidth);
    at = put_literal(at, "\r\n");
    fwrite(line, 1, static_cast<size_t>(at - line), stdout);
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
    vym_debug_capture_text(s_buffer, static_cast<size_t>(total), 1);
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
    s_has_table = 0;
    s_unknown_evt_parser = create_unknown_event_parser();
    put_in_slot(kUnknownSlot, s_unknown_evt_parser, false);
}

void remove_unknown_parser() {
    vym::lock_guard held(parsers_lock);
    if (s_unknown_evt_parser != nullptr) {
        put_in_slot(kUnknownSlot, nullptr, false);
        destroy_unknown_event_parser(s_unknown_evt_parser);
        s_unknown_evt_parser = nullptr;
    }
}

// The sixteenth takes the unknown-event parser's place, as it always did; a seventeenth has none.
void take_next_slot(event_parser_t* parser, bool has_table) {
    vym::lock_guard held(parsers_lock);
    if (parser != nullptr && s_parser_list_count < kSlots) {
        put_in_slot(s_parser_list_count++, parser, has_table);
    }
}

// Puts a parser where another was; false when that has no slot (a new start emptied the registry).
bool take_slot_of(const event_parser_t* old, event_parser_t* fresh) {
    vym::lock_guard held(parsers_lock);
    for (int slot = 0; slot < kSlots; ++slot) {
        if (old != nullptr && s_parsers[slot] == old) {
            put_in_slot(slot, fresh, true);
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
        vym_debug_capture_text(reinterpret_cast<const uint8_t*>(command), length, 0);
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
    take_next_slot(parser, false);
}

void unregister_event_parser(event_parser_t* parser) {
    vym::lock_guard held(parsers_lock);
    for (int slot = 0; slot < kSlots; ++slot) {
        if (s_parsers[slot] == parser && parser != nullptr) {
            put_in_slot(slot, nullptr, false);
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
        take_next_slot(fresh, true);
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
