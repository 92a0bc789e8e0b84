// The command-line tool's own code: a --trace position is placed by the workbench's rule.
#include "cli/commands.h"

#include "commands/lifecycle.h"

#include <gtest/gtest.h>

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
