#include <cstdio>

#include "fbx/model/fbx_types.h"

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
