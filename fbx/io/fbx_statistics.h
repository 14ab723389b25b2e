#pragma once

#include <utility>
#include <vector>

#include "fbx/model/fbx_string.h"

// Counts of a file's objects by type word, in the order the file lists
// them, as its "Definitions" give them.
class FbxStatistics {
public:
    void Reset() { items_.clear(); }
    // Adds to the count of a type word, entering it on first use.
    void AddItem(const FbxString& name, int count) {
        for (auto& item : items_)
            if (item.first == name) {
                item.second += count;
                return;
            }
        items_.emplace_back(name, count);
    }
    int GetNbItems() const { return static_cast<int>(items_.size()); }
    // False for an index out of range.
    bool GetItemPair(int index, FbxString& name, int& count) const {
        if (index < 0 || index >= GetNbItems()) return false;
        name = items_[index].first;
        count = items_[index].second;
        return true;
    }
    // 0 for a word that is not there.
    int GetCount(const char* name) const {
        for (const auto& item : items_)
            if (item.first == name) return item.second;
        return 0;
    }
    // The sum of all counts.
    long long GetTotal() const {
        long long total = 0;
        for (const auto& item : items_) total += item.second;
        return total;
    }

private:
    std::vector<std::pair<FbxString, int>> items_;
};
