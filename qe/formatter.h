#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

namespace qe {

// One argument of a Formatter.
class FormatterArg {
public:
    virtual ~FormatterArg() = default;
    virtual void print(std::ostream& out) const = 0;
    // Writes one of the two texts chosen by the argument's value. An argument
    // that is no number ignores both texts and prints itself.
    virtual void printPlural(std::ostream& out, std::string_view singular, std::string_view plural) const;
};

template <class T>
class NumericFormatterArg;

template <>
class NumericFormatterArg<int> final : public FormatterArg {
public:
    explicit NumericFormatterArg(int32_t v) : value(v) {}
    void print(std::ostream& out) const override;
    // singular for exactly 1, plural for every other value.
    void printPlural(std::ostream& out, std::string_view singular, std::string_view plural) const override;

    int32_t value;
};

// A positional message formatter. Fields of the template:
//   %%          one '%'
//   %N%         argument N (counted from 0)
//   %Nt...%     argument N with type character t and a field text
//   %t...%      the same for the argument after the last one used
// Type 'p' splits the field text at its first ';' into singular and plural
// (no ';': empty singular, all of it plural). A field whose argument does
// not exist, or that the end of the template cuts off, is copied through.
// The template is not owned: it must outlive the formatter.
class Formatter {
public:
    explicit Formatter(std::string_view templateText) : template_(templateText) {}
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;

    Formatter& arg(int32_t value);
    void writeTo(std::ostream& out) const;

private:
    void writeField(std::ostream& out, size_t index, char type, std::string_view text) const;

    std::string_view template_;
    std::vector<std::unique_ptr<FormatterArg>> args_;
};

}  // namespace qe
