// The lines of the file-information window.
#include "options/file_info.h"

#include "platform/numeric.h"
#include "state/workbench.h"

namespace kv {

namespace {

std::string number(double v) {
    return shortestText(v);
}

} // namespace

std::vector<std::string> FileInfoLines(const ProgramState& st) {
    std::vector<std::string> l;
    if (st.TempPath.empty()) return l;
    // The sample rate is rendered once and shared by every builder.
    const std::string SampleRateText = number(st.SampleRate);
    const std::string rateLine = "Sample Rate(Hz) : " + SampleRateText;
    if (st.IsDzt) {
        l.push_back("Samples/scan : " + number(st.Sp_Samples));
        l.push_back("Bits per data word : " + number(st.BitsPerSample));
        l.push_back("Scans/second : " + number(st.ScansPerSecond));
        l.push_back("Range(ns) : " + shortestText(st.RangeNs));
        l.push_back(rateLine);
        l.push_back("Amount of scans : " + number(st.TraceCount));
    }
    if (st.IsWav) {
        l.push_back("Samples/trace : " + number(st.Sp_Samples));
        l.push_back("Bits per data word : " + number(st.BitsPerSample));
        l.push_back(rateLine);
        l.push_back("Amount of scans : " + number(st.TraceCount));
        if (st.Channels == 1) l.push_back("Mono File");
        if (st.Channels == 2) l.push_back("Stereo File");
    }
    if (st.IsSht) {
        l.push_back("Samples/trace : " + number(st.Sp_Samples));
        l.push_back("Volt/div :" + shortestText(st.TekVoltDiv));
        l.push_back("Amount of chanels : " + number(st.TekChannels));
        l.push_back(rateLine);
        l.push_back("Amount of scans : " + number(st.TraceCount));
    }
    if (st.IsDt1) {
        l.push_back("Points/trace : " + number(st.TraceLength));
        l.push_back(rateLine);
        l.push_back("Total Time Window (ns): " + formatPicture(st.TimeWindowNs, "##0.00"));
        l.push_back("Number of traces : " + number(st.TraceCount));
    }
    if (st.IsRd3) {
        l.push_back("Samples/trace : " + number(st.TraceLength));
        l.push_back(rateLine);
        l.push_back("Total Time Window (ns): " + formatPicture(st.TimeWindowNs, "##0.00"));
        l.push_back("Number of traces : " + number(st.TraceCount));
    }
    // SEG-Y and SEG-2 show the same three lines.
    for (bool on : {st.IsSgy, st.IsSg2}) {
        if (!on) continue;
        l.push_back("Number of samples in Data Block : " + number(st.TraceLength));
        l.push_back(rateLine);
        l.push_back("Number of traces : " + number(st.TraceCount));
    }
    if (st.IsCsv) {
        // A sweep lasts its samples over the rate.
        const double sweep = st.SampleRate > 0 ? st.TraceLength / st.SampleRate : 0.0;
        l.push_back("Samples/sweep : " + number(st.TraceLength));
        l.push_back(rateLine);
        l.push_back("Total Time Window (s): " + formatPicture(sweep, "##0.00"));
        l.push_back("Number of traces : " + number(st.TraceCount));
    }
    if (st.IsProject) {
        l.push_back("Samples/trace : " + number(st.Sp_Samples));
        l.push_back(rateLine);
        l.push_back("Amount of scans : " + number(st.TraceCount));
    }
    l.insert(l.end(), st.SourceInfoLines.begin(), st.SourceInfoLines.end());
    return l;
}

namespace frmFileInfo {

void Form_Load(Workbench& wb, FileInfoFields& f) {
    f.List = FileInfoLines(wb.st);
}

} // namespace frmFileInfo

} // namespace kv
