// The span dialog (ZenterFr) and its command: a centre frequency and a span, each with its own
// unit, checked against the band, then the same bins folded anew across the whole plot.
#pragma once

#include <string>

namespace kv {

struct Workbench;

/// What ZenterFr shows and keeps: the two figures as typed, the unit list indexes, and its form
/// fields.
struct SpanFields {
    std::string txtCenter, txtSp;
    int Combo1 = 0, Combo2 = 0;
    bool InputBad = false;
    float HalfSpan = 0.0f;
    bool Applied = false;
};

namespace ZenterFr {
/// Both units "Hz"; not applied.
void Form_Load(Workbench& wb, SpanFields& f);
/// A new centre unit drags the span unit along (not the other way round).
void Combo1_Click(SpanFields& f);
/// txtCenter into CenterFreq; empty or below 0 sets InputBad and leaves it unread.
void ReadCenter(Workbench& wb, SpanFields& f);
/// txtSp into SpanFreq and HalfSpan, the same way.
void ReadSpan(Workbench& wb, SpanFields& f);
/// Apply: the checks in order with their messages, DrSet 1, the band in bins, span mode on.
/// True when span mode was switched on.
bool Command1_Click(Workbench& wb, SpanFields& f);
/// OK: unloads at once after a successful Apply, else applies. True when the dialog stays open.
bool OKButton_Click(Workbench& wb, SpanFields& f);
/// Cancel: span mode off, the full band drawn, the command released.
void CancelButton_Click(Workbench& wb, SpanFields& f);
} // namespace ZenterFr

/// Span (menu and toolbar button 33): opens the dialog (the FFT filter and whitening go off), or,
/// when on, leaves span mode.
void mnuSpan_Click(Workbench& wb);

} // namespace kv
