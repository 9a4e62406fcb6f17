// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "ring_buffer.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using bytes = std::vector<unsigned char>;
using namespace std::chrono_literals;

constexpr int CAPACITY = 128000;
constexpr auto PATIENCE = 20s;

struct buffer_deleter {
    void operator()(ring_buffer_t* rb) const { ring_buffer_free(rb); }
};
using buffer_ptr = std::unique_ptr<ring_buffer_t, buffer_deleter>;

buffer_ptr make_buffer(int push_block, int pull_block) {
    return buffer_ptr(ring_buffer_create(2056, push_block, pull_block));
}

int push(const buffer_ptr& rb, bytes data) {
    return rb->push(rb.get(), data.data(), static_cast<int>(data.size()));
}

bytes pull(const buffer_ptr& rb, int length) {
    bytes out(static_cast<size_t>(length) + 1, 0xEE);
    const int n = rb->pull(rb.get(), out.data(), length);
    EXPECT_EQ(out.back(), 0xEE) << "wrote behind the caller's room";
    out.resize(static_cast<size_t>(n));
    return out;
}

int avail(const buffer_ptr& rb) {
    return rb->avail(rb.get());
}

/// Fills the buffer until `stored` bytes are in it; the positions are where they are.
void fill(const buffer_ptr& rb, int stored) {
    ASSERT_EQ(push(rb, bytes(static_cast<size_t>(stored), 0x11)), stored);
}

/// Moves both positions to `position` in an empty buffer that is still at its start.
void move_to(const buffer_ptr& rb, int position) {
    fill(rb, position);
    ASSERT_EQ(static_cast<int>(pull(rb, position).size()), position);
}

ring_buffer_impl_t* impl_of(ring_buffer_t* rb) {
    return reinterpret_cast<ring_buffer_impl_t*>(rb);
}

unsigned int waiters_of(ring_buffer_t* obj) {
    ring_buffer_impl_t* rb = impl_of(obj);
    pthread_mutex_lock(&rb->mutex);
    const unsigned int waiters = rb->waiters;
    pthread_mutex_unlock(&rb->mutex);
    return waiters;
}

void wait_for_waiters(ring_buffer_t* rb, unsigned int wanted) {
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (waiters_of(rb) != wanted) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "nobody waits";
        std::this_thread::yield();
    }
}

template <typename Task>
auto in_background(Task task) {
    return std::async(std::launch::async, task);
}

template <typename T>
T result_of(std::future<T>& answer) {
    if (answer.wait_for(PATIENCE) != std::future_status::ready) {
        ADD_FAILURE() << "still blocked";
        std::abort(); // the thread cannot be joined any more
    }
    return answer.get();
}

TEST(RingBuffer, ANewBufferIsEmptyAndHasTheFixedCapacity) {
    for (const int asked : {2056, 0, -1, 1000000}) {
        const buffer_ptr rb(ring_buffer_create(asked, 0, 0));
        ASSERT_NE(rb, nullptr);
        EXPECT_EQ(avail(rb), 0);
        EXPECT_EQ(impl_of(rb.get())->buf_size, 128000U);
        EXPECT_EQ(impl_of(rb.get())->read_idx, 0U);
        EXPECT_EQ(impl_of(rb.get())->write_idx, 0U);
        EXPECT_EQ(impl_of(rb.get())->avail, 1);
    }
}

TEST(RingBuffer, TheFlagsAreKeptAsBytes) {
    const buffer_ptr rb(ring_buffer_create(0, 0x102, 0x100));
    EXPECT_EQ(impl_of(rb.get())->push_block, 2);
    EXPECT_EQ(impl_of(rb.get())->pull_block, 0);
}

TEST(RingBuffer, TheMembersComeInTheirOrder) {
    EXPECT_LT(offsetof(ring_buffer_t, push), offsetof(ring_buffer_t, pull));
    EXPECT_LT(offsetof(ring_buffer_t, pull), offsetof(ring_buffer_t, avail));
    const std::vector<size_t> offsets = {
        offsetof(ring_buffer_impl_t, common),
        offsetof(ring_buffer_impl_t, mutex),
        offsetof(ring_buffer_impl_t, cond),
        offsetof(ring_buffer_impl_t, buf_size),
        offsetof(ring_buffer_impl_t, audio_data_queue),
        offsetof(ring_buffer_impl_t, read_idx),
        offsetof(ring_buffer_impl_t, write_idx),
        offsetof(ring_buffer_impl_t, delta),
        offsetof(ring_buffer_impl_t, avail),
        offsetof(ring_buffer_impl_t, pull_block),
        offsetof(ring_buffer_impl_t, push_block),
    };
    EXPECT_EQ(offsets.front(), 0U);
    EXPECT_TRUE(std::is_sorted(offsets.begin(), offsets.end()));
}

TEST(RingBuffer, BytesComeOutInTheOrderTheyWentIn) {
    const auto rb = make_buffer(0, 0);
    EXPECT_EQ(push(rb, {1, 2, 3}), 3);
    EXPECT_EQ(push(rb, {4, 5}), 2);
    EXPECT_EQ(avail(rb), 5);
    EXPECT_EQ(pull(rb, 2), (bytes{1, 2}));
    EXPECT_EQ(avail(rb), 3);
    EXPECT_EQ(pull(rb, 3), (bytes{3, 4, 5}));
    EXPECT_EQ(avail(rb), 0);
}

TEST(RingBuffer, PullingMoreThanIsStoredReturnsWhatIsStored) {
    const auto rb = make_buffer(0, 1);
    push(rb, {7, 8, 9});
    EXPECT_EQ(pull(rb, 100), (bytes{7, 8, 9}));
}

TEST(RingBuffer, PullingFromAnEmptyBufferThatDoesNotBlockReturnsNothing) {
    EXPECT_EQ(pull(make_buffer(0, 0), 10), bytes{});
}

TEST(RingBuffer, APushThatExactlyFillsTheBufferSucceeds) {
    const auto rb = make_buffer(0, 0);
    fill(rb, 127950);
    EXPECT_EQ(push(rb, bytes(50, 0x22)), 50);
    EXPECT_EQ(avail(rb), CAPACITY);
}

TEST(RingBuffer, OneByteMoreThanFitsIsAnOverrun) {
    const auto rb = make_buffer(0, 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(push(rb, bytes(128001, 0x22)), 0);
    fill(rb, CAPACITY);
    EXPECT_EQ(push(rb, {1}), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Overrun! push 128001 byte, remain 0 bytes not be consumed. buffer size:128000.\n"
              "Overrun! push 1 byte, remain 128000 bytes not be consumed. buffer size:128000.\n");
}

TEST(RingBuffer, AnOverrunStoresNothing) {
    const auto rb = make_buffer(0, 0);
    fill(rb, 127950);
    testing::internal::CaptureStdout();
    EXPECT_EQ(push(rb, bytes(100, 0x22)), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Overrun! push 100 byte, remain 127950 bytes not be consumed. buffer size:128000.\n");
    EXPECT_EQ(avail(rb), 127950);
    EXPECT_EQ(pull(rb, CAPACITY), bytes(127950, 0x11));
}

TEST(RingBuffer, DataThatWrapsComesOutInOrder) {
    const auto rb = make_buffer(0, 0);
    move_to(rb, 127997);
    EXPECT_EQ(push(rb, {1, 2, 3, 4, 5, 6, 7}), 7);
    EXPECT_EQ(impl_of(rb.get())->write_idx, 4U);
    EXPECT_EQ(pull(rb, 7), (bytes{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(impl_of(rb.get())->read_idx, 4U);
}

TEST(RingBuffer, DataThatEndsExactlyAtTheEndMovesThePositionsToTheStart) {
    const auto rb = make_buffer(0, 0);
    move_to(rb, 127997);
    EXPECT_EQ(push(rb, {1, 2, 3}), 3);
    EXPECT_EQ(impl_of(rb.get())->write_idx, 0U);
    EXPECT_EQ(push(rb, {4}), 1);
    EXPECT_EQ(pull(rb, 3), (bytes{1, 2, 3}));
    EXPECT_EQ(impl_of(rb.get())->read_idx, 0U);
    EXPECT_EQ(pull(rb, 3), (bytes{4}));
}

TEST(RingBuffer, AFullBufferThatWrapsKeepsEveryByte) {
    const auto rb = make_buffer(0, 0);
    move_to(rb, 100000);
    bytes data(CAPACITY);
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<unsigned char>(i % 251);
    }
    EXPECT_EQ(push(rb, data), CAPACITY);
    EXPECT_EQ(avail(rb), CAPACITY);
    EXPECT_EQ(pull(rb, CAPACITY), data);
}

TEST(RingBuffer, NegativeLengthsAreRefused) {
    const auto rb = make_buffer(1, 1);
    unsigned char byte = 0x33;
    push(rb, {1, 2});
    EXPECT_EQ(rb->push(rb.get(), &byte, -1), 0);
    EXPECT_EQ(rb->pull(rb.get(), &byte, -1), 0);
    EXPECT_EQ(rb->pull(rb.get(), &byte, -2147483647 - 1), 0);
    EXPECT_EQ(byte, 0x33);
    EXPECT_EQ(avail(rb), 2);
}

TEST(RingBuffer, LengthZeroMovesNothing) {
    const auto rb = make_buffer(0, 0);
    EXPECT_EQ(rb->push(rb.get(), nullptr, 0), 0);
    EXPECT_EQ(rb->pull(rb.get(), nullptr, 0), 0);
    fill(rb, CAPACITY);
    testing::internal::CaptureStdout();
    EXPECT_EQ(rb->push(rb.get(), nullptr, 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "nothing fits into a full buffer";
    EXPECT_EQ(rb->pull(rb.get(), nullptr, 0), 0);
    EXPECT_EQ(avail(rb), CAPACITY);
}

TEST(RingBuffer, AMissingBufferIsRefused) {
    const auto rb = make_buffer(0, 0);
    EXPECT_EQ(rb->push(rb.get(), nullptr, 5), 0);
    push(rb, {1, 2, 3});
    EXPECT_EQ(rb->pull(rb.get(), nullptr, 5), 0);
    EXPECT_EQ(avail(rb), 3);
}

TEST(RingBuffer, ABlockingPullWaitsForAPush) {
    const auto rb = make_buffer(0, 1);
    auto pulled = in_background([&] { return pull(rb, 10); });
    wait_for_waiters(rb.get(), 1);
    push(rb, {5, 6});
    EXPECT_EQ(result_of(pulled), (bytes{5, 6}));
}

TEST(RingBuffer, ABlockingPullIsNotEndedByAnEmptyPush) {
    const auto rb = make_buffer(0, 1);
    auto pulled = in_background([&] { return pull(rb, 10); });
    wait_for_waiters(rb.get(), 1);
    push(rb, {});
    wait_for_waiters(rb.get(), 1);
    push(rb, {9});
    EXPECT_EQ(result_of(pulled), (bytes{9}));
}

TEST(RingBuffer, ABlockingPushReportsTheOverrunAndWaitsForRoom) {
    const auto rb = make_buffer(1, 0);
    fill(rb, 127999);
    testing::internal::CaptureStdout();
    auto pushed = in_background([&] { return push(rb, {1, 2, 3}); });
    wait_for_waiters(rb.get(), 1);
    EXPECT_EQ(pull(rb, 2), (bytes{0x11, 0x11}));
    EXPECT_EQ(result_of(pushed), 3);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Overrun! push 3 byte, remain 127999 bytes not be consumed. buffer size:128000.\n");
    EXPECT_EQ(avail(rb), CAPACITY);
}

TEST(RingBuffer, ABlockingPushReportsAgainWhenTheRoomIsStillTooSmall) {
    const auto rb = make_buffer(1, 0);
    fill(rb, CAPACITY);
    testing::internal::CaptureStdout();
    auto pushed = in_background([&] { return push(rb, {1, 2}); });
    wait_for_waiters(rb.get(), 1);
    std::string first =
        "Overrun! push 2 byte, remain 128000 bytes not be consumed. buffer size:128000.\n";
    EXPECT_EQ(pull(rb, 1).size(), 1U);
    EXPECT_EQ(pull(rb, 1).size(), 1U);
    EXPECT_EQ(result_of(pushed), 2);
    const std::string printed = testing::internal::GetCapturedStdout();
    // Whether the pusher woke between the two pulls is the scheduler's choice.
    EXPECT_TRUE(printed == first ||
                printed == first + "Overrun! push 2 byte, remain 127999 bytes not be consumed. "
                                   "buffer size:128000.\n")
        << printed;
}

TEST(RingBuffer, FreeAcceptsNull) {
    ring_buffer_free(nullptr);
}

TEST(RingBuffer, FreeDiscardsWhatIsStored) {
    const auto rb = make_buffer(0, 0);
    fill(rb, 1000);
}

TEST(RingBuffer, ABufferBeingFreedHoldsAndTakesNothing) {
    const auto rb = make_buffer(1, 1);
    push(rb, {1, 2, 3});
    impl_of(rb.get())->avail = 0;
    EXPECT_EQ(avail(rb), 0);
    EXPECT_EQ(pull(rb, 3), bytes{});
    EXPECT_EQ(push(rb, {4}), 0);
}

TEST(RingBuffer, FreeEndsABlockedPull) {
    auto rb = make_buffer(0, 1);
    ring_buffer_t* raw = rb.get();
    auto pulled = in_background([raw] {
        unsigned char byte = 0;
        return raw->pull(raw, &byte, 1);
    });
    wait_for_waiters(raw, 1);
    rb.reset();
    EXPECT_EQ(result_of(pulled), 0);
}

TEST(RingBuffer, FreeEndsEveryBlockedThread) {
    auto rb = make_buffer(1, 1);
    ring_buffer_t* raw = rb.get();
    std::vector<std::future<int>> blocked;
    blocked.reserve(4);
    for (int i = 0; i < 3; ++i) {
        blocked.push_back(in_background([raw] {
            unsigned char byte = 0;
            return raw->pull(raw, &byte, 1);
        }));
    }
    testing::internal::CaptureStdout();
    blocked.push_back(in_background([raw] {
        bytes too_much(CAPACITY + 1);
        return raw->push(raw, too_much.data(), CAPACITY + 1);
    }));
    wait_for_waiters(raw, 4);
    rb.reset();
    for (auto& answer : blocked) {
        EXPECT_EQ(result_of(answer), 0);
    }
    testing::internal::GetCapturedStdout();
}

TEST(RingBuffer, CloseEndsEveryBlockedThreadAndLeavesTheBufferToBeFreed) {
    const auto rb = make_buffer(0, 1);
    std::vector<std::future<bytes>> blocked;
    blocked.reserve(3);
    for (int i = 0; i < 3; ++i) {
        blocked.push_back(in_background([&] { return pull(rb, 10); }));
    }
    wait_for_waiters(rb.get(), 3);
    ring_buffer_close(rb.get());
    for (auto& answer : blocked) {
        EXPECT_EQ(result_of(answer), bytes{});
    }
    ring_buffer_close(rb.get());
    EXPECT_EQ(push(rb, {1}), 0);
    EXPECT_EQ(pull(rb, 1), bytes{});
    EXPECT_EQ(avail(rb), 0);
}

/// Takes everything that comes until `total` bytes are there.
bytes drain(const buffer_ptr& rb, size_t total) {
    bytes out;
    while (out.size() < total) {
        const bytes part = pull(rb, 3001);
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

TEST(RingBuffer, AStreamFromOneThreadToAnotherArrivesWholeAndInOrder) {
    const auto rb = make_buffer(1, 1);
    bytes data(600000);
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<unsigned char>(i * 31 + i / 251);
    }
    testing::internal::CaptureStdout(); // overruns may happen and are waited out
    auto received = in_background([&] { return drain(rb, data.size()); });
    for (size_t at = 0; at < data.size();) {
        const size_t n = std::min<size_t>(1 + at * 7919 % 9001, data.size() - at);
        const auto from = data.begin() + static_cast<std::ptrdiff_t>(at);
        ASSERT_EQ(push(rb, bytes(from, from + static_cast<std::ptrdiff_t>(n))), static_cast<int>(n));
        at += n;
    }
    EXPECT_TRUE(result_of(received) == data);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(avail(rb), 0);
}

} // namespace
