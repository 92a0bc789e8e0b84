// Reading and writing the working trace files.
#include "platform/trace_store.h"

#include "platform/files.h"
#include "platform/read_error.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace kv {

static_assert(std::endian::native == std::endian::little,
              "working files are little-endian and are read and written without conversion");

/// A file of the store in memory. A deleted file keeps its entry and its room, so that the
/// next file at the same path (the next open, in a fuzzer) neither allocates nor faults pages.
struct MemoryTraceFile {
    bool exists = false;
    std::vector<char> bytes;
};

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

/// The store in memory: one file a path, and the size a file may grow to; 0 when the store is
/// on disk. Entries are never erased while the store is in use, so a writer keeps a pointer to
/// its file; `generation` changes when the store is emptied, which makes such pointers stale.
struct MemoryStore {
    size_t limit = 0;
    uint64_t generation = 0;
    std::map<std::string, MemoryTraceFile> files;
};
MemoryStore gMemory;

// Relaxed: a thread that reads while another writes the same working file gets no promise
// from the store either way; what the count gives is that a reader on the writing thread, or
// after it, sees the change.
std::atomic<uint64_t> gChanges{0};
void changed() {
    gChanges.fetch_add(1, std::memory_order_relaxed);
}

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

uint64_t workingFileChanges() {
    return gChanges.load(std::memory_order_relaxed);
}

void useMemoryTraceStore(size_t limitBytes) {
    changed();
    gMemory.limit = limitBytes;
    gMemory.files.clear();
    ++gMemory.generation;
}

const std::vector<char>& memoryTraceFile(const std::string& path) {
    static const std::vector<char> none;
    const auto it = gMemory.files.find(path);
    return it == gMemory.files.end() || !it->second.exists ? none : it->second.bytes;
}

namespace {

/// Two buffers filled in turn, as one run of bytes (either may be empty).
struct Parts {
    iovec part[2];
    size_t size() const { return part[0].iov_len + part[1].iov_len; }
    /// What of the run lies from byte `at` on, as buffers into `out`; how many.
    int from(size_t at, iovec* out) const {
        int count = 0;
        for (const iovec& p : part) {
            if (at >= p.iov_len) {
                at -= p.iov_len;
                continue;
            }
            out[count++] = {static_cast<char*>(p.iov_base) + at, p.iov_len - at};
            at = 0;
        }
        return count;
    }
};

/// The bytes from the 1-based position pos1 on into the parts, zeros past the end of the file.
void readParts(const std::string& path, int64_t pos1, const Parts& parts) {
    if (path.empty()) throw ReadError("no working file");
    if (pos1 < 1) throw ReadError("bad record number");
    const size_t want = parts.size();
    size_t got = 0;
    iovec rest[2];
    if (gMemory.limit) {
        const std::vector<char>& f = memoryTraceFile(path);
        const uint64_t off = uint64_t(pos1 - 1);
        if (off < f.size()) {
            const size_t have = size_t(std::min<uint64_t>(want, f.size() - off));
            for (int k = 0, count = parts.from(0, rest); k < count && got < have; ++k) {
                const size_t take = std::min(rest[k].iov_len, have - got);
                std::memcpy(rest[k].iov_base, f.data() + off + got, take);
                got += take;
            }
        }
    } else {
        // A missing working file reads as zeros, like an empty one, and so does a silent
        // stretch.
        const int fd = readHandle(path);
        if (fd >= 0 && !isHole(fd, pos1 - 1, int64_t(want))) {
            while (got < want) {
                const ssize_t r = ::preadv(fd, rest, parts.from(got, rest),
                                           static_cast<off_t>(pos1 - 1 + int64_t(got)));
                if (r <= 0) break;
                got += static_cast<size_t>(r);
            }
        }
    }
    // Only what was not read is cleared: a long trace is not written twice.
    for (int k = 0, count = parts.from(got, rest); k < count; ++k)
        std::memset(rest[k].iov_base, 0, rest[k].iov_len);
}

} // namespace

void readTrace(const std::string& path, int64_t pos1, float* out, size_t n) {
    readParts(path, pos1, Parts{{{out, n * sizeof(float)}, {nullptr, 0}}});
}

void readTraceWithHead(const std::string& path, int64_t pos1, float* head, float* out, size_t n) {
    readParts(path, pos1, Parts{{{head, sizeof(float)}, {out, n * sizeof(float)}}});
}

WriteError::WriteError(const std::string& p, int e)
    : std::runtime_error("cannot write " + p + ": " + std::strerror(e)), path(p), error(e) {}

TraceFileWriter::~TraceFileWriter() {
    close();
}

void TraceFileWriter::open(const std::string& path, bool keepExisting) {
    close();
    changed();
    if (path.empty()) throw ReadError("no working file");
    if (gMemory.limit) {
        MemoryTraceFile& f = gMemory.files[path];
        if (!keepExisting || !f.exists) f.bytes.clear();
        f.exists = true;
        memory_ = &f;
        generation_ = gMemory.generation;
        inMemory_ = true;
        path_ = path;
        size_ = int64_t(f.bytes.size());
        return;
    }
    fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | (keepExisting ? 0 : O_TRUNC), 0666);
    if (fd_ < 0) throw WriteError(path, errno);
    path_ = path;
    // The buffer is left as it comes: the writes fill it, and clearing a megabyte on every open
    // cost more than the writes of a small file.
    if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(kBufferBytes);
    fill_ = 0;
    bufferAt_ = 0;
    struct stat s;
    size_ = ::fstat(fd_, &s) == 0 ? int64_t(s.st_size) : 0;
}

namespace {

bool allZero(const void* data, size_t n) {
    const auto* p = static_cast<const unsigned char*>(data);
    return n > 0 && p[0] == 0 && std::memcmp(p, p + 1, n - 1) == 0;
}

/// Writes all `n` bytes at `offset`; the system's error number, or 0.
int writeAll(int fd, const void* data, size_t n, int64_t offset) {
    const auto* p = static_cast<const char*>(data);
    while (n > 0) {
        const ssize_t r = ::pwrite(fd, p, n, off_t(offset));
        if (r < 0 && errno == EINTR) continue;
        if (r <= 0) return r < 0 ? errno : EIO;
        p += r;
        n -= size_t(r);
        offset += r;
    }
    return 0;
}

} // namespace

int TraceFileWriter::writeGathered() {
    if (fill_ == 0) return 0;
    const int error = writeAll(fd_, buffer_.get(), fill_, bufferAt_);
    // What could not be written is let go: the writes that follow start a buffer of their own.
    bufferAt_ += int64_t(fill_);
    fill_ = 0;
    return error;
}

void TraceFileWriter::writeBytes(int64_t pos1, const void* data, size_t n) {
    if (!isOpen()) throw ReadError("working file not open");
    if (pos1 < 1) throw ReadError("bad record number");
    changed();
    int64_t off = pos1 - 1;
    if (inMemory_) {
        if (generation_ != gMemory.generation) memory_ = &gMemory.files[path_];
        generation_ = gMemory.generation;
        // The file may have been deleted since the writer opened it: the write makes it anew.
        MemoryTraceFile& file = *memory_;
        if (!file.exists) file.bytes.clear();
        file.exists = true;
        std::vector<char>& f = file.bytes;
        const uint64_t end = uint64_t(off) + n;
        if (end > gMemory.limit) throw WriteError(path_, EFBIG);
        // What overlaps the file is copied over it, the rest appended: only a gap before the
        // write is filled with zeros.
        const auto* p = static_cast<const char*>(data);
        const size_t inside = uint64_t(off) < f.size() ? std::min(n, f.size() - size_t(off)) : 0;
        if (inside) std::memcpy(f.data() + off, p, inside);
        if (uint64_t(off) > f.size()) f.resize(size_t(off));
        f.insert(f.end(), p + inside, p + n);
        size_ = int64_t(f.size());
        return;
    }
    if (off >= size_ && allZero(data, n)) {
        size_ = off + int64_t(n);
        return;
    }
    // Bytes that do not follow the gathered ones, or do not fit beside them, start a buffer.
    if (off != bufferAt_ + int64_t(fill_) || n > kBufferBytes - fill_) {
        if (const int error = writeGathered()) throw WriteError(path_, error);
        bufferAt_ = off;
    }
    if (n <= kBufferBytes) {
        if (n) std::memcpy(buffer_.get() + fill_, data, n);
        fill_ += n;
    } else if (const int error = writeAll(fd_, data, n, off)) {
        throw WriteError(path_, error);
    }
    // A write of nothing still takes the file to its place, as a seek past the end would.
    size_ = std::max(size_, off + int64_t(n));
}

bool TraceFileWriter::settle() {
    if (const int error = writeGathered()) {
        errno = error;
        return false;
    }
    struct stat s;
    if (::fstat(fd_, &s) != 0) return false;
    return int64_t(s.st_size) >= size_ || ::ftruncate(fd_, off_t(size_)) == 0;
}

void TraceFileWriter::write(int64_t pos1, const float* data, size_t n) {
    writeBytes(pos1, data, n * sizeof(float));
}

int64_t TraceFileWriter::length() {
    if (inMemory_) return size_;
    if (fd_ < 0) return 0;
    errno = 0;
    if (!settle()) throw WriteError(path_, errno ? errno : EIO);
    return size_;
}

void TraceFileWriter::close() {
    if (fd_ >= 0 || inMemory_) changed();
    if (fd_ >= 0) {
        settle();
        ::close(fd_);
    }
    fd_ = -1;
    fill_ = 0;
    inMemory_ = false;
}

void KillWorkingFile(const std::string& path) {
    changed();
    // Let go of a kept read handle too, so that the deleted file's space is given back now.
    if (tRead.path == path) tRead.drop();
    if (gMemory.limit) {
        const auto it = gMemory.files.find(path);
        if (it != gMemory.files.end()) {
            it->second.exists = false;
            it->second.bytes.clear();
        }
        return;
    }
    removeFileQuietly(path);
}

} // namespace kv
