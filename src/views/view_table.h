// Every view of the workbench, one row each: the caption of its window and how its model is
// made. The hosts bring a view up from its row and then talk to it through ViewModel only, so a
// new view is its model and one row here.
#pragma once

#include "state/view_host.h"
#include "views/view_model.h"

#include <map>
#include <memory>

namespace kv {

struct Workbench;

struct ViewRow {
    /// The caption of the view's window, as the command model names the view ("O-scope view").
    const char* caption;
    std::unique_ptr<ViewModel> (*make)(Workbench& wb);
};

const std::map<ViewId, ViewRow>& viewTable();

} // namespace kv
