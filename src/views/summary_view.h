// What a view without a model of its own yet shows (the waterfall and the radargram): its name,
// the data set and the trace on show, as text.
#pragma once

#include "state/view_host.h"
#include "views/view_model.h"

#include <QSize>

namespace kv {

struct Workbench;

class SummaryView : public ViewModel {
  public:
    SummaryView(Workbench& wb, ViewId v) : wb_(wb), v_(v) {}

    void load(int width, int height) override { resize(width, height); }
    void resize(int width, int height) override { size_ = QSize(width, height); }
    void unload() override {}
    // The text is written afresh for every picture: nothing to keep up to date.
    void redraw() override {}
    void traceChanged() override {}
    /// "Waterfall view", a blank line, the file, "94 traces of 1024 samples at 48000 Hz" and
    /// "trace 7".
    QImage picture() const override;
    /// Its lines stand centred in the picture, sized to it: no labels to keep whole.
    std::vector<Label> visibleLabels() const override { return {}; }
    void mousePress(int, int, int) override {}
    void mouseMove(int, int, int) override {}
    void mouseRelease(int, int, int) override {}

  private:
    Workbench& wb_;
    ViewId v_;
    QSize size_; // no scroll bar on show: its rectangle stays empty
};

} // namespace kv
