// WAV recordings: how they are cut into traces, scaled, down-sampled and split into channels.
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "platform/files.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace kv;

namespace {

std::vector<int> ramp(int n, int scale = 1) {
    std::vector<int> v(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        v[size_t(i)] = (i % 30000) * scale;
    return v;
}

struct WavCase : test::Bench {
    std::string put(const std::vector<uint8_t>& bytes, const std::string& name = "x.wav") {
        const std::string p = home.file(name);
        test::writeFile(p, bytes);
        return p;
    }
};

} // namespace

TEST(WavTraceCount, RoundsHalfTracesToEvenAndReadsZerosPastTheEnd) {
    WavCase b;
    b.start();
    // Samples start at byte 45, so 45 + 2.5 traces of bytes is an exact tie.
    auto tie = [](int samples) {
        auto bytes = test::wavBytes(1, 44100, 16, ramp(samples));
        bytes.push_back(0);
        return bytes;
    };
    b.import(b.put(tie(2560)));
    EXPECT_EQ(b.st.TraceCount, 2);
    b.import(b.put(tie(3584)));
    EXPECT_EQ(b.st.TraceCount, 4);
    b.import(b.put(test::wavBytes(1, 44100, 16, ramp(2662)))); // 2.6 traces
    EXPECT_EQ(b.st.TraceCount, 3);
    b.import(b.put(tie(3584)));
    auto w = b.working();
    ASSERT_EQ(w.size(), 4u * 1024);
    EXPECT_EQ(w[3583], 3583.0f);
    EXPECT_EQ(w[3584], 0.0f) << "past the end of the recording";
    EXPECT_EQ(b.st.WorkingFileLength, 4 * 1024 * 4);
    EXPECT_EQ(b.st.SampleRate, 44100.0);
    EXPECT_EQ(b.st.FullScalePos, 32767.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 32768.0f);
    EXPECT_EQ(b.st.DataStart, 45);
}

TEST(WavTraceCount, AShortRecordingShrinksTheTrace) {
    WavCase b;
    b.start();
    b.import(b.put(test::wavBytes(1, 8000, 16, ramp(300))));
    EXPECT_EQ(b.st.TraceCount, 1);
    EXPECT_EQ(b.st.Sp_Samples, 256);
    EXPECT_EQ(b.cmd.panel(3), "FFT Bins: 128");
    auto w = b.working();
    ASSERT_EQ(w.size(), 256u);
    EXPECT_EQ(w[255], 255.0f);
}

TEST(WavSamples, EightBitSamplesAreOffsetToSignedValues) {
    WavCase b;
    b.start();
    std::vector<int> s(2048, 0);
    s[1] = 127;
    s[2] = -128;
    b.import(b.put(test::wavBytes(1, 8000, 8, s)));
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_EQ(b.st.FullScalePos, 128.0f);
    EXPECT_EQ(b.st.FullScaleNeg, 128.0f);
    auto w = b.working();
    EXPECT_EQ(w[0], 0.0f) << "silence (byte 128) is 0";
    EXPECT_EQ(w[1], 127.0f);
    EXPECT_EQ(w[2], -128.0f);
}

TEST(WavSamples, DownsamplingAveragesOrDecimatesNeighbours) {
    for (int mode : {0, 1}) {
        WavCase b;
        b.start();
        const std::string p = b.put(test::wavBytes(1, 8000, 16, ramp(8192, 3)));
        b.import(p);
        b.st.SettingsOverrides["gen.newds"] = "4";
        b.st.DownsampleMode = int16_t(mode);
        b.st.SourcePathKeep = p;
        ChNewDS(b.wb);
        EXPECT_EQ(b.st.TraceCount, 2);
        auto w = b.working();
        ASSERT_EQ(w.size(), 2u * 1024);
        if (mode == 0) {
            EXPECT_FLOAT_EQ(w[0], 4.5f); // (0 + 3 + 6 + 9) / 4
            EXPECT_FLOAT_EQ(w[1], 16.5f);
            EXPECT_FLOAT_EQ(w[1024], (4096 + 4097 + 4098 + 4099) * 3 / 4.0f);
        } else {
            EXPECT_EQ(w[0], 0.0f); // samples 0, 4, 8 ...
            EXPECT_EQ(w[1], 12.0f);
            EXPECT_EQ(w[2], 24.0f);
        }
    }
}

TEST(WavStereo, WritesBothSidesWithTracesOverlappingByHalf) {
    WavCase b;
    b.start();
    // Left = frame index, right = minus frame index.
    std::vector<int> s;
    for (int f = 0; f < 4096; ++f) {
        s.push_back(f);
        s.push_back(-f);
    }
    b.import(b.put(test::wavBytes(2, 8000, 16, s)));
    EXPECT_EQ(b.st.Channels, 2);
    EXPECT_EQ(b.st.StereoFlag, 1);
    EXPECT_EQ(b.st.TraceCount, 4) << "divided by the channel count";
    EXPECT_EQ(b.cmd.panel(9), "Stereo/left ch.");
    EXPECT_EQ(b.st.ActiveTracePath, b.home.file("temp_l.sp"));
    auto left = b.working("temp_l.sp");
    auto right = b.working("temp_r.sp");
    ASSERT_EQ(left.size(), 4u * 1024);
    ASSERT_EQ(right.size(), 4u * 1024);
    EXPECT_EQ(left[1], 1.0f);
    EXPECT_EQ(right[1], -1.0f);
    // Trace 1 begins half a trace (512 frames) after trace 0: the stride leaves out Channels.
    EXPECT_EQ(left[1024], 512.0f);
    EXPECT_EQ(left[3 * 1024], 1536.0f);
    EXPECT_EQ(b.st.WorkingFileLength, 4 * 1024 * 4);
}

TEST(WavOddFiles, AMissingRiffTagIsReportedAndTheReadGoesOn) {
    WavCase b;
    b.start();
    auto bytes = test::wavBytes(1, 8000, 16, ramp(2048));
    bytes[0] = 'X';
    b.import(b.put(bytes));
    ASSERT_EQ(b.host.messages.size(), 1u);
    EXPECT_EQ(b.host.messages[0].text, "File corrupted!");
    EXPECT_EQ(b.host.messages[0].title, "Kelvorandine®");
    EXPECT_EQ(b.host.messages[0].icon, MsgIcon::Critical);
    EXPECT_EQ(b.st.TraceCount, 2);
    EXPECT_FALSE(b.st.TempPath.empty());
}

TEST(WavOddFiles, OtherBitDepthsConvertNothing) {
    WavCase b;
    b.start();
    b.import(b.put(test::wavBytes(1, 8000, 16, ramp(4096))));
    ASSERT_EQ(b.st.TraceCount, 4);
    auto bytes = test::wavBytes(1, 8000, 16, ramp(4096));
    bytes[34] = 24; // claims 24 bits per sample
    b.import(b.put(bytes));
    EXPECT_EQ(b.st.TraceCount, 4) << "no trace count of its own: the last one stays";
    auto w = b.working();
    ASSERT_EQ(w.size(), 4u * 1024);
    EXPECT_EQ(std::count(w.begin(), w.end(), 0.0f), long(w.size()));
}

TEST(WavImport, CancelDuringTheReadClosesTheDataSet) {
    WavCase b;
    b.start();
    b.host.cancelProgressAt(3);
    b.import(b.put(test::wavBytes(1, 8000, 16, ramp(10 * 1024))));
    EXPECT_TRUE(b.st.ImportCancelled);
    EXPECT_TRUE(b.st.TempPath.empty());
    EXPECT_FALSE(b.st.SpectrumOpen);
    EXPECT_EQ(b.host.lastProgressMax, 10);
    EXPECT_GE(b.host.yields, 4);
}

TEST(WavImport, RealRecordingsOpenAsTheFixedHeaderRulesSay) {
    KV_REQUIRE_REAL(dir, "wav");
    struct Expect {
        const char* file;
        bool loaded;
        int traces;
        int spSamples;
    };
    // Extra chunks ahead of the data are read as samples and sizes come from the file length,
    // so the short files shrink their trace and the 24-bit one has no usable sample size.
    const Expect cases[] = {
        {"3cssan.near.8.1.RNON.wav", true, 3, 1024},
        {"pluck-pcm8.wav", true, 3, 1024},
        {"pluck-pcm16.wav", true, 3, 1024},
        {"test4.wav", true, 375, 1024},
        {"test1_empty.wav", true, 0, 1024},
        {"waveformatex-16bit-44100Hz-stereo.wav", true, 1, 4},
        {"pcmwaveformat-16bit-44100Hz-mono-extra.wav", true, 1, 16},
        {"pop.wav", true, 1, 64},
        {"waveformatex-8bit-11025Hz-mono.wav", true, 1, 4},
        {"nonstandard-01.wav", false, 0, 1024},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        WavCase b;
        b.start();
        b.import(dir + "/" + c.file);
        EXPECT_EQ(!b.st.TempPath.empty(), c.loaded);
        EXPECT_TRUE(b.host.messages.empty());
        if (!c.loaded) continue;
        EXPECT_EQ(b.st.TraceCount, c.traces);
        EXPECT_EQ(b.st.Sp_Samples, c.spSamples);
        EXPECT_EQ(b.st.WorkingFileLength, c.traces * c.spSamples * 4);
    }
}
