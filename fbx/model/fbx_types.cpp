#include "fbx/model/fbx_types.h"

#include <cstdio>
#include <cstring>

FbxString FbxDateTime::ToString() const {
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%04d-%02d-%02d %02d:%02d:%02d:%03d", year, month, day, hour, minute, second,
                  millisecond);
    return buffer;
}

bool FbxDateTime::FromString(const char* text) {
    if (!text) return false;
    int fields[7] = {};
    int count = 0;
    const char* p = text;
    while (*p == ' ') ++p;
    while (count < 7 && *p) {
        if (*p < '0' || *p > '9') return false;
        long value = 0;
        while (*p >= '0' && *p <= '9') {
            value = value * 10 + (*p - '0');
            if (value > 1000000) return false;
            ++p;
        }
        fields[count++] = static_cast<int>(value);
        if (!*p) break;
        if (*p != '-' && *p != ' ' && *p != ':' && *p != '.' && *p != '/') return false;
        ++p;
    }
    if (count == 0 || *p) return false;
    year = fields[0];
    month = fields[1];
    day = fields[2];
    hour = fields[3];
    minute = fields[4];
    second = fields[5];
    millisecond = fields[6];
    return true;
}

uint16_t FbxHalfFloat::FromFloat(float value) {
    uint32_t f;
    std::memcpy(&f, &value, 4);
    uint32_t sign = (f >> 16) & 0x8000u;
    uint32_t exponent = (f >> 23) & 0xFFu;
    uint32_t mantissa = f & 0x7FFFFFu;
    if (exponent == 0xFF) return static_cast<uint16_t>(sign | 0x7C00u | (mantissa ? 0x200u : 0u));
    int e = static_cast<int>(exponent) - 127 + 15;
    if (e >= 31) return static_cast<uint16_t>(sign | 0x7C00u);
    if (e <= 0) {
        if (e < -10) return static_cast<uint16_t>(sign);
        mantissa |= 0x800000u;
        uint32_t shift = static_cast<uint32_t>(14 - e);
        uint32_t half = mantissa >> shift;
        uint32_t rest = mantissa & ((1u << shift) - 1u);
        uint32_t halfway = 1u << (shift - 1);
        if (rest > halfway || (rest == halfway && (half & 1u))) ++half;
        return static_cast<uint16_t>(sign | half);
    }
    uint32_t half = sign | (static_cast<uint32_t>(e) << 10) | (mantissa >> 13);
    uint32_t rest = mantissa & 0x1FFFu;
    if (rest > 0x1000u || (rest == 0x1000u && (half & 1u))) ++half;
    return static_cast<uint16_t>(half);
}

float FbxHalfFloat::ToFloat(uint16_t bits) {
    uint32_t sign = static_cast<uint32_t>(bits & 0x8000u) << 16;
    uint32_t exponent = (bits >> 10) & 0x1Fu;
    uint32_t mantissa = bits & 0x3FFu;
    uint32_t f;
    if (exponent == 0) {
        if (mantissa == 0) {
            f = sign;
        } else {
            int e = -1;
            do {
                ++e;
                mantissa <<= 1;
            } while (!(mantissa & 0x400u));
            f = sign | (static_cast<uint32_t>(127 - 15 - e) << 23) | ((mantissa & 0x3FFu) << 13);
        }
    } else if (exponent == 31) {
        f = sign | 0x7F800000u | (mantissa << 13);
    } else {
        f = sign | ((exponent + 127 - 15) << 23) | (mantissa << 13);
    }
    float value;
    std::memcpy(&value, &f, 4);
    return value;
}
