// The engine's many-bins-a-step paths against the running searches they stand for, on data with
// ties, signed zeros and values that are not numbers; and traces read a block at a time against
// traces read one by one.
#include "engine/batch_math.h"
#include "engine/engine.h"
#include "engine/trace_blocks.h"
#include "platform/trace_store.h"
#include "state/program_state.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>

using namespace kv;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Levels from a small set, so that ties are common, with a few zeros of both signs and NaNs.
std::vector<float> levels(size_t n, uint32_t seed, bool withNaN) {
    std::mt19937 g(seed);
    std::vector<float> v(n);
    for (float& x : v) {
        const uint32_t r = g() % 40;
        x = r == 0 ? 0.0f : r == 1 ? -0.0f : (r == 2 && withNaN) ? kNaN : -float(g() % 7) * 3.0f;
    }
    return v;
}

/// The fold as a running search: v <= x takes, a column that took nothing keeps the bin before.
void referenceFold(const ProgramState& st, std::vector<float>& val, std::vector<float>& logX,
                   std::vector<float>& phase) {
    const int32_t b = st.BinsPerColumn, bins = st.Fft_Samples / 2;
    int32_t bin = 0;
    for (int32_t i = 0; i <= bins - b; i += b) {
        float v = st.SpDisp[size_t(i)];
        for (int32_t k = 0; k < b; ++k)
            if (v <= st.SpDisp[size_t(i + k)]) {
                v = st.SpDisp[size_t(i + k)];
                bin = i + k;
            }
        val.push_back(v);
        logX.push_back(bin == 0 ? float(Log10(0.0, st.FullScalePos)) : float(std::log10(bin)));
        phase.push_back(st.SpPhase[size_t(bin)]);
    }
}

} // namespace

TEST(VectorPaths, ColumnFoldsMatchTheRunningSearchForEveryWidth) {
    const int32_t bins = 1000;
    // Two bins a column, one, a few, and many; with and without NaNs at column starts.
    for (int32_t columns : {400, 1001, 150, 40, 15})
        for (bool withNaN : {false, true}) {
            ProgramState st;
            st.FullScalePos = 100.0f;
            st.Fft_Samples = 2 * bins;
            st.PlotColumns = columns;
            st.ViewLaidOut = true;
            st.SpDisp = levels(size_t(bins) + 1, uint32_t(columns), withNaN);
            st.SpPhase.resize(size_t(2 * bins) + 1);
            for (size_t i = 0; i < st.SpPhase.size(); ++i)
                st.SpPhase[i] = float(i) * 0.5f;
            SamToWidth(st);
            std::vector<float> val, logX, phase;
            referenceFold(st, val, logX, phase);
            ASSERT_EQ(size_t(st.ColumnCount) + 1, val.size()) << columns;
            for (size_t c = 0; c < val.size(); ++c) {
                SCOPED_TRACE(testing::Message() << "columns " << columns << " column " << c);
                EXPECT_EQ(std::memcmp(&st.ColVal[c], &val[c], 4), 0)
                    << st.ColVal[c] << " " << val[c];
                EXPECT_FLOAT_EQ(st.ColLogX[c], logX[c]);
                EXPECT_EQ(st.ColPhase[c], phase[c]);
            }
        }
}

TEST(VectorPaths, PeakAndFloorAreWhereARunningSearchEnds) {
    for (uint32_t seed = 1; seed <= 20; ++seed)
        for (bool linear : {false, true}) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << (linear ? " linear" : " dB"));
            ProgramState st;
            st.FullScalePos = 10.0f;
            st.Fft_Samples = 2 * 301; // an odd count of bins leaves a tail after the vector steps
            st.Sp_Bins = 301;
            st.YLinear = linear;
            st.PlotColumns = 100;
            st.SpPhase.assign(size_t(st.Fft_Samples) + 1, 0.0f);
            std::vector<float> amp = levels(301, seed, seed % 2 == 0);
            for (float& a : amp)
                a = std::fabs(a) * 0.01f; // amplitudes: 0, ties, NaN
            st.SpAmp = amp;
            st.PeakBin = 7;
            st.FloorBin = 9;
            CreatedBArray(st);
            // The running search over the same values.
            float hi = -st.FullScalePos, lo = st.FullScalePos;
            int32_t peak = 7, floor = 9;
            for (int32_t i = 0; i < 301; ++i) {
                const float a = amp[size_t(i)];
                if (linear ? hi <= a : (hi < a && i >= 3 && st.SpDisp[size_t(i)] > -10.0f)) {
                    peak = i;
                    hi = a;
                }
                if (lo > a) {
                    floor = i;
                    lo = a;
                }
            }
            EXPECT_EQ(st.PeakBin, peak);
            EXPECT_EQ(st.FloorBin, floor);
        }
}

TEST(VectorPaths, TheFirstOfTwoEqualPeaksWinsWhereverTheyFall) {
    // The search runs on two sets of lanes: every pair of places, in one set or across both,
    // and a peak whose level does not clear the limit, which must not count.
    for (int32_t n : {40, 64})
        for (int32_t p = 0; p < n; ++p)
            for (int32_t q = p + 1; q < n; ++q) {
                const size_t size = size_t(n);
                std::vector<float> a(size), d(size, 0.0f);
                for (int32_t i = 0; i < n; ++i)
                    a[size_t(i)] = float(i % 5);
                a[size_t(p)] = a[size_t(q)] = 9.0f;
                ASSERT_EQ(batch::firstMaxAbove(a.data(), d.data(), -1.0f, n), p) << p << " " << q;
                d[size_t(p)] = -2.0f;
                ASSERT_EQ(batch::firstMaxAbove(a.data(), d.data(), -1.0f, n), q) << p << " " << q;
            }
}

TEST(VectorPaths, AmplitudesFromThePackedTransformAreTheSpreadOnesAndTheirSearches) {
    // Ties within and across blocks, signed zeros, NaNs, infinities and squares out of the single
    // range (which send every bin through the double formula and the searches in full), odd
    // gains, and lengths around the block size.
    const float scale = 1.0f / 4096.0f;
    for (int32_t bins : {0, 2, 3, 4, 9, 1023, 1024, 1025, 3000})
        for (uint32_t seed = 1; seed <= 6; ++seed)
            for (float gain : {0.5f, 1.0f, 1e-30f}) {
                SCOPED_TRACE(testing::Message() << bins << " " << seed << " " << gain);
                std::mt19937 g(seed);
                std::vector<float> packed(2 * size_t(bins) + 2);
                // Seeds 2 and 5 have no part of 0, so that no square of 0 sends a block the
                // long way: their blocks are judged by their extreme squares alone.
                for (float& x : packed)
                    x = seed % 3 == 2 ? float(int(g() % 8) - 4 + (g() % 2 ? 0.5f : 1.5f)) * 1000.0f
                                      : float(int(g() % 9) - 4) * 1000.0f;
                if (seed % 3 == 0 && bins > 5) {
                    const float odd[] = {kNaN, -0.0f, std::numeric_limits<float>::infinity(), 3e30f,
                                         1e-30f};
                    for (float v : odd)
                        packed[g() % packed.size()] = v;
                }
                if (seed % 3 == 1 && bins > 2) // the peak in the last bin too: two blocks tie
                    packed[2 * size_t(bins) - 2] = 4000.0f, packed[2 * size_t(bins) - 1] = 4000.0f;
                std::vector<float> re(size_t(bins) + 1), im(re.size()), want(re.size()),
                    got(re.size());
                for (int32_t k = 0; k < bins; ++k) {
                    re[size_t(k)] = packed[2 * size_t(k)] * scale;
                    im[size_t(k)] = packed[2 * size_t(k) + 1] * scale;
                }
                batch::amplitudes(re.data(), im.data(), want.data(), bins, gain);
                const batch::AmplitudeExtremes x =
                    batch::packedAmplitudes(packed.data(), got.data(), bins, 3, scale, gain);
                for (int32_t k = 0; k < bins; ++k)
                    ASSERT_EQ(std::bit_cast<uint32_t>(got[size_t(k)]),
                              std::bit_cast<uint32_t>(want[size_t(k)]))
                        << k;
                const int32_t m =
                    bins > 3
                        ? batch::firstMaxAbove(want.data() + 3, want.data() + 3,
                                               -std::numeric_limits<float>::infinity(), bins - 3)
                        : -1;
                EXPECT_EQ(x.firstMax, m >= 0 ? m + 3 : -1);
                EXPECT_EQ(x.firstMin, batch::firstMinAt(want.data(), bins));
            }
}

TEST(VectorPaths, TracesReadABlockAtATimeAreTheTracesReadOneByOne) {
    test::TempHome home{false};
    const std::string path = home.file("temp.sp");
    std::vector<float> all(100000);
    for (size_t i = 0; i < all.size(); ++i)
        all[i] = float(i);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(all.data()), std::streamsize(all.size() * 4));
    const size_t n = 1025;
    std::vector<float> direct(n), blocked(n);
    // Forwards, backwards, across the ends of blocks and past the end of the file (zeros),
    // from a block of 16 KiB.
    std::vector<int64_t> positions;
    for (int64_t k = 0; k < 100; ++k)
        positions.push_back(1 + k * 4096);
    for (int64_t k = 99; k >= 0; --k)
        positions.push_back(1 + k * 4000 + 2);
    TraceBlockScope blocks(16384);
    TraceBlockScope inner; // nested: the outer block stands
    for (int64_t pos : positions) {
        readTrace(path, pos, direct.data(), n);
        readWorkingTrace(path, pos, blocked.data(), n);
        // Bytes, not floats: a position between floats reads bit patterns that are not numbers.
        ASSERT_EQ(std::memcmp(direct.data(), blocked.data(), n * 4), 0) << "position " << pos;
    }
    // A long trace is read straight from the file.
    std::vector<float> longDirect(20000), longBlocked(20000);
    readTrace(path, 5, longDirect.data(), longDirect.size());
    readWorkingTrace(path, 5, longBlocked.data(), longBlocked.size());
    EXPECT_EQ(longDirect, longBlocked);
    EXPECT_ANY_THROW(readWorkingTrace("", 1, blocked.data(), n));
}

TEST(VectorPaths, ABlockIsReadAgainOnceTheWorkingFileChanged) {
    // A playback loop keeps its block across yields, in which the working file may be written
    // anew (a filter, another file opened) or deleted: the next trace must be the file's.
    test::TempHome home{false};
    const std::string path = home.file("temp.sp");
    auto fill = [&](float value) {
        TraceFileWriter w;
        w.open(path);
        w.write(1, std::vector<float>(4096, value));
    };
    std::vector<float> got(64);
    fill(1.0f);
    TraceBlockScope blocks;
    readWorkingTrace(path, 1, got.data(), got.size());
    EXPECT_EQ(got[0], 1.0f);
    fill(2.0f);
    readWorkingTrace(path, 257, got.data(), got.size());
    EXPECT_EQ(got[0], 2.0f) << "a rewritten file";
    {
        TraceFileWriter w;
        w.open(path, true);
        w.write(257, std::vector<float>(64, 3.0f));
    }
    readWorkingTrace(path, 257, got.data(), got.size());
    EXPECT_EQ(got[63], 3.0f) << "a trace written over in place";
    KillWorkingFile(path);
    readWorkingTrace(path, 257, got.data(), got.size());
    EXPECT_EQ(got[0], 0.0f) << "a deleted file reads as zeros";
}

TEST(VectorPaths, NeighbourhoodSumsAddInTheRunningOrderAndTheSkipFindsTheLastBinAbove) {
    // Magnitudes far apart, so that any other order of the additions rounds differently.
    std::mt19937 g(3);
    std::vector<float> a(200);
    for (float& x : a)
        x = float(g() % 1000) * (g() % 3 == 0 ? 1e7f : g() % 2 ? 1e-3f : 1.0f);
    for (int32_t h : {10, 16, 20})
        for (int32_t at = h; at + 7 + h < int32_t(a.size()); at += 5) {
            float sums[8];
            batch::neighbourhoodSums8(a.data() + at, h, sums);
            for (int32_t k = 0; k < 8; ++k) {
                float want = 0.0f;
                for (int32_t j = at + k - h; j <= at + k + h; ++j)
                    want += a[size_t(j)];
                ASSERT_EQ(sums[k], want) << "h " << h << " bin " << at + k;
            }
        }

    std::vector<float> v = levels(100, 9, true);
    for (float limit : {-21.0f, -3.0f, 0.0f, -0.0f, 1.0f})
        for (int32_t n : {0, 1, 7, 8, 9, 63, 100}) {
            int32_t want = -1;
            for (int32_t i = 0; i < n; ++i)
                if (v[size_t(i)] > limit) want = i;
            EXPECT_EQ(batch::lastAbove(v.data(), n, limit), want) << limit << " " << n;
        }
}

namespace {

/// Amplitudes that put the shortcut of foldDecibelColumns to the test, column by column: equal
/// runs, neighbours a few units in the last place apart, values spread across the range of the
/// candidate margin, across the polynomial's split at sqrt(2) and its binade edges, slow leakage
/// slopes; and, for even seeds only (they send the whole fold the ordinary way), columns holding
/// zeros, NaNs, negatives, subnormals and infinities.
std::vector<float> awkwardAmplitudes(int32_t count, int32_t b, uint32_t seed) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::vector<float> a(size_t(count) * size_t(b));
    for (int32_t c = 0; c < count; ++c) {
        float* col = a.data() + size_t(c) * size_t(b);
        const int e = int(g() % 200) - 100;
        const float split = std::ldexp(g() % 2 ? 1.41421356f : 1.0f, e);
        const float top = split * (g() % 3 == 0 ? 1.0f : 1.0f + unit(g) * 1e-3f);
        int32_t kind = (c + int32_t(seed)) % 7;
        if (kind == 4 && seed % 2) kind = 0;
        for (int32_t i = 0; i < b; ++i) {
            switch (kind) {
            case 0: // ties and neighbours in the last place
                col[i] = std::nextafter(top, g() % 2 ? 0.0f : 1e30f);
                if (g() % 3 == 0) col[i] = top;
                break;
            case 1: // spread over the margin: a part in 1e7 to a part in 1e3 under the top
                col[i] = top * (1.0f - std::pow(10.0f, -7.0f + 4.0f * unit(g)));
                if (i == int32_t(g() % uint32_t(b))) col[i] = top;
                break;
            case 2: // a slow slope, as leakage far from a line
                col[i] = top * (1.0f - 3e-6f * float(i));
                break;
            case 3: // noise over many decades
                col[i] = top * std::pow(10.0f, -6.0f * unit(g));
                break;
            case 4: // a few awkward values among ordinary ones
            {
                const uint32_t r = g() % 24;
                const float odd[] = {
                    0.0f, -0.0f, kNaN, -top, 1e-42f, std::numeric_limits<float>::infinity(), 3e38f};
                col[i] = r < 7 ? odd[r] : top * unit(g);
                break;
            }
            case 5: // one bin at each binade edge of the quotient
                col[i] = std::ldexp(g() % 2 ? 1.0f : 0.99999994f, e + int(g() % 3));
                break;
            default: // the top early and a hair under it in the last bin, the rest far under
                col[i] = i == 3 ? top : i == b - 1 ? std::nextafter(top, 0.0f) : top * 0.5f;
            }
        }
    }
    return a;
}

} // namespace

TEST(VectorPaths, DecibelColumnsFoldedFromAmplitudesAreTheFoldOfEveryBinsDecibels) {
    // The shortcut rests on this bound: the polynomial within 2^-21 of the value it stands for.
    std::mt19937 g(7);
    std::vector<float> r(1 << 16), d(r.size());
    for (float& x : r)
        x = std::bit_cast<float>(uint32_t(0x00800000u + g() % (0x7f800000u - 0x00800000u)));
    batch::decibels(r.data(), d.data(), int32_t(r.size()), 1.0f);
    for (size_t i = 0; i < r.size(); ++i) {
        const double want = 20.0 * std::log10(double(r[i]));
        ASSERT_LE(std::fabs(double(d[i]) - want), std::fabs(want) * 0x1p-21 + 1e-12) << r[i];
    }

    for (float fs : {1.0f, 32767.0f, 3e-30f, 2e30f, 1e-40f, -1.0f, 0.0f,
                     std::numeric_limits<float>::infinity(), kNaN})
        for (int32_t b : {16, 17, 23, 66, 129})
            for (uint32_t seed = 1; seed <= 6; ++seed) {
                SCOPED_TRACE(testing::Message() << "fs " << fs << " b " << b << " seed " << seed);
                const int32_t count = 24;
                const std::vector<float> amp = awkwardAmplitudes(count, b, seed);
                const size_t columns = size_t(count);
                std::vector<float> disp(amp.size()), want(columns), got(columns);
                std::vector<int32_t> wantBin(columns), gotBin(columns);
                batch::decibels(amp.data(), disp.data(), int32_t(amp.size()), fs);
                batch::foldColumns(disp.data(), count, b, want.data(), wantBin.data());
                batch::foldDecibelColumns(amp.data(), count, b, fs, got.data(), gotBin.data());
                for (int32_t c = 0; c < count; ++c) {
                    EXPECT_EQ(gotBin[size_t(c)], wantBin[size_t(c)]) << "column " << c;
                    EXPECT_EQ(std::bit_cast<uint32_t>(got[size_t(c)]),
                              std::bit_cast<uint32_t>(want[size_t(c)]))
                        << "column " << c << ": " << got[size_t(c)] << " " << want[size_t(c)];
                }
            }
}
