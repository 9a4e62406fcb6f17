// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "connected_library.h"

#include "applications.h"
#include "hand_over.h"
#include "vym_event_parser.h"
#include "vym_os.h"
#include "vym_sdk.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

extern "C" {

// The linker puts these between the library and what it calls (see CMakeLists.txt).
vym::received_t __real_vym_os_receive(int fd, void* buf, size_t count);
vym::received_t __wrap_vym_os_receive(int fd, void* buf, size_t count);
int64_t __wrap_vym_os_now_ms();
int __wrap_usleep(useconds_t duration);

} // extern "C"

namespace fuzz {
namespace {

constexpr uint8_t kMarker = 0x01;
// The library keeps no more of them.
constexpr int kMostDescriptors = 16;

/// How the text that is under way is read.
struct Reading {
    std::mutex lock;
    Lengths lengths;
    size_t left_of_piece = 0;
    size_t left_of_all = 0;
};

Reading& reading() {
    static Reading instance;
    return instance;
}

size_t most_of(size_t count) {
    Reading& now = reading();
    const std::lock_guard<std::mutex> held(now.lock);
    if (now.left_of_piece == 0) {
        now.left_of_piece = now.lengths.next();
    }
    return std::min(count, now.left_of_piece);
}

void note_read(ssize_t bytes) {
    Reading& now = reading();
    const std::lock_guard<std::mutex> held(now.lock);
    if (bytes > 0) {
        now.left_of_piece -= static_cast<size_t>(bytes);
        now.left_of_all -= static_cast<size_t>(bytes);
    }
}

bool is_all_read() {
    Reading& now = reading();
    const std::lock_guard<std::mutex> held(now.lock);
    return now.left_of_all == 0;
}

const Pair& handled() {
    static const Pair instance;
    return instance;
}

void begin_reading(const Lengths& lengths, size_t bytes) {
    Reading& now = reading();
    const std::lock_guard<std::mutex> held(now.lock);
    now.lengths = lengths;
    now.left_of_piece = 0;
    now.left_of_all = bytes;
}

bool announces_descriptor(std::string_view event) {
    return event.substr(0, 2) == "PD";
}

int descriptors_in(std::string_view events) {
    int count = 0;
    for (size_t at = 0; at < events.size() && count < kMostDescriptors;
         at = events.find('\0', at) + 1) {
        count += announces_descriptor(events.substr(at)) ? 1 : 0;
    }
    return count;
}

/// Takes the last event of all, and tells.
int take_marker(event_parser_t*, uint8_t* buffer, int offset, int length) {
    if (length != 2 || buffer[offset] != kMarker || buffer[offset + 1] != 0 || !is_all_read()) {
        return -1;
    }
    require(write(handled().ours(), "!", 1) == 1, "the end can be told");
    return offset + 1;
}

event_parser_t marker_parser{-1, 0, nullptr, take_marker};

int listen_in(const std::string& directory) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s/vym_socket", directory.c_str());
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 && listen(fd, 1) == 0,
            "a server can listen");
    return fd;
}

} // namespace

ConnectedLibrary& ConnectedLibrary::get() {
    static ConnectedLibrary instance;
    return instance;
}

ConnectedLibrary::ConnectedLibrary() {
    require(be_quiet(), "standard output can be closed");
    reading();
    handled();
    std::string name = (std::filesystem::temp_directory_path() / "vym-fuzz-XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "there is a temporary directory");
    directory_ = name;
    // The capture is written, and kept nowhere.
    std::filesystem::create_symlink("/dev/null", directory_ + "/client_sock.log");
    const int listener = listen_in(directory_);
    require(vym_sdk_init_ex(directory_.c_str()) > 0, "the library connects");
    server_ = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    close(listener);
    register_event_parser(&marker_parser);
}

ConnectedLibrary::~ConnectedLibrary() {
    unregister_event_parser(&marker_parser);
    vym_sdk_done();
    close(server_);
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

void ConnectedLibrary::send(std::string_view text) {
    while (!text.empty()) {
        const ssize_t sent = ::send(server_, text.data(), text.size(), MSG_NOSIGNAL);
        require(sent > 0, "the library is connected");
        text.remove_prefix(static_cast<size_t>(sent));
    }
}

void ConnectedLibrary::send_events(std::string_view events, int descriptors) {
    while (!events.empty()) {
        const std::string_view event = events.substr(0, events.find('\0') + 1);
        events.remove_prefix(event.size());
        send(event);
        if (announces_descriptor(event) && descriptors > 0) {
            --descriptors;
            const Pair pair; // whoever reads from it finds its end at once
            send_descriptor(server_, std::string_view("\0", 1), pair.theirs());
        }
    }
}

void ConnectedLibrary::wait_until_handled() {
    std::array<char, 4096> commands{};
    pollfd waits[] = {{server_, POLLIN, 0}, {handled().theirs(), POLLIN, 0}};
    while (waits[1].revents == 0) {
        require(poll(waits, 2, -1) > 0 || errno == EINTR, "something happens");
        // A server that does not read would have the library wait in the middle of an event.
        while (recv(server_, commands.data(), commands.size(), MSG_DONTWAIT) > 0) {
        }
    }
    char mark = 0;
    require(read(handled().theirs(), &mark, 1) == 1, "the end is told once");
}

Told ConnectedLibrary::receive(Lengths lengths, std::string_view text) {
    const std::string all = std::string(text) + '\0' + static_cast<char>(kMarker) + '\0';
    const int descriptors = descriptors_in(all);
    const Told before{vym_callbacks_seen(), vym_callbacks_sum()};
    for (const vym_application_t& application : vym_applications) {
        application.start();
    }
    begin_reading(lengths, all.size() + static_cast<size_t>(descriptors));
    send_events(all, descriptors);
    wait_until_handled();
    for (int i = VYM_APPLICATIONS; i > 0; --i) {
        vym_applications[i - 1].stop();
    }
    return {vym_callbacks_seen() - before.callbacks, vym_callbacks_sum() - before.sum};
}

} // namespace fuzz

extern "C" {

// The text lies in the socket as a whole; how it is cut is decided here.
vym::received_t __wrap_vym_os_receive(int fd, void* buf, size_t count) {
    const vym::received_t received = __real_vym_os_receive(fd, buf, fuzz::most_of(count));
    fuzz::note_read(received.bytes);
    return received;
}

// Whatever waits for a moment has waited for it.
int64_t __wrap_vym_os_now_ms() {
    static std::atomic<int64_t> now{0};
    return now += 500;
}

int __wrap_usleep(useconds_t) {
    return 0;
}

} // extern "C"
