// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Bytes as libwayland passes them.
#ifndef VYM_BENCH_WAYLAND_ARRAYS_H
#define VYM_BENCH_WAYLAND_ARRAYS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <wayland-util.h>

namespace bench {

/// The bytes stay where they are.
template <size_t Size>
wl_array array_of(std::array<uint8_t, Size>* bytes) {
    return {bytes->size(), bytes->size(), bytes->data()};
}

} // namespace bench

#endif
