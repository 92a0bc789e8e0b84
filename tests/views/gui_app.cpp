// View models measure and draw text, which needs a GUI application object (offscreen is enough).
#include <QGuiApplication>
#include <gtest/gtest.h>

namespace {

class GuiApplication : public ::testing::Environment {
  public:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "views_test";
        static char* argv[] = {name, nullptr};
        if (!QGuiApplication::instance()) app_ = new QGuiApplication(argc, argv);
    }
    void TearDown() override {
        delete app_;
        app_ = nullptr;
    }

  private:
    QGuiApplication* app_ = nullptr;
};

[[maybe_unused]] ::testing::Environment* const kEnv =
    ::testing::AddGlobalTestEnvironment(new GuiApplication);

} // namespace
