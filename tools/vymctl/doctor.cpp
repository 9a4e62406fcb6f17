// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A page for a bug report: what is there, and what answers.
#include "output.h"
#include "session.h"

#include <cerrno>
#include <cstring>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vym/vym_bluetooth.h>

namespace vymctl {
namespace {

std::string permissions(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        return std::strerror(errno);
    }
    const passwd* owner = getpwuid(info.st_uid);
    const group* team = getgrgid(info.st_gid);
    const char* kind = S_ISDIR(info.st_mode) ? "directory" : S_ISSOCK(info.st_mode) ? "socket" : "file";
    char mode[8];
    std::snprintf(mode, sizeof mode, "%04o", info.st_mode & 07777U);
    std::string text = std::string(kind) + ", mode " + mode + ", owner " +
                       (owner == nullptr ? std::to_string(info.st_uid) : owner->pw_name) + ':' +
                       (team == nullptr ? std::to_string(info.st_gid) : team->gr_name);
    if (S_ISREG(info.st_mode)) {
        text += ", " + std::to_string(info.st_size) + " bytes";
    }
    if (access(path.c_str(), R_OK | W_OK) != 0) {
        text += ", not readable and writable for this user";
    }
    return text;
}

class Page {
public:
    explicit Page(bool json) : json_(json) {}
    void add(const std::string& name, const std::string& value) {
        if (json_) {
            object_[name] = value;
        } else {
            output().line(name + std::string(name.size() < 12 ? 12 - name.size() : 1, ' ') + value);
        }
    }
    void end(int code) {
        if (json_) {
            output().line(dump({{"result", "doctor"}, {"code", code}, {"value", object_}}));
        }
    }

private:
    bool json_;
    Json object_ = Json::object();
};

std::string milliseconds_since(std::chrono::steady_clock::time_point start) {
    const auto time = std::chrono::steady_clock::now() - start;
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()) + " ms";
}

} // namespace

int Session::doctor(const Words& /*arguments*/, Deadline deadline) {
    Page page(options_.json);
    utsname system{};
    uname(&system);
    page.add("system", std::string(system.sysname) + ' ' + system.release + ' ' + system.machine);
    page.add("user", std::to_string(getuid()) + ':' + std::to_string(getgid()));
    page.add("directory", options_.directory + ": " + permissions(options_.directory));
    page.add("socket", permissions(options_.directory + "/vym_socket"));
    page.add("capture", permissions(options_.directory + "/client_sock.log"));
    int code = kDone;
    try {
        connect();
        page.add("connection", "accepted");
        const auto start = std::chrono::steady_clock::now();
        code = confirm(deadline);
        page.add("answer", code == kDone ? "after " + milliseconds_since(start)
                                         : "none; another client may be connected");
        if (code == kDone) {
            page.add("server", vym_bluetooth_get_version());
            page.add("adapter", to_text(*vym_bluetooth_get_address()) + ' ' +
                                    reinterpret_cast<const char*>(vym_bluetooth_get_name()->name) +
                                    (vym_bluetooth_get_state() == BT_STATE_ON ? ", on" : ", off"));
        }
    } catch (const NoServer& error) {
        page.add("connection", std::string("refused: ") + error.what());
        code = kNoServer;
    }
    page.end(code);
    return code;
}

} // namespace vymctl
