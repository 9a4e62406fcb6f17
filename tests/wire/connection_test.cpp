// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Connecting, failing to connect, and sending commands.

#include "vym_sdk.h"

#include "support/limits.h"
#include "support/session.h"

#include <filesystem>

#include <fcntl.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using support::FakeServer;
using support::TempDir;

void SendCommand(std::string command, int len = 0) {
    send_at_command(command.data(), len);
}

class Connection : public support::SessionTest {};

TEST_F(Connection, TheResultIsTheConnectedDescriptorAndItIsPrinted) {
    EXPECT_GT(Session().Result(), 0);
    const std::string line(
        "\\[\\[[0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{1,6}\\]\\] connect socket successed\\. sd:" +
        std::to_string(Session().Result()) + "\n");
    EXPECT_TRUE(support::Fits(Output().Out(), line));
}

TEST_F(Connection, EveryDescriptorIsClosedInAChildProcess) {
    for (const auto& [fd, target] : support::OpenDescriptors()) {
        if (fd > STDERR_FILENO && target.find("vym-test-") != std::string::npos) {
            EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << target;
        }
        if (target.rfind("socket:", 0) == 0) {
            EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << fd << " " << target;
        }
    }
}

TEST_F(Connection, ACommandIsWrittenAsItIs) {
    SendCommand("AT#PB\r\n");
    Server().ExpectCommand("AT#PB\r\n");
    Server().ExpectNothingMore();
}

TEST_F(Connection, TheLengthGivenWithACommandIsIgnored) {
    SendCommand("AT#PB\r\n", 3);
    SendCommand("AT#PC\r\n", -1);
    SendCommand("AT#PD\r\n", 10000);
    Server().ExpectCommand("AT#PB\r\nAT#PC\r\nAT#PD\r\n");
    Server().ExpectNothingMore();
}

TEST_F(Connection, ALongCommandArrivesWhole) {
    const std::string command = "AT#HH" + std::string(20000, '7') + "\r\n";
    SendCommand(command);
    Server().ExpectCommand(command);
    Server().ExpectNothingMore();
}

TEST_F(Connection, ADeadServerDoesNotKillTheApplication) {
    Server().CloseClient();
    for (int i = 0; i < 10; ++i) {
        SendCommand("AT#PB\r\n");
    }
    Session().Stop();
}

TEST_F(Connection, AServerThatStoppedWritingStillGetsCommands) {
    Server().Shutdown(SHUT_WR);
    SendCommand("AT#PB\r\n");
    Server().ExpectCommand("AT#PB\r\n");
}

TEST_F(Connection, TheServerSeesTheEnd) {
    SendCommand("AT#PB\r\n");
    Session().Stop();
    Server().ExpectCommand("AT#PB\r\n");
    EXPECT_TRUE(Server().SeesEndOfStream());
}

TEST_F(Connection, CommandsAfterTheEndAreDropped) {
    Session().Stop();
    SendCommand("AT#PB\r\n");
    EXPECT_TRUE(Server().SeesEndOfStream());
}

TEST_F(Connection, AStartWhileConnectedEndsTheConnectionBefore) {
    SendCommand("AT#PB\r\n");
    Server().ExpectCommand("AT#PB\r\n");
    EXPECT_GT(vym_sdk_init_ex(Session().Directory().c_str()), 0);
    EXPECT_TRUE(Server().SeesEndOfStream());
    ASSERT_TRUE(Server().Accept());
    SendCommand("AT#PC\r\n");
    Server().ExpectCommand("AT#PC\r\n");
}

class ConnectionStart : public support::QuietTest {
protected:
    void TearDown() override {
        vym_sdk_done();
        support::QuietTest::TearDown();
    }

    static int Start(const std::string& directory) { return vym_sdk_init_ex(directory.c_str()); }

    // Start, one command seen by the server, end.
    static void ExpectWorkingConnection(FakeServer& server, const std::string& directory) {
        ASSERT_GT(Start(directory), 0);
        ASSERT_TRUE(server.Accept());
        SendCommand("AT#PB\r\n");
        server.ExpectCommand("AT#PB\r\n");
        vym_sdk_done();
    }
};

TEST_F(ConnectionStart, ASocketPathOf107CharactersConnects) {
    const TempDir top;
    const std::string directory = top.MakeDirOfLength(107 - std::string("/vym_socket").size());
    FakeServer server(directory);
    ExpectWorkingConnection(server, directory);
}

TEST_F(ConnectionStart, ASocketPathOf108CharactersFailsWithoutAMessage) {
    const TempDir top;
    EXPECT_EQ(Start(top.MakeDirOfLength(108 - std::string("/vym_socket").size())), -1);
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(ConnectionStart, ADirectoryOf255CharactersFailsWithoutAMessage) {
    const TempDir top;
    EXPECT_EQ(Start(top.MakeDirOfLength(255)), -1);
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(ConnectionStart, ADirectoryOf256CharactersOrMoreFails) {
    const TempDir top;
    for (const size_t length : {256U, 257U, 1000U}) {
        EXPECT_EQ(Start(top.MakeDirOfLength(length)), -1);
    }
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(ConnectionStart, ALongDirectoryCutsTheCapturesName) {
    const TempDir top;
    const std::string directory = top.MakeDirOfLength(240);
    EXPECT_EQ(Start(directory), -1);
    EXPECT_TRUE(std::filesystem::exists(directory + "/client_sock.lo"));
    EXPECT_FALSE(std::filesystem::exists(directory + "/client_sock.log"));
}

TEST_F(ConnectionStart, WithoutAServerTheReasonIsPrinted) {
    const TempDir directory;
    EXPECT_EQ(Start(directory.Path()), -1);
    EXPECT_EQ(Output().Out(), "connect socket failed:No such file or directory.\n");
}

TEST_F(ConnectionStart, AServerThatHasGoneRefuses) {
    const TempDir directory;
    const std::string kept = directory.Path() + "/kept";
    {
        const FakeServer server(directory.Path());
        std::filesystem::create_hard_link(directory.Path() + "/vym_socket", kept);
    }
    std::filesystem::rename(kept, directory.Path() + "/vym_socket");
    EXPECT_EQ(Start(directory.Path()), -1);
    EXPECT_EQ(Output().Out(), "connect socket failed:Connection refused.\n");
}

TEST_F(ConnectionStart, WithoutADescriptorForTheSocketTheReasonIsPrinted) {
    const TempDir directory;
    {
        const support::NoMoreDescriptors limit;
        EXPECT_EQ(connect_to_server(directory.Path().c_str()), -1);
    }
    EXPECT_EQ(Output().Out(), "create socket failed:Too many open files.\n");
}

TEST_F(ConnectionStart, UnconnectedCommandsAreDroppedSilently) {
    const TempDir directory;
    EXPECT_EQ(Start(directory.Path()), -1);
    const std::string before = Output().Out();
    SendCommand("AT#PB\r\n");
    EXPECT_EQ(Output().Out(), before);
}

TEST_F(ConnectionStart, CommandsBeforeAnyStartAreDropped) {
    SendCommand("AT#PB\r\n");
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(ConnectionStart, UnconnectedNoDescriptorIsAwaited) {
    const support::SocketPair typed;
    EXPECT_TRUE(support::WriteBytes(typed.Near(), "X"));
    support::StandardInput standard_input;
    standard_input.Replace(typed.Far());
    EXPECT_EQ(recv_data_transport_fd(), 0);
    standard_input.Restore();
    EXPECT_EQ(support::ReadBytes(typed.Far(), 1), "X") << "standard input is not the server";
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(ConnectionStart, WithoutASocketTheReceiveThreadReturnsAtOnce) {
    for (const intptr_t fd : {intptr_t{0}, intptr_t{-1}}) {
        EXPECT_EQ(receive_message_proc(reinterpret_cast<void*>(fd)), nullptr);
    }
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(ConnectionStart, AFailedStartCanBeTriedAgain) {
    const TempDir directory;
    EXPECT_EQ(Start(directory.Path()), -1);
    FakeServer server(directory.Path());
    ExpectWorkingConnection(server, directory.Path());
    server.StopListening();
    EXPECT_EQ(Start(directory.Path()), -1);
    FakeServer again(directory.Path());
    ExpectWorkingConnection(again, directory.Path());
}

TEST_F(ConnectionStart, FailedStartsLeaveNothingBehind) {
    const TempDir directory;
    EXPECT_EQ(Start(directory.Path()), -1);
    const size_t after_one = support::OpenDescriptors().size();
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(Start(directory.Path()), -1);
    }
    EXPECT_EQ(support::OpenDescriptors().size(), after_one);
}

TEST_F(ConnectionStart, EndingAFailedStartLeavesStandardInputOpen) {
    const TempDir directory;
    EXPECT_EQ(Start(directory.Path()), -1);
    vym_sdk_done();
    vym_sdk_done();
    EXPECT_TRUE(support::IsOpen(STDIN_FILENO));
}

TEST_F(ConnectionStart, WorksWithStandardInputClosed) {
    const TempDir directory;
    FakeServer server(directory.Path());
    support::StandardInput standard_input;
    support::StandardInput::Close();
    ExpectWorkingConnection(server, directory.Path());
    server.CloseClient();
    standard_input.Restore();
}

TEST_F(ConnectionStart, WorksWithDescriptorsAbove1023) {
    const TempDir directory;
    FakeServer server(directory.Path());
    const support::ManyDescriptors limit;
    const support::OccupiedDescriptors occupied(1100);
    ASSERT_GE(Start(directory.Path()), 1100);
    ASSERT_TRUE(server.Accept());
    vym_bluetooth_init(support::AdapterRecordingTable());
    server.Send(support::Event("BE01"));
    EXPECT_TRUE(support::AdapterRecord().WaitForEntry("discovery_state_changed(1)"));
    SendCommand("AT#PB\r\n");
    server.ExpectCommand("AT#PB\r\n");
    vym_bluetooth_done();
    vym_sdk_done();
    support::AdapterRecord().Reset();
}

// In a process of its own whose root is `root`: connects, sends one command, ends.
void ConnectBelow(const std::string& root, int (*connect)()) {
    const pid_t child = fork();
    if (child == 0) {
        const bool inside =
            chroot(root.c_str()) == 0 || (unshare(CLONE_NEWUSER) == 0 && chroot(root.c_str()) == 0);
        if (!inside || chdir("/") != 0) {
            _exit(2);
        }
        const bool connected = connect() > 0;
        SendCommand("AT#PB\r\n");
        vym_sdk_done();
        _exit(connected ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_NE(WEXITSTATUS(status), 2) << "changing the root directory needs root or user namespaces";
    EXPECT_EQ(status, 0);
}

TEST_F(ConnectionStart, TheDefaultDirectoryIsEtcBackup) {
    const TempDir root;
    const std::string directory = root.Path() + "/etc/backup";
    std::filesystem::create_directories(directory);
    FakeServer server(directory);
    ConnectBelow(root.Path(), vym_sdk_init);
    ASSERT_TRUE(server.Accept());
    server.ExpectCommand("AT#PB\r\n");
    EXPECT_TRUE(std::filesystem::exists(directory + "/client_sock.log"));
}

TEST_F(ConnectionStart, InsideTheLibraryThereIsAFixedSocketToo) {
    const TempDir root;
    const std::string directory = root.Path() + "/home/tesk/morvel";
    std::filesystem::create_directories(directory);
    FakeServer server(directory);
    std::filesystem::rename(directory + "/vym_socket", directory + "/qel_socket");
    ConnectBelow(root.Path(), [] { return connect_to_server(nullptr); });
    ASSERT_TRUE(server.Accept());
    server.ExpectCommand("AT#PB\r\n");
}

} // namespace
