// A recording of 5 GB through the SEG-Y entry of all revisions: it imports with memory bounded
// by a trace, and its working file of more than 4 GB scrolls, plays and exports with every
// position exact. The source is made sparse with a seek (only three traces hold data), and the
// working and exported files stay sparse too, so the test takes seconds and little disk.
#include "commands/commands.h"
#include "commands/export.h"
#include "commands/transport.h"
#include "import/file_filters.h"
#include "standard_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <numbers>

using namespace kv;

namespace {

constexpr int64_t kTraces = 300770; // a multiple of 10: the scroll bar steps ten traces
constexpr int64_t kSamples = 4096;
constexpr int64_t kTraceBytes = 240 + 4 * kSamples;

/// A tone of `cycles` periods a trace, as the big-endian floats of a SEG-Y trace.
std::vector<uint8_t> toneTrace(int cycles, float level) {
    test::Bytes t;
    t.ensure(size_t(kTraceBytes));
    for (int64_t i = 0; i < kSamples; ++i) {
        const float v =
            level * float(std::sin(2 * std::numbers::pi * cycles * double(i) / kSamples));
        t.put(size_t(240 + 4 * i), std::bit_cast<uint32_t>(v), 4, true);
    }
    return t.b;
}

/// Peak resident memory of this process in kB since `resetPeak`, or -1 where the system does
/// not tell it.
long peakKb() {
    std::ifstream f("/proc/self/status");
    for (std::string line; std::getline(f, line);)
        if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}
long residentKb() {
    std::ifstream f("/proc/self/status");
    for (std::string line; std::getline(f, line);)
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    return -1;
}
bool resetPeak() {
    std::ofstream f("/proc/self/clear_refs");
    f << "5";
    return bool(f.flush());
}

std::vector<float> floatsAt(const std::string& path, int64_t offset, size_t n) {
    std::ifstream f(path, std::ios::binary);
    f.seekg(offset);
    std::vector<float> v(n);
    f.read(reinterpret_cast<char*>(v.data()), std::streamsize(n * 4));
    return v;
}

size_t loudestBin(const ProgramState& st) {
    size_t best = 0;
    for (size_t j = 1; j < size_t(st.Fft_Samples / 2); ++j)
        if (st.SpAmp[j] > st.SpAmp[best]) best = j;
    return best;
}

} // namespace

TEST(LargeRecordings, FiveGigabytesImportScrollPlayAndExportWithExactPositions) {
    test::Bench b;
    b.start();
    const std::string path = b.home.file("survey.segy");
    const int64_t lastShown = kTraces - 10; // the trace at the last scroll position
    {
        test::SegyLayout s;
        s.binarySamples = int(kSamples);
        const auto header = test::segyFile(s);
        std::ofstream f(path, std::ios::binary);
        f.write(reinterpret_cast<const char*>(header.data()), 3600);
        const auto first = toneTrace(16, 100.0f), shown = toneTrace(128, 2000.0f),
                   last = toneTrace(4, -7.0f);
        f.write(reinterpret_cast<const char*>(first.data()), std::streamsize(first.size()));
        f.seekp(3600 + lastShown * kTraceBytes);
        f.write(reinterpret_cast<const char*>(shown.data()), std::streamsize(shown.size()));
        f.seekp(3600 + (kTraces - 1) * kTraceBytes);
        f.write(reinterpret_cast<const char*>(last.data()), std::streamsize(last.size()));
    }
    const int64_t size = int64_t(std::filesystem::file_size(path));
    ASSERT_EQ(size, 3600 + kTraces * kTraceBytes);
    ASSERT_GT(size, int64_t(5000000000));

    const bool measured = resetPeak();
    const long before = residentKb();
    b.import(path, *chosenFilterIndex(b.st.Fil, path, "SEGY-STD"));
    const long peak = peakKb();
    ASSERT_FALSE(b.st.TempPath.empty()) << (b.host.messages.empty() ? "" : b.host.messages[0].text);
    EXPECT_EQ(b.st.SourceLength, size);
    EXPECT_EQ(b.st.TraceCount, kTraces);
    EXPECT_EQ(b.st.Sp_Samples, kSamples);
    EXPECT_EQ(b.st.WorkingFileLength, kTraces * kSamples * 4);
    EXPECT_GT(b.st.WorkingFileLength, int64_t(1) << 32);
    EXPECT_EQ(b.st.FullScalePos, 2000.0f);
    if (measured && before > 0 && peak > 0) {
        EXPECT_LT(peak - before, 64 * 1024) << "kB of memory beyond what the process held";
    }

    // Scrolling: ten traces a step, the last position past 4 GB.
    EXPECT_EQ(b.st.TraceStep, 10);
    EXPECT_EQ(b.st.LastTrace, kTraces / 10 - 1);
    EXPECT_EQ(b.st.ScrollStride, 10 * kSamples * 4);
    transportEnd(b.wb);
    EXPECT_EQ(b.st.TracePos, b.st.LastTrace);
    EXPECT_EQ(b.st.CurrentTracePos, 1 + lastShown * kSamples * 4);
    EXPECT_EQ(loudestBin(b.st), 128u) << "the spectrum is the one of the tone at that place";

    // Playing the last few positions forward ends there too.
    b.st.TracePos = int16_t(b.st.LastTrace - 3);
    transportFwd(b.wb);
    EXPECT_EQ(b.st.TracePos, b.st.LastTrace);
    EXPECT_EQ(b.st.CurrentTracePos, 1 + lastShown * kSamples * 4);
    transportFirst(b.wb);
    EXPECT_EQ(b.st.CurrentTracePos, 1);
    EXPECT_EQ(loudestBin(b.st), 16u);

    // Export: the project file holds every trace, the last ones past 4 GB.
    const std::string kvd = b.home.file("survey.kvd");
    ProjectWrite(b.wb, kvd);
    EXPECT_EQ(int64_t(std::filesystem::file_size(kvd)), 59 + kTraces * kSamples * 4 + 4);
    const auto back = floatsAt(kvd, 59 + (kTraces - 1) * kSamples * 4, size_t(kSamples));
    for (int64_t i = 0; i < kSamples; ++i)
        ASSERT_EQ(back[size_t(i)],
                  -7.0f * float(std::sin(2 * std::numbers::pi * 4 * double(i) / kSamples)))
            << i;
    EXPECT_EQ(floatsAt(kvd, 59 + lastShown * kSamples * 4, 1)[0], 0.0f);
    EXPECT_NE(floatsAt(kvd, 59 + lastShown * kSamples * 4 + 4, 1)[0], 0.0f);

    // The project file opens again, in a fresh workbench, and ends where the source did.
    test::Bench again;
    again.start();
    openProjectFile(again.wb, kvd, "survey.kvd");
    ASSERT_FALSE(again.st.TempPath.empty());
    EXPECT_EQ(again.st.TraceCount, kTraces);
    EXPECT_EQ(again.st.SourceLength, kTraces * kSamples * 4);
    transportEnd(again.wb);
    EXPECT_EQ(again.st.CurrentTracePos, 1 + lastShown * kSamples * 4);
    EXPECT_EQ(loudestBin(again.st), 128u);
}
