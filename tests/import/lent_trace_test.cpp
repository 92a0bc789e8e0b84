// The working trace a reader's loop borrows: the room of the thread's last trace, handed out as
// zeros whatever that trace held, and never shared with a read that starts inside another.
#include "import/reader.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kv;

namespace {

bool allZero(const LentTrace& t) {
    const auto v = t.values();
    return std::all_of(v.begin(), v.end(), [](float x) { return x == 0.0f; });
}

} // namespace

TEST(LentTrace, EachTraceStartsAsZerosWhateverTheLastOneSet) {
    {
        LentTrace loud(64);
        std::fill_n(loud.data(), 64, 7.0f);
        loud.touched(64);
    }
    {
        // Longer than the room the last one left: the old part cleared, the new part zeros.
        LentTrace longer(100);
        ASSERT_EQ(longer.size(), 100u);
        EXPECT_TRUE(allZero(longer));
        longer.data()[3] = 1.0f;
        longer.data()[99] = -1.0f;
        longer.touched(1000); // past the trace: taken as the whole trace
    }
    {
        LentTrace shorter(8);
        EXPECT_TRUE(allZero(shorter));
    }
    LentTrace again(100);
    EXPECT_TRUE(allZero(again)) << "values past a shorter trace were cleared too";
}

TEST(LentTrace, AReadInsideAnotherHasRoomOfItsOwn) {
    LentTrace outer(16);
    outer.data()[0] = 5.0f;
    outer.touched(1);
    {
        LentTrace inner(16);
        EXPECT_NE(inner.data(), outer.data());
        EXPECT_TRUE(allZero(inner));
        std::fill_n(inner.data(), 16, 3.0f);
        inner.touched(16);
    }
    EXPECT_EQ(outer.data()[0], 5.0f);
    EXPECT_EQ(outer.data()[1], 0.0f);
    LentTrace next(16);
    EXPECT_TRUE(allZero(next));
}

TEST(LentTrace, ALoopStepClearsWhatTheTraceBeforeSetPastThisOne) {
    LentTrace trace(10);
    std::fill_n(trace.data(), 6, 2.0f);
    trace.holds(6);
    std::fill_n(trace.data(), 3, 4.0f); // a shorter trace: the file ends sooner
    trace.holds(3);
    EXPECT_EQ(trace.data()[2], 4.0f) << "what this trace set stays";
    for (size_t i = 3; i < 10; ++i)
        EXPECT_EQ(trace.data()[i], 0.0f) << i;
    trace.holds(0);
    EXPECT_TRUE(allZero(trace));
}
