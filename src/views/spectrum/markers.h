// Markers on the Spectrum view: up to 20 pins on the curve, each a small cross with its number,
// read from what is on screen (the first pixel of the trace colour down the pointer's column).
// The table `dlgMarkers` lists them with their frequency, level and the distance in frequency
// to the marker before; a click on a row highlights that marker's frame.
#pragma once

#include <QColor>
#include <QPoint>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

class QPainter;

namespace kv {
struct ProgramState;
}

namespace kv::spectrum {

inline constexpr int kMaxMarkers = 20;
/// What an empty record says.
inline constexpr const char* kEmptyMarker = "Label2";

/// One marker: its texts as the table shows them, and where it stands on the plot.
struct MarkerRecord {
    std::string lblSmH = kEmptyMarker; // frequency, a number in the unit of the read-out
    std::string lblSmB = kEmptyMarker; // level, a whole number in the plot's unit
    std::string Label1;                // its number
    int x = 0, row = 0;                // the cross's centre, plot pixels
};

/// The markers of the view: records 1 to 20 (0 is unused), the current one that follows the
/// pointer in marker mode, the highlighted one, and whether the table is open.
struct MarkerSet {
    std::array<MarkerRecord, kMaxMarkers + 2> records{};
    bool currentShown = false; // the cross of the marker being placed (MarkerCount + 1)
    int16_t MarkerHot = 0;     // the number whose frame shows, 0 none
    int16_t MarkerShown = 0;   // the count when the mode was last left
    bool MarkerTableOn = false;
    bool MarkersActive = false; // marker mode was used since the last NoMarkers
    std::vector<double> MarkerRows;

    /// Every record empty, nothing highlighted.
    void clear();
};

/// One row of the table.
struct MarkerRow {
    std::string nr, frequency, level, distance;
};

/// What the table shows: its four column headings with their shares of the width, its rows.
struct MarkerTable {
    std::array<std::string, 4> headings;
    std::array<double, 4> widths{};
    std::vector<MarkerRow> rows;
};

namespace dlgMarkers {
/// The headings: "Nr"; "F " and the frequency unit; "P" and the level unit of the Y scale as it
/// is now (" (%)", " (dBFS)", " (dBc)"); "dF" and the frequency unit.
void LoadList(const ProgramState& st, const std::string& FreqUnit, MarkerTable& t);
/// The rows of markers 1 to MarkerCount that were set; the first has no distance.
void UpdateList(const ProgramState& st, MarkerSet& m, MarkerTable& t);
void AddListItem(MarkerTable& t, const std::string& nr, const std::string& frequency,
                 const std::string& level, const std::string& distance);
/// A click on row `row` (0-based): that marker's frame is highlighted.
void ListView_Click(MarkerSet& m, const MarkerTable& t, int row);
} // namespace dlgMarkers

/// Paints markers 1 to `count` (and the current one while it shows) over a plot whose corner
/// is `origin`: a cross of two short lines, the number just right of it and above, and the
/// frame of the highlighted marker.
void paintMarkers(QPainter& p, const MarkerSet& m, int count, QPoint origin, QColor c);

} // namespace kv::spectrum
