// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "soak/event_soak.h"

#include "soak/application.h"
#include "soak/calls.h"
#include "soak/feeder.h"
#include "soak/process_size.h"
#include "support/temp_dir.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace soak {
namespace {

/** Takes each call, and compares cycle with cycle. */
class Receiver {
public:
    explicit Receiver(const std::vector<std::string>& cycle) : cycle_(cycle) {}

    void Take(const std::string& call) {
        kinds_[call.substr(0, call.find('('))].Add(call);
        all_.Add(call); // the order between the kinds
        ++calls_;
    }

    /** All events before this number have been taken. */
    void TakeNumber(uint64_t number) {
        while (!cycle_[static_cast<size_t>(at_ % cycle_.size())].empty()) {
            ++at_;
        }
        if (number != ++at_) {
            Fail("event " + std::to_string(at_) + " was expected, " + std::to_string(number) + " came");
            at_ = number;
        }
        if (at_ % cycle_.size() == 0) {
            EndCycle();
        }
    }

    /** False when that takes longer than a minute without another cycle. */
    bool WaitForCycles(uint64_t cycles) {
        std::unique_lock<std::mutex> lock(mutex_);
        for (uint64_t before = cycles_; cycles_ < cycles && problem_.empty(); before = cycles_) {
            if (!changed_.wait_for(lock, std::chrono::minutes(1),
                                   [&] { return cycles_ > before || !problem_.empty(); })) {
                problem_ = "nothing came for a minute";
            }
        }
        return problem_.empty();
    }

    std::string Problem() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return problem_;
    }
    uint64_t CallCount() const { return calls_; }
    size_t KindCount() const { return reference_.size(); }

private:
    void Fail(const std::string& problem) {
        const std::lock_guard<std::mutex> lock(mutex_);
        problem_ = problem_.empty() ? problem : problem_;
        changed_.notify_all();
    }

    void EndCycle() {
        if (cycles_ + 1 == kCyclesAlone) {
            reference_ = kinds_;
            reference_of_all_ = all_;
        }
        for (const auto& [kind, calls] : reference_) {
            if (kinds_[kind] != calls) {
                Fail("cycle " + std::to_string(cycles_ + 1) + ": " + kind + " came " +
                     std::to_string(kinds_[kind].count) + " times, " + std::to_string(calls.count) +
                     " times with each event alone, or with other values");
            }
        }
        if (cycles_ + 1 >= kCyclesAlone && all_ != reference_of_all_) {
            Fail("cycle " + std::to_string(cycles_ + 1) + ": callbacks came in another order");
        }
        kinds_.clear();
        all_ = {};
        const std::lock_guard<std::mutex> lock(mutex_);
        ++cycles_;
        changed_.notify_all();
    }

    const std::vector<std::string>& cycle_;
    std::map<std::string, Calls> kinds_;
    std::map<std::string, Calls> reference_;
    Calls all_;
    Calls reference_of_all_;
    uint64_t at_ = 0;
    uint64_t calls_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    uint64_t cycles_ = 0;
    std::string problem_;
};

Receiver* receiver = nullptr;

void TakeRssi(bt_bdaddr_t address, uint8_t /*status*/, uint8_t /*rssi*/) {
    uint64_t number = 0;
    for (int i = 5; i >= 0; --i) {
        number = number << 8U | address.address[i];
    }
    receiver->TakeNumber(number);
}

int ListenIn(const std::string& directory) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s/vym_socket", directory.c_str());
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool listens = bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    return listens && listen(fd, 1) == 0 ? fd : -1;
}

bool Report(Receiver& all, bool flat, uint64_t events) {
    std::fprintf(stderr, "  %llu events sent, %llu callbacks of %zu kinds received\n",
                 static_cast<unsigned long long>(events),
                 static_cast<unsigned long long>(all.CallCount()), all.KindCount());
    const std::string problem = all.Problem();
    if (!problem.empty()) {
        std::fprintf(stderr, "  WRONG: %s\n", problem.c_str());
    }
    if (!flat) {
        std::fprintf(stderr, "  WRONG: the process has grown\n");
    }
    return problem.empty() && flat;
}

} // namespace

bool SoakEvents(uint64_t count) {
    const std::vector<std::string> cycle = MakeCycle();
    const uint64_t cycles = std::max<uint64_t>(count / cycle.size(), 2 * kCyclesAlone) + 1;
    const support::TempDir directory;
    // The capture is written, and kept nowhere.
    std::filesystem::create_symlink("/dev/null", directory.Path() + "/client_sock.log");
    const int listener = ListenIn(directory.Path());
    const pid_t server = fork();
    if (server == 0) {
        Feed(listener, cycle, cycles);
        _exit(EXIT_SUCCESS);
    }
    close(listener);
    Receiver all(cycle);
    receiver = &all;
    e2e::Taker() = [&all](const std::string& call) { all.Take(call); };
    Flatness library("library", getpid());
    bool flat = false;
    {
        const Application application(directory.Path(), TakeRssi);
        vym_bluetooth_read_address(); // ready
        all.WaitForCycles(kCyclesAlone + cycles / 5);
        library.WarmedUp();
        all.WaitForCycles(cycles);
        flat = library.IsFlat();
    }
    waitpid(server, nullptr, 0);
    return Report(all, flat, cycles * cycle.size());
}

} // namespace soak
