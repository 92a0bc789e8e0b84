// A host that answers from a script instead of asking a person. Tests queue the answers the
// user would give ("pick file X with filter 3", "cancel the next dialog", "press Cancel at trace
// 5") and read back every message that was shown. The command-line tool uses it too.
#pragma once

#include "platform/host.h"

#include <deque>
#include <functional>
#include <map>
#include <vector>

namespace kv {

struct ShownMessage {
    std::string text;
    std::string title;
    MsgIcon icon;
};

class ScriptedHost : public Host {
  public:
    // ---- Script -------------------------------------------------------------------------------
    /// The next open (or save) dialog returns this file with this 1-based filter index.
    void queueFile(const std::string& path, int filterIndex);
    /// The next open (or save) dialog is cancelled.
    void queueCancel();
    /// The next progress window reports Cancel once its value reaches `atValue`.
    void cancelProgressAt(int atValue) { cancelAt_ = atValue; }
    void queueColor(std::optional<uint32_t> c) { colors_.push_back(c); }
    void queueText(std::optional<std::string> t) { texts_.push_back(std::move(t)); }
    /// Called on every yield(), so a test can act "while a loop runs" (press Pause, say).
    void onYield(std::function<void()> f) { onYield_ = std::move(f); }
    void setUserSettingValue(const std::string& section, const std::string& key,
                             const std::string& value);

    // ---- What happened ------------------------------------------------------------------------
    std::vector<ShownMessage> messages;
    std::vector<ShownMessage> aboutBoxes;   // every About box shown, icon Information
    std::vector<std::string> dialogTitles;  // titles of the file dialogs shown
    std::vector<std::string> dialogFilters; // their filter texts
    std::vector<int> dialogFilterIndexes;   // the filter index each dialog was opened with
    std::vector<std::string> dialogFolders; // the folder each open dialog started in
    int yields = 0;
    int helpShown = 0; // how often the user guide was asked for
    int progressWindows = 0;
    int lastProgressMax = -1;
    int lastProgressValue = -1;
    /// When set, every message is also echoed here (the CLI prints to stderr).
    std::function<void(const ShownMessage&)> echo;

    // ---- Host ---------------------------------------------------------------------------------
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
    void showHelp() override { ++helpShown; }
    std::string userSetting(const std::string& section, const std::string& key,
                            const std::string& fallback) override;
    void setUserSetting(const std::string& section, const std::string& key,
                        const std::string& value) override;

  private:
    FileChoice nextFile(const std::string& filter, const std::string& title, int filterIndex);

    std::deque<FileChoice> files_;
    std::deque<std::optional<uint32_t>> colors_;
    std::deque<std::optional<std::string>> texts_;
    int cancelAt_ = -1;
    std::function<void()> onYield_;
    std::map<std::string, std::string> userSettings_;
};

} // namespace kv
