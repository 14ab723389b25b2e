#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class WriteOutcome {
    Written,
    CouldNotOpen,  // the target cannot be written: a directory, no permission, no such folder
    WriteFailed,   // a write, the close or the final rename failed
};

// Writes bytes to a temporary file beside path and renames it over path
// only when every byte is written and the file is closed, so that a failed
// write (a full disk) never leaves a truncated file behind and an existing
// file keeps its old bytes. The temporary file is removed on failure.
WriteOutcome writeFileReplacing(const std::string& path, std::string_view bytes);
