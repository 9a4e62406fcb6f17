// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A call of any function of the library, with plain values.
#ifndef VYM_TESTS_THREADS_CALLING_H
#define VYM_TESTS_THREADS_CALLING_H

#include <array>
#include <cstdint>
#include <type_traits>

namespace threads {

/** What pointers point to: a command without parameters for those who look at it as a packet. */
extern std::array<uint8_t, 64> plain_bytes;
extern std::array<char, 2> plain_text;

template <class Value>
Value PlainValue() {
    if constexpr (std::is_same_v<Value, char*>) {
        return plain_text.data();
    } else if constexpr (std::is_same_v<Value, uint8_t*> || std::is_same_v<Value, void*>) {
        return plain_bytes.data();
    } else if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
        return static_cast<Value>(1);
    } else {
        static_assert(!std::is_pointer_v<Value> || std::is_function_v<std::remove_pointer_t<Value>>,
                      "say what it is to point to");
        return Value{};
    }
}

template <class Result, class... Arguments>
void CallPlainly(Result (*function)(Arguments...)) {
    static_cast<void>(function(PlainValue<Arguments>()...));
}

} // namespace threads

#endif
