// Qt implementation of the host.
#include "app/qt_host.h"

#include <QApplication>
#include <QColorDialog>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QProgressDialog>
#include <QSettings>
#include <QUrl>

#include "platform/files.h"
#include "platform/message_title.h"

namespace kv {

namespace {

class QtProgress : public Progress {
  public:
    QtProgress(QWidget* parent, const QString& title, int max) {
        dlg_ = new QProgressDialog(title, QObject::tr("Cancel"), 0, std::max(max, 1), parent);
        // No close box: Cancel is the way out.
        dlg_->setWindowFlags(dlg_->windowFlags() & ~Qt::WindowCloseButtonHint);
        dlg_->setWindowTitle(title);
        dlg_->setLabelText(QString::number(max));
        dlg_->setMinimumDuration(300);
        dlg_->setWindowModality(Qt::NonModal);
        dlg_->setAutoReset(false);
        dlg_->setAutoClose(false);
        dlg_->setValue(0);
    }
    ~QtProgress() override { delete dlg_; }
    void setValue(int value) override { dlg_->setValue(value); }
    bool cancelled() const override { return dlg_->wasCanceled(); }

  private:
    QProgressDialog* dlg_;
};

} // namespace

QStringList qtNameFilters(const std::string& filter) {
    QStringList parts = QString::fromStdString(filter).split('|');
    QStringList out;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        if (parts[i].isEmpty()) continue;
        QString patterns = parts[i + 1];
        patterns.replace(';', ' ');
        out << QStringLiteral("%1 (%2)").arg(parts[i], patterns);
    }
    return out;
}

int chosenFilterPosition(const QStringList& filters, const QString& chosen) {
    int at = int(filters.indexOf(chosen));
    if (at < 0) {
        // Shown without its patterns: the text before the last "(...)".
        for (int i = 0; i < filters.size() && at < 0; ++i) {
            const QString& f = filters[i];
            if (f.left(f.lastIndexOf('(')).simplified() == chosen.simplified()) at = i;
        }
    }
    return at < 0 ? 1 : at + 1;
}

void QtHost::message(const std::string& text, const std::string& title, MsgIcon icon) {
    const QString t = QString::fromStdString(title), m = QString::fromStdString(text);
    switch (icon) {
    case MsgIcon::Critical:
        QMessageBox::critical(parent_, t, m);
        break;
    case MsgIcon::Information:
        QMessageBox::information(parent_, t, m);
        break;
    case MsgIcon::Exclamation:
        QMessageBox::warning(parent_, t, m);
        break;
    }
}

void QtHost::about(const std::string& title, const std::string& text) {
    QMessageBox::about(parent_, QString::fromStdString(title), QString::fromStdString(text));
}

QStringList prepareFileDialog(QFileDialog& dlg, const std::string& filter, int filterIndex,
                              const std::string& folder) {
    const QStringList filters = qtNameFilters(filter);
    // The entries' texts carry their patterns already; Qt would add them a second time.
    dlg.setOption(QFileDialog::HideNameFilterDetails);
    dlg.setNameFilters(filters);
    if (!folder.empty() && QFileInfo(QString::fromStdString(folder)).isDir())
        dlg.setDirectory(QString::fromStdString(folder));
    if (filterIndex >= 1 && filterIndex <= filters.size())
        dlg.selectNameFilter(filters[filterIndex - 1]);
    return filters;
}

static FileChoice runFileDialog(QWidget* parent, const std::string& filter,
                                const std::string& title, int filterIndex, bool save,
                                const std::string& suggested, const std::string& folder = {}) {
    QFileDialog dlg(parent, QString::fromStdString(title));
    const QStringList filters = prepareFileDialog(dlg, filter, filterIndex, folder);
    dlg.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dlg.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (!suggested.empty()) dlg.selectFile(QString::fromStdString(suggested));
    FileChoice c;
    if (dlg.exec() != QDialog::Accepted || dlg.selectedFiles().isEmpty()) return c;
    c.cancelled = false;
    c.path = dlg.selectedFiles().first().toStdString();
    c.title = QFileInfo(dlg.selectedFiles().first()).fileName().toStdString();
    c.filterIndex = chosenFilterPosition(filters, dlg.selectedNameFilter());
    return c;
}

FileChoice QtHost::openFile(const std::string& filter, const std::string& title, int index,
                            const std::string& folder) {
    return runFileDialog(parent_, filter, title, index, false, {}, folder);
}

FileChoice QtHost::saveFile(const std::string& filter, const std::string& title, int index,
                            const std::string& suggestedName) {
    return runFileDialog(parent_, filter, title, index, true, suggestedName);
}

std::optional<uint32_t> QtHost::pickColor(const std::string& title, uint32_t initial) {
    QColor init(int(initial & 0xFF), int((initial >> 8) & 0xFF), int((initial >> 16) & 0xFF));
    QColor c = QColorDialog::getColor(init, parent_, QString::fromStdString(title));
    if (!c.isValid()) return std::nullopt;
    return uint32_t(c.red()) | (uint32_t(c.green()) << 8) | (uint32_t(c.blue()) << 16);
}

std::optional<FontChoice> QtHost::pickFont(const FontChoice& initial) {
    bool ok = false;
    QFont init(QString::fromStdString(initial.family), initial.pointSize,
               initial.bold ? QFont::Bold : QFont::Normal, initial.italic);
    QFont f = QFontDialog::getFont(&ok, init, parent_);
    if (!ok) return std::nullopt;
    return FontChoice{f.family().toStdString(), f.pointSize(), f.bold(), f.italic()};
}

std::optional<std::string> QtHost::askText(const std::string& prompt, const std::string& title,
                                           const std::string& initial) {
    bool ok = false;
    QString s = QInputDialog::getText(parent_, QString::fromStdString(title),
                                      QString::fromStdString(prompt), QLineEdit::Normal,
                                      QString::fromStdString(initial), &ok);
    if (!ok) return std::nullopt;
    return s.toStdString();
}

std::unique_ptr<Progress> QtHost::progress(const std::string& title, int max) {
    return std::make_unique<QtProgress>(parent_, QString::fromStdString(title), max);
}

QString helpGuidePath() {
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("doc/guide.html"));
}

void QtHost::showHelp() {
    const QString guide = helpGuidePath();
    if (!QFileInfo(guide).isFile() || !QDesktopServices::openUrl(QUrl::fromLocalFile(guide)))
        message("The user guide could not be opened: " + guide.toStdString(), kMessageTitle,
                MsgIcon::Exclamation);
}

void QtHost::yield() {
    QCoreApplication::processEvents();
}

std::string QtHost::userSetting(const std::string& section, const std::string& key,
                                const std::string& fallback) {
    QSettings s;
    return s.value(QString::fromStdString(section + "/" + key), QString::fromStdString(fallback))
        .toString()
        .toStdString();
}

void QtHost::setUserSetting(const std::string& section, const std::string& key,
                            const std::string& value) {
    QSettings s;
    s.setValue(QString::fromStdString(section + "/" + key), QString::fromStdString(value));
}

} // namespace kv
