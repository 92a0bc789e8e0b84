// Palette files as the waterfalls read them, the palette chooser, and the palette in use kept
// across a restart when the options page chose it.
#include "options/palette.h"

#include "options/settings_dialog.h"
#include "state/settings.h"
#include "support/test_home.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace kv;

namespace {

std::vector<uint8_t> riff(int entries, uint8_t base) {
    std::vector<uint8_t> b = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'P', 'A', 'L', ' ',
                              'd', 'a', 't', 'a', 0, 0, 0, 0, 0,   3,   0,   1};
    for (int i = 0; i < entries; ++i)
        for (uint8_t c : {uint8_t(base + i), uint8_t(i), uint8_t(255 - i), uint8_t(0)})
            b.push_back(c);
    return b;
}

} // namespace

TEST(Palettes, EveryFactoryPaletteLoadsWithAFullTable) {
    const std::string folder = std::string(KV_HOME_DIR) + "/pal";
    int count = 0;
    for (const auto& e : std::filesystem::directory_iterator(folder)) {
        if (e.path().extension() != ".pal") continue;
        const PaletteRead r = readPalette(e.path().string());
        ASSERT_TRUE(r.ok) << e.path();
        // Not one flat colour: the scale runs from one end to the other.
        EXPECT_NE(r.table[0], r.table[255]) << e.path();
        ++count;
    }
    EXPECT_EQ(count, 8);
    EXPECT_EQ(readPalette(folder + "/1_grey.pal").table, greyTable());
}

TEST(Palettes, ReadsEntriesAtFixedPlacesAndFillsAShortFileWithBlack) {
    test::TempHome home;
    const std::string full = home.file("a.pal"), shortFile = home.file("b.pal");
    test::writeFile(full, riff(256, 0));
    auto bytes = riff(10, 5);
    bytes.push_back(200); // half an entry: red only
    test::writeFile(shortFile, bytes);
    const PaletteRead a = readPalette(full);
    ASSERT_TRUE(a.ok);
    EXPECT_EQ(a.table[7], 0xFF0707F8u);
    const PaletteRead b = readPalette(shortFile);
    ASSERT_TRUE(b.ok);
    EXPECT_EQ(b.table[9], 0xFF0E09F6u);
    EXPECT_EQ(b.table[10], 0xFFC80000u);
    EXPECT_EQ(b.table[11], 0xFF000000u);
    EXPECT_EQ(b.table[255], 0xFF000000u);
}

TEST(Palettes, AMissingEmptyOrForeignFileHasADefinedOutcome) {
    test::TempHome home;
    const std::string empty = home.file("empty.pal"), text = home.file("text.pal");
    test::writeFile(empty, {});
    test::writeText(text, "not a palette at all");
    std::string error;
    EXPECT_EQ(tableOrGrey(home.file("none.pal"), &error), greyTable());
    EXPECT_NE(error.find("none.pal"), std::string::npos);
    EXPECT_EQ(tableOrGrey(empty, &error), greyTable());
    EXPECT_NE(error.find("empty.pal"), std::string::npos);
    // The header is never checked: a foreign file gives colours from its bytes, black beyond.
    const PaletteRead r = readPalette(text);
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.table[255], 0xFF000000u);
}

TEST(PaletteChooser, OkWithNothingPickedAsksForAPaletteAndStays) {
    test::Bench b;
    b.start();
    PalFields f;
    dlgPal::Form_Load(b.wb, f);
    const std::string before = b.st.PalFile;
    EXPECT_TRUE(dlgPal::OKButton_Click(b.wb, f));
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "Select Palette First!");
    EXPECT_EQ(b.st.PalFile, before);

    dlgPal::imgPal_Click(f, 2);
    EXPECT_FALSE(dlgPal::OKButton_Click(b.wb, f));
    EXPECT_EQ(b.st.PalFile, palettePath(b.st, b.st.pal[2]));
    EXPECT_EQ(b.st.PalPath, b.st.PalFile);
}

TEST(PaletteChooser, OnlyTheOptionsPagesChoiceIsThePaletteInUseAfterARestart) {
    test::Bench b;
    b.start();
    b.st.WaterfallOpen = true;
    // A start reads the settings file again, with nothing of this run kept.
    auto restart = [&] {
        b.st.PalAd.clear();
        b.st.IndP = 0;
        ReadINI(b.wb);
    };

    // The palette chooser (toolbar and menu) colours the open view only.
    const std::string before = b.st.PalAd;
    const int16_t slot = b.st.IndP;
    PalFields f;
    dlgPal::Form_Load(b.wb, f);
    dlgPal::imgPal_Click(f, 4);
    b.views.log.clear();
    EXPECT_FALSE(dlgPal::OKButton_Click(b.wb, f));
    EXPECT_EQ(b.views.log, std::vector<std::string>{"command Waterfall DrawBMP"});
    EXPECT_EQ(b.st.PalFile, palettePath(b.st, b.st.pal[4]));
    restart();
    EXPECT_EQ(b.st.PalAd, before);
    EXPECT_EQ(b.st.IndP, slot);

    // The options page: the slot picked, then OK; the open waterfall takes it at once too.
    SettingsFields s;
    dlgSettings::Form_Load(b.wb, s);
    dlgSettings::imgPal_Click(b.wb, s, 3);
    b.views.log.clear();
    dlgSettings::Command3_Click(b.wb, s);
    EXPECT_EQ(b.st.PalFile, palettePath(b.st, b.st.pal[2]));
    EXPECT_NE(std::find(b.views.log.begin(), b.views.log.end(), "command Waterfall DrawBMP"),
              b.views.log.end());
    restart();
    EXPECT_EQ(b.st.PalAd, b.st.pal[2]);
    EXPECT_EQ(b.st.IndP, 3);
    EXPECT_TRUE(b.host.messages.empty());
}
