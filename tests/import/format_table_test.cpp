// The format table: what the dialog, the command line and the choice of reader derive from it,
// and that an entry appended after the twelve shows up everywhere without moving them.
#include "import/file_filters.h"
#include "import/format_table.h"

#include <gtest/gtest.h>

using namespace kv;

namespace {

/// The entry the next format would add: several extensions, one of them shared with an
/// existing entry, and a flag of its own (IsProject stands in for it here).
ImportEntry appendedEntry() {
    return {.name = "NEXT",
            .dialogText = "Next format (*.sgy;*.nxt)|*.sgy;*.nxt|",
            .extensions = {"SGY", "NXT"},
            .flag = &ProgramState::IsProject,
            .showVerticalBefore = 2};
}

} // namespace

TEST(FormatTable, EachDefaultTypeListsItsOwnEntryFirstAndEveryEntryOnce) {
    const FormatTable& t = formatTable();
    const char* first[12] = {"WAV",  "SHT", "DZT", "RD3", "SEISMIC", "RADSYS",
                             "SEG2", "DT1", "ZON", "CSV", "DAT",     "SPRSCAN"};
    for (int fil = 1; fil <= 12; ++fil) {
        const std::vector<size_t> order = t.order(fil);
        ASSERT_EQ(order.size(), t.rows().size()) << fil;
        EXPECT_STREQ(t.row(order[0]).name, first[fil - 1]) << fil;
        std::vector<size_t> sorted = order;
        std::sort(sorted.begin(), sorted.end());
        for (size_t i = 0; i < sorted.size(); ++i)
            EXPECT_EQ(sorted[i], i) << "Fil " << fil << " lists an entry twice";
    }
    EXPECT_EQ(t.order(0), t.order(1)) << "a default type out of range takes the first order";
    EXPECT_EQ(t.order(13), t.order(1));
    // The twelve in their order; entries appended later follow them.
    EXPECT_TRUE(
        t.names().starts_with("WAV SHT DZT RD3 SEISMIC RADSYS SEG2 SPRSCAN DT1 ZON CSV DAT"))
        << t.names();
}

TEST(FormatTable, TheChosenEntryDecidesBetweenEntriesOfOneExtension) {
    const FormatTable& t = formatTable();
    ProgramState st;
    t.detect(st, "x.sgy", t.find("RADSYS"));
    EXPECT_TRUE(st.IsSgy);
    EXPECT_TRUE(st.IsRadsys);
    EXPECT_STREQ(t.active(st)->name, "RADSYS");
    t.detect(st, "x.sgy", t.find("WAV"));
    EXPECT_FALSE(st.IsRadsys) << "an entry of another format is the Seismic entry";
    EXPECT_STREQ(t.active(st)->name, "SEISMIC");
    t.detect(st, "x.sg2", t.find("SPRSCAN"));
    EXPECT_TRUE(st.IsSprScan);
    EXPECT_STREQ(t.active(st)->name, "SPRSCAN");
    t.detect(st, "x.sg2", std::nullopt);
    EXPECT_FALSE(st.IsSprScan) << "a filter index outside the list is not SPRScan ERA";
    EXPECT_STREQ(t.active(st)->name, "SEG2");
    t.clearFlags(st);
    EXPECT_EQ(t.active(st), nullptr);
}

TEST(FormatTable, AnAppendedEntryComesAfterTheTwelveEverywhereAndMovesNoneOfThem) {
    FormatTable t = formatTable();
    t.append(appendedEntry());
    const size_t added = t.rows().size() - 1;
    const int position = int(t.rows().size());
    const std::string text = appendedEntry().dialogText;
    for (int fil = 1; fil <= 12; ++fil) {
        SCOPED_TRACE(fil);
        EXPECT_EQ(t.dialogFilter(fil), importFilter(fil) + text);
        EXPECT_EQ(t.filterIndexOf(fil, added), position);
        EXPECT_EQ(t.rowAt(fil, position), added);
        for (int k = 1; k <= 12; ++k)
            EXPECT_EQ(t.rowAt(fil, k), formatTable().rowAt(fil, k));
        EXPECT_EQ(t.filterIndexOf(fil, *t.find("RADSYS")), RadsysIndex(fil));
        EXPECT_EQ(t.filterIndexOf(fil, *t.find("SPRSCAN")), SprScanIndex(fil));
    }
    // --filter names, the command-line help and the tests' extension list.
    EXPECT_EQ(t.find("next"), added);
    EXPECT_TRUE(t.names().ends_with(" NEXT"));
    EXPECT_EQ(t.extensions().back(), "nxt");
    EXPECT_EQ(t.extensions().size(), formatTable().extensions().size() + 1) << "sgy once";

    // Extension detection: its own extension finds it; the shared one keeps finding the Seismic
    // entry unless the dialog's choice was the new entry.
    EXPECT_EQ(t.filterIndexForFile(1, "dir/line.NXT"), position);
    EXPECT_EQ(t.filterIndexForFile(1, "dir/line.sgy"), 5);
    ProgramState st;
    t.detect(st, "line.nxt", t.rowAt(1, 1));
    EXPECT_TRUE(st.IsProject);
    EXPECT_EQ(t.active(st), &t.row(added));
    t.detect(st, "line.sgy", t.rowAt(1, 1));
    EXPECT_TRUE(st.IsSgy);
    EXPECT_FALSE(st.IsProject);
    t.detect(st, "line.sgy", added);
    EXPECT_TRUE(st.IsProject);
    EXPECT_FALSE(st.IsSgy);
}

TEST(FormatTable, ADialogPositionGivesTheRowAtThatPlaceOfTheOrder) {
    FormatTable appended = formatTable();
    appended.append(appendedEntry());
    // An order that names a row from the middle: unnamed rows before and after it follow.
    std::vector<ImportEntry> rows = formatTable().rows();
    const FormatTable partial(rows, {"DT1 SEISMIC"});
    const FormatTable unordered(rows, {});
    for (const FormatTable* t : std::initializer_list<const FormatTable*>{&formatTable(), &appended,
                                                                          &partial, &unordered}) {
        for (int fil = 0; fil <= 13; ++fil) {
            const std::vector<size_t> order = t->order(fil);
            for (int k = -1; k <= int(order.size()) + 1; ++k) {
                SCOPED_TRACE(testing::Message() << "Fil " << fil << ", position " << k);
                if (k >= 1 && k <= int(order.size()))
                    EXPECT_EQ(t->rowAt(fil, k), order[size_t(k - 1)]);
                else
                    EXPECT_EQ(t->rowAt(fil, k), std::nullopt);
            }
        }
    }
    EXPECT_EQ(partial.rowAt(1, 3), 0u) << "then the table's first row";
}

TEST(FormatTable, ADialogOrderNamingAnUnknownOrRepeatedEntryIsRefused) {
    std::vector<ImportEntry> rows = {appendedEntry()};
    EXPECT_THROW(FormatTable(rows, {"NEXT NOPE"}), std::logic_error);
    EXPECT_THROW(FormatTable(rows, {"NEXT NEXT"}), std::logic_error);
    EXPECT_NO_THROW(FormatTable(rows, {"next"}));
}
