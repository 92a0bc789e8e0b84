// The whitening dialog (dlgWhite) and its command: the band is typed with its units, Apply scans
// the whole data set for the band's constant (with progress and Cancel) and switches whitening
// on.
#pragma once

#include <string>

namespace kv {

struct Workbench;

/// What dlgWhite shows: the lower and higher frequency as typed, the unit list indexes, and
/// whether Apply went through the messages.
struct WhiteFields {
    std::string txtHP, txtLp;
    int Combo1 = 0, Combo2 = 0;
    bool applied = false;
};

namespace dlgWhite {
void Form_Load(Workbench& wb, WhiteFields& f);
/// A unit chosen for the lower frequency is taken for the higher one too.
void Combo1_Click(WhiteFields& f);
/// Apply: checks ("Enter value for Lower Frequency", "Enter value for Higher Frequency"), the
/// band, the scan over every trace, whitening on, the views redrawn with the whole curve on the
/// plot. True when whitening is on afterwards; a scan the user cancels leaves it off and the
/// band as it was.
bool Command1_Click(Workbench& wb, WhiteFields& f);
/// OK: applies first unless already applied. True when the dialog stays open.
bool OKButton_Click(Workbench& wb, WhiteFields& f);
/// Cancel: whitening off, the views redrawn, the command released.
void CancelButton_Click(Workbench& wb, WhiteFields& f);
/// Closing without an Apply releases the command.
void Form_Unload(Workbench& wb, WhiteFields& f);
} // namespace dlgWhite

/// Whitening (menu and toolbar button 47): on, the dialog opens and Autotune, Span and the FFT
/// filter go off; when on, whitening goes off.
void mnuWhite_Click(Workbench& wb);
/// Whitening off with its menu tick and toolbar button (Span and Autotune do this).
void whiteningOff(Workbench& wb);

} // namespace kv
