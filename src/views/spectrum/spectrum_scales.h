// The frame of the Spectrum view: where its grid lines stand and what its axis labels, unit
// texts and peak read-out say, for a linear, a span or a logarithmic frequency axis and a dB or
// a linear level axis. Pure arithmetic on the settings, so every label is testable by itself.
#pragma once

#include "views/view_label.h"

#include <string>
#include <string_view>
#include <vector>

namespace kv::spectrum {

/// The view's own Log10: 0 exactly gives -FullScalePos / 2, any other x ln(x) / ln(10).
double Log10(double x, float fullScalePos);

/// A number as the labels show it: through `picture` and back, in its shortest text, so that
/// trailing zeros fall away (2400.0 in "###0.0" shows "2400").
std::string pictureText(double x, std::string_view picture);

/// The unit of a frequency: "Hz" up to 1000 Hz, "kHz" above, "MHz" above 10^6 (strictly).
struct FrequencyUnit {
    std::string unit;   // "Hz", "kHz", "MHz"
    std::string prefix; // "", "k", "M"
    double scale = 1.0; // 1, 10^-3, 10^-6
};
FrequencyUnit frequencyUnit(double hz);

/// The frequency axis: vertical grid lines, the labels under them, the unit text under the
/// axis and the step text ("2.4 kHz/div" for the status bar, "250Hz/Div" in a span). A label's
/// `left` is the plot column it belongs to; the view that shows it centres its text there.
struct XAxis {
    std::vector<int> GridXs;
    std::vector<Label> labels;
    std::string unitText;
    std::string stepText;
};

/// Full band, linear: ten lines at (i+1) * PlotW / 10, labelled with the tenths of
/// MaxFreq / SpanFactor.
XAxis ShowX_lab(int PlotW, double MaxFreq, double SpanFactor);
/// A span: the same lines, labels from SpanLowFreq in tenths of SpanWidth, each with its own
/// prefix.
XAxis spanXAxis(int PlotW, double SpanLowFreq, double SpanWidth);
/// Logarithmic: marks at 1, 2 .. 10, 20 .. 100, 200 ... times a multiplier that follows
/// MaxFreq, at x = PlotW / Log10(Sp_Samples / 2) * Log10(f / BinWidth).
XAxis DrawXLog(int PlotW, int Sp_Samples, double MaxFreq, double BinWidth, float fullScalePos);

/// The level axis: horizontal grid lines 1..n and labels 0..n from the top edge down.
struct YAxis {
    std::vector<int> GridYs;
    std::vector<std::string> lbly;
    double step = 0.0;
};
/// Linear: the top is Offset_Lin percent of full scale, divided in a round step.
YAxis DrawYLinear(double Offset_Lin, int PlotH);
/// dB: the top is `top` (Offset_Log in dBFS, 0 in dBc), the span `range` dB, in 4 to 8 steps
/// from a fixed list of candidates; none fitting leaves only the top label.
YAxis DrawYDb(double top, double range, int PlotH);
/// The name of the level axis: "Percent Full Scale (%)", or the dB step with " dBc/Div" or
/// " dBFS/Div".
std::string yAxisText(bool YLinear, bool dBFS_On, double dbStep);

/// The peak read-out: the status panel's text and the label over the plot.
struct PeakText {
    std::string status;
    std::string label;
};
PeakText peakText(bool dBFS_On, double PeakDb, double PeakFreq);

/// The row of the level line: y = (LevelDb - Offset_Log) / (-PlotRange / h) with dBFS, and
/// LevelDb / (-PlotRange / h) without.
float levelLineY(bool dBFS_On, double LevelDb, double Offset_Log, double PlotRange, int h);

} // namespace kv::spectrum
