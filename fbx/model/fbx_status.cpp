#include "fbx/model/fbx_status.h"

#include <cstdarg>
#include <cstdio>

const char* FbxStatus::DefaultMessage(EStatusCode code) {
    switch (code) {
    case eSuccess:
        return "";
    case eFailure:
        return "Unknown error";
    case eInsufficientMemory:
        return "Insufficient memory";
    case eInvalidParameter:
        return "Invalid parameter";
    case eIndexOutOfRange:
        return "Index out of range";
    case ePasswordError:
        return "Invalid password";
    case eInvalidFileVersion:
        return "Unsupported file version";
    case eInvalidFile:
        return "Invalid file";
    }
    return "Unknown error";
}

void FbxStatus::SetCode(EStatusCode code) {
    code_ = code;
    message_ = DefaultMessage(code);
}

void FbxStatus::SetCode(EStatusCode code, const char* format, ...) {
    char buffer[4096];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    code_ = code;
    message_ = buffer;
}

void FbxStatus::Clear() {
    code_ = eSuccess;
    message_.clear();
}
