// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The server's socket as the receive thread sees it: a stream of text in which descriptors ride on
// single bytes. Each descriptor is kept with the position of its byte until the event that announces it
// asks. Used by one thread at a time.
#ifndef VYM_WIRE_H
#define VYM_WIRE_H

#include <cstdint>
#include <sys/types.h>

extern "C" {

// Forgets everything of an earlier connection and closes what nobody asked for.
void vym_wire_reset(void);

// Reads text: first what was put aside while waiting for a descriptor, else from the socket.
ssize_t vym_wire_read(int fd, void* buf, size_t count);

// Whether vym_wire_read() has text without looking at the socket.
int vym_wire_pending(void);

// Number of bytes that vym_wire_read() has handed out since the reset.
uint64_t vym_wire_position(void);

// Closes the descriptors that came before `position`: no event that is still to come can announce them.
void vym_wire_close_before(uint64_t position);

// Takes the oldest descriptor that came at or after `position`; older ones belong to nothing and are
// closed. Waits for it, for about a second, while `go_on` says so and the peer is there. Text that
// arrives meanwhile is put aside. Returns 0 when none came.
int vym_wire_take_descriptor(int fd, uint64_t position, int (*go_on)(void));

} // extern "C"

#endif
