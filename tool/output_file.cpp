#include "tool/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

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

WriteOutcome writeInPlace(const std::string& path, std::string_view bytes) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0) return WriteOutcome::CouldNotOpen;
    bool ok = writeAll(fd, bytes.data(), bytes.size());
    if (::close(fd) != 0) ok = false;
    return ok ? WriteOutcome::Written : WriteOutcome::WriteFailed;
}

}  // namespace

WriteOutcome writeFileReplacing(const std::string& path, std::string_view bytes) {
    // The target itself must be a file that may be written, or be absent:
    // renaming over a directory or over a read-only file is refused as a
    // plain open for writing would be.
    std::string target = path;
    struct stat st;
    if (::stat(path.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode) || ::access(path.c_str(), W_OK) != 0) return WriteOutcome::CouldNotOpen;
        // A device or a pipe (/dev/stdout, a FIFO) is written in place: there
        // is nothing to replace, and renaming over it would be wrong.
        if (!S_ISREG(st.st_mode)) return writeInPlace(path, bytes);
        // Through a symbolic link the file it names is replaced, not the link.
        struct stat lst;
        if (::lstat(path.c_str(), &lst) == 0 && S_ISLNK(lst.st_mode)) {
            char* resolved = ::realpath(path.c_str(), nullptr);
            if (!resolved) return WriteOutcome::CouldNotOpen;
            target = resolved;
            std::free(resolved);
        }
    }
    const std::string temp = target + ".tmp" + std::to_string(::getpid());
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return WriteOutcome::CouldNotOpen;
    bool ok = writeAll(fd, bytes.data(), bytes.size());
    if (::close(fd) != 0) ok = false;
    if (ok && ::rename(temp.c_str(), target.c_str()) != 0) ok = false;
    if (!ok) {
        ::unlink(temp.c_str());
        return WriteOutcome::WriteFailed;
    }
    return WriteOutcome::Written;
}
