// Grid positions and label texts of the Spectrum view.
#include "views/spectrum/spectrum_scales.h"

#include "platform/numeric.h"

#include <cmath>

namespace kv::spectrum {

namespace {

bool isWhole(double x) {
    return std::isfinite(x) && std::floor(x) == x;
}

/// Ten vertical lines at (i+1) * PlotW / 10.
std::vector<int> tenthLines(int PlotW) {
    std::vector<int> xs;
    const double step = PlotW / 10.0;
    for (int i = 0; i < 10; ++i)
        xs.push_back(toInt32((i + 1) * step));
    return xs;
}

/// A frequency with its own prefix glued on: "250", "1.5k", "2M".
std::string frequencyLabel(double hz) {
    const FrequencyUnit u = frequencyUnit(hz);
    return pictureText(hz * u.scale, "##0.00") + u.prefix;
}

/// The divisor of a logarithmic count: 1 for 1..10, 10 for 20..100, 100 for 200..1000 and so
/// on by decades; 0 in the gaps (11..19, 101..199 ...), where no mark stands.
long long logDivisor(long long i) {
    if (i >= 1 && i <= 10) return 1;
    for (long long d = 10; d <= i; d *= 10)
        if (i >= 2 * d && i <= 10 * d) return d;
    return 0;
}

} // namespace

double Log10(double x, float fullScalePos) {
    if (x == 0.0) return -double(fullScalePos) / 2.0;
    return std::log(x) / std::log(10.0);
}

std::string pictureText(double x, std::string_view picture) {
    return shortestText(throughPicture(x, picture));
}

FrequencyUnit frequencyUnit(double hz) {
    if (hz > 1e6) return {"MHz", "M", 1e-6};
    if (hz > 1e3) return {"kHz", "k", 1e-3};
    return {"Hz", "", 1.0};
}

XAxis ShowX_lab(int PlotW, double MaxFreq, double SpanFactor) {
    XAxis a;
    a.GridXs = tenthLines(PlotW);
    const double top = MaxFreq / SpanFactor;
    double scale = 1.0;
    std::string prefix;
    if (top > 1e3) {
        prefix = " k";
        scale = 1e-3;
    }
    if (top > 1e6) {
        prefix = " M";
        scale = 1e-6;
    }
    const double step = top / 10.0 * scale;
    for (int i = 0; i < 10; ++i)
        a.labels.push_back(
            {.text = pictureText((i + 1) * step, "###0.0"), .left = a.GridXs[size_t(i)]});
    a.stepText = pictureText(step, "###0.00") + prefix + "Hz/" + "div";
    a.unitText = "( " + prefix + "Hz" + ")";
    return a;
}

XAxis spanXAxis(int PlotW, double SpanLowFreq, double SpanWidth) {
    XAxis a;
    a.GridXs = tenthLines(PlotW);
    const double step = SpanWidth / 10.0;
    for (int i = 0; i < 10; ++i)
        a.labels.push_back(
            {.text = frequencyLabel(SpanLowFreq + i * step), .left = toInt32(i * PlotW / 10.0)});
    const FrequencyUnit u = frequencyUnit(step);
    a.stepText = pictureText(step * u.scale, "##0.00") + u.unit + "/Div";
    a.unitText = "( " + u.unit + " )";
    return a;
}

XAxis DrawXLog(int PlotW, int Sp_Samples, double MaxFreq, double BinWidth, float fullScalePos) {
    XAxis a;
    a.unitText = "Frequency Hz";
    const double K = PlotW / Log10(Sp_Samples / 2.0, fullScalePos);
    double m = 1.0;
    if (MaxFreq > 1e9)
        m = 1e4;
    else if (MaxFreq > 1e7)
        m = 1e3;
    else if (MaxFreq > 1e6)
        m = 1e2;
    const long long last = static_cast<long long>(roundHalfEven(MaxFreq / m));
    for (long long i = 0; i <= last; ++i) {
        const long long d = logDivisor(i);
        if (d <= 0 || i % d != 0) continue;
        const double f = double(i) * m;
        const double x = K * Log10(f / BinWidth, fullScalePos);
        if (!(x >= 1.0) || x >= PlotW) continue;
        a.GridXs.push_back(toInt32(x));
        a.labels.push_back({.text = frequencyLabel(f), .left = toInt32(x)});
    }
    return a;
}

YAxis DrawYLinear(double O, int PlotH) {
    YAxis a;
    double s = 0.0;
    if (O <= 100) {
        for (int d = 20; d >= 1 && s == 0.0; --d)
            if (isWhole(O / d)) s = d;
    } else if (O <= 1000) {
        s = 10;
    } else if (O <= 10000) {
        s = 100;
    }
    if (s == 0.0) s = O / 10;
    int n = toInt32(O / s);
    if (n < 5)
        for (int d = 1; d <= 10; ++d)
            if (isWhole(O / d)) {
                s = O / d;
                n = d;
            }
    if (n < 5) {
        s = 0.5;
        n = toInt32(O / 0.5);
        if (n == 0) {
            s = 0.2;
            n = toInt32(O / 0.2);
        }
        if (n < 5) {
            s = 0.1;
            n = toInt32(O / 0.1);
        }
    }
    a.step = s;
    a.lbly.push_back(shortestText(O));
    for (int i = 1; i <= n; ++i) {
        a.GridYs.push_back(toInt32(double(i) * PlotH / n));
        a.lbly.push_back(shortestText(O - i * s));
    }
    return a;
}

YAxis DrawYDb(double T, double R, int PlotH) {
    static const double kFine[] = {0.1, 0.2, 0.25, 0.5, 0.75, 1, 2};
    static const double kCoarse[] = {2,   5,   10,  20,  25,  50,   100, 150,
                                     200, 250, 300, 350, 400, 1000, 4000};
    YAxis a;
    a.lbly.push_back(shortestText(T));
    int n = 0;
    auto pick = [&](const double* c, size_t count) {
        for (size_t k = 0; k < count; ++k) {
            const int m = toInt32(R / c[k]);
            if (m >= 4 && m <= 8) {
                a.step = c[k];
                n = m;
                return;
            }
        }
    };
    if (R < 11)
        pick(kFine, std::size(kFine));
    else
        pick(kCoarse, std::size(kCoarse));
    for (int i = 1; i <= n; ++i) {
        a.GridYs.push_back(toInt32(double(i) * PlotH / n));
        a.lbly.push_back(shortestText(T - i * a.step));
    }
    return a;
}

std::string yAxisText(bool YLinear, bool dBFS_On, double dbStep) {
    if (YLinear) return "Percent Full Scale (%)";
    return shortestText(dbStep) + (dBFS_On ? " dBFS/Div" : " dBc/Div");
}

PeakText peakText(bool dBFS_On, double PeakDb, double PeakFreq) {
    const FrequencyUnit u = frequencyUnit(PeakFreq);
    const std::string freq = pictureText(PeakFreq * u.scale, "###0.00");
    PeakText t;
    if (dBFS_On)
        t.status = "Peak: " + pictureText(PeakDb, "##0.0") + " dBFS " + freq + u.unit;
    else
        t.status = "Peak: 0 dBc " + freq + u.unit;
    t.label = "Peak: = " + freq + u.unit;
    return t;
}

float levelLineY(bool dBFS_On, double LevelDb, double Offset_Log, double PlotRange, int h) {
    const double perPixel = -PlotRange / h;
    return f32(dBFS_On ? (LevelDb - Offset_Log) / perPixel : LevelDb / perPixel);
}

} // namespace kv::spectrum
