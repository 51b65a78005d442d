// A file written in one piece: the bytes go to a temporary file beside the
// target, and only when every byte is written and flushed to disk is the
// temporary renamed over the target. A failed or abandoned write removes the
// temporary and leaves the old file exactly as it was.
//
// The rename also replaces the old file as a whole, so a shorter file saved
// over a longer one keeps none of the old bytes at its end. (The original
// program opened the old file and overwrote it from the start, so a shorter
// save left the tail of the old file behind; for a stream run those stale
// bytes would have become part of the run at the next load.)
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tl {

class AtomicFileWriter {
  public:
    // Creates the temporary file in the target's directory. A target that is
    // a symbolic link is followed, so the link stays and its file is replaced.
    explicit AtomicFileWriter(const std::string& target);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // False once anything has failed; the reason is in error().
    bool ok() const { return fd_ >= 0 && error_.empty(); }
    const std::string& error() const { return error_; }

    void Write(const void* data, size_t size);
    void WriteByte(uint8_t value) { Write(&value, 1); }
    // A signed 32-bit number, little-endian.
    void WriteInt32(int32_t value);

    // Flushes, syncs and renames over the target. Returns false, with the
    // temporary removed and the target untouched, on any failure.
    bool Commit();

  private:
    void Flush();
    void WriteRaw(const char* p, size_t size);
    void Fail(const std::string& what, int errnum);
    void Discard();

    std::string target_;
    std::string temp_;
    int fd_ = -1;
    std::vector<char> buffer_;
    std::string error_;
};

}  // namespace tl
