#include "core/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

namespace tl {

namespace {

constexpr size_t kBufferSize = 1 << 16;

// The permissions a newly created file would get: rw for all, less the umask.
mode_t DefaultFileMode() {
    mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(const std::string& target) : target_(target) {
    std::error_code ec;
    fs::path real = target;
    if (fs::is_symlink(real, ec)) {
        fs::path resolved = fs::canonical(real, ec);
        if (!ec) real = resolved;
    }
    target_ = real.string();
    fs::path dir = real.parent_path();
    if (dir.empty()) dir = ".";
    std::string pattern = (dir / ("." + real.filename().string() + ".saving-XXXXXX")).string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    fd_ = mkstemp(name.data());
    if (fd_ < 0) {
        error_ =
            "cannot create a temporary file in " + dir.string() + " (" + std::strerror(errno) + ")";
        return;
    }
    temp_ = name.data();
    // mkstemp makes the file private; give it the old file's permissions, or
    // those of any new file.
    struct stat st {};
    mode_t mode = stat(target_.c_str(), &st) == 0 ? (st.st_mode & 07777) : DefaultFileMode();
    fchmod(fd_, mode);
    buffer_.reserve(kBufferSize);
}

AtomicFileWriter::~AtomicFileWriter() {
    Discard();
}

void AtomicFileWriter::Fail(const std::string& what, int errnum) {
    if (error_.empty()) error_ = what + " (" + std::strerror(errnum) + ")";
}

void AtomicFileWriter::Discard() {
    if (fd_ >= 0) {
        close(fd_);
        fd_ = -1;
    }
    if (!temp_.empty()) {
        unlink(temp_.c_str());
        temp_.clear();
    }
}

void AtomicFileWriter::WriteRaw(const char* p, size_t left) {
    while (left > 0 && ok()) {
        ssize_t done = ::write(fd_, p, left);
        if (done < 0) {
            if (errno == EINTR) continue;
            Fail("writing " + temp_ + " failed", errno);
            break;
        }
        p += done;
        left -= static_cast<size_t>(done);
    }
}

void AtomicFileWriter::Flush() {
    WriteRaw(buffer_.data(), buffer_.size());
    buffer_.clear();
}

void AtomicFileWriter::Write(const void* data, size_t size) {
    if (!ok() || size == 0) return;
    const char* p = static_cast<const char*>(data);
    if (buffer_.size() + size > kBufferSize) Flush();
    if (size >= kBufferSize) {
        // Large blocks (a whole plane) go straight to the file.
        WriteRaw(p, size);
        return;
    }
    buffer_.insert(buffer_.end(), p, p + size);
}

void AtomicFileWriter::WriteInt32(int32_t value) {
    uint32_t u = static_cast<uint32_t>(value);
    uint8_t bytes[4] = {static_cast<uint8_t>(u), static_cast<uint8_t>(u >> 8),
                        static_cast<uint8_t>(u >> 16), static_cast<uint8_t>(u >> 24)};
    Write(bytes, 4);
}

bool AtomicFileWriter::Commit() {
    if (ok()) Flush();
    if (ok() && fsync(fd_) != 0) Fail("flushing " + temp_ + " to disk failed", errno);
    if (fd_ >= 0) {
        if (close(fd_) != 0) Fail("closing " + temp_ + " failed", errno);
        fd_ = -1;
    }
    if (!error_.empty() || temp_.empty()) {
        Discard();
        return false;
    }
    if (std::rename(temp_.c_str(), target_.c_str()) != 0) {
        Fail("replacing " + target_ + " failed", errno);
        Discard();
        return false;
    }
    temp_.clear();
    return true;
}

}  // namespace tl
