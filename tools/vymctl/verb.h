// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The verbs: one row each, and everything is made from the rows - what is understood, help, completion,
// the manual page and the schema. How words become the arguments of the library's function is derived
// from the function itself.
#ifndef VYM_VYMCTL_VERB_H
#define VYM_VYMCTL_VERB_H

#include "field.h"

#include <functional>
#include <limits>
#include <memory>
#include <tuple>
#include <type_traits>

namespace vymctl {

/// What a call came to.
// The moves of JSON values check what they promise, and could throw by their declaration only.
// NOLINTNEXTLINE(bugprone-exception-escape)
struct Outcome {
    /// Why the library refused; empty when it did not.
    std::string refusal;
    /// What it returned, null when it says no more than that.
    Json value;
};

using Values = std::vector<Value>;

struct Verb {
    std::string group;
    std::string name;
    /// The exported names behind it.
    std::vector<std::string> functions;
    std::vector<Field> parameters;
    std::string help;
    /// The event that ends it: "hfp.audio state==on !state==off". It is that of this call when fields
    /// and parameters of the same name agree; it is a failure when a condition with ! holds or its
    /// status is not success. Empty: the verb is done when the server has taken the command.
    std::string ends;
    std::function<Outcome(Values&)> call;
    /// It is the library's alone: no server is needed.
    bool local = false;

    std::string title() const { return group + ' ' + name; }
    /// "hfp volume speaker|microphone LEVEL"
    std::string usage() const;

    Verb&& alone() && {
        local = true;
        return std::move(*this);
    }
};

/// Throws Usage: too few, too many, or what is wrong with which.
Values read_values(const Verb& verb, const std::vector<std::string>& words);

// What functions return.

Outcome status_outcome(bt_status_t status);

template <typename T>
Outcome outcome_of(const T& result) {
    if constexpr (std::is_same_v<T, Outcome>) {
        return result;
    } else if constexpr (std::is_same_v<T, bt_status_t>) {
        return status_outcome(result);
    } else if constexpr (std::is_enum_v<T>) {
        return {"", static_cast<int>(result)};
    } else if constexpr (std::is_same_v<T, bt_bdaddr_t>) {
        return {"", to_text(result)};
    } else {
        return {"", Json(result)};
    }
}

// What functions take.

namespace bind {

constexpr int64_t kLongestBlock = 65535;

template <typename T>
constexpr FieldType type_of() {
    if constexpr (std::is_same_v<T, bt_bdaddr_t>) {
        return {Kind::Address, 0, 0};
    } else if constexpr (std::is_same_v<T, bt_uuid_t>) {
        return {Kind::Uuid, 0, 0};
    } else if constexpr (std::is_same_v<T, bt_oob_data_t>) {
        return {Kind::Bytes, 16, 16};
    } else if constexpr (std::is_same_v<T, bt_bdname_t>) {
        return {Kind::Text, 0, BT_NAME_MAX_LEN};
    } else if constexpr (std::is_same_v<T, char*>) {
        return {Kind::Text, 0, 1024};
    } else if constexpr (std::is_same_v<T, uint8_t*> || std::is_same_v<T, std::string>) {
        return {Kind::Bytes, 0, kLongestBlock};
    } else if constexpr (std::is_enum_v<T>) {
        return {Kind::Number, 0, std::numeric_limits<int>::max()};
    } else {
        static_assert(std::is_integral_v<T>);
        return {Kind::Number, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
    }
}

template <typename F>
struct Signature : Signature<decltype(&F::operator())> {};
template <typename R, typename... A>
struct Signature<R (*)(A...)> {
    using Result = R;
    using Arguments = std::tuple<std::decay_t<A>...>;
};
template <typename C, typename R, typename... A>
struct Signature<R (C::*)(A...) const> : Signature<R (*)(A...)> {};

/// A block's length, which stands before its pointer, is not an argument of its own.
template <typename Tuple, size_t I>
constexpr bool is_length() {
    if constexpr (I + 1 < std::tuple_size_v<Tuple>) {
        return std::is_same_v<std::tuple_element_t<I, Tuple>, uint16_t> &&
               std::is_same_v<std::tuple_element_t<I + 1, Tuple>, uint8_t*>;
    } else {
        return false;
    }
}

template <typename T>
T take(Value& value) {
    if constexpr (std::is_same_v<T, bt_bdaddr_t>) {
        return value.address;
    } else if constexpr (std::is_same_v<T, bt_uuid_t>) {
        return value.uuid;
    } else if constexpr (std::is_same_v<T, bt_oob_data_t> || std::is_same_v<T, bt_bdname_t>) {
        T taken{};
        value.bytes.copy(reinterpret_cast<char*>(&taken), sizeof taken);
        return taken;
    } else if constexpr (std::is_same_v<T, char*>) {
        return value.bytes.data();
    } else if constexpr (std::is_same_v<T, uint8_t*>) {
        return reinterpret_cast<uint8_t*>(value.bytes.data());
    } else if constexpr (std::is_same_v<T, std::string>) {
        return value.bytes;
    } else {
        return static_cast<T>(value.number);
    }
}

template <typename Tuple, size_t I>
std::tuple_element_t<I, Tuple> argument(Values& values, size_t& at) {
    if constexpr (is_length<Tuple, I>()) {
        return static_cast<uint16_t>(values.at(at).bytes.size());
    } else {
        return take<std::tuple_element_t<I, Tuple>>(values.at(at++));
    }
}

template <typename Tuple, size_t... I>
std::vector<Field> parameters(const std::vector<std::string>& names, std::index_sequence<I...>) {
    std::vector<Field> fields;
    size_t at = 0;
    (void)at;
    const auto add = [&](FieldType type) { fields.push_back(read_field(names.at(at++), type)); };
    (void)add;
    ((is_length<Tuple, I>() ? void() : add(type_of<std::tuple_element_t<I, Tuple>>())), ...);
    if (fields.size() != names.size()) {
        throw std::logic_error("more names than parameters");
    }
    return fields;
}

template <typename F, size_t... I>
Outcome call(const F& function, Values& values, std::index_sequence<I...>) {
    using Tuple = typename Signature<F>::Arguments;
    size_t at = 0;
    (void)at;
    // In braces: from left to right.
    Tuple arguments{argument<Tuple, I>(values, at)...};
    if constexpr (std::is_void_v<typename Signature<F>::Result>) {
        std::apply(function, arguments);
        return {};
    } else {
        return outcome_of(std::apply(function, arguments));
    }
}

} // namespace bind

/// A row. `functions` are the exported names behind it, `parameters` what these take; both are
/// separated by blanks.
template <typename F>
Verb verb(const char* name, const char* functions, F function, const char* parameters, const char* help,
          const char* ends = "") {
    using Tuple = typename bind::Signature<F>::Arguments;
    constexpr auto kIndices = std::make_index_sequence<std::tuple_size_v<Tuple>>();
    Verb row;
    row.name = name;
    row.functions = split_row(functions);
    row.parameters = bind::parameters<Tuple>(split_row(parameters), kIndices);
    row.help = help;
    row.ends = ends;
    row.call = [function, kIndices](Values& values) {
        return bind::call<F>(function, values, kIndices);
    };
    return row;
}

/// The usual case: the function does it all.
#define VYMCTL_CALL(function) #function, &(function)

} // namespace vymctl

#endif
