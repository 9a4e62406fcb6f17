// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_debug.h"

#include "support/limits.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <initializer_list>

namespace {

using bytes = std::vector<unsigned char>;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto PATIENCE = 20s;
constexpr int PARSER_PORT = 4338;

/// Owns a descriptor.
class descriptor {
public:
    explicit descriptor(int number = -1) : fd(number) {}
    descriptor(descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    descriptor& operator=(descriptor&& other) noexcept {
        std::swap(fd, other.fd);
        return *this;
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    ~descriptor() {
        if (fd != -1) {
            close(fd);
        }
    }
    int get() const { return fd; }

private:
    int fd;
};

/// Asks until the answer is yes. @return false when patience ran out.
bool becomes_true(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

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

// ---- external parser ----

/// Catches what is printed on standard error by any thread.
class stderr_pipe {
public:
    stderr_pipe() : saved(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        reading = descriptor(ends[0]);
        const descriptor writing(ends[1]);
        dup2(writing.get(), STDERR_FILENO);
    }
    ~stderr_pipe() { dup2(saved.get(), STDERR_FILENO); }
    stderr_pipe(const stderr_pipe&) = delete;
    stderr_pipe& operator=(const stderr_pipe&) = delete;

    /// Waits until `wanted` was printed.
    bool prints(const std::string& wanted) {
        return becomes_true([&] {
            take();
            return text.find(wanted) != std::string::npos;
        });
    }

    /// @return what was printed since the last question.
    std::string rest() {
        take();
        return std::exchange(text, "");
    }

private:
    void take() {
        pollfd waited = {reading.get(), POLLIN, 0};
        while (poll(&waited, 1, 10) == 1) {
            char part[512];
            const ssize_t n = read(reading.get(), part, sizeof(part));
            if (n <= 0) {
                return;
            }
            text.append(part, static_cast<size_t>(n));
        }
    }

    descriptor saved;
    descriptor reading;
    std::string text;
};

/// The listener's thread as an application would run it.
class listener_thread {
public:
    listener_thread() {
        std::promise<pid_t> number;
        auto started = number.get_future();
        thread = std::thread([this, &number] {
            number.set_value(gettid());
            result.set_value(ext_parser_thread(nullptr));
        });
        id = started.get();
    }
    ~listener_thread() {
        if (thread.joinable()) {
            becomes_true([this] { // a thread that has not begun to listen does not notice a stop
                vym_debug_stop_listener();
                return ended.wait_for(0s) == std::future_status::ready;
            });
            EXPECT_TRUE(ends());
        }
    }
    listener_thread(const listener_thread&) = delete;
    listener_thread& operator=(const listener_thread&) = delete;

    void send_signal(int signal_number) { pthread_kill(thread.native_handle(), signal_number); }

    /// Waits for the end of the thread.
    bool ends() {
        if (ended.wait_for(PATIENCE) != std::future_status::ready) {
            std::abort(); // nothing could be cleaned up any more
        }
        thread.join();
        return ended.get() == nullptr;
    }

    bool stop() {
        vym_debug_stop_listener();
        return ends();
    }

    std::string name() const {
        std::ifstream file("/proc/self/task/" + std::to_string(id) + "/comm");
        std::string line;
        std::getline(file, line);
        return line;
    }

private:
    std::promise<void*> result;
    std::future<void*> ended = result.get_future();
    std::thread thread;
    pid_t id = 0;
};

sockaddr_in parser_address(int port = PARSER_PORT) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// @return a socket connected to the listener, or -1.
descriptor try_connect(int receive_room = 0, int port = PARSER_PORT) {
    descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (receive_room > 0) {
        setsockopt(client.get(), SOL_SOCKET, SO_RCVBUF, &receive_room, sizeof(receive_room));
    }
    const sockaddr_in address = parser_address(port);
    if (connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == -1) {
        return descriptor();
    }
    const timeval patience = {20, 0};
    setsockopt(client.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    return client;
}

int send_text(std::string text) {
    return send_ext_parser(text.data(), static_cast<int>(text.size()));
}

enum class arrival { NOTHING, DATA, END };

arrival look_at(const descriptor& client, int wait_ms) {
    pollfd waited = {client.get(), POLLIN, 0};
    if (poll(&waited, 1, wait_ms) != 1) {
        return arrival::NOTHING;
    }
    char byte = 0;
    return recv(client.get(), &byte, 1, 0) == 1 ? arrival::DATA : arrival::END;
}

/// Connects and makes sure, by sending single bytes, that it is this client that is attached. A
/// connection that came while the listener was between two sockets is reset and tried again.
descriptor attach(int receive_room = 0, int port = PARSER_PORT) {
    descriptor client;
    const bool attached = becomes_true([&] {
        if (client.get() == -1) {
            client = try_connect(receive_room, port);
        }
        if (client.get() == -1) {
            return false;
        }
        send_text("?");
        const arrival seen = look_at(client, 10);
        if (seen == arrival::END) {
            client = descriptor();
        }
        return seen == arrival::DATA;
    });
    EXPECT_TRUE(attached) << "nobody attaches the client";
    while (client.get() != -1 && look_at(client, 0) == arrival::DATA) {
    }
    return client;
}

std::string receive(const descriptor& client, size_t count) {
    std::string text(count, '\0');
    const ssize_t n = recv(client.get(), text.data(), count, MSG_WAITALL);
    text.resize(n > 0 ? static_cast<size_t>(n) : 0);
    return text;
}

/// Whether the library closed the connection; bytes before the end are skipped.
bool is_cut_off(const descriptor& client) {
    arrival seen = arrival::DATA;
    while (seen == arrival::DATA) {
        seen = look_at(client, static_cast<int>(std::chrono::milliseconds(PATIENCE).count()));
    }
    return seen == arrival::END;
}

/// The port is one for the whole machine: tests that run at the same time take turns.
class ExternalParser : public testing::Test {
protected:
    void SetUp() override {
        const std::string path = (fs::temp_directory_path() / "vym-parser-port.lock").string();
        turn = descriptor(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        ASSERT_NE(turn.get(), -1) << path;
        ASSERT_EQ(flock(turn.get(), LOCK_EX), 0);
        const descriptor stranger = try_connect();
        ASSERT_EQ(stranger.get(), -1)
            << "another program listens on port " << PARSER_PORT << ": stop it";
    }
    void TearDown() override { vym_debug_stop_listener(); }

    descriptor turn;
};

TEST_F(ExternalParser, WithoutAParserNothingIsSent) {
    EXPECT_EQ(send_text("lost"), 0);
    vym_debug_stop_listener();
    ext_parser_detached();
    EXPECT_EQ(send_text("lost"), 0);
}

TEST_F(ExternalParser, WhatIsSentArrives) {
    listener_thread listener;
    const descriptor client = attach();
    EXPECT_EQ(send_text(std::string("ab\0cd", 5)), 5);
    EXPECT_EQ(receive(client, 5), std::string("ab\0cd", 5));
}

TEST_F(ExternalParser, TheThreadHasItsNameAsFarAsTheKernelKeepsIt) {
    listener_thread listener;
    const descriptor client = attach();
    EXPECT_EQ(listener.name(), "BtsnoopExtParse");
}

TEST_F(ExternalParser, ASecondParserReplacesTheFirst) {
    listener_thread listener;
    const descriptor first = attach();
    const descriptor second = attach();
    EXPECT_TRUE(is_cut_off(first));
    EXPECT_EQ(send_text("for the second"), 14);
    EXPECT_EQ(receive(second, 14), "for the second");
}

TEST_F(ExternalParser, StopCutsTheParserOffAndEndsTheThread) {
    listener_thread listener;
    const descriptor client = attach();
    EXPECT_TRUE(listener.stop());
    EXPECT_TRUE(is_cut_off(client));
    EXPECT_EQ(send_text("late"), 0);
    EXPECT_EQ(try_connect().get(), -1) << "somebody still listens";
}

TEST_F(ExternalParser, TheListenerCanBeStartedAgain) {
    for (int round = 0; round < 5; ++round) {
        listener_thread listener;
        const descriptor client = attach();
        EXPECT_EQ(send_text("round"), 5);
        EXPECT_EQ(receive(client, 5), "round");
        EXPECT_TRUE(listener.stop());
    }
}

TEST_F(ExternalParser, ANewListenerWaitsForOneThatIsAboutToEnd) {
    for (int round = 0; round < 20; ++round) {
        listener_thread old;
        attach();
        vym_debug_stop_listener();
        listener_thread next; // often begins before the old thread has ended
        const descriptor client = attach();
        EXPECT_TRUE(old.ends());
        EXPECT_EQ(send_text("next"), 4);
        EXPECT_EQ(receive(client, 4), "next");
    }
}

TEST_F(ExternalParser, ASecondListenerReturnsAtOnceAndLeavesTheFirstAlone) {
    listener_thread first;
    const descriptor client = attach();
    listener_thread second;
    EXPECT_TRUE(second.ends());
    EXPECT_EQ(send_text("still here"), 10);
    EXPECT_EQ(receive(client, 10), "still here");
    EXPECT_NE(attach().get(), -1);
}

TEST_F(ExternalParser, TheSignalEndsTheThreadAndLeavesTheParserAttached) {
    listener_thread listener;
    const descriptor client = attach();
    listener.send_signal(SIGUSR2);
    EXPECT_TRUE(listener.ends());
    EXPECT_EQ(try_connect().get(), -1) << "somebody still listens";
    EXPECT_EQ(send_text("bye"), 3);
    EXPECT_EQ(receive(client, 3), "bye");
}

TEST_F(ExternalParser, TheSignalSentManyTimesNeverLeavesTheLockTaken) {
    for (int round = 0; round < 20; ++round) {
        listener_thread listener;
        ASSERT_TRUE(becomes_true([] { return try_connect().get() != -1; }));
        listener.send_signal(SIGUSR2);
        EXPECT_TRUE(listener.ends());
        ext_parser_detached(); // would hang
    }
}

TEST_F(ExternalParser, TheSignalOnAnotherThreadDoesNothing) {
    listener_thread listener;
    const descriptor client = attach();
    raise(SIGUSR2);
    EXPECT_NE(attach().get(), -1);
}

TEST_F(ExternalParser, AnotherSignalDoesNotEndTheThread) {
    struct sigaction previous {};
    struct sigaction action {};
    static std::atomic<int> handled{0};
    handled = 0;
    action.sa_handler = [](int) { ++handled; };
    sigaction(SIGUSR1, &action, &previous);
    stderr_pipe messages;
    {
        listener_thread listener;
        attach();
        listener.send_signal(SIGUSR1);
        EXPECT_TRUE(becomes_true([] { return handled == 1; }));
        EXPECT_NE(attach().get(), -1);
    }
    EXPECT_EQ(messages.rest(), "") << "taken for a failure";
    sigaction(SIGUSR1, &previous, nullptr);
}

TEST_F(ExternalParser, TheCallersSignalMaskIsGivenBack) {
    std::thread([] {
        sigset_t before;
        sigset_t after;
        pthread_sigmask(SIG_SETMASK, nullptr, &before);
        std::thread stopper([] {
            EXPECT_TRUE(becomes_true([] { return try_connect().get() != -1; }));
            vym_debug_stop_listener();
        });
        ext_parser_thread(nullptr);
        stopper.join();
        pthread_sigmask(SIG_SETMASK, nullptr, &after);
        EXPECT_EQ(sigismember(&before, SIGUSR2), 0);
        EXPECT_EQ(sigismember(&after, SIGUSR2), 0);
    }).join();
}

/// Sends until the library notices that the parser is gone.
void expect_detached_with_an_error() {
    int result = 1;
    EXPECT_TRUE(becomes_true([&] {
        result = send_text("anybody?");
        return result < 1;
    }));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(send_text("nobody"), 0);
}

TEST_F(ExternalParser, AParserThatIsGoneIsDetachedAndMayComeBack) {
    listener_thread listener;
    attach(); // closed in order: the failing send would raise SIGPIPE
    expect_detached_with_an_error();
    descriptor client = attach();
    const linger reset = {1, 0};
    setsockopt(client.get(), SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
    client = descriptor();
    expect_detached_with_an_error();
    const descriptor again = attach();
    EXPECT_EQ(send_text("back"), 4);
    EXPECT_EQ(receive(again, 4), "back");
}

TEST_F(ExternalParser, SendingNothingDetaches) {
    listener_thread listener;
    for (const int len : {0, -1}) {
        const descriptor client = attach();
        char byte = 'x';
        EXPECT_EQ(send_ext_parser(&byte, len), len);
        EXPECT_TRUE(is_cut_off(client));
    }
}

TEST_F(ExternalParser, AParserThatDoesNotReadIsDetachedInsteadOfHoldingTheLock) {
    listener_thread listener;
    const descriptor client = attach(4096);
    const std::string block(1 << 20, 'x');
    EXPECT_TRUE(becomes_true([&] { return send_text(block) == -1; }));
    EXPECT_EQ(send_text("more"), 0);
}

/// Takes the parser's port, as another program would.
descriptor occupy_port() {
    descriptor occupant(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    setsockopt(occupant.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    const sockaddr_in address = parser_address();
    EXPECT_EQ(bind(occupant.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(listen(occupant.get(), 1), 0);
    return occupant;
}

/// The ports on which this process listens.
std::vector<int> listening_ports() {
    std::vector<int> ports;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        const int fd = std::stoi(entry.path().filename().string());
        int listening = 0;
        socklen_t size = sizeof(listening);
        sockaddr_in address{};
        socklen_t room = sizeof(address);
        if (getsockopt(fd, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) == 0 && listening != 0 &&
            getsockname(fd, reinterpret_cast<sockaddr*>(&address), &room) == 0 &&
            address.sin_family == AF_INET) {
            ports.push_back(ntohs(address.sin_port));
        }
    }
    return ports;
}

TEST_F(ExternalParser, APortThatIsTakenIsReportedAndListeningGoesOnAtAnother) {
    descriptor occupant = occupy_port();
    stderr_pipe messages;
    listener_thread listener;
    EXPECT_TRUE(messages.prints("bind: Address already in use\n"));
    int port = PARSER_PORT;
    ASSERT_TRUE(becomes_true([&] {
        for (const int one : listening_ports()) {
            port = one != PARSER_PORT ? one : port;
        }
        return port != PARSER_PORT;
    }));
    const descriptor client = attach(0, port);
    EXPECT_EQ(send_text("here"), 4);
    EXPECT_EQ(receive(client, 4), "here");
}

TEST_F(ExternalParser, AListenerWhosePortIsTakenCanBeStopped) {
    const descriptor occupant = occupy_port();
    for (const bool by_signal : {false, true}) {
        stderr_pipe messages;
        listener_thread listener;
        EXPECT_TRUE(messages.prints("bind: Address already in use\n"));
        if (by_signal) {
            listener.send_signal(SIGUSR2);
        } else {
            vym_debug_stop_listener();
        }
        EXPECT_TRUE(listener.ends());
    }
}

TEST_F(ExternalParser, WithoutADescriptorForItsSocketAcceptFailsSilently) {
    stderr_pipe messages;
    {
        const support::NoMoreDescriptors limit;
        EXPECT_EQ(ext_parser_accept(PARSER_PORT), -1);
    }
    EXPECT_EQ(messages.rest(), "");
}

TEST_F(ExternalParser, AClientThatCannotBeAcceptedIsReported) {
    stderr_pipe messages;
    const descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // No std::thread: the undefined-behaviour sanitizer looks at its objects with the help of a
    // descriptor.
    std::atomic<int> accepted{0};
    pthread_t listener;
    ASSERT_EQ(pthread_create(
                  &listener, nullptr,
                  [](void* result) -> void* {
                      *static_cast<std::atomic<int>*>(result) = ext_parser_accept(PARSER_PORT);
                      return nullptr;
                  },
                  &accepted),
              0);
    EXPECT_TRUE(becomes_true([] { // under both its numbers: nothing more is opened before the client
        const std::vector<int> ports = listening_ports();
        return std::count(ports.begin(), ports.end(), PARSER_PORT) == 2;
    }));
    {
        const support::NoMoreDescriptors limit;
        const sockaddr_in address = parser_address();
        EXPECT_EQ(connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
                  0);
        EXPECT_TRUE(becomes_true([&accepted] { return accepted == -1; }));
    }
    pthread_join(listener, nullptr);
    EXPECT_EQ(messages.rest(), "accept: Too many open files\n");
    ext_parser_detached();
}

TEST_F(ExternalParser, NothingIsPrintedInOrdinaryUse) {
    stderr_pipe messages;
    {
        listener_thread listener;
        attach();
        attach();
        ext_parser_detached();
        attach();
    }
    EXPECT_EQ(messages.rest(), "");
}

TEST_F(ExternalParser, AcceptReturnsTheClient) {
    auto accepted = std::async(std::launch::async, [] { return ext_parser_accept(PARSER_PORT); });
    descriptor client;
    ASSERT_TRUE(becomes_true([&] {
        client = try_connect();
        return client.get() != -1;
    }));
    const descriptor served(accepted.get());
    ASSERT_GT(served.get(), 0);
    EXPECT_EQ(fcntl(served.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_EQ(send(served.get(), "hi", 2, MSG_NOSIGNAL), 2);
    EXPECT_EQ(receive(client, 2), "hi");
    ext_parser_detached();
    EXPECT_EQ(try_connect().get(), -1) << "the listening socket is still open";
}

TEST_F(ExternalParser, DetachingEndsAWaitingAccept) {
    listener_thread warm_up; // a listening socket that is there proves that detaching has one to close
    attach();
    EXPECT_TRUE(warm_up.stop());
    std::atomic<bool> ended{false};
    auto accepted = std::async(std::launch::async, [&] {
        const int fd = ext_parser_accept(PARSER_PORT);
        ended = true;
        return fd;
    });
    EXPECT_TRUE(becomes_true([&] { // it may not listen yet
        ext_parser_detached();
        return ended.load();
    }));
    EXPECT_EQ(accepted.get(), -1);
}

/// The sockets of this process by descriptor number, and whether a program started by it would inherit
/// them. Asked through the file system: other threads open and close descriptors meanwhile.
std::map<std::string, bool> sockets() {
    std::map<std::string, bool> found;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string number = entry.path().filename().string();
        const std::string target = fs::read_symlink(entry.path(), gone).string();
        std::ifstream info("/proc/self/fdinfo/" + number);
        unsigned int flags = 0;
        std::string word;
        while (info >> word && word != "flags:") {
        }
        if (target.rfind("socket:", 0) == 0 && info >> std::oct >> flags) {
            found[number] = (flags & 02000000U) == 0; // O_CLOEXEC as the kernel prints it
        }
    }
    return found;
}

TEST_F(ExternalParser, NoSocketSurvivesAnExec) {
    const auto before = sockets();
    listener_thread listener;
    const descriptor client = attach();
    auto added = sockets();
    for (const auto& [number, inherited] : before) {
        added.erase(number);
    }
    EXPECT_GE(added.size(), 2U) << "the listener's sockets were not seen";
    for (const auto& [number, inherited] : added) {
        EXPECT_FALSE(inherited) << "descriptor " << number;
    }
}

size_t open_descriptors() {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

TEST_F(ExternalParser, NoDescriptorIsLost) {
    const size_t before = open_descriptors();
    for (int round = 0; round < 3; ++round) {
        listener_thread listener;
        attach();
        attach();
        ext_parser_detached();
        attach();
    }
    EXPECT_EQ(open_descriptors(), before);
}

} // namespace
