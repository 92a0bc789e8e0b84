// The O-scope and the Phase view change only the pixels that differ from one trace to the
// next. Since erasing by overdraw takes away exactly the old curve, a view that has shown many
// traces must show the very picture of one opened on the last of them.
#include "views/oscilloscope/oscope_view.h"
#include "views/phase/phase_view.h"

#include "support/test_home.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>

using namespace kv;

namespace {

struct TraceAfterTrace : ::testing::Test {
    test::Bench b;
    ProgramState& st = b.st;

    void SetUp() override {
        b.start();
        st.Sp_Samples = st.Fft_Samples = 1024;
        st.SampleRate = 48000;
        st.MaxFreq = 24000;
        st.BinWidth = 48000.0f / 1024;
        st.FullScalePos = 32767;
        st.ScaleBits = 32767;
        st.TraceCount = 1;
    }
    // A tone that moves and grows from trace to trace, with a phase that wraps.
    void showTrace(int k) {
        st.TraceBuf.resize(1025);
        st.SpPhase.resize(1025);
        for (size_t i = 0; i < st.TraceBuf.size(); ++i) {
            st.TraceBuf[i] = float(3000 * (1 + k % 7) * std::sin(0.05 * (k + 1) * double(i) + k));
            st.SpPhase[i] = float(std::remainder(37.0 * k + 11.0 * double(i) * (k % 5), 360.0));
        }
    }
    std::unique_ptr<oscope::OscopeView> oscope() {
        auto v = std::make_unique<oscope::OscopeView>(b.wb);
        v->Form_Load(400 + oscope::kWidthMargin, 300 + oscope::kHeightMargin);
        v->UpdateTime();
        return v;
    }
    std::unique_ptr<phase::PhaseView> phaseView() {
        auto v = std::make_unique<phase::PhaseView>(b.wb);
        v->Form_Load(400 + phase::kWidthMargin, 300 + phase::kHeightMargin);
        return v;
    }
};

} // namespace

TEST_F(TraceAfterTrace, OscopeShowsWhatAFreshViewShows) {
    showTrace(0);
    auto v = oscope();
    for (int k = 1; k < 40; ++k) {
        showTrace(k);
        if (k == 20) st.Flipped = true;
        if (k == 30) st.ShowGrid = 0;
        v->Draw();
        ASSERT_EQ(std::as_const(*v).picGraph().image(), std::as_const(*oscope()).picGraph().image())
            << "trace " << k;
    }
    st.Flipped = false;
}

TEST_F(TraceAfterTrace, PhaseShowsWhatAFreshViewShowsOnBothAxes) {
    for (int16_t axis : {1, 2}) {
        st.DrSet = axis;
        showTrace(0);
        auto v = phaseView();
        for (int k = 1; k < 30; ++k) {
            showTrace(k);
            st.F_ShowGrid = k < 20 ? 1 : 0;
            v->Draw_s();
            ASSERT_EQ(v->picF().image(), phaseView()->picF().image())
                << "axis " << axis << ", trace " << k;
        }
        st.F_ShowGrid = 1;
    }
}
