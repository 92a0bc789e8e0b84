// How a spectrum of up to 32768 bins becomes a curve a few hundred pixels wide: the fold of bins
// into plot columns (each column keeps the largest value of its bins, so a single strong line
// stays visible at any width), the same for the span and for reference curves, what 0 dB means
// at the top of the plot, and where a value or a column lands in pixels.
#pragma once

#include <cstdint>

namespace kv {

struct ProgramState;

/// After each spectrum: folds the span (SpanActive) or the whole band (Sp_Bins back to N/2).
void SamToWidth(ProgramState& st);

/// Folds SpDisp[0..Sp_Bins-1] into ColVal, ColLogX, ColPhase with BinsPerColumn = Sp_Bins /
/// PlotColumns + 1 (whole part), then Sp_Bins = ColumnCount = the highest column index. The
/// phase is read at the same index as SpDisp, so it is the phase of the bin below. With
/// PlayRew and BackTraceTop >= 1 it folds BackDisp into BackCol, BackColLogX too. A PlotColumns
/// of 0 leaves the old columns.
void GenDraw(ProgramState& st);

/// Folds SpDisp from SpanStart to one beyond SpanEnd into SpanCol; SpanBins = ColumnCount =
/// the highest column index.
void GenDrawSpan(ProgramState& st);

/// The reference curves' fold: the span form while SpanActive (unless DrSet is 2), else the
/// full band.
void SamToWidth_Ref(ProgramState& st);
/// Folds each reference slot that is on or selected into RefCol/RefColLogX, with a column budget
/// scaled to the part of the band the reference covers.
void GenDraw_Ref(ProgramState& st);
/// Folds each reference slot that is on or selected over the span's frequencies.
void GenDrawSpan_Ref(ProgramState& st);

/// TopDb for the next draw: Offset_Log while dBFS_On (a fixed level in dB of full scale),
/// PeakDb otherwise (the peak reads 0 dBc).
void UpdateTopDb(ProgramState& st);

/// The first draw of a new data set: when Offset_Log is below PeakDb it becomes PeakDb + 2,
/// rounded, so that a strong signal starts on the plot. Clears NewDataSet.
void FirstDrawOffset(ProgramState& st);

/// PlotColumns for a plot `widthPixels` wide: half the width, rounded.
int32_t plotColumnsFor(double widthPixels);

/// Pixels per unit of a linear plot `h` pixels high: (h / FullScalePos) * 100 / Offset_Lin.
double LinScale(const ProgramState& st, double h);

/// Y in pixels (0 at the top) of a value in a dB plot: (value - TopDb) * h / -PlotRange.
double dbToY(double value, double topDb, double h, double plotRange);
/// Y in pixels of a value in a linear plot: h - value * LinScale.
double linearToY(const ProgramState& st, double value, double h);
/// Y of a displayed value in the plot's present unit (YLinear), `h` pixels high.
double valueToY(const ProgramState& st, double value, double h);

/// X in pixels of column j in a plot `w` pixels wide: j * w / ColumnCount on a linear axis,
/// ColLogX[j] * w / Log10(N/2) on a logarithmic one (DrSet 2, the column's peak bin decides),
/// j * w / (SpanBins - 1) in a span, whose last point is exactly w.
double columnToX(const ProgramState& st, int32_t j, double w);

} // namespace kv
