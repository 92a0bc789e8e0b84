// kelvorandine-cli render --view oscope|phase through the real executable: the picture has the
// asked size, shows the trace in the view's colour inside the graph, and follows --trace.
#include "support/test_home.h"

#include <QGuiApplication>
#include <QImage>
#include <cstdio>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

namespace {

struct CliRun {
    int exit = -1;
    nlohmann::json out;
};

CliRun render(const std::string& args) {
    const std::string cmd = std::string(KV_CLI) + " render " + args + " 2>/dev/null";
    CliRun r;
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return r;
    std::string text;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0)
        text.append(buf, n);
    const int status = pclose(p);
    r.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.out = nlohmann::json::parse(text, nullptr, false);
    return r;
}

// Pixels of exactly this colour in the picture's rectangle.
int countColour(const QImage& img, QRect r, QRgb c) {
    int n = 0;
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            n += (img.pixel(x, y) & 0xFFFFFF) == (c & 0xFFFFFF);
    return n;
}

struct RenderViews : ::testing::Test {
    kv::test::TempHome home;
    const std::string sample = std::string(KV_HOME_DIR) + "/samples/sample_tone.wav";
    std::string common() const { return sample + " --home " + home.path(); }
};

} // namespace

TEST_F(RenderViews, OscopeShowsTheTraceInTheGraphAtTheAskedTrace) {
    const std::string out = home.file("oscope.png");
    const CliRun r = render(common() + " --view oscope --size 800x600 --trace 3 -o " + out);
    ASSERT_EQ(r.exit, 0);
    EXPECT_EQ(r.out["TracePos"], 3);
    const QImage img(QString::fromStdString(out));
    ASSERT_EQ(img.size(), QSize(800, 600));
    // Factory colours: trace yellow on black. The graph starts at (72, 40), 688 x 470.
    EXPECT_GT(countColour(img, QRect(72, 40, 688, 470), qRgb(255, 255, 0)), 600);
    EXPECT_EQ(countColour(img, QRect(0, 0, 60, 600), qRgb(255, 255, 0)), 0);
}

TEST_F(RenderViews, PhaseShowsItsCurveInTheGraph) {
    const std::string out = home.file("phase.png");
    const CliRun r = render(common() + " --view phase --size 640x480 -o " + out);
    ASSERT_EQ(r.exit, 0);
    const QImage img(QString::fromStdString(out));
    ASSERT_EQ(img.size(), QSize(640, 480));
    // Factory phase colour: cyan.
    EXPECT_GT(countColour(img, QRect(60, 30, 540, 370), qRgb(0, 255, 255)), 300);
}
