// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The phone book's decoders, offered text directly: what they hand to the handlers, also the raw cards
// that the application never sees.

#include "vym_pbap_event.h"

#include "support/text.h"
#include "unit/event_table.h"

#include <cstring>

namespace {

using support::Bytes;
using Texts = std::vector<std::string>;

Texts& Calls() {
    static Texts calls;
    return calls;
}

void CallBlock(const std::string& name, uint16_t len, const uint8_t* data) {
    Calls().push_back(
        name + " " + std::to_string(len) + " " +
        (data == nullptr ? "null" : std::string(reinterpret_cast<const char*>(data), len)));
}

pbap_impl_callback_t Handlers() {
    pbap_impl_callback_t table = {};
    table.connection_status_cb = [](uint8_t status, bt_bdaddr_t address) {
        Calls().push_back("TS " + std::to_string(status) + " " + std::to_string(address.address[0]));
    };
    table.get_phonebook_status_cb = [](uint16_t result) {
        Calls().push_back("TC " + std::to_string(result));
    };
    table.get_phonebook_size_cb = [](uint16_t type, uint16_t size, uint16_t result) {
        Calls().push_back("TE " + std::to_string(type) + " " + std::to_string(size) + " " +
                          std::to_string(result));
    };
    table.vcf_data_ind_cb = [](char* line) { Calls().push_back(std::string("TB ") + line); };
    table.index_data_ind_cb = [](phone_book_t book) {
        Calls().push_back("TD " + std::to_string(book.target) + " " + std::to_string(book.index) + " " +
                          book.name + " " + std::to_string(book.tel_type) + " " + book.number + " " +
                          book.time);
    };
    table.phonebook_rawdata_ind_cb = [](uint8_t type, uint16_t len, uint8_t* data) {
        CallBlock("TR " + std::to_string(type), len, data);
    };
    table.phonebook_photodata_ind_cb = [](uint8_t state, uint16_t index, uint16_t len, uint8_t* data) {
        CallBlock("TP " + std::to_string(state) + " " + std::to_string(index), len, data);
    };
    return table;
}

class PbapDecoders : public ::testing::Test {
protected:
    void SetUp() override {
        Calls().clear();
        parser_ = create_pbap_event_parser(&handlers_);
        ASSERT_NE(parser_, nullptr);
    }
    void TearDown() override { destroy_pbap_event_parser(parser_); }

    int Offer(const std::string& bytes) { return unit::OfferBytes(parser_, bytes); }

    // Where the decoder says that the fields of the text end.
    int Parse(const std::string& event) {
        for (int i = 0; i < parser_->num_of_parsers; ++i) {
            if (event.compare(0, 2, parser_->parser_list[i].get_keyword()) == 0) {
                std::string text = event;
                return parser_->parser_list[i].parse(reinterpret_cast<uint8_t*>(text.data()), 2);
            }
        }
        return -2;
    }

    pbap_impl_callback_t handlers_ = Handlers();
    event_parser_t* parser_ = nullptr;
};

TEST_F(PbapDecoders, AreTheSevenEventsInTheirOrder) {
    constexpr unit::Row kExpected[] = {
        {"TS", "onConnectionStatus", 14},      {"TC", "onGetPhonebookStatus", 4},
        {"TE", "onGetPhonebookSize", 12},      {"TB", "onVcfDataInd", 0},
        {"TD", "onIndexDataInd", 0},           {"TR", "onPhonebookRawdataInd", 6},
        {"TP", "onPhonebookPhotodataInd", 10},
    };
    unit::ExpectRows(*parser_, kExpected);
}

// The event, the call that comes of it, and where its fields end.
struct Case {
    std::string event;
    std::string call;
    int fields_end;
};

std::vector<Case> Cases() {
    return {
        {"TS02A1B2C3D4E5F6", "TS 2 246", 16},
        {"TC1234surplus", "TC 4660", 6},
        {"TE00021234ABCD", "TE 2 4660 43981", 14},
        {"TBN:Smith;Eva;;;", "TB N:Smith;Eva;;;", 2},
        {"TB", "TB ", 2},
        {"TD2ABCD0C05Smith;Eva;;;12345", "TD 2 43981 EvaSmith 0 12345 ", 28},
        {"TD2ABCD0C05Smith;Eva;;;12345surplus", "TD 2 43981 EvaSmith 0 12345 ", 28},
        {"TD6000720511Alice13800138000", "TD 6 7  2 13800138000 ", 28},
        {"TD712340404Eva;9876 0102T03", "TD 7 4660 Eva 0 9876 0102T03", 27},
        {"TD712340404Eva;9876", "TD 7 4660 Eva 0 9876 ", 19},
        {"TD712340404Eva;9876 ", "TD 7 4660 Eva 0 9876 ", 20},
        {"TD712340003" + std::string(100, 'x'), "TD 7 4660  0 xxx " + std::string(39, 'x'), 111},
        {"TD712340000|" + std::string(100, 'x'), "TD 7 4660  0  ", 12},
        {"TR010003abcsurplus", "TR 1 3 abc", 11},
        {"TR010003" + Bytes({'a', 0xDC, 0xDF}), "TR 1 2 a\n", 11},
        {"TR7F0000", "TR 127 0 null", 8},
        {"TR7F0001\xDC", "TR 127 0 ", 9},
        {"TP0212340003abc", "TP 2 4660 3 abc", 15},
        {"TP0212340002" + Bytes({0xDC, 0xDC}), "TP 2 4660 1 \xDC", 14},
        {"TP0212340000surplus", "TP 2 4660 0 null", 12},
        {"TP0212340001\xDC", "TP 2 4660 0 ", 13},
    };
}

TEST_F(PbapDecoders, HandTheirFieldsToTheirHandler) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(support::Escaped(one.event));
        EXPECT_EQ(Offer(support::Event(one.event)), static_cast<int>(one.event.size()));
        EXPECT_EQ(Calls(), Texts{one.call});
        Calls().clear();
    }
}

TEST_F(PbapDecoders, ReturnWhereTheirFieldsEnd) {
    for (const Case& one : Cases()) {
        EXPECT_EQ(Parse(one.event), one.fields_end) << support::Escaped(one.event);
    }
}

TEST_F(PbapDecoders, WaitForTheNulOnlyWhenTheyHaveATail) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(support::Escaped(one.event));
        const bool has_tail =
            std::string("TB TD TR TP").find(one.event.substr(0, 2)) != std::string::npos;
        EXPECT_EQ(Offer(one.event), has_tail ? -1 : one.fields_end);
        EXPECT_EQ(Calls(), has_tail ? Texts{} : Texts{one.call});
        Calls().clear();
    }
}

TEST_F(PbapDecoders, TakeAnEventThatEndsTooEarlyAndCallNothing) {
    for (const char* event : {"TS",
                              "TS02A1B2C3D4E5F",
                              "TC123",
                              "TE00021234ABC",
                              "TD",
                              "TD6",
                              "TD6000",
                              "TD60007",
                              "TD600072",
                              "TD6000720",
                              "TD60007205",
                              "TD600072051",
                              "TD6000720511",
                              "TD6000720511Alic",
                              "TD6000720511Alice1380013800",
                              "TD70001010",
                              "TD20001FF99",
                              "TR0100",
                              "TR010004abc",
                              "TRFFFFFFabc",
                              "TP010002000",
                              "TP0100020004abc",
                              "TP010002FFFFabc"}) {
        EXPECT_EQ(Offer(support::Event(event)), static_cast<int>(strlen(event))) << event;
        EXPECT_EQ(Calls(), Texts{}) << event;
    }
}

TEST_F(PbapDecoders, LookAtNothingBehindTheNul) {
    const std::string next = support::Event("TD2ABCD0C05Smith;Eva;;;12345");
    for (const char* event :
         {"TD7000A000", "TD70001FF99", "TP010002FFFFabc", "TRFFFFFFabc", "TD", "TDF0001"}) {
        Calls().clear();
        EXPECT_EQ(Offer(support::Event(event).append(next).append(next)),
                  static_cast<int>(strlen(event)))
            << event;
        EXPECT_EQ(Calls(), Texts{}) << event;
    }
    EXPECT_EQ(Offer(support::Event("TD7000A0000") + next), 11);
    EXPECT_EQ(Calls(), Texts{"TD 7 10  0  "});
}

TEST_F(PbapDecoders, HandOverEveryByteOfAnEntryZeroed) {
    static uint8_t seen[sizeof(phone_book_t)];
    memset(seen, 0xEE, sizeof seen);
    handlers_.index_data_ind_cb = [](phone_book_t book) { memcpy(seen, &book, sizeof seen); };
    Offer(support::Event("TD000000000"));
    EXPECT_TRUE(std::all_of(std::begin(seen), std::end(seen), [](uint8_t byte) { return byte == 0; }));
}

TEST_F(PbapDecoders, LeaveOtherTagsAlone) {
    for (const char* event : {"TA01", "TW", "tc0001", "T", "X", " TC0001"}) {
        EXPECT_EQ(Offer(support::Event(event)), -1) << event;
    }
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(PbapDecoders, SkipHandlersThatAreNull) {
    handlers_ = {};
    for (const Case& one : Cases()) {
        EXPECT_EQ(Offer(support::Event(one.event)), static_cast<int>(one.event.size()));
    }
    EXPECT_EQ(Calls(), Texts{});
}

TEST(PbapParser, DestroyedIsNoLongerCalledThrough) {
    Calls().clear();
    pbap_impl_callback_t handlers = Handlers();
    event_parser_t* parser = create_pbap_event_parser(&handlers);
    ASSERT_NE(parser, nullptr);
    const parser_t status = parser->parser_list[1];
    uint8_t text[] = "TC0001";
    EXPECT_EQ(status.parse(text, 2), 6);
    EXPECT_EQ(Calls(), Texts{"TC 1"});
    destroy_pbap_event_parser(parser);
    EXPECT_EQ(status.parse(text, 2), 6);
    EXPECT_EQ(Calls(), Texts{"TC 1"});
    destroy_pbap_event_parser(nullptr);
}

} // namespace
