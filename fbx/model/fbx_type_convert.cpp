#include "fbx/model/fbx_type_convert.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <type_traits>

namespace {

// A number read from any numeric value.
struct Number {
    bool isFloat = false;
    double d = 0.0;
    int64_t i = 0;
    bool isUnsigned = false;  // i holds the bits of a u64
};

template <class T>
constexpr bool kIsVector =
    std::is_same_v<T, FbxDouble2> || std::is_same_v<T, FbxDouble3> || std::is_same_v<T, FbxDouble4>;

template <class T>
constexpr int kVectorSize = sizeof(T) / sizeof(double);

bool readNumber(const void* src, EFbxType type, Number& n) {
    return FbxVisitType(type, false, [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        const T& v = *static_cast<const T*>(src);
        if constexpr (std::is_same_v<T, FbxBool>) {
            n.i = v ? 1 : 0;
        } else if constexpr (std::is_same_v<T, FbxULongLong>) {
            n.i = static_cast<int64_t>(v);
            n.isUnsigned = true;
        } else if constexpr (std::is_integral_v<T>) {
            n.i = v;
        } else if constexpr (std::is_floating_point_v<T>) {
            n.isFloat = true;
            n.d = v;
        } else if constexpr (std::is_same_v<T, FbxHalfFloat>) {
            n.isFloat = true;
            n.d = v.Value();
        } else if constexpr (std::is_same_v<T, FbxTime>) {
            n.i = v.Get();
        } else if constexpr (std::is_same_v<T, FbxDistance>) {
            n.isFloat = true;
            n.d = v.value;
        } else {
            return false;
        }
        return true;
    });
}

double asDouble(const Number& n) {
    if (n.isFloat) return n.d;
    if (n.isUnsigned) return static_cast<double>(static_cast<uint64_t>(n.i));
    return static_cast<double>(n.i);
}

template <class I>
I toInteger(const Number& n) {
    if (!n.isFloat)
        return static_cast<I>(n.isUnsigned ? static_cast<I>(static_cast<uint64_t>(n.i)) : static_cast<I>(n.i));
    double d = n.d;
    if (std::isnan(d)) return 0;
    constexpr double lo = static_cast<double>(std::numeric_limits<I>::lowest());
    constexpr double hi = static_cast<double>(std::numeric_limits<I>::max());
    if (d <= lo) return std::numeric_limits<I>::lowest();
    if (d >= hi) return std::numeric_limits<I>::max();
    return static_cast<I>(d);
}

bool writeNumber(const Number& n, void* dst, EFbxType type) {
    return FbxVisitType(type, false, [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        T& v = *static_cast<T*>(dst);
        if constexpr (std::is_same_v<T, FbxBool>) {
            v = n.isFloat ? n.d != 0.0 : n.i != 0;
        } else if constexpr (std::is_integral_v<T>) {
            v = toInteger<T>(n);
        } else if constexpr (std::is_floating_point_v<T>) {
            v = static_cast<T>(asDouble(n));
        } else if constexpr (std::is_same_v<T, FbxHalfFloat>) {
            v = FbxHalfFloat(static_cast<float>(asDouble(n)));
        } else if constexpr (std::is_same_v<T, FbxTime>) {
            v = FbxTime(toInteger<int64_t>(n));
        } else if constexpr (std::is_same_v<T, FbxDistance>) {
            v.value = static_cast<float>(asDouble(n));
        } else if constexpr (kIsVector<T>) {
            for (double& d : v.data) d = asDouble(n);
        } else {
            return false;
        }
        return true;
    });
}

void appendDouble(FbxString& out, double d) {
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof(buffer), d);
    out.append(buffer, result.ptr);
}

void appendFloat(FbxString& out, float f) {
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof(buffer), f);
    out.append(buffer, result.ptr);
}

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

// Parses a whole number or a float; the whole text must be used.
bool parseNumber(std::string_view s, Number& n) {
    s = trim(s);
    if (s.empty()) return false;
    if (equalsNoCase(s, "true")) {
        n.i = 1;
        return true;
    }
    if (equalsNoCase(s, "false")) {
        n.i = 0;
        return true;
    }
    std::string_view digits = s.front() == '+' ? s.substr(1) : s;
    int64_t i = 0;
    auto ri = std::from_chars(digits.data(), digits.data() + digits.size(), i);
    if (ri.ec == std::errc() && ri.ptr == digits.data() + digits.size()) {
        n.i = i;
        return true;
    }
    uint64_t u = 0;
    auto ru = std::from_chars(digits.data(), digits.data() + digits.size(), u);
    if (ru.ec == std::errc() && ru.ptr == digits.data() + digits.size()) {
        n.i = static_cast<int64_t>(u);
        n.isUnsigned = true;
        return true;
    }
    double d = 0.0;
    auto rd = std::from_chars(digits.data(), digits.data() + digits.size(), d);
    if (rd.ec == std::errc() && rd.ptr == digits.data() + digits.size()) {
        n.isFloat = true;
        n.d = d;
        return true;
    }
    return false;
}

// Parses exactly `count` numbers separated by "," (blanks around them are
// allowed).
bool parseDoubles(std::string_view s, double* out, int count) {
    for (int k = 0; k < count; ++k) {
        size_t comma = s.find(',');
        if ((comma == std::string_view::npos) != (k == count - 1)) return false;
        Number n;
        if (!parseNumber(s.substr(0, comma), n)) return false;
        out[k] = asDouble(n);
        if (comma != std::string_view::npos) s.remove_prefix(comma + 1);
    }
    return true;
}

bool fromString(const FbxString& text, void* dst, EFbxType type) {
    switch (type) {
    case eFbxString:
        *static_cast<FbxString*>(dst) = text;
        return true;
    case eFbxDouble2:
    case eFbxDouble3:
    case eFbxDouble4:
    case eFbxDouble4x4: {
        int count = type == eFbxDouble2 ? 2 : type == eFbxDouble3 ? 3 : type == eFbxDouble4 ? 4 : 16;
        double values[16];
        if (!parseDoubles(text, values, count)) return false;
        std::memcpy(dst, values, sizeof(double) * count);
        return true;
    }
    case eFbxDateTime:
        return static_cast<FbxDateTime*>(dst)->FromString(text.c_str());
    case eFbxDistance: {
        std::string_view s = trim(text);
        size_t blank = s.find(' ');
        Number n;
        if (!parseNumber(s.substr(0, blank), n)) return false;
        auto* d = static_cast<FbxDistance*>(dst);
        d->value = static_cast<float>(asDouble(n));
        if (blank != std::string_view::npos) d->unit = FbxString(trim(s.substr(blank + 1)));
        return true;
    }
    case eFbxBlob:
    case eFbxReference:
    case eFbxUndefined:
        return false;
    default: {
        Number n;
        if (!parseNumber(text, n)) return false;
        return writeNumber(n, dst, type);
    }
    }
}

}  // namespace

FbxString FbxValueToString(const void* src, EFbxType srcType) {
    FbxString out;
    FbxVisitType(srcType, 0, [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        const T& v = *static_cast<const T*>(src);
        if constexpr (std::is_same_v<T, FbxBool>) {
            out = v ? "true" : "false";
        } else if constexpr (std::is_same_v<T, FbxChar> || std::is_same_v<T, FbxShort> || std::is_same_v<T, FbxInt> ||
                             std::is_same_v<T, FbxLongLong>) {
            out = std::to_string(static_cast<long long>(v));
        } else if constexpr (std::is_integral_v<T>) {
            out = std::to_string(static_cast<unsigned long long>(v));
        } else if constexpr (std::is_same_v<T, FbxFloat>) {
            appendFloat(out, v);
        } else if constexpr (std::is_same_v<T, FbxDouble>) {
            appendDouble(out, v);
        } else if constexpr (std::is_same_v<T, FbxHalfFloat>) {
            appendFloat(out, v.Value());
        } else if constexpr (std::is_same_v<T, FbxTime>) {
            out = std::to_string(static_cast<long long>(v.Get()));
        } else if constexpr (std::is_same_v<T, FbxDistance>) {
            appendFloat(out, v.value);
            if (!v.unit.empty()) out += ' ' + v.unit;
        } else if constexpr (std::is_same_v<T, FbxString>) {
            out = v;
        } else if constexpr (std::is_same_v<T, FbxDateTime>) {
            out = v.ToString();
        } else if constexpr (std::is_same_v<T, FbxBlob>) {
            out.assign(reinterpret_cast<const char*>(v.Data()), v.Size());
        } else {
            for (int k = 0; k < kVectorSize<T>; ++k) {
                if (k) out += ',';
                appendDouble(out, v.data[k]);
            }
        }
        return 0;
    });
    return out;
}

bool FbxValueEqual(const void* a, const void* b, EFbxType type) {
    return FbxVisitType(type, false, [&](auto* tag) {
        using T = std::remove_pointer_t<decltype(tag)>;
        return *static_cast<const T*>(a) == *static_cast<const T*>(b);
    });
}

bool FbxTypeConvert(const void* src, EFbxType srcType, void* dst, EFbxType dstType) {
    if (!src || !dst || !FbxTypeHasValue(srcType) || !FbxTypeHasValue(dstType)) return false;
    // Enum and integer share their storage.
    EFbxType from = srcType == eFbxEnum ? eFbxInt : srcType;
    EFbxType to = dstType == eFbxEnum ? eFbxInt : dstType;
    if (from == to) {
        return FbxVisitType(from, false, [&](auto* tag) {
            using T = std::remove_pointer_t<decltype(tag)>;
            *static_cast<T*>(dst) = *static_cast<const T*>(src);
            return true;
        });
    }
    if (to == eFbxString) {
        if (from == eFbxBlob) return false;
        *static_cast<FbxString*>(dst) = FbxValueToString(src, from);
        return true;
    }
    if (from == eFbxString) {
        // Parse into a scratch value first, so that a failure leaves the
        // target untouched.
        return FbxVisitType(to, false, [&](auto* tag) {
            using T = std::remove_pointer_t<decltype(tag)>;
            T scratch = *static_cast<const T*>(dst);
            if (!fromString(*static_cast<const FbxString*>(src), &scratch, to)) return false;
            *static_cast<T*>(dst) = std::move(scratch);
            return true;
        });
    }
    bool srcVector = from == eFbxDouble2 || from == eFbxDouble3 || from == eFbxDouble4;
    bool dstVector = to == eFbxDouble2 || to == eFbxDouble3 || to == eFbxDouble4;
    if (srcVector && dstVector) {
        int srcCount = from == eFbxDouble2 ? 2 : from == eFbxDouble3 ? 3 : 4;
        int dstCount = to == eFbxDouble2 ? 2 : to == eFbxDouble3 ? 3 : 4;
        const double* s = static_cast<const double*>(src);
        double* d = static_cast<double*>(dst);
        for (int k = 0; k < dstCount; ++k) d[k] = k < srcCount ? s[k] : 0.0;
        return true;
    }
    if (srcVector || from == eFbxDouble4x4 || to == eFbxDouble4x4) return false;
    Number n;
    if (!readNumber(src, from, n)) return false;
    return writeNumber(n, dst, to);
}
