// A main window, offscreen, with the bundled sample open in its Spectrum view: where the widget
// tests that click on the view or its dialogs start.
#pragma once

#include "app/main_window.h"
#include "app/view_window.h"
#include "gui/gui_fixture.h"
#include "platform/scripted_host.h"
#include "views/spectrum/spectrum_form.h"

#include <memory>

namespace kv::test {

class SampleShell : public GuiTest {
  protected:
    SampleShell() {
        w = std::make_unique<MainWindow>(home.path(), &host);
        w->resize(1000, 700);
        w->show();
        w->importFile(kSample);
        sw = w->viewHost().viewWindow(ViewId::Spectrum);
        form = w->viewHost().modelOf<spectrum::SpectrumForm>(ViewId::Spectrum);
    }
    ~SampleShell() override { w->close(); }

    ScriptedHost host;
    std::unique_ptr<MainWindow> w;
    ViewWindow* sw = nullptr;
    spectrum::SpectrumForm* form = nullptr;
};

} // namespace kv::test
