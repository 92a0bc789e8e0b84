// The fold of bins into plot columns and the pixel mappings. The fold keeps the maximum of each
// column, and where two bins are equal the later one; these choices decide which frequency a
// cursor reads on a log axis, so they are kept exactly.
#include "engine/display_map.h"

#include "engine/batch_math.h"
#include "engine/spectrum.h"
#include "platform/numeric.h"
#include "state/program_state.h"

#include <algorithm>
#include <cmath>

namespace kv {

namespace {

/// One column of a fold: the largest value of its bins and where it stands.
struct Column {
    float v;
    int32_t bin;
};

/// Whole part of a / b for the bins-per-column rule; false when b is 0 (the fold then ends
/// before it starts and the old columns stay).
bool binsPerColumn(double a, double b, int32_t& out) {
    if (b == 0.0) return false;
    const double whole = Int(a / b) + 1;
    // A fold of no bins a column (a negative width or band) would never advance: it stops too.
    if (!(whole >= 1 && whole <= 2147483647.0)) return false;
    out = int32_t(whole);
    return true;
}

/// The highest index of an array grown to hold `count` columns; 0 when none was added, as the
/// array is re-dimensioned to 0..0 before the fold.
int32_t upperBound(size_t count) {
    return count == 0 ? 0 : int32_t(count) - 1;
}

double linearScale(double h, double fullScale, double offsetLin) {
    return (h / fullScale) * 100.0 / offsetLin;
}

struct RefSlot {
    bool on;
    std::vector<float>& data;
    int32_t count;
    float maxFreq;
    float binWidth;
    std::vector<float>& col;
    std::vector<float>& colLogX;
    int32_t& colCount;
    std::vector<float>& spanCol;
    int32_t& spanBins;
};

RefSlot slot(ProgramState& st, int s) {
    if (s == 1)
        return {st.RefOn1 || st.RefSelect == 1,
                st.RefShow1,
                st.RefCount1,
                st.RefMaxFreq1,
                st.RefBinWidth1,
                st.RefCol1,
                st.RefColLogX1,
                st.RefColCount1,
                st.RefSpanCol1,
                st.RefSpanBins1};
    return {st.RefOn2 || st.RefSelect == 2,
            st.RefShow2,
            st.RefCount2,
            st.RefMaxFreq2,
            st.RefBinWidth2,
            st.RefCol2,
            st.RefColLogX2,
            st.RefColCount2,
            st.RefSpanCol2,
            st.RefSpanBins2};
}

/// f32(Log10(b)) for the bin indices 0..bins (entry 0 unused), the X of a column on a log axis.
/// Every fold needs one for each column, so the table is kept and grows with longer spectra.
const float* logTable(int32_t bins) {
    thread_local std::vector<float> table(1, 0.0f);
    const size_t want = size_t(std::max(bins, 0)) + 1;
    if (want > table.size()) {
        const size_t from = table.size();
        table.resize(want);
        for (size_t i = from; i < want; ++i)
            table[i] = f32(Log10(double(i), 1.0f));
    }
    return table.data();
}

float valueAt(const std::vector<float>& a, int64_t i, bool& ok) {
    if (i < 0 || size_t(i) >= a.size()) {
        ok = false;
        return 0.0f;
    }
    return a[size_t(i)];
}

/// The span-style fold of `data` from `from` while i <= `to`, a value not below the current one
/// replacing it. Ends quietly with the columns so far when it runs off the array.
std::vector<float> foldSpan(const std::vector<float>& data, int64_t from, int64_t to, int32_t b) {
    std::vector<float> out;
    if (b < 1) return out;
    for (int64_t i = from; i <= to; i += b) {
        bool ok = true;
        float v = valueAt(data, i, ok);
        for (int32_t k = 0; k < b && ok; ++k) {
            const float x = valueAt(data, i + k, ok);
            if (ok && x >= v) v = x;
        }
        if (!ok) break;
        out.push_back(v);
    }
    return out;
}

} // namespace

void SamToWidth(ProgramState& st) {
    if (st.SpanActive) {
        GenDrawSpan(st);
    } else {
        st.Sp_Bins = st.Fft_Samples / 2;
        GenDraw(st);
    }
}

void GenDraw(ProgramState& st) {
    const int32_t bins = st.Sp_Bins;
    int32_t b = 0;
    if (!binsPerColumn(bins, st.PlotColumns, b)) return;
    st.BinsPerColumn = b;
    const size_t available = std::min(st.SpDisp.size(), st.SpPhase.size());
    if (bins > 0 && size_t(bins) > available) return; // nothing to fold from: the old columns stay

    // From here the fold cannot fail: the columns are rebuilt in place.
    const size_t count = bins >= b ? size_t((bins - b) / b) + 1 : 0;
    st.ColVal.resize(std::max<size_t>(count, 1));
    st.ColLogX.resize(st.ColVal.size());
    st.ColPhase.resize(st.ColVal.size());
    if (count == 0) {
        // Nothing folded: the arrays as re-dimensioned to 0..0.
        st.ColVal[0] = st.ColLogX[0] = st.ColPhase[0] = 0.0f;
    }
    const float* logs = logTable(bins);
    const float logOfZero = f32(Log10(0.0, st.FullScalePos));
    thread_local std::vector<int32_t> peakBins;
    peakBins.resize(count);
    const float* ph = st.SpPhase.data();
    // While the decibels are owed, wide columns are folded from the amplitudes, which turns only
    // the few bins that can hold a column's largest into decibels.
    const ProgramState::OwedDecibels& owed = st.DecibelsOwed;
    const bool fromAmplitudes = owed.due && b >= 16 && int64_t(count) * b <= owed.bins &&
                                int64_t(count) * b <= int64_t(st.SpAmp.size());
    if (fromAmplitudes)
        batch::foldDecibelColumns(st.SpAmp.data(), int32_t(count), b, owed.fullScale,
                                  st.ColVal.data(), peakBins.data());
    else
        settleDecibels(st);
    // Columns of two bins, the usual width of a full-band plot, are folded with their positions
    // and phases in one pass; a fold that must carry a bin over from the column before is done
    // again the general way.
    const bool pairsDone =
        b == 2 && !batch::foldPairs(st.SpDisp.data(), ph, logs, int32_t(count), st.ColVal.data(),
                                    peakBins.data(), st.ColLogX.data(), st.ColPhase.data());
    if (!pairsDone && !fromAmplitudes)
        batch::foldColumns(st.SpDisp.data(), int32_t(count), b, st.ColVal.data(), peakBins.data());
    // The first comparison of a column is of its first bin with itself and always takes, so the
    // phase is the one at the last bin taken; a column that took nothing keeps the bin before.
    int32_t bin = 0;
    if (pairsDone) {
        bin = count > 0 ? peakBins[count - 1] : 0;
        if (count > 0 && peakBins[0] == 0) st.ColLogX[0] = logOfZero;
    } else {
        for (size_t c = 0; c < count; ++c) {
            bin = peakBins[c] >= 0 ? peakBins[c] : bin;
            peakBins[c] = bin;
            st.ColLogX[c] = bin == 0 ? logOfZero : logs[bin];
            st.ColPhase[c] = ph[bin];
        }
    }
    // Where SpPhase is still owed, the columns' phases are owed too.
    oweColumnPhases(st, peakBins.data(), count);
    st.Sp_Bins = st.ColumnCount = upperBound(count);

    // The second trace of a scrolling waterfall, over the same bins. Its X keeps the last peak
    // bin of the first pass; the waterfall uses only the values.
    if (st.PlayRew && st.BackTraceTop >= 1 && st.BackDisp.size() >= size_t(std::max(bins, 0))) {
        std::vector<float> back;
        const float* bd = st.BackDisp.data();
        for (int32_t i = 0; i <= bins - b; i += b) {
            float v = bd[i];
            for (int32_t k = 0; k < b; ++k)
                if (v <= bd[i + k]) v = bd[i + k];
            back.push_back(v);
        }
        const float x = bin == 0 ? f32(Log10(0.0, st.FullScalePos)) : logTable(bin)[bin];
        st.BackColLogX.assign(std::max<size_t>(back.size(), 1), x);
        if (back.empty()) back.push_back(0.0f);
        st.BackCol = std::move(back);
    }
}

void GenDrawSpan(ProgramState& st) {
    int32_t b = 0;
    if (!binsPerColumn(st.SpanEnd - st.SpanStart, st.PlotColumns, b)) return;
    st.SpanBins = st.SpanEnd - st.SpanStart;
    st.BinsPerColumn = b;
    settleDecibels(st);
    std::vector<float> cols = foldSpan(st.SpDisp, st.SpanStart, int64_t(st.SpanEnd) + 1, b);
    const size_t count = cols.size();
    if (cols.empty()) cols.push_back(0.0f);
    st.SpanCol = std::move(cols);
    st.SpanBins = st.ColumnCount = upperBound(count);
}

void SamToWidth_Ref(ProgramState& st) {
    if (!st.SpanActive || st.DrSet == 2)
        GenDraw_Ref(st);
    else
        GenDrawSpan_Ref(st);
}

void GenDraw_Ref(ProgramState& st) {
    const double half = st.Fft_Samples / 2;
    for (int s = 1; s <= 2; ++s) {
        RefSlot r = slot(st, s);
        if (!r.on) continue;
        double c = st.PlotColumns;
        if (r.maxFreq <= st.MaxFreq) {
            if (st.DrSet == 1)
                c = roundHalfEven(double(st.PlotColumns) * r.maxFreq / st.MaxFreq);
            else if (st.DrSet == 2)
                c = roundHalfEven((st.PlotColumns / Log10(half, st.FullScalePos)) *
                                  Log10(double(r.maxFreq) / st.BinWidth, st.FullScalePos));
        }
        int32_t b = 0;
        if (!binsPerColumn(r.count, c, b)) continue;
        st.BinsPerColumn = b;
        const double last = roundHalfEven(double(r.count) - b);
        std::vector<float> col, logX;
        for (int64_t i = 0; i <= last; i += b) {
            bool ok = true;
            float v = valueAt(r.data, i, ok);
            int64_t at = i;
            for (int32_t k = 0; k < b && ok; ++k) {
                const float x = valueAt(r.data, i + k, ok);
                if (ok && x >= v) {
                    v = x;
                    at = i + k;
                }
            }
            if (!ok) break;
            col.push_back(v);
            logX.push_back(f32(Log10(double(at), st.FullScalePos)));
        }
        const size_t count = col.size();
        if (col.empty()) {
            col.push_back(0.0f);
            logX.push_back(0.0f);
        }
        r.col = std::move(col);
        r.colLogX = std::move(logX);
        r.colCount = upperBound(count);
    }
}

void GenDrawSpan_Ref(ProgramState& st) {
    for (int s = 1; s <= 2; ++s) {
        RefSlot r = slot(st, s);
        if (!r.on) continue;
        // The span's edges as bins of the reference; edges that are no bin number at all (a
        // zero bin width, a frequency out of every range) leave the slot's old columns.
        const double e0 = roundHalfEven(double(st.SpanLowFreq) / r.binWidth);
        const double e1 = roundHalfEven(double(st.SpanHighFreq) / r.binWidth);
        if (!(std::fabs(e0) <= 2147483647.0 && std::fabs(e1) <= 2147483647.0 &&
              std::fabs(e1 - e0) <= 2147483647.0))
            continue;
        const int64_t i0 = int64_t(e0), i1 = int64_t(e1);
        r.spanBins = int32_t(i1 - i0);
        int32_t b = 0;
        if (!binsPerColumn(double(r.spanBins), st.PlotColumns, b)) continue;
        st.BinsPerColumn = b;
        std::vector<float> cols = foldSpan(r.data, i0, i1, b);
        const size_t count = cols.size();
        if (cols.empty()) cols.push_back(0.0f);
        r.spanCol = std::move(cols);
        r.spanBins = upperBound(count);
    }
}

void UpdateTopDb(ProgramState& st) {
    st.TopDb = st.dBFS_On ? float(st.Offset_Log) : st.PeakDb;
}

void FirstDrawOffset(ProgramState& st) {
    if (!st.NewDataSet) return;
    if (double(st.Offset_Log) < st.PeakDb) st.Offset_Log = toInt32(double(st.PeakDb) + 2.0);
    st.NewDataSet = false;
}

int32_t plotColumnsFor(double widthPixels) {
    return toInt32(widthPixels / 2.0);
}

double LinScale(const ProgramState& st, double h) {
    return linearScale(h, st.FullScalePos, st.Offset_Lin);
}

double dbToY(double value, double topDb, double h, double plotRange) {
    return (value - topDb) * h / (-plotRange);
}

double linearToY(const ProgramState& st, double value, double h) {
    return h - value * LinScale(st, h);
}

double valueToY(const ProgramState& st, double value, double h) {
    return st.YLinear ? linearToY(st, value, h) : dbToY(value, st.TopDb, h, st.PlotRange);
}

double columnToX(const ProgramState& st, int32_t j, double w) {
    if (st.SpanActive) {
        if (j == st.SpanBins) return w;
        return st.SpanBins == 1 ? 0.0 : double(j) * w / double(st.SpanBins - 1);
    }
    if (st.DrSet == 2) {
        if (j < 0 || size_t(j) >= st.ColLogX.size()) return 0.0;
        return double(st.ColLogX[size_t(j)]) * w / Log10(st.Fft_Samples / 2, st.FullScalePos);
    }
    return st.ColumnCount == 0 ? 0.0 : double(j) * w / double(st.ColumnCount);
}

} // namespace kv
