// The host for the desktop: Qt message boxes, file dialogs, a progress dialog with Cancel,
// event processing for the long loops, and per-user settings in QSettings.
#pragma once

#include "platform/host.h"

#include <QStringList>
#include <functional>

class QFileDialog;
class QWidget;

namespace kv {

class QtHost : public Host {
  public:
    explicit QtHost(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }

    void message(const std::string& text, const std::string& title, MsgIcon icon) override;
    void about(const std::string& title, const std::string& text) override;
    FileChoice openFile(const std::string& filter, const std::string& title, int filterIndex,
                        const std::string& folder = {}) override;
    FileChoice saveFile(const std::string& filter, const std::string& title, int filterIndex,
                        const std::string& suggestedName) override;
    std::optional<uint32_t> pickColor(const std::string& title, uint32_t initial) override;
    std::optional<FontChoice> pickFont(const FontChoice& initial) override;
    std::optional<std::string> askText(const std::string& prompt, const std::string& title,
                                       const std::string& initial) override;
    std::unique_ptr<Progress> progress(const std::string& title, int max) override;
    void yield() override;
    /// Opens the guide beside the program in the system browser; says so when it is missing.
    void showHelp() override;
    std::string userSetting(const std::string& section, const std::string& key,
                            const std::string& fallback) override;
    void setUserSetting(const std::string& section, const std::string& key,
                        const std::string& value) override;

  private:
    QWidget* parent_;
};

/// The user guide installed beside the program: doc/guide.html in the program's folder.
QString helpGuidePath();

/// "Desc|*.a|Desc2|*.b|" as Qt name filters ("Desc (*.a)"). The dialog is told to show only
/// the part before the patterns, so each entry reads as its own text ("WAVE Files(*.wav)")
/// while the patterns after the bar are the ones that select files.
QStringList qtNameFilters(const std::string& filter);
/// Gives `dlg` the filter entries of `filter`, the entry `filterIndex` (1-based) chosen, and
/// `folder` to start in when it exists. Returns the Qt name filters, in the entries' order.
QStringList prepareFileDialog(QFileDialog& dlg, const std::string& filter, int filterIndex,
                              const std::string& folder);
/// The 1-based place in `filters` of what the dialog reports as chosen, whether it reports the
/// whole filter or only the text it showed; 1 when it matches none.
int chosenFilterPosition(const QStringList& filters, const QString& chosen);

} // namespace kv
