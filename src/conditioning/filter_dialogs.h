// The GPR filter's read-out dialog (dlgFilterSel) and the FFT filter's dialog (dlgBoxFilter),
// with the menu and toolbar commands that open them. Each event is a plain function over the
// workbench and the fields the form shows; messages go through the host.
#pragma once

#include <string>

namespace kv {

struct Workbench;

/// What dlgFilterSel shows: the three label captions.
struct FilterSelFields {
    std::string lblLP = "LP", lblHP = "HP", lblFc = "Fc";
};

namespace dlgFilterSel {
/// LP (upper -10 dB point plus a tenth), HP (lower point less a tenth) and the centre between
/// the two points, each with its unit.
void Form_Load(Workbench& wb, FilterSelFields& f);
} // namespace dlgFilterSel

/// GPR Filter (menu and toolbar): measures the band of the trace on show and shows the read-out
/// modally. Nothing else changes.
void mnuGPR_Click(Workbench& wb);

/// What dlgBoxFilter shows: the two corners as typed, the index of each unit list ("Hz", "kHz",
/// "MHz"), and whether Apply went through the messages.
struct BoxFilterFields {
    std::string txtHP, txtLp;
    int Combo1 = 0, Combo2 = 0;
    bool applied = false;
};

namespace dlgBoxFilter {
/// Both unit lists take the unit of the frequency axis.
void Form_Load(Workbench& wb, BoxFilterFields& f);
/// A unit chosen for the high-pass corner is taken for the low-pass corner too.
void Combo1_Click(BoxFilterFields& f);
/// Apply: the corners are checked ("Enter value for HP", "Enter value for LP"), the band made
/// and the filter switched on; the spectrum and the O-scope show the filtered trace and the plot
/// range takes in the whole curve. True when the filter is on afterwards. A band whose taper
/// has no width ends the command with the filter left off.
bool Command1_Click(Workbench& wb, BoxFilterFields& f);
/// OK: applies first unless already applied. True when the dialog stays open.
bool OKButton_Click(Workbench& wb, BoxFilterFields& f);
/// Cancel: the filter goes off, the views show the plain trace, the command is released.
void CancelButton_Click(Workbench& wb, BoxFilterFields& f);
/// Closing without an Apply releases the command; an applied filter stays on.
void Form_Unload(Workbench& wb, BoxFilterFields& f);
} // namespace dlgBoxFilter

/// FFT filter (menu and toolbar button 48): opens the dialog beside the spectrum, or, when on,
/// switches the filter off.
void mnuBCF_Click(Workbench& wb);
/// The filter goes off with its menu tick and toolbar button (Span and Whitening do this).
void fftFilterOff(Workbench& wb);

} // namespace kv
