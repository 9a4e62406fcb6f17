// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Counted blocks that lie: beyond the event's end, cut by an escape, longer than can be decoded.

#include "wire/adapter_support.h"

namespace {

using wire::Bytes;
using wire::Record;

class AdapterBlocks : public wire::AdapterWireTest {
protected:
    // A found device with these services, escaped as they stand.
    static std::string Found(const std::string& count, const std::string& services) {
        return "BDA1B2C3D4E5F60100240404C8" + count + services;
    }
    static std::vector<std::string> FoundEntry(const std::string& rest) {
        return {"device_found(A1B2C3D4E5F6, 1, 2360324, 200, " + rest + ")"};
    }
};

TEST_F(AdapterBlocks, ThatRunPastTheEventCallNothing) {
    for (const char* count : {"0004", "0005", "0100", "0FFF", "1000", "7FFF", "8000", "FFFF", "-001"}) {
        ExpectDelivered("BN" + std::string(count) + "abc", {});
        ExpectDelivered(Found(count, "abc"), {});
    }
    ExpectDelivered("BN0003abc", {"app_gap_started(3, 616263)"});
    ExpectDelivered(Found("0003", "abc"), FoundEntry("\"\", 1, [6261]"));
}

TEST_F(AdapterBlocks, ThatRunPastTheEventChangeNoProperty) {
    Cache(4, wire::Number(0x240404));
    for (const char* count : {"0009", "0100", "1000", "FFFF"}) {
        Handle({"BB0001" + std::string(count) + "0404zzzz"});
        Handle({"BC00A1B2C3D4E5F601" + std::string(count) + "0404zzzz"});
    }
    const auto empty = wire::AdapterProperties({Record(4, "")});
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n", {empty}), 0x240404);
    Handle({"BB000100080404zzzz"}); // the same with its true count
    EXPECT_EQ(Ask(vym_bluetooth_get_class, "AT#BA04\r\n", {empty}), 0x7A7A7A7A);
}

TEST_F(AdapterBlocks, WithACountThatIsNoNumberAreEmpty) {
    ExpectDelivered("BNxyzwabc", {"app_gap_started(0, )"});
    ExpectDelivered(Found("zzzz", "abc"), FoundEntry("\"abc\", 0, null"));
}

TEST_F(AdapterBlocks, OddBytesOfServicesAreNotTold) {
    ExpectDelivered(Found("0001", "\x18"), FoundEntry("\"\", 0, []"));
    ExpectDelivered(Found("0005", Bytes({1, 2, 3, 4, 5}) + "n"), FoundEntry("\"n\", 2, [0201 0403]"));
}

TEST_F(AdapterBlocks, ServicesAreCountedAfterTheirEscapesAreUndone) {
    const std::string services = Bytes({0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC});
    ExpectDelivered(Found("0008", services + "n"), FoundEntry("\"n\", 2, [0D00 DC0A]"));
}

TEST_F(AdapterBlocks, MoreThan255ServicesAreCountedAs255) {
    std::string list;
    for (int i = 0; i < 255; ++i) {
        list += (i == 0 ? "" : " ") + std::string("3130");
    }
    std::string services;
    for (int i = 0; i < 255; ++i) {
        services += "01";
    }
    ExpectDelivered(Found("01FE", services + "n"), FoundEntry("\"n\", 255, [" + list + "]"));
    ExpectDelivered(Found("0200", services + "01n"), FoundEntry("\"n\", 255, [" + list + "]"));
    ExpectDelivered(Found("0204", services + "010101n"), FoundEntry("\"n\", 255, [" + list + "]"));
}

TEST_F(AdapterBlocks, ABadEscapeNeverShowsOldMemory) {
    // The byte that a bad escape stands for is not written, so it is zero.
    ExpectDelivered("BN0004" + Bytes({'A', 0xDC, 'x', 'B'}), {"app_gap_started(3, 410042)"});
    ExpectDelivered(Found("0004", Bytes({0xDC, 0x01, 0xDC, 0xFF})), FoundEntry("\"\", 1, [0000]"));
}

TEST_F(AdapterBlocks, ALoneEscapeIsNothing) {
    ExpectDelivered("BN0001\xDC", {"app_gap_started(0, )"});
    ExpectDelivered(Found("0001", "\xDC"), FoundEntry("\"\", 0, null"));
    Handle({"BB00010001\xDC", "BC00A1B2C3D4E5F6010001\xDC"});
}

TEST_F(AdapterBlocks, GapDataIsDecodedAsFarAsTheLowByteOfItsCount) {
    const std::string block(0x103, 'g');
    ExpectDelivered("BN0103" + block, {"app_gap_started(3, 676767)"});
    ExpectDelivered("BN0100" + block.substr(3), {"app_gap_started(0, )"});
    ExpectDelivered("BN00FF" + block.substr(4), {"app_gap_started(255, " + [] {
                        std::string digits;
                        for (int i = 0; i < 255; ++i) {
                            digits += "67";
                        }
                        return digits;
                    }() + ")"});
    ExpectDelivered("BN0103" + block.substr(1), {}); // the full count decides whether it is there
}

TEST_F(AdapterBlocks, GapDataCutWithinAnEscapeKeepsItsFirstHalf) {
    const std::string block = Bytes({'a', 0xDC, 0xDD}) + std::string(255, '-');
    // Of the 258 bytes, the first two are decoded. The last is half an escape and is not counted.
    ExpectDelivered("BN0102" + block, {"app_gap_started(1, 61)"});
}

TEST_F(AdapterBlocks, LengthsInEventsAreThoseOfTheWire) {
    // Behind the block comes the name: the position moves on by what was sent, not by what was decoded.
    ExpectDelivered(Found("0004", Bytes({0xDC, 0xDD, 0xDC, 0xDD}) + "Name"),
                    FoundEntry("\"Name\", 1, [0000]"));
}

} // namespace
