// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Each event of the remote control as the server writes it, and the callback that comes of it.

#include "wire/avrcp_support.h"

namespace avrcp {
namespace {

struct Profile {
    static void Init(wire::Table kind) {
        static avrcp_callback_t empty = {};
        avrcp_callback_t* tables[] = {RecordingTable(), &empty, nullptr};
        vym_avrcp_init(tables[static_cast<size_t>(kind)]);
    }
    static void Done() { vym_avrcp_done(); }
    static std::vector<EventCase> Events() { return AllEvents(); }
    static std::vector<std::string> Unknown() { return {"RWD01", "RT01", "rA0203"}; }
};

} // namespace
} // namespace avrcp

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(Avrcp, ProfileConformance, avrcp::Profile, );

} // namespace wire

namespace {

class AvrcpEvents : public avrcp::AvrcpWireTest {};

TEST_F(AvrcpEvents, FeaturesMayEndBeforeThePsm) {
    ExpectDelivered("RD" + avrcp::kAddress + "40", {"get_rc_features(A1B2C3D4E5F6, 64, 0)"});
    ExpectDelivered("RD" + avrcp::kAddress + "400", {"get_rc_features(A1B2C3D4E5F6, 64, 0)"});
    ExpectDelivered("RD" + avrcp::kAddress + "4000001", {"get_rc_features(A1B2C3D4E5F6, 64, 1)"});
    ExpectDelivered("RD" + avrcp::kAddress + "40FFFFFFFF",
                    {"get_rc_features(A1B2C3D4E5F6, 64, 2147483647)"});
}

TEST_F(AvrcpEvents, OnlyAChangedPathExchangesItsStatuses) {
    ExpectDelivered("RNA1B2C3D4E5F60400000002", {"change_folder_path_rsp(A1B2C3D4E5F6, 0, 2)"});
    ExpectDelivered("RNA1B2C3D4E5F60000000002", {"change_folder_path_rsp(A1B2C3D4E5F6, 4, 2)"});
    for (const int status : {1, 2, 3, 5, 40, 255}) {
        const std::string number = std::to_string(status);
        ExpectDelivered("RNA1B2C3D4E5F6" + wire::Hex(static_cast<unsigned>(status), 2) + "FFFFFFFF",
                        {"change_folder_path_rsp(A1B2C3D4E5F6, " + number + ", 2147483647)"});
    }
    for (const std::string status : {"0", "4"}) {
        ExpectDelivered("ROA1B2C3D4E5F60" + status + "00000002",
                        {"get_total_number_of_items_rsp(A1B2C3D4E5F6, " + status + ", 2)"});
        ExpectDelivered("RPA1B2C3D4E5F60" + status, {"play_item_rsp(A1B2C3D4E5F6, " + status + ")"});
    }
}

TEST_F(AvrcpEvents, DigitsMayBeLowerCase) {
    ExpectDelivered("RWBa1b2c3d4e5f6abcd", {"addressed_player_changed(A1B2C3D4E5F6, 43981)"});
}

TEST_F(AvrcpEvents, UnknownTagsAreConsumed) {
    for (const char* event :
         {"RWDA1B2C3D4E5F601", "RWHA1B2C3D4E5F601", "RTA1B2C3D4E5F601", "RW", "ra4401", "Ra4401"}) {
        ExpectDelivered(event, {});
    }
    ExpectDelivered("RA4401", {"handle_passthrough_rsp(68, 1)"});
}

} // namespace
