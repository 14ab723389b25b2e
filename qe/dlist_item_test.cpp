#include "qe/dlist_item.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct Node : qe::DListItem<Node> {
    explicit Node(int v) : value(v) {}
    int value;
};

std::vector<int> values(qe::DListItem<Node>& head) {
    std::vector<int> out;
    head.forEach([&](Node& n) { out.push_back(n.value); });
    return out;
}

TEST(DListItem, FrontAndBackInsertionAndUnlink) {
    qe::DListItem<Node> head;
    Node a(1), b(2), c(3);
    EXPECT_FALSE(head.linked());
    head.insertBack(a);
    head.insertBack(b);
    head.insertFront(c);
    EXPECT_EQ(values(head), (std::vector<int>{3, 1, 2}));

    // Insertion unlinks first: moving an item does not corrupt the chain.
    head.insertFront(b);
    EXPECT_EQ(values(head), (std::vector<int>{2, 3, 1}));

    a.unlink();
    a.unlink();  // harmless twice
    EXPECT_FALSE(a.linked());
    EXPECT_EQ(values(head), (std::vector<int>{2, 3}));
}

TEST(DListItem, DestroyedItemLeavesTheList) {
    qe::DListItem<Node> head;
    Node a(1);
    {
        Node b(2);
        head.insertBack(a);
        head.insertBack(b);
    }
    EXPECT_EQ(values(head), (std::vector<int>{1}));
}

TEST(DListItem, ForEachMayUnlinkTheCurrentItem) {
    qe::DListItem<Node> head;
    Node a(1), b(2), c(3);
    head.insertBack(a);
    head.insertBack(b);
    head.insertBack(c);
    head.forEach([](Node& n) {
        if (n.value != 2) n.unlink();
    });
    EXPECT_EQ(values(head), (std::vector<int>{2}));
}

}  // namespace
