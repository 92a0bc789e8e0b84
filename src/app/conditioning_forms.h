// The thin Qt forms of the conditioning dialogs. Each owns its fields struct, copies its widgets
// into it on every event, runs the dialog's behaviour through the main window's command runner,
// and copies the fields back; placement and layout are all it decides.
#pragma once

#include <functional>
#include <string>

class QWidget;

namespace kv {

struct Workbench;

/// Runs one event of a dialog the way the main window runs a command.
using CommandRunner = std::function<void(const std::function<void()>&)>;

/// Shows the dialog whose form is `name` ("dlgBoxFilter", "dlgWhite", "ZenterFr", "dlgdB",
/// "dlgDoGain", "dlgAutotune", "dlgYscale", "dlgFilterSel"), modal or beside the views; false
/// when `name` is not one of them.
bool showConditioningForm(QWidget* parent, Workbench& wb, const std::string& name, bool modal,
                          const CommandRunner& run);
/// Closes the modeless form `name` if it is open, without running its events.
void closeConditioningForm(const std::string& name);

} // namespace kv
