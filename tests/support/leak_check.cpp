// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/leak_check.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

#include <fcntl.h>

namespace support {

namespace fs = std::filesystem;

std::map<int, std::string> OpenDescriptors() {
    std::map<int, std::string> all;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const fs::path target = fs::read_symlink(entry.path(), ignored);
        all[std::stoi(entry.path().filename().string())] = target.string();
    }
    // The listing's own descriptor is closed by now.
    for (auto entry = all.begin(); entry != all.end();) {
        entry = IsOpen(entry->first) ? std::next(entry) : all.erase(entry);
    }
    return all;
}

size_t CountThreads() {
    size_t count = 0;
    std::error_code ended; // a thread may end while the directory is read
    for (auto entry = fs::directory_iterator("/proc/self/task", ended);
         !ended && entry != fs::directory_iterator(); entry.increment(ended)) {
        ++count;
    }
    return count;
}

bool IsOpen(int fd) {
    return fcntl(fd, F_GETFD) >= 0;
}

namespace {

// The thread sanitizer starts a thread of its own beside the first one that a program makes.
size_t CountThreadsOfTheProgram() {
#if defined(__SANITIZE_THREAD__)
    const size_t before = CountThreads();
    std::thread([] {}).join();
    WaitUntil([before] {
        return CountThreads() <= before + 1;
    }); // a joined thread may be listed for a moment
#endif
    return CountThreads();
}

} // namespace

LeakCheck::LeakCheck() : descriptors_(OpenDescriptors()), threads_(CountThreadsOfTheProgram()) {}

::testing::AssertionResult LeakCheck::NothingLeft(Milliseconds limit) const {
    const auto settled = [this] {
        return OpenDescriptors() == descriptors_ && CountThreads() <= threads_;
    };
    if (WaitUntil(settled, limit)) {
        return ::testing::AssertionSuccess();
    }
    ::testing::AssertionResult failure = ::testing::AssertionFailure();
    failure << "threads: " << threads_ << " before, " << CountThreads() << " now";
    std::map<int, std::string> now = OpenDescriptors();
    for (const int number : LeftOpen()) {
        failure << "\ndescriptor " << number << " was opened and left: " << now[number];
    }
    for (const auto& [number, target] : descriptors_) {
        if (now.count(number) == 0) {
            failure << "\ndescriptor " << number << " was closed: " << target;
        }
    }
    return failure;
}

std::vector<int> LeakCheck::LeftOpen() const {
    std::vector<int> left;
    for (const auto& [number, target] : OpenDescriptors()) {
        const auto before = descriptors_.find(number);
        if (before == descriptors_.end() || before->second != target) {
            left.push_back(number);
        }
    }
    return left;
}

} // namespace support
