// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// From the library's callbacks to events, and from events to who waits for them.
#include "hub.h"
#include "profiles.h"

#include <gtest/gtest.h>
#include <thread>
#include <vym/vym_avrcp.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_gatt_client.h>
#include <vym/vym_hfp.h>
#include <vym/vym_pbap.h>

namespace {

using vymctl::Event;
using vymctl::hub;
using vymctl::Json;
using vymctl::Wait;

/// The callbacks that the library would get.
template <typename T>
const T& callbacks_of(const std::string& name) {
    for (const vymctl::Profile& profile : vymctl::profiles()) {
        if (profile.name == name) {
            profile.install();
            return *static_cast<const T*>(profile.callbacks);
        }
    }
    throw std::logic_error(name);
}

/// What was shown meanwhile.
class Screen {
public:
    Screen() {
        hub().show_to([this](const Event& event) { lines_.push_back(event.text()); });
    }
    ~Screen() { hub().show_to({}); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    Screen(Screen&&) = delete;
    Screen& operator=(Screen&&) = delete;
    const std::vector<std::string>& lines() const { return lines_; }

private:
    std::vector<std::string> lines_;
};

using Lines = std::vector<std::string>;
const bt_bdaddr_t kPhone{{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};

vymctl::Deadline soon() {
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(1);
}
vymctl::Deadline late() {
    return std::chrono::steady_clock::now() + std::chrono::seconds(60);
}

TEST(Slot, ShowsRecordsCountedListsAndBlocks) {
    const Screen screen;
    bluetooth_call_t call{2, 1, 4, 0, "+4930"};
    callbacks_of<hfp_callback_t>("hfp").current_calls_cb(call);
    uint16_t uuids[] = {0x1101, 0x110A};
    char name[] = "Anna's phone";
    callbacks_of<bluetooth_callback_t>("adapter").device_found_cb(kPhone, 3, 0x5A020C, 204, name, 2,
                                                                  uuids);
    callbacks_of<bluetooth_callback_t>("adapter").device_found_cb(kPhone, 1, 0, 0, name, 0, nullptr);
    uint8_t data[] = {0x02, 0x01, 0x06};
    callbacks_of<gatt_client_callback_t>("gattc").scan_result_cb(kPhone, 200, sizeof data, data, 1);
    callbacks_of<gatt_client_callback_t>("gattc").scan_result_cb(kPhone, 200, 0, nullptr, 1);
    EXPECT_EQ(screen.lines(),
              (Lines{"hfp.call index=2 direction=in state=incoming conference=no number=+4930",
                     ("adapter.found address=2A:41:6E:6E:61:01 type=both class=5898764 rssi=-52 "
                      "name=\"Anna's phone\" uuids=1101,110A"),
                     ("adapter.found address=2A:41:6E:6E:61:01 type=br-edr class=0 rssi=0 "
                      "name=\"Anna's phone\" uuids=-"),
                     "gattc.advertisement address=2A:41:6E:6E:61:01 rssi=-56 data=020106 type=1",
                     "gattc.advertisement address=2A:41:6E:6E:61:01 rssi=-56 data=\"\" type=1"}));
}

TEST(Slot, ShowsWhatAPlayerTells) {
    const Screen screen;
    const auto& callbacks = callbacks_of<avrcp_callback_t>("avrcp");
    uint8_t uid[] = {0, 0, 0, 0, 0, 0, 0, 7};
    uint8_t title[] = "First Light";
    AVRCP_4IDStringStru attributes[] = {
        {0, sizeof uid, uid}, {1, sizeof title, title}, {2, 0, nullptr}, {99, sizeof title, title}};
    callbacks.handle_track_changed_cb(kPhone, 50, {4, attributes});
    AVRCP_IDPairStru pairs[] = {{2, 1}, {3, 2}};
    callbacks.handle_player_app_setting_changed_cb(kPhone, 4, {2, pairs});
    btrc_item_folder_t folder{{0, 0, 0, 0, 0, 0, 0, 3}, 1, 1, 106, "Albums"};
    callbacks.get_folder_item_cb(kPhone, 4, &folder);
    EXPECT_EQ(
        screen.lines(),
        (Lines{"avrcp.track address=2A:41:6E:6E:61:01 length=50 "
               R"(attributes={"uid":"0000000000000007","title":"First Light","artist":"",)"
               R"("attribute_99":"First Light"})",
               "avrcp.settings-changed address=2A:41:6E:6E:61:01 length=4 "
               R"(settings={"id":2,"value":1},{"id":3,"value":2})",
               "avrcp.folder address=2A:41:6E:6E:61:01 status=success uid=0000000000000003 type=1 "
               "playable=yes charset=106 name=Albums"}));
}

TEST(Hub, AConditionThatIsTrueAlreadyNeedsNoWaiting) {
    const auto& callbacks = callbacks_of<hfp_callback_t>("hfp");
    callbacks.current_calls_cb({1, 0, 0, 0, "1"});
    callbacks.current_calls_cb({2, 1, 5, 0, "2"});
    const auto wait = [](const char* text) {
        const vymctl::Condition condition = vymctl::read_condition(text);
        return hub().wait_until(soon(), [&condition] { return hub().is_true(condition); });
    };
    EXPECT_EQ(wait("hfp.call.state==active"), Wait::Met) << "call 1, though call 2 came last";
    EXPECT_EQ(wait("hfp.call.state==waiting"), Wait::Met);
    callbacks.current_calls_cb({1, 0, 7, 0, "1"});
    EXPECT_EQ(wait("hfp.call.state==active"), Wait::TimedOut) << "not any more";
}

TEST(Hub, AnEventWithoutATestIsUsedUpByAWait) {
    const auto wait = [] {
        const vymctl::Condition condition = vymctl::read_condition("hfp.ring");
        return hub().wait_until(soon(), [&condition] { return hub().is_true(condition); });
    };
    EXPECT_EQ(wait(), Wait::TimedOut);
    callbacks_of<hfp_callback_t>("hfp").ring_indication_cb();
    EXPECT_EQ(wait(), Wait::Met) << "it came before the wait";
    EXPECT_EQ(wait(), Wait::TimedOut);
}

TEST(Hub, AWaitEndsWithAnEventOfAnotherThread) {
    const vymctl::Condition condition = vymctl::read_condition("hfp.battery.level<2");
    std::thread other([] {
        callbacks_of<hfp_callback_t>("hfp").battery_level_cb(5);
        callbacks_of<hfp_callback_t>("hfp").battery_level_cb(1);
    });
    EXPECT_EQ(hub().wait_until(late(), [&condition] { return hub().is_true(condition); }), Wait::Met);
    other.join();
}

TEST(Hub, AWaitEndsWhenTheServerIsGoneOrSomebodyInterrupts) {
    const auto never = [] { return false; };
    hub().server_gone(true);
    EXPECT_EQ(hub().wait_until(late(), never), Wait::ServerGone);
    EXPECT_EQ(hub().wait_until(late(), [] { return true; }), Wait::Met) << "what is true stays true";
    hub().server_gone(false);
    hub().interrupt();
    EXPECT_EQ(hub().wait_until(late(), never), Wait::Interrupted);
    EXPECT_TRUE(hub().take_interrupt());
    EXPECT_FALSE(hub().take_interrupt());
    EXPECT_EQ(hub().wait_until(soon(), never), Wait::TimedOut);
}

TEST(Hub, HoldsWhatIsShownWhileTheUserTypes) {
    const Screen screen;
    int woken = 0;
    hub().hold([&woken] { ++woken; });
    callbacks_of<hfp_callback_t>("hfp").ring_indication_cb();
    EXPECT_EQ(screen.lines(), Lines{});
    EXPECT_EQ(woken, 1);
    hub().release();
    EXPECT_EQ(screen.lines(), Lines{"hfp.ring"});
}

TEST(Hub, KnowsAddressesFromEvents) {
    callbacks_of<bluetooth_callback_t>("adapter").acl_state_changed_cb(0, kPhone, 0);
    EXPECT_EQ(hub().known(vymctl::Kind::Address).count("2A:41:6E:6E:61:01"), 1U);
}

} // namespace
