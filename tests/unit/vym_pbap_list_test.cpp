// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Lists of phones: nodes are only taken out at the head, and all that follows from it.

#include "vym_pbap_impl.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

bt_bdaddr_t Phone(char name) {
    return {{static_cast<uint8_t>(name), 0x21, 0x32, 0x43, 0x54, 0x65}};
}

class PbapList : public ::testing::Test {
protected:
    void TearDown() override {
        for (NODESTRU* node : nodes_) {
            free(node);
        }
    }

    // A node of the test's, with rubbish in its link.
    NODESTRU* Node(char name) {
        auto* node = static_cast<NODESTRU*>(calloc(1, sizeof(NODESTRU)));
        node->address = Phone(name);
        node->next = reinterpret_cast<NODESTRU*>(0x10);
        nodes_.push_back(node);
        return node;
    }
    NODESTRU* Add(char name) {
        NODESTRU* node = Node(name);
        Pbap_List_AddTail(&list_, node);
        return node;
    }
    NODESTRU* Remove(char name) { return Pbap_List_RemoveNodeByAddress(&list_, Phone(name)); }
    NODESTRU* Find(char name) { return Pbap_List_GetNodeByAddress(&list_, Phone(name)); }

    // The names that can be reached from the head, then the tail's: "AB tail B".
    std::string Names() {
        std::string names;
        for (const NODESTRU* node = list_.head; node != nullptr; node = node->next) {
            names += static_cast<char>(node->address.address[0]);
        }
        EXPECT_EQ(Pbap_List_GetSize(&list_), static_cast<int>(names.size()));
        return names + " tail " +
               (list_.tail == nullptr
                    ? std::string("null")
                    : std::string(1, static_cast<char>(list_.tail->address.address[0])));
    }

    LISTSTRU list_ = {};

private:
    std::vector<NODESTRU*> nodes_;
};

TEST_F(PbapList, ANewListIsEmpty) {
    EXPECT_EQ(Names(), " tail null");
    EXPECT_EQ(Find('A'), nullptr);
    EXPECT_EQ(Remove('A'), nullptr);
    Pbap_List_RemoveAll(&list_);
    EXPECT_EQ(Names(), " tail null");
}

TEST_F(PbapList, NodesAreAppendedWhateverTheirLinkHolds) {
    NODESTRU* const a = Add('A');
    EXPECT_EQ(Names(), "A tail A");
    EXPECT_EQ(a->next, nullptr);
    NODESTRU* const b = Add('B');
    NODESTRU* const c = Add('C');
    EXPECT_EQ(Names(), "ABC tail C");
    EXPECT_EQ(list_.head, a);
    EXPECT_EQ(a->next, b);
    EXPECT_EQ(b->next, c);
    EXPECT_EQ(list_.tail, c);
}

TEST_F(PbapList, AllSixBytesOfTheAddressCount) {
    NODESTRU* const a = Add('A');
    EXPECT_EQ(Find('A'), a);
    for (uint8_t& byte : a->address.address) {
        ++byte;
        EXPECT_EQ(Find('A'), nullptr);
        EXPECT_EQ(Remove('A'), nullptr);
        --byte;
    }
    EXPECT_EQ(Find('A'), a);
}

TEST_F(PbapList, TheFirstOfTwoWithOneAddressIsMeant) {
    Add('A');
    NODESTRU* const first = Add('B');
    NODESTRU* const second = Add('B');
    EXPECT_EQ(Find('B'), first);
    Remove('A');
    EXPECT_EQ(Remove('B'), first);
    EXPECT_EQ(Find('B'), second);
}

TEST_F(PbapList, TheHeadIsTakenOut) {
    NODESTRU* const a = Add('A');
    Add('B');
    EXPECT_EQ(Remove('A'), a);
    EXPECT_EQ(Names(), "B tail B");
    EXPECT_EQ(Find('A'), nullptr);
    EXPECT_NE(Remove('B'), nullptr);
    EXPECT_EQ(Names(), " tail null");
    Add('C');
    EXPECT_EQ(Names(), "C tail C");
}

TEST_F(PbapList, TheTailStaysLinkedBehindItsPredecessor) {
    Add('A');
    NODESTRU* const b = Add('B');
    EXPECT_EQ(Remove('B'), b);
    EXPECT_EQ(Names(), "AB tail A");
    EXPECT_EQ(Find('B'), b);
    Add('C');
    EXPECT_EQ(Names(), "ABC tail C") << "behind the last that can be reached, not behind the tail";
}

TEST_F(PbapList, ANodeInTheMiddleStaysLinked) {
    Add('A');
    NODESTRU* const b = Add('B');
    Add('C');
    EXPECT_EQ(Remove('B'), b);
    EXPECT_EQ(Names(), "ABC tail C");
    EXPECT_EQ(Remove('B'), b) << "and is found again";
    Remove('A');
    EXPECT_EQ(Names(), "BC tail C");
    EXPECT_EQ(Remove('B'), b) << "as the head it goes";
    EXPECT_EQ(Names(), "C tail C");
}

TEST_F(PbapList, ANodeLeftBehindIsLostWithTheTail) {
    Add('A');
    NODESTRU* const b = Add('B');
    Remove('B');
    Remove('A');
    EXPECT_EQ(Names(), "B tail null");
    EXPECT_EQ(Find('B'), b);
    Add('C');
    EXPECT_EQ(Names(), "C tail C");
    EXPECT_EQ(Find('B'), nullptr);
}

TEST_F(PbapList, ALastNodeAddedAgainDoesNotFollowItself) {
    Add('A');
    NODESTRU* const b = Add('B');
    Remove('B');
    Pbap_List_AddTail(&list_, b);
    EXPECT_EQ(Names(), "AB tail B");
    Pbap_List_AddTail(&list_, b);
    EXPECT_EQ(Names(), "AB tail B");
}

TEST_F(PbapList, RemoveAllFreesWhatCanBeReached) {
    for (const char name : {'A', 'B', 'C'}) {
        auto* node = static_cast<NODESTRU*>(malloc(sizeof(NODESTRU)));
        node->address = Phone(name);
        Pbap_List_AddTail(&list_, node);
    }
    Remove('C'); // still linked, and so freed, once
    Pbap_List_RemoveAll(&list_);
    EXPECT_EQ(Names(), " tail null");
    Pbap_List_RemoveAll(&list_);
    Add('D');
    EXPECT_EQ(Names(), "D tail D");
}

TEST_F(PbapList, NoListAndNoNodeAreNothing) {
    Pbap_List_AddTail(nullptr, Node('A'));
    Pbap_List_AddTail(&list_, nullptr);
    Pbap_List_RemoveAll(nullptr);
    EXPECT_EQ(Pbap_List_GetSize(nullptr), 0);
    EXPECT_EQ(Pbap_List_GetNodeByAddress(nullptr, Phone('A')), nullptr);
    EXPECT_EQ(Pbap_List_RemoveNodeByAddress(nullptr, Phone('A')), nullptr);
    EXPECT_EQ(Names(), " tail null");
}

TEST_F(PbapList, ThreadsMayShareOne) {
    std::vector<NODESTRU*> nodes;
    nodes.reserve(100);
    for (int i = 0; i < 100; ++i) {
        nodes.push_back(Node(static_cast<char>('!' + i % 90)));
    }
    std::vector<std::thread> threads;
    for (size_t first : {0U, 50U}) {
        threads.emplace_back([this, &nodes, first] {
            for (size_t i = first; i < first + 50; ++i) {
                Pbap_List_AddTail(&list_, nodes[i]);
                EXPECT_NE(Pbap_List_GetNodeByAddress(&list_, nodes[i]->address), nullptr);
                EXPECT_GT(Pbap_List_GetSize(&list_), 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Pbap_List_GetSize(&list_), 100);
}

// The module's own list, in which nodes that fell out are used again.
class PbapOwnList : public ::testing::Test {
protected:
    void SetUp() override { vym_pbap_forget_connections(); }
    void TearDown() override { vym_pbap_forget_connections(); }
};

TEST_F(PbapOwnList, OnePhoneThatComesAndGoesHasOneNode) {
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(vym_pbap_add_connection(Phone('A')), 1);
        EXPECT_EQ(vym_pbap_count_connections(), 1);
        vym_pbap_remove_connection(Phone('A'));
        EXPECT_EQ(vym_pbap_count_connections(), 0);
    }
    EXPECT_EQ(vym_pbap_count_nodes(), 1);
}

TEST_F(PbapOwnList, ALinkedNodeIsNeverUsedAgain) {
    vym_pbap_add_connection(Phone('A'));
    vym_pbap_add_connection(Phone('B'));
    vym_pbap_remove_connection(Phone('B'));
    vym_pbap_add_connection(Phone('C'));
    EXPECT_EQ(vym_pbap_count_connections(), 3);
    EXPECT_EQ(vym_pbap_count_nodes(), 3);
    EXPECT_EQ(vym_pbap_add_connection(Phone('B')), 0) << "it is found";
    vym_pbap_remove_connection(Phone('A'));
    vym_pbap_add_connection(Phone('D'));
    EXPECT_EQ(vym_pbap_count_connections(), 3);
    EXPECT_EQ(vym_pbap_count_nodes(), 3) << "A's node serves D";
}

TEST_F(PbapOwnList, ALostNodeIsUsedAgain) {
    vym_pbap_add_connection(Phone('A'));
    vym_pbap_add_connection(Phone('B'));
    vym_pbap_remove_connection(Phone('B'));
    vym_pbap_remove_connection(Phone('A'));
    vym_pbap_add_connection(Phone('C')); // drops B
    vym_pbap_add_connection(Phone('B'));
    EXPECT_EQ(vym_pbap_count_connections(), 2);
    EXPECT_EQ(vym_pbap_count_nodes(), 2);
}

TEST_F(PbapOwnList, ForgettingFreesLinkedAndLostNodesOnce) {
    for (const char name : {'A', 'B', 'C'}) {
        vym_pbap_add_connection(Phone(name));
    }
    for (const char name : {'B', 'C', 'A'}) {
        vym_pbap_remove_connection(Phone(name));
    }
    vym_pbap_forget_connections();
    EXPECT_EQ(vym_pbap_count_connections(), 0);
    EXPECT_EQ(vym_pbap_count_nodes(), 0);
    vym_pbap_forget_connections();
}

} // namespace
