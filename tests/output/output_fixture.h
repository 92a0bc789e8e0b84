// A started workbench whose views are models (no windows), with a recording open and the
// Spectrum view up; and folders that refuse writes: read-only, or full.
#pragma once

#include "commands/lifecycle.h"
#include "support/test_home.h"
#include "views/model_view_host.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <sys/mount.h>
#include <unistd.h>

namespace kv::test {

struct Pictured : ::testing::Test {
    ModelViewHost views;
    Bench b{true, &views};

    void SetUp() override {
        std::vector<int> s(8 * 1024);
        for (size_t i = 0; i < s.size(); ++i)
            s[i] = int((i * 37) % 2000) - 1000;
        const std::string rec = b.home.file("rec.wav");
        writeFile(rec, wavBytes(1, 8000, 16, s));
        b.start();
        b.import(rec);
        ASSERT_TRUE(b.st.SpectrumOpen);
        ASSERT_EQ(b.st.ActiveView, 2);
        b.host.dialogTitles.clear();
        b.host.dialogFilters.clear();
    }
    QImage spectrumPicture() const {
        return views.model(ViewId::Spectrum)->picture().convertToFormat(QImage::Format_RGB32);
    }
};

/// A folder of its own filesystem: a tmpfs of `size` (read-only with `readOnly`). Without the
/// right to mount, a read-only folder falls back to its permission bits, which only stop a user
/// other than root; `usable` says whether the folder refuses what it should.
class LimitedFolder {
  public:
    LimitedFolder(const std::string& path, const std::string& size, bool readOnly) : path_(path) {
        std::filesystem::create_directories(path_);
        const std::string opts = "size=" + size;
        mounted_ =
            ::mount("tmpfs", path_.c_str(), "tmpfs", readOnly ? MS_RDONLY : 0, opts.c_str()) == 0;
        if (!mounted_ && readOnly)
            std::filesystem::permissions(path_, std::filesystem::perms(0555));
        usable_ = mounted_ || (readOnly && ::geteuid() != 0);
    }
    ~LimitedFolder() {
        if (mounted_) ::umount(path_.c_str());
        std::error_code ec;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ec);
    }
    bool usable() const { return usable_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
    bool mounted_ = false;
    bool usable_ = false;
};

} // namespace kv::test
