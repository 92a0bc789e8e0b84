// The O-scope and phase reference dialogs and their files.
#include "references/time_phase_refs.h"

#include "engine/spectrum.h"
#include "platform/byte_source.h"
#include "platform/files.h"
#include "platform/message_title.h"
#include "references/reference_files.h"
#include "references/spectrum_refs.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <algorithm>
#include <filesystem>

namespace kv {

namespace {

constexpr const char* kOpenTitle = "Open Kelvorandine Reference data files";
constexpr const char* kSaveTitle = "Save Kelvorandine Reference data files";
constexpr const char* kNoFileText = "Reference file does not exist or is invalid";

/// Which of the two dialogs: its file, its view, its items.
struct Kind {
    const char* ext;
    const char* filter;
    ViewId view;
    bool ProgramState::*sum;
    bool ProgramState::*on[2];
    bool ProgramState::*valid[2];
    std::string ProgramState::*color[2];
    int16_t ProgramState::*selected;
};

const Kind kTime{"pno",
                 "Kelvorandine Files(*.pno)|*.pno|",
                 ViewId::Oscope,
                 &ProgramState::TimeRefOn,
                 {&ProgramState::TimeRef1On, &ProgramState::TimeRef2On},
                 {&ProgramState::TimeRef1Valid, &ProgramState::TimeRef2Valid},
                 {&ProgramState::Osc1Color, &ProgramState::Osc2Color},
                 &ProgramState::TimeRefSelected};
const Kind kPhase{"pnp",
                  "Kelvorandine Files(*.pnp)|*.pnp|",
                  ViewId::Phase,
                  &ProgramState::PhaseRefOn,
                  {&ProgramState::PhaseRef1On, &ProgramState::PhaseRef2On},
                  {&ProgramState::PhaseRef1Valid, &ProgramState::PhaseRef2Valid},
                  {&ProgramState::Ph1Color, &ProgramState::Ph2Color},
                  &ProgramState::PhaseRefSelected};

int chosen(const TimeRefFields& f) {
    return f.optLine == 2 ? 2 : 1;
}
bool& checkOf(TimeRefFields& f, int n) {
    return n == 2 ? f.Check2 : f.Check1;
}

void redraw(Workbench& wb, const Kind& k) {
    ProgramState& st = wb.st;
    st.*k.sum = st.*k.on[0] || st.*k.on[1];
    updateReferenceChecks(wb);
    if (viewFlag(st, k.view)) wb.views.viewCommand(wb, k.view, "CreateRef");
}

bool readLine(Workbench& wb, const Kind& k, int n) {
    return &k == &kTime ? readTimeRef(wb.st, n) : readPhaseRef(wb, n);
}

void formLoad(Workbench& wb, const Kind& k, TimeRefFields& f) {
    ProgramState& st = wb.st;
    for (int n = 1; n <= 2; ++n) {
        const bool wasOn = st.*k.on[n - 1];
        if (fileExists(fixedRefPath(st, n, k.ext))) {
            if (&k == &kTime)
                readTimeRef(st, n);
            else
                readPhaseRef(wb, n);
        }
        st.*k.on[n - 1] = wasOn && st.*k.valid[n - 1];
        checkOf(f, n) = st.*k.on[n - 1];
    }
    f.optLine = st.*k.selected == 2 ? 2 : 1;
    f.Label1Color = st.*k.color[chosen(f) - 1];
}

void setLine(Workbench& wb, const Kind& k, TimeRefFields& f) {
    ProgramState& st = wb.st;
    const int n = chosen(f);
    st.*k.selected = int16_t(n);
    if (st.TempPath.empty()) return;
    const std::string path = fixedRefPath(st, n, k.ext);
    removeRefFile(path);
    std::error_code ec;
    std::filesystem::create_directories(refFolder(st), ec);
    if (!writeFileAtomically(path, &k == &kTime ? timeRefBytes(st) : phaseRefBytes(st))) return;
    if (&k == &kTime) {
        // The line keeps the scale on show, not the full scale the file records.
        if (!readTimeRef(st, n)) return;
        (n == 2 ? st.TimeRef2Scale : st.TimeRef1Scale) = st.ScaleBits;
    } else if (!readPhaseRef(wb, n)) {
        return;
    }
    st.*k.on[n - 1] = true;
    checkOf(f, n) = true;
    redraw(wb, k);
}

void saveLine(Workbench& wb, const Kind& k, TimeRefFields& f) {
    setLine(wb, k, f);
    const FileChoice c = wb.host.saveFile(k.filter, kSaveTitle, 1, "");
    if (c.cancelled || c.path.empty()) return;
    copyRefFile(fixedRefPath(wb.st, chosen(f), k.ext), c.path);
}

void loadLine(Workbench& wb, const Kind& k, TimeRefFields& f) {
    const FileChoice c = wb.host.openFile(k.filter, kOpenTitle, 1);
    if (c.cancelled || c.path.empty()) return;
    ProgramState& st = wb.st;
    const int n = chosen(f);
    st.*k.selected = int16_t(n);
    if (!copyRefFile(c.path, fixedRefPath(st, n, k.ext))) return;
    if (!readLine(wb, k, n)) {
        if (&k == &kTime) wb.host.message(kNoFileText, kMessageTitle, MsgIcon::Information);
        st.*k.on[n - 1] = false;
        checkOf(f, n) = false;
        redraw(wb, k);
    }
}

void deleteLine(Workbench& wb, const Kind& k, TimeRefFields& f) {
    ProgramState& st = wb.st;
    const int n = chosen(f);
    st.*k.on[n - 1] = false;
    st.*k.valid[n - 1] = false;
    checkOf(f, n) = false;
    removeRefFile(fixedRefPath(st, n, k.ext));
    redraw(wb, k);
}

void colorLine(Workbench& wb, const Kind& k, TimeRefFields& f, const std::string& color) {
    if (color.empty()) return;
    wb.st.*k.color[chosen(f) - 1] = color;
    f.Label1Color = color;
    SaveReferColors_toINI(wb);
    redraw(wb, k);
}

void chooseLine(Workbench& wb, const Kind& k, TimeRefFields& f, int16_t line) {
    f.optLine = line == 2 ? 2 : 1;
    wb.st.*k.selected = f.optLine;
    f.Label1Color = wb.st.*k.color[f.optLine - 1];
}

bool okButton(Workbench& wb, const Kind& k, TimeRefFields& f) {
    ProgramState& st = wb.st;
    for (int n = 1; n <= 2; ++n)
        if (!checkOf(f, n)) st.*k.on[n - 1] = false;
    for (int n = 1; n <= 2; ++n)
        if (checkOf(f, n) && !(st.*k.valid[n - 1])) {
            wb.host.message(kNoFileText, kMessageTitle, MsgIcon::Information);
            return true;
        }
    for (int n = 1; n <= 2; ++n)
        if (checkOf(f, n)) st.*k.on[n - 1] = true;
    redraw(wb, k);
    return false;
}

} // namespace

bool readTimeRef(ProgramState& st, int line, const std::string& path) {
    PnoFile f;
    const bool ok = readPno(*openFileSource(path.empty() ? fixedRefPath(st, line, "pno") : path),
                            f) == RefRead::Ok;
    bool& valid = line == 2 ? st.TimeRef2Valid : st.TimeRef1Valid;
    valid = ok;
    if (!ok) {
        (line == 2 ? st.TimeRef2On : st.TimeRef1On) = false;
        return false;
    }
    (line == 2 ? st.TimeRef2Samples : st.TimeRef1Samples) = int16_t(f.Samples);
    (line == 2 ? st.TimeRef2Scale : st.TimeRef1Scale) = f.FullScale;
    (line == 2 ? st.TimeRef2Span : st.TimeRef1Span) = f.Span;
    (line == 2 ? st.TimeRef2Data : st.TimeRef1Data) = std::move(f.Data);
    return true;
}

bool readPhaseRef(Workbench& wb, int line, const std::string& path) {
    ProgramState& st = wb.st;
    PnpFile f;
    const RefRead r =
        readPnp(*openFileSource(path.empty() ? fixedRefPath(st, line, "pnp") : path), f);
    bool& valid = line == 2 ? st.PhaseRef2Valid : st.PhaseRef1Valid;
    if (r != RefRead::Ok || !(f.MaxFreq > st.BinWidth && f.BinStep < st.MaxFreq)) {
        wb.host.message("Out of range!", kMessageTitle, MsgIcon::Critical);
        valid = false;
        (line == 2 ? st.PhaseRef2On : st.PhaseRef1On) = false;
        return false;
    }
    valid = true;
    (line == 2 ? st.PhaseRef2Samples : st.PhaseRef1Samples) = f.Bins;
    (line == 2 ? st.PhaseRef2MaxFreq : st.PhaseRef1MaxFreq) = f.MaxFreq;
    (line == 2 ? st.PhaseRef2Data : st.PhaseRef1Data) = std::move(f.Data);
    return true;
}

std::string timeRefBytes(const ProgramState& st) {
    PnoFile f;
    f.Samples = st.Sp_Samples;
    f.FullScale = st.FullScalePos;
    f.Span = st.ViewTimeSpan;
    f.Data.assign(size_t(std::max(st.Sp_Samples, 0)) + 1, 0.0f);
    std::copy_n(st.TraceBuf.begin(), std::min(f.Data.size(), st.TraceBuf.size()), f.Data.begin());
    return writePno(f);
}

std::string phaseRefBytes(ProgramState& st) {
    ensurePhases(st);
    PnpFile f;
    f.MaxFreq = st.MaxFreq;
    f.Bins = st.PhaseBins;
    f.BinStep = st.BinWidth;
    f.Data.assign(size_t(std::max(st.PhaseBins, 0)) + 1, 0.0f);
    std::copy_n(st.SpPhase.begin(), std::min(f.Data.size(), st.SpPhase.size()), f.Data.begin());
    return writePnp(f);
}

#define KV_REF_DIALOG(NS, KIND)                                                                    \
    namespace NS {                                                                                 \
    void Form_Load(Workbench& wb, TimeRefFields& f) {                                              \
        formLoad(wb, KIND, f);                                                                     \
    }                                                                                              \
    void cmdSet_Click(Workbench& wb, TimeRefFields& f) {                                           \
        setLine(wb, KIND, f);                                                                      \
    }                                                                                              \
    void cmdSave_Click(Workbench& wb, TimeRefFields& f) {                                          \
        saveLine(wb, KIND, f);                                                                     \
    }                                                                                              \
    void cmdLoad_Click(Workbench& wb, TimeRefFields& f) {                                          \
        loadLine(wb, KIND, f);                                                                     \
    }                                                                                              \
    void cmdDelete_Click(Workbench& wb, TimeRefFields& f) {                                        \
        deleteLine(wb, KIND, f);                                                                   \
    }                                                                                              \
    void colorChosen(Workbench& wb, TimeRefFields& f, const std::string& c) {                      \
        colorLine(wb, KIND, f, c);                                                                 \
    }                                                                                              \
    void optLine_Click(Workbench& wb, TimeRefFields& f, int16_t line) {                            \
        chooseLine(wb, KIND, f, line);                                                             \
    }                                                                                              \
    bool OKButton_Click(Workbench& wb, TimeRefFields& f) {                                         \
        return okButton(wb, KIND, f);                                                              \
    }                                                                                              \
    }

KV_REF_DIALOG(TimeRef, kTime)
KV_REF_DIALOG(PhasaRef, kPhase)
#undef KV_REF_DIALOG

} // namespace kv
