// Spectrum references: their files, their activation and the reference dialog's behaviour.
#include "references/spectrum_refs.h"

#include "engine/windows.h"
#include "platform/byte_source.h"
#include "platform/files.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "references/reference_files.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace kv {

namespace {

constexpr const char* kFilter = "Kelvorandine Files(*.pns)|*.pns|";
constexpr const char* kOpenTitle = "Open Kelvorandine Reference data files";
constexpr const char* kSaveTitle = "Save Kelvorandine Reference data files";
constexpr const char* kNoFileText = "Reference file does not exist or is invalid";

/// The items of one line.
struct Line {
    bool& on;
    bool& valid;
    std::vector<float>& data;
    std::vector<float>& show;
    int32_t& bins;
    int32_t& fullScale;
    float& maxFreq;
    float& binStep;
    double& level;
    std::string& color;
};

Line lineOf(ProgramState& st, int n) {
    if (n == 2)
        return {st.RefOn2,        st.RefValid2,   st.RefData2,     st.RefShow2,  st.RefCount2,
                st.RefFullScale2, st.RefMaxFreq2, st.RefBinWidth2, st.RefLevel2, st.Line2Color};
    return {st.RefOn1,        st.RefValid1,   st.RefData1,     st.RefShow1,  st.RefCount1,
            st.RefFullScale1, st.RefMaxFreq1, st.RefBinWidth1, st.RefLevel1, st.Line1Color};
}

bool& checkOf(RefFields& f, int n) {
    return n == 2 ? f.Check2 : f.Check1;
}

int lineChosen(const RefFields& f) {
    return f.optLine == 2 ? 2 : 1;
}

/// Log10 of a magnitude for the dB curve; 0 (and anything not above it) gives 0.
double magnitudeLog10(double v) {
    return v > 0 ? std::log10(v) : 0.0;
}

/// The stored figures pass when the reference's top lies above the live step and its step below
/// the live top.
bool inLiveRange(const ProgramState& st, float maxFreq, float binStep) {
    return maxFreq > st.BinWidth && binStep < st.MaxFreq;
}

void redrawSpectrum(Workbench& wb) {
    if (wb.st.SpectrumOpen) wb.views.redrawView(wb, ViewId::Spectrum);
}

void afterLinesChanged(Workbench& wb) {
    wb.st.RefShown = wb.st.RefOn1 || wb.st.RefOn2;
    updateReferenceChecks(wb);
    redrawSpectrum(wb);
}

} // namespace

std::string refFolder(const ProgramState& st) {
    return joinPath(st.AppPath, "ref");
}

std::string fixedRefPath(const ProgramState& st, int line, const char* ext) {
    return joinPath(refFolder(st), "ref" + std::to_string(line) + "." + ext);
}

void removeRefFile(const std::string& path) {
    removeFileQuietly(path);
}

bool copyRefFile(const std::string& from, const std::string& to) {
    std::error_code ec;
    if (std::filesystem::equivalent(from, to, ec)) return true;
    std::filesystem::create_directories(folderOf(to), ec);
    ec.clear();
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, ec);
    return !ec;
}

std::string spectrumRefBytes(const ProgramState& st) {
    PnsFile f;
    f.MaxFreq = st.MaxFreq;
    f.FullScale = toInt32(st.FullScalePos);
    f.BinStep = st.BinWidth;
    f.Bins = toInt32(st.Sp_Samples / 2.0);
    f.Window = st.FFT_Window;
    f.Level = st.Offset_Log;
    f.Data.assign(size_t(std::max(f.Bins, 0)) + 1, 0.0f);
    const size_t n = std::min(f.Data.size(), st.SpAmp.size());
    std::copy_n(st.SpAmp.begin(), n, f.Data.begin());
    return writePns(f);
}

void ReferenseAktivate(ProgramState& st) {
    Line l = lineOf(st, st.RefSelect == 2 ? 2 : 1);
    const int64_t stored = int64_t(l.data.size()) - 1;
    const int64_t bins = std::min<int64_t>(l.bins, stored);
    if (bins < 0) return;
    int64_t start = 0;
    if (l.binStep < st.BinWidth) {
        while (start < bins && double(start) * l.binStep < st.BinWidth)
            ++start;
    }
    l.show.assign(size_t(bins) + 1, 0.0f);
    for (int64_t i = start, k = 0; i <= bins; ++i, ++k) {
        const float v = l.data[size_t(i)];
        l.show[size_t(k)] =
            st.YLinear ? v : f32(20.0 * magnitudeLog10(double(v) / double(l.fullScale)));
    }
    if (l.maxFreq == st.MaxFreq) {
        st.RefFitMode = 1;
    } else if (l.maxFreq > st.MaxFreq && l.binStep > 0) {
        st.RefFitMode = 2;
        const double cut = roundHalfEven(double(st.MaxFreq) / l.binStep + 1);
        l.bins = int32_t(std::clamp<double>(cut, 0, double(bins)));
    }
}

void activateShownReferences(ProgramState& st) {
    const int16_t keep = st.RefSelect;
    for (int16_t n = 1; n <= 2; ++n) {
        if (!lineOf(st, n).on) continue;
        st.RefSelect = n;
        ReferenseAktivate(st);
    }
    st.RefSelect = keep;
}

bool readSpectrumRef(Workbench& wb, int line, const std::string& path) {
    ProgramState& st = wb.st;
    const auto src = openFileSource(path.empty() ? fixedRefPath(st, line, "pns") : path);
    PnsFile f;
    const RefRead r = readPns(*src, f);
    if (r == RefRead::WrongFormat) {
        wb.host.message("Wrong File Format!", kMessageTitle, MsgIcon::Critical);
        return false;
    }
    Line l = lineOf(st, line);
    if (r == RefRead::Ok) st.FFT_Window = f.Window; // the window name follows the file
    if (r != RefRead::Ok || !inLiveRange(st, f.MaxFreq, f.BinStep)) {
        wb.host.message("Out of range!", kMessageTitle, MsgIcon::Critical);
        l.on = false;
        l.valid = false;
        afterLinesChanged(wb);
        return false;
    }
    l.fullScale = f.FullScale;
    l.maxFreq = f.MaxFreq;
    l.binStep = f.BinStep;
    l.bins = f.Bins;
    l.level = f.Level;
    l.data = std::move(f.Data);
    l.on = true;
    l.valid = true;
    st.RefShown = true;
    const int16_t keep = st.RefSelect;
    st.RefSelect = int16_t(line);
    ReferenseAktivate(st);
    st.RefSelect = keep;
    afterLinesChanged(wb);
    return true;
}

void updateReferenceChecks(Workbench& wb) {
    const ProgramState& st = wb.st;
    wb.cmd.check("mnuRef", st.RefOn1 || st.RefOn2);
    wb.cmd.check("mnuRefO", st.TimeRef1On || st.TimeRef2On);
    wb.cmd.check("mnuRefPh", st.PhaseRef1On || st.PhaseRef2On);
    wb.cmd.touch();
}

void openReferenceDialog(Workbench& wb, const char* dialog) {
    if (wb.st.FftFilterOn) {
        wb.host.message("Illegal operation with aktive filters.", kMessageTitle,
                        MsgIcon::Exclamation);
        return;
    }
    wb.views.showDialog(wb, dialog, false);
}

namespace dlgRef {

void Form_Load(Workbench& wb, RefFields& f) {
    ProgramState& st = wb.st;
    for (int n = 1; n <= 2; ++n) {
        Line l = lineOf(st, n);
        const std::string path = fixedRefPath(st, n, "pns");
        PnsFile h;
        l.valid = fileExists(path) && readPns(*openFileSource(path), h, false) == RefRead::Ok &&
                  inLiveRange(st, h.MaxFreq, h.BinStep);
        checkOf(f, n) = l.on;
    }
    if (st.RefSelect == 1 || st.RefSelect == 2) f.optLine = st.RefSelect;
    st.RefSelect = lineChosen(f);
    f.Label1Color = lineOf(st, lineChosen(f)).color;
}

void cmdSet_Click(Workbench& wb, RefFields& f) {
    ProgramState& st = wb.st;
    const int n = lineChosen(f);
    st.RefSelect = int16_t(n);
    if (st.TempPath.empty()) return;
    const std::string path = fixedRefPath(st, n, "pns");
    removeRefFile(path);
    std::error_code ec;
    std::filesystem::create_directories(refFolder(st), ec);
    if (!writeFileAtomically(path, spectrumRefBytes(st))) return;
    checkOf(f, n) = readSpectrumRef(wb, n);
}

void cmdSave_Click(Workbench& wb, RefFields& f) {
    cmdSet_Click(wb, f);
    const FileChoice c = wb.host.saveFile(kFilter, kSaveTitle, 1, "");
    if (c.cancelled || c.path.empty()) return;
    copyRefFile(fixedRefPath(wb.st, lineChosen(f), "pns"), c.path);
}

void cmdLoad_Click(Workbench& wb, RefFields& f) {
    const FileChoice c = wb.host.openFile(kFilter, kOpenTitle, 1);
    if (c.cancelled || c.path.empty()) return;
    const int n = lineChosen(f);
    wb.st.RefSelect = int16_t(n);
    if (!copyRefFile(c.path, fixedRefPath(wb.st, n, "pns"))) return;
    checkOf(f, n) = readSpectrumRef(wb, n);
}

void cmdDelete_Click(Workbench& wb, RefFields& f) {
    const int n = lineChosen(f);
    Line l = lineOf(wb.st, n);
    l.on = false;
    l.valid = false;
    checkOf(f, n) = false;
    removeRefFile(fixedRefPath(wb.st, n, "pns"));
    afterLinesChanged(wb);
}

void cmdInfo_Click(Workbench& wb, RefFields& f) {
    const std::string path = fixedRefPath(wb.st, lineChosen(f), "pns");
    PnsFile h;
    if (!fileExists(path) || readPns(*openFileSource(path), h, false) != RefRead::Ok) {
        wb.host.message(kNoFileText, kMessageTitle, MsgIcon::Information);
        return;
    }
    wb.host.message("Bins: " + std::to_string(h.Bins) + " MaxFreq.: " + shortestText(h.MaxFreq),
                    kMessageTitle, MsgIcon::Information);
}

void colorChosen(Workbench& wb, RefFields& f, const std::string& color) {
    if (color.empty()) return;
    lineOf(wb.st, lineChosen(f)).color = color;
    f.Label1Color = color;
    SaveReferColors_toINI(wb);
    redrawSpectrum(wb);
}

bool Check_Click(Workbench& wb, RefFields& f, int line) {
    ProgramState& st = wb.st;
    if (!f.Check1 && !f.Check2) {
        st.RefOn1 = st.RefOn2 = false;
        afterLinesChanged(wb);
        return false;
    }
    Line l = lineOf(st, line);
    if (!checkOf(f, line)) {
        l.on = false;
        afterLinesChanged(wb);
        return true;
    }
    if (l.on) return true;
    if (!l.valid) {
        wb.host.message(kNoFileText, kMessageTitle, MsgIcon::Information);
        checkOf(f, line) = false;
        return true;
    }
    checkOf(f, line) = readSpectrumRef(wb, line);
    return true;
}

void optLine_Click(Workbench& wb, RefFields& f, int16_t line) {
    f.optLine = line == 2 ? 2 : 1;
    wb.st.RefSelect = f.optLine;
    f.Label1Color = lineOf(wb.st, f.optLine).color;
}

} // namespace dlgRef

namespace dlgRefC {

const std::array<uint32_t, 6> kCellColors = {
    0xCCFF00u, // RGB (0, 255, 204)
    0xCC0061u, // RGB (97, 0, 204)
    0x0FF726u, // RGB (38, 247, 15)
    0x3A4F4Eu, // RGB (78, 79, 58)
    0xFA19E7u, // RGB (231, 25, 250)
    0x202FF7u, // RGB (247, 47, 32)
};

std::string OKButton_Click(int cell) {
    if (cell < 0 || cell >= int(kCellColors.size())) return "";
    return std::to_string(kCellColors[size_t(cell)]);
}

} // namespace dlgRefC

} // namespace kv
