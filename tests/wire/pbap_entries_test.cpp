// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Entries of the phone book: the fields that depend on the object, lengths in two bases, caps, times,
// and entries that end too early.

#include "wire/pbap_profile.h"

namespace {

const std::string kDigits31 = "0123456789012345678901234567890";

// The target's digit.
std::string Digit(int target) {
    return {"0123456789ABCDEF"[target]};
}

class PbapEntries : public wire::ProfileConformance<wire::PbapProfile> {
protected:
    void ExpectDelivered(const std::string& event, const std::vector<std::string>& entries) {
        SCOPED_TRACE(support::Escaped(event));
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }

    // A call-list entry without name and number, and this behind its fields.
    void ExpectTime(const std::string& text, const std::string& time) {
        ExpectDelivered("TD7000A0000" + text, {"entry(7, 10, \"\", 0, \"\", \"" + time + "\")"});
    }
};

TEST_F(PbapEntries, AContactHasAKindOfNumber) {
    ExpectDelivered("TD6000720511Alice13800138000", {R"(entry(6, 7, "", 2, "13800138000", ""))"});
    ExpectDelivered("TD5ABCDF0404Eva;1234", {R"(entry(5, 43981, "Eva", 15, "1234", ""))"});
}

TEST_F(PbapEntries, OtherObjectsHaveNoKind) {
    for (const int target : {0, 1, 2, 3, 4, 11, 12, 13, 14}) {
        ExpectDelivered("TD" + Digit(target) + "12340404Eva;9876T1230",
                        {"entry(" + std::to_string(target) + R"(, 4660, "Eva", 0, "9876", ""))"});
    }
}

TEST_F(PbapEntries, FiveObjectsHaveATimeBehindASeparator) {
    for (const int target : {7, 8, 9, 10, 15}) {
        ExpectDelivered(
            "TD" + Digit(target) + "12340404Eva;9876 20260102T0304",
            {"entry(" + std::to_string(target) + R"(, 4660, "Eva", 0, "9876", "20260102T0304"))"});
    }
    ExpectDelivered("TDa00010000-1", {R"(entry(10, 1, "", 0, "", "1"))"});
    ExpectDelivered("TDf00010000-1", {R"(entry(15, 1, "", 0, "", "1"))"});
}

TEST_F(PbapEntries, ATargetThatIsNoDigitIsZero) {
    ExpectDelivered("TDG00010000", {R"(entry(0, 1, "", 0, "", ""))"});
    ExpectDelivered("TD-zzzz0000", {R"(entry(0, 0, "", 0, "", ""))"});
}

TEST_F(PbapEntries, NamesAreComposedOfTheirParts) {
    ExpectDelivered("TD200010800Doe;John", {R"(entry(2, 1, "Doe", 0, "", ""))"});
    ExpectDelivered("TD200010900Doe;John;", {R"(entry(2, 1, "JohnDoe", 0, "", ""))"});
    ExpectDelivered("TD200011100Smith;John;Paul;;", {R"(entry(2, 1, "JohnPaulSmith", 0, "", ""))"});
    ExpectDelivered("TD200010500Alice", {R"(entry(2, 1, "", 0, "", ""))"});
    // Not Latin: last, middle, first.
    ExpectDelivered("TD200010600\xE4;\xE5;\xE6;", {R"(entry(2, 1, "\xE4\xE6\xE5", 0, "", ""))"});
    // Only the closed parts are taken, but a letter anywhere up to the third makes the name Latin.
    ExpectDelivered("TD2000105001;2;x", {R"(entry(2, 1, "21", 0, "", ""))"});
    ExpectDelivered("TD2000105001;2;3", {R"(entry(2, 1, "12", 0, "", ""))"});
}

TEST_F(PbapEntries, NamesCountInHexadecimalAndNumbersInDecimal) {
    ExpectDelivered("TD200011010abcd;efgh;ijkl;x0123456789",
                    {R"(entry(2, 1, "efghijklabcd", 0, "0123456789", ""))"});
    ExpectDelivered("TD20001000A0123", {R"(entry(2, 1, "", 0, "", ""))"});
    ExpectDelivered("TD20001001F0123", {R"(entry(2, 1, "", 0, "0", ""))"});
    ExpectDelivered("TD200010a00Ada;;;....", {R"(entry(2, 1, "Ada", 0, "", ""))"});
}

TEST_F(PbapEntries, ALongNumberIsCutAndTheRestSkipped) {
    const std::vector<std::string> cut = {"entry(2, 1, \"\", 0, \"" + kDigits31 + "\", \"\")"};
    ExpectDelivered("TD200010031" + kDigits31, cut);
    ExpectDelivered("TD200010045" + kDigits31 + "45678901234567", cut);
    ExpectDelivered("TD200010099" + kDigits31, cut);
    ExpectDelivered("TD2000100-1" + kDigits31, cut); // 255 as a byte
}

TEST_F(PbapEntries, BehindALongNumberTheTimeFollowsAtOnce) {
    // 33 are announced and 31 are taken: the 32nd is the separator, the 33rd begins the time.
    ExpectDelivered("TD700010033" + kDigits31 + "12-08:15",
                    {"entry(7, 1, \"\", 0, \"" + kDigits31 + "\", \"2-08:15\")"});
}

TEST_F(PbapEntries, OfALongNameTheRestBelongsToTheNumber) {
    const std::string name = "n;" + std::string(252, 'm'); // 254 characters
    ExpectDelivered("TD20001FE02" + name + "12", {R"(entry(2, 1, "n", 0, "12", ""))"});
    ExpectDelivered("TD20001FF02" + name + "X1" + "2", {R"(entry(2, 1, "n", 0, "X1", ""))"});
    ExpectDelivered("TD20001-102" + name + "X1" + "2", {R"(entry(2, 1, "n", 0, "X1", ""))"});
}

TEST_F(PbapEntries, TheLongestNameFillsItsField) {
    const std::string last(253, 'L');
    ExpectDelivered("TD20001FE00" + last + ";", {"entry(2, 1, \"" + last + "\", 0, \"\", \"\")"});
}

TEST_F(PbapEntries, ATimeIsCutTo39Characters) {
    const std::string digits = kDigits31 + "ABCDEFGH"; // 39
    ExpectTime("|" + digits.substr(0, 1), digits.substr(0, 1));
    ExpectTime("|" + digits.substr(0, 38), digits.substr(0, 38));
    ExpectTime("|" + digits, digits);
    ExpectTime("|" + digits + "I", digits);
    ExpectTime("|" + digits + std::string(60, 'z'), digits); // 99
}

TEST_F(PbapEntries, ATimeOf100CharactersIsNone) {
    ExpectTime("|" + std::string(100, '1'), "");
    ExpectTime("|" + std::string(300, '1'), "");
    ExpectTime("|" + std::string(3000, '1'), "");
}

TEST_F(PbapEntries, SeparatorAndTimeMayBeMissing) {
    ExpectTime("|", "");
    ExpectTime("", "");
    // What follows the event is no time.
    Server().Send(support::Event("TD700010000") + support::Event("TC0007"));
    ExpectEntries({R"(entry(7, 1, "", 0, "", ""))", "get_phonebook_status(7)"});
}

TEST_F(PbapEntries, AnEntryThatEndsBeforeItsFieldsIsNone) {
    const std::string contact = "TD6123440404Eva;9876";
    const std::string call = "TD712340404Eva;9876";
    for (const std::string& whole : {contact, call}) {
        for (size_t length = 2; length < whole.size(); ++length) {
            Server().Send(support::Event(whole.substr(0, length)));
        }
        ExpectEntries({});
    }
    ExpectDelivered("TD60007", {});
    ExpectDelivered("TD20001FE00ab", {});
    ExpectDelivered("TD2000100310123", {});
    ExpectDelivered(contact, {R"(entry(6, 4660, "Eva", 4, "9876", ""))"});
    ExpectDelivered(call, {R"(entry(7, 4660, "Eva", 0, "9876", ""))"});
}

TEST_F(PbapEntries, FieldsMayHoldAnyBytesButNul) {
    ExpectDelivered("TD700010003\r\n\xDC\xFF\xC3\x84",
                    {R"(entry(7, 1, "", 0, "\r\n\xDC", "\xC3\x84"))"});
}

TEST_F(PbapEntries, EveryByteThatIsNoFieldIsZero) {
    static std::vector<uint8_t> seen;
    seen.clear();
    pbap_callback_t table = {};
    table.index_data_ind_cb = [](phone_book_t book) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(&book);
        seen.assign(bytes, bytes + sizeof book);
    };
    vym_pbap_init(&table);
    // The first leaves its bytes on the stack.
    ExpectDelivered("TDF0000FE31" + std::string(252, 'n') + ";;" + kDigits31 + "|" + kDigits31, {});
    EXPECT_EQ(seen[8], 'n');
    ExpectDelivered("TD000000000", {});
    EXPECT_EQ(seen, std::vector<uint8_t>(340, 0));
    vym_pbap_done();
}

TEST_F(PbapEntries, FiftyArriveInOrder) {
    std::string burst;
    std::vector<std::string> entries;
    for (int i = 0; i < 50; ++i) {
        burst += support::Event("TD600" + Digit(i / 16) + Digit(i % 16) + "20403Eva;555");
        entries.push_back("entry(6, " + std::to_string(i) + ", \"Eva\", 2, \"555\", \"\")");
    }
    Server().Send(burst + support::Event("TC0000"));
    entries.emplace_back("get_phonebook_status(0)");
    ExpectEntries(entries);
}

} // namespace
