// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_pbap_queue.h"

#include "vym_pbap_impl.h"

#include "support/output_capture.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <pthread.h>

namespace {

struct free_item {
    void operator()(pbap_queue_t* item) const { free(item); }
};
using item_ptr = std::unique_ptr<pbap_queue_t, free_item>;

pbap_queue_t* MakeItem(int number) {
    auto* item = static_cast<pbap_queue_t*>(calloc(1, sizeof(pbap_queue_t)));
    item->parse_index = static_cast<uint8_t>(number);
    return item;
}

void Write(int number) {
    writeto_pbap_queue(MakeItem(number));
}

// The number of the item that is read, -1 for none.
int Read() {
    const item_ptr item(readfrom_pbap_queue());
    return item != nullptr ? item->parse_index : -1;
}

int Posts() {
    int value = -1;
    EXPECT_EQ(sem_getvalue(&sem, &value), 0);
    return value;
}

class PbapQueue : public ::testing::Test {
protected:
    void SetUp() override { start_pbap_queue(); }
    void TearDown() override {
        while (Read() >= 0) {
        }
        stop_pbap_queue();
    }
};

TEST_F(PbapQueue, ItemsComeOutInTheOrderTheyWereWritten) {
    Write(7);
    Write(3);
    Write(5);
    EXPECT_EQ(vym_pbap_queue_count(), 3);
    EXPECT_EQ(Read(), 7);
    EXPECT_EQ(Read(), 3);
    EXPECT_EQ(Read(), 5);
    EXPECT_EQ(Read(), -1);
    EXPECT_EQ(vym_pbap_queue_count(), 0);
    Write(9);
    EXPECT_EQ(Read(), 9);
}

TEST_F(PbapQueue, AnItemIsHandedOverAsItIs) {
    int data = 0;
    pbap_queue_t* const item = MakeItem(0xFE);
    item->param = &data;
    writeto_pbap_queue(item);
    const item_ptr read(readfrom_pbap_queue());
    EXPECT_EQ(read.get(), item);
    EXPECT_EQ(read->parse_index, 0xFE);
    EXPECT_EQ(read->param, &data);
}

TEST_F(PbapQueue, EachItemIsOnePostAndReadingTakesNone) {
    EXPECT_EQ(Posts(), 0);
    Write(1);
    Write(2);
    EXPECT_EQ(Posts(), 2);
    Read();
    EXPECT_EQ(Posts(), 2);
    pbap_thread_wait();
    EXPECT_EQ(Posts(), 1);
    pbap_thread_post();
    EXPECT_EQ(Posts(), 2);
    EXPECT_EQ(vym_pbap_queue_count(), 1);
}

TEST_F(PbapQueue, NoItemPrintsALineAndChangesNothing) {
    std::string out;
    {
        const support::OutputCapture output;
        writeto_pbap_queue(nullptr);
        out = output.Out();
    }
    EXPECT_EQ(out, "ERROR: pbap_queue is NULL !!!\r\n");
    EXPECT_EQ(Posts(), 0);
    EXPECT_EQ(vym_pbap_queue_count(), 0);
    EXPECT_EQ(Read(), -1);
}

TEST_F(PbapQueue, TheFirstItemComesAlone) {
    pbap_queue_t* const first = MakeItem(1);
    const item_ptr behind(MakeItem(2));
    first->next = behind.get();
    writeto_pbap_queue(first);
    EXPECT_EQ(first->next, nullptr);
    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(Read(), -1);
}

TEST_F(PbapQueue, ALaterItemBringsWhatItPointsTo) {
    Write(1);
    pbap_queue_t* const second = MakeItem(2);
    second->next = MakeItem(3);
    writeto_pbap_queue(second);
    EXPECT_EQ(Posts(), 2) << "the third is not counted";
    EXPECT_EQ(vym_pbap_queue_count(), 2);
    Write(4);
    for (int i = 1; i <= 4; ++i) {
        EXPECT_EQ(Read(), i);
    }
    EXPECT_EQ(Read(), -1);
}

TEST_F(PbapQueue, ARestartKeepsTheItemsAndForgetsTheCount) {
    Write(1);
    Write(2);
    stop_pbap_queue();
    EXPECT_EQ(vym_pbap_queue_count(), 0);
    start_pbap_queue();
    EXPECT_EQ(vym_pbap_queue_count(), 0);
    EXPECT_EQ(Posts(), 0) << "the old items are not waited for";
    Write(3);
    EXPECT_EQ(Posts(), 1);
    EXPECT_EQ(vym_pbap_queue_count(), 1);
    EXPECT_EQ(Read(), 1);
    EXPECT_EQ(Read(), 2);
    EXPECT_EQ(Read(), 3);
}

TEST_F(PbapQueue, AScheduledEventIsItsLowByte) {
    int data = 0;
    schedule_pbap_event(0x1FE, &data);
    EXPECT_EQ(Posts(), 1);
    const item_ptr item(readfrom_pbap_queue());
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->parse_index, 0xFE);
    EXPECT_EQ(item->param, &data);
}

TEST_F(PbapQueue, AWorkerSleepsUntilAnItemIsWritten) {
    std::atomic<int> read{-1};
    std::thread worker([&] {
        pbap_thread_wait();
        read = Read();
    });
    Write(42);
    worker.join();
    EXPECT_EQ(read, 42);
}

TEST_F(PbapQueue, ASignalEndsNoWait) {
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
    std::atomic<bool> ended{false};
    std::thread worker([&] {
        pbap_thread_wait();
        ended = true;
    });
    for (int i = 0; i < 1000 && !ended; ++i) {
        pthread_kill(worker.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    EXPECT_FALSE(ended);
    pbap_thread_post();
    worker.join();
    sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(PbapQueue, ManyWritersAndReadersLoseNothing) {
    constexpr int kWriters = 3;
    constexpr int kReaders = 2;
    constexpr int kItems = 80; // of each writer; 240 numbers fit into a byte
    std::vector<int> seen[kReaders];
    std::atomic<int> left{kWriters * kItems};
    std::vector<std::thread> threads;
    for (auto& mine : seen) {
        threads.emplace_back([&mine, &left] {
            while (left > 0) {
                pbap_thread_wait();
                const int number = Read();
                if (number >= 0) {
                    mine.push_back(number);
                    --left;
                }
            }
            pbap_thread_post(); // for the other reader
        });
    }
    for (int writer = 0; writer < kWriters; ++writer) {
        threads.emplace_back([writer] {
            for (int i = 0; i < kItems; ++i) {
                Write(writer * kItems + i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::multiset<int> all;
    for (const auto& mine : seen) {
        all.insert(mine.begin(), mine.end());
        for (int writer = 0; writer < kWriters; ++writer) {
            int last = -1;
            for (const int number : mine) {
                if (number / kItems == writer) {
                    EXPECT_GT(number, last) << "each writer's items keep their order";
                    last = number;
                }
            }
        }
    }
    EXPECT_EQ(all.size(), static_cast<size_t>(kWriters * kItems));
    EXPECT_EQ(std::set<int>(all.begin(), all.end()).size(), all.size());
    EXPECT_EQ(vym_pbap_queue_count(), 0);
}

} // namespace
