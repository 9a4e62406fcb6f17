// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Words for the fuzzer, from the description of the protocol.
// usage: make_dictionary events [profile] | commands | both

#include "protocol/protocol.h"

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

} // namespace

int main(int argc, char** argv) {
    const std::string_view what = argc > 1 ? argv[1] : "";
    const std::string_view profile_name = argc > 2 ? argv[2] : "";
    if (what != "events" && what != "commands" && what != "both") {
        std::fprintf(stderr, "usage: make_dictionary events [PROFILE] | commands | both\n");
        return 2;
    }
    Words words;
    for (const protocol::Profile* profile : protocol::profiles()) {
        if (!profile_name.empty() && profile->name != profile_name) {
            continue;
        }
        if (what != "commands") {
            add_messages(profile->events, "", std::string(1, '\0'), &words);
        }
        if (what != "events") {
            add_messages(profile->commands, "AT#", "\r\n", &words);
        }
    }
    if (words.empty()) {
        std::fprintf(stderr, "make_dictionary: there is no profile %s\n", argv[2]);
        return 1;
    }
    add_values(&words);
    print(words);
    return 0;
}
