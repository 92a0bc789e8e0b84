// The references as the views draw them: a saved spectrum over the live one in its colour and
// at its frequencies, an O-scope trace at its own time scale with its tail on the zero line,
// and a phase curve of a narrower band over its share of the axis.
#include "references/reference_files.h"
#include "references/spectrum_refs.h"
#include "support/test_home.h"
#include "views/oscilloscope/oscope_view.h"
#include "views/phase/phase_view.h"
#include "views/spectrum/spectrum_form.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace kv;

namespace {

/// 4 traces of 256 samples at 8 kHz of a 1 kHz sine over a floor of noise, on a plot of
/// 600 x 300.
struct SpectrumRefs : ::testing::Test {
    test::Bench b;
    spectrum::SpectrumForm form{b.wb};
    RefFields f;
    void SetUp() override {
        test::writeFile(b.home.file("sine.wav"),
                        test::wavBytes(1, 8000, 16, test::noisySine(4 * 256)));
        b.st.SettingsOverrides["gen.sp_samples"] = "256";
        b.start();
        b.import(b.home.file("sine.wav"));
        form.view().setPlotSize(600, 300);
        form.firstDraw();
        dlgRef::Form_Load(b.wb, f);
    }
    int pixelsOf(QRgb c) const {
        const QImage& img = form.view().surface().image();
        int n = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x)
                n += (img.pixel(x, y) & 0xFFFFFF) == (c & 0xFFFFFF);
        return n;
    }
};

} // namespace

TEST_F(SpectrumRefs, ASavedSpectrumLiesOnTheLiveOneInItsColour) {
    const QRgb red = colorFromIni(b.st.Line1Color);
    EXPECT_EQ(pixelsOf(red), 0);
    dlgRef::cmdSet_Click(b.wb, f);
    form.relayout();
    const auto& ref = form.view().RefPoints(1);
    const auto& live = form.view().CurvePoints();
    ASSERT_GT(ref.size(), 100u);
    // Same spectrum, same fold: the reference's points are the live curve's (its own decibels
    // may round a level the other way at a pixel's edge).
    for (size_t j = 0; j < live.size(); ++j) {
        ASSERT_EQ(ref[j].x(), live[j].x()) << j;
        ASSERT_NEAR(ref[j].y(), live[j].y(), 1) << j;
    }
    EXPECT_GT(pixelsOf(red), 300);

    // Moving on keeps it drawn; switching it off takes it away.
    form.HS_Change(2);
    EXPECT_GT(pixelsOf(red), 300);
    f.Check1 = false;
    f.Check2 = true; // keeps the dialog open
    dlgRef::Check_Click(b.wb, f, 1);
    form.relayout();
    EXPECT_EQ(pixelsOf(red), 0);
}

TEST_F(SpectrumRefs, ANarrowerBandCoversItsShareOnBothAxes) {
    PnsFile p;
    p.MaxFreq = b.st.MaxFreq / 2;
    p.BinStep = b.st.BinWidth;
    p.Bins = 64;
    p.FullScale = 32767;
    p.Window = b.st.FFT_Window;
    p.Data.assign(65, 3000.0f);
    test::writeText(b.home.file("half.pns"), writePns(p));
    b.host.queueFile(b.home.file("half.pns"), 1);
    dlgRef::cmdLoad_Click(b.wb, f);
    ASSERT_TRUE(b.st.RefOn1);
    form.relayout();
    const auto& ref = form.view().RefPoints(1);
    ASSERT_FALSE(ref.empty());
    EXPECT_NEAR(ref.back().x(), 300, 12);

    // On a log axis a bin stands at its frequency: the top bin at half the band's frequency.
    b.st.DrSet = 2;
    form.relayout();
    const auto& logRef = form.view().RefPoints(1);
    ASSERT_FALSE(logRef.empty());
    const double want = form.view().LogStep() * std::log10(63.0); // the last column's bin
    EXPECT_NEAR(logRef.back().x(), want, 3);
}

namespace {

// A graph of 512 x 400 over 1024 samples of a one-second trace, 800 counts to the top edge.
struct ScopeRefs : ::testing::Test {
    test::Bench b;
    ProgramState& st = b.st;
    std::unique_ptr<oscope::OscopeView> v;
    void SetUp() override {
        b.start();
        st.Sp_Samples = st.Fft_Samples = 1024;
        st.SampleRate = 1024;
        st.FullScalePos = 32767;
        st.ScaleBits = 800;
        st.ScaleBitsInt = 800;
        st.ShowVertical = 2;
        st.TraceCount = 1;
        st.TraceBuf.assign(1025, 0.0f);
        v = std::make_unique<oscope::OscopeView>(b.wb);
        v->Form_Load(512 + oscope::kWidthMargin, 400 + oscope::kHeightMargin);
        v->Form_Resize(512 + oscope::kWidthMargin, 400 + oscope::kHeightMargin);
        v->UpdateTime();
        ASSERT_NEAR(st.ViewTimeSpan, 1.0, 1e-6);
    }
    void line1(int16_t samples, double span, float value) {
        st.TimeRef1On = true;
        st.TimeRef1Samples = samples;
        st.TimeRef1Span = span;
        st.TimeRef1Scale = 32767;
        st.TimeRef1Data.assign(size_t(samples) + 1, value);
    }
};

} // namespace

TEST_F(ScopeRefs, ATraceKeepsItsTimeScaleAndEndsOnTheZeroLine) {
    // Recorded over two seconds: half its samples fill the view, two a pixel... here 1024 of
    // 2048 over 512 pixels.
    line1(2048, 2.0, 400.0f);
    v->CreateRef();
    const auto& pts = v->TimeRefPoints(1);
    ASSERT_EQ(pts.size(), 1024u);
    EXPECT_EQ(pts[100].x(), 50);
    EXPECT_EQ(pts[100].y(), int(v->ZeroLine()) - 100); // 400 counts of 800 over 200 pixels
    EXPECT_TRUE(st.TimeRefOn && b.cmd.checked("mnuRefO"));

    // A quarter-second reference ends a quarter of the way across; from there the zero line.
    line1(256, 0.25, 400.0f);
    v->CreateRef();
    const auto& shortPts = v->TimeRefPoints(1);
    ASSERT_EQ(shortPts.size(), 1025u);
    EXPECT_EQ(shortPts[255].y(), int(v->ZeroLine()) - 100);
    EXPECT_EQ(shortPts[256].y(), int(v->ZeroLine()));
    EXPECT_EQ(shortPts[512].x(), 256);
}

TEST_F(ScopeRefs, ZoomedInTheReferenceShowsTheSameStretchOfTime) {
    line1(512, 0.5, 400.0f); // half a second: it ends half way across
    v->CreateRef();
    v->mnuZoomIn(); // then a right-button drag over the middle half: samples 256 to 768
    v->picGraph_MouseDown(RightButton, 128, 10);
    v->picGraph_MouseMove(RightButton, 384, 10);
    v->picGraph_MouseUp(RightButton, 384, 10);
    ASSERT_TRUE(v->ZoomOn());
    ASSERT_EQ(v->ZoomFirst(), 256);
    const double from = v->ZoomFirst() / 1024.0, to = v->ZoomLast() / 1024.0;
    ASSERT_LT(from, 0.5);
    ASSERT_GT(to, 0.5);
    const auto& z = v->ZoomRefPoints(1);
    ASSERT_FALSE(z.empty());
    EXPECT_EQ(long(z.size()), std::lround(512 * to / 0.5) - std::lround(512 * from / 0.5) + 1);
    // Its first sample in the zoom at the left edge; past its end, the zero line.
    EXPECT_EQ(z.front().x(), 0);
    EXPECT_EQ(z.front().y(), int(v->ZeroLine()) - 100);
    EXPECT_EQ(z.back().y(), int(v->ZeroLine()));
    EXPECT_NEAR(z.back().x(), 512, 1);
}

TEST_F(ScopeRefs, AReferenceWithTooFewSamplesInViewGoesOff) {
    line1(4, 2.0, 1.0f); // two of its samples in the view
    v->CreateRef();
    EXPECT_FALSE(st.TimeRef1On || st.TimeRefOn);
    ASSERT_FALSE(b.host.messages.empty());
    EXPECT_EQ(b.host.messages.back().text, "Reference file does not exist or is invalid");
    EXPECT_TRUE(v->TimeRefPoints(1).empty());
}

TEST(PhaseRefs, ANarrowerBandCoversItsShareOfTheAxis) {
    test::Bench b;
    b.start();
    ProgramState& st = b.st;
    st.Sp_Samples = st.Fft_Samples = 4096;
    st.SampleRate = 48000;
    st.MaxFreq = 24000;
    st.BinWidth = 48000.0f / 4096;
    st.FullScalePos = 32767;
    st.TraceCount = 1;
    st.SpPhase.assign(4097, 0.0f);
    phase::PhaseView v(b.wb);
    v.Form_Load(500 + phase::kWidthMargin, 400 + phase::kHeightMargin);
    st.PhaseRef1On = true;
    st.PhaseRef1Samples = 100;
    st.PhaseRef1MaxFreq = 12000;
    st.PhaseRef1Data.assign(101, 90.0f);
    v.CreateRef();
    const auto& pts = v.PhaseRefPoints(1);
    ASSERT_EQ(pts.size(), 100u);
    EXPECT_EQ(pts.front().x(), -2); // k starts at -1: 250 pixels / 100 bins
    EXPECT_EQ(pts.back().x(), 245); // the last bin, 99, stands at k = 98
    EXPECT_EQ(pts.back().y(), 100); // 90 degrees: half way up from the centre row 200
    EXPECT_TRUE(st.PhaseRefOn);
    EXPECT_EQ(v.picF().pixel(100, 100) & 0xFFFFFF, colorFromIni(st.Ph1Color) & 0xFFFFFF);
}
