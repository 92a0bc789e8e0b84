// The four small dialogs that set a value, apply it to the active view at once and can be
// closed with the value kept or taken back: Level (dlgdB), Gain (dlgDoGain), Autotune
// (dlgAutotune) and the O-scope's vertical scale (dlgYscale); and Autoscale, which needs none.
#pragma once

#include <cstdint>
#include <string>

namespace kv {

struct Workbench;

// ---- Level ----------------------------------------------------------------------------------

/// What dlgdB shows: the lowest level the plot can show, and the level as typed.
struct LevelFields {
    std::string lblMin, Text1;
};

/// The lowest level the spectrum can show: the bottom of the plot, in dB.
double lowestLevel(const Workbench& wb);

namespace dlgdB {
void Form_Load(Workbench& wb, LevelFields& f);
/// Apply: the level line goes on at the typed level. A level the plot cannot show (above its
/// top, at or under its bottom) gives "Out of range!" and leaves the line as it was. True when
/// the line is on at the new level.
bool Command1_Click(Workbench& wb, LevelFields& f);
/// OK: empty text closes without effect; else as Apply, and the menu entry is ticked. True
/// when the dialog stays open.
bool OKButton_Click(Workbench& wb, LevelFields& f);
/// Cancel: the level line goes off.
void CancelButton_Click(Workbench& wb, LevelFields& f);
} // namespace dlgdB

/// Level (menu and toolbar button 54): refused on a linear Y scale ("This function can't be use
/// for Linear Y scale"); else opens the dialog, or takes the line off when it is on.
void mnuLevel_Click(Workbench& wb);

// ---- Gain -----------------------------------------------------------------------------------

struct GainFields {
    std::string txtdb;
};

/// Largest gain, up or down, in dB: beyond it a float sample would overflow.
inline constexpr double kMaxGainDb = 200.0;

namespace dlgDoGain {
void Form_Load(Workbench& wb, GainFields& f);
/// Apply: "Enter value for Gain" for text that is not a number; else GainFactor = 10^(dB/20)
/// (dB held within +-kMaxGainDb), the gain on, the O-scope redrawn. True when applied.
bool Command1_Click(Workbench& wb, GainFields& f);
/// OK: applies; true when the dialog stays open (the text was refused).
bool OKButton_Click(Workbench& wb, GainFields& f);
/// Cancel: the gain off at 0 dB.
void CancelButton_Click(Workbench& wb, GainFields& f);
} // namespace dlgDoGain

/// Gain (menu and toolbar button 73): opens the dialog beside the O-scope.
void mnuGain_Click(Workbench& wb);

// ---- Autotune -------------------------------------------------------------------------------

struct AutotuneFields {
    std::string cmbL; // "3", "10" or "20", or what the user typed
};

namespace dlgAutotune {
/// The list's entries, in order.
inline constexpr const char* kLevels[] = {"3", "10", "20"};
void Form_Load(Workbench& wb, AutotuneFields& f);
/// Apply: AutotuneLevel from the list, autotune and span mode on (whitening off), both
/// commands ticked, the spectrum rebuilt round its peak.
void Command1_Click(Workbench& wb, AutotuneFields& f);
/// OK: applies and closes (false: the dialog does not stay).
bool OKButton_Click(Workbench& wb, AutotuneFields& f);
/// Cancel: autotune and span mode off.
void CancelButton_Click(Workbench& wb, AutotuneFields& f);
} // namespace dlgAutotune

/// Autotune (menu and toolbar button 32): opens the dialog, or when on switches it off.
void mnuAutotune_Click(Workbench& wb);
/// Autoscale (menu and toolbar button 31): the plot range takes the whole curve.
void mnuAutoscale_Click(Workbench& wb);

// ---- Vertical scale -------------------------------------------------------------------------

struct YscaleFields {
    std::string txtRefTime;
    std::string caption;
    bool applied = false;
    // What Cancel would take back.
    float keptScaleBits = 0, keptScaleVolt = 0;
    int32_t keptScaleBitsInt = 0;
};

namespace dlgYscale {
/// Volts per division for Wavestar and CSV sources and in Volt mode, bits per division in Bits
/// mode; the caption says which.
void Form_Load(Workbench& wb, YscaleFields& f);
/// Apply: "Enter value" for text that is not a number above 0; else the new scale and the
/// O-scope redrawn at it. True when applied.
bool Command1_Click(Workbench& wb, YscaleFields& f);
/// OK: unloads when applied, else applies. True when the dialog stays open.
bool OKButton_Click(Workbench& wb, YscaleFields& f);
/// Cancel: the scale saved in the settings file (volts) or full scale (bits) comes back.
void CancelButton_Click(Workbench& wb, YscaleFields& f);
} // namespace dlgYscale

/// Vertical Zoom / Edit Y_scale (menu and toolbar button 68): opens the dialog.
void mnuVertZoom_Click(Workbench& wb);

} // namespace kv
