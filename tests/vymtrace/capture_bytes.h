// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Captures made byte by byte, and the program run over them.
#ifndef VYM_TESTS_VYMTRACE_CAPTURE_BYTES_H
#define VYM_TESTS_VYMTRACE_CAPTURE_BYTES_H

#include "support/capture_reader.h"
#include "support/temp_dir.h"
#include "vymtrace/program.h"

#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace capture_bytes {

inline const std::string kHeader("btsnoop\0\0\0\0\1\0\0\x03\xEA", 16);

inline std::string BigEndian(uint64_t number, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(number >> (8 * i) & 0xFFU);
    }
    return text;
}

/** 2026-11-22 14:03:07.000000 UTC, in microseconds since the beginning of year 0. */
constexpr uint64_t kNoon = 0x00E33E90FEF4FCC0;

/** A record `ms` milliseconds after kNoon. */
inline std::string Record(uint32_t flags, const std::string& packet, uint64_t ms) {
    return BigEndian(packet.size(), 4) + BigEndian(packet.size(), 4) + BigEndian(flags, 4) +
           BigEndian(0, 4) + BigEndian(kNoon + ms * 1000, 8) + packet;
}

inline std::string Command(const std::string& piece, uint64_t ms = 0) {
    return Record(2, std::string("\x01\x01\xFC", 3) + static_cast<char>(piece.size()) + piece, ms);
}

/** What was received: events with their NULs. */
inline std::string Events(const std::string& piece, uint64_t ms = 0) {
    return Record(3, std::string("\x04\xFF", 2) + static_cast<char>(piece.size()) + piece, ms);
}

struct Result {
    int code = -1;
    std::string out;
    /** Without the directory of the capture. */
    std::string err;
};

/** A directory for captures, in which the program runs. */
class Traces {
public:
    [[nodiscard]] std::string Path(const std::string& name) const { return dir_.Path() + "/" + name; }

    std::string Write(const std::string& bytes, const std::string& name = "client_sock.log") const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    [[nodiscard]] Result Run(const std::vector<std::string>& arguments) const {
        std::vector<const char*> argv = {"vymtrace"};
        for (const std::string& argument : arguments) {
            argv.push_back(argument.c_str());
        }
        const std::string path = Path("stdout");
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        std::ostringstream err;
        Result result;
        result.code = trace::run_program(static_cast<int>(argv.size()), argv.data(), fd, err);
        close(fd);
        result.out = support::ReadFile(path);
        result.err = err.str();
        for (size_t at = 0; (at = result.err.find(dir_.Path() + "/")) != std::string::npos;) {
            result.err.erase(at, dir_.Path().size() + 1);
        }
        return result;
    }

    /** The program over these records, in UTC. */
    [[nodiscard]] Result Run(const std::string& records, std::vector<std::string> options) const {
        options.push_back("--utc");
        options.push_back(Write(kHeader + records));
        return Run(options);
    }

private:
    support::TempDir dir_;
};

} // namespace capture_bytes

#endif
