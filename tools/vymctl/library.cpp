// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "library.h"

#include "hub.h"
#include "profiles.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vym/vym_audio_stream.h>
#include <vym/vym_debug.h>
#include <vym/vym_sdk.h>

namespace vymctl {
namespace {

/// A directory of our own in which the server's socket seems to be: the library empties the capture of
/// the directory that it is given.
class Detour {
public:
    explicit Detour(const std::string& directory) {
        const char* chosen = std::getenv("TMPDIR");
        path_ =
            std::string(chosen != nullptr && chosen[0] != '\0' ? chosen : "/tmp") + "/vymctl.XXXXXX";
        std::array<char, PATH_MAX> real{};
        if (realpath((directory + "/vym_socket").c_str(), real.data()) == nullptr) {
            throw NoServer(directory + "/vym_socket: " + std::strerror(errno));
        }
        if (mkdtemp(path_.data()) == nullptr ||
            symlink(real.data(), (path_ + "/vym_socket").c_str()) != 0) {
            throw NoServer("no temporary directory can be made in " +
                           path_.substr(0, path_.rfind('/')) + ": " + std::strerror(errno));
        }
    }
    ~Detour() {
        unlink((path_ + "/vym_socket").c_str());
        unlink((path_ + "/client_sock.log").c_str());
        rmdir(path_.c_str());
    }
    Detour(const Detour&) = delete;
    Detour& operator=(const Detour&) = delete;
    Detour(Detour&&) = delete;
    Detour& operator=(Detour&&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

sigset_t ending_signals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

} // namespace

std::string why_no_server(const std::string& directory) {
    const std::string path = directory + "/vym_socket";
    struct stat info {};
    if (stat(directory.c_str(), &info) != 0) {
        return directory + ": " + std::strerror(errno);
    }
    if (stat(path.c_str(), &info) != 0) {
        return path + ": " + std::strerror(errno);
    }
    if (!S_ISSOCK(info.st_mode)) {
        return path + " is no socket";
    }
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
        return path + " is too long for a socket";
    }
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool good = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    const int error = errno;
    close(fd);
    return good ? "" : path + ": " + std::strerror(error);
}

Library& library() {
    static Library s_library;
    return s_library;
}

Library::Library() {
    // Threads that are made from here on do not see them, the library's included.
    const sigset_t set = ending_signals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signals_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    wake_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    watcher_ = std::thread([this] { watch(); });
}

Library::~Library() {
    stop();
    ending_ = true;
    wake();
    watcher_.join();
    close(wake_);
    close(signals_);
    const sigset_t set = ending_signals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void Library::wake() const {
    eventfd_write(wake_, 1);
}

void Library::watch() {
    while (!ending_) {
        const int connection = connection_;
        std::array<pollfd, 3> entries{
            {{wake_, POLLIN, 0}, {signals_, POLLIN, 0}, {connection, POLLRDHUP, 0}}};
        poll(entries.data(), entries.size(), -1);
        if (entries[0].revents != 0) {
            eventfd_t count = 0;
            eventfd_read(wake_, &count);
        }
        signalfd_siginfo signal{};
        if (entries[1].revents != 0 && read(signals_, &signal, sizeof signal) > 0) {
            hub().interrupt();
        }
        // Only while it is still this one.
        int expected = connection;
        if (entries[2].revents != 0 && connection_.compare_exchange_strong(expected, -1)) {
            close(connection);
            publish(event_type("core.server-gone"), {});
            hub().server_gone(true);
        }
    }
}

void Library::connected(int fd) {
    started_ = true;
    hub().server_gone(false);
    connection_ = fcntl(fd, F_DUPFD_CLOEXEC, 3);
    wake();
    for (const Profile& profile : profiles()) {
        restart(profile.name);
    }
}

void Library::start(const std::string& directory, const std::string& capture) {
    stop();
    const Detour detour(directory);
    const int fd = vym_sdk_init_ex(detour.path().c_str());
    vym_debug_close();
    if (fd <= 0) {
        vym_sdk_done();
        throw NoServer(why_no_server(directory));
    }
    std::string writable = capture;
    if (!capture.empty() && vym_debug_log_open(writable.data()) != 1) {
        vym_sdk_done();
        throw Usage("the capture \"" + capture + "\" cannot be written");
    }
    connected(fd);
}

void Library::start_as_an_application(const char* directory) {
    stop();
    const int fd = vym_sdk_init_ex(directory);
    if (fd <= 0) {
        vym_sdk_done();
        throw NoServer(why_no_server(directory == nullptr ? kDefaultDirectory : directory));
    }
    connected(fd);
}

void Library::stop() {
    if (!started_) {
        return;
    }
    const int connection = connection_.exchange(-1);
    if (connection >= 0) {
        close(connection);
    }
    wake();
    for (auto it = profiles().rbegin(); it != profiles().rend(); ++it) {
        halt(it->name);
    }
    vym_sdk_done();
    vym_audio_stream_done(); // a hand-over on its way has started a reader again
    started_ = false;
}

} // namespace vymctl
