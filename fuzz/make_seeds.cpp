// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Inputs to begin with, from the description of the protocol: each message with plain values, with
// those that blocks escape, and with the greatest. usage: make_seeds DIRECTORY

#include "capture/format.h"
#include "capture/writer.h"
#include "protocol/protocol.h"
#include "tests/protocol/generated_values.h"
#include "world_file.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

const std::string kNul(1, '\0');
// How the input of a target that reads in pieces begins: everything at once, and in pieces of 7, 31, 1
// and 72 bytes.
const std::string kWhole(4, '\xFF');
const std::string kPieces("\x06\x1E\x00\x47", 4);

struct Way {
    const char* name;
    generated::Kind kind;
};
constexpr Way kWays[] = {{"plain", generated::Kind::kSmall},
                         {"escaped", generated::Kind::kSpecial},
                         {"greatest", generated::Kind::kMaximum}};

void write(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

/// As the library records one command, or what one read has brought.
void record(std::string* file, bool is_command, std::string_view text) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, capture::kPiece);
        text.remove_prefix(piece.size());
        capture::append_piece(file, is_command, static_cast<int64_t>(file->size()), piece);
    }
}

std::string encoded(const protocol::Message& message, generated::Kind kind) {
    std::string all;
    const size_t rounds = kind == generated::Kind::kSmall ? generated::Rounds(message.fields) : 1;
    for (size_t round = 0; round < rounds; ++round) {
        all += protocol::encode(message, generated::Values(kind, round).Of(message)) + kNul;
    }
    return all;
}

void write_seeds(const protocol::Profile& profile, const Way& way, const std::filesystem::path& root) {
    const std::string name(profile.name);
    std::string events;
    std::string commands;
    std::string texts(2 * sizeof(int64_t), '\0'); // two times
    std::string file(capture::kFileHeader);
    for (const protocol::Message& event : profile.events) {
        const std::string text = encoded(event, way.kind);
        write(root / (name + "_events") / (std::string(event.name) + "." + way.name), text);
        write(root / "protocol_decoder" / (name + "_" + std::string(event.name) + "." + way.name),
              text.substr(0, text.find('\0')));
        events += text;
        record(&file, false, text);
    }
    for (const protocol::Message& command : profile.commands) {
        const std::string text = encoded(command, way.kind);
        const std::string line = "AT#" + text.substr(0, text.find('\0'));
        write(root / "protocol_decoder" /
                  (name + "_" + std::string(command.name) + "_command." + way.name),
              line);
        commands += line + "\r\n";
        texts.append(line).append("\r\n").append(kNul);
        record(&file, true, line + "\r\n");
    }
    for (const char* target : {"capture", "trace_scrub", "sim_replay"}) {
        write(root / target / (name + "." + way.name), file);
    }
    write(root / "trace_views" / (name + "." + way.name), texts + events);
    write(root / "receive_loop" / (name + "." + way.name + ".whole"), kWhole + events);
    write(root / "receive_loop" / (name + "." + way.name + ".pieces"), kPieces + events);
    write(root / "sim_commands" / (name + "." + way.name), kWhole + "AT#PB\r\n" + commands);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_seeds DIRECTORY\n");
        return 2;
    }
    std::filesystem::remove_all(argv[1]);
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const Way& way : kWays) {
            write_seeds(*profile, way, argv[1]);
        }
    }
    write(std::filesystem::path(argv[1]) / "sim_world" / "built_in", sim::built_in_world_text());
    return 0;
}
