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

class SpectrumHooks;

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
    /// Where the working files are kept when not in the home (AppPath): the command-line tool's
    /// own scratch folder. Empty for the workbench. See workingFolder().
    std::string WorkPath;
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
    // Sizes and 1-based byte positions in the source and the working files are 64-bit, so a
    // recording of any size is placed exactly.
    int64_t SourceLength = 0;
    int64_t WorkingFileLength = 0;
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
    bool IsSegyStd = false, IsSeg2Std = false; // SEG-Y of all revisions, SEG-2 of all variants
    // The entries that read every variant of a format beside the fixed-layout ones.
    bool IsDztStd = false, IsWavStd = false, IsCsvStd = false;
    bool IsProject = false;
    bool IsSprScan = false;
    bool IsRadsys = false; // the .sgy entry the import dialog's filter index chose

    // ---- Trace navigation -------------------------------------------------------------------
    int16_t TracePos = 0;
    int16_t LastTrace = 0;
    int32_t TraceStep = 1;
    int64_t ScrollStride = 0;
    int64_t FirstTracePos = 1;
    int64_t CurrentTracePos = 1;
    bool Idle = true;
    bool PlayFirst = false, PlayRew = false, PlayPause = false, PlayFwd = false, PlayEnd = false;
    bool PeakHoldSuspended = false; // a move back left Peak-hold; the next move forward restores it
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
    /// The channel (1-based) the "all variants" readers take from a source with several. A
    /// settings file without the key means the first.
    int16_t ImportChannel = 1;

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
    // The palette in use: PalPath is AppPath/pal/ + a file name, PalFile the file whose colours
    // a waterfall's next row takes.
    std::string PalPath, PalFile;

    // ---- Derived from the settings ------------------------------------------------------------
    bool YLinear = false;
    bool dBFS_On = true;
    bool PadWithZero = true;
    float LogShift = 0.0f;

    // ---- Analysis, filters and conditioning flags (cleared at start and by CloseDataSet) -----
    bool AnalysOnFFT = false;
    bool ShowTHD = false, ShowTHDN = false, ShowSFDR = false, ShowSINAD = false, ShowSNR = false,
         ShowENOB = false;
    bool GprFilterOn = false; // the GPR read-out was taken: the spectrum shows the bandwidth mark
    bool FftFilterOn = false;
    bool WhiteningOn = false;
    bool AutotuneOn = false;
    bool LevelOn = false;
    bool SpanActive = false;
    bool RefShown = false; // a spectrum reference curve is on show
    int32_t GainItemCount = 0;

    // ---- Signal conditioning --------------------------------------------------------------------
    // The GPR band read-out: the lower and upper -10 dB points of the trace on show, in Hz.
    float GprLowHz = 0.0f, GprHighHz = 0.0f;
    // The FFT filter: corners and stop edges in Hz, the same in bins (the stop edges truncated),
    // the bin width they were taken with, and the degrees per bin of the two sine tapers.
    float BoxHP = 0.0f, BoxLP = 0.0f, BoxHPStop = 0.0f, BoxLPStop = 0.0f;
    float BoxBinWidth = 0.0f, BoxHPBin = 0.0f, BoxLPBin = 0.0f;
    int32_t BoxHPStopBin = 0, BoxLPStopBin = 0, BoxHPStep = 0, BoxLPStep = 0;
    // Whitening: the band in Hz and in elements of the transform, and the one complex value that
    // replaces every element of it (the strongest found over the whole data set).
    float WhiteLowHz = 0.0f, WhiteHighHz = 0.0f;
    int32_t WhiteLowBin = 0, WhiteHighBin = 0;
    float WhiteRe = 0.0f, WhiteIm = 0.0f;
    // Span: the centre and width as entered (Hz), the band's width and its count of bins.
    double CenterFreq = 0.0;
    float SpanFreq = 0.0f, SpanWidth = 0.0f;
    int32_t SpanBinCount = 0;
    // Level line, gain and autoscale. LevelValue is in dB (the level works on a dB plot only);
    // LevelShown is how far under the top of the plot the line stands, in dB.
    double LevelValue = 0.0;
    float LevelShown = 0.0f;
    double GainDb = 0.0, GainFactor = 1.0;
    bool GainOn = false;
    float AutoRange = 0.0f;

    // ---- Markers --------------------------------------------------------------------------------
    bool MarkerMode = false;
    int16_t MarkerCount = 0;

    // ---- Trace buffers shared by the views ------------------------------------------------------
    std::vector<float> TraceBuf;
    std::vector<float> TraceBufR;

    // ---- Spectrum engine ------------------------------------------------------------------------
    // Arrays are f32 and 0-based; an item told as 0..n holds n+1 elements.
    std::vector<float> FftRe, FftIm;   // 0..N: the trace as read, windowed, then transformed
    std::vector<float> BackRe, BackIm; // 0..N: the same for a waterfall's second trace
    float WindowGain = 1.0f;
    float BinWidth = 0.0f;
    int32_t Sp_Bins = 0; // bins on show (N/2); the fold overwrites it with its column count
    float MaxFreq = 0.0f;
    int32_t AmpCapacity = 0;
    int32_t PhaseBins = 0;
    std::vector<float> SpAmp;   // 0..2N: amplitude of bin j, j = 0..N/2-1
    std::vector<float> SpPhase; // 0..N: phase in degrees of element i (bin i-1)
    std::vector<float> SpDisp;  // 0..Sp_Bins: what is drawn per bin (linear or dB)
    /// Decibels the builder owes: while `due`, SpDisp[0..bins-1] stand for the decibels of
    /// SpAmp[0..bins-1] against `fullScale`, formed when something asks (`settleDecibels`,
    /// engine). A playback draws only each plot column's largest, which the fold finds from the
    /// amplitudes, so most traces never need the other bins' decibels.
    struct OwedDecibels {
        bool due = false;
        int32_t bins = 0;
        float fullScale = 0.0f;
    };
    OwedDecibels DecibelsOwed;
    std::vector<float> PeakHoldAcc; // 0..Sp_Bins: the held maxima of Peak-hold
    std::vector<float> BackAmp, BackDisp;
    /// Phases the builder owes: it keeps the transform they come from and takes them only when
    /// something asks (`ensurePhases`, engine), as most runs never look at a phase. While
    /// `spectrum` is set, SpPhase[1..bins] stand for the phases of elements 1..bins of that
    /// transform, which is FftRe/FftIm while `inFft`, the packed transform while `packed`, else
    /// the copy in `re`/`im`. Columns `colAt` of ColPhase stand for the phases of (`colRe`,
    /// `colIm`), taken when they were folded.
    struct OwedPhases {
        bool spectrum = false;
        bool inFft = false;
        bool packed = false;
        int32_t bins = 0;
        std::vector<float> re, im;
        // While `packed`: the transform as a real-input transform leaves it, element k's real
        // and imaginary parts at packedAt + 2k - 2 and packedAt + 2k - 1 in `packedRoom`, each
        // still to be multiplied by `scale`. Plain playback never needs the transform spread
        // out. The builder's next transform of that kind goes to `nextRoom`.
        float scale = 0.0f;
        size_t packedAt = 0;
        std::vector<float> packedRoom, nextRoom;
        std::vector<int32_t> colAt;
        std::vector<float> colRe, colIm;
        // From 0 or 1: colAt is not used, colRe[k] stands for column colFrom + k, and every
        // column from there is owed.
        int32_t colFrom = -1;
    };
    OwedPhases PhasesOwed;
    int32_t PeakBin = 0;
    float PeakAmp = 0.0f;
    float PeakFreq = 0.0f;
    float PeakDb = 0.0f;
    float FloorDbRel = 0.0f;
    int32_t FloorBin = 0;
    int32_t PeakHoldBins = 0;
    // The second trace a waterfall asks for.
    int32_t BackTraceIndex = 0;
    int32_t BackTraceTop = 0; // 0 or below: there is none
    bool RgBackOn = false;
    int32_t RgBackTrace = 0;
    int64_t BackTracePos = 0;
    /// Conditioning and view layout the builder calls at fixed points; null while none is
    /// plugged in (the command-line tool, most tests).
    SpectrumHooks* spectrumHooks = nullptr;

    // ---- Display mapping: bins folded into plot columns
    // -------------------------------------------
    int32_t PlotColumns = 0;
    int32_t BinsPerColumn = 0;
    int32_t ColumnCount = 0;
    std::vector<float> ColVal, ColLogX, ColPhase;
    std::vector<float> BackCol, BackColLogX;
    std::vector<float> SpanCol;
    int32_t SpanBins = 0;
    float TopDb = 0.0f;
    bool ViewLaidOut = false;
    // The span's band (set by the span dialog and auto-span).
    float SpanLowFreq = 0.0f, SpanHighFreq = 0.0f;
    int32_t SpanStart = 0, SpanEnd = 0;
    // Reference curves, slots 1 and 2. RefCount is a reference's bin count and RefBinWidth its
    // frequency step, as stored in its file; RefSelect is the line chosen in the dialog.
    bool RefOn1 = false, RefOn2 = false;
    int16_t RefSelect = 0;
    std::vector<float> RefData1, RefData2; // the linear magnitudes as stored, 0..RefCount
    std::vector<float> RefShow1, RefShow2; // the same in the plot's unit (dB or linear): folded
    int32_t RefCount1 = 0, RefCount2 = 0;
    float RefMaxFreq1 = 0.0f, RefMaxFreq2 = 0.0f;
    float RefBinWidth1 = 0.0f, RefBinWidth2 = 0.0f;
    int32_t RefFullScale1 = 0, RefFullScale2 = 0; // the full scale the stored dB refer to
    double RefLevel1 = 0.0, RefLevel2 = 0.0;
    bool RefValid1 = false, RefValid2 = false; // a usable file stands behind the line
    /// 1: the reference has the live maximum frequency; 2: it reached further and was cut.
    int16_t RefFitMode = 0;
    std::vector<float> RefCol1, RefCol2, RefColLogX1, RefColLogX2;
    int32_t RefColCount1 = 0, RefColCount2 = 0;
    std::vector<float> RefSpanCol1, RefSpanCol2;
    int32_t RefSpanBins1 = 0, RefSpanBins2 = 0;

    // ---- Signal metrics -------------------------------------------------------------------------
    int16_t SampleBits = 16;
    double FundPower = 0.0, HarmPower = 0.0, NoisePower = 0.0;
    std::vector<int16_t> HarmList, NoiseList; // bins, in the order they were counted
    int32_t HarmCount = 0, NoiseCount = 0;
    double SpurAmp = -100.0;
    double SpurRatio = 0.0;
    double SNR_dB = 0.0, THD_val = 0.0, SFDR_dB = 0.0, SINAD_dB = 0.0, ENOB_bits = 0.0,
           THDN_val = 0.0;
    // Captions of the read-out labels An(0) to An(5) above the spectrum: SNR, THD, SINAD, SFDR,
    // ENOB, THD+N. A caption keeps its text while its metric is off.
    std::array<std::string, 6> An;

    // ---- Readers: format-specific items
    // ---------------------------------------------------------- WAV: bytes per sample of the last
    // header read (1 or 2). Other depths leave it as it was.
    int32_t BytesPerSample = 0;

    // ---- Radar readers (DZT, RD3/RAD, DT1/HD, Zon DT) -------------------------------------------
    float RangeNs = 0.0f;      // DZT header: range in ns
    double TimeWindowNs = 0.0; // RD3, DT1, Zon: total time window (Zon: in seconds)
    std::string Rd3Path, RadPath, RadTimeWindowText, RadSamplesText;
    int32_t Rd3Stride = 0; // bytes per trace in the .rd3 source
    std::string HdPath;
    int32_t Dt1Samples = 0;
    int32_t Dt1DataPos = 0;
    float Dt1Max = 0.0f, Dt1Min = 0.0f;
    int32_t ZonSamples = 0;
    int32_t ZonDataPos = 0;

    // ---- Readers: seismic, scope and table files ----------------------------------------------
    /// Smallest SEG-Y sample seen. The Seismic entry resets it, the Radsys entry does not, so a
    /// second Radsys import starts from the previous minimum.
    float SgyMin = 0.0f;
    float TekVoltDiv = 0.0f; // volts per division of a Wavestar file
    int16_t TekChannels = 0; // channel count found in a Wavestar file

    // ---- Readers beside the twelve entries ----------------------------------------------------
    /// What such a reader found in the source's headers that a user wants to see (the textual
    /// header, descriptor strings, chunk list, antenna ...), one line each, in file order. The
    /// open clears it; file information and the command line's "FileInfo" show it.
    std::vector<std::string> SourceInfoLines;

    // ---- Views ----------------------------------------------------------------------------------
    // What a single view keeps for itself (zoom, pointer, cursors, read-outs, captions) lives in
    // its model; here stand only the items that other parts read or write too.

    // ---- O-scope --------------------------------------------------------------------------------
    // ScaleBits (above) is the count from the centre line to the top edge; ScaleVolt the volts
    // over the whole graph height; a volt per count is Reference / 2 / FullScalePos. The scale
    // dialog and the radargram use them too.
    float ScaleVolt = 0.0f;
    int32_t ScaleBitsInt = 0;  // Bits mode: counts per division * 4 as entered (the references)
    float ShtVoltDiv = 0.0f;   // volts per division found in a Wavestar file
    double ViewTimeSpan = 0.0; // seconds across the whole view (the references)
    // The O-scope's flip; the radargram mirrors its colours by it, so it is kept here. It goes
    // off when the O-scope goes.
    bool Flipped = false;
    bool TimeRefOn = false, TimeRef1On = false, TimeRef2On = false;
    // O-scope references, lines 1 and 2: the trace as stored, its sample count, the full scale
    // its counts refer to and the seconds it spanned across the view.
    bool TimeRef1Valid = false, TimeRef2Valid = false;
    int16_t TimeRef1Samples = 0, TimeRef2Samples = 0;
    std::vector<float> TimeRef1Data, TimeRef2Data;
    float TimeRef1Scale = 0.0f, TimeRef2Scale = 0.0f;
    double TimeRef1Span = 0.0, TimeRef2Span = 0.0;
    int16_t TimeRefSelected = 1;

    // ---- Phase ----------------------------------------------------------------------------------
    bool PhaseRefOn = false, PhaseRef1On = false, PhaseRef2On = false;
    // Phase references, lines 1 and 2: degrees per bin as stored, their bin count and the
    // maximum frequency they reached.
    bool PhaseRef1Valid = false, PhaseRef2Valid = false;
    int32_t PhaseRef1Samples = 0, PhaseRef2Samples = 0;
    float PhaseRef1MaxFreq = 0.0f, PhaseRef2MaxFreq = 0.0f;
    std::vector<float> PhaseRef1Data, PhaseRef2Data;
    int16_t PhaseRefSelected = 1;
};

/// The folder of the working files: WorkPath when the run has one of its own, else the home.
inline const std::string& workingFolder(const ProgramState& st) {
    return st.WorkPath.empty() ? st.AppPath : st.WorkPath;
}

} // namespace kv
