// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// From the library's callbacks to events: what an event's fields are is derived from the callback.
#ifndef VYM_VYMCTL_SLOT_H
#define VYM_VYMCTL_SLOT_H

#include "event.h"
#include "verb.h"

namespace vymctl {

/// What happens to an event; any thread may call.
void publish(const EventType& type, std::vector<Json> values);

/// One event of a table, and how its callback gets into the library's.
struct EventRow {
    EventType type;
    /// Sets the member of this table of callbacks. `type` must stay where it is.
    void (*install)(const EventType& type, void* callbacks) = nullptr;
};

namespace slot {

/// Fields of a record, which stand in its events one by one; specialised where they are needed.
template <typename T>
struct Record {
    static constexpr const char* kFields = nullptr;
};

// Values as they are, to be named by their fields.
class Collector {
public:
    explicit Collector(const EventType& type) : type_(type) {}

    void add(int64_t number) { values_.push_back(field().name_of(number)); }
    void add(std::string text) {
        values_.push_back(field().kind == Kind::Bytes ? to_hex(text) : std::move(text));
    }
    void add(Json list) { values_.push_back(std::move(list)); }
    void add_block(const uint8_t* data, size_t size) {
        add(data == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(data), size));
    }
    std::vector<Json> take() { return std::move(values_); }

private:
    const Field& field() const { return type_.fields.at(values_.size()); }

    const EventType& type_;
    std::vector<Json> values_;
};

template <typename T>
void add(Collector& collector, const T& value) {
    if constexpr (Record<T>::kFields != nullptr) {
        Record<T>::add(collector, value);
    } else if constexpr (std::is_same_v<T, bt_bdaddr_t> || std::is_same_v<T, bt_uuid_t>) {
        collector.add(to_text(value));
    } else if constexpr (std::is_same_v<T, bt_oob_data_t>) {
        collector.add_block(value.data, sizeof value.data);
    } else if constexpr (std::is_same_v<T, char*>) {
        collector.add(std::string(value == nullptr ? "" : value));
    } else {
        collector.add(static_cast<int64_t>(value));
    }
}

/// A count that stands before a pointer to what is counted.
template <typename Tuple, size_t I>
constexpr bool is_count() {
    if constexpr (I + 1 < std::tuple_size_v<Tuple>) {
        using Next = std::tuple_element_t<I + 1, Tuple>;
        return std::is_same_v<Next, uint8_t*> || std::is_same_v<Next, uint16_t*>;
    } else {
        return false;
    }
}

template <typename Tuple, size_t I>
void add_argument(Collector& collector, const Tuple& arguments) {
    using Type = std::tuple_element_t<I, Tuple>;
    if constexpr (is_count<Tuple, I>()) {
        // Comes with its pointer.
    } else if constexpr (std::is_same_v<Type, uint8_t*>) {
        collector.add_block(std::get<I>(arguments), std::get<I - 1>(arguments));
    } else if constexpr (std::is_same_v<Type, uint16_t*>) {
        Json list = Json::array();
        for (size_t i = 0; std::get<I>(arguments) != nullptr && i < std::get<I - 1>(arguments); ++i) {
            const uint16_t uuid = std::get<I>(arguments)[i];
            const char bytes[] = {static_cast<char>(uuid >> 8), static_cast<char>(uuid & 0xFF)};
            list.push_back(to_hex({bytes, sizeof bytes}));
        }
        collector.add(std::move(list));
    } else {
        add(collector, std::get<I>(arguments));
    }
}

template <typename Tuple, size_t I>
void add_fields(std::vector<Field>& fields, const std::vector<std::string>& names, size_t& at) {
    using Type = std::tuple_element_t<I, Tuple>;
    if constexpr (is_count<Tuple, I>()) {
        return;
    } else if constexpr (Record<Type>::kFields != nullptr) {
        for (const std::string& name : split_row(Record<Type>::kFields)) {
            fields.push_back(read_field(name, {Kind::Number, 0, std::numeric_limits<uint32_t>::max()}));
        }
    } else if constexpr (std::is_same_v<Type, uint16_t*>) {
        fields.push_back(read_field(names.at(at++), {Kind::List, 0, 0}));
    } else {
        fields.push_back(read_field(names.at(at++), bind::type_of<Type>()));
    }
}

template <typename Tuple, size_t... I>
std::vector<Field> fields_of(const char* row, std::index_sequence<I...>) {
    const std::vector<std::string> names = split_row(row);
    std::vector<Field> fields;
    size_t at = 0;
    (add_fields<Tuple, I>(fields, names, at), ...);
    if (at != names.size()) {
        throw std::logic_error("more names than fields");
    }
    return fields;
}

template <typename Tuple, size_t... I>
std::vector<Json> values_of(const EventType& type, const Tuple& arguments, std::index_sequence<I...>) {
    Collector collector(type);
    (add_argument<Tuple, I>(collector, arguments), ...);
    return collector.take();
}

template <typename... A>
EventType type_of(const char* name, const char* fields) {
    return {name, fields_of<std::tuple<A...>>(fields, std::index_sequence_for<A...>())};
}

template <typename... A>
void publish_call(const EventType& type, A... arguments) {
    publish(type, values_of(type, std::tuple<A...>(arguments...), std::index_sequence_for<A...>()));
}

template <auto Member>
struct Slot;
template <typename T, typename... A, void (*T::*Member)(A...)>
struct Slot<Member> {
    static inline const EventType* s_type = nullptr;

    static void fire(A... arguments) { publish_call<A...>(*s_type, arguments...); }

    static EventRow row(const char* name, const char* fields) {
        return {type_of<A...>(name, fields), [](const EventType& type, void* callbacks) {
                    s_type = &type;
                    static_cast<T*>(callbacks)->*Member = &fire;
                }};
    }
};

} // namespace slot

template <auto Member>
EventRow on(const char* name, const char* fields = "") {
    return slot::Slot<Member>::row(name, fields);
}

/// An event of a callback that stands in no table, or of this program itself.
template <typename... A>
EventRow own(const char* name, const char* fields = "") {
    return {slot::type_of<A...>(name, fields), nullptr};
}

} // namespace vymctl

#endif
