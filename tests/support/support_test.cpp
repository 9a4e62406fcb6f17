// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The harness itself: what it reports when something is wrong. A harness that cannot fail proves
// nothing.

#include "support/capture_reader.h"
#include "support/fake_server.h"
#include "support/leak_check.h"
#include "support/output_capture.h"
#include "support/session.h"
#include "support/temp_dir.h"

#include <gtest/gtest-spi.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using support::Bytes;
using support::FakeServer;
using support::Milliseconds;
using support::Recorder;
using support::SocketPair;
using support::TempDir;

constexpr Milliseconds kShort(50);

// A client without the library.
class PlainClient {
public:
    explicit PlainClient(const std::string& directory)
        : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (directory + "/vym_socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
        EXPECT_EQ(connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    ~PlainClient() { close(fd_); }
    PlainClient(const PlainClient&) = delete;
    PlainClient& operator=(const PlainClient&) = delete;
    PlainClient(PlainClient&&) = delete;
    PlainClient& operator=(PlainClient&&) = delete;

    void Write(std::string_view text) const { EXPECT_TRUE(support::WriteBytes(fd_, text)); }
    [[nodiscard]] int Fd() const { return fd_; }

private:
    int fd_;
};

class FakeServerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.Accept()); }

    TempDir directory_;
    FakeServer server_{directory_.Path()};
    PlainClient client_{directory_.Path()};
};

TEST_F(FakeServerTest, AcceptsTheCommandThatWasSent) {
    client_.Write("AT#PB\r\nAT#PC\r\n");
    server_.ExpectCommand("AT#PB\r\n");
    server_.ExpectCommand("AT#PC\r\n");
}

TEST_F(FakeServerTest, ReportsAWrongCommandWithBothTextsAndThePlace) {
    client_.Write("AT#PX\r\n");
    EXPECT_NONFATAL_FAILURE(server_.ExpectCommand("AT#PB\r\n"), "expected \"AT#PB\\r\\n\" (7 bytes)\n"
                                                                "received \"AT#PX\\r\\n\" (7 bytes)\n"
                                                                "they differ at byte 4");
}

TEST_F(FakeServerTest, ReportsACommandThatNeverCame) {
    EXPECT_FALSE(server_.Receives("AT#PB\r\n", kShort));
}

TEST_F(FakeServerTest, ReportsACommandCutShort) {
    client_.Write("AT#PB");
    EXPECT_FALSE(server_.Receives("AT#PB\r\n", kShort));
}

TEST_F(FakeServerTest, StartsAfreshBehindAWrongLine) {
    client_.Write("AT#WRONGLINE\r\nAT#PC\r\n");
    EXPECT_FALSE(server_.Receives("AT#PB\r\n", kShort));
    server_.ExpectCommand("AT#PC\r\n");
}

TEST_F(FakeServerTest, SendsNulsAndDescriptorsInOrder) {
    const SocketPair pair;
    server_.Send(support::Event("XA01"));
    server_.SendDescriptor(pair.Near());
    server_.Send("XA02");
    EXPECT_TRUE(
        support::SameBytes(std::string("XA01\0\0XA02", 10), support::ReadBytes(client_.Fd(), 10)));
}

TEST_F(FakeServerTest, SeesTheClientsEnd) {
    EXPECT_FALSE(server_.SeesEndOfStream(kShort));
    shutdown(client_.Fd(), SHUT_WR);
    EXPECT_TRUE(server_.SeesEndOfStream());
}

TEST_F(FakeServerTest, ReportsThatNoClientCame) {
    EXPECT_FALSE(server_.Accept(kShort));
}

TEST(FakeServerWithLibrary, ReportsACommandThatNobodyExpected) {
    const support::OutputCapture quiet;
    support::ClientSession session;
    vym_bluetooth_enable();
    EXPECT_NONFATAL_FAILURE(session.Server().ExpectNothingMore(),
                            "something else was sent before the marker");
}

TEST(RecorderTest, TimesOutWhenACallbackIsMissing) {
    Recorder record;
    record.Add("first");
    EXPECT_FALSE(record.WaitFor(2, kShort));
    EXPECT_FALSE(record.WaitForEntry("second", kShort));
    EXPECT_FALSE(record.WaitForExactly({"first", "second"}, kShort));
}

TEST(RecorderTest, ReportsOneEntryTooMany) {
    Recorder record;
    record.Add("first");
    record.Add("first");
    EXPECT_FALSE(record.WaitForExactly({"first"}));
    EXPECT_EQ(record.Count("first"), 2U);
}

TEST(RecorderTest, TellsWhatIsThere) {
    Recorder record;
    record.Add("first");
    EXPECT_STREQ(record.WaitForExactly({"second"}).message(),
                 "entry 0: expected second, recorded first\n");
}

TEST(RecorderTest, WaitsForAnotherThread) {
    Recorder record;
    std::thread other([&] { record.Add("from elsewhere"); });
    EXPECT_TRUE(record.WaitForEntry("from elsewhere"));
    other.join();
}

TEST(RecorderTest, RunsTheHookInTheAddingThread) {
    Recorder record;
    std::thread::id seen;
    record.SetHook([&](const std::string&) { seen = std::this_thread::get_id(); });
    std::thread other([&] { record.Add("entry"); });
    const std::thread::id expected = other.get_id();
    other.join();
    EXPECT_EQ(seen, expected);
}

TEST(WaitUntilTest, GivesUpAtTheLimit) {
    EXPECT_FALSE(support::WaitUntil([] { return false; }, kShort));
}

TEST(LeakCheckTest, ReportsADescriptorLeftOpen) {
    const support::LeakCheck check;
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const ::testing::AssertionResult result = check.NothingLeft(kShort);
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("was opened and left: /dev/null"), std::string::npos);
    close(fd);
    EXPECT_TRUE(check.NothingLeft());
}

TEST(LeakCheckTest, ReportsADescriptorClosedByMistake) {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const support::LeakCheck check;
    close(fd);
    EXPECT_FALSE(check.NothingLeft(kShort));
}

TEST(LeakCheckTest, ReportsAThreadLeftRunning) {
    const support::LeakCheck check;
    support::Gate gate;
    std::thread other([&] { EXPECT_TRUE(gate.Wait()); });
    EXPECT_FALSE(check.NothingLeft(kShort));
    gate.Open();
    other.join();
    EXPECT_TRUE(check.NothingLeft());
}

TEST(OutputCaptureTest, CatchesEveryThreadsLines) {
    support::OutputCapture output(support::OutputCapture::Streams::kOutAndErr);
    std::thread other([] { printf("from a thread\n"); });
    other.join();
    fprintf(stderr, "an error\n");
    EXPECT_EQ(output.Out(), "from a thread\n");
    EXPECT_EQ(output.Err(), "an error\n");
    EXPECT_FALSE(output.WaitForOut("never printed", kShort));
}

TEST(OutputCaptureTest, LeavesNoDescriptorBehind) {
    const support::LeakCheck check;
    { const support::OutputCapture output; }
    EXPECT_TRUE(check.NothingLeft());
}

TEST(TempDirTest, IsRemovedWithItsContent) {
    std::string path;
    {
        const TempDir directory;
        path = directory.Path();
        std::ofstream(path + "/file") << "content";
        EXPECT_TRUE(std::filesystem::exists(path + "/file"));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TempDirTest, MakesDirectoriesOfAGivenLength) {
    const TempDir directory;
    for (const size_t length : {96U, 97U, 240U}) {
        const std::string path = directory.MakeDirOfLength(length);
        EXPECT_EQ(path.size(), length);
        EXPECT_TRUE(std::filesystem::is_directory(path));
    }
}

TEST(CaptureReaderTest, TakesAFileToPieces) {
    const TempDir directory;
    const std::string path = directory.Path() + "/capture";
    std::ofstream(path, std::ios::binary)
        << std::string("btsnoop\0\0\0\0\1\0\0\3\xEA", 16)
        << std::string("\0\0\0\6\0\0\0\6\0\0\0\2\0\0\0\0\0\xDC\xDD\xB3\x0F\x2F\x80\x05", 24)
        << std::string("\1\1\xFC\2AB", 6)
        << std::string("\0\0\0\4\0\0\0\4\0\0\0\3\0\0\0\0\0\xDC\xDD\xB3\x0F\x2F\x80\x06", 24)
        << std::string("\4\xFF\1C", 4) << "tail";
    const support::CaptureFile file = support::ReadCapture(path);
    ASSERT_EQ(file.records.size(), 2U);
    const support::CaptureRecord& first = file.records[0];
    EXPECT_EQ(
        (std::vector<uint32_t>{first.original_length, first.included_length, first.flags, first.drops}),
        (std::vector<uint32_t>{6, 6, 2, 0}));
    EXPECT_EQ(first.timestamp, 0x00DCDDB30F2F8005ULL);
    EXPECT_EQ(file.Commands(), "AB");
    EXPECT_EQ(file.Events(), "C");
    EXPECT_EQ(file.rest, "tail");
}

TEST(TextTest, ShowsWhatCannotBePrinted) {
    EXPECT_EQ(support::Escaped(Bytes({'A', 0x00, 0x0D, 0x0A, 0xDC, '\\'})), "A\\0\\r\\n\\xDC\\\\");
}

TEST(TextTest, SplitsLines) {
    EXPECT_EQ(support::Lines("a\r\nb\n\nc"), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(support::LinesWith("one\ntwo\nno", "o"), (std::vector<std::string>{"one", "two", "no"}));
}

TEST(TextTest, ComparesWithExpressions) {
    EXPECT_TRUE(support::Fits("a12\n", "a[0-9]+\n"));
    EXPECT_FALSE(support::Fits("a12\nb", "a[0-9]+\n"));
    EXPECT_TRUE(support::HasPart("xa12y", "a[0-9]+"));
    EXPECT_FALSE(support::HasPart("xy", "a[0-9]+"));
    EXPECT_EQ(support::Match("xa12y", "a([0-9])"), (std::vector<std::string>{"a1", "1"}));
}

TEST(AddressTest, GoesThereAndBack) {
    const bt_bdaddr_t address = support::Address("00112233445F");
    EXPECT_EQ(address.address[5], 0x00);
    EXPECT_EQ(address.address[0], 0x5F);
    EXPECT_EQ(support::AddressText(address), "00112233445F");
}

} // namespace
