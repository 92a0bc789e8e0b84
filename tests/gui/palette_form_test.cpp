// The palette chooser from the waterfall's menu and toolbar, offscreen: OK with nothing picked
// asks for a palette and keeps the old colours; a picked slot recolours the open view's scale and
// its next row.
#include "app/main_window.h"
#include "app/palette_form.h"
#include "app/view_window.h"
#include "gui/gui_fixture.h"
#include "views/waterfall/waterfall_base.h"

#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

using namespace kv;

namespace {

using test::kSample;
using Shell = test::GuiTest;

/// Runs `act` on the chooser once it is up (it is modal: the trigger returns when it closed).
void onPaletteForm(const std::function<void(PaletteForm&)>& act) {
    QTimer::singleShot(0, [act] {
        auto* form = dynamic_cast<PaletteForm*>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
        act(*form);
    });
}

TEST_F(Shell, ThePaletteChooserRecoloursTheOpenWaterfallsScaleAndNextRow) {
    ScriptedHost host;
    MainWindow w(home.path(), &host);
    namespace fs = std::filesystem;
    fs::create_directories(home.file("pal"));
    for (const auto& e : fs::directory_iterator(std::string(KV_HOME_DIR) + "/pal"))
        fs::copy_file(e.path(), fs::path(home.file("pal")) / e.path().filename(),
                      fs::copy_options::overwrite_existing);
    w.show();
    w.importFile(kSample);
    w.state().BscanShow = 0;
    w.state().pal[0] = "1_grey.pal";
    w.state().pal[1] = "2_rainbow.pal";
    w.state().PalAd = "1_grey.pal";
    w.menuAction("mnuBscan")->trigger();
    auto* view = w.viewHost().modelOf<waterfall::WaterfallBase>(ViewId::Waterfall);
    ASSERT_NE(view, nullptr);
    ASSERT_TRUE(w.menuAction("mnuPalettet")->isEnabled());
    ASSERT_TRUE(w.toolAction(104)->isVisible());
    ASSERT_TRUE(w.toolAction(104)->isEnabled());
    const ColorTable grey = view->colours();
    ASSERT_EQ(grey, greyTable());
    EXPECT_TRUE(host.messages.empty()) << host.messages.front().text;

    // OK with nothing picked: the message, the chooser stays, Cancel leaves the colours.
    onPaletteForm([](PaletteForm& f) {
        f.findChild<QPushButton*>(QStringLiteral("OKButton"))->click();
        EXPECT_TRUE(f.isVisible());
        f.findChild<QPushButton*>(QStringLiteral("CancelButton"))->click();
    });
    const size_t before = host.messages.size();
    w.menuAction("mnuPalettet")->trigger();
    ASSERT_EQ(host.messages.size(), before + 1) << host.messages[0].text;
    EXPECT_EQ(host.messages.back().text, "Select Palette First!");
    EXPECT_EQ(view->colours(), grey);

    // The second slot from the toolbar: the scale beside the view and the next row take it.
    onPaletteForm([](PaletteForm& f) {
        f.slot(1)->click();
        EXPECT_TRUE(f.slot(1)->isChecked());
        f.findChild<QPushButton*>(QStringLiteral("OKButton"))->click();
    });
    w.toolAction(104)->trigger();
    EXPECT_EQ(host.messages.size(), before + 1);
    EXPECT_EQ(w.state().PalFile, palettePath(w.state(), "2_rainbow.pal"));
    const ColorTable rainbow = readPalette(w.state().PalFile).table;
    EXPECT_EQ(view->colours(), rainbow);
    EXPECT_EQ(view->imgPal().pixel(0, 0), rainbow[255]) << "the scale's top is the last colour";
    w.viewHost().traceChanged(w.workbench(), ViewId::Waterfall);
    const QImage row = view->picOriginal().toImage();
    bool rainbowRow = true;
    for (int x = 0; x < row.width() && rainbowRow; ++x)
        rainbowRow = std::find(rainbow.begin(), rainbow.end(), row.pixel(x, 0)) != rainbow.end();
    EXPECT_TRUE(rainbowRow) << "the newest row is painted from the new table";
    w.close();
}

} // namespace
