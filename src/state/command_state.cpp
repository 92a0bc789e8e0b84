// The menu tree and toolbar of the main window, with their captions, keys and tool tips.
#include "state/command_state.h"

#include <stdexcept>

namespace kv {

namespace {

struct MenuDef {
    const char* name;
    const char* parent;
    const char* caption;
};

// The whole menu tree, in order. Separators have the caption "-".
const MenuDef kMenus[] = {
    {"mnuFile", "", "&File"},
    {"mnuOpen", "mnuFile", "Import"},
    {"mnuOimp", "mnuFile", "Open Kelvorandine File"},
    {"mnuExport", "mnuFile", "Export to .."},
    {"mnuSw", "mnuFile", "Save window as "},
    {"mnuPrint", "mnuFile", "Print"},
    {"mnuExit", "mnuFile", "Exit"},
    {"mnuEdit", "", "&Edit"},
    {"mnuRR", "mnuEdit", "Reference"},
    {"mnuRef", "mnuRR", "Reference Spectrum"},
    {"mnuRefO", "mnuRR", "Reference O-scope"},
    {"mnuRefPh", "mnuRR", "Reference Phase"},
    {"mnuLevel", "mnuEdit", "Level"},
    {"mnuMarkers", "mnuEdit", "Markers"},
    {"mnuTT", "mnuEdit", "Text"},
    {"mnuTextEdit", "mnuTT", "Text Spectrum"},
    {"mnuTO", "mnuTT", "Text O-scope"},
    {"mnuTP", "mnuTT", "Text Phase"},
    {"mnuTW", "mnuTT", "Text Waterfall"},
    {"mnuSp4", "mnuEdit", "-"},
    {"mnuCur", "mnuEdit", "Cursor"},
    {"mnuSettings", "", "&Tools"},
    {"mnuOp", "mnuSettings", "Options"},
    {"mnuFInf", "mnuSettings", "File Info"},
    {"mnuSep1", "mnuSettings", "-"},
    {"mnuGPR", "mnuSettings", "GPR Filter"},
    {"mnuThd", "mnuSettings", "THD"},
    {"mnuThdN", "mnuSettings", "THD+N"},
    {"mnuSdr", "mnuSettings", "SFDR"},
    {"mnuSnd", "mnuSettings", "SINAD"},
    {"mnuSnr", "mnuSettings", "SNR"},
    {"mnuEnob", "mnuSettings", "ENOB"},
    {"mnuWhite", "mnuSettings", "Whitening"},
    {"mnuBCF", "mnuSettings", "FFT filter"},
    {"mnuSp", "mnuSettings", "-"},
    {"mnuFlip", "mnuSettings", "Flip"},
    {"mnuGain", "mnuSettings", "Gain"},
    {"mnuMxA", "mnuSettings", "Max. Ampl."},
    {"mnuMa", "mnuSettings", "Min. Ampl."},
    {"mnuPP", "mnuSettings", "Peak to Peak"},
    {"mnuView", "", "&View"},
    {"mnuFFT", "mnuView", "Spectrum"},
    {"mnuTime", "mnuView", "O-scope"},
    {"mnuPhase", "mnuView", "Phase"},
    {"mnuBscan", "mnuView", "Waterfall"},
    {"mnuOlOp", "mnuView", "All open"},
    {"mnuSep", "mnuView", "-"},
    {"mnuLC", "mnuView", "Line Color"},
    {"mnuBC", "mnuView", "Background Color"},
    {"mnuGC", "mnuView", "Grid Color"},
    {"mnuZoomIn", "mnuView", "Zoom In"},
    {"mnuZoomOut", "mnuView", "Zoom Out"},
    {"mnuNoZoom", "mnuView", "No Zoom"},
    {"mnuVertZoom", "mnuView", "Vertical Zoom"},
    {"mnuCurve", "mnuView", "Curve"},
    {"mnuCurvLine", "mnuCurve", "Line"},
    {"mnuCurvBar", "mnuCurve", "Bar"},
    {"mnuXaxis", "mnuView", "X axis"},
    {"mnuxl", "mnuXaxis", "X lin"},
    {"mnuxlog", "mnuXaxis", "X log"},
    {"mnuYax", "mnuView", "Y axis"},
    {"mnuylin", "mnuYax", "Y lin"},
    {"mnuYlog", "mnuYax", "Y log"},
    {"mnuAutoscale", "mnuView", "Autoscale"},
    {"mnuAutotune", "mnuView", "Autotune"},
    {"mnuSpan", "mnuView", "Span"},
    {"mnuPalettet", "mnuView", "Palette"},
    {"mnuWindow", "", "&Window"},
    {"mnuCasc", "mnuWindow", "Cascade"},
    {"mnuHor", "mnuWindow", "Horizontal"},
    {"mnuVert", "mnuWindow", "Vertical"},
    {"mnuHelp", "", "&Help"},
    {"mnuGSH", "mnuHelp", "Kelvorandine Help"},
    {"mnuAbout", "mnuHelp", "About"},
    // Hidden pop-up menus.
    {"mnuMyPopUp", "", "mnuMyPopUp"},
    {"mnuDM", "mnuMyPopUp", "Delete Marker"},
    {"mnuEM", "mnuMyPopUp", "Edit Marker"},
    {"mnuExM", "mnuMyPopUp", "Exit Markers"},
    {"mnuPup", "", "mnuPup"},
    {"mnMM", "mnuPup", "Marker Mode"},
    {"mnuPopUp", "mnuPup", "Exit Marker Mode"},
    {"mnuPupT", "", "mnuPupT"},
    {"mnuExMT", "mnuPupT", "Exit Markers"},
    {"mnuTimeY", "", "mnuTimeY"},
    {"mnuEYS", "mnuTimeY", "Edit Y_scale"},
};

struct ButtonDef {
    int number;
    const char* key;
    const char* tip;
    bool toggle;
};

const ButtonDef kButtonDefs[] = {
    {1, "Import", "Import File", false},
    {2, "Open", "Open Kelvorandine File", false},
    {3, "Options", "Options", false},
    {4, "Info", "File Info", false},
    {5, "Save as", "Save as ..", false},
    {6, "Export", "Export", false},
    {7, "Print", "Print", false},
    {9, "First", "Skip to Start", false},
    {10, "Rew", "Rew", false},
    {11, "Pause", "Pause", false},
    {12, "Fwd", "Fwd", false},
    {13, "End", "Skip to End", false},
    {15, "Spectrum", "Spectrum", false},
    {16, "O-scope", "O-scope", false},
    {17, "Phase", "Phase", false},
    {18, "Waterfall", "Waterfall", false},
    {19, "All open", "All open", false},
    {21, "FFT_LineColor", "Line Color", false},
    {22, "FFT_BackColor", "Background Color", false},
    {23, "FFT_GridColor", "Grid Color", false},
    {24, "FFT_ShowGrid", "Show Grid", true},
    {25, "FFT_AsLine", "Line", false},
    {26, "FFT_AsBar", "Bar", false},
    {27, "FFT_x_lin", "x lin", false},
    {28, "FFT_x_log", "x log", false},
    {29, "FFT_y_lin", "y lin", false},
    {30, "FFT_y_log", "y log", false},
    {31, "Autoscale", "Autoscale", false},
    {32, "Autotune", "Autotune", true},
    {33, "Span", "Span", true},
    {39, "GPR Filter", "GPR Filter", false},
    {41, "THD", "THD", true},
    {42, "THD+N", "THD+N", true},
    {43, "SFDR", "SFDR", true},
    {44, "SINAD", "SINAD", true},
    {45, "SNR", "SNR", true},
    {46, "ENOB", "ENOB", true},
    {47, "Whitening", "Whitening", true},
    {48, "FFT Filter", "FFT Filter", true},
    {53, "Reference", "Reference", false},
    {54, "Level", "Level", true},
    {55, "Markers", "Markers", false},
    {56, "Text", "Text", false},
    {61, "LC_O", "Line color", false},
    {62, "BC_O", "Background color", false},
    {63, "GC_O", "Grid color", false},
    {64, "SG_O", "Show grid", true},
    {65, "ZoomIn", "Zoom In", false},
    {66, "ZoomOut", "Zoom Out", false},
    {67, "NoZoom", "No Zoom", false},
    {68, "VertZoom", "Vertical Zoom", false},
    {72, "Flip", "Flip", true},
    {73, "Gain", "Gain", false},
    {74, "MaxA", "Max ampl", true},
    {75, "MinA", "Min ampl", true},
    {76, "PtP", "Peak to Peak", true},
    {83, "Cursor", "Cursor", true},
    {84, "Reference_O", "Reference", false},
    {85, "Text_O", "Text", false},
    {92, "LC_P", "Line Color", false},
    {93, "BC_P", "Background Color ", false},
    {94, "GC_P", "Grid Color", false},
    {95, "SG_P", "Show Grid", true},
    {97, "Ref_P", "Reference", false},
    {98, "T_P", "Text", false},
    {104, "Palette", "Palette", false},
    {105, "T_W", "Text", false},
};

// Menu entries whose subsystem is not part of this build yet. They stand in the menus as the
// rules of each view place them, but greyed. Each subsystem removes its lines here when it
// arrives; every toolbar button is built.
// clang-format off
const char* const kNotYetBuiltMenus[] = {
    "mnuDM", "mnuEM", "mnuExMT",                                            // marker editing
};
// clang-format on

} // namespace

namespace {

/// Where each entry of kMenus stands, by name.
const std::unordered_map<std::string_view, size_t>& menuIndex() {
    static const std::unordered_map<std::string_view, size_t> index = [] {
        std::unordered_map<std::string_view, size_t> by;
        size_t at = 0;
        for (const auto& d : kMenus)
            by[d.name] = at++;
        return by;
    }();
    return index;
}

} // namespace

CommandState::CommandState() : index_(&menuIndex()) {
    for (const auto& d : kMenus) {
        MenuEntry e;
        e.name = d.name;
        e.parent = d.parent;
        e.caption = d.caption;
        // The pop-up menus never show in the menu bar.
        if (e.parent.empty() && e.name.rfind("mnu", 0) == 0 && e.caption == e.name)
            e.visible = false;
        menus_.push_back(e);
    }
    for (int i = 0; i < kButtons; ++i)
        buttons_[i].number = i + 1;
    for (const auto& d : kButtonDefs) {
        auto& b = buttons_[d.number - 1];
        b.key = d.key;
        b.tip = d.tip;
        b.toggle = d.toggle;
    }
    for (const char* m : kNotYetBuiltMenus)
        menu(m).available = false;
}

MenuEntry& CommandState::menu(std::string_view name) {
    auto it = index_->find(name);
    if (it == index_->end()) throw std::out_of_range("no menu entry " + std::string(name));
    return menus_[it->second];
}

size_t CommandState::menuPlace(std::string_view name) {
    const auto& index = menuIndex();
    auto it = index.find(name);
    if (it == index.end()) throw std::out_of_range("no menu entry " + std::string(name));
    return it->second;
}

std::vector<size_t> CommandState::menuPlaces(std::initializer_list<const char*> names) {
    std::vector<size_t> places;
    for (const char* name : names)
        places.push_back(menuPlace(name));
    return places;
}

const MenuEntry& CommandState::menu(std::string_view name) const {
    auto it = index_->find(name);
    if (it == index_->end()) throw std::out_of_range("no menu entry " + std::string(name));
    return menus_[it->second];
}

int CommandState::buttonByKey(const std::string& key) const {
    if (key.empty()) return 0;
    for (const auto& b : buttons_)
        if (b.key == key) return b.number;
    return 0;
}

void CommandState::showButtons(int first, int last, bool visible) {
    for (int n = first; n <= last; ++n)
        button(n).visible = visible;
}

std::vector<int> CommandState::visibleButtons() const {
    std::vector<int> v;
    for (const auto& b : buttons_)
        if (b.visible) v.push_back(b.number);
    return v;
}

} // namespace kv
