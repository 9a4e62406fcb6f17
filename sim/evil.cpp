// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "evil.h"

#include "protocol/codec.h"
#include "spoil.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <stdexcept>
#include <utility>

namespace sim {
namespace {

using protocol::Direction;
using std::chrono::milliseconds;

// One event of so many does not get through unhurt; those with a descriptor are few.
constexpr size_t kOneIn = 8;
constexpr size_t kOneDescriptorIn = 2;
constexpr size_t kOneCommandIn = 64;
constexpr size_t kMostCuts = 3;
// The parts of a split event would meet again in the client's buffer.
constexpr milliseconds kBetweenParts{5};
constexpr size_t kShortestMs = 10;
constexpr size_t kLongestMs = 300;
constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr size_t kRemembered = 64;

constexpr std::array<std::pair<std::string_view, Misdeed>, 14> kNames{{
    {"split", Misdeed::Split},
    {"glue", Misdeed::Glue},
    {"truncate", Misdeed::Truncate},
    {"counts", Misdeed::Counts},
    {"digits", Misdeed::Digits},
    {"unknown", Misdeed::Unknown},
    {"duplicate", Misdeed::Duplicate},
    {"unasked", Misdeed::Unasked},
    {"no-descriptor", Misdeed::NoDescriptor},
    {"stray-descriptor", Misdeed::StrayDescriptor},
    {"two-descriptors", Misdeed::TwoDescriptors},
    {"stall", Misdeed::Stall},
    {"deaf", Misdeed::Deaf},
    {"close", Misdeed::Close},
}};

std::string known_kinds() {
    std::string all = "all";
    for (const auto& [name, misdeed] : kNames) {
        all.append(", ").append(name);
    }
    return all;
}

void add_kind(std::string_view word, std::set<Misdeed>& kinds) {
    bool is_known = false;
    for (const auto& [name, misdeed] : kNames) {
        if (word == name || word == "all") {
            kinds.insert(misdeed);
            is_known = true;
        }
    }
    if (!is_known) {
        throw std::invalid_argument("\"" + std::string(word) +
                                    "\" is no kind of misbehaviour; there are " + known_kinds());
    }
}

std::string bytes_text(size_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

} // namespace

EvilOptions to_evil_options(std::string_view text) {
    EvilOptions options;
    const size_t colon = std::min(text.find(':'), text.size());
    const char* seed_end = text.data() + colon;
    const auto [end, error] = std::from_chars(text.data(), seed_end, options.seed);
    if (error != std::errc() || end != seed_end) {
        throw std::invalid_argument("\"" + std::string(text.substr(0, colon)) +
                                    "\" is no seed; give a number of at most 64 bits, as in 17 or "
                                    "17:split,close");
    }
    std::string_view words = colon == text.size() ? "all" : text.substr(colon + 1);
    std::set<Misdeed> kinds;
    for (;;) {
        const size_t comma = std::min(words.find(','), words.size());
        add_kind(words.substr(0, comma), kinds);
        if (comma == words.size()) {
            break;
        }
        words.remove_prefix(comma + 1);
    }
    options.kinds.assign(kinds.begin(), kinds.end());
    return options;
}

Deeds Evil::on_event(std::string_view event, bool has_descriptor) {
    ++count_;
    const protocol::Found found = protocol::find(Direction::Event, event);
    work_ = {std::string(event),
             has_descriptor,
             std::string(found ? found.message->name : "an unknown event"),
             {}};
    std::vector<Misdeed> possible;
    std::copy_if(kinds_.begin(), kinds_.end(), std::back_inserter(possible),
                 [this](Misdeed misdeed) { return is_possible(misdeed); });
    if (random_.below(has_descriptor ? kOneDescriptorIn : kOneIn) == 0 && !possible.empty()) {
        commit(possible[random_.below(possible.size())]);
    } else {
        pass(work_.event);
    }
    remember(event);
    return std::move(work_.deeds);
}

Deeds Evil::on_command(std::string_view command) {
    ++commands_;
    const protocol::Found found = protocol::find(Direction::Command, command);
    std::vector<Misdeed> possible;
    std::copy_if(kinds_.begin(), kinds_.end(), std::back_inserter(possible), [](Misdeed misdeed) {
        return misdeed == Misdeed::Stall || misdeed == Misdeed::Deaf || misdeed == Misdeed::Close;
    });
    if (possible.empty() || at_commands_.below(kOneCommandIn) != 0) {
        return {};
    }
    const Misdeed misdeed = possible[at_commands_.below(possible.size())];
    const milliseconds duration = a_while(at_commands_);
    const std::string begin = "command " + std::to_string(commands_) + ": ";
    const std::string end = " at " + std::string(found ? found.message->name : "an unknown command");
    const std::string lasting = " " + std::to_string(duration.count()) + " ms";
    switch (misdeed) {
    case Misdeed::Stall:
        return {{{Deed::What::Pause, {}, duration}}, begin + "stall" + lasting + end};
    case Misdeed::Deaf:
        return {{{Deed::What::Deafness, {}, duration}}, begin + "deaf" + lasting + end};
    default:
        return {{{Deed::What::Close}}, begin + "close" + end};
    }
}

void Evil::remember(std::string_view event) {
    if (remembered_.size() < kRemembered) {
        remembered_.emplace_back(event);
    } else {
        remembered_[count_ % kRemembered] = event;
    }
}

bool Evil::is_possible(Misdeed misdeed) const {
    switch (misdeed) {
    case Misdeed::Glue:
        // Its descriptor would overtake it.
        return !work_.has_descriptor;
    case Misdeed::Counts:
        return has_count(work_.event);
    case Misdeed::Digits:
        return has_digit(work_.event);
    case Misdeed::NoDescriptor:
    case Misdeed::TwoDescriptors:
        return work_.has_descriptor;
    default:
        return true;
    }
}

void Evil::commit(Misdeed misdeed) {
    switch (misdeed) {
    case Misdeed::Split:
        return split();
    case Misdeed::Glue:
        return glue();
    case Misdeed::Truncate:
        return truncate();
    case Misdeed::Counts:
        return counts();
    case Misdeed::Digits:
        return digits();
    case Misdeed::Unknown:
        return unknown();
    case Misdeed::Duplicate:
        return duplicate();
    case Misdeed::Unasked:
        return unasked();
    case Misdeed::NoDescriptor:
        return no_descriptor();
    case Misdeed::StrayDescriptor:
        return stray_descriptor();
    case Misdeed::TwoDescriptors:
        return two_descriptors();
    case Misdeed::Stall:
        return stall();
    case Misdeed::Deaf:
        return deaf();
    case Misdeed::Close:
        return close();
    }
}

void Evil::split() {
    const std::string whole = work_.event + '\0';
    std::set<size_t> cuts;
    for (size_t left = 1 + random_.below(kMostCuts); left > 0; --left) {
        cuts.insert(1 + random_.below(whole.size() - 1));
    }
    size_t begin = 0;
    std::string places;
    for (const size_t cut : cuts) {
        write(whole.substr(begin, cut - begin));
        work_.deeds.all.push_back({Deed::What::Pause, {}, kBetweenParts});
        places += (places.empty() ? "" : ", ") + std::to_string(cut);
        begin = cut;
    }
    write(whole.substr(begin));
    hand_over();
    report("split " + work_.name + " at " + places);
}

void Evil::glue() {
    held_back_ += work_.event + '\0';
    report("glue " + work_.name + " to the next event");
}

void Evil::truncate() {
    const size_t length = random_.below(work_.event.size());
    const bool is_ended = random_.below(2) == 0;
    write(work_.event.substr(0, length) + (is_ended ? std::string(1, '\0') : std::string()));
    hand_over();
    report("truncate " + work_.name + " after " + bytes_text(length) +
           (is_ended ? "" : ", with no end"));
}

void Evil::counts() {
    const Spoiled spoiled = spoil_count(work_.event, random_);
    pass(spoiled.event);
    report("counts " + work_.name + " " + spoiled.what);
}

void Evil::digits() {
    const Spoiled spoiled = spoil_digit(work_.event, random_);
    pass(spoiled.event);
    report("digits " + work_.name + " " + spoiled.what);
}

void Evil::unknown() {
    std::string event;
    do {
        event = {static_cast<char>('A' + random_.below(26)),
                 static_cast<char>('A' + random_.below(26))};
        for (size_t left = random_.below(20); left > 0; --left) {
            event += kHexDigits[random_.below(kHexDigits.size())];
        }
    } while (protocol::find(Direction::Event, event));
    write(event + '\0');
    pass(work_.event);
    report("unknown " + event + " before " + work_.name);
}

void Evil::duplicate() {
    write(work_.event + '\0');
    pass(work_.event);
    report("duplicate " + work_.name);
}

void Evil::unasked() {
    // What was said before speaks of things that there are, or were.
    const bool is_old = !remembered_.empty() && random_.below(2) == 0;
    const std::string event =
        is_old ? remembered_[random_.below(remembered_.size())] : random_event(random_);
    write(event + '\0');
    pass(work_.event);
    report("unasked " + std::string(is_old ? "old " : "") +
           std::string(protocol::find(Direction::Event, event).message->name) + " before " +
           work_.name);
}

void Evil::no_descriptor() {
    work_.has_descriptor = false;
    pass(work_.event);
    report("no-descriptor after " + work_.name);
}

void Evil::stray_descriptor() {
    work_.deeds.all.push_back({Deed::What::Spare});
    pass(work_.event);
    report("stray-descriptor before " + work_.name);
}

void Evil::two_descriptors() {
    const bool are_together = random_.below(2) == 0;
    if (are_together) {
        write(work_.event + '\0');
        work_.deeds.all.push_back({Deed::What::Both});
    } else {
        pass(work_.event);
        work_.deeds.all.push_back({Deed::What::Spare});
    }
    report("two-descriptors " + std::string(are_together ? "at once " : "") + "after " + work_.name);
}

void Evil::stall() {
    const milliseconds duration = a_while(random_);
    work_.deeds.all.push_back({Deed::What::Pause, {}, duration});
    pass(work_.event);
    report("stall " + std::to_string(duration.count()) + " ms before " + work_.name);
}

void Evil::deaf() {
    const milliseconds duration = a_while(random_);
    pass(work_.event);
    work_.deeds.all.push_back({Deed::What::Deafness, {}, duration});
    report("deaf " + std::to_string(duration.count()) + " ms after " + work_.name);
}

void Evil::close() {
    const size_t length = random_.below(work_.event.size() + 2);
    write((work_.event + '\0').substr(0, length));
    work_.deeds.all.push_back({Deed::What::Close});
    report("close after " + bytes_text(length) + " of " + work_.name);
}

void Evil::write(const std::string& bytes) {
    work_.deeds.all.push_back({Deed::What::Write, std::exchange(held_back_, {}) + bytes});
}

void Evil::pass(std::string_view event) {
    write(std::string(event) + '\0');
    hand_over();
}

void Evil::hand_over() {
    if (work_.has_descriptor) {
        work_.deeds.all.push_back({Deed::What::Descriptor});
    }
}

void Evil::report(const std::string& what) {
    work_.deeds.report = std::to_string(count_) + ": " + what;
}

milliseconds Evil::a_while(Random& random) {
    return milliseconds(kShortestMs + random.below(kLongestMs - kShortestMs + 1));
}

} // namespace sim
