// Save window as, on the Spectrum view's model: the BMP is the view's picture pixel for pixel,
// the JPEG and PNG open at its size, and a name, a folder or a disk that cannot take the picture
// gets a message and leaves no half-written file under the name.
#include "output/picture_export.h"
#include "output_fixture.h"
#include "platform/files.h"

#include <QImageReader>
#include <filesystem>

namespace kv {
namespace {

using test::Pictured;

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> v;
    for (const auto& e : std::filesystem::directory_iterator(folder))
        v.push_back(e.path().filename().string());
    return v;
}

TEST_F(Pictured, TheSaveDialogOffersBmpJpegAndPngUnderItsTitle) {
    b.host.queueCancel();
    output::mnuSw_Click(b.wb, views);
    ASSERT_EQ(b.host.dialogTitles.size(), 1u);
    EXPECT_EQ(b.host.dialogTitles[0], "Save window as");
    EXPECT_EQ(b.host.dialogFilters[0],
              " BMP Files(*.bmp)|*.bmp|JPEG Files(*.jpg)|*.jpg|PNG Files(*.png)|*.png|");
    EXPECT_TRUE(fileExists(b.home.file("print.bmp"))) << "the hand-over is made before the dialog";
    EXPECT_TRUE(b.host.messages.empty());
}

TEST_F(Pictured, ABmpIsTheViewsPicturePixelForPixelAndPngTooAndAJpegHasItsSize) {
    const QImage want = spectrumPicture();
    ASSERT_FALSE(want.isNull());
    for (const char* name : {"shot.bmp", "SHOT2.BMP", "shot.png"}) {
        b.host.queueFile(b.home.file(name), 1);
        output::mnuSw_Click(b.wb, views);
        QImage got(QString::fromStdString(b.home.file(name)));
        ASSERT_FALSE(got.isNull()) << name;
        EXPECT_TRUE(got.convertToFormat(QImage::Format_RGB32) == want) << name;
    }
    b.host.queueFile(b.home.file("shot.jpg"), 2);
    output::mnuSw_Click(b.wb, views);
    QImageReader jpg(QString::fromStdString(b.home.file("shot.jpg")));
    EXPECT_EQ(jpg.format(), "jpeg");
    EXPECT_EQ(jpg.size(), want.size());
    EXPECT_FALSE(fileExists(b.home.file("print.jpg"))) << "the converted scratch file goes";
    EXPECT_TRUE(b.host.messages.empty());
}

TEST_F(Pictured, ANameWithoutAKnownEndingWritesNothingAndSaysWhy) {
    for (const char* name : {"shot", "shot.gif"}) {
        b.host.queueFile(b.home.file(name), 1);
        output::mnuSw_Click(b.wb, views);
        EXPECT_FALSE(fileExists(b.home.file(name)));
    }
    ASSERT_EQ(b.host.messages.size(), 2u);
    EXPECT_EQ(b.host.messages[0].text,
              "The picture was not saved: give the file name the ending .bmp, .jpg or .png.");
}

TEST_F(Pictured, TheJpegConversionNamesAMissingOrUnreadableHandOver) {
    removeFileQuietly(output::printBmpPath(b.st));
    EXPECT_FALSE(output::Bmp2JPG(b.wb));
    test::writeText(output::printBmpPath(b.st), "BM not really a bitmap");
    EXPECT_FALSE(output::saveWindowAs(b.wb, b.home.file("x.jpg")));
    ASSERT_EQ(b.host.messages.size(), 2u);
    EXPECT_EQ(b.host.messages[0].text, "Cannot find file");
    EXPECT_EQ(b.host.messages[1].text, "Cannot load file");
    EXPECT_EQ(b.host.messages[1].title, "Error encountered!");
    EXPECT_FALSE(fileExists(b.home.file("x.jpg")));
}

TEST_F(Pictured, NoViewOpenMeansNoPictureAndNoDialog) {
    b.st.ActiveView = 0;
    output::mnuSw_Click(b.wb, views);
    EXPECT_TRUE(b.host.dialogTitles.empty());
}

TEST_F(Pictured, AReadOnlyFolderGetsAMessageAndNoFile) {
    test::LimitedFolder ro(b.home.file("ro"), "64k", true);
    if (!ro.usable()) GTEST_SKIP() << "no way to make a folder root cannot write";
    for (const char* name : {"shot.bmp", "shot.jpg", "shot.png"}) {
        b.host.queueFile(ro.file(name), 1);
        output::mnuSw_Click(b.wb, views);
    }
    ASSERT_EQ(b.host.messages.size(), 3u);
    EXPECT_EQ(b.host.messages[0].text.rfind(
                  "The picture could not be written to " + ro.file("shot.bmp"), 0),
              0u);
    EXPECT_TRUE(filesIn(b.home.file("ro")).empty());
}

TEST_F(Pictured, AFullDiskKeepsTheOldFileWholeAndLeavesNoScratch) {
    // Two pages: the two old files fill it.
    test::LimitedFolder full(b.home.file("full"), "8k", false);
    if (!full.usable()) GTEST_SKIP() << "a small filesystem needs the right to mount";
    for (const char* name : {"shot.bmp", "shot.png"})
        test::writeText(full.file(name), "the old picture");
    for (const char* name : {"shot.bmp", "shot.png"}) {
        b.host.queueFile(full.file(name), 1);
        output::mnuSw_Click(b.wb, views);
        EXPECT_EQ(test::readText(full.file(name)), "the old picture") << name;
    }
    EXPECT_EQ(b.host.messages.size(), 2u);
    EXPECT_EQ(filesIn(b.home.file("full")).size(), 2u) << "no scratch file left beside them";
}

} // namespace
} // namespace kv
