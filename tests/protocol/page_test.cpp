// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// docs/protocol.md says what the description says.

#include "protocol/page.h"

#include "support/capture_reader.h"
#include "support/text.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

TEST(ProtocolPage, IsMadeOfTheDescription) {
    const std::vector<std::string> written = support::Lines(support::ReadFile(VYM_PROTOCOL_PAGE));
    const std::vector<std::string> due = support::Lines(protocol::page());
    for (size_t i = 0; i < std::min(written.size(), due.size()); ++i) {
        ASSERT_EQ(written[i], due[i]) << "vym_protocol_page > docs/protocol.md writes it anew";
    }
    EXPECT_EQ(written.size(), due.size()) << "vym_protocol_page > docs/protocol.md writes it anew";
}

TEST(ProtocolPage, ShowsNumbersTextsBlocksListsAndChoices) {
    const std::string page = protocol::page();
    for (const char* line : {
             "| `HG` | `onBatteryLevel` | 4 | `level` word |\n",
             "| `HH` | `dial` | `number` text |\n",
             "| `DE` | `onSetReport` | 8 | `type` byte; `id` byte; `data` block |\n",
             "| `settings` | `ids` u8, `count` times; `values` u8, `count` times |\n",
             "| `item` | `item_type` u8; `item` choice by `item_type` of 1: `player`, 2: `folder`, 3: "
             "`media` |\n",
             "| `folder` | `uid` bytes[8]; `type` u8; `playable` u8; `charset` u16; `name` padded "
             "text[255] |\n",
         }) {
        EXPECT_NE(page.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(page.find('?'), std::string::npos) << "a type has no name";
}

} // namespace
