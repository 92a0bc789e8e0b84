// What the Spectrum view reads out while a mouse button is held over its plot: the frequency
// under the pointer on a linear, span or logarithmic axis, the level of the pointer's row, and
// the texts of the two labels beside the cross.
#pragma once

#include <optional>
#include <string>

namespace kv::spectrum {

/// Everything the read-out depends on, in the plot's pixel scale.
struct PointerInput {
    float PointerX = 0, PointerY = 0; // pointer in the plot
    int PlotW = 0, PlotH = 0;         // plot size when the button went down
    float ScaleWidth = 0, ScaleHeight = 0;
    int DrSet = 1;
    bool SpanActive = false;
    double MaxFreq = 0, SpanLowFreq = 0, SpanHighFreq = 0, BinWidth = 0;
    int Sp_Samples = 0;
    float FullScalePos = 0;
    bool YLinear = false, dBFS_On = true;
    float Offset_Lin = 100;
    int PlotRange = 100, Offset_Log = 0;
    bool MarkerMode = false;
    int MarkerRow = 0;
};

struct PointerText {
    double FreqShown = 0;   // Hz
    std::string FreqUnit;   // "Hz", "kHz", "MHz"
    std::string lblTime;    // the number alone
    std::string lblMyFr;    // "F = " number unit
    std::string lbldB;      // level and its unit
    int row = 0;            // row of the horizontal line
    bool showLines = false; // the cross shows outside marker mode only
};

/// The frequency half: the edge guards, then the frequency and its unit. Nothing when the
/// pointer is outside the plot (on its right or bottom edge included).
std::optional<PointerText> PointerFreqOnly(const PointerInput& in);
/// The whole read-out: frequency and level.
std::optional<PointerText> PointerReadout(const PointerInput& in);

} // namespace kv::spectrum
