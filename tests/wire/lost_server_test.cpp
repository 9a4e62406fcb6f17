// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A server that goes away, falls silent or stops reading, and an application that ends in the middle of
// it: what waits by nature goes on waiting until it is told to end, everything else returns.

#include "wire/adapter_support.h"
#include "wire/rfcomm_support.h"

#include "vym_audio_stream.h"

#include <array>
#include <sys/socket.h>

namespace {

using support::SocketPair;

constexpr unsigned kClass = 0x240404;
const std::string kClassEvent =
    support::Event(wire::AdapterProperties({wire::Record(4, wire::Number(kClass))}));

class LostServer : public support::AdapterTest {};

TEST_F(LostServer, LeavesEveryCallThatHasALimit) {
    Server().Send(support::Event("PA01") + kClassEvent);
    ASSERT_TRUE(Session().EventsAreHandled());
    Server().CloseClient();
    Server().StopListening();
    EXPECT_EQ(vym_bluetooth_enable(), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_start_discovery(), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_bluetooth_get_class(), static_cast<int>(kClass));
    EXPECT_EQ(vym_bluetooth_get_state(), 1);
    EXPECT_EQ(vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 0, 0, nullptr), -1);
    vym_sdk_done();
    EXPECT_EQ(vym_sdk_init_ex(Session().Directory().c_str()), -1);
}

TEST_F(LostServer, IsFoundAgainByANewStart) {
    for (int i = 0; i < 3; ++i) {
        Server().CloseClient();
        EXPECT_EQ(vym_bluetooth_enable(), BT_STATUS_SUCCESS);
        ASSERT_TRUE(Session().Restart());
        vym_bluetooth_disable();
        Server().ExpectCommand("AT#PC\r\n");
        Server().Send(support::Event("BE01"));
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Adapter().Take(), (std::vector<std::string>{"discovery_state_changed(1)"}));
    }
}

class FullServer : public LostServer {
protected:
    // Sends commands until there is no room, and then waits.
    void FillUp() {
        writer_ = std::make_unique<wire::Sleeper<int>>([this] {
            while (!stop_) {
                vym_bluetooth_start_discovery();
            }
            ended_ = true;
            return 0;
        });
        EXPECT_TRUE(writer_->FallsAsleep());
        stop_ = true;
        EXPECT_FALSE(ended_);
    }
    [[nodiscard]] bool HasEnded() const { return ended_; }
    int WriterEnds() { return writer_->Get(); }

private:
    std::atomic<bool> stop_{false};
    std::atomic<bool> ended_{false};
    std::unique_ptr<wire::Sleeper<int>> writer_;
};

TEST_F(FullServer, LetsAWriterGoOnWhenItReads) {
    FillUp();
    EXPECT_TRUE(support::WaitUntil([&] {
        std::array<char, 65536> room{};
        recv(Server().ClientFd(), room.data(), room.size(), MSG_DONTWAIT);
        return HasEnded();
    }));
    EXPECT_EQ(WriterEnds(), 0);
}

TEST_F(FullServer, LetsAWriterGoWhenItDies) {
    FillUp();
    Server().CloseClient();
    EXPECT_EQ(WriterEnds(), 0);
}

TEST_F(FullServer, LetsAWriterGoAtTheLibrarysEnd) {
    FillUp();
    vym_sdk_done();
    EXPECT_EQ(WriterEnds(), 0);
}

class EndWhileWaiting : public wire::RfcommTest {};

TEST_F(EndWhileWaiting, FreesAGetterAfterItsSecond) {
    Server().Send(kClassEvent);
    ASSERT_TRUE(Session().EventsAreHandled());
    wire::Sleeper<int> getter(vym_bluetooth_get_class);
    Server().ExpectCommand("AT#BA04\r\n");
    vym_bluetooth_done();
    vym_sdk_done();
    EXPECT_EQ(getter.Get(), static_cast<int>(kClass));
}

TEST_F(EndWhileWaiting, FreesReadersAndAcceptsOfALostServer) {
    HandOver();
    vym_bluetooth_socket_t* sock = Connect();
    vym_bluetooth_server_socket_t* server = Listen();
    wire::Sleeper<ssize_t> reader([=] {
        char byte = 0;
        return vym_rfcomm_read(sock, &byte, 1);
    });
    wire::Sleeper<vym_bluetooth_socket_t*> accepter([=] { return vym_rfcomm_accept(server); });
    Server().CloseClient();
    EXPECT_TRUE(reader.FallsAsleep());
    EXPECT_TRUE(accepter.FallsAsleep());
    vym_rfcomm_done();
    EXPECT_EQ(reader.Get(), -1);
    EXPECT_EQ(accepter.Get(), nullptr);
    vym_sdk_done();
    vym_rfcomm_server_close(server);
}

TEST_F(EndWhileWaiting, FreesAWriterWhenTheServerEndsTheDescriptor) {
    SocketPair& end = HandOver();
    vym_bluetooth_socket_t* sock = Connect();
    wire::Sleeper<ssize_t> writer([=] {
        const std::string data(60000, 'x');
        ssize_t written = 0;
        while ((written = vym_rfcomm_write(sock, data.data(), data.size())) > 0) {
        }
        return written;
    });
    EXPECT_TRUE(writer.FallsAsleep());
    end.CloseNear();
    EXPECT_EQ(writer.Get(), -1);
    Finish(sock);
}

class VoiceWriter : public support::AdapterTest {
protected:
    void AfterStop(const support::LeakCheck& leaks) override {
        for (const int fd : leaks.LeftOpen()) {
            close(fd); // the descriptor of the last session stays open
        }
    }
};

TEST_F(VoiceWriter, IsFreedAtTheModulesEnd) {
    audio_stream_callback_t callbacks{};
    const SocketPair audio;
    vym_audio_stream_init(&callbacks);
    Server().Send(support::Event("PD0100000007"));
    Server().SendDescriptor(audio.Far());
    EXPECT_TRUE(Session().EventsAreHandled());
    wire::Sleeper<int> writer([] {
        std::vector<uint8_t> voice(60000);
        int sent = 0;
        while ((sent = vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 0, 60000, voice.data())) > 0) {
        }
        return sent;
    });
    EXPECT_TRUE(writer.FallsAsleep());
    vym_audio_stream_done();
    EXPECT_EQ(writer.Get(), -1);
    vym_sdk_done();
}

} // namespace
