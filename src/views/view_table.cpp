// The rows of the views.
#include "views/view_table.h"

#include "views/oscilloscope/oscope_view.h"
#include "views/phase/phase_view.h"
#include "views/radargram/radargram_view.h"
#include "views/spectrum/spectrum_form.h"
#include "views/summary_view.h"
#include "views/waterfall/waterfall_view.h"

namespace kv {

namespace {

template <class Model> std::unique_ptr<ViewModel> make(Workbench& wb) {
    return std::make_unique<Model>(wb);
}

template <ViewId V> std::unique_ptr<ViewModel> makeSummary(Workbench& wb) {
    return std::make_unique<SummaryView>(wb, V);
}

} // namespace

const std::map<ViewId, ViewRow>& viewTable() {
    static const std::map<ViewId, ViewRow> table = {
        {ViewId::Oscope, {"O-scope view", &make<oscope::OscopeView>}},
        {ViewId::Spectrum, {"Spectrum view", &make<spectrum::SpectrumForm>}},
        {ViewId::Phase, {"Phase view", &make<phase::PhaseView>}},
        {ViewId::Waterfall, {"Waterfall view", &make<waterfall::WaterfallView>}},
        {ViewId::Radargram, {"Waterfall view", &make<radargram::RadargramView>}},
    };
    return table;
}

} // namespace kv
