// Pairs of text files: .dat with one sample per line and .hdr with the point count and the
// sample interval in seconds, read into one trace.
#include "import/reader.h"
#include "import/text_lines.h"

#include "platform/files.h"
#include "platform/message_title.h"
#include "platform/numeric.h"

namespace kv {

namespace {

/// FileTitle with ".dat" replaced by ".hdr" wherever it stands, case ignored.
std::string hdrTitle(const std::string& title) {
    std::string out;
    for (size_t i = 0; i < title.size();) {
        if (i + 4 <= title.size() && equalsNoCase(title.substr(i, 4), ".dat")) {
            out += ".hdr";
            i += 4;
        } else {
            out.push_back(title[i++]);
        }
    }
    return out;
}

/// The header pair's path: SourceDisplayPath with FileTitle replaced by the header's name.
std::string hdrPath(const ProgramState& st) {
    std::string path = st.SourceDisplayPath;
    const std::string title = st.FileTitle, hdr = hdrTitle(title);
    if (!title.empty())
        for (size_t at = path.find(title); at != std::string::npos;
             at = path.find(title, at + hdr.size()))
            path.replace(at, title.size(), hdr);
    return findCompanion(path);
}

} // namespace

void ReadDat(ImportContext& ctx) {
    ProgramState& st = ctx.st;
    st.SampleBits = 16;
    float datMax = -10.0f, datMin = 0.0f;

    // The header: line 1 the point count, line 2 the interval. A missing header, or one whose
    // interval is 0, ends the open here.
    std::string countText;
    const Failure headerRead = catchInputFailure([&] {
        auto hdr = ctx.open(hdrPath(st));
        LineReader lines(*hdr);
        std::vector<std::string> header;
        std::string line;
        while (header.size() < 2 && lines.next(line))
            header.push_back(line);
        header.resize(2);
        countText = header[0];
        st.SampleRate = checkedDiv(1.0, Val(header[1]));
    });
    if (headerRead != Failure::None) return reportFailedRead(ctx, headerRead, "Header Not Found!");

    const double n = Val(countText) / st.NewDS;
    fitToPointCount(st, n);
    // The last index copied: the header's count when padding, else the fitted trace.
    const int64_t sp = st.PadWithZero ? int64_t(checkedInt32(n - 1)) : st.Sp_Samples - 1;

    // Only the lines that are copied are read: at most one trace's worth (times NewDS).
    auto src = ctx.openSource();
    if (src->size() > uint64_t(INT32_MAX)) throw ReadError("Overflow");
    st.SourceLength = static_cast<int32_t>(src->size());
    std::vector<float> trace(checkedCount(std::max(st.Sp_Samples, 0)), 0.0f);
    if (sp >= int64_t(trace.size())) throw ReadError("Subscript out of range");
    const size_t want = sp < 0 ? 0 : size_t(sp + 1);
    LineReader lines(*src);
    std::string line;
    std::vector<double> values;
    if (st.NewDS <= 1) {
        while (values.size() < want && lines.next(line))
            values.push_back(Val(line));
    } else {
        // Thinned lines are written back as number text and read again.
        std::vector<double> wide;
        while (wide.size() < want * size_t(st.NewDS) && lines.next(line))
            wide.push_back(Val(line));
        values = thinPoints(st, wide);
        for (double& v : values)
            v = Val(shortestText(v));
    }
    values.resize(want, 0.0); // lines past the end of the file read as empty

    for (size_t i = 0; i < want; ++i) {
        const float v = float(values[i]);
        if (v > datMax) datMax = v;
        if (v < datMin) datMin = v;
        trace[i] = v;
    }
    writeSingleTrace(st, trace);
    setUnroundedFullScale(st, datMax, datMin, st.Reference);
}

} // namespace kv
