// The options dialog's behaviour.
#include "options/settings_dialog.h"

#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "import/file_filters.h"
#include "import/format_table.h"
#include "options/palette.h"
#include "platform/files.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kv {

namespace {

constexpr int kSmallestFft = 32, kLargestFft = 65536;

std::string num(double v) {
    return shortestText(v);
}

/// The first entry of the import filter `Fil` gives: its description.
std::string fileTypeName(int fil) {
    const std::string f = importFilter(fil);
    return f.substr(0, f.find('|'));
}

bool dataLoaded(const ProgramState& st) {
    return !st.TempPath.empty();
}

/// The read-outs follow the sample count and the down-sampling step.
void refreshReadouts(const ProgramState& st, SettingsFields& f) {
    const double bins = Val(f.cmbBins);
    const double ds = st.NewDS > 0 ? st.NewDS : 1;
    f.lblFFT_Res = bins > 0 ? frequencyText(st.SampleRate / bins / ds) : frequencyText(0);
    f.lblMaxFr = frequencyText(st.SampleRate / 2 / ds);
    f.lblSamplRate = frequencyText(st.SampleRate);
}

/// The sample count took a new value: buffers, the FFT, the read-outs.
void samplesChanged(Workbench& wb, SettingsFields& f, bool countTraces) {
    ProgramState& st = wb.st;
    const int32_t n = int32_t(Val(f.cmbFFT));
    if (n < kSmallestFft || n > kLargestFft) return;
    st.Sp_Samples = st.Fft_Samples = n;
    if (!dataLoaded(st)) return;
    st.TraceBuf.assign(size_t(st.Sp_Samples) + 1, 0.0f);
    st.TraceBufR.assign(st.TraceBuf.size(), 0.0f);
    InitFftState(st);
    refreshReadouts(st, f);
    // The count divides by 8 where the file holds 4 bytes a sample: it comes out halved, as it
    // always has here; Apply counts again for a changed sample count.
    if (countTraces) st.TraceCount = int32_t(st.WorkingFileLength / 8 / st.Sp_Samples);
}

bool isShtOrCsv(const ProgramState& st) {
    return st.IsSht || st.IsCsv || st.IsCsvStd;
}

uint32_t colorValue(const std::string& text) {
    char* end = nullptr;
    const unsigned long v = std::strtoul(text.c_str(), &end, 10);
    return end == text.c_str() ? 0u : uint32_t(v);
}

} // namespace

SettingsSnapshot SettingsSnapshot::of(const ProgramState& st) {
    SettingsSnapshot s;
    s.Fil = st.Fil, s.NewDS = st.NewDS, s.DownsampleEnabled = st.DownsampleEnabled;
    s.DownsampleMode = st.DownsampleMode, s.Padding_Int = st.Padding_Int;
    s.Sp_Samples = st.Sp_Samples, s.Fft_Samples = st.Fft_Samples, s.TraceCount = st.TraceCount;
    s.BscanShow = st.BscanShow, s.StSp = st.StSp, s.StPh = st.StPh, s.StOs = st.StOs;
    s.StWat = st.StWat;
    s.Time_LineColor = st.Time_LineColor, s.Time_BackColor = st.Time_BackColor;
    s.Time_GridColor = st.Time_GridColor;
    s.ShowGrid = st.ShowGrid, s.ShowVertical = st.ShowVertical, s.TimeWindowed = st.TimeWindowed;
    s.Reference = st.Reference, s.RefDel = st.RefDel;
    s.DrSet = st.DrSet, s.FFT_ShowGrid = st.FFT_ShowGrid, s.FFT_Window = st.FFT_Window;
    s.AverVal = st.AverVal, s.YScale = st.YScale, s.AS_Bar = st.AS_Bar;
    s.FFT_LineColor = st.FFT_LineColor, s.FFT_BackColor = st.FFT_BackColor;
    s.FFT_GridColor = st.FFT_GridColor;
    s.PlotRange = st.PlotRange, s.Offset_Log = st.Offset_Log, s.Offset_Lin = st.Offset_Lin;
    s.ModeFFT = st.ModeFFT, s.dBFS = st.dBFS;
    s.YLinear = st.YLinear, s.dBFS_On = st.dBFS_On, s.PadWithZero = st.PadWithZero;
    s.F_LineColor = st.F_LineColor, s.F_BackColor = st.F_BackColor;
    s.F_GridColor = st.F_GridColor, s.F_ShowGrid = st.F_ShowGrid;
    s.THDdB = st.THDdB, s.Bred = st.Bred, s.WaterfallZoom = st.WaterfallZoom, s.IndP = st.IndP;
    s.PosiblValue = st.PosiblValue, s.PalAd = st.PalAd, s.pal = st.pal;
    return s;
}

void SettingsSnapshot::restore(ProgramState& st) const {
    st.Fil = Fil, st.NewDS = NewDS, st.DownsampleEnabled = DownsampleEnabled;
    st.DownsampleMode = DownsampleMode, st.Padding_Int = Padding_Int;
    st.Sp_Samples = Sp_Samples, st.Fft_Samples = Fft_Samples, st.TraceCount = TraceCount;
    st.BscanShow = BscanShow, st.StSp = StSp, st.StPh = StPh, st.StOs = StOs, st.StWat = StWat;
    st.Time_LineColor = Time_LineColor, st.Time_BackColor = Time_BackColor;
    st.Time_GridColor = Time_GridColor;
    st.ShowGrid = ShowGrid, st.ShowVertical = ShowVertical, st.TimeWindowed = TimeWindowed;
    st.Reference = Reference, st.RefDel = RefDel;
    st.DrSet = DrSet, st.FFT_ShowGrid = FFT_ShowGrid, st.FFT_Window = FFT_Window;
    st.AverVal = AverVal, st.YScale = YScale, st.AS_Bar = AS_Bar;
    st.FFT_LineColor = FFT_LineColor, st.FFT_BackColor = FFT_BackColor;
    st.FFT_GridColor = FFT_GridColor;
    st.PlotRange = PlotRange, st.Offset_Log = Offset_Log, st.Offset_Lin = Offset_Lin;
    st.ModeFFT = ModeFFT, st.dBFS = dBFS;
    st.YLinear = YLinear, st.dBFS_On = dBFS_On, st.PadWithZero = PadWithZero;
    st.F_LineColor = F_LineColor, st.F_BackColor = F_BackColor, st.F_GridColor = F_GridColor;
    st.F_ShowGrid = F_ShowGrid;
    st.THDdB = THDdB, st.Bred = Bred, st.WaterfallZoom = WaterfallZoom, st.IndP = IndP;
    st.PosiblValue = PosiblValue, st.PalAd = PalAd, st.pal = pal;
}

const std::vector<std::string>& viewModeNames() {
    static const std::vector<std::string> v = {"Single Trace", "Stacked", "Peak-hold", "Average"};
    return v;
}

const std::vector<std::string>& waterfallZoomNames() {
    static const std::vector<std::string> v = {"1:1", "1:2", "1:4", "1:6", "1:8"};
    return v;
}

int16_t waterfallZoomOf(int index) {
    static const int16_t z[] = {1, 2, 4, 6, 8};
    return index >= 0 && index < 5 ? z[index] : 1;
}

std::string frequencyText(double hz) {
    if (std::fabs(hz) >= 1e6) return formatPicture(hz / 1e6, "##0.00") + " MHz";
    if (std::fabs(hz) >= 1e3) return formatPicture(hz / 1e3, "##0.00") + " kHz";
    return formatPicture(hz, "##0.00") + " Hz";
}

std::string paletteFolder(const ProgramState& st) {
    return joinPath(st.AppPath, "pal");
}

namespace dlgSettings {

void Form_Load(Workbench& wb, SettingsFields& f) {
    const ProgramState& st = wb.st;
    f.old = SettingsSnapshot::of(st);
    const bool loaded = dataLoaded(st);

    f.cmbFileList.clear();
    for (int fil = 1; fil <= 12; ++fil)
        f.cmbFileList.push_back(fileTypeName(fil));
    f.cmbFile = std::clamp(st.Fil - 1, 0, 11);
    f.chStartUp = {st.StSp == 1, st.StOs == 1, st.StPh == 1, st.StWat == 1};
    f.cmbFFTList.clear();
    f.cmbBinsList.clear();
    for (int n = kSmallestFft; n <= kLargestFft; n *= 2) {
        f.cmbFFTList.push_back(std::to_string(n));
        f.cmbBinsList.push_back(std::to_string(n / 2));
    }
    f.cmbFFT = std::to_string(st.Sp_Samples);
    f.cmbBins = std::to_string(st.Sp_Samples / 2);
    f.cmbPadding = st.Padding_Int == 1 ? 0 : 1;
    f.cmbChEnabled = loaded && st.IsWav && st.Channels == 2;
    f.cmbCh = 0;
    f.chDS = st.DownsampleEnabled == 1;
    f.cmbDS_Mode = st.DownsampleMode == 1 ? 1 : 0;
    f.cmbDS_StepList.clear();
    for (int n = 1; n <= 10; ++n)
        f.cmbDS_StepList.push_back(std::to_string(n));
    f.cmbDS_Step = std::to_string(st.NewDS);
    f.generalEnabled = loaded;
    // Down-sampling is offered for the recordings that are read again when it changes.
    f.dsEnabled = loaded && f.chDS && (st.IsWav || st.IsSht || st.IsCsv);
    refreshReadouts(st, f);

    f.cmbWindow = std::clamp(st.FFT_Window - 1, 0, 9);
    f.cmbViewMode = std::clamp(st.ModeFFT - 1, 0, 3);
    f.cmbAvBlock = std::to_string(st.AverVal);
    f.XSc = st.DrSet == 2 ? 1 : 0;
    f.YSc = st.YLinear ? 0 : 1;
    f.cmbPlotRange = std::to_string(st.PlotRange);
    f.cmbOffset_Log = st.YLinear ? num(st.Offset_Lin) : std::to_string(st.Offset_Log);
    f.optdBFS = st.dBFS_On;
    f.cmbTHD = st.THDdB == 1 ? 0 : 1;
    f.opLG = st.AS_Bar == 1 ? 1 : 0;
    f.CH = st.FFT_ShowGrid == 1;
    f.FFT_LineColor = st.FFT_LineColor, f.FFT_BackColor = st.FFT_BackColor;
    f.FFT_GridColor = st.FFT_GridColor;
    f.cmbBred = std::to_string(st.Bred);
    f.cmbPosibl = num(st.PosiblValue);

    f.txtReference = num(st.Reference);
    f.txtRefTime = num(st.RefDel);
    f.cmbShowVertical = st.ShowVertical == 1 ? 0 : 1;
    f.txtReferenceEnabled = st.ShowVertical == 1;
    f.CH_t = st.ShowGrid == 1;
    f.Combo1 = st.TimeWindowed == 1 ? 1 : 0;
    f.Time_LineColor = st.Time_LineColor, f.Time_BackColor = st.Time_BackColor;
    f.Time_GridColor = st.Time_GridColor;

    f.chFasa = st.F_ShowGrid == 1;
    f.F_LineColor = st.F_LineColor, f.F_BackColor = st.F_BackColor;
    f.F_GridColor = st.F_GridColor;

    f.optTime = st.BscanShow == 1;
    f.cmbWView = 0;
    for (int i = 0; i < 5; ++i)
        if (waterfallZoomOf(i) == st.WaterfallZoom) f.cmbWView = i;

    f.palSlots = st.pal;
    f.palChoice = 0;
    f.palPath = st.PalAd.empty() ? "" : joinPath(paletteFolder(st), st.PalAd);
}

void cmbFFT_Click(Workbench& wb, SettingsFields& f) {
    f.cmbBins = std::to_string(int(Val(f.cmbFFT)) / 2);
    samplesChanged(wb, f, true);
}

void cmbBins_Click(Workbench& wb, SettingsFields& f) {
    f.cmbFFT = std::to_string(int(Val(f.cmbBins)) * 2);
    samplesChanged(wb, f, false);
}

void chDS_Click(Workbench& wb, SettingsFields& f) {
    if (!f.chDS) {
        wb.st.NewDS = 1;
        f.cmbDS_Step = "1";
    }
    f.dsEnabled = f.chDS && dataLoaded(wb.st);
    samplesChanged(wb, f, false);
    refreshReadouts(wb.st, f);
}

void cmbDS_Step_Click(Workbench& wb, SettingsFields& f) {
    wb.st.NewDS = int16_t(std::clamp(Val(f.cmbDS_Step), 1.0, 32767.0));
    if (dataLoaded(wb.st)) InitFftState(wb.st);
    refreshReadouts(wb.st, f);
}

void cmbShowVertical_Click(Workbench& wb, SettingsFields& f) {
    ProgramState& st = wb.st;
    if (f.cmbShowVertical == 0) {
        f.txtReferenceEnabled = true;
        if (!isShtOrCsv(st)) {
            st.Reference = 5.0f;
            f.txtReference = num(st.Reference);
            f.txtRefTime = formatPicture(st.Reference / 8.0, "#0.000");
        }
        return;
    }
    // Scope recordings have volts of their own: their scale stays Volt.
    if (isShtOrCsv(st)) {
        f.cmbShowVertical = 0;
        return;
    }
    f.txtReferenceEnabled = false;
    f.txtRefTime = num(Fix(st.FullScalePos / 4.0));
}

void Color_Click(Workbench& wb, std::string& item, const std::string& title) {
    if (auto c = wb.host.pickColor(title, colorValue(item))) item = std::to_string(*c);
}

void imgPal_Click(Workbench& wb, SettingsFields& f, int slot) {
    if (slot < 1 || slot > 8) return;
    f.palChoice = slot;
    f.palPath = joinPath(paletteFolder(wb.st), f.palSlots[size_t(slot - 1)]);
}

void Command5_Click(Workbench& wb, SettingsFields& f) {
    const int slot = f.palChoice > 0 ? f.palChoice : std::clamp<int>(wb.st.IndP, 1, 8);
    const FileChoice c = wb.host.openFile("Kelvorandine File(*.pal)|*.pal|", "Palettes", 1);
    if (c.cancelled || c.path.empty()) return;
    const std::string folder = paletteFolder(wb.st);
    const std::string title = fileTitleOf(c.path);
    const std::string inFolder = joinPath(folder, title);
    if (!fileExists(inFolder)) {
        std::error_code ec;
        std::filesystem::create_directories(folder, ec);
        std::filesystem::copy_file(c.path, inFolder, ec);
        if (ec) {
            wb.host.message("The palette could not be copied to " + folder + ".", kMessageTitle,
                            MsgIcon::Critical);
            return;
        }
    }
    f.palSlots[size_t(slot - 1)] = title;
    f.palChoice = slot;
    f.palPath = inFolder;
}

bool Command2_Click(Workbench& wb, SettingsFields& f) {
    ProgramState& st = wb.st;
    const SettingsSnapshot& old = f.old;
    const bool loaded = dataLoaded(st);

    // Display mode.
    const int16_t mode = int16_t(f.cmbViewMode + 1);
    st.AverVal = int16_t(std::clamp(Val(f.cmbAvBlock), 1.0, 32767.0));
    if (mode == 4 && double(st.AverVal) * st.Sp_Samples >= double(st.SourceLength) && loaded) {
        wb.host.message("Change Averege value!", kMessageTitle, MsgIcon::Exclamation);
        return true;
    }
    if (mode == 1 || mode == 2) {
        st.PeakHoldSuspended = false;
        resetPeakHold(st);
    }
    st.ModeFFT = mode;
    wb.cmd.panel(8) = modeText(mode);

    // General settings.
    st.Fil = int16_t(f.cmbFile + 1);
    st.Padding_Int = f.cmbPadding == 0 ? 1 : 0;
    st.PadWithZero = st.Padding_Int == 1;
    st.DownsampleEnabled = f.chDS ? 1 : 0;
    st.DownsampleMode = int16_t(f.cmbDS_Mode == 1 ? 1 : 0);
    if (!f.chDS) st.NewDS = 1;
    const bool samplesNew = st.Sp_Samples != old.Sp_Samples;
    const bool reload = st.Padding_Int != old.Padding_Int ||
                        st.DownsampleEnabled != old.DownsampleEnabled ||
                        st.DownsampleMode != old.DownsampleMode || samplesNew;

    // Spectrum.
    st.FFT_Window = int16_t(f.cmbWindow + 1);
    st.DrSet = f.XSc == 1 ? 2 : 1;
    st.YLinear = f.YSc == 0;
    st.YScale = st.YLinear ? 1 : 2;
    st.PlotRange = int32_t(std::fabs(Val(f.cmbPlotRange)));
    if (st.YLinear)
        st.Offset_Lin = f32(Val(f.cmbOffset_Log));
    else
        st.Offset_Log = toInt32(Val(f.cmbOffset_Log));
    st.dBFS_On = f.optdBFS;
    st.dBFS = st.dBFS_On ? 1 : 0;
    st.THDdB = f.cmbTHD == 0 ? 1 : 0;
    st.AS_Bar = f.opLG == 1 ? 1 : 0;
    st.FFT_ShowGrid = f.CH ? 1 : 0;
    st.FFT_LineColor = f.FFT_LineColor, st.FFT_BackColor = f.FFT_BackColor;
    st.FFT_GridColor = f.FFT_GridColor;
    st.Bred = toInt16(Val(f.cmbBred));
    st.PosiblValue = f32(Val(f.cmbPosibl));

    // Oscilloscope and phase.
    st.ShowVertical = f.cmbShowVertical == 0 ? 1 : 2;
    st.Reference = f32(Val(f.txtReference));
    st.RefDel = f32(Val(f.txtRefTime));
    st.ShowGrid = f.CH_t ? 1 : 0;
    st.TimeWindowed = f.Combo1 == 1 ? 1 : 0;
    st.Time_LineColor = f.Time_LineColor, st.Time_BackColor = f.Time_BackColor;
    st.Time_GridColor = f.Time_GridColor;
    st.F_ShowGrid = f.chFasa ? 1 : 0;
    st.F_LineColor = f.F_LineColor, st.F_BackColor = f.F_BackColor;
    st.F_GridColor = f.F_GridColor;

    // Waterfall and palettes. An open waterfall becomes the other kind when the kind changes.
    st.BscanShow = f.optTime ? 1 : 0;
    if (st.BscanShow != old.BscanShow) {
        const ViewId was = old.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
        const ViewId now = st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
        if (viewFlag(st, was)) {
            wb.views.loadView(wb, now);
            wb.views.unloadView(wb, was);
        }
    }
    st.pal = f.palSlots;
    if (f.palChoice > 0) {
        st.IndP = int16_t(f.palChoice);
        st.PalAd = f.palSlots[size_t(f.palChoice - 1)];
        // The open waterfall takes the palette for its next row and its colour scale, as the
        // palette chooser's OK gives it.
        st.PalPath = palettePath(st, st.PalAd);
        st.PalFile = st.PalPath;
        const ViewId v = st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
        if (viewFlag(st, v)) wb.views.viewCommand(wb, v, "DrawBMP");
    }
    const int16_t zoom = waterfallZoomOf(f.cmbWView);
    if (zoom != st.WaterfallZoom) {
        st.WaterfallZoom = zoom;
        st.SpanActive = zoom > 1;
        if (st.SpanActive) {
            st.SpanLowFreq = 0.0f;
            st.SpanHighFreq = f32(double(st.MaxFreq) / zoom);
            st.SpanStart = 0;
            st.SpanEnd = st.BinWidth > 0 ? toInt32(st.SpanHighFreq / st.BinWidth) : 0;
        }
    }

    if (samplesNew && loaded) {
        st.TraceCount = int32_t(st.WorkingFileLength / 8 / st.Sp_Samples);
        BigFile(st);
    }
    // A change of what the traces are made of reads the recording again, where its reader can.
    const ImportEntry* row = loaded ? formatTable().active(st) : nullptr;
    const bool rereads = row && row->rereadAfterOptions;
    if (st.NewDS != old.NewDS || st.DownsampleMode != old.DownsampleMode || (reload && rereads)) {
        SaveOptions(wb);
        if (loaded) ChNewDS(wb);
        StatusBarSet(wb);
        return false;
    }
    SaveOptions(wb);
    if (loaded && reload) {
        st.TracePos = 0;
        ReloadForms(wb);
        // The radargram's rows are as long as a trace: a new length lays it out again and
        // makes the rows on show again from the working file.
        if (samplesNew && st.BscanShow == 1 && st.RadargramOpen)
            wb.views.viewCommand(wb, ViewId::Radargram, "UpdateSamp");
    } else if (loaded) {
        for (ViewId v : {ViewId::Spectrum, ViewId::Oscope, ViewId::Phase, ViewId::Waterfall,
                         ViewId::Radargram})
            if (viewFlag(st, v)) wb.views.redrawView(wb, v);
    }
    StatusBarSet(wb);
    TBButtons_View(wb);
    return false;
}

bool Command3_Click(Workbench& wb, SettingsFields& f) {
    ProgramState& st = wb.st;
    st.StSp = f.chStartUp[0] ? 1 : 0;
    st.StOs = f.chStartUp[1] ? 1 : 0;
    st.StPh = f.chStartUp[2] ? 1 : 0;
    st.StWat = f.chStartUp[3] ? 1 : 0;
    return Command2_Click(wb, f);
}

void Command1_Click(Workbench& wb, SettingsFields& f) {
    ProgramState& st = wb.st;
    const bool samplesBack = st.Sp_Samples != f.old.Sp_Samples || st.NewDS != f.old.NewDS;
    f.old.restore(st);
    if (samplesBack && dataLoaded(st)) {
        st.TraceBuf.assign(size_t(st.Sp_Samples) + 1, 0.0f);
        st.TraceBufR.assign(st.TraceBuf.size(), 0.0f);
        InitFftState(st);
    }
}

} // namespace dlgSettings
} // namespace kv
