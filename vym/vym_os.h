// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The system calls whose flags matter, in one place: descriptors that no child inherits, sends that
// raise no signal, receipts that lose no descriptor; and the owners that release what C gave.
#ifndef VYM_OS_H
#define VYM_OS_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sys/types.h>
#include <unistd.h>

namespace vym {

struct free_deleter {
    void operator()(void* p) const { std::free(p); }
};

// Memory from malloc, for C structures.
template <class T>
using malloc_ptr = std::unique_ptr<T, free_deleter>;

// A descriptor that is closed with its owner; 0 and less are none.
class owned_fd {
public:
    explicit owned_fd(int fd) : m_fd(fd) {}
    ~owned_fd() {
        if (m_fd > 0) {
            close(m_fd);
        }
    }
    owned_fd(const owned_fd&) = delete;
    owned_fd& operator=(const owned_fd&) = delete;
    int get() const { return m_fd; }

private:
    int m_fd;
};

// What one receipt brought besides its bytes.
struct received_t {
    ssize_t bytes;   // as recvmsg() returned it
    int fd;          // the descriptor that rode on the last byte, 0 when none
    bool has_header; // a control header came, and these are its fields
    int header_len;
    int header_level;
    int header_type;
};

} // namespace vym

extern "C" {

// Receives text and at most one descriptor; the surplus of a sender that passes several is closed. On
// something that is no socket it is a plain read.
vym::received_t vym_os_receive(int fd, void* buf, size_t count);

// One send without a signal when the peer is gone.
ssize_t vym_os_send(int fd, const void* buf, size_t count, int flags);

// Moves descriptor 0 to another number, because the library takes 0 for "none". Returns the new number,
// -1 when there is none left (the old one is closed then); other descriptors are returned as they are.
int vym_os_not_zero(int fd);

// Monotonic clock in milliseconds.
int64_t vym_os_now_ms(void);

// Prints what a receipt of a descriptor brought, as recvfd_client() does. Returns the descriptor.
int vym_report_descriptor(const vym::received_t* received);

// Sends everything. Returns len, or -1.
int sock_send_all(int sock_fd, const uint8_t* buf, int len);

// Receives everything. Returns len, or -1 on failure and when the peer closed.
int sock_recv_all(int sock_fd, uint8_t* buf, int len);

} // extern "C"

#endif
