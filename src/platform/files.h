// Small file-system helpers: names, sizes, deletion, and finding a companion file whose name
// may differ in case (the recordings often come from systems where names ignore case).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kv {

/// The file name without its folder.
std::string fileTitleOf(const std::string& path);
/// The folder part of a path, without a trailing separator ("" for a bare name).
std::string folderOf(const std::string& path);
/// `folder` + "/" + `name`, without doubling the separator.
std::string joinPath(const std::string& folder, const std::string& name);
/// The same path written into `out`, in the room it has: for names made again on every open.
void joinPathInto(std::string& out, const std::string& folder, std::string_view name);
/// Upper-cased copy (ASCII).
std::string upperAscii(std::string s);
bool equalsNoCase(const std::string& a, const std::string& b);

bool fileExists(const std::string& path);
/// Size in bytes, or -1 when the file cannot be examined.
int64_t fileSize(const std::string& path);
/// Deletes a file; any failure is ignored.
void removeFileQuietly(const std::string& path);
/// Creates the file empty if it does not exist; leaves an existing file as it is.
void touchFile(const std::string& path);

/// Replaces the extension of `path` (the part after the last dot of the file name) by `ext`
/// (given without dot). A name without a dot gets ".ext" appended.
std::string withExtension(const std::string& path, const std::string& ext);

/// `s` with every occurrence of `from` replaced by `to`, letters compared without regard to case
/// (how a companion file's name is made from its recording's: ".RD3" to ".rad").
std::string replaceAllNoCase(const std::string& s, const std::string& from, const std::string& to);

/// The companion file rule: `wanted` itself when it exists; otherwise the one file in the same
/// folder whose name equals it without regard to case; otherwise `wanted` unchanged (so that the
/// caller's open fails as it would have).
std::string findCompanion(const std::string& wanted);

/// True when the `n` bytes at `offset` of the open file `fd` lie in a hole of a sparse file
/// (or past its end): they read as zeros without being read. False when the system cannot tell.
bool isHole(int fd, int64_t offset, int64_t n);

/// A file the user asked for, written beside its destination and renamed over it once complete,
/// so that a kill, a crash or a full disk half-way leaves either the old file or the whole new
/// one, never a part. Write to path(), then commit(); a replacement that is not committed is
/// removed when it goes out of scope.
class ReplacingFile {
  public:
    /// Makes the scratch file (hidden, named for this process) in the destination's folder.
    /// With `startFromOld` it starts as a copy of the destination when one exists, for writers
    /// that overwrite a file in place and leave what they do not write as it was.
    explicit ReplacingFile(std::string destination, bool startFromOld = false);
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    /// Where to write; empty when the scratch file could not be made (the folder cannot be
    /// written), and then commit() fails.
    const std::string& path() const { return scratch_; }
    const std::string& destination() const { return destination_; }
    /// Puts the written file on the disk and renames it over the destination. False when that
    /// fails; the scratch file is removed either way and the destination is as it was.
    bool commit();
    /// Removes the scratch file; the destination stays as it was.
    void discard();

  private:
    std::string destination_;
    std::string scratch_;
};

/// Writes `bytes` to `path` through a ReplacingFile, so that a failure half-way never leaves a
/// broken file behind. Returns false when the file could not be written.
bool writeFileAtomically(const std::string& path, const std::string& bytes);

} // namespace kv
