// The O-scope's own commands reach the view from its toolbar keys and its menu entries, and only
// while the view is open.
#include "commands/commands.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

using namespace kv;

TEST(OscopeCommands, KeysAndMenuEntriesGoToTheOpenView) {
    test::Bench b;
    b.start();
    TB_event9(b.wb, "Flip");
    EXPECT_TRUE(b.views.log.empty()); // no O-scope, nothing to flip

    b.st.OscOpen = true;
    for (const char* key : {"ZoomIn", "ZoomOut", "NoZoom", "Flip", "MaxA", "MinA", "PtP", "Cursor"})
        TB_event9(b.wb, key);
    EXPECT_EQ(b.views.log,
              (std::vector<std::string>{"command O-scope mnuZoomIn", "command O-scope mnuZoomOut",
                                        "command O-scope mnuNoZoom", "command O-scope mnuFlip",
                                        "command O-scope mnuMxA", "command O-scope mnuMa",
                                        "command O-scope mnuPP", "command O-scope mnuCur"}));

    b.views.log.clear();
    b.cmd.enable("mnuCur");
    EXPECT_TRUE(menuCommand(b.wb, "mnuCur"));
    EXPECT_EQ(b.views.log, (std::vector<std::string>{"command O-scope mnuCur"}));
    EXPECT_TRUE(b.cmd.menu("mnuZoomIn").available);
    EXPECT_TRUE(b.cmd.menu("mnuVertZoom").available);
    EXPECT_TRUE(b.cmd.menu("mnuRefO").available) << "and its reference";
}
