// What every offscreen widget test starts from: a fresh home, an application object whose
// per-user settings (window geometry) go into that home rather than the real user's, and the
// bundled sample recording.
#pragma once

#include "support/test_home.h"

#include <QApplication>
#include <gtest/gtest.h>
#include <memory>

namespace kv::test {

inline const char* const kSample = KV_HOME_DIR "/samples/sample_tone.wav";

class GuiTest : public ::testing::Test {
  protected:
    GuiTest() {
        qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(home.path()));
        app = std::make_unique<QApplication>(argc_, argv_);
    }
    TempHome home;
    std::unique_ptr<QApplication> app;

  private:
    static inline int argc_ = 1;
    static inline char arg0_[] = "gui_test";
    static inline char* argv_[] = {arg0_, nullptr};
};

} // namespace kv::test
