// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The verbs of the control language: what they look like, and how the words of a line become their
// arguments. A module offers verbs as it offers commands.
#ifndef VYM_SIM_VERB_H
#define VYM_SIM_VERB_H

#include "console/words.h"
#include "world.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim {

using console::Refused;
using console::split_words;
using console::to_duration;

/// One argument, read: which members count depends on what it is.
struct Argument {
    /// As it was written; the bytes that hexadecimal digits stand for.
    std::string text;
    long number = 0;
    Octets16 uuid{};
    Address address;
    std::chrono::milliseconds duration{};
};

/// What a verb is given, by the position among its parameters, and what it answers.
class Given {
public:
    Given(World& world, std::vector<Argument> arguments)
        : world_(world), arguments_(std::move(arguments)) {}

    /// Whether an optional argument is there.
    bool has(size_t i) const { return i < arguments_.size(); }
    const std::string& text(size_t i) const { return arguments_.at(i).text; }
    bool is_on(size_t i) const { return text(i) == "on"; }
    /// A number that the pattern keeps within the range of this type.
    template <typename T = uint8_t>
    T number(size_t i) const {
        return static_cast<T>(arguments_.at(i).number);
    }
    const Octets16& uuid(size_t i) const { return arguments_.at(i).uuid; }
    std::chrono::milliseconds duration(size_t i) const { return arguments_.at(i).duration; }
    Device& device(size_t i) { return *world_.find(arguments_.at(i).address); }

    /// A line for whoever asked.
    void answer(std::string line) { lines_.push_back(std::move(line)); }
    /// Runs when the answer has been delivered, for what leaves nobody to deliver it.
    void afterwards(std::function<void()> action) { afterwards_ = std::move(action); }

    const std::vector<std::string>& lines() const { return lines_; }
    const std::function<void()>& afterwards() const { return afterwards_; }

private:
    World& world_;
    std::vector<Argument> arguments_;
    std::vector<std::string> lines_;
    std::function<void()> afterwards_;
};

struct Verb {
    /// Words, and what stands between or behind them: DEVICE, UUID, HEX, DIGITS (of a telephone
    /// number), TEXT, SECONDS, one|of|these, or any other name in capitals with the range of its number
    /// ("LEVEL=0..5"). In [brackets], at the end: may be missing.
    std::string pattern;
    /// One line.
    std::string help;
    std::function<void(Given&)> run;
    /// Not so for what only looks: it makes nobody answer to it.
    bool acts = true;
};

/// A verb with its arguments.
struct Order {
    const Verb* verb = nullptr;
    std::vector<Argument> arguments;
};

class Verbs {
public:
    explicit Verbs(World& world) : world_(world) {}

    /// Throws std::logic_error for a pattern that is none.
    void add(std::vector<Verb> verbs);

    /// Throws Refused, with what is expected instead.
    Order parse(const std::vector<std::string>& words) const;

    /// What the next word may be, after these.
    std::vector<std::string> continuations(const std::vector<std::string>& words) const;

    /// The patterns as people read them, with the lines of help; only those that begin so.
    std::vector<std::pair<std::string, std::string>> help(const std::vector<std::string>& words) const;

private:
    enum class Kind { Word, Choice, Text, Number, Device, Uuid, Hex, Digits, Seconds };

    struct Part {
        Kind kind = Kind::Word;
        /// A word as it must be; else how the parameter is called.
        std::string name;
        std::vector<std::string> choices;
        long low = 0;
        long high = 0;
        bool optional = false;
    };

    struct Row {
        Verb verb;
        std::vector<Part> parts;
    };

    static Part read_part(std::string text);
    static std::string usage(const Row& row);
    static std::string expected(const std::vector<const Row*>& rows, size_t position);
    static std::vector<const Row*> narrowed(const std::vector<const Row*>& rows, size_t position,
                                            const std::string& word);
    std::vector<const Row*> all() const;
    Argument read(const Part& part, const std::string& word) const;
    Device* find_device(const std::string& word) const;
    std::string known_devices() const;

    World& world_;
    std::vector<std::vector<Row>> rows_;
};

} // namespace sim

#endif
