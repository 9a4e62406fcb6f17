// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/process.h"

#include "support/capture_reader.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

Process::Process(const std::vector<std::string>& arguments) {
    std::vector<std::string> copy = arguments;
    std::vector<char*> argv;
    argv.reserve(copy.size() + 1);
    for (std::string& argument : copy) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    const std::string out = directory_.Path() + "/out";
    const std::string err = directory_.Path() + "/err";
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    const int error = posix_spawnp(&pid_, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        ADD_FAILURE() << "cannot start " << arguments[0] << ": " << strerror(error);
        pid_ = -1;
    }
}

Process::~Process() {
    if (pid_ > 0 && code_ < 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

std::string Process::Out() const {
    return ReadFile(directory_.Path() + "/out");
}

std::string Process::Err() const {
    return ReadFile(directory_.Path() + "/err");
}

bool Process::WaitForOut(const std::string& text, Milliseconds limit) const {
    return WaitUntil([&] { return Out().find(text) != std::string::npos; }, limit);
}

void Process::Signal(int number) const {
    if (pid_ > 0 && code_ < 0) {
        kill(pid_, number);
    }
}

int Process::ExitCode(Milliseconds limit) {
    int status = 0;
    if (pid_ > 0 && code_ < 0 &&
        WaitUntil([&] { return waitpid(pid_, &status, WNOHANG) == pid_; }, limit)) {
        code_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return code_;
}

std::string OutputOf(const std::vector<std::string>& arguments) {
    Process process(arguments);
    const int code = process.ExitCode(10 * TimeLimit());
    EXPECT_EQ(code, 0) << arguments[0] << " failed; is it installed? " << process.Err();
    return process.Out();
}

std::vector<std::string> BuiltProgram(const std::string& emulator, const std::string& path,
                                      const std::vector<std::string>& arguments) {
    std::vector<std::string> all;
    std::istringstream words(emulator);
    for (std::string word; words >> word;) {
        all.push_back(word);
    }
    all.push_back(path);
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

} // namespace support
