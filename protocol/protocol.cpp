// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "protocol.h"

namespace protocol {
namespace {

bool begins_with(std::string_view text, std::string_view tag) {
    return text.substr(0, tag.size()) == tag;
}

} // namespace

const std::array<const Profile*, 9>& profiles() {
    static constexpr std::array<const Profile*, 9> kAll{
        &kBluetooth, &kRfcomm, &kHfp, &kA2dp, &kAvrcp, &kPbap, &kGattClient, &kGattServer, &kHid};
    return kAll;
}

Found find(Direction direction, std::string_view text) {
    for (const Profile* profile : profiles()) {
        const Messages& messages =
            direction == Direction::Command ? profile->commands : profile->events;
        for (const Message& message : messages) {
            if (begins_with(text, message.tag)) {
                return {profile, &message};
            }
        }
    }
    return {};
}

} // namespace protocol
