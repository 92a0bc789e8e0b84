// Scratch folders of one run and the home folder's lock file.
#include "platform/work_folder.h"

#include "platform/files.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace kv {

namespace {

constexpr char kScratchPrefix[] = ".kv-run-";

/// The process id in a scratch folder's name ".kv-run-PID-XXXXXX"; 0 when it holds none.
int pidOfScratchName(const std::string& name) {
    if (name.rfind(kScratchPrefix, 0) != 0) return 0;
    const char* p = name.c_str() + sizeof kScratchPrefix - 1;
    char* end = nullptr;
    const long pid = std::strtol(p, &end, 10);
    return end != p && *end == '-' && pid > 0 ? int(pid) : 0;
}

// What the signal handler removes: fixed buffers filled before it can run, so that the handler
// itself only calls unlink and rmdir.
constexpr int kMaxSignalFiles = 8;
char gSignalFolder[4096];
char gSignalFiles[kMaxSignalFiles][4096];
volatile std::sig_atomic_t gSignalFileCount = 0;

extern "C" void removeAndEnd(int sig) {
    for (int i = 0; i < gSignalFileCount; ++i)
        ::unlink(gSignalFiles[i]);
    if (gSignalFolder[0]) ::rmdir(gSignalFolder);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

bool copyInto(char* dst, size_t cap, const std::string& s) {
    if (s.size() + 1 > cap) return false;
    std::memcpy(dst, s.c_str(), s.size() + 1);
    return true;
}

} // namespace

bool processRuns(int pid) {
    if (pid <= 0) return false;
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

bool ScratchFolder::make(const std::string& parent) {
    remove();
    std::string templ = joinPath(parent, kScratchPrefix + std::to_string(::getpid()) + "-XXXXXX");
    if (!::mkdtemp(templ.data())) return false;
    path_ = templ;
    return true;
}

void ScratchFolder::remove() {
    if (path_.empty()) return;
    std::error_code ec;
    fs::remove_all(path_, ec);
    path_.clear();
}

void sweepScratchFolders(const std::string& parent) {
    std::error_code ec;
    for (fs::directory_iterator it(parent, ec), end; !ec && it != end; it.increment(ec)) {
        const int pid = pidOfScratchName(it->path().filename().string());
        if (pid == 0 || pid == ::getpid() || processRuns(pid)) continue;
        std::error_code rm;
        if (it->is_directory(rm)) fs::remove_all(it->path(), rm);
    }
}

void removeOnSignals(const std::string& folder, const char* const* names, int count) {
    gSignalFileCount = 0;
    if (!copyInto(gSignalFolder, sizeof gSignalFolder, folder)) return;
    int n = 0;
    for (int i = 0; i < count && n < kMaxSignalFiles; ++i)
        if (copyInto(gSignalFiles[n], sizeof gSignalFiles[n], joinPath(folder, names[i]))) ++n;
    gSignalFileCount = n;
    for (int sig : {SIGINT, SIGTERM, SIGHUP})
        std::signal(sig, removeAndEnd);
}

int HomeLock::acquire(const std::string& folder) {
    release();
    const std::string path = joinPath(folder, kFileName);
    for (int attempt = 0; attempt < 5; ++attempt) {
        const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) return -1;
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            // Held: the file names the process that has it.
            char buf[32] = {};
            const ssize_t n = ::pread(fd, buf, sizeof buf - 1, 0);
            ::close(fd);
            const long pid = n > 0 ? std::strtol(buf, nullptr, 10) : 0;
            return pid > 0 ? int(pid) : kUnknownHolder;
        }
        // The file may have been removed by its last holder between our open and our lock;
        // then the lock is on a file nobody else will see, so go again.
        struct stat mine, named;
        if (::fstat(fd, &mine) != 0 || ::stat(path.c_str(), &named) != 0 ||
            mine.st_ino != named.st_ino || mine.st_dev != named.st_dev) {
            ::close(fd);
            continue;
        }
        const std::string text = std::to_string(::getpid()) + "\n";
        if (::ftruncate(fd, 0) != 0 ||
            ::pwrite(fd, text.data(), text.size(), 0) != ssize_t(text.size())) {
            ::close(fd);
            return -1;
        }
        fd_ = fd;
        path_ = path;
        return 0;
    }
    return -1;
}

void HomeLock::release() {
    if (fd_ < 0) return;
    ::unlink(path_.c_str());
    ::close(fd_);
    fd_ = -1;
    path_.clear();
}

} // namespace kv
