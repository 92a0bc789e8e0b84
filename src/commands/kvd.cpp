// The native project file (.kvd): the working traces with a small header, written by the
// Export command and read back by "Open Kelvorandine File". Reading one needs no reader of the
// recording's own format: the traces are copied as they are into temp.sp.
#include "commands/export.h"

#include "commands/lifecycle.h"
#include "commands/open.h"
#include "engine/engine.h"
#include "import/reader.h"
#include "platform/byte_source.h"
#include "platform/files.h"
#include "platform/trace_store.h"
#include "state/workbench.h"

#include <cstring>

namespace kv {

static void writeProject(Workbench& wb, const std::string& path, const std::string& target);

namespace {

// The header's text value: type tag 8 (text), its length, and the name in the 8-bit code page
// project files are written in ("®" is byte 0xAE there).
constexpr char kProjectName[] = "Kelvorandine\xAE";
constexpr int64_t kTracesPos = 60; // 1-based position of the first trace

template <typename T> void putAt(TraceFileWriter& f, int64_t pos1, T value) {
    f.writeBytes(pos1, &value, sizeof value);
}

} // namespace

void ProjectWrite(Workbench& wb, const std::string& target) {
    // Written beside the target and renamed over it: a kill or a full disk half-way leaves the
    // old file. The new one starts as a copy of the old, which keeps a longer old file's tail.
    ReplacingFile file(target, true);
    if (file.path().empty()) throw ReadError("cannot write " + target);
    try {
        writeProject(wb, file.path(), target);
    } catch (const WriteError& e) {
        throw ReadError(e.what());
    }
    if (!file.commit()) throw ReadError("cannot write " + target);
}

/// The project file written at `path`; `target` names it in the progress window.
static void writeProject(Workbench& wb, const std::string& path, const std::string& target) {
    ProgramState& st = wb.st;
    TraceFileWriter out;
    out.open(path, true);
    putAt<int16_t>(out, 1, 8);
    putAt<int16_t>(out, 3, 13);
    out.writeBytes(5, kProjectName, 13);
    putAt<int32_t>(out, 20, st.Sp_Samples);
    putAt<int32_t>(out, 30, st.TraceCount);
    putAt<int16_t>(out, 40, st.BitsPerSample);
    putAt<double>(out, 42, st.SampleRate);
    putAt<float>(out, 50, st.FullScalePos);

    auto progress = wb.host.progress(target, st.TraceCount);
    // One float more than a trace is read and written; the next trace overwrites it, and the
    // last leaves one spare float at the end of the file. What is exported is always temp.sp,
    // also for a stereo WAV, whose traces are in temp_l.sp.
    // Traces lie end to end, so each is written without its extra float and the last one's
    // is added at the end: the same bytes, written straight on.
    const int64_t n = std::max<int32_t>(st.Sp_Samples, 0);
    std::vector<float> trace(size_t(n) + 1);
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        readTrace(st.TempPath, 1 + n * 4 * k, trace);
        out.write(kTracesPos + n * 4 * k, trace.data(), size_t(n));
        if (progress) progress->setValue(k);
    }
    if (st.TraceCount > 0) out.write(kTracesPos + n * 4 * st.TraceCount, &trace[size_t(n)], 1);
    out.length(); // the last bytes reach the file, or the write fails here
    out.close();
}

void openProjectFile(Workbench& wb, const std::string& path, const std::string& title) {
    ProgramState& st = wb.st;
    CommandState& cmd = wb.cmd;
    setWorkingPaths(st);
    st.SourceDisplayPath = path;
    st.FileTitle = title;
    st.ActiveTracePath = st.TempPath;

    // Through the workbench's opener, as the readers get their bytes.
    const std::unique_ptr<ByteSource> source = wb.openSource(path);
    const ByteSource& src = *source;
    // The text at the head of the file is not looked at.
    st.Sp_Samples = src.i32le(19);
    st.TraceCount = src.i32le(29);
    st.BitsPerSample = src.i16le(39);
    st.SampleRate = src.f64le(41);
    st.FullScalePos = src.f32le(49);
    // The views keep several arrays of a trace's length: an empty trace cannot be shown, and
    // one of more than 16 M samples would not fit in memory, which ends the open here.
    if (st.Sp_Samples < 1 || st.Sp_Samples > kLargestArray) throw ReadError("Out of memory");
    st.TraceLength = st.Sp_Samples;
    st.SourceLength = int64_t(st.TraceCount) * st.Sp_Samples * 4;
    // Up to 2 GB a short file reads as zeros past its end, as it always has; a header that
    // claims more must be backed by the file, or a damaged one would make gigabytes of zeros.
    if (st.SourceLength < INT32_MIN ||
        (st.SourceLength > INT32_MAX && src.size() < uint64_t(kTracesPos - 1 + st.SourceLength)))
        throw ReadError("Overflow");
    // WorkingFileLength, FullScaleNeg, Channels and StereoFlag keep the values of the last
    // import: the project file does not hold them.

    auto progress = wb.host.progress("Read kvd file", st.TraceCount);
    // The old temp.sp is overwritten in place, not deleted first. Each trace is copied with one
    // byte too many, which the next trace overwrites; the last leaves temp.sp one byte longer
    // than its traces. Traces lie end to end in both files, so each is written without its
    // extra byte and the last one's is added at the end: the same bytes, written straight on.
    // The copy goes in pieces so that a header claiming an enormous trace cannot ask for that
    // much memory. This loop neither yields nor offers Cancel.
    TraceFileWriter out;
    out.open(st.TempPath, true);
    const int64_t traceBytes = int64_t(st.Sp_Samples) * 4;
    std::vector<uint8_t> piece(size_t(std::min<int64_t>(traceBytes + 1, 1 << 20)));
    auto copy = [&](int64_t from, int64_t to, int64_t n) {
        for (int64_t done = 0; done < n; done += int64_t(piece.size())) {
            const size_t m = size_t(std::min<int64_t>(int64_t(piece.size()), n - done));
            src.read(uint64_t(from - 1 + done), piece.data(), m);
            out.writeBytes(to + done, piece.data(), m);
        }
    };
    for (int32_t k = 0; k < st.TraceCount; ++k) {
        copy(kTracesPos + traceBytes * k, 1 + traceBytes * k, traceBytes);
        if (progress) progress->setValue(k);
    }
    if (st.TraceCount > 0) {
        const int64_t end = traceBytes * st.TraceCount;
        copy(kTracesPos + end, 1 + end, 1);
    }
    out.close();
    progress.reset();

    announceDataSet(wb);
    cmd.button(2).visible = true;
    if (st.ModeFFT == 3) resetPeakHold(st);
    showDataSet(wb);
    // Unlike an Import, the window buttons show whether or not the Spectrum view started.
    cmd.showButtons(2, CommandState::kButtons, true);
    st.ScaleBits = st.FullScalePos;
    cmd.touch();
}

void mnuOimp_Click(Workbench& wb) {
    closeBeforeOpen(wb, true);
    openFromDialog(wb, kProjectFilter, "Open Kelvorandine File", [&](const FileChoice& choice) {
        openProjectFile(wb, choice.path, choice.title);
    });
}

} // namespace kv
