// Bounds-checked byte sources over files and memory.
#include "platform/byte_source.h"

#include "platform/files.h"

#include <bit>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kv {

uint8_t ByteSource::u8(uint64_t off) const {
    uint8_t b = 0;
    read(off, &b, 1);
    return b;
}

uint16_t ByteSource::u16le(uint64_t off) const {
    uint8_t b[2];
    read(off, b, 2);
    return static_cast<uint16_t>(b[0] | (b[1] << 8));
}

uint32_t ByteSource::u32le(uint64_t off) const {
    uint8_t b[4];
    read(off, b, 4);
    return uint32_t(b[0]) | (uint32_t(b[1]) << 8) | (uint32_t(b[2]) << 16) | (uint32_t(b[3]) << 24);
}

float ByteSource::f32le(uint64_t off) const {
    return std::bit_cast<float>(u32le(off));
}

double ByteSource::f64le(uint64_t off) const {
    uint64_t lo = u32le(off), hi = u32le(off + 4);
    return std::bit_cast<double>(lo | (hi << 32));
}

uint16_t ByteSource::u16be(uint64_t off) const {
    uint8_t b[2];
    read(off, b, 2);
    return static_cast<uint16_t>((b[0] << 8) | b[1]);
}

uint32_t ByteSource::u32be(uint64_t off) const {
    uint8_t b[4];
    read(off, b, 4);
    return (uint32_t(b[0]) << 24) | (uint32_t(b[1]) << 16) | (uint32_t(b[2]) << 8) | uint32_t(b[3]);
}

float ByteSource::f32be(uint64_t off) const {
    return std::bit_cast<float>(u32be(off));
}

std::string ByteSource::text(uint64_t off, size_t n) const {
    std::string s(n, '\0');
    read(off, s.data(), n);
    return s;
}

FileByteSource::FileByteSource(const std::string& path) {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) return;
    struct stat st {};
    if (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd_);
        fd_ = -1;
        return;
    }
    size_ = static_cast<uint64_t>(st.st_size);
}

FileByteSource::~FileByteSource() {
    if (fd_ >= 0) ::close(fd_);
}

size_t FileByteSource::readDirect(uint64_t offset, uint8_t* out, size_t n) const {
    // A hole of a sparse file is zeros: reading it would only have the system copy them.
    if (isHole(fd_, int64_t(offset), int64_t(n))) {
        std::memset(out, 0, n);
        return n;
    }
    size_t got = 0;
    while (got < n) {
        ssize_t r = ::pread(fd_, out + got, n - got, static_cast<off_t>(offset + got));
        if (r <= 0) break;
        got += static_cast<size_t>(r);
    }
    return got;
}

size_t FileByteSource::read(uint64_t offset, void* dst, size_t n) const {
    auto* out = static_cast<uint8_t*>(dst);
    size_t got = 0;
    if (fd_ >= 0 && offset < size_) {
        const size_t want = static_cast<size_t>(std::min<uint64_t>(n, size_ - offset));
        if (want >= kWindow) {
            got = readDirect(offset, out, want);
        } else {
            if (offset < windowStart_ || offset + want > windowStart_ + windowLen_) {
                // No larger than the file: a small file (a header, a reference) costs no
                // megabyte of memory to clear on every open.
                window_.resize(size_t(std::min<uint64_t>(kWindow, size_)));
                windowStart_ = offset;
                windowLen_ = readDirect(offset, window_.data(), window_.size());
            }
            got = std::min<size_t>(want, windowStart_ + windowLen_ - offset);
            std::memcpy(out, window_.data() + (offset - windowStart_), got);
        }
    }
    if (got < n) std::memset(out + got, 0, n - got);
    return got;
}

size_t MemoryByteSource::read(uint64_t offset, void* dst, size_t n) const {
    auto* out = static_cast<uint8_t*>(dst);
    size_t got = 0;
    if (offset < bytes_.size()) {
        got = static_cast<size_t>(std::min<uint64_t>(n, bytes_.size() - offset));
        std::memcpy(out, bytes_.data() + offset, got);
    }
    if (got < n) std::memset(out + got, 0, n - got);
    return got;
}

std::unique_ptr<ByteSource> openFileSource(const std::string& path) {
    return std::make_unique<FileByteSource>(path);
}

} // namespace kv
