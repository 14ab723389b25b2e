#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class WriteOutcome {
    Written,
    CouldNotOpen,  // the target cannot be written: a directory, no permission, no such folder
    WriteFailed,   // a write, the close or the final rename failed
};

// One output file, written in two steps so that several files can be
// replaced together: stage() writes every byte to a new temporary file
// beside the target, and commit() renames it over the target. Until then the
// target keeps its old bytes, and a failed write (a full disk) never leaves a
// truncated file. A staged file that is never committed is removed.
//
// The temporary file is created exclusively and without following links, so
// an existing file or link at its name is never written through or
// truncated: another name is taken instead. A target that is a symbolic link
// has the file it names replaced; a device or a pipe (/dev/stdout, a FIFO)
// has nothing to replace and is written in place by commit().
class StagedFile {
public:
    StagedFile() = default;
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    // `bytes` must stay alive until commit() for a target written in place.
    WriteOutcome stage(const std::string& path, std::string_view bytes);
    // After a successful stage(): puts the bytes in the target's place.
    WriteOutcome commit();

private:
    std::string target_;
    std::string temp_;        // empty once committed or removed
    int inPlace_ = -1;        // open descriptor of a target written in place
    std::string_view bytes_;  // what commit() writes in place
};
