// Scripted answers for tests and the command-line tool.
#include "platform/scripted_host.h"

#include "platform/files.h"

namespace kv {

namespace {

class ScriptedProgress : public Progress {
  public:
    ScriptedProgress(ScriptedHost& host, int cancelAt) : host_(host), cancelAt_(cancelAt) {}
    void setValue(int value) override {
        host_.lastProgressValue = value;
        if (cancelAt_ >= 0 && value >= cancelAt_) cancelled_ = true;
    }
    bool cancelled() const override { return cancelled_; }

  private:
    ScriptedHost& host_;
    int cancelAt_;
    bool cancelled_ = false;
};

} // namespace

void ScriptedHost::queueFile(const std::string& path, int filterIndex) {
    FileChoice c;
    c.cancelled = false;
    c.path = path;
    c.title = fileTitleOf(path);
    c.filterIndex = filterIndex;
    files_.push_back(c);
}

void ScriptedHost::queueCancel() {
    files_.push_back(FileChoice{});
}

void ScriptedHost::setUserSettingValue(const std::string& section, const std::string& key,
                                       const std::string& value) {
    userSettings_[section + "/" + key] = value;
}

void ScriptedHost::message(const std::string& text, const std::string& title, MsgIcon icon) {
    messages.push_back({text, title, icon});
    if (echo) echo(messages.back());
}

void ScriptedHost::about(const std::string& title, const std::string& text) {
    aboutBoxes.push_back({text, title, MsgIcon::Information});
}

FileChoice ScriptedHost::nextFile(const std::string& filter, const std::string& title,
                                  int filterIndex) {
    dialogTitles.push_back(title);
    dialogFilters.push_back(filter);
    dialogFilterIndexes.push_back(filterIndex);
    if (files_.empty()) return FileChoice{}; // nobody to answer: behaves like Cancel
    FileChoice c = files_.front();
    files_.pop_front();
    return c;
}

FileChoice ScriptedHost::openFile(const std::string& filter, const std::string& title,
                                  int filterIndex, const std::string& folder) {
    dialogFolders.push_back(folder);
    return nextFile(filter, title, filterIndex);
}

FileChoice ScriptedHost::saveFile(const std::string& filter, const std::string& title,
                                  int filterIndex, const std::string&) {
    return nextFile(filter, title, filterIndex);
}

std::optional<uint32_t> ScriptedHost::pickColor(const std::string&, uint32_t) {
    if (colors_.empty()) return std::nullopt;
    auto c = colors_.front();
    colors_.pop_front();
    return c;
}

std::optional<FontChoice> ScriptedHost::pickFont(const FontChoice&) {
    return std::nullopt;
}

std::optional<std::string> ScriptedHost::askText(const std::string&, const std::string&,
                                                 const std::string&) {
    if (texts_.empty()) return std::nullopt;
    auto t = texts_.front();
    texts_.pop_front();
    return t;
}

std::unique_ptr<Progress> ScriptedHost::progress(const std::string&, int max) {
    ++progressWindows;
    lastProgressMax = max;
    return std::make_unique<ScriptedProgress>(*this, cancelAt_);
}

void ScriptedHost::yield() {
    ++yields;
    if (onYield_) onYield_();
}

std::string ScriptedHost::userSetting(const std::string& section, const std::string& key,
                                      const std::string& fallback) {
    auto it = userSettings_.find(section + "/" + key);
    return it == userSettings_.end() ? fallback : it->second;
}

void ScriptedHost::setUserSetting(const std::string& section, const std::string& key,
                                  const std::string& value) {
    userSettings_[section + "/" + key] = value;
}

} // namespace kv
