// The marker table `dlgMarkers`: a modeless window beside the Spectrum view listing the markers
// set (number, frequency, level, distance to the marker before). A click on a row highlights
// that marker's frame in the view.
#pragma once

#include <QDialog>
#include <functional>

class QTableWidget;

namespace kv {

namespace spectrum {
class SpectrumForm;
}

class MarkersWindow : public QDialog {
    Q_OBJECT
  public:
    /// `form` gives the markers; `rowClicked` runs a row click as a command.
    MarkersWindow(QWidget* parent, std::function<spectrum::SpectrumForm*()> form,
                  std::function<void(int)> rowClicked);
    /// Shows the table as the view's markers stand now.
    void refill();
    QTableWidget* table() const { return table_; }

  private:
    std::function<spectrum::SpectrumForm*()> form_;
    QTableWidget* table_;
};

} // namespace kv
