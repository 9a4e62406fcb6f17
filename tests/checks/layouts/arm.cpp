// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The layouts as a C++ application sees them; the compiler names what differs.
#include "headers.h"

#include <cstddef>

#define SIZE(type, bytes) static_assert(sizeof(type) == (bytes), "size of " #type)
#define OPEN(type, member, offset)                                                                     \
    static_assert(offsetof(type, member) == (offset), "place of " #type "." #member)
#define AT(type, member, offset, bytes)                                                                \
    OPEN(type, member, offset);                                                                        \
    static_assert(sizeof(static_cast<type*>(nullptr)->member) == (bytes), "size of " #type "." #member)

#include "arm.h"
