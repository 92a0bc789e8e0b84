// Everything that in a desktop program stops and asks the user, or shows something outside a
// view, goes through this one interface: message boxes, file dialogs, progress with Cancel,
// letting pending events run, and per-user settings. The workbench implements it with Qt; tests
// and the command-line tool use a scripted implementation.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kv {

enum class MsgIcon { Critical, Information, Exclamation };

/// The outcome of an open or save dialog. `filterIndex` is 1-based, as the dialog reports it.
struct FileChoice {
    bool cancelled = true;
    std::string path;  // full path
    std::string title; // file name without folder
    int filterIndex = 1;
};

struct FontChoice {
    std::string family;
    int pointSize = 10;
    bool bold = false;
    bool italic = false;
};

/// A progress window. Cancel is reported through cancelled(); the caller polls it.
class Progress {
  public:
    virtual ~Progress() = default;
    virtual void setValue(int value) = 0;
    virtual bool cancelled() const = 0;
};

class Host {
  public:
    virtual ~Host() = default;

    virtual void message(const std::string& text, const std::string& title, MsgIcon icon) = 0;
    /// The About box: the program's name, version and a line on what it is for.
    virtual void about(const std::string& title, const std::string& text) = 0;

    /// `filter` is a list of "Description|*.ext|" entries joined together. `folder` is where the
    /// dialog starts; empty leaves it to the platform.
    virtual FileChoice openFile(const std::string& filter, const std::string& title,
                                int filterIndex, const std::string& folder = {}) = 0;
    virtual FileChoice saveFile(const std::string& filter, const std::string& title,
                                int filterIndex, const std::string& suggestedName) = 0;

    /// Colours are 0x00BBGGRR values.
    virtual std::optional<uint32_t> pickColor(const std::string& title, uint32_t initial) = 0;
    virtual std::optional<FontChoice> pickFont(const FontChoice& initial) = 0;
    virtual std::optional<std::string> askText(const std::string& prompt, const std::string& title,
                                               const std::string& initial) = 0;

    /// A progress window with a Cancel button and no close box, from 0 to `max`.
    virtual std::unique_ptr<Progress> progress(const std::string& title, int max) = 0;

    /// Let pending user events run. Long loops call it once per trace so that Cancel and Pause
    /// work by re-entering the command handlers.
    virtual void yield() = 0;

    /// The user guide, shown outside the workbench (the desktop's browser).
    virtual void showHelp() = 0;

    /// Settings of this user kept outside SP.ini.
    virtual std::string userSetting(const std::string& section, const std::string& key,
                                    const std::string& fallback) = 0;
    virtual void setUserSetting(const std::string& section, const std::string& key,
                                const std::string& value) = 0;
};

} // namespace kv
