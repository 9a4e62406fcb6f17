// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The same interface from C++: what is started is ended by a destructor.
//
// usage: power DIRECTORY      (the directory of the server's socket)
#include <chrono>
#include <future>
#include <iostream>
#include <mutex>
#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

namespace {

std::promise<bool> switched;
std::once_flag told; // the adapter may be switched more than once

class Session {
public:
    Session(const char* directory, bluetooth_callback_t* callbacks)
        : connection_(vym_sdk_init_ex(directory)) {
        vym_bluetooth_init(callbacks);
    }
    ~Session() {
        vym_bluetooth_done();
        vym_sdk_done();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[nodiscard]] bool IsConnected() const { return connection_ >= 0; }

private:
    int connection_;
};

} // namespace

int main(int argc, char** argv) {
    static bluetooth_callback_t callbacks{};
    callbacks.state_changed_cb = [](uint8_t state) { // captures nothing, so it is a C function
        std::call_once(told, [state] { switched.set_value(state == BT_STATE_ON); });
    };
    const Session session(argc > 1 ? argv[1] : nullptr, &callbacks);
    if (!session.IsConnected()) {
        return 1;
    }
    vym_bluetooth_enable();
    auto is_on = switched.get_future();
    if (is_on.wait_for(std::chrono::seconds(30)) != std::future_status::ready || !is_on.get()) {
        std::cerr << "power: the server did not switch Bluetooth on\n";
        return 1;
    }
    const bt_bdname_t name = *vym_bluetooth_get_name(); // the library writes its own lines meanwhile
    std::cout << "power: " << reinterpret_cast<const char*>(name.name) << " is on\n";
    return 0;
}
