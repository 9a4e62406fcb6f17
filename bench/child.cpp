// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "child.h"

#include "sockets.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr int kResult = 3;

[[noreturn]] void become(const std::vector<std::string>& command, int processor, int result) {
    stay_on(processor);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    if (result == kResult) {
        fcntl(result, F_SETFD, 0);
    } else {
        dup2(result, kResult);
    }
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    give_up(command[0]);
}

std::string read_all_of(int fd) {
    std::string text;
    std::array<char, 4096> room{};
    ssize_t got = 0;
    while ((got = read(fd, room.data(), room.size())) > 0) {
        text.append(room.data(), static_cast<size_t>(got));
    }
    return text;
}

} // namespace

void stay_on(int processor) {
    if (processor >= 0) {
        cpu_set_t set;
        CPU_ZERO(&set);
        CPU_SET(static_cast<size_t>(processor), &set);
        sched_setaffinity(0, sizeof set, &set);
    }
}

TempDirectory::TempDirectory(const std::string& parent) : path_(parent + "/vym-bench.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
        give_up(path_);
    }
}

TempDirectory::~TempDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Child::Child(const std::vector<std::string>& command, int processor) : pid_(-1), result_(-1) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        give_up("pipe");
    }
    pid_ = fork();
    if (pid_ < 0) {
        give_up("fork");
    }
    if (pid_ == 0) {
        become(command, processor, ends[1]);
    }
    close(ends[1]);
    result_ = ends[0];
}

Child::~Child() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(result_);
}

std::string Child::result() {
    std::string text = read_all_of(result_);
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? text : std::string();
}

std::string output_of(const std::string& command) {
    return Child({"/bin/sh", "-c", "{ " + command + "; } >&3 2> /dev/null"}, -1).result();
}

bool on_path(const std::string& program) {
    return !output_of("command -v " + program).empty();
}

} // namespace bench
