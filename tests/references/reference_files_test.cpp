// The three reference file formats: exact bytes at fixed offsets, a round trip, and files that
// must be refused rather than drawn (empty, truncated, foreign, counts that lie, NaN values).
#include "platform/byte_source.h"
#include "references/reference_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace kv;

namespace {

std::vector<uint8_t> bytesOf(const std::string& s) {
    return {s.begin(), s.end()};
}

template <typename T> T at(const std::string& s, size_t off) {
    T v{};
    std::memcpy(&v, s.data() + off, sizeof(T));
    return v;
}

template <typename T> void put(std::string& s, size_t off, T v) {
    std::memcpy(s.data() + off, &v, sizeof(T));
}

PnsFile sampleSpectrum() {
    PnsFile f;
    f.MaxFreq = 4000.0f;
    f.FullScale = 32767;
    f.BinStep = 31.25f;
    f.Bins = 128;
    f.Window = 3;
    f.Level = -12.5;
    for (int i = 0; i <= f.Bins; ++i)
        f.Data.push_back(float(i) * 1.5f);
    return f;
}

} // namespace

TEST(SpectrumReferenceFile, FieldsStandAtTheirOffsetsWithZeroGaps) {
    const std::string s = writePns(sampleSpectrum());
    ASSERT_EQ(s.size(), 79u + 4u * 129u);
    EXPECT_EQ(s.substr(0, 6), "Kelvor");
    EXPECT_EQ(at<float>(s, 11), 4000.0f);
    EXPECT_EQ(at<int32_t>(s, 20), 32767);
    EXPECT_EQ(at<float>(s, 26), 31.25f);
    EXPECT_EQ(at<int32_t>(s, 39), 128);
    EXPECT_EQ(at<int16_t>(s, 49), 3);
    EXPECT_EQ(at<double>(s, 51), -12.5);
    EXPECT_EQ(at<float>(s, 79 + 4 * 128), 192.0f);
    for (size_t gap : {6u, 7u, 8u, 9u, 10u, 15u, 19u, 24u, 25u, 30u, 38u, 43u, 48u, 59u, 78u})
        EXPECT_EQ(s[gap], '\0') << "offset " << gap;
}

TEST(SpectrumReferenceFile, ReadsBackWhatWasWritten) {
    const PnsFile in = sampleSpectrum();
    PnsFile out;
    ASSERT_EQ(readPns(MemoryByteSource(bytesOf(writePns(in))), out), RefRead::Ok);
    EXPECT_EQ(out.MaxFreq, in.MaxFreq);
    EXPECT_EQ(out.FullScale, in.FullScale);
    EXPECT_EQ(out.Bins, in.Bins);
    EXPECT_EQ(out.Window, in.Window);
    EXPECT_EQ(out.Level, in.Level);
    EXPECT_EQ(out.Data, in.Data);
    EXPECT_EQ(writePns(out), writePns(in));

    // The header alone (the dialog's look at a line) leaves the values unread.
    PnsFile head;
    ASSERT_EQ(readPns(MemoryByteSource(bytesOf(writePns(in))), head, false), RefRead::Ok);
    EXPECT_TRUE(head.Data.empty());
}

TEST(SpectrumReferenceFile, DamagedOrForeignFilesAreRefused) {
    const std::string good = writePns(sampleSpectrum());
    PnsFile out;
    out.Bins = 77; // a refused file leaves what it was given alone
    const auto read = [&](const std::string& s) {
        return readPns(MemoryByteSource(bytesOf(s)), out);
    };
    EXPECT_EQ(read(""), RefRead::WrongFormat);
    EXPECT_EQ(read("RIFF....WAVEfmt "), RefRead::WrongFormat);
    EXPECT_EQ(read(good.substr(0, 60)), RefRead::Invalid);  // header cut
    EXPECT_EQ(read(good.substr(0, 400)), RefRead::Invalid); // values cut
    for (int32_t bins : {0, -1, std::numeric_limits<int32_t>::min(), 129, 1 << 30}) {
        std::string s = good;
        put<int32_t>(s, 39, bins);
        EXPECT_EQ(read(s), RefRead::Invalid) << bins;
    }
    for (size_t off : {size_t(11), size_t(26), size_t(79 + 4 * 5)}) {
        std::string s = good;
        put<float>(s, off, std::numeric_limits<float>::quiet_NaN());
        EXPECT_EQ(read(s), RefRead::Invalid) << off;
    }
    std::string zeroScale = good;
    put<int32_t>(zeroScale, 20, 0);
    EXPECT_EQ(read(zeroScale), RefRead::Invalid);
    EXPECT_EQ(out.Bins, 77);
}

TEST(TraceReferenceFiles, OscopeAndPhaseFilesRoundTripAtTheirOffsets) {
    PnoFile o;
    o.Samples = 4;
    o.FullScale = 2048;
    o.Span = 0.25;
    o.Data = {1, -2, 3, -4, 5};
    const std::string so = writePno(o);
    ASSERT_EQ(so.size(), 39u + 20u);
    EXPECT_EQ(so.substr(0, 3), "pno");
    EXPECT_EQ(at<int32_t>(so, 9), 4);
    EXPECT_EQ(at<float>(so, 19), 2048.0f);
    EXPECT_EQ(at<double>(so, 29), 0.25);
    PnoFile ob;
    ASSERT_EQ(readPno(MemoryByteSource(bytesOf(so)), ob), RefRead::Ok);
    EXPECT_EQ(ob.Data, o.Data);

    PnpFile p;
    p.MaxFreq = 500;
    p.Bins = 2;
    p.BinStep = 250;
    p.Data = {0, 90, -45};
    const std::string sp = writePnp(p);
    ASSERT_EQ(sp.size(), 49u + 12u);
    EXPECT_EQ(sp.substr(0, 3), "pnf"); // not "pnp": the letters are kept as they were
    EXPECT_EQ(at<float>(sp, 9), 500.0f);
    EXPECT_EQ(at<int32_t>(sp, 20), 2);
    EXPECT_EQ(at<float>(sp, 29), 250.0f);
    PnpFile pb;
    ASSERT_EQ(readPnp(MemoryByteSource(bytesOf(sp)), pb), RefRead::Ok);
    EXPECT_EQ(pb.Data, p.Data);
}

TEST(TraceReferenceFiles, TheTraceCountIsReadAsSixteenBits) {
    // 40000 samples come back as a negative count: such a file is refused, not read wrongly.
    PnoFile o;
    o.Samples = 40000;
    o.FullScale = 1;
    o.Span = 1;
    o.Data.assign(40001, 0.5f);
    PnoFile back;
    EXPECT_EQ(readPno(MemoryByteSource(bytesOf(writePno(o))), back), RefRead::Invalid);
    // 65536 + 3 keeps its low bits: 3 samples.
    o.Samples = 65539;
    ASSERT_EQ(readPno(MemoryByteSource(bytesOf(writePno(o))), back), RefRead::Ok);
    EXPECT_EQ(back.Samples, 3);
    EXPECT_EQ(back.Data.size(), 4u);
}

TEST(TraceReferenceFiles, DamagedTraceFilesAreRefused) {
    PnoFile back;
    PnpFile pback;
    EXPECT_EQ(readPno(MemoryByteSource({}), back), RefRead::Invalid);
    EXPECT_EQ(readPnp(MemoryByteSource({}), pback), RefRead::Invalid);
    PnoFile o;
    o.Samples = 8;
    o.FullScale = 10;
    o.Span = 0.5;
    o.Data.assign(9, 1.0f);
    std::string s = writePno(o);
    EXPECT_EQ(readPno(MemoryByteSource(bytesOf(s.substr(0, s.size() - 1))), back),
              RefRead::Invalid);
    put<double>(s, 29, 0.0); // a span of 0 would divide the view by zero
    EXPECT_EQ(readPno(MemoryByteSource(bytesOf(s)), back), RefRead::Invalid);

    PnpFile p;
    p.MaxFreq = 100;
    p.Bins = 3;
    p.BinStep = 33;
    p.Data = {1, 2, std::numeric_limits<float>::infinity(), 4};
    EXPECT_EQ(readPnp(MemoryByteSource(bytesOf(writePnp(p))), pback), RefRead::Invalid);
}
