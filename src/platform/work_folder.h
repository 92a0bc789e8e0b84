// Keeping runs that share a home folder apart. The command-line tool keeps its working files in
// a scratch folder of its own, so that many runs side by side never read or delete each other's;
// a workbench keeps them in the home and holds a lock file there, so that a second workbench on
// the same home is told instead of overwriting the first one's working file.
#pragma once

#include <string>

namespace kv {

/// True while the process `pid` runs (on this machine).
bool processRuns(int pid);

/// A folder of this run's own, removed with everything in it when the object goes, and by
/// removeOnSignals() when the run is ended by a signal. One killed outright is left behind and
/// removed by the next run that makes one in the same place (sweepScratchFolders).
class ScratchFolder {
  public:
    ScratchFolder() = default;
    ~ScratchFolder() { remove(); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// Makes the folder in `parent`, named for this process; false when it cannot be made.
    bool make(const std::string& parent);
    const std::string& path() const { return path_; }
    void remove();

  private:
    std::string path_;
};

/// Removes the scratch folders in `parent` whose process no longer runs.
void sweepScratchFolders(const std::string& parent);

/// Removes the working files named in `names` and the folder `folder` when this process is ended
/// by SIGINT, SIGTERM or SIGHUP, then ends it as the signal would have. Replaces any earlier
/// call's folder.
void removeOnSignals(const std::string& folder, const char* const* names, int count);

/// The lock file of a home folder ("kelvorandine.lock"), holding the id of the process that has
/// it. The lock is the system's lock on the open file, so it goes with the process: a file left
/// by a program that was killed or crashed is taken over by the next.
class HomeLock {
  public:
    HomeLock() = default;
    ~HomeLock() { release(); }
    HomeLock(const HomeLock&) = delete;
    HomeLock& operator=(const HomeLock&) = delete;

    /// Takes the lock of `folder`. Returns 0 when this object holds it; the id of the process
    /// that holds it, or kUnknownHolder when its file names none; -1 when the lock file cannot
    /// be made at all (a folder that cannot be written), so nobody holds it.
    int acquire(const std::string& folder);
    static constexpr int kUnknownHolder = -2;
    void release();
    bool held() const { return fd_ >= 0; }

    static constexpr const char* kFileName = "kelvorandine.lock";

  private:
    int fd_ = -1;
    std::string path_;
};

} // namespace kv
