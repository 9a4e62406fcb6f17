// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "client_threads.h"

#include "unique_fd.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <string_view>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace sim {
namespace {

constexpr std::string_view kState = "State:\t";
/// Asleep, a zombie, dead.
constexpr std::string_view kAtRest = "SZX";

/// By thread: how often it has gone to sleep, or was made to make way.
using Switches = std::map<std::string, std::string>;

std::string_view line_of(std::string_view text, std::string_view name) {
    const size_t begin = text.find(name);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find('\n', begin) - begin);
}

/// What the kernel says of a thread; empty when it has ended.
std::string status_of(const std::string& task) {
    const UniqueFd file(open((task + "/status").c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 4096> text{};
    const ssize_t size = file ? read(file.get(), text.data(), text.size()) : -1;
    return size > 0 ? std::string(text.data(), static_cast<size_t>(size)) : std::string();
}

/// Adds the threads that are at rest. False if there is one that is not.
bool collect(const std::string& tasks, Switches& all) {
    const std::string own = std::to_string(syscall(SYS_gettid));
    std::error_code error;
    for (std::filesystem::directory_iterator task(tasks, error), end; !error && task != end;
         task.increment(error)) {
        const std::string name = task->path().filename().string();
        if (name == own) {
            continue;
        }
        const std::string status = status_of(task->path().string());
        const std::string_view state = line_of(status, "State:").substr(0, kState.size() + 1);
        if (state.empty() || kAtRest.find(state.back()) == std::string_view::npos) {
            return false;
        }
        all[name] = std::string(line_of(status, "voluntary_ctxt_switches:"))
                        .append(line_of(status, "nonvoluntary_ctxt_switches:"));
    }
    // There is no such process any more.
    return !error || error == std::errc::no_such_file_or_directory;
}

} // namespace

ClientThreads::ClientThreads(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot tell whose a socket is");
    }
    tasks_ = "/proc/" + std::to_string(peer.pid) + "/task";
}

bool ClientThreads::all_wait() const {
    // One look is not enough: a thread that was seen asleep may be woken by the one that is looked at
    // next. A thread that sleeps in both looks and has not gone to sleep in between slept all the time
    // from one to the other, and there is a moment that lies within these times of all threads.
    Switches first;
    Switches second;
    return collect(tasks_, first) && collect(tasks_, second) && first == second;
}

} // namespace sim
