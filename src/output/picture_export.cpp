// Pictures of the views as files.
#include "output/picture_export.h"

#include "platform/files.h"
#include "platform/message_title.h"
#include "state/workbench.h"
#include "views/model_view_host.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <fstream>
#include <iterator>

namespace kv::output {

namespace {

/// The image encoded in `format` ("BMP", "JPG", "PNG"), or an empty text when it could not be.
std::string encode(const QImage& img, const char* format) {
    QByteArray bytes;
    QBuffer buf(&bytes);
    buf.open(QIODevice::WriteOnly);
    if (!img.save(&buf, format)) return {};
    return std::string(bytes.constData(), size_t(bytes.size()));
}

bool readWhole(const std::string& path, std::string& out) {
    std::ifstream f(path, std::ios::binary);
    if (!f) return false;
    out.assign(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
    return !f.bad();
}

void cannotWrite(Workbench& wb, const std::string& path) {
    wb.host.message("The picture could not be written to " + path +
                        ". Check that the folder can be written to and that the disk has room.",
                    kMessageTitle, MsgIcon::Critical);
}

/// Writes `bytes` as `path`, beside it first; a message when it fails.
bool writePicture(Workbench& wb, const std::string& path, const std::string& bytes) {
    if (!bytes.empty() && writeFileAtomically(path, bytes)) return true;
    cannotWrite(wb, path);
    return false;
}

/// A copy of `from` as `to`, written beside `to` and renamed over it.
bool copyPicture(Workbench& wb, const std::string& from, const std::string& to) {
    std::string bytes;
    if (!readWhole(from, bytes)) {
        cannotWrite(wb, to);
        return false;
    }
    return writePicture(wb, to, bytes);
}

/// The ending of a file name in upper case, without the dot ("" when it has none).
std::string endingOf(const std::string& path) {
    const std::string title = fileTitleOf(path);
    const auto dot = title.find_last_of('.');
    return dot == std::string::npos ? std::string() : upperAscii(title.substr(dot + 1));
}

} // namespace

std::string printBmpPath(const ProgramState& st) {
    return joinPath(st.AppPath, "print.bmp");
}

std::string printJpgPath(const ProgramState& st) {
    return joinPath(st.AppPath, "print.jpg");
}

QImage activeViewPicture(const ProgramState& st, const ModelViewHost& views) {
    if (st.ActiveView < 1 || st.ActiveView > 5) return {};
    const ViewModel* m = views.model(static_cast<ViewId>(st.ActiveView));
    return m ? m->picture() : QImage();
}

bool savePrintBmp(Workbench& wb, const QImage& picture) {
    if (picture.isNull()) return false;
    return writePicture(wb, printBmpPath(wb.st), encode(picture, "BMP"));
}

bool PrintNu(Workbench& wb, const ModelViewHost& views) {
    return savePrintBmp(wb, activeViewPicture(wb.st, views));
}

bool Bmp2JPG(Workbench& wb) {
    const std::string bmp = printBmpPath(wb.st);
    if (!fileExists(bmp)) {
        wb.host.message("Cannot find file", kConversionTitle, MsgIcon::Critical);
        return false;
    }
    QImageReader reader(QString::fromStdString(bmp), "BMP");
    const QSize size = reader.size();
    if (!size.isValid()) {
        wb.host.message("Cannot load file", kConversionTitle, MsgIcon::Critical);
        return false;
    }
    QImage img(size, QImage::Format_RGB32);
    if (img.isNull()) {
        wb.host.message("Not enough memory", kConversionTitle, MsgIcon::Critical);
        return false;
    }
    if (!reader.read(&img)) {
        wb.host.message("Cannot load file", kConversionTitle, MsgIcon::Critical);
        return false;
    }
    // A picture of one bit per pixel is widened before it is encoded.
    if (img.depth() < 8) img = img.convertToFormat(QImage::Format_RGB32);
    return writePicture(wb, printJpgPath(wb.st), encode(img, "JPG"));
}

bool saveWindowAs(Workbench& wb, const std::string& path) {
    const std::string ending = endingOf(path);
    const std::string bmp = printBmpPath(wb.st);
    if (ending == "BMP") return copyPicture(wb, bmp, path);
    if (ending == "JPG" || ending == "JPEG") {
        const std::string jpg = printJpgPath(wb.st);
        const bool done = Bmp2JPG(wb) && copyPicture(wb, jpg, path);
        removeFileQuietly(jpg);
        return done;
    }
    if (ending == "PNG") {
        QImage img;
        if (!img.load(QString::fromStdString(bmp), "BMP")) {
            wb.host.message("Cannot load file", kConversionTitle, MsgIcon::Critical);
            return false;
        }
        return writePicture(wb, path, encode(img, "PNG"));
    }
    wb.host.message("The picture was not saved: give the file name the ending .bmp, .jpg or .png.",
                    kMessageTitle, MsgIcon::Information);
    return false;
}

void mnuSw_Click(Workbench& wb, const ModelViewHost& views) {
    if (!PrintNu(wb, views)) return;
    const FileChoice c = wb.host.saveFile(kSaveWindowFilter, kSaveWindowTitle, 1, "");
    if (c.cancelled || c.path.empty()) return;
    saveWindowAs(wb, c.path);
}

} // namespace kv::output
