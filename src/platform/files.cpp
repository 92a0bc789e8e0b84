// File-system helpers (names, sizes, deletion, case-blind companion lookup, safe replace).
#include "platform/files.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace kv {

bool isHole(int fd, int64_t offset, int64_t n) {
    // The next byte that holds data: none at all (ENXIO) or none before the end of the range
    // means the range is a hole. A system without sparse-file support fails or says "here".
    const off_t data = ::lseek(fd, off_t(offset), SEEK_DATA);
    if (data < 0) return errno == ENXIO;
    return int64_t(data) >= offset + n;
}

std::string fileTitleOf(const std::string& path) {
    auto p = path.find_last_of("/\\");
    return p == std::string::npos ? path : path.substr(p + 1);
}

std::string folderOf(const std::string& path) {
    auto p = path.find_last_of("/\\");
    return p == std::string::npos ? std::string() : path.substr(0, p);
}

std::string joinPath(const std::string& folder, const std::string& name) {
    std::string path;
    joinPathInto(path, folder, name);
    return path;
}

void joinPathInto(std::string& out, const std::string& folder, std::string_view name) {
    out.assign(folder);
    if (!folder.empty() && folder.back() != '/' && folder.back() != '\\') out += '/';
    out.append(name);
}

std::string upperAscii(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

bool equalsNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && upperAscii(a) == upperAscii(b);
}

bool fileExists(const std::string& path) {
    std::error_code ec;
    return !path.empty() && fs::is_regular_file(path, ec);
}

int64_t fileSize(const std::string& path) {
    std::error_code ec;
    auto n = fs::file_size(path, ec);
    return ec ? -1 : static_cast<int64_t>(n);
}

void removeFileQuietly(const std::string& path) {
    if (path.empty()) return;
    std::error_code ec;
    fs::remove(path, ec);
}

void touchFile(const std::string& path) {
    if (fileExists(path)) return;
    std::ofstream f(path, std::ios::binary | std::ios::app);
}

std::string withExtension(const std::string& path, const std::string& ext) {
    std::string title = fileTitleOf(path);
    std::string folder = path.substr(0, path.size() - title.size());
    auto dot = title.find_last_of('.');
    if (dot != std::string::npos) title.resize(dot);
    return folder + title + "." + ext;
}

std::string replaceAllNoCase(const std::string& s, const std::string& from, const std::string& to) {
    if (from.empty()) return s;
    const std::string up = upperAscii(s), key = upperAscii(from);
    std::string out;
    size_t at = 0;
    for (size_t hit; (hit = up.find(key, at)) != std::string::npos; at = hit + key.size())
        out += s.substr(at, hit - at) + to;
    return out + s.substr(at);
}

std::string findCompanion(const std::string& wanted) {
    if (fileExists(wanted)) return wanted;
    std::string folder = folderOf(wanted);
    std::string title = fileTitleOf(wanted);
    std::error_code ec;
    fs::directory_iterator it(folder.empty() ? fs::path(".") : fs::path(folder), ec);
    if (ec) return wanted;
    for (const auto& entry : it) {
        std::string name = entry.path().filename().string();
        if (equalsNoCase(name, title) && entry.is_regular_file(ec)) return joinPath(folder, name);
    }
    return wanted;
}

ReplacingFile::ReplacingFile(std::string destination, bool startFromOld)
    : destination_(std::move(destination)) {
    // Hidden and named for this process, so that two runs writing one destination never share
    // a scratch file; the counter keeps two replacements of one process apart.
    static std::atomic<unsigned> counter{0};
    const std::string folder = folderOf(destination_);
    const std::string name = "." + fileTitleOf(destination_) + "." + std::to_string(::getpid()) +
                             "." + std::to_string(counter++) + ".part";
    const std::string scratch = joinPath(folder, name);
    const int fd = ::open(scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return;
    struct stat old;
    const bool hadOld = ::stat(destination_.c_str(), &old) == 0 && S_ISREG(old.st_mode);
    // The new file keeps the permissions of the one it replaces.
    if (hadOld) (void)::fchmod(fd, old.st_mode & 07777);
    ::close(fd);
    scratch_ = scratch;
    if (startFromOld && hadOld) {
        std::error_code ec;
        fs::copy_file(destination_, scratch_, fs::copy_options::overwrite_existing, ec);
        if (ec) discard();
    }
}

ReplacingFile::~ReplacingFile() {
    discard();
}

void ReplacingFile::discard() {
    removeFileQuietly(scratch_);
    scratch_.clear();
}

bool ReplacingFile::commit() {
    if (scratch_.empty()) return false;
    // On the disk before the rename, so that a machine that stops right after it still finds
    // the whole new file under the name.
    bool ok = false;
    if (const int fd = ::open(scratch_.c_str(), O_RDONLY | O_CLOEXEC); fd >= 0) {
        ok = ::fsync(fd) == 0;
        ::close(fd);
    }
    ok = ok && ::rename(scratch_.c_str(), destination_.c_str()) == 0;
    if (ok) {
        scratch_.clear();
        // The rename itself is on the disk once the folder is.
        const std::string folder = folderOf(destination_);
        if (const int dfd =
                ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            dfd >= 0) {
            (void)::fsync(dfd);
            ::close(dfd);
        }
        return true;
    }
    discard();
    return false;
}

bool writeFileAtomically(const std::string& path, const std::string& bytes) {
    ReplacingFile out(path);
    if (out.path().empty()) return false;
    {
        std::ofstream f(out.path(), std::ios::binary | std::ios::trunc);
        f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        f.flush();
        if (!f) return false;
    }
    return out.commit();
}

} // namespace kv
