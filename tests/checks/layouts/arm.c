/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The layouts as a C application sees them; the compiler names what differs. */
#include "headers.h"

#include <stddef.h>

#define SIZE(type, bytes) _Static_assert(sizeof(type) == (bytes), "size of " #type)
#define OPEN(type, member, offset)                                                                     \
    _Static_assert(offsetof(type, member) == (offset), "place of " #type "." #member)
#define AT(type, member, offset, bytes)                                                                \
    OPEN(type, member, offset);                                                                        \
    _Static_assert(sizeof(((type*)0)->member) == (bytes), "size of " #type "." #member)

#include "arm.h"
