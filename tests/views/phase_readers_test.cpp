// Phases are taken only when something reads them. Two workbenches play the same recording: one
// asks for the phases after every trace, the other never does until a reader comes along. Every
// reader of the phases must then see exactly what the first run has: a Phase view opened late or
// on show, a phase reference set from the dialog, the reference file's bytes.
#include "commands/lifecycle.h"
#include "engine/engine.h"
#include "references/spectrum_refs.h"
#include "references/time_phase_refs.h"
#include "support/test_home.h"
#include "views/phase/phase_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace kv;

namespace {

/// 6 traces of 512 samples at 8 kHz: two tones whose phases move from trace to trace.
std::vector<int> movingTones() {
    std::vector<int> s;
    for (int k = 0; k < 6; ++k)
        for (int i = 0; i < 512; ++i)
            s.push_back(int(std::lround(9000 * std::sin(2 * M_PI * 500.0 * i / 8000 + 0.9 * k) +
                                        4000 * std::cos(2 * M_PI * 1750.0 * i / 8000 - 1.3 * k))));
    return s;
}

struct TwoRuns : ::testing::Test {
    test::Bench atOnce, late;
    TwoRuns() {
        for (test::Bench* b : {&atOnce, &late}) {
            test::writeFile(b->home.file("tones.wav"), test::wavBytes(1, 8000, 16, movingTones()));
            b->st.SettingsOverrides["gen.sp_samples"] = "512";
            b->start();
            b->import(b->home.file("tones.wav"));
        }
    }
    static void move(test::Bench& b, int k) {
        b.st.TracePos = int16_t(k);
        setCurrentTracePos(b.st);
        FyllSpData(b.st);
    }
    /// Trace k in both runs; only the first takes its phases.
    void show(int k) {
        move(atOnce, k);
        ensurePhases(atOnce.st);
        move(late, k);
    }
    static std::unique_ptr<phase::PhaseView> phaseView(test::Bench& b) {
        auto v = std::make_unique<phase::PhaseView>(b.wb);
        v->Form_Load(500 + phase::kWidthMargin, 300 + phase::kHeightMargin);
        return v;
    }
};

} // namespace

TEST_F(TwoRuns, APhaseViewOpenedAfterPlaybackDrawsThePhasesOfTheTraceOnShow) {
    for (int k = 0; k < 5; ++k)
        show(k);
    ASSERT_NE(atOnce.st.SpPhase[33], 0.0f);
    auto a = phaseView(atOnce), l = phaseView(late);
    EXPECT_EQ(l->picF().image(), a->picF().image());
    EXPECT_EQ(late.st.SpPhase, atOnce.st.SpPhase);
    // The logarithmic axis draws from the same phases.
    atOnce.st.DrSet = late.st.DrSet = 2;
    show(1);
    a->Draw_s();
    l->Draw_s();
    EXPECT_EQ(l->picF().image(), a->picF().image());
}

TEST_F(TwoRuns, APhaseViewOnShowFollowsEveryTrace) {
    auto a = phaseView(atOnce), l = phaseView(late);
    for (int k : {0, 3, 1, 4, 2}) {
        show(k);
        a->Draw_s();
        l->Draw_s();
        EXPECT_EQ(l->picF().image(), a->picF().image()) << k;
    }
}

TEST_F(TwoRuns, APhaseReferenceSetAfterPlaybackHoldsThePhasesOfTheTraceOnShow) {
    for (int k = 0; k < 4; ++k)
        show(k);
    EXPECT_EQ(phaseRefBytes(late.st), phaseRefBytes(atOnce.st));
    show(4);
    TimeRefFields fa, fl;
    PhasaRef::Form_Load(atOnce.wb, fa);
    PhasaRef::Form_Load(late.wb, fl);
    PhasaRef::cmdSet_Click(atOnce.wb, fa);
    PhasaRef::cmdSet_Click(late.wb, fl);
    ASSERT_TRUE(late.st.PhaseRef1On);
    EXPECT_EQ(late.st.PhaseRef1Data, atOnce.st.PhaseRef1Data);
    EXPECT_EQ(test::readText(fixedRefPath(late.st, 1, "pnp")),
              test::readText(fixedRefPath(atOnce.st, 1, "pnp")));
}
