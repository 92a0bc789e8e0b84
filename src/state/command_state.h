// What the user can do right now: every menu entry (enabled, ticked, visible), every toolbar
// button (visible, enabled, pressed), the nine status-bar panels and the main caption. The core
// sets this model; the desktop shell only mirrors it, so the rules are tested without widgets.
#pragma once

#include <array>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kv {

// The names, keys and tips are the program's own constant texts: views of them, so that a copy
// of the whole command state (every undo of a failed open takes one) copies only what changes.
struct MenuEntry {
    std::string_view name;   // control name, e.g. "mnuOpen"
    std::string_view parent; // control name of the parent menu, "" for the menu bar
    std::string caption;     // "&File", "Import", "-" for a separator
    bool enabled = true;
    bool checked = false;
    bool visible = true;
    /// False while the command's subsystem is not part of this build: the shell keeps the
    /// entry on show but greyed, whatever `enabled` says.
    bool available = true;
};

struct ToolButton {
    int number = 0;       // 1..105
    std::string_view key; // "" for separators and spacers
    std::string_view tip; // tool tip
    bool toggle = false;  // stays down when pressed
    bool visible = true;
    bool enabled = true;
    bool down = false;
    bool available = true; // as for MenuEntry
};

class CommandState {
  public:
    CommandState();

    // Menus ---------------------------------------------------------------------------------
    /// All entries in menu order (parents before children).
    const std::vector<MenuEntry>& menus() const { return menus_; }
    MenuEntry& menu(std::string_view name);
    const MenuEntry& menu(std::string_view name) const;
    bool hasMenu(std::string_view name) const { return index_->count(name) != 0; }
    /// Where the entry `name` stands in menus(): the same place in every CommandState, so code
    /// that sets the same entries over and over can find them once and keep the places.
    static size_t menuPlace(std::string_view name);
    /// The places of several entries, in their order.
    static std::vector<size_t> menuPlaces(std::initializer_list<const char*> names);
    MenuEntry& menuAt(size_t place) { return menus_[place]; }
    void enable(std::string_view name, bool on = true) { menu(name).enabled = on; }
    void check(std::string_view name, bool on = true) { menu(name).checked = on; }
    bool enabled(std::string_view name) const { return menu(name).enabled; }
    bool checked(std::string_view name) const { return menu(name).checked; }

    // Toolbar -------------------------------------------------------------------------------
    static constexpr int kButtons = 105;
    ToolButton& button(int number) { return buttons_.at(number - 1); }
    const ToolButton& button(int number) const { return buttons_.at(number - 1); }
    const std::array<ToolButton, kButtons>& buttons() const { return buttons_; }
    /// Number of the button with this key, 0 when none has it.
    int buttonByKey(const std::string& key) const;
    void showButtons(int first, int last, bool visible);
    /// Numbers of the visible buttons, in order.
    std::vector<int> visibleButtons() const;

    // Status bar ----------------------------------------------------------------------------
    static constexpr int kPanels = 9;
    std::string& panel(int number) { return panels_.at(number - 1); }
    const std::string& panel(int number) const { return panels_.at(number - 1); }

    // Caption -------------------------------------------------------------------------------
    std::string caption = "Kelvorandine ";
    std::string viewCaptionLine; // "Spectrum view" ... set by TBButtons_View

    /// The O-scope's time-range text ("2.13 ms"), kept here by that view so that the status bar
    /// can show it again whenever the O-scope becomes the active view.
    std::string timeRangeText;

    /// Bumped on every change a mirror should pick up; the shell compares it to repaint.
    int revision = 0;
    void touch() { ++revision; }

  private:
    std::vector<MenuEntry> menus_;
    // Hashed: the commands look entries up by name many times an action. The entries and their
    // order are the same in every CommandState, so all of them share one index, and copying a
    // state (as every fuzz execution and every undo of a failed open does) copies no table.
    const std::unordered_map<std::string_view, size_t>* index_;
    std::array<ToolButton, kButtons> buttons_{};
    std::array<std::string, kPanels> panels_{};
};

} // namespace kv
