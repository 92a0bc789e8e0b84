// Choosing and filling the home folder.
#include "platform/home_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace kv {

namespace fs = std::filesystem;

std::string userDataFolder() {
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg)
        return (fs::path(xdg) / "kelvorandine").string();
    if (const char* home = std::getenv("HOME"); home && *home)
        return (fs::path(home) / ".local" / "share" / "kelvorandine").string();
    return {};
}

bool folderWritable(const std::string& folder) {
    // Permission bits do not tell the whole story (a read-only mount, an administrator who may
    // write anywhere): try it.
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) return false;
    const fs::path probe = fs::path(folder) / ".kelvorandine-write-test";
    bool ok = false;
    {
        std::ofstream f(probe, std::ios::binary | std::ios::trunc);
        ok = bool(f);
    }
    fs::remove(probe, ec);
    return ok;
}

bool copyFactoryHome(const std::string& from, const std::string& to) {
    std::error_code ec;
    fs::create_directories(to, ec);
    if (!fs::is_directory(to, ec)) return false;
    bool ok = true;
    auto copyMissing = [&](const fs::path& src, const fs::path& dst) {
        if (fs::exists(dst, ec)) return;
        if (!fs::copy_file(src, dst, ec)) ok = false;
    };
    if (fs::is_regular_file(fs::path(from) / "SP.ini", ec))
        copyMissing(fs::path(from) / "SP.ini", fs::path(to) / "SP.ini");
    for (const char* dir : {"pal", "ref", "ico", "samples"}) {
        const fs::path src = fs::path(from) / dir;
        const fs::path dst = fs::path(to) / dir;
        fs::create_directories(dst, ec);
        if (!fs::is_directory(src, ec)) continue;
        for (const auto& e : fs::directory_iterator(src, ec))
            if (e.is_regular_file(ec)) copyMissing(e.path(), dst / e.path().filename());
    }
    return ok;
}

std::string defaultHomeFolder(const std::string& programFolder, bool programWritable,
                              const std::string& dataFolder) {
    if (programWritable || dataFolder.empty()) return programFolder;
    return copyFactoryHome(programFolder, dataFolder) ? dataFolder : programFolder;
}

} // namespace kv
