// The reference dialogs' windows: the spectrum's (`dlgRef`), the O-scope's (`TimeRef`) and the
// phase view's (`PhasaRef`), and the six-cell colour picker `dlgRefC` they share. Each is a thin
// form over its fields; every button runs the dialog's behaviour through the main window.
#pragma once

#include <functional>
#include <string>

class QWidget;

namespace kv {

struct Workbench;

/// Runs a dialog event the way the main window runs a command.
using CommandRunner = std::function<void(const std::function<void()>&)>;

/// Shows the dialog `name` modal over `parent`; a name that is no reference dialog does nothing.
void showReferenceDialog(QWidget* parent, Workbench& wb, const std::string& name,
                         const CommandRunner& run);

/// The colour picker: the chosen cell's decimal colour, or empty text for Cancel.
std::string pickReferenceColor(QWidget* parent);

} // namespace kv
