// Where a reader gets its bytes: a file on disk or a block of memory. Every read is
// bounds-checked; bytes past the end read as zero, so a truncated recording can never make a
// reader step outside its buffer. Offsets here are 0-based.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace kv {

class ByteSource {
  public:
    virtual ~ByteSource() = default;
    /// Length in bytes.
    virtual uint64_t size() const = 0;
    /// Copies `n` bytes from `offset` into `dst`; what lies past the end is zero-filled.
    /// Returns how many bytes came from the source.
    virtual size_t read(uint64_t offset, void* dst, size_t n) const = 0;

    uint8_t u8(uint64_t off) const;
    int8_t i8(uint64_t off) const { return static_cast<int8_t>(u8(off)); }
    uint16_t u16le(uint64_t off) const;
    int16_t i16le(uint64_t off) const { return static_cast<int16_t>(u16le(off)); }
    uint32_t u32le(uint64_t off) const;
    int32_t i32le(uint64_t off) const { return static_cast<int32_t>(u32le(off)); }
    float f32le(uint64_t off) const;
    double f64le(uint64_t off) const;
    uint16_t u16be(uint64_t off) const;
    int16_t i16be(uint64_t off) const { return static_cast<int16_t>(u16be(off)); }
    uint32_t u32be(uint64_t off) const;
    int32_t i32be(uint64_t off) const { return static_cast<int32_t>(u32be(off)); }
    float f32be(uint64_t off) const;
    /// `out.size()` little-endian 16-bit samples from `off`, zeros past the end. The machine is
    /// little-endian too, so they are read straight into place.
    template <class Word> void wordsLe(uint64_t off, std::span<Word> out) const {
        static_assert(sizeof(Word) == 2 && std::endian::native == std::endian::little);
        read(off, out.data(), out.size_bytes());
    }
    /// `n` bytes as text (NULs kept).
    std::string text(uint64_t off, size_t n) const;
    /// All the bytes, when the source holds them in memory; empty otherwise. Lets a reader that
    /// goes through the whole source (LineReader) read it in place instead of copying it out.
    virtual std::span<const uint8_t> resident() const { return {}; }
};

/// A file opened for reading; the descriptor stays open for the life of the object. Reads go
/// through a fixed 1 MiB window, so the many small reads of a trace-by-trace import cost one
/// system call per window instead of one per trace, and memory stays the same for any file.
class FileByteSource : public ByteSource {
  public:
    /// Opens `path`; ok() tells whether it worked. A source that failed to open is empty.
    explicit FileByteSource(const std::string& path);
    ~FileByteSource() override;
    FileByteSource(const FileByteSource&) = delete;
    FileByteSource& operator=(const FileByteSource&) = delete;
    bool ok() const { return fd_ >= 0; }
    uint64_t size() const override { return size_; }
    size_t read(uint64_t offset, void* dst, size_t n) const override;

  private:
    size_t readDirect(uint64_t offset, uint8_t* out, size_t n) const;

    static constexpr size_t kWindow = size_t(1) << 20;
    int fd_ = -1;
    uint64_t size_ = 0;
    mutable std::vector<uint8_t> window_;
    mutable uint64_t windowStart_ = 0;
    mutable size_t windowLen_ = 0;
};

class MemoryByteSource : public ByteSource {
  public:
    explicit MemoryByteSource(std::vector<uint8_t> bytes)
        : owned_(std::move(bytes)), bytes_(owned_) {}
    /// Reads `bytes` where they are, which must outlive the source: a caller that opens the same
    /// bytes over and over (the fuzz targets) copies nothing.
    static std::unique_ptr<MemoryByteSource> borrowing(std::span<const uint8_t> bytes) {
        return std::unique_ptr<MemoryByteSource>(new MemoryByteSource(Borrowed{}, bytes));
    }
    MemoryByteSource(const MemoryByteSource&) = delete;
    MemoryByteSource& operator=(const MemoryByteSource&) = delete;
    uint64_t size() const override { return bytes_.size(); }
    size_t read(uint64_t offset, void* dst, size_t n) const override;
    std::span<const uint8_t> resident() const override { return bytes_; }

  private:
    struct Borrowed {};
    MemoryByteSource(Borrowed, std::span<const uint8_t> bytes) : bytes_(bytes) {}
    std::vector<uint8_t> owned_;
    std::span<const uint8_t> bytes_;
};

/// Opens a file for reading by its path: the workbench reads from disk, tests and fuzzers hand
/// out bytes from memory.
using SourceOpener = std::function<std::unique_ptr<ByteSource>(const std::string&)>;
/// The opener that reads files from disk.
std::unique_ptr<ByteSource> openFileSource(const std::string& path);

} // namespace kv
