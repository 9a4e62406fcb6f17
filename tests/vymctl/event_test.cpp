// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "event.h"

#include "ending.h"
#include "profiles.h"

#include <gtest/gtest.h>

namespace {

using vymctl::Event;
using vymctl::event_type;
using vymctl::Json;
using vymctl::read_condition;

Event event(const char* name, std::vector<Json> values) {
    return {&event_type(name), std::move(values),
            std::chrono::system_clock::time_point(std::chrono::milliseconds(1700000000125))};
}

Event call(int index, const char* state) {
    return event("hfp.call", {index, "in", state, "no", "+49 30"});
}

std::string complaint(const std::string& condition) {
    try {
        read_condition(condition);
    } catch (const vymctl::Usage& error) {
        return error.what();
    }
    return "no complaint";
}

TEST(Event, IsALineOfTextOrAnObject) {
    EXPECT_EQ(call(1, "incoming").text(),
              "hfp.call index=1 direction=in state=incoming conference=no number=\"+49 30\"");
    EXPECT_EQ(vymctl::dump(call(1, "incoming").json()),
              R"({"event":"hfp.call","time":1700000000.125,"index":1,"direction":"in",)"
              R"("state":"incoming","conference":"no","number":"+49 30"})");
    EXPECT_EQ(event("hfp.ring", {}).text(), "hfp.ring");
}

TEST(Event, ASubjectTellsCallsAndDevicesApart) {
    EXPECT_EQ(call(1, "held").subject(), call(1, "active").subject());
    EXPECT_NE(call(1, "held").subject(), call(2, "held").subject());
    EXPECT_NE(event("adapter.link", {"success", "2A:41:6E:6E:61:01", "connected"}).subject(),
              event("adapter.link", {"success", "2A:41:6E:6E:61:02", "connected"}).subject());
}

TEST(Condition, ComparesFields) {
    const Event active = call(2, "active");
    for (const char* text :
         {"hfp.call", "hfp.call.state==active", " hfp.call.state == active ", "hfp.call.state!=held",
          "hfp.call.index>1", "hfp.call.index<3", "hfp.call.state==0", "hfp.call.number==+49 30",
          "hfp.call.index==2 && hfp.call.state==active"}) {
        EXPECT_TRUE(read_condition(text).holds(active)) << text;
    }
    for (const char* text :
         {"hfp.calls", "hfp.call.state==held", "hfp.call.state!=active", "hfp.call.index>2",
          "hfp.call.index<2", "hfp.call.number==+49", "hfp.call.index==1 && hfp.call.state==active"}) {
        EXPECT_FALSE(read_condition(text).holds(active)) << text;
    }
}

TEST(Condition, ReadsAddressesAndUuidsInEveryForm) {
    EXPECT_TRUE(read_condition("adapter.link.address==2a416e6e6101")
                    .holds(event("adapter.link", {"success", "2A:41:6E:6E:61:01", "connected"})));
    EXPECT_TRUE(read_condition("rfcomm.channel.uuid==00001101-0000-1000-8000-00805f9b34fb")
                    .holds(event("rfcomm.channel", {"2A:41:6E:6E:61:01", "1101", 11})));
}

TEST(Condition, SaysWhatIsWrong) {
    EXPECT_EQ(complaint("nothing"),
              "there is no event \"nothing\"; events begin with a profile: adapter, hfp, "
              "a2dp, avrcp, pbap, rfcomm, gattc, gatts, hid, audio, core");
    EXPECT_EQ(complaint("hid.nothing==1"),
              "there is no event \"hid.nothing\"; there are hid.application, hid.connection");
    EXPECT_EQ(complaint("hfp.battery.nothing==1"),
              "hfp.battery has no field \"nothing\"; its fields: level");
    EXPECT_EQ(complaint("hfp.battery.level"), "\"level\" has none of == != < >");
    EXPECT_EQ(complaint("hfp.battery==1"),
              "\"hfp.battery==1\" names no field of hfp.battery; its fields: level");
    EXPECT_EQ(complaint("hfp.call.state==gone"),
              "state is active|held|dialing|alerting|incoming|waiting|held-by-phone|terminated, not "
              "\"gone\"");
    EXPECT_EQ(complaint("hfp.ring && hfp.calls"), "both sides of && must be of the same event");
}

TEST(Ending, IsTheEventOfThisCall) {
    const vymctl::Verb& bond = *vymctl::find_verb("adapter", "bond");
    const auto verdict = [&bond](const std::vector<Event>& events) {
        vymctl::Ending ending(bond, read_values(bond, {"2A:41:6E:6E:61:01"}));
        for (const Event& one : events) {
            ending.see(one);
        }
        return ending.verdict();
    };
    using Verdict = vymctl::Ending::Verdict;
    const auto bonded = [](const char* status, const char* address, const char* state) {
        return event("adapter.bond", {status, address, state});
    };
    const char* mine = "2A:41:6E:6E:61:01";
    EXPECT_EQ(verdict({}), Verdict::Open);
    EXPECT_EQ(verdict({bonded("success", mine, "bonding")}), Verdict::Open);
    EXPECT_EQ(verdict({bonded("success", mine, "bonded")}), Verdict::Done);
    EXPECT_EQ(verdict({bonded("success", mine, "none")}), Verdict::Failed);
    EXPECT_EQ(verdict({bonded("auth-failure", mine, "bonded")}), Verdict::Failed);
    EXPECT_EQ(verdict({bonded("success", "2A:41:6E:6E:61:02", "bonded")}), Verdict::Open);
    EXPECT_EQ(verdict({call(1, "active")}), Verdict::Open);
    EXPECT_EQ(verdict({bonded("success", mine, "none"), bonded("success", mine, "bonded")}),
              Verdict::Failed)
        << "the first decides";
}

} // namespace
