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

TEST(DListItem, InsertionUnlinksFirstAndItemsLeaveByUnlinkOrDeath) {
    qe::DListItem<Node> head;
    Node a(1), b(2), c(3);
    EXPECT_FALSE(head.linked());
    head.insertBack(a);
    head.insertBack(b);
    head.insertFront(c);
    EXPECT_EQ(values(head), (std::vector<int>{3, 1, 2}));
    head.insertFront(b);  // moving an item does not corrupt the chain
    EXPECT_EQ(values(head), (std::vector<int>{2, 3, 1}));
    a.unlink();
    a.unlink();  // harmless twice
    EXPECT_FALSE(a.linked());
    {
        Node d(4);
        head.insertBack(d);
    }
    EXPECT_EQ(values(head), (std::vector<int>{2, 3}));
    // forEach may unlink the item it is on.
    head.forEach([](Node& n) {
        if (n.value != 2) n.unlink();
    });
    EXPECT_EQ(values(head), (std::vector<int>{2}));
}

}  // namespace
