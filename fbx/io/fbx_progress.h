#pragma once

#include "fbx/model/fbx_string.h"

// How far a read has come: a total and a current value, and the text of the
// last step. A run is cancelled only when a caller asks for it.
class FbxProgress {
public:
    void Reset() {
        current_ = 0.0f;
        text_.clear();
        finished_ = false;
    }
    void SetTotal(float total) { total_ = total; }
    float GetTotal() const { return total_; }
    float GetCurrent() const { return current_; }
    const FbxString& GetText() const { return text_; }
    // Adds `amount` with the text of the step; false once cancelled.
    bool Update(float amount, const char* text = nullptr) {
        current_ += amount;
        if (text) text_ = text;
        return !cancelled_;
    }
    void Cancel() { cancelled_ = true; }
    bool IsCancelled() const { return cancelled_; }
    void Complete() { finished_ = true; }
    bool IsFinished() const { return finished_; }

private:
    float total_ = 0.0f;
    float current_ = 0.0f;
    FbxString text_;
    bool cancelled_ = false;
    bool finished_ = false;
};
