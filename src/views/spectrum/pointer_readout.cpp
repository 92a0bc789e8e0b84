// The pointer read-out of the Spectrum view.
#include "views/spectrum/pointer_readout.h"

#include "platform/numeric.h"
#include "views/spectrum/spectrum_scales.h"

#include <cmath>

namespace kv::spectrum {

std::optional<PointerText> PointerFreqOnly(const PointerInput& in) {
    if (in.PointerX < 0 || in.PointerX >= in.PlotW) return std::nullopt;
    if (in.PointerY < 0 || in.PointerY >= in.PlotH) return std::nullopt;
    PointerText t;
    t.row = in.MarkerMode ? in.MarkerRow : static_cast<int>(in.PointerY);
    t.showLines = !in.MarkerMode;

    double f = 0;
    if (in.DrSet == 2) {
        const double K = in.PlotW / Log10(in.Sp_Samples / 2.0, in.FullScalePos);
        f = in.BinWidth * std::pow(10.0, in.PointerX / K);
    } else if (in.SpanActive) {
        f = in.PointerX / (in.ScaleWidth / (in.SpanHighFreq - in.SpanLowFreq)) + in.SpanLowFreq;
    } else {
        f = in.MaxFreq * in.PointerX / in.ScaleWidth;
    }
    double v = f;
    t.FreqUnit = "Hz";
    if (1e3 < f) {
        v = f * 1e-3;
        t.FreqUnit = "kHz";
    }
    if (1e6 < f) {
        v = f * 1e-6;
        t.FreqUnit = "MHz";
    }
    t.FreqShown = f;
    t.lblTime = pictureText(v, "###0.00");
    t.lblMyFr = "F = " + t.lblTime + t.FreqUnit;
    return t;
}

std::optional<PointerText> PointerReadout(const PointerInput& in) {
    auto t = PointerFreqOnly(in);
    if (!t) return t;
    // The level of a row, kept in single precision as the plot's scale is.
    const float row = in.MarkerMode ? float(in.MarkerRow) : in.PointerY;
    const float H = in.ScaleHeight;
    float level = 0;
    std::string unit;
    if (in.YLinear) {
        level = in.Offset_Lin / H * (float(in.PlotH) - row);
        unit = in.MarkerMode ? "%  " : " % ";
    } else if (in.dBFS_On) {
        level = -(float(in.PlotRange) / H * row) + float(in.Offset_Log);
        unit = "dBFS  ";
    } else {
        level = -(float(in.PlotRange) / H * row);
        unit = "dBc  ";
    }
    if (in.MarkerMode) level = f32(Fix(level));
    t->lbldB = shortestText(level) + unit;
    return t;
}

} // namespace kv::spectrum
