#pragma once

#include <ostream>
#include <set>
#include <string>
#include <string_view>

// The files that the output depends on: every input, every image that was
// converted and every settings file that was looked for, existing or not.
// Kept sorted byte-wise (unsigned bytes, shorter prefix first) without
// duplicates, so the list is the same on every machine.
class DependencySet {
public:
    void add(std::string_view path) { paths_.emplace(path); }
    bool contains(std::string_view path) const { return paths_.count(std::string(path)) != 0; }
    size_t size() const { return paths_.size(); }
    const std::set<std::string>& paths() const { return paths_; }

    // One path per line, in order.
    void writeTo(std::ostream& out) const;

private:
    // std::string compares through char_traits<char>, which orders bytes as
    // unsigned char: exactly the byte-wise order wanted here.
    std::set<std::string> paths_;
};
