// SP.ini: its odd keys, what survives a save, and what happens when it is missing or damaged.
#include "state/settings.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <regex>

using namespace kv;

namespace {

std::string replaceKey(std::string ini, const std::string& key, const std::string& line) {
    return std::regex_replace(ini, std::regex("(^|\n)" + key + "=[^\n]*"), "$1" + line);
}

} // namespace

TEST(SettingsFile, LoadsTheFactoryFileWithoutMessages) {
    test::Bench b;
    b.start();
    EXPECT_TRUE(b.host.messages.empty());
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    EXPECT_EQ(b.st.FFT_Window, 10);
    EXPECT_EQ(b.st.ModeFFT, 1);
    EXPECT_FALSE(b.st.YLinear);
    EXPECT_TRUE(b.st.dBFS_On);
    EXPECT_TRUE(b.st.PadWithZero);
    EXPECT_EQ(b.st.pal[7], "8_seismic.pal");
}

TEST(SettingsFile, OddKeysBehaveAsTheyAlwaysHave) {
    test::Bench b;
    std::string ini = factorySettingsText();
    ini = replaceKey(ini, "FFT_Window", "FFT_Window=0");
    ini = replaceKey(ini, "TimeWindowed", "TimeWindowed=1");
    ini = replaceKey(ini, "LogSh", "LogSh=1.5");
    ini = replaceKey(ini, "ModeFFT", "  modefft = 3");
    ini = replaceKey(ini, "As_Bar", "AS_Bar=1");
    test::writeText(b.home.file("SP.ini"), ini);
    b.start();
    EXPECT_EQ(b.st.FFT_Window, 10) << "a window below 1 is Uniform";
    EXPECT_EQ(b.st.TimeWindowed, 0) << "a saved 1 never survives a start";
    EXPECT_FLOAT_EQ(b.st.LogShift, 15.0f);
    EXPECT_EQ(b.st.ModeFFT, 3) << "keys ignore case and surrounding blanks";
    EXPECT_EQ(b.st.AS_Bar, 1);

    b.st.LogSh = 9.0f; // never written
    b.st.AS_Bar = 0;
    b.st.YLinear = true;
    ASSERT_TRUE(SaveOptions(b.wb));
    const std::string saved = test::readText(b.home.file("SP.ini"));
    EXPECT_NE(saved.find("LogSh=1.5"), std::string::npos);
    EXPECT_NE(saved.find("TimeWindowed=0"), std::string::npos);
    EXPECT_NE(saved.find("YScale=1"), std::string::npos);
    // One entry each: no second ModeFFT or As_Bar line appears.
    EXPECT_EQ(std::regex_search(saved, std::regex("(^|\n)As_Bar=", std::regex::icase)), true);
    auto count = [&](const char* re) {
        auto r = std::regex(re, std::regex::icase);
        return std::distance(std::sregex_iterator(saved.begin(), saved.end(), r),
                             std::sregex_iterator());
    };
    EXPECT_EQ(count("(^|\n)\\s*as_bar\\s*="), 1);
    EXPECT_EQ(count("(^|\n)\\s*modefft\\s*="), 1);

    test::Bench again;
    test::writeText(again.home.file("SP.ini"), saved);
    again.start();
    EXPECT_EQ(again.st.AS_Bar, 0);
    EXPECT_EQ(again.st.ModeFFT, 3);
    EXPECT_TRUE(again.st.YLinear);
}

TEST(SettingsFile, CommentsAndUnknownKeysSurviveASave) {
    test::Bench b;
    std::string ini = std::string("; my notes\n[Extra]\nMine=42\n") + factorySettingsText();
    ini = replaceKey(ini, "Bred", "; keep me\nBred=10");
    test::writeText(b.home.file("SP.ini"), ini);
    b.start();
    EXPECT_EQ(b.st.Bred, 10);
    b.st.Bred = 3;
    ASSERT_TRUE(SaveReferColors_toINI(b.wb));
    ASSERT_TRUE(SaveOptions(b.wb));
    const std::string saved = test::readText(b.home.file("SP.ini"));
    EXPECT_NE(saved.find("; my notes"), std::string::npos);
    EXPECT_NE(saved.find("Mine=42"), std::string::npos);
    EXPECT_NE(saved.find("; keep me"), std::string::npos);
    EXPECT_NE(saved.find("Bred=3"), std::string::npos);
}

TEST(SettingsFile, AllOpenTickFollowsTheFourStartFlags) {
    for (bool allOne : {true, false}) {
        test::Bench b;
        std::string ini = factorySettingsText();
        for (const char* k : {"StSp", "StPh", "StOs", "StWat"})
            ini = replaceKey(ini, k, std::string(k) + "=1");
        if (!allOne) ini = replaceKey(ini, "StOs", "StOs=0");
        test::writeText(b.home.file("SP.ini"), ini);
        b.start();
        EXPECT_EQ(b.cmd.checked("mnuOlOp"), allOne);
    }
}

TEST(SettingsFile, MissingFileGivesOneMessageAndFactoryValues) {
    test::Bench b(false);
    b.start();
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
    EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    EXPECT_NE(b.host.messages[0].text.find(b.home.file("SP.ini")), std::string::npos);
    EXPECT_EQ(b.st.Sp_Samples, 1024);
    EXPECT_EQ(b.st.FFT_LineColor, "65280");
}

TEST(SettingsFile, EmptyOrBadNumbersFallBackKeyByKeyAndAreNamed) {
    test::Bench b;
    std::string ini = factorySettingsText();
    ini = replaceKey(ini, "Sp_Samples", "Sp_Samples=2048");
    ini = replaceKey(ini, "AverVal", "AverVal=");
    ini = replaceKey(ini, "PlotRange", "PlotRange=lots");
    ini = replaceKey(ini, "Fil", "Fil=99999");
    test::writeText(b.home.file("SP.ini"), ini);
    b.start();
    ASSERT_EQ(b.host.messages.size(), 1u);
    const std::string& text = b.host.messages[0].text;
    EXPECT_NE(text.find("[FFT] AverVal"), std::string::npos);
    EXPECT_NE(text.find("[FFT] PlotRange"), std::string::npos);
    EXPECT_NE(text.find("[Gen] Fil"), std::string::npos) << "a 16-bit key cannot hold 99999";
    EXPECT_EQ(b.st.AverVal, 10);
    EXPECT_EQ(b.st.PlotRange, 100);
    EXPECT_EQ(b.st.Sp_Samples, 2048) << "good keys load as usual";
}

TEST(SettingsFile, NumbersRoundHalfToEvenAndOverridesWin) {
    test::Bench b;
    std::string ini = replaceKey(factorySettingsText(), "AverVal", "AverVal=2.5");
    test::writeText(b.home.file("SP.ini"), ini);
    b.st.SettingsOverrides["gen.sp_samples"] = "4096";
    b.start();
    EXPECT_EQ(b.st.AverVal, 2);
    EXPECT_EQ(b.st.Sp_Samples, 4096);
}

TEST(SettingsFile, TheImportChannelIsOptionalAndNeverNamedInTheMessage) {
    // Files written before the key existed lack it; a bad value falls back just as quietly.
    for (const char* line : {"", "ImportChannel=", "ImportChannel=0", "ImportChannel=many"}) {
        SCOPED_TRACE(line);
        test::Bench b;
        test::writeText(b.home.file("SP.ini"),
                        std::regex_replace(std::string(factorySettingsText()),
                                           std::regex("ImportChannel=[^\n]*"), line));
        b.start();
        EXPECT_TRUE(b.host.messages.empty());
        EXPECT_EQ(b.st.ImportChannel, 1);
    }
    test::Bench b;
    std::string ini = replaceKey(factorySettingsText(), "ImportChannel", "ImportChannel=3");
    ini = replaceKey(ini, "AverVal", "AverVal=");
    test::writeText(b.home.file("SP.ini"), ini);
    b.start();
    EXPECT_EQ(b.st.ImportChannel, 3);
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text.find("ImportChannel"), std::string::npos);

    b.st.ImportChannel = 2;
    ASSERT_TRUE(SaveOptions(b.wb));
    test::Bench again;
    test::writeText(again.home.file("SP.ini"), test::readText(b.home.file("SP.ini")));
    again.st.SettingsOverrides["gen.importchannel"] = "4";
    again.start();
    EXPECT_EQ(again.st.ImportChannel, 4) << "an override wins";
    again.st.SettingsOverrides.clear();
    again.start();
    EXPECT_EQ(again.st.ImportChannel, 2) << "saved";
}

TEST(FactoryHome, EveryPaletteSlotNamesARiffPaletteThatShipsBesideTheProgram) {
    test::Bench b;
    b.start();
    for (const auto& name : b.st.pal) {
        SCOPED_TRACE(name);
        const std::string bytes = test::readText(std::string(KV_HOME_DIR) + "/pal/" + name);
        ASSERT_EQ(bytes.size(), 1048u);
        EXPECT_EQ(bytes.substr(0, 4), "RIFF");
        EXPECT_EQ(bytes.substr(8, 8), "PAL data");
        EXPECT_EQ(uint8_t(bytes[22]), 0u); // 256 entries, little-endian
        EXPECT_EQ(uint8_t(bytes[23]), 1u);
    }
    EXPECT_NE(std::find(b.st.pal.begin(), b.st.pal.end(), b.st.PalAd), b.st.pal.end());
}
