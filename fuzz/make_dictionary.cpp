// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Words for the fuzzer, from the description of the protocol and from what the simulator says of
// itself. usage: make_dictionary events [profile] | commands | both | captures | worlds | scripts

#include "capture/format.h"
#include "protocol/protocol.h"
#include "silent_sim.h"
#include "world_file.h"

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

namespace {

using protocol::Field;
using protocol::Fields;
using protocol::Layout;

using Words = std::set<std::string>;

/// The values that select what is inside a block, as a byte of the block and as digits.
void add_keys(const Fields& fields, Words* words) {
    for (const Field& field : fields) {
        for (const Layout* layout = field.inner; layout != nullptr; layout = layout->next) {
            if (field.type == protocol::Type::Choice && layout->key != 0) {
                char digits[9];
                std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(layout->key));
                words->insert(digits);
                words->insert(std::string(1, static_cast<char>(layout->key)));
            }
            add_keys(layout->fields, words);
        }
    }
}

void add_messages(const protocol::Messages& messages, const std::string& before,
                  const std::string& behind, Words* words) {
    for (const protocol::Message& message : messages) {
        words->insert(before + std::string(message.tag));
        words->insert(behind + before + std::string(message.tag));
        add_keys(message.fields, words);
    }
    words->insert(behind);
}

/// Where numbers change their sign, saturate, or count more than there is; and what escapes are made
/// of.
void add_values(Words* words) {
    for (const char* value :
         {"00",   "01",   "7F",       "80",       "FF",       "0000",     "0001",     "000F",
          "0FFF", "FFFF", "00000000", "7FFFFFFF", "80000000", "FFFFFFFF", "-1",       "+1",
          "0x",   " ",    ";",        "\xDC\xDD", "\xDC\xDE", "\xDC\xDF", "\xDC\xDC", "\xDC"}) {
        words->insert(value);
    }
}

void print(const Words& words) {
    for (const std::string& word : words) {
        std::string line;
        for (const char c : word) {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(c)));
            const bool is_plain = c > ' ' && c <= '~' && c != '"' && c != '\\';
            line += is_plain ? std::string(1, c) : std::string(escaped);
        }
        std::printf("\"%s\"\n", line.c_str());
    }
}

/// False when there is no such profile.
bool add_protocol(std::string_view what, std::string_view profile_name, Words* words) {
    bool found = false;
    for (const protocol::Profile* profile : protocol::profiles()) {
        if (!profile_name.empty() && profile->name != profile_name) {
            continue;
        }
        found = true;
        if (what != "commands") {
            add_messages(profile->events, "", std::string(1, '\0'), words);
        }
        if (what != "events") {
            add_messages(profile->commands, "AT#", "\r\n", words);
        }
    }
    add_values(words);
    return found;
}

/// What records are made of.
void add_records(Words* words) {
    words->insert(std::string(capture::kFileHeader));
    words->insert(std::string(capture::kVendorCommand));
    words->insert(std::string(capture::kVendorEvent));
    for (const char flags : {'\0', '\1', '\2', '\3'}) {
        words->insert(std::string(3, '\0') + flags + std::string(4, '\0'));
    }
}

/// Every run of letters, digits and the like.
void add_words_of(std::string_view text, Words* words) {
    while (!text.empty()) {
        const size_t end = std::min(text.size(), text.find_first_of(" \n\"[]{}|=,:"));
        if (end > 0) {
            words->insert(std::string(text.substr(0, end)));
        }
        text.remove_prefix(std::min(text.size(), end + 1));
    }
}

void add_worlds(Words* words) {
    add_words_of(sim::built_in_world_text(), words);
    for (const char* sign : {"{", "}", "[", "]", ",", ":", "\"\"", "null", "true", "false", "1e9"}) {
        words->insert(sign);
    }
}

void add_scripts(Words* words) {
    fuzz::SilentSim sim;
    for (const std::string& line : sim.obey("help")) {
        add_words_of(line, words);
    }
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Message& event : profile->events) {
            words->insert(std::string(profile->name) + '.' + std::string(event.name));
        }
    }
    add_protocol("commands", "", words);
}

bool add(std::string_view what, std::string_view profile_name, Words* words) {
    if (what == "worlds") {
        add_worlds(words);
        return true;
    }
    if (what == "scripts") {
        add_scripts(words);
        return true;
    }
    if (what == "captures") {
        add_records(words);
        return add_protocol("both", "", words);
    }
    const bool is_known = what == "events" || what == "commands" || what == "both";
    return is_known && add_protocol(what, profile_name, words);
}

} // namespace

int main(int argc, char** argv) {
    Words words;
    if (argc < 2 || !add(argv[1], argc > 2 ? argv[2] : "", &words)) {
        std::fprintf(stderr, "usage: make_dictionary events [PROFILE] | commands | both | captures | "
                             "worlds | scripts\n");
        return 2;
    }
    print(words);
    return 0;
}
