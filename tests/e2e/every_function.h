// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The library against the simulator, function by function: what was called and what came of it.
#ifndef VYM_TESTS_E2E_EVERY_FUNCTION_H
#define VYM_TESTS_E2E_EVERY_FUNCTION_H

#include "e2e/recording.h"
#include "e2e/running_sim.h"
#include "support/end_all.h"
#include "support/exercised.h"
#include "support/output_capture.h"
#include "vym_sdk.h"

#include <cstring>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace e2e {

// The world's devices.
inline constexpr bt_bdaddr_t kPhone{{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};
inline constexpr bt_bdaddr_t kSpeaker{{0x66, 0x55, 0x44, 0x33, 0x22, 0x11}};
inline constexpr bt_bdaddr_t kStrap{{0x74, 0x72, 0x61, 0x65, 0x48, 0xC6}};
inline constexpr bt_bdaddr_t kSensor{{0x61, 0x6D, 0x69, 0x6C, 0x43, 0xE2}};
inline constexpr bt_bdaddr_t kTablet{{0x74, 0x6C, 0x62, 0x61, 0x54, 0xD2}};
inline constexpr bt_bdaddr_t kLaptop{{0x70, 0x6F, 0x74, 0x70, 0x4C, 0x2E}};
inline constexpr bt_bdaddr_t kReceiver{{0x01, 0x53, 0x53, 0x4E, 0x47, 0x2A}};
/** Nobody has it. */
inline constexpr bt_bdaddr_t kNobody{{0x06, 0x05, 0x04, 0x03, 0x02, 0x01}};

/** What the simulator of this directory answers to an order of its control language, with its last line
 * "ok" or "error: ...". */
inline std::string OrderOf(const std::string& directory, const std::string& order) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = directory + "/vym_control";
    memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0) << path;
    const std::string line = order + "\n";
    EXPECT_EQ(send(fd, line.data(), line.size(), MSG_NOSIGNAL), static_cast<ssize_t>(line.size()));
    shutdown(fd, SHUT_WR);
    std::string answer;
    char piece[1024];
    for (ssize_t count = 0; (count = recv(fd, piece, sizeof piece, 0)) > 0;) {
        answer.append(piece, static_cast<size_t>(count));
    }
    close(fd);
    return answer;
}

inline uint8_t* Bytes(const char* text) {
    return reinterpret_cast<uint8_t*>(const_cast<char*>(text));
}

/** A simulator, and a library with all profiles started and the adapter on. */
class EveryFunction : public ::testing::Test {
protected:
    void SetUp() override {
        Heard().Reset();
        sim_ = std::make_unique<RunningSim>(std::vector<std::string>{"--log"});
        ASSERT_GT(vym_sdk_init_ex(Directory().c_str()), 0);
        StartProfiles(callbacks_);
        vym_audio_stream_init(&callbacks_.audio);
        vym_bluetooth_enable();
        EXPECT_TRUE(Hears("bluetooth.state_changed", BT_STATE_ON));
    }

    void TearDown() override { end_all(); }

    [[nodiscard]] const std::string& Directory() const { return sim_->Directory(); }

    /** This callback comes, or has come and was not asked for yet. A std::string stands for its own
     * characters. */
    template <class... Arguments>
    [[nodiscard]] static ::testing::AssertionResult Hears(const std::string& name,
                                                          const Arguments&... arguments) {
        return Heard().WaitAndRemove(CallText(name, arguments...));
    }

    /** The simulator's log has this, behind what was found last. */
    [[nodiscard]] ::testing::AssertionResult Notes(const std::string& text) {
        size_t at = std::string::npos;
        if (support::WaitUntil([&] {
                at = sim_->Program().Err().find(text, noted_);
                return at != std::string::npos;
            })) {
            noted_ = at + text.size();
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "not noted: " << text << "\nin:\n"
                                             << sim_->Program().Err().substr(noted_);
    }

    /** What the simulator answers to this order of its control language, with "ok\n" at its end. */
    [[nodiscard]] std::string Order(const std::string& order) const {
        return OrderOf(Directory(), order);
    }

    /** Waits until a line of "world show" has this. */
    [[nodiscard]] ::testing::AssertionResult WorldShows(const std::string& text) const {
        std::string shown;
        if (support::WaitUntil([&] {
                shown = Order("world show");
                return shown.find(text) != std::string::npos;
            })) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "not shown: " << text << "\nin:\n" << shown;
    }

    [[nodiscard]] Callbacks& Table() { return callbacks_; }

private:
    support::OutputCapture output_;
    Callbacks callbacks_;
    std::unique_ptr<RunningSim> sim_;
    size_t noted_ = 0;
};

} // namespace e2e

#endif
