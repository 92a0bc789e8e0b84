// The command-line tool's subcommands over the same core as the workbench.
#include "cli/commands.h"

#include "commands/export.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "conditioning/filter_dialogs.h"
#include "conditioning/level_dialogs.h"
#include "conditioning/span_dialog.h"
#include "conditioning/white_dialog.h"
#include "engine/engine.h"
#include "engine/fft.h"
#include "engine/trace_blocks.h"
#include "import/file_filters.h"
#include "import/format_table.h"
#include "options/file_info.h"
#include "platform/files.h"
#include "platform/home_folder.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "references/spectrum_refs.h"
#include "references/time_phase_refs.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <thread>

namespace kv::cli {

namespace {

const char* iconName(MsgIcon i) {
    switch (i) {
    case MsgIcon::Critical:
        return "critical";
    case MsgIcon::Information:
        return "information";
    case MsgIcon::Exclamation:
        return "exclamation";
    }
    return "?";
}

std::string lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

void applySets(ProgramState& st, const std::vector<std::string>& sets) {
    for (const auto& s : sets) {
        auto dot = s.find('.');
        auto eq = s.find('=');
        if (dot == std::string::npos || eq == std::string::npos || dot == 0 || eq < dot + 2)
            throw UsageError("--set wants Section.Key=Value, got: " + s);
        st.SettingsOverrides[lower(s.substr(0, eq))] = s.substr(eq + 1);
    }
}

std::string resolveHome(const CommonOptions& o, const std::string& exeDir) {
    if (!o.home.empty()) return o.home;
    if (const char* env = std::getenv("KELVORANDINE_HOME"); env && *env) return env;
    return defaultHomeFolder(exeDir, folderWritable(exeDir), userDataFolder());
}

/// A spectrum figure as JSON: a number, or null where it is not finite.
nlohmann::json number(double x) {
    return std::isfinite(x) ? nlohmann::json(x) : nlohmann::json(nullptr);
}

template <typename T> nlohmann::json numbers(const std::vector<T>& v, size_t from, size_t to) {
    nlohmann::json a = nlohmann::json::array();
    for (size_t i = from; i < to && i < v.size(); ++i)
        a.push_back(number(double(v[i])));
    return a;
}

void metricsOn(ProgramState& st) {
    st.AnalysOnFFT = true;
    st.ShowSNR = st.ShowTHD = st.ShowSINAD = st.ShowSFDR = st.ShowENOB = st.ShowTHDN = true;
}

/// Text of a number for a CSV cell: the shortest text that reads back as the same value, for an
/// f32 item as a float.
template <typename T> void appendCell(std::string& line, T x) {
    char buf[40];
    const auto r = std::to_chars(buf, buf + sizeof buf, x);
    line.push_back(',');
    line.append(buf, r.ptr);
}

/// "A:B" as its two texts; a usage error without the colon.
std::pair<std::string, std::string> figurePair(const std::string& option, const std::string& v) {
    const auto colon = v.find(':');
    if (colon == std::string::npos) throw UsageError(option + " wants two figures A:B, got: " + v);
    return {v.substr(0, colon), v.substr(colon + 1)};
}

/// The dialog refused: its last message (already on stderr) names why.
[[noreturn]] void refused(const Session& s, const std::string& option) {
    const std::string why =
        s.host.messages.empty() ? "the figures give no band" : s.host.messages.back().text;
    throw UsageError(option + " refused: " + why);
}

class CliProgress : public Progress {
  public:
    CliProgress(std::string title, int max) : title_(std::move(title)), max_(max) {}
    void setValue(int value) override {
        const auto now = std::chrono::steady_clock::now();
        if (now < next_ && value != max_) return;
        next_ = now + std::chrono::seconds(1);
        std::cerr << title_ << ": trace " << value << " of " << max_ << "\n";
    }
    bool cancelled() const override { return false; }

  private:
    std::string title_;
    int max_;
    std::chrono::steady_clock::time_point next_{};
};

} // namespace

std::unique_ptr<Progress> CliHost::progress(const std::string& title, int max) {
    ScriptedHost::progress(title, max);
    return std::make_unique<CliProgress>(title, max);
}

void applyConditioning(Session& s, const CommonOptions& o) {
    Workbench& wb = s.wb;
    if (!o.gain.empty()) {
        GainFields f{o.gain};
        if (!dlgDoGain::Command1_Click(wb, f)) refused(s, "--gain");
    }
    if (!o.fftFilter.empty()) {
        const auto [hp, lp] = figurePair("--fft-filter", o.fftFilter);
        mnuBCF_Click(wb);
        BoxFilterFields f{hp, lp, 0, 0, false};
        if (!dlgBoxFilter::Command1_Click(wb, f)) refused(s, "--fft-filter");
    }
    if (!o.whiten.empty()) {
        const auto [low, high] = figurePair("--whiten", o.whiten);
        mnuWhite_Click(wb);
        WhiteFields f{low, high, 0, 0, false};
        if (!dlgWhite::Command1_Click(wb, f)) refused(s, "--whiten");
    }
    if (!o.span.empty()) {
        const auto [centre, width] = figurePair("--span", o.span);
        mnuSpan_Click(wb);
        SpanFields f;
        f.txtCenter = centre;
        f.txtSp = width;
        if (!ZenterFr::Command1_Click(wb, f)) refused(s, "--span");
    }
}

void moveTo(ProgramState& st, int trace) {
    if (trace < 0 || trace > st.LastTrace)
        throw UsageError("--trace must lie between 0 and " + std::to_string(st.LastTrace));
    st.TracePos = int16_t(trace);
    setCurrentTracePos(st);
}

void resolveOutput(std::string& path) {
    if (path.empty()) return;
    std::error_code ec;
    const std::filesystem::path whole = std::filesystem::absolute(path, ec);
    if (ec) return;
    const std::filesystem::path folder = whole.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ec))
        throw UsageError("No such folder for the output: " + folder.string());
    path = whole.string();
}

std::string filterHelp() {
    return "Import dialog entry: " + formatTable().names();
}

void printJson(const nlohmann::json& j) {
    std::cout << j.dump(2) << "\n";
}

bool openForWork(Session& s, const CommonOptions& o, const std::string& exeDir, nlohmann::json& j) {
    const bool loaded = openSession(s, o, exeDir);
    j = describe(s);
    if (!loaded) printJson(j);
    return loaded;
}

static void useScratchFolder(Session& s) {
    // Settings come from the home; the working files go to a folder of this run's own, so that
    // runs side by side on one home never see each other's. Folders of runs that were killed
    // are cleared away first. A home that cannot be written gets it in the system's folder for
    // temporary files.
    std::error_code ec;
    for (const std::string& parent :
         {s.st.AppPath, std::filesystem::temp_directory_path(ec).string()}) {
        if (parent.empty()) continue;
        sweepScratchFolders(parent);
        if (s.scratch.make(parent)) break;
    }
    s.st.WorkPath = s.scratch.path();
    if (s.st.WorkPath.empty()) return;
    static const char* const names[] = {"temp.sp", "temp_l.sp", "temp_r.sp", "span.sp", "test.bmp"};
    removeOnSignals(s.st.WorkPath, names, int(std::size(names)));
}

bool openSession(Session& s, const CommonOptions& o, const std::string& exeDir) {
    std::error_code ec;
    // Resolve the file before the start sequence moves the current folder to the home folder.
    std::string path = std::filesystem::absolute(o.file, ec).string();
    if (ec) path = o.file;
    s.st.AppPath = std::filesystem::absolute(resolveHome(o, exeDir), ec).string();
    if (!std::filesystem::is_directory(s.st.AppPath, ec))
        throw UsageError("home folder not found: " + s.st.AppPath);
    applySets(s.st, o.sets);
    useScratchFolder(s);
    s.host.echo = [](const ShownMessage& m) { std::cerr << m.title << ": " << m.text << "\n"; };
    MDIForm_Load(s.wb);

    const std::optional<int> index = chosenFilterIndex(s.st.Fil, o.file, o.filter);
    if (!index) throw UsageError("unknown filter: " + o.filter);
    // A name that leads nowhere says so, under the name the user typed, rather than leaving it
    // to a reader to call the file corrupted.
    if (const std::string problem = sourceFileProblem(path, o.file); !problem.empty()) {
        s.host.message(problem, kMessageTitle, MsgIcon::Critical);
        return false;
    }
    s.host.queueFile(path, *index);
    // A project file is opened the way "Open Kelvorandine File" opens it.
    if (isProjectFile(path))
        mnuOimp_Click(s.wb);
    else
        mnuOpen_Click(s.wb);
    return !s.st.TempPath.empty();
}

nlohmann::json describe(const Session& s) {
    const ProgramState& st = s.st;
    nlohmann::json j;
    j["SourcePath"] = st.SourcePath;
    j["FileTitle"] = st.FileTitle;
    j["loaded"] = !st.TempPath.empty();
    if (const ImportEntry* row = formatTable().active(st)) j["format"] = row->extensions.front();
    j["Sp_Samples"] = st.Sp_Samples;
    j["Fft_Samples"] = st.Fft_Samples;
    j["TraceCount"] = st.TraceCount;
    j["TraceLength"] = st.TraceLength;
    j["SampleRate"] = st.SampleRate;
    j["BitsPerSample"] = st.BitsPerSample;
    j["BytesPerSample"] = st.BytesPerSample;
    j["Channels"] = st.Channels;
    j["StereoFlag"] = st.StereoFlag;
    j["FullScalePos"] = st.FullScalePos;
    j["FullScaleNeg"] = st.FullScaleNeg;
    j["SourceLength"] = st.SourceLength;
    j["WorkingFileLength"] = st.WorkingFileLength;
    j["DataStart"] = st.DataStart;
    j["ReadPos"] = st.ReadPos;
    j["NewDS"] = st.NewDS;
    j["LastTrace"] = st.LastTrace;
    j["TraceStep"] = st.TraceStep;
    j["ScrollStride"] = st.ScrollStride;
    j["ShowVertical"] = st.ShowVertical;
    j["YUnitName"] = st.YUnitName;
    j["ActiveTracePath"] = st.ActiveTracePath;
    j["IsProject"] = st.IsProject;
    j["ScansPerSecond"] = st.ScansPerSecond;
    j["RangeNs"] = st.RangeNs;
    j["TimeWindowNs"] = st.TimeWindowNs;
    j["SampleBits"] = st.SampleBits;
    j["FileInfo"] = FileInfoLines(st);
    j["caption"] = s.cmd.caption;
    nlohmann::json panels = nlohmann::json::array();
    for (int p = 1; p <= CommandState::kPanels; ++p)
        panels.push_back(s.cmd.panel(p));
    j["panels"] = panels;
    j["views"] = s.views.log;
    nlohmann::json msgs = nlohmann::json::array();
    for (const auto& m : s.host.messages)
        msgs.push_back({{"text", m.text}, {"title", m.title}, {"icon", iconName(m.icon)}});
    j["messages"] = msgs;
    return j;
}

int runInfo(const CommonOptions& o, const std::string& exeDir) {
    Session s;
    const bool loaded = openSession(s, o, exeDir);
    printJson(describe(s));
    return loaded ? kExitOk : kExitNoData;
}

int runConvert(const CommonOptions& o, const std::string& out, const std::string& exeDir) {
    const std::string ext = upperAscii(out.substr(
        out.find_last_of('.') == std::string::npos ? out.size() : out.find_last_of('.') + 1));
    if (ext != "SP" && ext != "KVD" && ext != "DZT")
        throw UsageError("convert writes .sp, .kvd and .dzt files: " + out);
    Session s;
    nlohmann::json j;
    if (!openForWork(s, o, exeDir, j)) return kExitNoData;
    std::error_code ec;
    if (ext == "SP") {
        ReplacingFile file(out);
        std::filesystem::copy_file(s.st.ActiveTracePath, file.path(),
                                   std::filesystem::copy_options::overwrite_existing, ec);
        if (!ec && !file.commit()) ec = std::make_error_code(std::errc::io_error);
    } else if (ext == "KVD") {
        // The Export command's writers, as the workbench runs them.
        if (catchInputFailure([&] { ProjectWrite(s.wb, out); }) != Failure::None)
            ec = std::make_error_code(std::errc::io_error);
    } else {
        // Passes over every failure, as in the workbench; the target is replaced only when the
        // whole file could be written.
        if (!DztWrite(s.wb, out)) ec = std::make_error_code(std::errc::io_error);
    }
    j["output"] = out;
    j["written"] = !ec;
    printJson(j);
    return ec ? kExitNoData : kExitOk;
}

int runSpectrum(const CommonOptions& o, int trace, int columns, const std::string& exeDir) {
    Session s;
    nlohmann::json j;
    if (!openForWork(s, o, exeDir, j)) return kExitNoData;
    applyConditioning(s, o);
    ProgramState& st = s.st;
    moveTo(st, trace);
    st.PlotColumns = columns;
    UpdateTopDb(st);
    FyllSpData(st);
    const size_t half = size_t(st.Fft_Samples / 2);
    j["TracePos"] = st.TracePos;
    j["CurrentTracePos"] = st.CurrentTracePos;
    j["Fft_Samples"] = st.Fft_Samples;
    j["FFT_Window"] = st.FFT_Window;
    j["ModeFFT"] = st.ModeFFT;
    j["BinWidth"] = number(st.BinWidth);
    j["MaxFreq"] = number(st.MaxFreq);
    j["WindowGain"] = number(st.WindowGain);
    j["PeakBin"] = st.PeakBin;
    j["PeakAmp"] = number(st.PeakAmp);
    j["PeakFreq"] = number(st.PeakFreq);
    j["PeakDb"] = number(st.PeakDb);
    j["FloorDbRel"] = number(st.FloorDbRel);
    j["TopDb"] = number(st.TopDb);
    j["SpAmp"] = numbers(st.SpAmp, 0, half);
    ensurePhases(st);
    j["SpPhase"] = numbers(st.SpPhase, 0, half + 1);
    j["FftFilterOn"] = st.FftFilterOn;
    j["WhiteningOn"] = st.WhiteningOn;
    j["GainFactor"] = number(st.GainOn ? st.GainFactor : 1.0);
    j["SpanActive"] = st.SpanActive;
    if (st.SpanActive) {
        j["SpanStart"] = st.SpanStart;
        j["SpanEnd"] = st.SpanEnd;
        j["SpanLowFreq"] = number(st.SpanLowFreq);
        j["SpanHighFreq"] = number(st.SpanHighFreq);
    }
    if (st.WhiteningOn) {
        j["WhiteLowBin"] = st.WhiteLowBin;
        j["WhiteHighBin"] = st.WhiteHighBin;
        j["WhiteRe"] = number(st.WhiteRe);
        j["WhiteIm"] = number(st.WhiteIm);
    }
    j["TraceBuf"] = numbers(st.TraceBuf, 0, size_t(std::max(st.Sp_Samples, 0)));
    if (columns > 0 && st.SpanActive) {
        j["PlotColumns"] = st.PlotColumns;
        j["SpanBins"] = st.SpanBins;
        j["SpanCol"] = numbers(st.SpanCol, 0, st.SpanCol.size());
    } else if (columns > 0) {
        j["PlotColumns"] = st.PlotColumns;
        j["BinsPerColumn"] = st.BinsPerColumn;
        j["ColumnCount"] = st.ColumnCount;
        j["ColVal"] = numbers(st.ColVal, 0, st.ColVal.size());
    }
    printJson(j);
    return kExitOk;
}

std::string referenceKindOf(const std::string& path) {
    const std::string ext = upperAscii(path.size() >= 4 ? path.substr(path.size() - 4) : "");
    if (ext == ".PNS") return "spectrum";
    if (ext == ".PNO") return "time";
    if (ext == ".PNP") return "phase";
    return "";
}

void setUnzoomedTimeSpan(ProgramState& st) {
    st.ViewTimeSpan = double(f32((1.0 / st.SampleRate) * double(st.Sp_Samples) / 10)) * 10;
}

int runReference(const CommonOptions& o, int trace, const std::string& kind, const std::string& out,
                 const std::string& exeDir) {
    const std::string k = kind.empty() ? referenceKindOf(out) : kind;
    if (k.empty() && kind.empty())
        throw UsageError("reference wants --kind or an output ending in .pns, .pno or .pnp");
    if (k != "spectrum" && k != "time" && k != "phase")
        throw UsageError("--kind is spectrum, time or phase; not: " + kind);
    Session s;
    nlohmann::json j;
    if (!openForWork(s, o, exeDir, j)) return kExitNoData;
    ProgramState& st = s.st;
    moveTo(st, trace);
    FyllSpData(st);
    std::string bytes;
    if (k == "spectrum") {
        bytes = spectrumRefBytes(st);
    } else if (k == "time") {
        setUnzoomedTimeSpan(st);
        bytes = timeRefBytes(st);
    } else {
        bytes = phaseRefBytes(st);
    }
    const bool written = writeFileAtomically(out, bytes);
    j = describe(s);
    j["TracePos"] = st.TracePos;
    j["kind"] = k;
    j["output"] = out;
    j["bytes"] = bytes.size();
    j["written"] = written;
    printJson(j);
    return written ? kExitOk : kExitNoData;
}

namespace {

/// What one trace of a survey leaves behind for the next: a silent trace keeps the peak and floor
/// bins it found, and a result whose arithmetic fails keeps the one before.
struct SurveyCarry {
    int32_t PeakBin, FloorBin;
    double SNR_dB, THD_val, THDN_val, SFDR_dB, SINAD_dB, ENOB_bits, SpurRatio;

    static SurveyCarry of(const ProgramState& st) {
        return {st.PeakBin, st.FloorBin, st.SNR_dB,    st.THD_val,  st.THDN_val,
                st.SFDR_dB, st.SINAD_dB, st.ENOB_bits, st.SpurRatio};
    }
    bool operator==(const SurveyCarry& o) const {
        // Bit for bit: the rows that follow must come out the same to the last digit.
        return PeakBin == o.PeakBin && FloorBin == o.FloorBin && same(SNR_dB, o.SNR_dB) &&
               same(THD_val, o.THD_val) && same(THDN_val, o.THDN_val) && same(SFDR_dB, o.SFDR_dB) &&
               same(SINAD_dB, o.SINAD_dB) && same(ENOB_bits, o.ENOB_bits) &&
               same(SpurRatio, o.SpurRatio);
    }
    static bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }
};

/// One scroll position of the survey: spectrum, read-outs, and the CSV row.
std::string surveyRow(ProgramState& st, int k) {
    moveTo(st, k);
    FyllSpData(st);
    CountAnalys(st);
    std::string out = std::to_string(k);
    appendCell(out, st.PeakFreq);
    appendCell(out, st.PeakDb);
    for (double v : {st.SNR_dB, st.THD_val, st.THDN_val, st.SFDR_dB, st.SINAD_dB, st.ENOB_bits})
        appendCell(out, v);
    out.push_back('\n');
    return out;
}

} // namespace

void surveyMetrics(ProgramState& st, int threads,
                   const std::function<void(const std::string&)>& emit) {
    const int last = st.LastTrace;
    using Clock = std::chrono::steady_clock;
    auto nextReport = Clock::now() + std::chrono::seconds(1);
    const auto progress = [&](int k) {
        if ((k & 255) == 0 && Clock::now() >= nextReport) {
            std::cerr << "metrics: trace " << k << " of " << last << "\n";
            nextReport = Clock::now() + std::chrono::seconds(1);
        }
    };
    // The traces are independent but for a few figures one trace leaves to the next (see
    // SurveyCarry). Peak-hold and auto-span carry far more, so they run on one thread.
    const bool split = threads >= 2 && last >= 64 && st.ModeFFT != 3 && !st.AutotuneOn;
    TraceBlockScope blocks;
    if (!split) {
        for (int k = 0; k <= last; ++k) {
            emit(surveyRow(st, k));
            progress(k);
        }
        return;
    }

    // The second half on a thread of its own, from a copy of the state as the survey starts;
    // it keeps its rows and what each trace left behind. The transform's plans are made here,
    // before it starts, as making them is not safe on two threads at once.
    if (st.Fft_Samples >= 1 && st.Fft_Samples <= fft::kMaxLength) fft::prepare(st.Fft_Samples);
    const int mid = (last + 1) / 2;
    const SurveyCarry start = SurveyCarry::of(st);
    std::vector<std::string> rows(size_t(last - mid + 1));
    std::vector<SurveyCarry> carries(rows.size(), start);
    std::exception_ptr failure;
    std::thread second([&, copy = st]() mutable {
        try {
            TraceBlockScope ownBlocks;
            for (int k = mid; k <= last; ++k) {
                rows[size_t(k - mid)] = surveyRow(copy, k);
                carries[size_t(k - mid)] = SurveyCarry::of(copy);
            }
        } catch (...) {
            failure = std::current_exception();
        }
    });
    try {
        for (int k = 0; k < mid; ++k) {
            emit(surveyRow(st, k));
            progress(k);
        }
    } catch (...) {
        second.join();
        throw;
    }
    second.join();
    if (failure) std::rethrow_exception(failure);

    // The second half started from the survey's first state. Where the first half ended in
    // another, its traces are done again here until they leave the same figures behind; from
    // there on the rows of the second half are the ones this thread would have made.
    int k = mid;
    if (!(SurveyCarry::of(st) == start)) {
        for (; k <= last; ++k) {
            emit(surveyRow(st, k));
            if (SurveyCarry::of(st) == carries[size_t(k - mid)]) {
                ++k;
                break;
            }
        }
    }
    for (; k <= last; ++k)
        emit(rows[size_t(k - mid)]);
}

int runMetrics(const CommonOptions& o, int trace, bool allTraces, const std::string& exeDir) {
    Session s;
    nlohmann::json j;
    if (!openForWork(s, o, exeDir, j)) return kExitNoData;
    applyConditioning(s, o);
    ProgramState& st = s.st;
    metricsOn(st);
    if (!allTraces) {
        moveTo(st, trace);
        FyllSpData(st);
        AnalysisCaptions an;
        NewValue(st, an);
        j["TracePos"] = st.TracePos;
        j["PeakBin"] = st.PeakBin;
        j["PeakFreq"] = number(st.PeakFreq);
        j["PeakDb"] = number(st.PeakDb);
        j["SampleBits"] = st.SampleBits;
        j["THDdB"] = st.THDdB;
        for (const auto& [key, v] : {std::pair<const char*, double>{"SNR_dB", st.SNR_dB},
                                     {"THD_val", st.THD_val},
                                     {"THDN_val", st.THDN_val},
                                     {"SFDR_dB", st.SFDR_dB},
                                     {"SINAD_dB", st.SINAD_dB},
                                     {"ENOB_bits", st.ENOB_bits},
                                     {"FundPower", st.FundPower},
                                     {"HarmPower", st.HarmPower},
                                     {"NoisePower", st.NoisePower}})
            j[key] = number(v);
        j["captions"] = an;
        printJson(j);
        return kExitOk;
    }

    // The survey: every scroll position in turn, one row each, as playback would visit them.
    const std::string head =
        "trace,PeakFreq,PeakDb,SNR_dB,THD_val,THDN_val,SFDR_dB,SINAD_dB,ENOB_bits\n";
    std::fwrite(head.data(), 1, head.size(), stdout);
    surveyMetrics(st, 2,
                  [](const std::string& row) { std::fwrite(row.data(), 1, row.size(), stdout); });
    std::fflush(stdout);
    return kExitOk;
}

} // namespace kv::cli
