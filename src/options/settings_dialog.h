// The options dialog: every setting of SP.ini on one dialog of pages (general, spectrum,
// oscilloscope, phase, waterfall, palettes). It works on the live state and keeps the values it
// found for comparison when it closes: OK and Apply save the settings and re-read or redraw what
// the change needs, Cancel puts the old values back. This is the one place a user changes
// settings without editing SP.ini.
#pragma once

#include "state/program_state.h"

#include <array>
#include <string>
#include <vector>

namespace kv {

struct Workbench;

/// The settings items the dialog may change, as it found them.
struct SettingsSnapshot {
    int16_t Fil = 1, NewDS = 1, DownsampleEnabled = 0, DownsampleMode = 0, Padding_Int = 1;
    int32_t Sp_Samples = 1024, Fft_Samples = 1024, TraceCount = 0;
    int16_t BscanShow = 0, StSp = 1, StPh = 0, StOs = 0, StWat = 0;
    std::string Time_LineColor, Time_BackColor, Time_GridColor;
    int16_t ShowGrid = 1, ShowVertical = 2, TimeWindowed = 0;
    float Reference = 0, RefDel = 0;
    int16_t DrSet = 1, FFT_ShowGrid = 1, FFT_Window = 10, AverVal = 10, YScale = 2, AS_Bar = 0;
    std::string FFT_LineColor, FFT_BackColor, FFT_GridColor;
    int32_t PlotRange = 100, Offset_Log = 0;
    float Offset_Lin = 100;
    int16_t ModeFFT = 1, dBFS = 1;
    bool YLinear = false, dBFS_On = true, PadWithZero = true;
    std::string F_LineColor, F_BackColor, F_GridColor;
    int16_t F_ShowGrid = 1, THDdB = 1, Bred = 3, WaterfallZoom = 1, IndP = 1;
    float PosiblValue = 3.0f;
    std::string PalAd;
    std::array<std::string, 8> pal{};

    static SettingsSnapshot of(const ProgramState& st);
    void restore(ProgramState& st) const;
};

/// What the dialog shows, exactly as the user set it: list boxes by their 0-based index, texts as
/// typed, check boxes as bools.
struct SettingsFields {
    // ---- General ------------------------------------------------------------------------------
    std::vector<std::string> cmbFileList; ///< "Default file type": the twelve entries
    int cmbFile = 0;
    std::array<bool, 4> chStartUp{}; ///< Spectrum, Oscilloscope, Phase, Waterfall
    std::vector<std::string> cmbFFTList, cmbBinsList;
    std::string cmbFFT, cmbBins;
    int cmbPadding = 0; ///< 0 "Pad with zero", 1 "Truncate"
    int cmbCh = 0;      ///< "Left Chanel", "Right Chanel": shown, no effect
    bool cmbChEnabled = false;
    bool chDS = false;
    int cmbDS_Mode = 0; ///< 0 "Average", 1 "Decimate"
    std::vector<std::string> cmbDS_StepList;
    std::string cmbDS_Step;
    bool generalEnabled = false; ///< most of the page needs a data set
    bool dsEnabled = false;      ///< the down-sampling mode and step
    std::string lblFFT_Res, lblMaxFr, lblSamplRate;

    // ---- Spectrum -----------------------------------------------------------------------------
    int cmbWindow = 9;   ///< the ten windows, Blackman first
    int cmbViewMode = 0; ///< Single Trace, Stacked, Peak-hold, Average
    std::string cmbAvBlock;
    int XSc = 0, YSc = 1; ///< 0 "Linear", 1 "Logarithmic"
    std::string cmbPlotRange, cmbOffset_Log;
    bool optdBFS = true; ///< false: "Show as dBc"
    int cmbTHD = 0;      ///< 0 "dB", 1 "%"
    int opLG = 0;        ///< 0 "Line graph", 1 "Bar graph"
    bool CH = true;      ///< "Show Grid"
    std::string FFT_LineColor, FFT_BackColor, FFT_GridColor;
    std::string cmbBred;   ///< "3" or "10"
    std::string cmbPosibl; ///< "1", "2" or "3"

    // ---- Oscilloscope ---------------------------------------------------------------------------
    std::string txtReference, txtRefTime;
    bool txtReferenceEnabled = true;
    int cmbShowVertical = 1; ///< 0 "Volt", 1 "Bits"
    bool CH_t = true;        ///< " Show Grid"
    int Combo1 = 0;          ///< 0 "Not windowed", 1 "Windowed"
    std::string Time_LineColor, Time_BackColor, Time_GridColor;

    // ---- Phase ----------------------------------------------------------------------------------
    bool chFasa = true;
    std::string F_LineColor, F_BackColor, F_GridColor;

    // ---- Waterfall ------------------------------------------------------------------------------
    bool optTime = false; ///< false "Frequency domain", true "Time domain"
    int cmbWView = 0;     ///< "1:1", "1:2", "1:4", "1:6", "1:8"

    // ---- Palettes -------------------------------------------------------------------------------
    std::array<std::string, 8> palSlots{}; ///< file names of the eight slots
    int palChoice = 0;                     ///< 1..8 once a slot was clicked, 0 before
    std::string palPath;                   ///< the chosen palette's file

    /// What the dialog found, for comparison and for Cancel.
    SettingsSnapshot old;
};

/// The lists' captions, in order.
const std::vector<std::string>& viewModeNames();
const std::vector<std::string>& waterfallZoomNames();
/// The zoom of a `cmbWView` index: 1, 2, 4, 6, 8.
int16_t waterfallZoomOf(int index);
/// A figure in the read-outs' picture "##0.00", in Hz, kHz or MHz.
std::string frequencyText(double hz);

namespace dlgSettings {

void Form_Load(Workbench& wb, SettingsFields& f);
/// A sample count chosen: bins follow, and with a data set the FFT and the read-outs.
void cmbFFT_Click(Workbench& wb, SettingsFields& f);
/// A bin count chosen: samples follow as twice it.
void cmbBins_Click(Workbench& wb, SettingsFields& f);
void chDS_Click(Workbench& wb, SettingsFields& f);
void cmbDS_Step_Click(Workbench& wb, SettingsFields& f);
void cmbShowVertical_Click(Workbench& wb, SettingsFields& f);
/// A colour button: the colour dialog for `item` (one of the fields' colour texts).
void Color_Click(Workbench& wb, std::string& item, const std::string& title);
/// A palette slot clicked (1..8).
void imgPal_Click(Workbench& wb, SettingsFields& f, int slot);
/// Adds a palette file to the chosen slot (or the one in use).
void Command5_Click(Workbench& wb, SettingsFields& f);
/// Apply: the chain that applies and saves. Returns whether the dialog stays open (the Average
/// warning keeps it).
bool Command2_Click(Workbench& wb, SettingsFields& f);
/// OK: the start-up ticks, then Apply.
bool Command3_Click(Workbench& wb, SettingsFields& f);
/// Cancel: the old values come back.
void Command1_Click(Workbench& wb, SettingsFields& f);

} // namespace dlgSettings

/// The folder of the palettes.
std::string paletteFolder(const ProgramState& st);

} // namespace kv
