#pragma once

#include <unordered_map>
#include <utility>
#include <vector>

#include "fbx/model/fbx_string.h"

// Counts of a file's objects by type word, in the order the file lists
// them, as its "Definitions" give them.
class FbxStatistics {
public:
    void Reset() {
        items_.clear();
        index_.clear();
    }
    // Adds to the count of a type word, entering it on first use.
    void AddItem(const FbxString& name, int count) {
        auto [it, added] = index_.emplace(name, items_.size());
        if (added)
            items_.emplace_back(name, count);
        else
            items_[it->second].second += count;
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
        if (!name) return 0;
        auto it = index_.find(name);
        return it == index_.end() ? 0 : items_[it->second].second;
    }
    // The sum of all counts.
    long long GetTotal() const {
        long long total = 0;
        for (const auto& item : items_) total += item.second;
        return total;
    }

private:
    std::vector<std::pair<FbxString, int>> items_;
    std::unordered_map<FbxString, size_t> index_;  // word to its place in items_
};
