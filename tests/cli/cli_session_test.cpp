// The command-line tool's own code: a --trace position is placed by the workbench's rule.
#include "cli/commands.h"

#include "commands/lifecycle.h"
#include "engine/spectrum_bench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

using namespace kv;

TEST(CliTrace, PlacesPast2GBAreExactAsInTheWorkbench) {
    ProgramState st;
    st.Sp_Samples = 65536;
    st.TraceCount = 30000; // 30000 traces of 256 KiB
    BigFile(st);
    cli::moveTo(st, 20000);
    EXPECT_EQ(st.TracePos, 20000);
    EXPECT_EQ(st.CurrentTracePos, 1 + int64_t(20000) * 65536 * 4)
        << "not wrapped round to a negative position";
    cli::moveTo(st, 10);
    EXPECT_EQ(st.CurrentTracePos, 1 + 10 * 65536 * 4);
    EXPECT_THROW(cli::moveTo(st, 30000), cli::UsageError);
    EXPECT_THROW(cli::moveTo(st, -1), cli::UsageError);
}

namespace {

/// A survey over `traces` traces of 256 samples: a tone whose level and pitch wander, with the
/// traces in `silent` all zeros. A silent trace leaves the peak of the trace before standing and
/// its read-outs keep theirs, so what one trace leaves to the next shows in the rows.
std::string survey(int traces, const std::vector<int>& silent, int threads) {
    const int32_t n = 256;
    test::SpectrumBench b(n, traces, [&](int64_t t) {
        const int64_t k = t / n;
        for (int s : silent)
            if (s == k) return 0.0;
        return (300 + 7 * double(k % 13)) * std::sin(0.05 * double(t) * (1 + double(k % 5) / 10)) +
               3 * std::sin(1.3 * double(t));
    });
    ProgramState& st = b.st;
    BigFile(st);
    st.ShowSNR = st.ShowTHD = st.ShowSINAD = st.ShowSFDR = st.ShowENOB = st.ShowTHDN = true;
    st.PlotColumns = 100;
    std::string out;
    cli::surveyMetrics(st, threads, [&](const std::string& row) { out += row; });
    return out;
}

} // namespace

TEST(CliSurvey, TwoThreadsGiveTheRowsOfOne) {
    // Silence nowhere; at the end of the first half, so that the second half started from other
    // figures than the first left; and at the start of the second half too, so that the first
    // thread must redo several of its traces before they agree.
    for (const std::vector<int>& silent :
         {std::vector<int>{}, std::vector<int>{147, 148, 149}, std::vector<int>{149, 150, 151}}) {
        const std::string one = survey(300, silent, 1);
        EXPECT_EQ(std::count(one.begin(), one.end(), '\n'), 300);
        EXPECT_EQ(survey(300, silent, 2), one);
    }
}
