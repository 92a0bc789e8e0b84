// The working trace files (temp.sp, temp_l.sp, temp_r.sp): headerless little-endian 32-bit
// floats, trace after trace. Everything the views show is read back from here, so a recording of
// any size costs one trace of memory.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace kv {

/// Reads `n` floats from the 1-based byte position `pos1` of `path` into `out`. What lies past
/// the end of the file reads as 0. Throws ReadError when `path` is empty (no data set) or the
/// position is not positive, which is how a read without a working file fails.
void readTrace(const std::string& path, int64_t pos1, float* out, size_t n);
inline void readTrace(const std::string& path, int64_t pos1, std::vector<float>& out) {
    readTrace(path, pos1, out.data(), out.size());
}

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
    /// Throws ReadError when the file cannot be opened.
    void open(const std::string& path, bool keepExisting = false);
    bool isOpen() const { return f_ != nullptr; }
    /// Writes `n` floats at the 1-based byte position `pos1`.
    void write(int64_t pos1, const float* data, size_t n);
    void write(int64_t pos1, const std::vector<float>& data) {
        write(pos1, data.data(), data.size());
    }
    /// Writes raw bytes at the 1-based byte position `pos1`.
    void writeBytes(int64_t pos1, const void* data, size_t n);
    /// Length of the file as written so far (holes at its end included). Throws ReadError when
    /// the file cannot be made that long.
    int64_t length();
    void close();

  private:
    /// Gives the file its full length when it ends in a hole; false when that fails.
    bool settle();

    std::FILE* f_ = nullptr;
    int64_t at_ = -1;  // current 0-based offset of the stream, -1 unknown
    int64_t size_ = 0; // length of the file with the zeros left out so far
    std::vector<char> buffer_;
};

/// Deletes a working or scratch file; every failure is ignored.
void KillWorkingFile(const std::string& path);

} // namespace kv
