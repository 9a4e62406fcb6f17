// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Phone book and call lists.

#include "fields.h"

namespace protocol {
namespace {

constexpr Message kCommands[] = {
    {"TA", "get_phonebook", 0, {byte("type"), word("offset"), word("count")}},
    {"TC", "connect", 0, {address()}},
    {"TD", "disconnect", 0, {address()}},
    {"TM", "filter_mask", 0, {dword("mask")}},
    {"TN", "pull_vcard_by_number", 0, {dword("index"), a_number(text("number"))}},
    {"TW", "cancel_get_phonebook"},
};

constexpr Message kEvents[] = {
    {"TS", "onConnectionStatus", 14, {byte("status"), address()}},
    {"TC", "onGetPhonebookStatus", 4, {word("result")}},
    {"TE", "onGetPhonebookSize", 12, {word("type"), word("size"), word("result")}},
    {"TB", "onVcfDataInd", 0, {a_contact(text("line"))}},
    // The length of the number is decimal, the other numbers are not.
    {"TD",
     "onIndexDataInd",
     0,
     {{"target", Type::HexDigit},
      word("index"),
      only(When::Contact, {"tel_type", Type::HexDigit}),
      byte("name_length"),
      {"number_length", Type::Decimal},
      a_name(of_length("name", Type::Counted, "name_length")),
      a_number(of_length("number", Type::Counted, "number_length")),
      only(When::CallLog, {"separator", Type::Character}),
      only(When::CallLog, text("time"))}},
    {"TR", "onPhonebookRawdataInd", 6, {byte("type"), a_contact(block("data"))}},
    {"TP", "onPhonebookPhotodataInd", 10, {byte("state"), word("index"), a_secret(block("data"))}},
};

} // namespace

const Profile kPbap{"pbap", "Phone book (PBAP)", kCommands, kEvents};

} // namespace protocol
