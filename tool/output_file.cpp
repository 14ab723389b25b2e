#include "tool/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= size_t(n);
    }
    return true;
}

// Creates a new file beside target, never opening anything that is already
// there; its name goes to temp. -1 when no file could be created.
int createTemporary(const std::string& target, std::string& temp) {
    constexpr int kAttempts = 100;
    std::random_device random;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        temp = target + ".tmp" + std::to_string(::getpid());
        if (attempt > 0) temp += "." + std::to_string(random());
        const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd >= 0) return fd;
        if (errno != EEXIST && errno != EINTR) break;
    }
    temp.clear();
    return -1;
}

}  // namespace

StagedFile::~StagedFile() {
    if (!temp_.empty()) ::unlink(temp_.c_str());
    if (inPlace_ >= 0) ::close(inPlace_);
}

WriteOutcome StagedFile::stage(const std::string& path, std::string_view bytes) {
    // The target itself must be a file that may be written, or be absent:
    // renaming over a directory or over a read-only file is refused as a
    // plain open for writing would be.
    target_ = path;
    struct stat st;
    if (::stat(path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode) || ::access(path.c_str(), W_OK) != 0) return WriteOutcome::CouldNotOpen;
        if (!S_ISREG(st.st_mode)) {
            inPlace_ = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
            bytes_ = bytes;
            return inPlace_ >= 0 ? WriteOutcome::Written : WriteOutcome::CouldNotOpen;
        }
        struct stat lst;
        if (::lstat(path.c_str(), &lst) == 0 && S_ISLNK(lst.st_mode)) {
            char* resolved = ::realpath(path.c_str(), nullptr);
            if (!resolved) return WriteOutcome::CouldNotOpen;
            target_ = resolved;
            std::free(resolved);
        }
    }
    const int fd = createTemporary(target_, temp_);
    if (fd < 0) return WriteOutcome::CouldNotOpen;
    bool ok = writeAll(fd, bytes.data(), bytes.size());
    if (::close(fd) != 0) ok = false;
    if (ok) return WriteOutcome::Written;
    ::unlink(temp_.c_str());
    temp_.clear();
    return WriteOutcome::WriteFailed;
}

WriteOutcome StagedFile::commit() {
    if (inPlace_ >= 0) {
        bool ok = writeAll(inPlace_, bytes_.data(), bytes_.size());
        if (::close(inPlace_) != 0) ok = false;
        inPlace_ = -1;
        return ok ? WriteOutcome::Written : WriteOutcome::WriteFailed;
    }
    if (temp_.empty()) return WriteOutcome::WriteFailed;
    const bool ok = ::rename(temp_.c_str(), target_.c_str()) == 0;
    if (ok) temp_.clear();
    return ok ? WriteOutcome::Written : WriteOutcome::WriteFailed;
}
