// The working trace files (temp.sp, temp_l.sp, temp_r.sp): headerless little-endian 32-bit
// floats, trace after trace. Everything the views show is read back from here, so a recording of
// any size costs one trace of memory.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace kv {

/// A working or output file that could not be written: the disk is full, the file may not grow,
/// or the folder cannot be written. It is not a failed read of the recording, so the readers'
/// own handlers let it pass and the open ends with a message naming the folder.
struct WriteError : std::runtime_error {
    WriteError(const std::string& path, int error);
    std::string path; // the file that could not be written
    int error;        // the system's error number
};

/// Reads `n` floats from the 1-based byte position `pos1` of `path` into `out`. What lies past
/// the end of the file reads as 0. Throws ReadError when `path` is empty (no data set) or the
/// position is not positive, which is how a read without a working file fails.
void readTrace(const std::string& path, int64_t pos1, float* out, size_t n);
inline void readTrace(const std::string& path, int64_t pos1, std::vector<float>& out) {
    readTrace(path, pos1, out.data(), out.size());
}

/// The same for n + 1 floats of which the first goes to `head` and the others to out[0..n-1], in
/// one call into the system.
void readTraceWithHead(const std::string& path, int64_t pos1, float* head, float* out, size_t n);

struct MemoryTraceFile;

/// Writes traces into a working file. The file is created (or truncated) when the writer opens;
/// writes go at a 1-based byte position, as the readers keep theirs. Zeros that would go past the
/// end of the file are not written but left as a hole, which reads as zeros and takes no disk:
/// a recording with long silent stretches makes a working file of the same length and content
/// that costs only its sound.
class TraceFileWriter {
  public:
    TraceFileWriter() = default;
    ~TraceFileWriter();
    TraceFileWriter(const TraceFileWriter&) = delete;
    TraceFileWriter& operator=(const TraceFileWriter&) = delete;

    /// Opens `path` for writing; an existing file is kept (not truncated) when `keepExisting`.
    /// Throws WriteError when the file cannot be opened, and so do the writes below when the
    /// bytes cannot be written.
    void open(const std::string& path, bool keepExisting = false);
    bool isOpen() const { return fd_ >= 0 || inMemory_; }
    /// Writes `n` floats at the 1-based byte position `pos1`.
    void write(int64_t pos1, const float* data, size_t n);
    void write(int64_t pos1, const std::vector<float>& data) {
        write(pos1, data.data(), data.size());
    }
    /// Writes raw bytes at the 1-based byte position `pos1`.
    void writeBytes(int64_t pos1, const void* data, size_t n);
    /// Length of the file as written so far (holes at its end included). Throws WriteError when
    /// the file cannot be made that long.
    int64_t length();
    void close();

  private:
    /// Writes what has been gathered and gives the file its full length when it ends in a
    /// hole; false when that fails, with errno set.
    bool settle();
    /// Writes the gathered bytes; the system's error number when that fails, or 0.
    int writeGathered();

    int fd_ = -1;
    std::string path_;
    bool inMemory_ = false;             // the file is kept in memory (useMemoryTraceStore)
    MemoryTraceFile* memory_ = nullptr; // that file, while the store's generation holds
    uint64_t generation_ = 0;
    int64_t size_ = 0; // length of the file with the zeros left out so far
    static constexpr size_t kBufferBytes = size_t(1) << 20;
    // The bytes gathered for one write: buffer_[0, fill_) goes at the 0-based offset bufferAt_.
    std::unique_ptr<char[]> buffer_;
    size_t fill_ = 0;
    int64_t bufferAt_ = 0;
};

/// Deletes a working or scratch file; every failure is ignored.
void KillWorkingFile(const std::string& path);

/// A count that moves on whenever any working file may have changed: a writer opened, wrote or
/// closed, a file was deleted, the store was switched. Whoever keeps bytes read from a working
/// file compares it to know that they are still what the file holds.
uint64_t workingFileChanges();

/// Keeps every file written and read through this store in memory instead of on disk, for the
/// fuzzers and for tests that want no disk at all: the same paths, the same bytes, zeros past
/// the end. A file may grow to `limitBytes`; a write beyond that fails as a full disk would
/// (WriteError). 0 goes back to the disk. Files kept so far are dropped either way.
void useMemoryTraceStore(size_t limitBytes);
/// The bytes of a file kept in memory (empty when there is none).
const std::vector<char>& memoryTraceFile(const std::string& path);

} // namespace kv
