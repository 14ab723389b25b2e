#pragma once

#include "fbx/model/fbx_string.h"

// The error record that the document model and its readers share: a code and
// a message. Operations that fail return false/null/0 and leave the reason
// here; nothing in the document model throws.
class FbxStatus {
public:
    enum EStatusCode {
        eSuccess = 0,
        eFailure = 1,
        eInsufficientMemory = 2,
        eInvalidParameter = 3,
        eIndexOutOfRange = 4,
        ePasswordError = 5,
        eInvalidFileVersion = 6,
        eInvalidFile = 7,
    };

    FbxStatus() = default;
    explicit FbxStatus(EStatusCode code) { SetCode(code); }

    // Sets the code with its default message.
    void SetCode(EStatusCode code);
    // Sets the code with a printf-style message, formatted into at most 4096
    // characters.
    void SetCode(EStatusCode code, const char* format, ...) __attribute__((format(printf, 3, 4)));
    void Clear();

    EStatusCode GetCode() const { return code_; }
    bool Error() const { return code_ != eSuccess; }
    explicit operator bool() const { return code_ == eSuccess; }
    const char* GetErrorString() const { return message_.c_str(); }

    static const char* DefaultMessage(EStatusCode code);

private:
    EStatusCode code_ = eSuccess;
    FbxString message_;
};
