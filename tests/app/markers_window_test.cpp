// The marker table window over the Spectrum view, offscreen: markers set by clicks on the bundled
// sample's tone fill its rows (frequency, level, distance to the marker before) as they are set,
// and a click on a row puts the frame round that marker in the view.
#include "app/main_window.h"
#include "app/markers_window.h"
#include "app/view_window.h"
#include "gui/sample_shell.h"
#include "platform/numeric.h"
#include "views/spectrum/spectrum_form.h"

#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>

using namespace kv;

namespace {

class MarkerTableWindow : public test::SampleShell {
  protected:
    /// A left click on column `x` of the plot, as the user sets a marker.
    void clickPlot(int x, int y) {
        const spectrum::PlotMargins m;
        const QPoint at(m.left + x, m.top + y);
        QTest::mouseMove(sw, at);
        QTest::mouseClick(sw, Qt::LeftButton, {}, at);
    }
    QString cell(int row, int column) const {
        const QTableWidgetItem* i = table->item(row, column);
        return i ? i->text() : QString();
    }

    QTableWidget* table = nullptr;
};

} // namespace

TEST_F(MarkerTableWindow, ListsTheMarkersAsTheyAreSetAndARowClickFramesItsMarker) {
    ASSERT_TRUE(sw && form);
    w->menuAction("mnuMarkers")->trigger();
    ASSERT_TRUE(w->markersWindow());
    EXPECT_TRUE(w->markersWindow()->isVisible());
    table = w->markersWindow()->table();
    EXPECT_EQ(table->rowCount(), 0);

    // The sample's tone at 4687.5 Hz of 24 kHz and its second and third harmonics (the noise
    // floor lies under the plot, so the columns between hold no curve).
    const auto& view = form->view();
    for (const int k : {1, 2, 3})
        clickPlot(int(std::lround(k * 4687.5 / 24000.0 * view.PlotW())), view.PlotH() / 2);
    ASSERT_EQ(w->state().MarkerCount, 3);
    ASSERT_EQ(table->rowCount(), 3);
    EXPECT_EQ(table->horizontalHeaderItem(1)->text().left(2), "F ");
    EXPECT_EQ(table->horizontalHeaderItem(2)->text(), "P (dBFS)");

    const auto& rec = form->markers().records;
    double before = 0;
    for (int r = 0; r < 3; ++r) {
        SCOPED_TRACE(r);
        EXPECT_EQ(cell(r, 0), QString::number(r + 1));
        // The frequency under the column clicked, in kHz as the read-out gives it.
        const double khz = cell(r, 1).toDouble();
        EXPECT_NEAR(khz, 24.0 * rec[size_t(r + 1)].x / view.PlotW(), 0.01);
        EXPECT_EQ(cell(r, 1).toStdString(), rec[size_t(r + 1)].lblSmH);
        // The level of the curve's row in that column, in whole dB of full scale.
        EXPECT_EQ(cell(r, 2).toStdString(), rec[size_t(r + 1)].lblSmB);
        const double level =
            std::trunc(-double(w->state().PlotRange) * rec[size_t(r + 1)].row / view.PlotH() +
                       w->state().Offset_Log);
        EXPECT_NEAR(cell(r, 2).toDouble(), level, 1.0);
        // The distance to the marker before; the first has none.
        if (r == 0)
            EXPECT_EQ(cell(r, 3), "");
        else
            EXPECT_NEAR(cell(r, 3).toDouble(), khz - before, 0.011);
        before = khz;
    }
    // The tone at -6 dBFS; the harmonics far under it, a harmonic's spacing apart.
    EXPECT_NEAR(cell(0, 2).toDouble(), -6.0, 1.0);
    EXPECT_LT(cell(1, 2).toDouble(), -50.0);
    EXPECT_NEAR(cell(2, 3).toDouble(), 4.69, 0.06);

    // A click on the second row frames the second marker in the view, and only it.
    const QRgb contrast =
        QColor(colorFromIni(w->state().FFT_BackColor) ^ 0x00FFFFFFu).rgb() & 0xFFFFFFu;
    const spectrum::PlotMargins m;
    auto framed = [&](int i) {
        const QImage pic = sw->picture();
        const QPoint c(m.left + rec[size_t(i)].x, m.top + rec[size_t(i)].row);
        int inFrame = 0; // the frame's left edge, beside the cross
        for (int dy = -5; dy <= 5; ++dy)
            inFrame += (pic.pixel(c.x() - 7, c.y() + dy) & 0xFFFFFFu) == contrast;
        return inFrame == 11;
    };
    EXPECT_FALSE(framed(1) || framed(2) || framed(3));
    const QRect cellRect = table->visualItemRect(table->item(1, 1));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cellRect.center());
    EXPECT_EQ(form->markers().MarkerHot, 2);
    EXPECT_TRUE(framed(2));
    EXPECT_FALSE(framed(1) || framed(3));
}
