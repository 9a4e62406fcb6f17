// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the phone book writes.

#include "wire/pbap_profile.h"

namespace {

constexpr bt_bdaddr_t kPhone = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};

struct CommandCase {
    const char* name;
    bt_status_t (*call)();
    std::string_view command;
};

class PbapCommands : public wire::ProfileConformance<wire::PbapProfile> {
protected:
    template <size_t Count>
    void ExpectCommands(const CommandCase (&cases)[Count]) {
        for (const CommandCase& one : cases) {
            SCOPED_TRACE(one.name);
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            Server().ExpectCommand(one.command);
        }
        Server().ExpectNothingMore();
    }
};

template <size_t Room>
bt_status_t Pull(int index, const char (&number)[Room]) {
    char copy[Room];
    std::copy(number, number + Room, copy);
    return vym_pbap_pull_vcard_by_number(index, copy);
}

TEST_F(PbapCommands, AddressesGoMostSignificantByteFirst) {
    const CommandCase cases[] = {
        {"connect", [] { return vym_pbap_connect(kPhone); }, "AT#TCA1B2C3D4E5F6\r\n"},
        {"disconnect", [] { return vym_pbap_disconnect(kPhone); }, "AT#TDA1B2C3D4E5F6\r\n"},
        {"an address of zeroes", [] { return vym_pbap_connect(bt_bdaddr_t{}); },
         "AT#TC000000000000\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, ADownloadNamesObjectFirstEntryAndCount) {
    const CommandCase cases[] = {
        {"all contacts", [] { return vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 500); },
         "AT#TA06000001F4\r\n"},
        {"different bytes", [] { return vym_pbap_get_phonebook(SYNC_OCH, 0x1234, 0xABCD); },
         "AT#TA021234ABCD\r\n"},
        {"the greatest", [] { return vym_pbap_get_phonebook(SYNC_CALLLOG, 0xFFFF, 0xFFFF); },
         "AT#TA07FFFFFFFF\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, OfAnObjectTheLowByteIsSent) {
    const CommandCase cases[] = {
        {"no name", [] { return vym_pbap_get_phonebook(static_cast<sync_type_t>(0xAB), 1, 2); },
         "AT#TAAB00010002\r\n"},
        {"more than a byte",
         [] { return vym_pbap_get_phonebook(static_cast<sync_type_t>(0x12F3), 1, 2); },
         "AT#TAF300010002\r\n"},
        {"negative", [] { return vym_pbap_get_phonebook_size(static_cast<sync_type_t>(-2)); },
         "AT#TAFE00000000\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, TheSizeIsAskedForAsADownloadOfNothing) {
    const CommandCase cases[] = {
        {"missed calls", [] { return vym_pbap_get_phonebook_size(SYNC_MCH); }, "AT#TA0300000000\r\n"},
        {"the card", [] { return vym_pbap_get_phonebook_size(SYNC_SIM_CONTACT); },
         "AT#TA0500000000\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, CancellingIsATagAlone) {
    const CommandCase cases[] = {{"cancel", vym_pbap_cancel_get_phonebook, "AT#TW\r\n"}};
    ExpectCommands(cases);
}

TEST_F(PbapCommands, AFilterHasAnyBits) {
    const CommandCase cases[] = {
        {"photographs", [] { return vym_pbap_filter_mask(PBAP_INFO_MASK_PHOTO); }, "AT#TM00000010\r\n"},
        {"bits without a name",
         [] { return vym_pbap_filter_mask(static_cast<mask_type_t>(0x1234ABCD)); },
         "AT#TM1234ABCD\r\n"},
        {"the highest bit",
         [] { return vym_pbap_filter_mask(static_cast<mask_type_t>(static_cast<int>(0x89ABCDEFU))); },
         "AT#TM89ABCDEF\r\n"},
        {"all", [] { return vym_pbap_filter_mask(static_cast<mask_type_t>(-1)); }, "AT#TMFFFFFFFF\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, AnEntryIsPulledByIndexAndNumber) {
    const CommandCase cases[] = {
        {"plain", [] { return Pull(3, "12345"); }, "AT#TN0000000312345\r\n"},
        {"different bytes", [] { return Pull(0x12345678, "+49 (0)"); }, "AT#TN12345678+49 (0)\r\n"},
        {"negative", [] { return Pull(-2, "1"); }, "AT#TNFFFFFFFE1\r\n"},
        {"no number", [] { return Pull(0, ""); }, "AT#TN00000000\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, ANumberGoesAsItStands) {
    const CommandCase cases[] = {
        {"per cent signs", [] { return Pull(1, "%s%n%08X%%"); }, "AT#TN00000001%s%n%08X%%\r\n"},
        {"bytes above 7F", [] { return Pull(1, "\xC3\x84\xDC\xDD\xFF"); },
         "AT#TN00000001\xC3\x84\xDC\xDD\xFF\r\n"},
        {"a command", [] { return Pull(1, "AT#TW"); }, "AT#TN00000001AT#TW\r\n"},
    };
    ExpectCommands(cases);
}

TEST_F(PbapCommands, ANumberMayBeOfAnyLength) {
    std::string number(5000, '7');
    number.front() = '+';
    number.back() = '#';
    EXPECT_EQ(vym_pbap_pull_vcard_by_number(9, number.data()), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#TN00000009" + number + "\r\n");
    Server().ExpectNothingMore();
}

TEST_F(PbapCommands, ANumberThatWouldBreakTheLineIsRefused) {
    EXPECT_EQ(Pull(1, "12\r34"), BT_STATUS_FAIL);
    EXPECT_EQ(Pull(1, "12\n34"), BT_STATUS_FAIL);
    EXPECT_EQ(Pull(1, "1234\r\nAT#PC\r\n"), BT_STATUS_FAIL);
    EXPECT_EQ(Pull(1, "\n"), BT_STATUS_FAIL);
    EXPECT_EQ(vym_pbap_pull_vcard_by_number(1, nullptr), BT_STATUS_FAIL);
    Server().ExpectNothingMore();
}

TEST_F(PbapCommands, AreSentWithoutInitAndAfterDone) {
    vym_pbap_done();
    EXPECT_EQ(vym_pbap_cancel_get_phonebook(), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#TW\r\n");
}

TEST_F(PbapCommands, AreDroppedWhileUnconnected) {
    Session().Stop();
    EXPECT_EQ(vym_pbap_connect(kPhone), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_pbap_get_phonebook_size(SYNC_ICH), BT_STATUS_SUCCESS);
    EXPECT_EQ(Pull(1, "1"), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_pbap_pull_vcard_by_number(1, nullptr), BT_STATUS_FAIL);
}

TEST_F(PbapCommands, MayBeSentFromACallback) {
    wire::ProfileRecord().SetHook([](const std::string&) {
        vym_pbap_connect(kPhone);
        vym_pbap_get_phonebook_size(SYNC_PHONE_CONTACT);
        vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 1, 2);
        vym_pbap_filter_mask(PBAP_INFO_MASK_PHOTO);
        Pull(1, "2");
        vym_pbap_cancel_get_phonebook();
        vym_pbap_disconnect(kPhone);
        EXPECT_EQ(vym_pbap_is_connected(), 0);
    });
    Server().Send(support::Event("TS00A1B2C3D4E5F6"));
    ExpectEntries({"connection_status(0, A1B2C3D4E5F6)"});
    Server().ExpectCommand("AT#TCA1B2C3D4E5F6\r\n");
    Server().ExpectCommand("AT#TA0600000000\r\n");
    Server().ExpectCommand("AT#TA0600010002\r\n");
    Server().ExpectCommand("AT#TM00000010\r\n");
    Server().ExpectCommand("AT#TN000000012\r\n");
    Server().ExpectCommand("AT#TW\r\n");
    Server().ExpectCommand("AT#TDA1B2C3D4E5F6\r\n");
}

} // namespace
