// Span mode's band: set round the peak by auto-span, and kept on the same frequencies when the
// bin width changes. The span dialog sets it from typed figures (span_dialog.h).
#pragma once

namespace kv {

struct ProgramState;

/// The band round the peak while autotune is on: from PeakBin down to the first bin whose SpDisp
/// is under PeakDb - AutotuneLevel (SpanStart), and up to the first such bin (SpanEnd); a side
/// with none keeps its former edge. Span mode goes on with the band's frequencies and counts.
void AutoSpan(ProgramState& st);

/// The bin width changed (a new trace length) while span mode is on: the edges are found again
/// from SpanLowFreq and SpanHighFreq, then SpanWidth and SpanBinCount.
void respanForBinWidth(ProgramState& st);

} // namespace kv
