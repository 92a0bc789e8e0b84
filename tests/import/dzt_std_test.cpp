// "Radar DZT, all variants": where the scans start, the three sample widths, the channel the
// options choose, and the real recordings the fixed-layout entry cannot read.
#include "import/variant_files.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kv;
using test::DztLayout;

namespace {

/// `n` scans of `samples` values, each scan starting with its bookkeeping words (k, 0).
std::vector<std::vector<double>> scans(int n, int samples, double base, double step) {
    std::vector<std::vector<double>> s;
    for (int k = 0; k < n; ++k) {
        std::vector<double> scan = {double(k), 0.0};
        for (int j = 2; j < samples; ++j)
            scan.push_back(base + step * (k * samples + j));
        s.push_back(scan);
    }
    return s;
}

std::vector<float> flat(const std::vector<std::vector<double>>& s) {
    std::vector<float> v;
    for (const auto& scan : s)
        for (double x : scan)
            v.push_back(float(x));
    return v;
}

} // namespace

TEST(DztStd, EachSampleWidthReadsCentredSamplesWithItsFullScale) {
    struct Case {
        uint16_t bits;
        double base, step;
        float fullPos, fullNeg;
    };
    for (const Case& c : {Case{8, -120, 3, 127, 128}, Case{16, -32000, 1001, 32767, 32768},
                          Case{32, -2000000, 70001, 2147483647.0f, 2147483648.0f}}) {
        SCOPED_TRACE(c.bits);
        test::StdBench b;
        DztLayout s;
        s.bits = c.bits;
        s.samples = 6;
        s.rangeNs = 12.0f;
        s.scans = {scans(3, 6, c.base, c.step)};
        ASSERT_TRUE(b.read(ReadDztStd, b.put(test::dztFile(s), "w.dzt"))) << b.message();
        EXPECT_EQ(b.st.Sp_Samples, 6) << "samples per scan, as the file has them";
        EXPECT_EQ(b.st.TraceCount, 3);
        EXPECT_EQ(b.st.BitsPerSample, c.bits);
        EXPECT_DOUBLE_EQ(b.st.SampleRate, 6 / 12e-9);
        EXPECT_EQ(b.st.FullScalePos, c.fullPos);
        EXPECT_EQ(b.st.FullScaleNeg, c.fullNeg);
        EXPECT_EQ(b.st.DataStart, 1025);
        EXPECT_EQ(b.working(), flat(s.scans[0])) << "bookkeeping words and samples as written";
        EXPECT_TRUE(b.infoHas("Antenna : 1600MHz"));
        EXPECT_TRUE(b.infoHas("bookkeeping words"));
    }
}

TEST(DztStd, TwoChannelsTakeTurnsAndTheOptionsChooseOne) {
    DztLayout s;
    s.samples = 4;
    s.scans = {scans(5, 4, 100, 1), scans(5, 4, -900, -2)};
    for (int channel : {1, 2}) {
        SCOPED_TRACE(channel);
        test::StdBench b;
        b.st.ImportChannel = int16_t(channel);
        ASSERT_TRUE(b.read(ReadDztStd, b.put(test::dztFile(s), "two.dzt"))) << b.message();
        EXPECT_EQ(b.st.Channels, 2);
        EXPECT_EQ(b.st.TraceCount, 5);
        EXPECT_EQ(b.st.DataStart, 2049) << "after the second channel's header block";
        EXPECT_EQ(b.working(), flat(s.scans[size_t(channel - 1)]));
        EXPECT_TRUE(b.infoHas("Channels : 2, channel " + std::to_string(channel) + " shown"));
    }
    test::StdBench b;
    b.st.ImportChannel = 3;
    EXPECT_FALSE(b.read(ReadDztStd, b.put(test::dztFile(s), "two.dzt")));
    EXPECT_EQ(b.message(), "Channel 3 is chosen in the options, but the file has only 2 channels.");
}

TEST(DztStd, TheDataFieldCountsBlocksBelow1024AndBytesFrom1024On) {
    for (auto [field, header] : {std::pair{uint16_t(3), 3072}, std::pair{uint16_t(1536), 1536}}) {
        SCOPED_TRACE(field);
        DztLayout s;
        s.dataField = field;
        s.headerBytes = uint64_t(header);
        s.scans = {scans(2, 4, 7, 1)};
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadDztStd, b.put(test::dztFile(s), "h.dzt"))) << b.message();
        EXPECT_EQ(b.st.DataStart, header + 1);
        EXPECT_EQ(b.working(), flat(s.scans[0]));
    }
}

TEST(DztStd, ThinningByTheDownSamplingSettingsShortensTheScan) {
    DztLayout s;
    s.samples = 8;
    s.scans = {{{0, 0, 2, 4, 6, 8, 10, 12}}};
    test::StdBench b;
    b.st.NewDS = 2;
    b.st.DownsampleMode = 0;
    ASSERT_TRUE(b.read(ReadDztStd, b.put(test::dztFile(s), "d.dzt"))) << b.message();
    EXPECT_EQ(b.st.Sp_Samples, 4);
    EXPECT_EQ(b.working(), (std::vector<float>{0, 3, 7, 11}));
}

TEST(DztStd, RealRecordingsGiveTheirScansAndSamples) {
    KV_REQUIRE_REAL(dir, "dzt");
    {
        // 16-bit unsigned words centred on 32768; scan 0 starts (0, 25600), later scans (n, 0).
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadDztStd, dir + "/FILE____032.DZT")) << b.message();
        EXPECT_EQ(b.st.Sp_Samples, 512);
        EXPECT_EQ(b.st.TraceCount, 1040);
        EXPECT_EQ(b.st.BitsPerSample, 16);
        EXPECT_DOUBLE_EQ(b.st.SampleRate, 512 / 48e-9);
        EXPECT_EQ(b.st.ScansPerSecond, 100.0);
        const auto w = b.working();
        ASSERT_EQ(w.size(), 1040u * 512);
        EXPECT_EQ(w[0], -32768.0f);
        EXPECT_EQ(w[1], 25600.0f - 32768.0f);
        EXPECT_EQ(w[2], -1.0f); // 32767
        for (size_t k : {size_t(1), size_t(2), size_t(1039)}) {
            EXPECT_EQ(w[512 * k], float(k) - 32768.0f) << k;
            EXPECT_EQ(w[512 * k + 1], -32768.0f) << k;
        }
        EXPECT_EQ(w[512 * 1 + 2], 0.0f); // 32768
        EXPECT_TRUE(b.infoHas("Antenna : 400MHz"));
        EXPECT_TRUE(b.infoHas("Range (ns) : 48"));
    }
    {
        // 32-bit signed; every 160th scan carries a mark flag in its second word.
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadDztStd, dir + "/File____001.DZT")) << b.message();
        EXPECT_EQ(b.st.Sp_Samples, 256);
        EXPECT_EQ(b.st.TraceCount, 863);
        EXPECT_EQ(b.st.FullScalePos, 2147483647.0f);
        const auto w = b.working();
        ASSERT_EQ(w.size(), 863u * 256);
        EXPECT_EQ(w[0], 1.0f);
        EXPECT_EQ(w[2], -35232.0f);
        EXPECT_EQ(w[3], -35952.0f);
        EXPECT_EQ(w[159 * 256 + 1], -469762048.0f);
        float lo = 0, hi = 0;
        for (size_t k = 0; k < 863; ++k)
            for (size_t j = 2; j < 256; ++j) {
                lo = std::min(lo, w[k * 256 + j]);
                hi = std::max(hi, w[k * 256 + j]);
            }
        EXPECT_EQ(lo, -779552.0f);
        EXPECT_EQ(hi, 836624.0f);
        EXPECT_TRUE(b.infoHas("Antenna : SS MINI #454"));
    }
    {
        // A 128 KiB header: the data field counts blocks.
        test::StdBench b;
        ASSERT_TRUE(b.read(ReadDztStd, dir + "/test_gssi.DZT")) << b.message();
        EXPECT_EQ(b.st.Sp_Samples, 2048);
        EXPECT_EQ(b.st.TraceCount, 345);
        EXPECT_EQ(b.st.DataStart, 131073);
        EXPECT_DOUBLE_EQ(b.st.SampleRate, 2048 / 2300e-9);
        const auto w = b.working();
        ASSERT_EQ(w.size(), 345u * 2048);
        EXPECT_EQ(w[2], 73088.0f);
        EXPECT_EQ(w[1000], 73664.0f);
        EXPECT_EQ(w[2048 + 2], 73664.0f);
        EXPECT_EQ(w[344 * 2048], 344.0f);
        EXPECT_EQ(w[344 * 2048 + 1000], 72896.0f);
        EXPECT_TRUE(b.infoHas("Antenna : 5106"));
    }
}

TEST(DztStd, HeadersThatCannotBeReadSayWhyAndLeaveNoDataSet) {
    auto base = [] {
        DztLayout s;
        s.scans = {scans(2, 4, 1, 1)};
        return s;
    };
    struct Case {
        const char* what;
        std::vector<uint8_t> bytes;
        const char* message;
    };
    std::vector<Case> cases;
    cases.push_back({"short", std::vector<uint8_t>(1000, 0),
                     "This is not a radar DZT file: it is shorter than the 1024-byte header."});
    auto bits = base();
    bits.bits = 12;
    cases.push_back({"12 bits", test::dztFile(bits),
                     "The DZT header gives 12 bits per sample; 8, 16 and 32 bits are read."});
    auto noRange = base();
    noRange.rangeNs = 0.0f;
    cases.push_back({"range 0", test::dztFile(noRange),
                     "The DZT header gives no time range, so the sample rate is unknown."});
    auto past = base();
    past.dataField = 60000;
    cases.push_back({"data past the end", test::dztFile(past),
                     "The DZT header puts the scans at byte 60000, but the file ends at byte "
                     "1040."});
    auto longScans = base();
    longScans.samples = 4000; // the file holds 16 bytes of scans
    cases.push_back({"more samples than the file holds", test::dztFile(longScans),
                     "The DZT file holds no complete scan: its header promises 1 channel of 4000 "
                     "samples of 16 bits, 8000 bytes a scan, and 16 bytes follow the header."});
    auto channels = test::dztFile(base());
    channels[52] = 9; // nine channels, one header block
    cases.push_back({"more channels than the file holds", channels,
                     "The DZT header puts the scans at byte 9216, but the file ends at byte "
                     "1040."});
    auto noSamples = base();
    noSamples.samples = 0;
    cases.push_back(
        {"no samples", test::dztFile(noSamples), "The DZT header gives no samples per scan."});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        test::StdBench b;
        EXPECT_FALSE(b.read(ReadDztStd, b.put(c.bytes, "bad.dzt")));
        EXPECT_EQ(b.message(), c.message);
        EXPECT_EQ(b.host.messages.at(0).title, "Kelvorandine®");
        EXPECT_EQ(b.host.messages.at(0).icon, MsgIcon::Critical);
        EXPECT_TRUE(b.st.TempPath.empty());
    }
}
