// Reading and writing the working trace files.
#include "platform/trace_store.h"

#include "platform/files.h"
#include "platform/read_error.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kv {

static_assert(std::endian::native == std::endian::little,
              "working files are little-endian and are read and written without conversion");

namespace {

/// The working file read last, kept open between reads: playback reads the same file trace after
/// trace, and opening it anew each time cost more than the read. A file that has been deleted
/// or replaced since (no links left to the open one) is opened again, so every read sees the
/// file that now stands at the path.
struct ReadHandle {
    std::string path;
    int fd = -1;
    void drop() {
        if (fd >= 0) ::close(fd);
        fd = -1;
    }
    ~ReadHandle() { drop(); }
};

thread_local ReadHandle tRead;

int readHandle(const std::string& path) {
    if (tRead.fd >= 0 && tRead.path == path) {
        struct stat s;
        if (::fstat(tRead.fd, &s) == 0 && s.st_nlink > 0) return tRead.fd;
    }
    tRead.drop();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return -1;
    tRead.path = path;
    tRead.fd = fd;
    return fd;
}

} // namespace

void readTrace(const std::string& path, int64_t pos1, float* out, size_t n) {
    if (path.empty()) throw ReadError("no working file");
    if (pos1 < 1) throw ReadError("bad record number");
    std::memset(out, 0, n * sizeof(float));
    const int fd = readHandle(path);
    if (fd < 0) return; // a missing working file reads as zeros, like an empty one
    if (isHole(fd, pos1 - 1, int64_t(n * sizeof(float)))) return; // a silent stretch
    auto* dst = reinterpret_cast<char*>(out);
    size_t want = n * sizeof(float), got = 0;
    while (got < want) {
        ssize_t r = ::pread(fd, dst + got, want - got, static_cast<off_t>(pos1 - 1 + int64_t(got)));
        if (r <= 0) break;
        got += static_cast<size_t>(r);
    }
}

TraceFileWriter::~TraceFileWriter() {
    close();
}

void TraceFileWriter::open(const std::string& path, bool keepExisting) {
    close();
    if (path.empty()) throw ReadError("no working file");
    if (keepExisting) {
        f_ = std::fopen(path.c_str(), "r+b");
        if (!f_) f_ = std::fopen(path.c_str(), "w+b");
    } else {
        f_ = std::fopen(path.c_str(), "w+b");
    }
    if (!f_) throw ReadError("cannot write " + path);
    buffer_.resize(1 << 20);
    std::setvbuf(f_, buffer_.data(), _IOFBF, buffer_.size());
    at_ = 0;
    struct stat s;
    size_ = ::fstat(::fileno(f_), &s) == 0 ? int64_t(s.st_size) : 0;
}

namespace {

bool allZero(const void* data, size_t n) {
    const auto* p = static_cast<const unsigned char*>(data);
    return n > 0 && p[0] == 0 && std::memcmp(p, p + 1, n - 1) == 0;
}

} // namespace

void TraceFileWriter::writeBytes(int64_t pos1, const void* data, size_t n) {
    if (!f_) throw ReadError("working file not open");
    if (pos1 < 1) throw ReadError("bad record number");
    int64_t off = pos1 - 1;
    if (off >= size_ && allZero(data, n)) {
        size_ = off + int64_t(n);
        return;
    }
    if (off != at_) {
        if (std::fseek(f_, static_cast<long>(off), SEEK_SET) != 0) throw ReadError("seek failed");
    }
    if (n && std::fwrite(data, 1, n, f_) != n) throw ReadError("write failed");
    at_ = off + static_cast<int64_t>(n);
    size_ = std::max(size_, at_);
}

bool TraceFileWriter::settle() {
    if (std::fflush(f_) != 0) return false;
    struct stat s;
    if (::fstat(::fileno(f_), &s) != 0) return false;
    return int64_t(s.st_size) >= size_ || ::ftruncate(::fileno(f_), off_t(size_)) == 0;
}

void TraceFileWriter::write(int64_t pos1, const float* data, size_t n) {
    writeBytes(pos1, data, n * sizeof(float));
}

int64_t TraceFileWriter::length() {
    if (!f_) return 0;
    if (!settle()) throw ReadError("write failed");
    return size_;
}

void TraceFileWriter::close() {
    if (f_) {
        settle();
        std::fclose(f_);
    }
    f_ = nullptr;
    at_ = -1;
}

void KillWorkingFile(const std::string& path) {
    // Let go of a kept read handle too, so that the deleted file's space is given back now.
    if (tRead.path == path) tRead.drop();
    removeFileQuietly(path);
}

} // namespace kv
