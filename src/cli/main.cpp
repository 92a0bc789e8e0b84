// kelvorandine-cli: the workbench's readers and engine from the command line, JSON on stdout.
#include "cli/commands.h"
#include "platform/message_title.h"
#include "platform/read_error.h"
#include "platform/trace_store.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <unistd.h>

namespace {

std::string exeDirOf(const char* argv0) {
    std::error_code ec;
    auto p = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) p = std::filesystem::absolute(argv0, ec);
    return p.parent_path().string();
}

void addCommon(CLI::App* sub, kv::cli::CommonOptions& o) {
    sub->add_option("FILE", o.file, "Recording to open")->required();
    sub->add_option("--home", o.home, "Home folder (SP.ini, working files)");
    sub->add_option("--filter", o.filter, kv::cli::filterHelp());
    // One value per --set, so that a FILE after it stays the FILE.
    sub->add_option("--set", o.sets, "Section.Key=Value overriding SP.ini for this run")
        ->allow_extra_args(false);
}

/// The conditioning options of the subcommands that show a spectrum or a trace.
void addConditioning(CLI::App* sub, kv::cli::CommonOptions& o) {
    sub->add_option("--fft-filter", o.fftFilter, "FFT filter corners HP:LP in Hz");
    sub->add_option("--whiten", o.whiten, "Whitening band LOW:HIGH in Hz (scans every trace)");
    sub->add_option("--span", o.span, "Span mode CENTRE:WIDTH in Hz");
    sub->add_option("--gain", o.gain, "Gain in dB on every trace");
}

#ifdef KV_CLI_DRAWING_TOOL
/// Hands the run to the drawing tool beside this one, with the same arguments. Pictures and
/// print-outs need Qt, and loading its libraries costs more than a survey of a small recording
/// takes, so the commands that draw nothing leave them out and only these load them.
int drawElsewhere(const std::string& exeDir, char** argv) {
    const std::string tool = exeDir + "/" KV_CLI_DRAWING_TOOL;
    ::execv(tool.c_str(), argv);
    std::cerr << "kelvorandine-cli: cannot start " << tool << ": " << std::strerror(errno) << "\n";
    return kv::cli::kExitNoData;
}
#endif

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Kelvorandine command-line tool"};
    app.require_subcommand(1);

    kv::cli::CommonOptions info, convert;
    std::string convertOut;
    auto* infoCmd = app.add_subcommand("info", "Open a recording and describe the data set");
    addCommon(infoCmd, info);
    auto* convertCmd = app.add_subcommand("convert", "Open a recording and write it out");
    addCommon(convertCmd, convert);
    convertCmd->add_option("-o,--output", convertOut, "Output file (.sp, .kvd or .dzt)")
        ->required();

#if defined(KV_CLI_RENDER) || defined(KV_CLI_DRAWING_TOOL)
    kv::cli::RenderOptions render;
    auto* renderCmd = app.add_subcommand(
        "render", "Draw a view as the workbench shows it, to PNG, BMP, JPEG or PDF");
    addCommon(renderCmd, render.common);
    addConditioning(renderCmd, render.common);
    renderCmd->add_option("--view", render.view, "spectrum, oscope, phase, waterfall or radargram")
        ->required();
    renderCmd->add_option("--size", render.size, "Picture size WxH (default 800x600)");
    renderCmd->add_option("--trace", render.trace, "Scroll position TracePos (default 0)");
    renderCmd
        ->add_option("-o,--output", render.output,
                     "Output: .png, .bmp or .jpg picture, or .pdf print-out")
        ->required();
    renderCmd->add_option("--ref1", render.ref1,
                          "Saved reference drawn as line 1 (.pns, .pno, .pnp)");
    renderCmd->add_option("--ref2", render.ref2, "Saved reference drawn as line 2");
    kv::cli::WaterfallOptions waterfall;
    auto* waterfallCmd = app.add_subcommand(
        "waterfall", "Waterfall rows of every trace from --from: CSV of the levels, or a picture");
    addCommon(waterfallCmd, waterfall.common);
    addConditioning(waterfallCmd, waterfall.common);
    waterfallCmd->add_option("--from", waterfall.from, "First scroll position (default 0)");
    waterfallCmd->add_option("--count", waterfall.count, "Positions to walk (default all)")
        ->check(CLI::PositiveNumber);
    waterfallCmd->add_option("--columns", waterfall.columns, "Plot columns (default 400)")
        ->check(CLI::PositiveNumber);
    waterfallCmd->add_flag("--time", waterfall.time, "The radargram: the trace's samples");
    waterfallCmd->add_flag("--indices", waterfall.indices, "Palette indices as the view paints");
    waterfallCmd->add_flag("--csv", waterfall.csv, "One CSV row per trace on stdout");
    waterfallCmd->add_option("-o,--output", waterfall.output,
                             "Picture (.png), one row per trace, the first on top");
#endif
    kv::cli::CommonOptions reference;
    int referenceTrace = 0;
    std::string referenceKind, referenceOut;
    auto* referenceCmd =
        app.add_subcommand("reference", "Write the reference file Save writes for one trace");
    addCommon(referenceCmd, reference);
    referenceCmd->add_option("--trace", referenceTrace, "Scroll position (TracePos), default 0");
    referenceCmd->add_option("--kind", referenceKind, "spectrum, time or phase");
    referenceCmd->add_option("-o,--output", referenceOut, "Output file (.pns, .pno or .pnp)")
        ->required();
    kv::cli::CommonOptions spectrum, metrics;
    int spectrumTrace = 0, spectrumColumns = 0, metricsTrace = 0;
    bool allTraces = false, csv = false;
    auto* spectrumCmd =
        app.add_subcommand("spectrum", "Spectrum of one trace with its peak figures");
    addCommon(spectrumCmd, spectrum);
    addConditioning(spectrumCmd, spectrum);
    spectrumCmd->add_option("--trace", spectrumTrace, "Scroll position (TracePos), default 0");
    spectrumCmd->add_option("--columns", spectrumColumns, "Fold into this many plot columns")
        ->check(CLI::PositiveNumber);
    auto* metricsCmd = app.add_subcommand("metrics", "SNR, THD, THD+N, SFDR, SINAD and ENOB");
    addCommon(metricsCmd, metrics);
    addConditioning(metricsCmd, metrics);
    auto* traceOpt =
        metricsCmd->add_option("--trace", metricsTrace, "Scroll position (TracePos), default 0");
    auto* allOpt =
        metricsCmd->add_flag("--all-traces", allTraces, "Every scroll position, one CSV row each");
    auto* csvOpt = metricsCmd->add_flag("--csv", csv, "CSV output (with --all-traces)");
    allOpt->excludes(traceOpt);
    allOpt->needs(csvOpt);
    csvOpt->needs(allOpt);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kv::cli::kExitUsage;
    }

    const std::string exeDir = exeDirOf(argv[0]);
#ifdef KV_CLI_DRAWING_TOOL
    if (*renderCmd || *waterfallCmd) return drawElsewhere(exeDir, argv);
#endif
    int code = kv::cli::kExitUsage;
    std::string why;
    try {
        // Output names are the user's, relative to where the tool was started; the session
        // moves the current folder to the home folder, so they are made whole first.
        kv::cli::resolveOutput(convertOut);
#ifdef KV_CLI_RENDER
        kv::cli::resolveOutput(render.output);
        kv::cli::resolveOutput(waterfall.output);
#endif
        // A file that cannot be read or written ends the run with no data; a fault in the
        // program is not caught and ends it abnormally.
        const kv::Failure how = kv::catchInputFailure(
            [&] {
                if (*infoCmd) code = kv::cli::runInfo(info, exeDir);
                if (*convertCmd) code = kv::cli::runConvert(convert, convertOut, exeDir);
#ifdef KV_CLI_RENDER
                if (*renderCmd) code = kv::cli::runRender(render, exeDir);
                if (*waterfallCmd) code = kv::cli::runWaterfall(waterfall, exeDir);
#endif
                if (*referenceCmd)
                    code = kv::cli::runReference(reference, referenceTrace, referenceKind,
                                                 referenceOut, exeDir);
                if (*spectrumCmd)
                    code = kv::cli::runSpectrum(spectrum, spectrumTrace, spectrumColumns, exeDir);
                if (*metricsCmd)
                    code = kv::cli::runMetrics(metrics, metricsTrace, allTraces, exeDir);
            },
            &why);
        if (how == kv::Failure::None) return code;
        if (how == kv::Failure::Memory) why = kv::kOutOfMemoryText;
    } catch (const kv::cli::UsageError& e) {
        std::cerr << "kelvorandine-cli: " << e.what() << "\n";
        return kv::cli::kExitUsage;
    } catch (const kv::WriteError& e) {
        why = e.what();
    }
    std::cerr << "kelvorandine-cli: " << why << "\n";
    return kv::cli::kExitNoData;
}
