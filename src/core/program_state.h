// The workbench's one record of settings and data-set facts. Every reader, compute routine and
// view reads and writes these items directly, under the names the rest of the code uses.
// Exactly one instance lives in a running workbench; tests make a fresh one each.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kv {

struct ProgramState {
    // ---- Constants set at start (applyStartConstants) -------------------------------------
    // The decimal digits below are the ones the formulas were tuned with; the 64-bit pattern is
    // 0x400921FB54442D11, not the nearest double to pi.
    double Pi = 3.14159265358979;
    int16_t ToolbarButtonCount = 105;
    int16_t WaterfallZoom = 1;
    int16_t AutotuneLevel = 10;
    float PosiblValue = 3.0f;

    // ---- Paths and names ------------------------------------------------------------------
    std::string AppPath;
    std::string SourcePath;
    std::string SourcePathKeep;
    std::string SourceDisplayPath;
    std::string FileTitle;
    std::string TempPath; // empty: no data set is loaded
    std::string TempLeftPath;
    std::string TempRightPath;
    std::string ActiveTracePath;
    /// Settings given for this run only ("section.key" in lower case -> value); they win over
    /// SP.ini whenever it is read. The command-line tool's --set fills it.
    std::map<std::string, std::string> SettingsOverrides;

    // ---- The source and its working files ---------------------------------------------------
    int32_t Sp_Samples = 1024;
    int32_t Fft_Samples = 1024;
    int32_t TraceCount = 0;
    int32_t TraceLength = 0;
    int32_t SourceLength = 0;
    int32_t WorkingFileLength = 0;
    int16_t Channels = 0;
    int16_t StereoFlag = 0;
    double SampleRate = 0.0;
    int16_t BitsPerSample = 0;
    int32_t DataStart = 0;
    int32_t ReadPos = 0;
    float FullScalePos = 0.0f;
    float FullScaleNeg = 0.0f;
    float ScaleBits = 0.0f;
    std::string YUnitName;
    int16_t NewDS = 1;
    int16_t DownsampleEnabled = 0;
    int16_t DownsampleMode = 0; // 0 Average, 1 Decimate
    bool ImportCancelled = false;
    bool ImportFailed = false;
    double ScansPerSecond = 0.0;

    // Which format is open: exactly one is true after an open.
    bool IsWav = false, IsSht = false, IsDzt = false, IsRd3 = false, IsSgy = false, IsSg2 = false,
         IsDt1 = false, IsDt = false, IsCsv = false, IsDat = false;
    bool IsProject = false;
    bool IsSprScan = false;
    bool IsRadsys = false; // the .sgy entry the import dialog's filter index chose

    // ---- Trace navigation -------------------------------------------------------------------
    int16_t TracePos = 0;
    int16_t LastTrace = 0;
    int32_t TraceStep = 1;
    int32_t ScrollStride = 0;
    int32_t FirstTracePos = 1;
    int32_t CurrentTracePos = 1;
    bool Idle = true;
    bool PlayFirst = false, PlayRew = false, PlayPause = false, PlayFwd = false, PlayEnd = false;
    bool PeakHoldRestore = false; // Rew/First left Peak-hold; the next Fwd goes back to it
    uint32_t PlayStartTicks = 0;

    // ---- Open views ---------------------------------------------------------------------------
    bool SpectrumOpen = false;
    bool OscOpen = false;
    bool PhaseOpen = false;
    bool WaterfallOpen = false;
    bool RadargramOpen = false;
    bool ExtraViewOpen = false; // reserved: tested with the others, set by nothing
    int16_t ActiveView = 0;     // 1 O-scope, 2 Spectrum, 3 Phase, 4 Waterfall, 5 radargram
    bool NewDataSet = false;

    // ---- Settings file: [Gen] ---------------------------------------------------------------
    int16_t Fil = 1;
    int16_t Padding_Int = 1;
    int16_t BscanShow = 0;
    int16_t StSp = 1, StPh = 0, StOs = 0, StWat = 0;

    // ---- Settings file: [TimeWindow] --------------------------------------------------------
    std::string Time_LineColor, Time_BackColor, Time_GridColor;
    int16_t ShowGrid = 1;
    float Reference = 2.0f;
    int16_t ShowVertical = 2;
    float RefDel = 0.0f;
    int16_t TimeWindowed = 0;
    std::string Osc1Color, Osc2Color;

    // ---- Settings file: [FFT] ---------------------------------------------------------------
    int16_t DrSet = 1;
    std::string FFT_LineColor, FFT_BackColor, FFT_GridColor;
    int16_t FFT_ShowGrid = 1;
    int16_t FFT_Window = 10;
    int16_t AverVal = 10;
    int16_t YScale = 2;
    float LogSh = 0.0f;
    int16_t AS_Bar = 0;
    int32_t PlotRange = 100;
    int32_t Offset_Log = 0;
    float Offset_Lin = 100.0f;
    int16_t ModeFFT = 1; // 1 Single Trace, 2 Stacked, 3 Peak-hold, 4 Average
    int16_t dBFS = 1;
    std::string Line1Color, Line2Color;

    // ---- Settings file: [Fasa] --------------------------------------------------------------
    std::string F_LineColor, F_BackColor, F_GridColor;
    int16_t F_ShowGrid = 1;
    std::string Ph1Color, Ph2Color;

    // ---- Settings file: [AnFFT] -------------------------------------------------------------
    int16_t THDdB = 1;
    int16_t Bred = 3;

    // ---- Settings file: [BScan] -------------------------------------------------------------
    std::string PalAd;
    int16_t IndP = 1;
    std::array<std::string, 8> pal{}; // pal_1 .. pal_8

    // ---- Derived from the settings ------------------------------------------------------------
    bool YLinear = false;
    bool dBFS_On = true;
    bool PadWithZero = true;
    float LogShift = 0.0f;

    // ---- Analysis, filters and conditioning flags (cleared at start and by CloseDataSet) -----
    bool AnalysisOn = false;
    bool ShowThd = false, ShowThdN = false, ShowSfdr = false, ShowSinad = false, ShowSnr = false,
         ShowEnob = false;
    bool GprFilterOn = false;
    bool FftFilterOn = false;
    bool WhiteningOn = false;
    bool AutotuneOn = false;
    bool LevelOn = false;
    bool SpanActive = false;
    bool ReferenceActive = false;
    int32_t GainItemCount = 0;

    // ---- Markers --------------------------------------------------------------------------------
    bool MarkerMode = false;
    int16_t MarkerCount = 0;

    // ---- Trace buffers shared by the views ------------------------------------------------------
    std::vector<float> TraceBuf;
    std::vector<float> TraceBufR;

    // ---- Spectrum engine ------------------------------------------------------------------------

    // ---- Readers: format-specific items
    // ---------------------------------------------------------- WAV: bytes per sample of the last
    // header read (1 or 2). Other depths leave it as it was.
    int32_t BytesPerSample = 0;

    // ---- Readers: seismic, scope and table files ----------------------------------------------
    int16_t SampleBits = 16; // sample width of the source; readers without another value set 16
    /// Smallest SEG-Y sample seen. The Seismic entry resets it, the Radsys entry does not, so a
    /// second Radsys import starts from the previous minimum.
    float SgyMin = 0.0f;
    float TekVoltDiv = 0.0f; // volts per division of a Wavestar file
    int16_t TekChannels = 0; // channel count found in a Wavestar file

    // ---- Views ----------------------------------------------------------------------------------
};

} // namespace kv
