// The markers' records and their table.
#include "views/spectrum/markers.h"

#include "platform/numeric.h"
#include "state/program_state.h"

#include <QPainter>
#include <algorithm>

namespace kv::spectrum {

void MarkerSet::clear() {
    records = {};
    currentShown = false;
    MarkerHot = 0;
    MarkerRows.clear();
}

namespace dlgMarkers {

void LoadList(const ProgramState& st, const std::string& FreqUnit, MarkerTable& t) {
    const std::string u = st.YLinear ? " (%)" : st.dBFS_On ? " (dBFS)" : " (dBc)";
    t.rows.clear();
    t.headings = {"Nr", "F " + FreqUnit, "P" + u, "dF" + FreqUnit};
    t.widths = {0.1, 0.3, 0.3, 0.34};
}

void AddListItem(MarkerTable& t, const std::string& nr, const std::string& frequency,
                 const std::string& level, const std::string& distance) {
    t.rows.push_back({nr, frequency, level, distance});
}

void UpdateList(const ProgramState& st, MarkerSet& m, MarkerTable& t) {
    t.rows.clear();
    const int count = std::min<int>(st.MarkerCount, kMaxMarkers);
    for (int i = 1; i <= count; ++i) {
        MarkerRecord& r = m.records[size_t(i)];
        if (r.lblSmH == kEmptyMarker) continue;
        r.Label1 = std::to_string(i);
        std::string distance;
        if (i > 1)
            distance = shortestText(f32(Val(r.lblSmH) - Val(m.records[size_t(i - 1)].lblSmH)));
        AddListItem(t, r.Label1, r.lblSmH, r.lblSmB, distance);
    }
}

void ListView_Click(MarkerSet& m, const MarkerTable& t, int row) {
    if (row < 0 || size_t(row) >= t.rows.size()) return;
    m.MarkerHot = int16_t(Val(t.rows[size_t(row)].nr));
}

} // namespace dlgMarkers

void paintMarkers(QPainter& p, const MarkerSet& m, int count, QPoint origin, QColor c) {
    QPen pen(c);
    pen.setWidth(2);
    p.setPen(pen);
    const int last = std::min(count + (m.currentShown ? 1 : 0), kMaxMarkers);
    for (int i = 1; i <= last; ++i) {
        const MarkerRecord& r = m.records[size_t(i)];
        if (r.lblSmH == kEmptyMarker) continue;
        const int x = origin.x() + r.x, y = origin.y() + r.row;
        p.drawLine(x - 4, y - 4, x + 4, y + 4);
        p.drawLine(x - 4, y + 4, x + 4, y - 4);
        p.drawText(x + 6, y - 6, QString::number(i));
        if (m.MarkerHot == i) p.drawRect(x - 7, y - 7, 14, 14);
    }
}

} // namespace kv::spectrum
