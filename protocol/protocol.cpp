// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "protocol.h"

#include <vector>

namespace protocol {
namespace {

bool begins_with(std::string_view text, std::string_view tag) {
    return text.substr(0, tag.size()) == tag;
}

/// The messages of one direction by the first two letters of their tags: whoever reads a long capture
/// asks for each of its texts.
class Index {
public:
    explicit Index(Direction direction) : by_letters_(kLetters * kLetters) {
        for (const Profile* profile : profiles()) {
            const Messages& messages =
                direction == Direction::Command ? profile->commands : profile->events;
            for (const Message& message : messages) {
                by_letters_[place(message.tag)].push_back({profile, &message});
            }
        }
    }

    Found find(std::string_view text) const {
        const size_t at = place(text);
        if (at < by_letters_.size()) {
            for (const Found& found : by_letters_[at]) {
                if (begins_with(text, found.message->tag)) {
                    return found;
                }
            }
        }
        return {};
    }

private:
    static constexpr size_t kLetters = 26;

    /// Beyond the last place for what does not begin with two capital letters.
    static size_t place(std::string_view text) {
        const bool is_tag =
            text.size() >= 2 && text[0] >= 'A' && text[0] <= 'Z' && text[1] >= 'A' && text[1] <= 'Z';
        return is_tag
                   ? static_cast<size_t>(text[0] - 'A') * kLetters + static_cast<size_t>(text[1] - 'A')
                   : kLetters * kLetters;
    }

    std::vector<std::vector<Found>> by_letters_;
};

} // namespace

const std::array<const Profile*, 9>& profiles() {
    static constexpr std::array<const Profile*, 9> kAll{
        &kBluetooth, &kRfcomm, &kHfp, &kA2dp, &kAvrcp, &kPbap, &kGattClient, &kGattServer, &kHid};
    return kAll;
}

Found find(Direction direction, std::string_view text) {
    static const Index commands(Direction::Command);
    static const Index events(Direction::Event);
    return (direction == Direction::Command ? commands : events).find(text);
}

} // namespace protocol
