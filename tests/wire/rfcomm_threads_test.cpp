// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Many threads on the same sockets at once: whatever meets, nothing is used after it is gone, nothing
// mixes, and everybody comes back. What is written here makes most sense under the sanitizers.

#include "wire/rfcomm_support.h"

#include <algorithm>
#include <map>
#include <thread>

#include <sys/socket.h>

namespace {

using support::ReadBytes;
using support::SocketPair;
using wire::Message;
using ClientSocket = vym_bluetooth_socket_t*;

class RfcommThreads : public wire::RfcommTest {
protected:
    void TearDown() override {
        Join();
        wire::RfcommTest::TearDown();
    }
    void Run(const std::function<void()>& work) { threads_.emplace_back(work); }
    void Join() {
        for (std::thread& one : threads_) {
            one.join();
        }
        threads_.clear();
    }
    // Takes what the module has written.
    static void Drain(const SocketPair& end) {
        std::array<char, 4096> room{};
        recv(end.Near(), room.data(), room.size(), MSG_DONTWAIT);
    }
    // All that a socket gives until its end.
    static std::string ReadToTheEnd(ClientSocket sock, size_t most = 1000) {
        std::string all;
        for (std::string got = Read(sock, most); got.rfind("-1", 0) != 0; got = Read(sock, most)) {
            all += got;
        }
        return all;
    }

private:
    std::vector<std::thread> threads_;
};

TEST_F(RfcommThreads, AStreamArrivesWholeWhileOthersWrite) {
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    std::string sent;
    for (int i = 0; i < 100; ++i) {
        sent += "message " + std::to_string(i) + ";";
    }
    std::string got;
    Run([&] {
        while (got.size() < sent.size()) {
            got += Read(sock, 7);
        }
    });
    Run([&] {
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(Write(sock, "x"), 1);
        }
    });
    for (size_t at = 0; at < sent.size(); at += 10) {
        Feed(end, Message(0x1234, 1, sent.substr(at, 10)));
    }
    EXPECT_EQ(ReadBytes(end.Near(), 800).size(), 800U);
    Join();
    EXPECT_EQ(got, sent);
    Finish(sock);
}

TEST_F(RfcommThreads, WritesDoNotMix) {
    constexpr int kWriters = 3;
    constexpr int kMessages = 20;
    constexpr size_t kSize = 30000;
    const SocketPair& end = HandOver();
    auto* const sock = Connect();
    for (int writer = 0; writer < kWriters; ++writer) {
        Run([=] {
            const std::string data(kSize, static_cast<char>('a' + writer));
            for (int i = 0; i < kMessages; ++i) {
                EXPECT_EQ(Write(sock, data), static_cast<ssize_t>(kSize));
            }
        });
    }
    std::map<char, int> messages;
    for (int i = 0; i < kWriters * kMessages; ++i) {
        const std::string message = ReadBytes(end.Near(), kSize + 7);
        ASSERT_EQ(message.size(), kSize + 7);
        EXPECT_TRUE(message == Message(0x1234, 3, std::string(kSize, message.back())));
        ++messages[message.back()];
    }
    EXPECT_EQ(messages, (std::map<char, int>{{'a', kMessages}, {'b', kMessages}, {'c', kMessages}}));
    Join();
    Finish(sock);
}

TEST_F(RfcommThreads, ReadersOfOneSocketShareWhatComesAndAllSeeItsEnd) {
    const SocketPair& end = HandOver();
    size_t sent = 0;
    size_t delivered = 0;
    for (int round = 0; round < 10; ++round) {
        auto* const sock = Connect();
        std::array<std::string, 3> got;
        std::atomic<int> inside{0};
        for (std::string& mine : got) {
            Run([&, sock] {
                ++inside;
                mine = ReadToTheEnd(sock, 3);
            });
        }
        Run([&, sock] {
            while (Write(sock, "x") == 1) {
            }
        });
        EXPECT_TRUE(support::WaitUntil([&] { return inside == 3; }));
        for (int i = 0; i < 20; ++i) {
            Feed(end, Message(0x1234, 1, "1234567"));
            sent += 7;
        }
        EXPECT_EQ(ReadBytes(end.Near(), 80).size(), 80U);
        Server().SendEvents({"SF0000001234"});
        // The writer's channel must not fill up before it has seen the end.
        std::atomic<bool> stop{false};
        std::thread drain([&] {
            while (!stop) {
                Drain(end);
            }
        });
        Join();
        stop = true;
        drain.join();
        // The end overtakes data, which then reaches the next connection: it has the same handle. So
        // a round alone says nothing; but in all, nothing may come twice. What marks the end in the
        // buffer may be read, too; it has no digits.
        for (const std::string& some : got) {
            delivered += static_cast<size_t>(std::count_if(
                some.begin(), some.end(), [](char sign) { return sign >= '0' && sign <= '9'; }));
        }
        EXPECT_LE(delivered, sent);
        EXPECT_EQ(Read(sock), "-1 7");
    }
}

TEST_F(RfcommThreads, ConnectionsComeAndGoWhileOthersLook) {
    const SocketPair& end = HandOver();
    std::atomic<ClientSocket> current{nullptr};
    std::atomic<bool> flowing{false};
    std::atomic<bool> stop{false};
    std::atomic<bool> written{false};
    Run([&] {
        while (!stop) {
            auto* const sock = current.load(); // often of a connection that is gone
            vym_rfcomm_get_address(sock);
            Write(sock, "x");
            vym_rfcomm_find_client(wire::kPhone, 5);
        }
    });
    std::thread far([&] {
        while (!written) { // a writer may wait for room until then
            Drain(end);
            if (flowing) {
                Feed(end, Message(0x1234, 1, "data"));
            }
        }
    });
    for (int round = 0; round < 30; ++round) {
        auto* const sock = Connect();
        current = sock;
        flowing = true;
        EXPECT_NE(Read(sock), "");
        Server().SendEvents({"SF0000001234"});
        flowing = false; // what goes on coming would have to be read before the end
        ReadToTheEnd(sock);
    }
    stop = true;
    Join();
    written = true;
    far.join();
}

TEST_F(RfcommThreads, ServersCloseWhileOthersAccept) {
    for (int round = 0; round < 15; ++round) {
        vym_bluetooth_server_socket_t* server = Listen();
        const vym_bluetooth_server_socket_t copy = *server;
        for (int i = 0; i < 3; ++i) {
            Run([copy] {
                vym_bluetooth_server_socket_t mine = copy; // the server's own is freed meanwhile
                EXPECT_EQ(vym_rfcomm_accept(&mine), nullptr);
            });
        }
        CloseServer(server);
        Join();
    }
}

TEST_F(RfcommThreads, TheModuleStopsAndStartsInTheMiddleOfEverything) {
    for (int round = 0; round < 10; ++round) {
        SocketPair& end = HandOver();
        vym_bluetooth_server_socket_t* server = Listen();
        auto* const sock = Connect();
        for (int i = 0; i < 2; ++i) {
            Run([=] { ReadToTheEnd(sock); });
            Run([=] {
                for (int j = 0; j < 50; ++j) {
                    Write(sock, "data");
                }
            });
            Run([=] { EXPECT_EQ(vym_rfcomm_accept(server), nullptr); });
        }
        for (int i = 0; i < 20; ++i) {
            Feed(end, Message(0x1234, 1, "data"));
        }
        vym_rfcomm_done();
        wire::RfcommProfile::Init(wire::Table::kWhole);
        Join();
        CloseServer(server);
        end.CloseNear();
    }
}

TEST_F(RfcommThreads, ChannelsAreReplacedWhileOthersWrite) {
    auto* const sock = Connect();
    std::atomic<bool> stop{false};
    for (int i = 0; i < 2; ++i) {
        Run([&] {
            while (!stop) {
                Write(sock, "data");
            }
        });
    }
    for (int round = 0; round < 15; ++round) {
        SocketPair& end = HandOver();
        const std::string got = ReadBytes(end.Near(), 110);
        EXPECT_EQ(got.substr(got.size() - 11), Message(0x1234, 3, "data"));
        end.CloseNear();
    }
    stop = true;
    Join();
    Finish(sock);
}

} // namespace
