// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "document.h"

#include "text_file.h"
#include "wire.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>

namespace sim {
namespace {

using Json = nlohmann::json;
using Kind = DocumentValue::Kind;

/// How far the parser has read. It never reads more than one character beyond a value, and that one - a
/// number's end - is not counted.
struct Position {
    unsigned line = 1;
    bool line_ended = false;

    void pass(char c) {
        line += line_ended ? 1 : 0;
        line_ended = c == '\n';
    }
};

class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, Position& position) : at_(at), position_(&position) {}

    reference operator*() const { return *at_; }
    CountingIterator& operator++() {
        position_->pass(*at_++);
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return at_ == other.at_; }
    bool operator!=(const CountingIterator& other) const { return at_ != other.at_; }

private:
    const char* at_;
    Position* position_;
};

/// What the parser calls, piece by piece.
class Builder : public nlohmann::json_sax<Json> {
public:
    Builder(const std::string& file, const Position& position) : file_(file), position_(position) {}

    DocumentValue take() { return std::move(root_); }

    bool null() override {
        add(Kind::Null);
        return true;
    }
    bool boolean(bool value) override {
        add(Kind::Boolean).boolean = value;
        return true;
    }
    bool number_integer(int64_t value) override {
        DocumentValue& v = add(Kind::Integer);
        v.integer = value;
        v.text = std::to_string(value);
        return true;
    }
    bool number_unsigned(uint64_t value) override {
        // Nothing in a world is that large: how large exactly only matters to what names it.
        constexpr auto kMost = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
        DocumentValue& v = add(Kind::Integer);
        v.integer = static_cast<int64_t>(std::min(value, kMost));
        v.text = std::to_string(value);
        return true;
    }
    bool number_float(double, const std::string& text) override {
        add(Kind::Fraction).text = text;
        return true;
    }
    bool string(std::string& text) override {
        add(Kind::Text).text = text;
        return true;
    }
    bool binary(Json::binary_t&) override { return false; }
    bool start_object(size_t) override { return open(Kind::Object); }
    bool end_object() override { return close(); }
    bool start_array(size_t) override { return open(Kind::List); }
    bool end_array() override { return close(); }

    bool key(std::string& key) override {
        std::vector<DocumentMember>& members = open_.back()->members;
        const auto same = std::find_if(members.begin(), members.end(),
                                       [&key](const DocumentMember& m) { return m.key == key; });
        if (same != members.end()) {
            throw FileError(file_, position_.line,
                            in_quotes(key) + " stands here again; expected it once, as in line " +
                                std::to_string(same->line));
        }
        // None has nearly as many; looking for the same key again and again must not take long.
        constexpr size_t kMostKeys = 256;
        if (members.size() == kMostKeys) {
            throw FileError(file_, position_.line,
                            "too many keys in one object; expected at most " +
                                std::to_string(kMostKeys));
        }
        members.push_back({key, position_.line, {}});
        return true;
    }

    bool parse_error(size_t, const std::string&, const nlohmann::detail::exception& error) override {
        // Its own count of lines comes first; what matters to the reader stands behind it.
        std::string text = error.what();
        for (const std::string end_of_head : {"] ", ": "}) {
            const size_t head = text.find(end_of_head);
            if (head != std::string::npos) {
                text.erase(0, head + end_of_head.size());
            }
        }
        constexpr size_t kMostOfIt = 300;
        throw FileError(file_, position_.line, "no JSON: " + printable(text, kMostOfIt));
    }

private:
    DocumentValue& add(Kind kind) {
        DocumentValue* place = &root_;
        if (!open_.empty() && open_.back()->kind == Kind::List) {
            place = &open_.back()->items.emplace_back();
        } else if (!open_.empty()) {
            place = &open_.back()->members.back().value;
        }
        place->kind = kind;
        place->line = position_.line;
        return *place;
    }

    bool open(Kind kind) {
        constexpr size_t kDeepest = 32;
        if (open_.size() == kDeepest) {
            throw FileError(file_, position_.line,
                            "too deep; expected at most " + std::to_string(kDeepest) +
                                " lists and objects in one another");
        }
        open_.push_back(&add(kind));
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    const std::string& file_;
    const Position& position_;
    DocumentValue root_;
    /// What is open stays where it is: only the innermost grows.
    std::vector<DocumentValue*> open_;
};

} // namespace

const DocumentValue* DocumentValue::find(const std::string& key) const {
    const auto it = std::find_if(members.begin(), members.end(),
                                 [&key](const DocumentMember& m) { return m.key == key; });
    return it == members.end() ? nullptr : &it->value;
}

std::string DocumentValue::description() const {
    switch (kind) {
    case Kind::Null:
        return "null";
    case Kind::Boolean:
        return boolean ? "true" : "false";
    case Kind::Text:
        return in_quotes(text);
    case Kind::List:
        return "a list";
    case Kind::Object:
        return "an object";
    default:
        return text;
    }
}

DocumentValue parse_document(const std::string& file, const std::string& text) {
    Position position;
    Builder builder(file, position);
    Json::sax_parse(CountingIterator(text.data(), position),
                    CountingIterator(text.data() + text.size(), position), &builder);
    return builder.take();
}

} // namespace sim
