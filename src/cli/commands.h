// The command-line tool's sessions: a workbench without windows that opens one recording the
// way the Import command does and reports what it found as JSON.
#pragma once

#include "commands/recording_view_host.h"
#include "platform/scripted_host.h"
#include "platform/work_folder.h"
#include "state/command_state.h"
#include "state/program_state.h"
#include "state/view_host.h"
#include "state/workbench.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kv::cli {

/// The options every subcommand that opens a FILE takes.
struct CommonOptions {
    std::string file;
    std::string home;              // --home; empty: KELVORANDINE_HOME, then the tool's folder
    std::string filter;            // --filter NAME; empty: the first entry matching the file
    std::vector<std::string> sets; // --set Section.Key=Value
    // Conditioning, each as its dialog's Apply with the figures in Hz; empty: not asked for.
    std::string fftFilter; // --fft-filter HP:LP
    std::string whiten;    // --whiten LOW:HIGH
    std::string span;      // --span CENTRE:WIDTH
    std::string gain;      // --gain DB
};

/// The tool's host: the scripted one, with a long scan's progress reported on stderr.
class CliHost : public ScriptedHost {
  public:
    std::unique_ptr<Progress> progress(const std::string& title, int max) override;
};

/// Exit codes.
inline constexpr int kExitOk = 0;
inline constexpr int kExitNoData = 1;
inline constexpr int kExitUsage = 2;

struct Session {
    /// The run's own working files, removed with it (declared first, so it goes last).
    ScratchFolder scratch;
    ProgramState st;
    CommandState cmd;
    CliHost host;
    RecordingViewHost views;
    Workbench wb{st, cmd, host, views};
};

/// Thrown for bad arguments found after parsing (an unknown filter name, a bad --set).
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Starts a session in the home folder and imports the file. Returns true when a data set is
/// loaded. `exeDir` is the tool's own folder, the default home.
bool openSession(Session& s, const CommonOptions& o, const std::string& exeDir);

/// openSession, then `j` = describe(s); when no data set was loaded `j` is printed and the
/// result is false, so the subcommand can end with kExitNoData.
bool openForWork(Session& s, const CommonOptions& o, const std::string& exeDir, nlohmann::json& j);

/// Switches on the conditioning the options ask for, in the order gain, FFT filter, whitening,
/// span, each through its dialog's Apply. A figure the dialog refuses (its message is on stderr
/// and in the messages) ends the run as a usage error.
void applyConditioning(Session& s, const CommonOptions& o);

/// The data-set facts under their own names, plus the messages shown and the views requested.
nlohmann::json describe(const Session& s);

/// Prints a JSON document on stdout.
void printJson(const nlohmann::json& j);

/// Moves the data set to scroll position `trace` (0 to LastTrace, else a UsageError), placing
/// CurrentTracePos by the workbench's own rule.
void moveTo(ProgramState& st, int trace);

/// Makes an output path given on the command line absolute against the current folder, and
/// checks that its folder exists (else a UsageError naming it). An empty path stays empty.
void resolveOutput(std::string& path);

/// The help text of --filter: the import dialog's entries by name.
std::string filterHelp();

int runInfo(const CommonOptions& o, const std::string& exeDir);
int runConvert(const CommonOptions& o, const std::string& out, const std::string& exeDir);

/// `spectrum`: the spectrum of scroll position `trace` with its peak figures, SpAmp for bins
/// 0..N/2-1 and SpPhase for elements 0..N/2; with `columns` above 0 also the fold into that many
/// plot columns (ColVal).
int runSpectrum(const CommonOptions& o, int trace, int columns, const std::string& exeDir);

/// The survey of `metrics --all-traces`: one CSV row a scroll position from 0 to LastTrace,
/// handed to `emit` in trace order. With `threads` 2 the second half is computed beside the first
/// on a copy of the state; the rows are exactly those of one thread, but `st` is then left on a
/// trace of the first half.
void surveyMetrics(ProgramState& st, int threads,
                   const std::function<void(const std::string&)>& emit);

/// `metrics`: the six read-outs of scroll position `trace` as JSON, or with `allTraces` one CSV
/// row per scroll position (a progress line on stderr while it runs long).
int runMetrics(const CommonOptions& o, int trace, bool allTraces, const std::string& exeDir);

/// `reference FILE [--trace K] [--kind spectrum|time|phase] -o OUT`: the reference file the
/// reference dialog's Save writes for scroll position `trace` (an O-scope trace as the view
/// shows it unzoomed). Without --kind the output's extension (.pns, .pno, .pnp) chooses.
int runReference(const CommonOptions& o, int trace, const std::string& kind, const std::string& out,
                 const std::string& exeDir);
/// The kind of reference a file name's extension stands for ("spectrum", "time", "phase"), or
/// "" for another extension.
std::string referenceKindOf(const std::string& path);
/// The unzoomed O-scope's seconds across the view (what a saved O-scope trace records).
void setUnzoomedTimeSpan(ProgramState& st);

/// `render FILE --view V [--size WxH] [--trace K] [--ref1 F] [--ref2 F] -o OUT.png`.
struct RenderOptions {
    CommonOptions common;
    std::string view;
    std::string size = "800x600";
    int trace = 0;
    std::string ref1, ref2; // saved references of the view's kind, drawn over it
    std::string output;
};
int runRender(const RenderOptions& r, const std::string& exeDir);

struct WaterfallOptions {
    CommonOptions common;
    int from = 0;
    int count = 0; // 0: to the last trace
    int columns = 0;
    bool time = false;
    bool indices = false;
    bool csv = false;
    std::string output;
};
int runWaterfall(const WaterfallOptions& w, const std::string& exeDir);

} // namespace kv::cli
