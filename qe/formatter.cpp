#include "qe/formatter.h"

namespace qe {

void FormatterArg::printPlural(std::ostream& out, std::string_view, std::string_view) const { print(out); }

void NumericFormatterArg<int>::print(std::ostream& out) const { out << value; }

void NumericFormatterArg<int>::printPlural(std::ostream& out, std::string_view singular,
                                           std::string_view plural) const {
    out << (value == 1 ? singular : plural);
}

Formatter& Formatter::arg(int32_t value) {
    args_.push_back(std::make_unique<NumericFormatterArg<int>>(value));
    return *this;
}

void Formatter::writeField(std::ostream& out, size_t index, char type, std::string_view text) const {
    const FormatterArg& a = *args_[index];
    if (type != 'p') {
        a.print(out);
        return;
    }
    size_t semi = text.find(';');
    if (semi == std::string_view::npos)
        a.printPlural(out, std::string_view(), text);
    else
        a.printPlural(out, text.substr(0, semi), text.substr(semi + 1));
}

void Formatter::writeTo(std::ostream& out) const {
    enum class State { Text, Percent, Number, FieldText };
    // Numbers beyond this can never name an argument; saturating keeps the
    // arithmetic defined for absurd templates.
    constexpr size_t kNumberCap = size_t(1) << 30;

    const std::string_view t = template_;
    State state = State::Text;
    size_t textStart = 0;   // first byte of pending literal text
    size_t fieldStart = 0;  // the field's opening '%'
    size_t number = 0;
    bool hasNumber = false;
    char type = 0;
    size_t fieldTextStart = 0;
    size_t nextIndex = 0;

    auto flushText = [&](size_t end) {
        if (end > textStart) out.write(t.data() + textStart, std::streamsize(end - textStart));
    };
    auto finishField = [&](size_t closing) {
        size_t index = hasNumber ? number : nextIndex;
        if (index < args_.size()) {
            std::string_view text;
            if (type != 0) text = t.substr(fieldTextStart, closing - fieldTextStart);
            writeField(out, index, type, text);
        } else {
            out.write(t.data() + fieldStart, std::streamsize(closing + 1 - fieldStart));
        }
        nextIndex = index + 1;
        textStart = closing + 1;
        state = State::Text;
    };

    for (size_t i = 0; i < t.size(); ++i) {
        const char c = t[i];
        const bool digit = c >= '0' && c <= '9';
        switch (state) {
        case State::Text:
            if (c == '%') {
                flushText(i);
                textStart = i;
                fieldStart = i;
                state = State::Percent;
            }
            break;
        case State::Percent:
            if (c == '%') {
                out.put('%');
                textStart = i + 1;
                state = State::Text;
            } else if (digit) {
                hasNumber = true;
                number = size_t(c - '0');
                state = State::Number;
            } else {
                hasNumber = false;
                type = c;
                fieldTextStart = i + 1;
                state = State::FieldText;
            }
            break;
        case State::Number:
            if (digit) {
                number = number * 10 + size_t(c - '0');
                if (number > kNumberCap) number = kNumberCap;
            } else if (c == '%') {
                type = 0;
                finishField(i);
            } else {
                type = c;
                fieldTextStart = i + 1;
                state = State::FieldText;
            }
            break;
        case State::FieldText:
            if (c == '%') finishField(i);
            break;
        }
    }
    // Literal text, or a field cut off by the end, goes out as it stands.
    flushText(t.size());
}

}  // namespace qe
