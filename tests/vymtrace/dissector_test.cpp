// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The plug-in in tshark shows what the program shows, field by field.

#include "protocol/generated_values.h"
#include "support/process.h"
#include "support/text.h"
#include "vymtrace/capture_bytes.h"
#include "vymtrace/dissector.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::kHeader;
using capture_bytes::Record;
using capture_bytes::Traces;
using namespace std::string_literals;

/** One a line, such as "12 vym.hfp.dial.number=+4930": the number of the record first. */
using Fields = std::vector<std::string>;

void Flatten(const nlohmann::ordered_json& value, const std::string& path, Fields* fields) {
    if (value.is_object()) {
        const std::string below = path + ".";
        for (const auto& [name, member] : value.items()) {
            Flatten(member, below + name, fields);
        }
    } else if (value.is_array()) {
        for (const auto& member : value) {
            Flatten(member, path, fields);
        }
    } else {
        fields->push_back(path + "=" + (value.is_string() ? value.get<std::string>() : value.dump()));
    }
}

Fields FieldsOfJson(const std::string& lines) {
    Fields fields;
    for (const std::string& line : support::Lines(lines)) {
        const auto json = nlohmann::ordered_json::parse(line);
        const std::string start = json["record"].dump() + " vym.";
        for (const auto& [name, value] : json.items()) {
            if (name == "fields") {
                Flatten(value,
                        start + json["profile"].get<std::string>() + "." +
                            json["name"].get<std::string>(),
                        &fields);
            } else if (name != "time" && name != "record" && name != "offset") {
                Flatten(value, start + name, &fields);
            }
        }
    }
    return fields;
}

std::string Attribute(const std::string& element, const std::string& name) {
    const size_t begin = element.find(" " + name + "=\"");
    if (begin == std::string::npos) {
        return "";
    }
    const size_t from = begin + name.size() + 3;
    std::string value = element.substr(from, element.find('"', from) - from);
    const std::vector<std::pair<std::string, std::string>> escapes = {{"&lt;", "<"},    {"&gt;", ">"},
                                                                      {"&quot;", "\""}, {"&#x27;", "'"},
                                                                      {"&apos;", "'"},  {"&amp;", "&"}};
    for (const auto& [escaped, plain] : escapes) {
        for (size_t at = 0; (at = value.find(escaped, at)) != std::string::npos; at += plain.size()) {
            value.replace(at, escaped.size(), plain);
        }
    }
    return value;
}

Fields FieldsOfTshark(const std::string& pdml) {
    Fields fields;
    std::string start;
    for (const std::string& line : support::Lines(pdml)) {
        const std::string name = Attribute(line, "name");
        if (name == "num") {
            start = Attribute(line, "show") + " ";
        } else if (name.rfind("vym.", 0) == 0) {
            const std::string field = name + "=" + Attribute(line, "show");
            fields.push_back(start + field);
        }
    }
    return fields;
}

void ExpectSameFields(const std::string& records) {
    const Traces traces;
    const std::string capture = traces.Write(kHeader + records);
    const std::string script = traces.Write(trace::dissector(), "vym.lua");
    const Fields expected = FieldsOfJson(traces.Run({"--json", capture}).out);
    const Fields seen = FieldsOfTshark(
        support::OutputOf({"tshark", "-X", "lua_script:" + script, "-r", capture, "-T", "pdml"}));
    ASSERT_FALSE(expected.empty());
    for (size_t i = 0; i < std::min(expected.size(), seen.size()); ++i) {
        ASSERT_EQ(seen[i], expected[i]) << "field " << i;
    }
    EXPECT_EQ(seen.size(), expected.size());
}

std::string Pieces(const std::string& text, std::string (*record)(const std::string&, uint64_t)) {
    std::string records;
    for (size_t at = 0; at < text.size(); at += 255) {
        records += record(text.substr(at, 255), 0);
    }
    return records;
}

TEST(Dissector, ShowsEachCommandAndEventOfTheDescription) {
    std::string records;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Messages& messages : {profile->commands, profile->events}) {
            const bool is_command = messages.begin() == profile->commands.begin();
            for (const protocol::Message& message : messages) {
                for (const generated::Kind kind : {generated::Kind::kEmpty, generated::Kind::kSmall}) {
                    for (size_t round = 0; round < generated::Rounds(message.fields); ++round) {
                        const std::string text =
                            encode(message, generated::Values(kind, round).Of(message));
                        records += is_command ? Pieces("AT#" + text + "\r\n", Command)
                                              : Pieces(text + "\0"s, Events);
                    }
                }
            }
        }
    }
    ExpectSameFields(records);
}

TEST(Dissector, JoinsPiecesAndTellsWhatIsWrong) {
    const std::string digits(250, '7');
    ExpectSameFields(Command("AT#HH" + digits) + Command("89\r\n", 1) + Events("PA01\0HHno"s, 2) +
                     Command("AT#PB\r\n", 3) + Events("HHnone Zo\xC3\xAB\0"s, 4) +
                     Record(2, "\x01\x03\x0C\x00"s, 5) + Events("PD0100000007\0\0PA01\0"s) +
                     Command("AT#ZZtop\r\n") + Events("PA\0"s) + Events("PA01more\0"s) +
                     Command("hello\r\n") + Events("PAxx\0BB0001000B0709\x01\xDC\xDD\0"s) +
                     Events("BB00010009FF02\x01\xDC\xDE\0BB00010003FF\xDC\0"s) +
                     Events("BB0001000B0704\x01\xDC\xDD\xDC\xDD\xDC\xDD\0"s) +
                     Events("RR00010001\0TD5\0TD60007\0"s) +
                     Events("TD600011030BAnn12345678901\0TD70001030512:Ann12345|noon\0"s));
}

TEST(Dissector, CanBeFilteredByNumber) {
    const Traces traces;
    const std::string capture = traces.Write(kHeader + Events("HG0005\0"s) +
                                             Events("HG0003\0HG0004\0"s) + Command("AT#HH+4930\r\n"));
    const std::string script = traces.Write(trace::dissector(), "vym.lua");
    EXPECT_EQ(support::OutputOf({"tshark", "-X", "lua_script:" + script, "-r", capture, "-Y",
                                 "vym.hfp.onBatteryLevel.level < 5", "-T", "fields", "-e",
                                 "frame.number", "-e", "vym.name"}),
              "2\tonBatteryLevel,onBatteryLevel\n");
    EXPECT_EQ(support::OutputOf({"tshark", "-X", "lua_script:" + script, "-r", capture, "-Y",
                                 "vym.hfp.dial.number contains \"49\"", "-T", "fields", "-e",
                                 "_ws.col.Info"}),
              "> hfp dial\n");
}

TEST(Dissector, IsWrittenByTheProgram) {
    const capture_bytes::Result result = Traces().Run({"--emit", "lua"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.out, trace::dissector());
    EXPECT_EQ(result.out.find("@TABLES@"), std::string::npos);
    EXPECT_EQ(Traces().Run({"--emit", "c"}).code, 2);
}

} // namespace
