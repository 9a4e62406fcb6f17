// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What no client can be quicker than: the system calls alone.
// The variant's words:
//   plain    read and look for the end; write; write and read
//   append   the same, and each message appended to a file with one gathered write
//   poll     wait for this socket and another one, then receive with room for descriptors
//   decode   read, every field of the notification decoded, and a callback
//   handover an answer is read by one thread and given to the one that asked
//   second   there is a second thread, which does nothing: the kernel's work for a message is more then

#include "candidate.h"
#include "meter.h"
#include "sockets.h"
#include "workload.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <thread>
#include <unistd.h>

namespace bench {
namespace {

constexpr char kStart[] = "AT#KD0101\r\n";
constexpr char kAskName[] = "AT#BA01\r\n";

// Appends to a file what a capture does: a head and the text, in one write.
class Appender {
public:
    explicit Appender(const Job& job)
        : fd_(job.has("append") ? open((job.directory + "/floor.log").c_str(),
                                       O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0664)
                                : -1) {}
    ~Appender() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    Appender(const Appender&) = delete;
    Appender& operator=(const Appender&) = delete;
    Appender(Appender&&) = delete;
    Appender& operator=(Appender&&) = delete;

    void append(const char* text, size_t length) {
        if (fd_ < 0) {
            return;
        }
        timeval now{};
        gettimeofday(&now, nullptr);
        std::array<char, 28> head{};
        std::memcpy(head.data() + 16, &now.tv_usec, 8);
        std::array<iovec, 2> parts = {iovec{head.data(), head.size()},
                                      iovec{const_cast<char*>(text), length}};
        if (writev(fd_, parts.data(), 2) < 0) {
            give_up("append");
        }
    }

private:
    int fd_;
};

struct Notification {
    uint16_t connection = 0;
    std::array<uint8_t, 6> address{};
    uint16_t service_instance = 0;
    std::array<uint8_t, 16> service{};
    uint16_t value_instance = 0;
    std::array<uint8_t, 16> characteristic{};
    std::array<uint8_t, 64> data{};
    size_t size = 0;
};

// So that the compiler does not see what is behind the call.
void (*volatile s_callback)(const Notification&) = [](const Notification&) {};

constexpr std::array<uint8_t, 256> kDigits = [] {
    std::array<uint8_t, 256> digits{};
    for (unsigned i = 0; i < 10; ++i) {
        digits['0' + i] = static_cast<uint8_t>(i);
    }
    for (unsigned i = 0; i < 6; ++i) {
        digits['A' + i] = digits['a' + i] = static_cast<uint8_t>(10 + i);
    }
    return digits;
}();

uint8_t byte_at(const char* at) {
    return static_cast<uint8_t>(kDigits[static_cast<uint8_t>(at[0])] << 4 |
                                kDigits[static_cast<uint8_t>(at[1])]);
}

uint16_t word_at(const char* at) {
    return static_cast<uint16_t>(byte_at(at) << 8 | byte_at(at + 2));
}

template <size_t Size>
const char* bytes_at(const char* at, std::array<uint8_t, Size>* bytes) {
    for (uint8_t& byte : *bytes) {
        byte = byte_at(at);
        at += 2;
    }
    return at;
}

void decode(const char* at, const char* end) {
    Notification value;
    value.connection = word_at(at + 2);
    at = bytes_at(at + 6, &value.address);
    value.service_instance = word_at(at + 2);
    at = bytes_at(at + 6, &value.service);
    value.value_instance = word_at(at);
    at = bytes_at(at + 4, &value.characteristic);
    value.size = word_at(at + 2);
    at += 6;
    if (value.size <= value.data.size() && value.size <= static_cast<size_t>(end - at)) {
        std::memcpy(value.data.data(), at, value.size);
        s_callback(value);
    }
}

// As a client reads that watches a second channel and takes descriptors.
ssize_t wait_and_receive(int fd, int other, char* room, size_t size) {
    std::array<pollfd, 2> inputs = {pollfd{other, POLLIN, 0}, pollfd{fd, POLLIN, 0}};
    if (poll(inputs.data(), inputs.size(), -1) < 0) {
        return -1;
    }
    alignas(cmsghdr) std::array<char, CMSG_SPACE(16 * sizeof(int))> control{};
    iovec text = {room, size};
    msghdr message{};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    return recvmsg(fd, &message, MSG_CMSG_CLOEXEC);
}

std::string events(const Job& job) {
    std::array<int, 2> pair{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0) {
        give_up("socketpair");
    }
    const bool polling = job.has("poll");
    const int fd = connect_to(job.socket_path());
    const bool decoding = job.has("decode");
    Appender log(job);
    Meter meter(kWarmUp, job.count);
    std::array<char, 4096> room{};
    size_t kept = 0;
    write_all(fd, kStart);
    while (!meter.done()) {
        const ssize_t got = polling
                                ? wait_and_receive(fd, pair[0], room.data() + kept, room.size() - kept)
                                : read(fd, room.data() + kept, room.size() - kept);
        if (got <= 0) {
            give_up("read");
        }
        log.append(room.data() + kept, static_cast<size_t>(got));
        const char* at = room.data();
        const char* end = at + kept + got;
        while (const void* nul = std::memchr(at, 0, static_cast<size_t>(end - at))) {
            if (decoding) {
                decode(at, static_cast<const char*>(nul));
            }
            at = static_cast<const char*>(nul) + 1;
            meter.tick();
        }
        kept = static_cast<size_t>(end - at);
        std::memmove(room.data(), at, kept);
    }
    close(fd);
    return meter.report();
}

std::string commands(const Job& job) {
    const int fd = connect_to(job.socket_path());
    const std::string command = write_command();
    Appender log(job);
    Meter meter(kWarmUp, job.count);
    while (!meter.done()) {
        write_all(fd, command);
        log.append(command.data(), command.size());
        meter.tick();
    }
    close(fd);
    return meter.report();
}

std::string round_trips(const Job& job) {
    const int fd = connect_to(job.socket_path());
    Appender log(job);
    Meter meter(kWarmUp, job.count);
    std::array<char, 4096> room{};
    while (!meter.done()) {
        write_all(fd, kAskName);
        log.append(kAskName, sizeof kAskName - 1);
        const ssize_t got = read(fd, room.data(), room.size());
        if (got <= 0) {
            give_up("read");
        }
        log.append(room.data(), static_cast<size_t>(got));
        meter.tick();
    }
    close(fd);
    return meter.report();
}

std::string handed_over(const Job& job) {
    const int fd = connect_to(job.socket_path());
    sem_t answered{};
    sem_init(&answered, 0, 0);
    Appender log(job);
    std::thread receiver([fd, &answered, &log] {
        std::array<char, 4096> room{};
        ssize_t got = 0;
        while ((got = read(fd, room.data(), room.size())) > 0) {
            log.append(room.data(), static_cast<size_t>(got));
            sem_post(&answered);
        }
    });
    Meter meter(kWarmUp, job.count);
    while (!meter.done()) {
        write_all(fd, kAskName);
        log.append(kAskName, sizeof kAskName - 1);
        sem_wait(&answered);
        meter.tick();
    }
    shutdown(fd, SHUT_RDWR);
    receiver.join();
    close(fd);
    sem_destroy(&answered);
    return meter.report();
}

} // namespace

std::string run(const Job& job) {
    if (job.has("second")) {
        std::thread([] { pause(); }).detach();
    }
    if (job.workload == "command") {
        return commands(job);
    }
    if (job.workload == "round-trip") {
        return job.has("handover") ? handed_over(job) : round_trips(job);
    }
    return stream(job.workload).events > 0 ? events(job) : std::string();
}

} // namespace bench
