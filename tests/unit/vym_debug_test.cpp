// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_debug.h"

#include "unit/debug_support.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using unit::becomes_true;
using unit::descriptor;

using bytes = std::vector<unsigned char>;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

// ---- a reader of captures ----

struct record {
    uint32_t original_len = 0;
    uint32_t included_len = 0;
    uint32_t flags = 0;
    uint32_t drops = 0;
    uint64_t time_us = 0;
    bytes packet; // with its type byte
};

const bytes FILE_HEADER = {0x62, 0x74, 0x73, 0x6E, 0x6F, 0x6F, 0x70, 0x00,
                           0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x03, 0xEA};

bytes contents_of(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

uint64_t big_endian(const bytes& from, size_t at, size_t width) {
    uint64_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        value = value << 8 | from.at(at + i);
    }
    return value;
}

struct capture_contents {
    std::vector<record> records;
    size_t whole_len = 0; // of the header and the records
    size_t file_len = 0;
};

/// Reads as far as there are whole records.
capture_contents read_whole_records(const fs::path& path) {
    const bytes file = contents_of(path);
    capture_contents found;
    found.file_len = file.size();
    if (file.size() < 16 || !std::equal(FILE_HEADER.begin(), FILE_HEADER.end(), file.begin())) {
        ADD_FAILURE() << path << " has no header";
        return found;
    }
    found.whole_len = 16;
    while (file.size() - found.whole_len >= 24) {
        const size_t at = found.whole_len;
        record next;
        next.original_len = static_cast<uint32_t>(big_endian(file, at, 4));
        next.included_len = static_cast<uint32_t>(big_endian(file, at + 4, 4));
        next.flags = static_cast<uint32_t>(big_endian(file, at + 8, 4));
        next.drops = static_cast<uint32_t>(big_endian(file, at + 12, 4));
        next.time_us = big_endian(file, at + 16, 8);
        if (file.size() - at - 24 < next.included_len) {
            break;
        }
        const auto packet = file.begin() + static_cast<std::ptrdiff_t>(at + 24);
        next.packet.assign(packet, packet + static_cast<std::ptrdiff_t>(next.included_len));
        found.records.push_back(next);
        found.whole_len = at + 24 + next.included_len;
    }
    return found;
}

/// @return the records of a capture, which must consist of whole ones.
std::vector<record> read_capture(const fs::path& path) {
    auto found = read_whole_records(path);
    EXPECT_EQ(found.whole_len, found.file_len) << path << " ends within a record";
    return std::move(found.records);
}

/// A directory for captures; whatever is open at the end of a test is closed.
class DebugCapture : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "vym-debug-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory = name;
    }
    void TearDown() override {
        vym_debug_close();
        fs::remove_all(directory);
    }

    fs::path path(const std::string& name = "client_sock.log") const { return directory / name; }

    void open_capture(const std::string& name = "client_sock.log") const {
        std::string file = path(name).string();
        vym_debug_open(file.data());
        ASSERT_EQ(vym_debug_is_open(), 1);
    }

    /// @return the file behind the header, with the time stamp of a first record blanked.
    bytes record_without_time() const {
        bytes file = contents_of(path());
        file.erase(file.begin(), file.begin() + 16);
        if (file.size() >= 24) {
            std::fill(file.begin() + 16, file.begin() + 24, static_cast<unsigned char>(0));
        }
        return file;
    }

    fs::path directory;
};

void capture(bytes packet, uint8_t is_rcvd = 0) {
    vym_debug_capture(packet.data(), static_cast<uint32_t>(packet.size()), is_rcvd);
}

// ---- status ----

TEST(DebugStatus, InitSetsOneOnlyWhenTheStatusIsZero) {
    EXPECT_EQ(get_vym_debug_status(), 0);
    vym_debug_init();
    EXPECT_EQ(get_vym_debug_status(), 1);
    set_vym_debug_status(7);
    vym_debug_init();
    EXPECT_EQ(get_vym_debug_status(), 7);
    vym_debug_cleanup();
    EXPECT_EQ(get_vym_debug_status(), 0);
}

// ---- opening and closing ----

TEST_F(DebugCapture, NothingIsOpenAtFirst) {
    EXPECT_EQ(hci_vym_debug_fd, -1);
    EXPECT_EQ(vym_debug_is_open(), 0);
    EXPECT_EQ(vym_debug_log_close(), 0);
}

TEST_F(DebugCapture, AnEmptyCaptureIsItsHeaderAlone) {
    std::string file = path().string();
    EXPECT_EQ(vym_debug_log_open(file.data()), 1);
    EXPECT_EQ(vym_debug_log_close(), 1);
    EXPECT_EQ(contents_of(path()), FILE_HEADER);
    EXPECT_EQ(vym_debug_is_open(), 0);
    EXPECT_EQ(hci_vym_debug_fd, -1);
    EXPECT_EQ(vym_debug_log_close(), 0);
}

TEST_F(DebugCapture, OpeningEmptiesAnOldFile) {
    std::ofstream(path()) << std::string(500, 'x');
    open_capture();
    EXPECT_EQ(contents_of(path()), FILE_HEADER);
}

TEST_F(DebugCapture, TheFileIsForOwnerAndGroupAndOnlyToWrite) {
    const mode_t previous = umask(0);
    open_capture();
    umask(previous);
    struct stat status {};
    ASSERT_EQ(stat(path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0664U);
    EXPECT_EQ(fcntl(hci_vym_debug_fd, F_GETFL) & O_ACCMODE, O_WRONLY);
}

TEST_F(DebugCapture, TheDescriptorIsClosedOnExec) {
    open_capture();
    EXPECT_EQ(fcntl(hci_vym_debug_fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(DebugCapture, WithoutAPathNothingIsOpened) {
    std::string empty;
    EXPECT_EQ(vym_debug_log_open(nullptr), 2);
    EXPECT_EQ(vym_debug_log_open(empty.data()), 2);
    vym_debug_open(nullptr);
    vym_debug_open(empty.data());
    EXPECT_EQ(vym_debug_is_open(), 0);
}

TEST_F(DebugCapture, AFileThatCannotBeOpenedIsReported) {
    std::string file = path("missing/file").string();
    testing::internal::CaptureStderr();
    EXPECT_EQ(vym_debug_log_open(file.data()), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "open: No such file or directory\n");
    EXPECT_EQ(vym_debug_is_open(), 0);
}

TEST_F(DebugCapture, ASecondOpenForgetsTheFirstFileWithoutClosingIt) {
    open_capture("first");
    const descriptor first(hci_vym_debug_fd);
    open_capture("second");
    EXPECT_NE(hci_vym_debug_fd, first.get());
    EXPECT_NE(fcntl(first.get(), F_GETFD), -1) << "the first descriptor was closed";
    capture({0x01, 0x03, 0x0C, 0x00});
    EXPECT_EQ(contents_of(path("first")), FILE_HEADER);
    EXPECT_EQ(read_capture(path("second")).size(), 1U);
}

TEST_F(DebugCapture, AnOpenThatFailsForgetsTheOpenFileToo) {
    std::string missing = path("missing/file").string();
    open_capture("first");
    const descriptor first(hci_vym_debug_fd);
    EXPECT_EQ(vym_debug_log_open(nullptr), 2);
    EXPECT_EQ(vym_debug_is_open(), 0);
    EXPECT_NE(fcntl(first.get(), F_GETFD), -1);

    open_capture("second");
    const descriptor second(hci_vym_debug_fd);
    testing::internal::CaptureStderr();
    EXPECT_EQ(vym_debug_log_open(missing.data()), 0);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(vym_debug_is_open(), 0);
    EXPECT_NE(fcntl(second.get(), F_GETFD), -1);
    capture({0x01, 0x03, 0x0C, 0x00});
    EXPECT_EQ(contents_of(path("second")), FILE_HEADER);
}

TEST_F(DebugCapture, TheStatusDoesNotSwitchTheCapture) {
    set_vym_debug_status(0);
    open_capture();
    capture({0x01, 0x03, 0x0C, 0x00});
    EXPECT_EQ(read_capture(path()).size(), 1U);
}

// ---- records ----

TEST_F(DebugCapture, ACommandIsOneRecord) {
    open_capture();
    capture({0x01, 0x01, 0xFC, 0x05, 'A', 'T', '#', 'B', 'A'});
    EXPECT_EQ(record_without_time(),
              (bytes{0, 0, 0, 9, 0, 0, 0, 9, 0, 0,    0, 2,   0,   0,   0,   0,  0,
                     0, 0, 0, 0, 0, 0, 0, 1, 1, 0xFC, 5, 'A', 'T', '#', 'B', 'A'}));
}

TEST_F(DebugCapture, AnEventIsOneRecord) {
    open_capture();
    capture({0x04, 0xFF, 0x03, 'B', 'A', '1'}, 1);
    EXPECT_EQ(record_without_time(), (bytes{0, 0, 0, 6, 0, 0, 0, 6, 0, 0, 0,    3, 0,   0,   0,
                                            0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0xFF, 3, 'B', 'A', '1'}));
}

TEST_F(DebugCapture, AnScoPacketIsOneRecord) {
    open_capture();
    capture({0x03, 0x2A, 0x00, 0x02, 0xAA, 0xBB}, 1);
    EXPECT_EQ(record_without_time(), (bytes{0, 0, 0, 6, 0, 0, 0, 6, 0, 0, 0,    1, 0, 0,    0,
                                            0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0x2A, 0, 2, 0xAA, 0xBB}));
}

TEST_F(DebugCapture, AnAclPacketIsOneRecord) {
    open_capture();
    capture({0x02, 0x0B, 0x20, 0x01, 0x00, 0x77}, 0);
    EXPECT_EQ(record_without_time(), (bytes{0, 0, 0, 6, 0, 0, 0, 6, 0, 0, 0,    0,    0, 0, 0,
                                            0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0x0B, 0x20, 1, 0, 0x77}));
}

TEST_F(DebugCapture, PacketsWithoutContentAreRecordedToo) {
    open_capture();
    capture({0x01, 0x03, 0x0C, 0x00});
    capture({0x04, 0xFF, 0x00});
    capture({0x03, 0x00, 0x00, 0x00});
    capture({0x02, 0x00, 0x00, 0x00, 0x00});
    const auto records = read_capture(path());
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[0].packet, (bytes{0x01, 0x03, 0x0C, 0x00}));
    EXPECT_EQ(records[1].packet, (bytes{0x04, 0xFF, 0x00}));
    EXPECT_EQ(records[2].packet, (bytes{0x03, 0x00, 0x00, 0x00}));
    EXPECT_EQ(records[3].packet, (bytes{0x02, 0x00, 0x00, 0x00, 0x00}));
}

TEST_F(DebugCapture, TheLengthsComeFromThePacketsOwnHeader) {
    open_capture();
    bytes command(1 + 3 + 255, 0x5A);
    command[0] = 0x01;
    command[3] = 255;
    bytes acl(1 + 4 + 0x0102, 0xA5);
    acl[0] = 0x02;
    acl[3] = 0x02; // low byte first
    acl[4] = 0x01;
    vym_debug_capture(command.data(), 0, 0);
    vym_debug_capture(acl.data(), 1, 0);
    const auto records = read_capture(path());
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].original_len, 259U);
    EXPECT_EQ(records[0].packet, command);
    EXPECT_EQ(records[1].original_len, 263U);
    EXPECT_EQ(records[1].packet, acl);
}

TEST_F(DebugCapture, TheLongestAclPacketIsWhole) {
    open_capture();
    bytes acl(1 + 4 + 0xFFFF, 0x3C);
    acl[0] = 0x02;
    acl[3] = 0xFF;
    acl[4] = 0xFF;
    capture(acl);
    const auto records = read_capture(path());
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].included_len, 65540U);
    EXPECT_EQ(records[0].packet, acl);
}

TEST_F(DebugCapture, AnyDirectionButZeroIsReceived) {
    open_capture();
    for (const uint8_t is_rcvd : std::initializer_list<uint8_t>{0, 1, 2, 255}) {
        capture({0x02, 0x00, 0x00, 0x00, 0x00}, is_rcvd);
        capture({0x03, 0x00, 0x00, 0x00}, is_rcvd);
    }
    std::vector<uint32_t> flags;
    for (const record& each : read_capture(path())) {
        flags.push_back(each.flags);
    }
    EXPECT_EQ(flags, (std::vector<uint32_t>{0, 0, 1, 1, 1, 1, 1, 1}));
}

TEST_F(DebugCapture, TheDirectionOfCommandsAndEventsIsFixed) {
    open_capture();
    capture({0x01, 0x03, 0x0C, 0x00}, 1);
    capture({0x04, 0xFF, 0x00}, 0);
    const auto records = read_capture(path());
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].flags, 2U);
    EXPECT_EQ(records[1].flags, 3U);
}

TEST_F(DebugCapture, OtherPacketTypesAreIgnored) {
    open_capture();
    for (const int type : {0, 5, 6, 255}) {
        capture({static_cast<unsigned char>(type), 0, 0, 0, 0});
    }
    EXPECT_EQ(contents_of(path()), FILE_HEADER);
}

TEST_F(DebugCapture, TheWritersTakePacketsWithoutTheirTypeByte) {
    open_capture();
    bytes command = {0x03, 0x0C, 0x00};
    bytes event = {0x0E, 0x01, 0x02};
    bytes sco = {0x01, 0x00, 0x01, 0x99};
    bytes acl = {0x01, 0x00, 0x01, 0x00, 0x98};
    vym_debug_hci_cmd(command.data());
    vym_debug_hci_evt(event.data());
    vym_debug_sco_data(sco.data(), 1);
    vym_debug_acl_data(acl.data(), 0);
    const auto records = read_capture(path());
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[0].packet, (bytes{0x01, 0x03, 0x0C, 0x00}));
    EXPECT_EQ(records[1].packet, (bytes{0x04, 0x0E, 0x01, 0x02}));
    EXPECT_EQ(records[2].packet, (bytes{0x03, 0x01, 0x00, 0x01, 0x99}));
    EXPECT_EQ(records[3].packet, (bytes{0x02, 0x01, 0x00, 0x01, 0x00, 0x98}));
}

TEST_F(DebugCapture, WithoutAFileNothingIsTouched) {
    vym_debug_capture(nullptr, 0, 0);
    capture({0x01});
    open_capture();
    vym_debug_close();
    capture({0x01, 0x03, 0x0C, 0x00});
    EXPECT_EQ(contents_of(path()), FILE_HEADER);
}

TEST_F(DebugCapture, AMissingPacketIsIgnored) {
    open_capture();
    vym_debug_capture(nullptr, 0, 0);
    vym_debug_hci_cmd(nullptr);
    vym_debug_hci_evt(nullptr);
    vym_debug_sco_data(nullptr, 0);
    vym_debug_acl_data(nullptr, 0);
    EXPECT_EQ(contents_of(path()), FILE_HEADER);
}

TEST_F(DebugCapture, AFailingWriteIsNotReported) {
    std::string full = "/dev/full";
    testing::internal::CaptureStderr();
    EXPECT_EQ(vym_debug_log_open(full.data()), 1);
    capture({0x01, 0x03, 0x0C, 0x00});
    EXPECT_EQ(vym_debug_log_close(), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// ---- time ----

TEST(DebugTime, TheUnixEpochIsCountedFromYearZero) {
    timeval epoch = {0, 0};
    uint32_t lo = 0;
    uint32_t hi = 0;
    tv_to_vym_debug_ts(&lo, &hi, &epoch);
    EXPECT_EQ(hi, 0x00DCDDB3U);
    EXPECT_EQ(lo, 0x0F2F8000U);
}

TEST(DebugTime, SecondsBeyondWhat32BitsHoldInMicrosecondsAreCounted) {
    timeval time = {1700000000, 123456};
    uint32_t lo = 0;
    uint32_t hi = 0;
    tv_to_vym_debug_ts(&lo, &hi, &time);
    EXPECT_EQ(hi, 0x00E2E7D7U);
    EXPECT_EQ(lo, 0x274FA240U);

    time = {2147483647, 999999};
    tv_to_vym_debug_ts(&lo, &hi, &time);
    EXPECT_EQ(hi, 0x00E47ED3U);
    EXPECT_EQ(lo, 0x0F2F7FFFU);
}

TEST(DebugTime, ABigEndianWordHasItsHighByteFirst) {
    const uint32_t word = l_to_be(0x11223344);
    const unsigned char expected[] = {0x11, 0x22, 0x33, 0x44};
    EXPECT_EQ(memcmp(&word, expected, 4), 0);
}

uint64_t now_us() {
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    return 0x00DCDDB30F2F8000U +
           static_cast<uint64_t>(
               std::chrono::duration_cast<std::chrono::microseconds>(since_1970).count());
}

TEST_F(DebugCapture, ARecordHasTheTimeOfDay) {
    open_capture();
    const uint64_t before = now_us();
    capture({0x01, 0x03, 0x0C, 0x00});
    const uint64_t after = now_us();
    const auto records = read_capture(path());
    ASSERT_EQ(records.size(), 1U);
    EXPECT_GE(records[0].time_us, before);
    EXPECT_LE(records[0].time_us, after);
    EXPECT_EQ(records[0].drops, 0U);
}

// ---- threads and sudden death ----

/// Captures commands whose parameters all have the value `mark`, in all lengths, until told to stop.
void capture_marked(unsigned char mark, const std::atomic<bool>& stop) {
    for (unsigned char len = 0; !stop; ++len) {
        bytes packet(size_t{4} + len, mark);
        packet[0] = 0x01;
        packet[1] = mark;
        packet[2] = 0xFC;
        packet[3] = len;
        capture(packet);
    }
}

void expect_marked(const record& each) {
    EXPECT_EQ(each.original_len, each.included_len);
    EXPECT_EQ(each.flags, 2U);
    ASSERT_GE(each.packet.size(), 4U);
    EXPECT_EQ(each.packet[0], 0x01);
    EXPECT_EQ(each.packet.size(), size_t{4} + each.packet[3]);
    const unsigned char mark = each.packet[1];
    EXPECT_TRUE(mark == 0xA1 || mark == 0xB2);
    EXPECT_TRUE(std::all_of(each.packet.begin() + 4, each.packet.end(),
                            [mark](unsigned char byte) { return byte == mark; }));
}

void expect_marked(const std::vector<record>& records, size_t at_least) {
    EXPECT_GE(records.size(), at_least);
    uint64_t previous = 0;
    for (const record& each : records) {
        expect_marked(each);
        EXPECT_GE(each.time_us, previous) << "time goes backwards in the file";
        previous = each.time_us;
    }
}

TEST_F(DebugCapture, RecordsOfTwoThreadsAreWholeWhileAThirdOpensAndCloses) {
    constexpr int FILES = 12;
    std::atomic<bool> stop{false};
    std::thread first(capture_marked, 0xA1, std::cref(stop));
    std::thread second(capture_marked, 0xB2, std::cref(stop));
    for (int i = 0; i < FILES; ++i) {
        const std::string name = std::to_string(i);
        open_capture(name);
        EXPECT_TRUE(becomes_true([&] { return fs::file_size(path(name)) > 2000; }));
        vym_debug_close();
    }
    stop = true;
    first.join();
    second.join();
    for (int i = 0; i < FILES; ++i) {
        expect_marked(read_capture(path(std::to_string(i))), 2);
    }
}

TEST_F(DebugCapture, AKilledProcessLeavesWholeRecords) {
    open_capture();
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        const std::atomic<bool> never{false};
        capture_marked(0xA1, never);
        _exit(0);
    }
    EXPECT_TRUE(becomes_true([this] { return fs::file_size(path()) > 20000; }));
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    const auto found = read_whole_records(path());
    expect_marked(found.records, 50);
    // The kernel ends a write of a killed process between two pages, nowhere else.
    EXPECT_TRUE(found.whole_len == found.file_len || found.file_len % 4096 == 0)
        << "cut at " << found.file_len << " of a record that begins at " << found.whole_len;
}

// ---- hex dump ----

std::string dump(bytes data) {
    testing::internal::CaptureStdout();
    hex_dump(data.data(), data.size());
    return testing::internal::GetCapturedStdout();
}

TEST(HexDump, NothingIsPrintedForNothing) {
    EXPECT_EQ(dump({}), "");
    testing::internal::CaptureStdout();
    hex_dump(nullptr, 5);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(HexDump, ALineHasOffsetDigitsAndCharacters) {
    EXPECT_EQ(
        dump({'A', 'T', '#', 0x0D, 0x0A, 0x00, 0x1F, 0x20, '~', 0x7F, 0x80, 0xFF, 'x', 'y', 'z', '0'}),
        "00000000  41 54 23 0d 0a 00 1f 20 7e 7f 80 ff 78 79 7a 30  |AT#.... ~...xyz0|\n");
}

TEST(HexDump, AShortLastLineKeepsTheColumns) {
    EXPECT_EQ(dump(bytes(17, 'a')),
              "00000000  61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61  |aaaaaaaaaaaaaaaa|\n"
              "00000010  61                                               |a|\n");
}

} // namespace
