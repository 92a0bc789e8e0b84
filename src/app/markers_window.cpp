// The marker table's window.
#include "app/markers_window.h"

#include "views/spectrum/spectrum_form.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kv {

MarkersWindow::MarkersWindow(QWidget* parent, std::function<spectrum::SpectrumForm*()> form,
                             std::function<void(int)> rowClicked)
    : QDialog(parent), form_(std::move(form)), table_(new QTableWidget(this)) {
    setObjectName(QStringLiteral("dlgMarkers"));
    setWindowTitle(QStringLiteral("Markers"));
    table_->setObjectName(QStringLiteral("ListView1"));
    table_->setColumnCount(4);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->verticalHeader()->hide();
    auto* l = new QVBoxLayout(this);
    l->addWidget(table_);
    resize(320, 300);
    connect(table_, &QTableWidget::cellClicked, this,
            [rowClicked = std::move(rowClicked)](int row, int) { rowClicked(row); });
}

void MarkersWindow::refill() {
    spectrum::SpectrumForm* f = form_();
    if (!f) {
        table_->setRowCount(0);
        return;
    }
    const spectrum::MarkerTable& t = f->markerTable();
    QStringList heads;
    for (const auto& h : t.headings)
        heads << QString::fromStdString(h);
    table_->setHorizontalHeaderLabels(heads);
    const int w = std::max(table_->viewport()->width(), 100);
    for (int c = 0; c < 4; ++c)
        table_->setColumnWidth(c, int(w * t.widths[size_t(c)]));
    table_->setRowCount(int(t.rows.size()));
    for (int r = 0; r < int(t.rows.size()); ++r) {
        const auto& row = t.rows[size_t(r)];
        int c = 0;
        for (const std::string* s : {&row.nr, &row.frequency, &row.level, &row.distance})
            table_->setItem(r, c++, new QTableWidgetItem(QString::fromStdString(*s)));
    }
}

} // namespace kv
