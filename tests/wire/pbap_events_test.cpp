// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The phone book's events, and blocks whose counts are odd or wrong.

#include "wire/pbap_profile.h"

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(Pbap, ProfileConformance, PbapProfile, );

} // namespace wire

namespace {

using support::Bytes;

class PbapEvents : public wire::ProfileConformance<wire::PbapProfile> {
protected:
    void ExpectDelivered(const std::string& event, const std::vector<std::string>& entries) {
        SCOPED_TRACE(support::Escaped(event));
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }
};

TEST_F(PbapEvents, RawCardsOfAnyLengthAreConsumedWhole) {
    const std::string longest(4000, 'v');
    ExpectDelivered("TB" + longest, {});
    ExpectDelivered("TR010FA0" + longest, {});
    ExpectDelivered("TR020000", {});
    ExpectDelivered("TR01FFFF" + longest, {});
    SendPart("TB" + longest.substr(0, 2000));
    ExpectDelivered(longest.substr(2000), {});
    ExpectDelivered("TC0001", {"get_phonebook_status(1)"});
}

TEST_F(PbapEvents, MembersAreLookedUpForEachEvent) {
    pbap_callback_t table = wire::PbapTable();
    vym_pbap_init(&table);
    table.get_phonebook_status_cb = nullptr;
    ExpectDelivered("TC0001", {});
    table.get_phonebook_status_cb = wire::PbapTable().get_phonebook_status_cb;
    ExpectDelivered("TC0002", {"get_phonebook_status(2)"});
    vym_pbap_done();
}

TEST_F(PbapEvents, FieldsThatAreNoNumbersReadAsStrtolReadsThem) {
    ExpectDelivered("TCzzzz", {"get_phonebook_status(0)"});
    ExpectDelivered("TC12z4", {"get_phonebook_status(18)"});
    ExpectDelivered("TC-001", {"get_phonebook_status(65535)"});
    ExpectDelivered("TC  1F", {"get_phonebook_status(31)"});
}

TEST_F(PbapEvents, APhotographMayBeLong) {
    std::string digits;
    for (int i = 0; i < 4082; ++i) {
        digits += "70";
    }
    ExpectDelivered("TP0000010FA0" + std::string(4000, 'p'),
                    {"photo(0, 1, 4000) " + digits.substr(0, 8000)});
    // With its NUL this one fills the receive buffer.
    ExpectDelivered("TP0000010FF2" + std::string(4082, 'p'), {"photo(0, 1, 4082) " + digits});
    std::string escaped;
    for (int i = 0; i < 2000; ++i) {
        escaped += "\xDC\xDD";
    }
    ExpectDelivered("TP0000010FA0" + escaped, {"photo(0, 1, 2000) " + std::string(4000, '0')});
}

TEST_F(PbapEvents, ABlockThatRunsPastTheEventCallsNothing) {
    for (const char* count : {"0004", "0005", "0100", "1000", "7FFF", "8000", "FFFF", "-001"}) {
        ExpectDelivered("TP010001" + std::string(count) + "abc", {});
        ExpectDelivered("TR01" + std::string(count) + "abc", {});
    }
    ExpectDelivered("TP0100010003abc", {"photo(1, 1, 3) 616263"});
}

TEST_F(PbapEvents, ABlockMayBeShorterThanItsText) {
    ExpectDelivered("TP0100010002abTC0001", {"photo(1, 1, 2) 6162"});
    ExpectDelivered("TP010001zzzzabc", {"photo(1, 1, 0) null"});
}

TEST_F(PbapEvents, ABlockWithABadEscapeNeverShowsOldMemory) {
    ExpectDelivered("TP0100010004" + Bytes({'A', 0xDC, 'x', 'B'}), {"photo(1, 1, 3) 410042"});
    ExpectDelivered("TP0100010002" + Bytes({0xDC, 'x'}), {"photo(1, 1, 1) 00"});
    // Cut within an escape, the half escape is not counted.
    ExpectDelivered("TP0100010002" + Bytes({'A', 0xDC, 0xDD}), {"photo(1, 1, 1) 41"});
    // Half an escape alone leaves nothing, but something was there: the pointer is not null.
    ExpectDelivered("TP0100010001" + Bytes({0xDC}), {"photo(1, 1, 0) "});
}

TEST_F(PbapEvents, StartedTwiceTheyArriveInTheNewTable) {
    static pbap_callback_t other;
    other = {};
    other.get_phonebook_status_cb = [](uint16_t result) {
        wire::ProfileRecord().Add(support::CallText("other", result));
    };
    vym_pbap_init(&other);
    ExpectDelivered("TC0003", {"other(3)"});
    wire::PbapProfile::Init(wire::Table::kWhole);
    ExpectDelivered("TC0004", {"get_phonebook_status(4)"});
}

} // namespace
