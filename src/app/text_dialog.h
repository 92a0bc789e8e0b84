// `dlgText`: the four lines of free text of the active view, typed here and then dragged on the
// view. A thin form over the view's text and the dialog's behaviour.
#pragma once

#include <functional>

class QWidget;

namespace kv {

struct Workbench;
class ViewModel;

/// Shows the dialog for `view` (the active view's model) modal over `parent`; `changed` runs
/// after each button so the view's window repaints.
void showTextDialog(QWidget* parent, Workbench& wb, ViewModel& view,
                    const std::function<void()>& changed);

} // namespace kv
