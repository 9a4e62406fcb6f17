// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The description against the library's own tables: neither knows an event that the other does not.

#include "protocol/protocol.h"

#include "vym_a2dp_event.h"
#include "vym_avrcp_event.h"
#include "vym_bluetooth_event.h"
#include "vym_gatt_client_event.h"
#include "vym_gatt_server_event.h"
#include "vym_hfp_event.h"
#include "vym_hid_event.h"
#include "vym_pbap_event.h"
#include "vym_rfcomm_event.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using protocol::Message;
using protocol::Profile;

// "BE onDiscoveryStateChanged 2"
std::vector<std::string> Described(const Profile& profile) {
    std::vector<std::string> rows;
    for (const Message& event : profile.events) {
        rows.push_back(std::string(event.tag)
                           .append(" ")
                           .append(event.name)
                           .append(" ")
                           .append(std::to_string(event.minimum)));
    }
    return rows;
}

template <typename Callbacks>
std::vector<std::string> Built(event_parser_t* (*create)(Callbacks*),
                               void (*destroy)(event_parser_t*)) {
    std::vector<std::string> rows;
    Callbacks callbacks{};
    event_parser_t* parser = create(&callbacks);
    if (parser != nullptr) {
        for (int i = 0; i < parser->num_of_parsers; ++i) {
            const parser_t& row = parser->parser_list[i];
            rows.push_back(std::string(row.get_keyword()) + " " + row.get_tag() + " " +
                           std::to_string(row.get_min_expected_length()));
        }
        destroy(parser);
    }
    return rows;
}

TEST(ProtocolAndLibrary, HaveTheSameEventsInTheSameOrder) {
    EXPECT_EQ(Described(protocol::kBluetooth),
              Built(create_bluetooth_event_parser, destroy_bluetooth_event_parser));
    EXPECT_EQ(Described(protocol::kRfcomm),
              Built(create_rfcomm_event_parser, destroy_rfcomm_event_parser));
    EXPECT_EQ(Described(protocol::kHfp), Built(create_hfp_event_parser, destroy_hfp_event_parser));
    EXPECT_EQ(Described(protocol::kA2dp), Built(create_a2dp_event_parser, destroy_a2dp_event_parser));
    EXPECT_EQ(Described(protocol::kAvrcp),
              Built(create_avrcp_event_parser, destroy_avrcp_event_parser));
    EXPECT_EQ(Described(protocol::kPbap), Built(create_pbap_event_parser, destroy_pbap_event_parser));
    EXPECT_EQ(Described(protocol::kGattClient),
              Built(create_gatt_client_event_parser, destroy_gatt_client_event_parser));
    EXPECT_EQ(Described(protocol::kGattServer),
              Built(create_gatt_server_event_parser, destroy_gatt_server_event_parser));
    EXPECT_EQ(Described(protocol::kHid), Built(create_hid_event_parser, destroy_hid_event_parser));
}

} // namespace
