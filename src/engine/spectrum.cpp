// The spectrum builder. Its order of steps is part of what the views show: the columns are
// folded before the phase is computed (so a Single Trace phase column belongs to the trace
// before), the read takes one float more than a trace, and Average divides by AverVal although
// it sums AverVal+1 traces.
#include "engine/spectrum.h"

#include "engine/batch_math.h"
#include "engine/display_map.h"
#include "engine/fft.h"
#include "engine/spectrum_hooks.h"
#include "engine/trace_blocks.h"
#include "engine/windows.h"
#include "platform/numeric.h"
#include "platform/trace_store.h"
#include "state/program_state.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kv {

namespace {

SpectrumHooks& hooks(ProgramState& st) {
    return st.spectrumHooks ? *st.spectrumHooks : noSpectrumHooks();
}

/// Re-dimension: a fresh, cleared array of n elements.
void redim(std::vector<float>& v, int64_t n) {
    v.assign(size_t(std::max<int64_t>(n, 0)), 0.0f);
}

/// Makes sure v holds at least n elements, keeping what it holds.
void ensure(std::vector<float>& v, int64_t n) {
    if (int64_t(v.size()) < n) v.resize(size_t(n), 0.0f);
}

/// A 1-based file position for trace k, as the scroll arithmetic forms it.
int64_t tracePosition(int64_t samples, int64_t k, int64_t first) {
    return samples * 4 * k + first;
}

/// Reads N+1 floats at pos into arr[0..N]; element 0 is the trace's first float and takes no
/// part in what follows.
void readN1(const ProgramState& st, int64_t pos, std::vector<float>& arr, int32_t n) {
    ensure(arr, int64_t(n) + 1);
    readWorkingTrace(st.ActiveTracePath, pos, arr.data(), size_t(n) + 1);
}

/// Amplitudes of elements 1..count into amp[0..count-1].
void amplitudesOf(const ProgramState& st, const std::vector<float>& re,
                  const std::vector<float>& im, std::vector<float>& amp, int32_t count) {
    ensure(amp, count);
    batch::amplitudes(re.data() + 1, im.data() + 1, amp.data(), count, st.WindowGain);
}

/// The FFT filter's three passes on one pair: shape, back to time for `time`, forward again,
/// and amplitudes of all N elements into `amp` (when given).
void filterPasses(ProgramState& st, std::vector<float>& re, std::vector<float>& im,
                  std::vector<float>* time, std::vector<float>* amp) {
    const int32_t n = st.Fft_Samples;
    hooks(st).filterTransform(st, re.data(), im.data(), n);
    fft::inverse(re.data() + 1, im.data() + 1, n);
    if (time) {
        ensure(*time, n);
        std::copy(re.begin() + 1, re.begin() + 1 + n, time->begin());
    }
    fft::forward(re.data() + 1, im.data() + 1, n);
    if (amp) amplitudesOf(st, re, im, *amp, n);
}

/// The amplitudes of the transformed trace, through the FFT filter when it is on.
void formAmplitudes(ProgramState& st, bool withBack) {
    const int32_t n = st.Fft_Samples;
    // The decibels still owed are the trace before's, whose amplitudes are overwritten here:
    // this trace's replace them before anything reads SpDisp again.
    st.DecibelsOwed.due = false;
    const bool backScroll = withBack && st.PlayRew && st.BackTraceTop > 0;
    if (hooks(st).transformFilterOn(st)) {
        filterPasses(st, st.FftRe, st.FftIm, &st.TraceBuf, &st.SpAmp);
        if (withBack && st.PlayRew && (st.RgBackTrace > 0 || st.BackTraceTop > 0))
            filterPasses(st, st.BackRe, st.BackIm, st.RgBackTrace > 0 ? &st.TraceBufR : nullptr,
                         st.BackTraceTop > 0 ? &st.BackAmp : nullptr);
        return;
    }
    amplitudesOf(st, st.FftRe, st.FftIm, st.SpAmp, std::min(st.Sp_Bins, n));
    if (backScroll) amplitudesOf(st, st.BackRe, st.BackIm, st.BackAmp, std::min(st.Sp_Bins, n));
}

/// Where the owed phases' transform stands now.
const float* owedRe(const ProgramState& st) {
    return st.PhasesOwed.inFft ? st.FftRe.data() : st.PhasesOwed.re.data();
}
const float* owedIm(const ProgramState& st) {
    return st.PhasesOwed.inFft ? st.FftIm.data() : st.PhasesOwed.im.data();
}

/// Where in `room` a transform of n points may be written: room enough from the first 64-byte
/// boundary, as the transform wants its output aligned.
size_t alignedRoom(std::vector<float>& room, int32_t n) {
    const size_t floats = 2 * (size_t(n) / 2 + 1) + 16;
    if (room.size() < floats) room.resize(floats);
    const auto address = reinterpret_cast<uintptr_t>(room.data());
    return ((64 - address % 64) % 64) / sizeof(float);
}

/// The owed transform, while it is packed, spread out into the copy `re`/`im` that the owed
/// phases then read: only the phases of a whole trace want every element of it.
void spreadPacked(ProgramState& st) {
    ProgramState::OwedPhases& o = st.PhasesOwed;
    if (!o.packed) return;
    o.packed = false;
    o.inFft = false;
    const size_t bins = size_t(std::max(o.bins, 0));
    o.re.resize(bins + 2);
    o.im.resize(bins + 2);
    o.re[0] = o.im[0] = 0.0f; // element 0 takes no part
    // The lower half of a transform of 2 bins points is its bins 0..bins: elements 1..bins+1.
    if (bins > 0)
        batch::unpackRealSpectrumLowerHalf(o.packedRoom.data() + o.packedAt, o.re.data() + 1,
                                           o.im.data() + 1, 2 * int32_t(bins), o.scale);
}

/// SpPhase[1..bins] from the owed transform, as the builder would have taken them.
void takeSpectrumPhases(ProgramState& st) {
    ProgramState::OwedPhases& o = st.PhasesOwed;
    if (!o.spectrum) return;
    spreadPacked(st);
    o.spectrum = false;
    const size_t source =
        o.inFft ? std::min(st.FftRe.size(), st.FftIm.size()) : std::min(o.re.size(), o.im.size());
    const size_t room = std::min(source, st.SpPhase.size());
    const int32_t bins =
        int32_t(std::min<size_t>(size_t(std::max(o.bins, 0)), room ? room - 1 : 0));
    batch::phaseDegrees(owedRe(st) + 1, owedIm(st) + 1, st.SpPhase.data() + 1, bins, st.Pi);
}

/// The builder's last step before the gain: SpPhase[1..N/2] become owed from FftRe/FftIm as they
/// stand now, or from the packed transform in nextRoom (at `packedAt`) when that is where it
/// went. The transform stays where it is; the next writer of FftRe/FftIm moves it aside.
void owePhases(ProgramState& st, const size_t* packedAt = nullptr) {
    const int32_t half = st.Fft_Samples / 2;
    ensure(st.SpPhase, int64_t(half) + 1);
    ProgramState::OwedPhases& o = st.PhasesOwed;
    // Owed phases above the new ones would be lost with their transform: take them now (only a
    // change to a shorter transform without a new InitFftState comes here).
    if (o.spectrum && o.bins > half) takeSpectrumPhases(st);
    if (half <= 0) return;
    o.spectrum = true;
    o.inFft = !packedAt;
    o.packed = packedAt != nullptr;
    if (packedAt) {
        o.packedRoom.swap(o.nextRoom);
        o.packedAt = *packedAt;
        o.scale = fft::forwardScale(st.Fft_Samples);
    }
    o.bins = half;
}

/// The builder is about to overwrite FftRe/FftIm, all of it it needs: the owed transform moves to
/// the spare arrays by exchange, and the transform is written into the spare arrays' room.
void moveOwedTransformAside(ProgramState& st) {
    ProgramState::OwedPhases& o = st.PhasesOwed;
    if (!o.spectrum || !o.inFft) return;
    o.re.swap(st.FftRe);
    o.im.swap(st.FftIm);
    o.inFft = false;
}

void applyGain(ProgramState& st) {
    const float g = hooks(st).traceGain(st);
    if (g == 1.0f) return;
    const size_t n = std::min(size_t(std::max(st.Sp_Samples, 0)), st.TraceBuf.size());
    for (size_t i = 0; i < n; ++i)
        st.TraceBuf[i] = f32(double(st.TraceBuf[i]) * g);
    if (st.RgBackOn && st.PlayRew) {
        const size_t m = std::min(size_t(std::max(st.Sp_Samples, 0)), st.TraceBufR.size());
        for (size_t i = 0; i < m; ++i)
            st.TraceBufR[i] = f32(double(st.TraceBufR[i]) * g);
    }
}

/// Average mode's group: traces k = from..to (AverVal+1 of them) summed into arr[0..N-1] and
/// divided by AverVal, not by their count; arr[N] stays as the last trace left it. The Average
/// levels are calibrated on both. Positions before the file are skipped, and
/// CurrentTracePos ends on the last trace of the group.
void averageGroup(ProgramState& st, int64_t from, int64_t to, std::vector<float>& arr) {
    const int32_t n = st.Fft_Samples;
    std::vector<float> acc(size_t(n) + 1, 0.0f);
    for (int64_t k = from; k <= to; ++k) {
        const int64_t pos = tracePosition(st.Sp_Samples, k, st.FirstTracePos);
        st.CurrentTracePos = pos;
        if (pos <= 0) continue;
        readN1(st, pos, arr, n);
        for (int32_t i = 0; i < n; ++i)
            acc[size_t(i)] += arr[size_t(i)];
    }
    for (int32_t i = 0; i < n; ++i)
        arr[size_t(i)] = acc[size_t(i)] / float(st.AverVal);
}

/// The radargram's second trace (for its time display only): one trace, or in Average mode the
/// mean of a group, windowed and transformed.
void radargramTrace(ProgramState& st) {
    const int32_t n = st.Fft_Samples;
    if (st.ModeFFT != 4) {
        redim(st.BackRe, int64_t(n) + 1);
        st.BackTracePos = tracePosition(st.Sp_Samples, st.RgBackTrace, st.FirstTracePos);
        readN1(st, st.BackTracePos, st.BackRe, n);
    } else {
        redim(st.BackRe, int64_t(n) + 1);
        const int64_t a = st.AverVal;
        averageGroup(st, a * st.RgBackTrace - a, a * st.RgBackTrace, st.BackRe);
        st.RgBackTrace -= st.AverVal;
    }
    ApplyWindowBack(st);
    fft::forward(st.BackRe.data() + 1, st.BackIm.data() + 1, n);
}

/// The extremes of SpAmp[0..bins-1] as the pass that formed the amplitudes found them.
struct KnownExtremes {
    int32_t bins = 0;
    batch::AmplitudeExtremes at;
};

void createdBArray(ProgramState& st, const KnownExtremes* known);

/// The peak and the floor of SpAmp[0..Sp_Bins-1], starting from hi and lo. Linear: DC takes part
/// and of equal maxima the last wins. dB: bins 0 to 2 can never be the peak and of equal maxima
/// the first wins; a bin at or under -FullScalePos dB (silence reads -10 * FullScalePos) is no
/// peak at all, so a silent trace leaves the previous PeakBin standing. The floor is the first
/// smallest value in both.
template <bool Linear>
void searchPeakAndFloor(ProgramState& st, const float* amp, float& hi, float& lo,
                        const KnownExtremes* known) {
    const int32_t n = st.Sp_Bins;
    if (n <= 0) return;
    if (known && known->bins != n) known = nullptr;
    // A running search from hi and lo ends on the extreme's first or last place, when the
    // extreme beats where it started.
    if (Linear) {
        const int32_t at = batch::lastMaxAt(amp, n);
        if (at >= 0 && hi <= amp[at]) {
            st.PeakBin = at;
            hi = amp[at];
        }
    } else if (n > 3) {
        const float floor = -st.FullScalePos;
        int32_t at = -1;
        if (st.DecibelsOwed.due) {
            // Equal amplitudes have equal decibels, so the first of the largest amplitudes is the
            // peak when its own decibels clear the floor; only when they do not are the other
            // bins' decibels needed to say which of them clear it.
            if (known)
                at = known->at.firstMax >= 0 ? known->at.firstMax - 3 : -1;
            else
                at = batch::firstMaxAbove(amp + 3, amp + 3, -std::numeric_limits<float>::infinity(),
                                          n - 3);
            float d = 0.0f;
            if (at >= 0) batch::decibels(amp + 3 + at, &d, 1, st.DecibelsOwed.fullScale);
            if (at < 0 || !(d > floor)) settleDecibels(st);
        }
        if (!st.DecibelsOwed.due)
            at = batch::firstMaxAbove(amp + 3, st.SpDisp.data() + 3, floor, n - 3);
        if (at >= 0 && hi < amp[3 + at]) {
            st.PeakBin = 3 + at;
            hi = amp[3 + at];
        }
    }
    const int32_t at = known ? known->at.firstMin : batch::firstMinAt(amp, n);
    if (at >= 0 && lo > amp[at]) {
        st.FloorBin = at;
        lo = amp[at];
    }
}

} // namespace

SpectrumHooks& noSpectrumHooks() {
    static SpectrumHooks none;
    return none;
}

double Log10(double x, float FullScalePos) {
    if (x == 0.0) return -double(FullScalePos) / 2.0;
    return std::log(x) / std::log(10.0);
}

double Atan2(double y, double x) {
    if (std::fabs(x) < 1e-7) {
        if (std::fabs(y) < 1e-7) return 0.0;
        return y > 0.0 ? 1.5707963267949 : -1.5707963267949;
    }
    const double r = std::atan(y / x);
    if (x < 0.0) return y < 0.0 ? r - 3.14159265358979 : r + 3.14159265358979;
    return r;
}

void settleDecibels(ProgramState& st) {
    ProgramState::OwedDecibels& o = st.DecibelsOwed;
    if (!o.due) return;
    o.due = false;
    const size_t bins = std::min({size_t(std::max(o.bins, 0)), st.SpAmp.size(), st.SpDisp.size()});
    batch::decibels(st.SpAmp.data(), st.SpDisp.data(), int32_t(bins), o.fullScale);
}

void InitFftState(ProgramState& st) {
    settleDecibels(st); // SpAmp is cleared below
    const int32_t n = st.Fft_Samples;
    const float d = f32(1.0 / st.SampleRate);
    const float t = f32(double(d) * (double(st.NewDS) * double(n)));
    st.BinWidth = f32(1.0 / double(t));
    st.Sp_Bins = n / 2;
    st.MaxFreq = f32(double(st.BinWidth) * double(st.Sp_Bins));
    st.AmpCapacity = 2 * n;
    redim(st.SpAmp, int64_t(st.AmpCapacity) + 1);
    if (st.PlayRew) redim(st.BackAmp, int64_t(st.AmpCapacity) + 1);
    redim(st.SpPhase, int64_t(n) + 1);
    st.PhasesOwed.spectrum = false; // the cleared phases are what SpPhase holds now
    redim(st.PeakHoldAcc, int64_t(st.Sp_Bins) + 1);
    // The plans are made by the first transform, not here: an open that fails before its first
    // trace (a header whose sample count the reader then refuses) would otherwise plan a length
    // that is never used, and each such length crowds a kept one out of the plan cache.
}

void ensurePhases(ProgramState& st) {
    takeSpectrumPhases(st);
    ProgramState::OwedPhases& o = st.PhasesOwed;
    if (o.colRe.empty()) return;
    if (o.colFrom >= 0) {
        const size_t from = size_t(o.colFrom);
        const size_t room = st.ColPhase.size() > from ? st.ColPhase.size() - from : 0;
        batch::phaseDegrees(o.colRe.data(), o.colIm.data(), st.ColPhase.data() + from,
                            int32_t(std::min(o.colRe.size(), room)), st.Pi);
    } else {
        thread_local std::vector<float> degrees;
        degrees.resize(o.colAt.size());
        batch::phaseDegrees(o.colRe.data(), o.colIm.data(), degrees.data(), int32_t(degrees.size()),
                            st.Pi);
        for (size_t k = 0; k < o.colAt.size(); ++k)
            if (size_t(o.colAt[k]) < st.ColPhase.size())
                st.ColPhase[size_t(o.colAt[k])] = degrees[k];
    }
    o.colFrom = -1;
    o.colAt.clear();
    o.colRe.clear();
    o.colIm.clear();
}

void releaseTransform(ProgramState& st) {
    ProgramState::OwedPhases& o = st.PhasesOwed;
    if (!o.spectrum || !o.inFft) return; // a packed transform is in a room of its own
    const size_t n = std::min({st.FftRe.size(), st.FftIm.size(), size_t(o.bins) + 1});
    o.re.assign(st.FftRe.begin(), st.FftRe.begin() + ptrdiff_t(n));
    o.im.assign(st.FftIm.begin(), st.FftIm.begin() + ptrdiff_t(n));
    o.inFft = false;
}

void oweColumnPhases(ProgramState& st, const int32_t* bins, size_t count) {
    ProgramState::OwedPhases& o = st.PhasesOwed;
    o.colFrom = -1;
    if (!o.spectrum) {
        o.colAt.clear();
        o.colRe.clear();
        o.colIm.clear();
        return;
    }
    // Every fold of a playback comes here, and usually every column's bin is owed, but for the
    // first column's when it holds DC: the pairs are gathered in one pass and the columns stand
    // for themselves. Otherwise a straight pass with no branch per column; both keep the arrays'
    // room from one fold to the next.
    const float* re = owedRe(st);
    const float* im = owedIm(st);
    // Element k of a packed transform, as spreadPacked would spread it.
    const float* packed = o.packed ? o.packedRoom.data() + o.packedAt : nullptr;
    const auto pair = [&](int32_t k, float& r, float& i) {
        if (packed) {
            r = packed[2 * (k - 1)] * o.scale;
            i = packed[2 * (k - 1) + 1] * o.scale;
        } else {
            r = re[k];
            i = im[k];
        }
    };
    const int32_t owed = o.bins;
    const int32_t from = count > 0 && bins[0] == 0 ? 1 : 0;
    if (count > size_t(from) && batch::allWithin(bins + from, int32_t(count) - from, 1, owed)) {
        o.colRe.resize(count - size_t(from));
        o.colIm.resize(o.colRe.size());
        if (packed) {
            batch::gatherPackedPairs(packed, o.scale, bins + from, int32_t(o.colRe.size()),
                                     o.colRe.data(), o.colIm.data());
        } else {
            batch::gatherPairs(re, im, bins + from, int32_t(o.colRe.size()), o.colRe.data(),
                               o.colIm.data());
        }
        o.colAt.clear();
        o.colFrom = from;
        return;
    }
    o.colAt.resize(count);
    o.colRe.resize(count);
    o.colIm.resize(count);
    size_t m = 0;
    for (size_t c = 0; c < count; ++c) {
        const int32_t b = bins[c];
        // A bin the owed phases do not cover is as it stands in SpPhase, and so is its column.
        const bool due = b >= 1 && b <= owed;
        o.colAt[m] = int32_t(c);
        pair(due ? b : 1, o.colRe[m], o.colIm[m]);
        m += due ? 1 : 0;
    }
    o.colAt.resize(m);
    o.colRe.resize(m);
    o.colIm.resize(m);
}

void resetPeakHold(ProgramState& st) {
    redim(st.PeakHoldAcc, int64_t(st.PeakHoldBins) + 1);
}

void FyllSpData(ProgramState& st) {
    if (st.CurrentTracePos < 0) st.CurrentTracePos = st.FirstTracePos;
    const int32_t n = st.Fft_Samples;
    if (st.ModeFFT == 4 && st.RgBackTrace <= 0) {
        st.Sp_Bins = n / 2;
        FyllSpAverage(st);
        return;
    }
    // The read fills FftRe[0..N] and the transform FftIm[1..N]: neither needs clearing first, so
    // phases still owed from the last transform keep it, and this one takes their spare arrays.
    moveOwedTransformAside(st);
    st.FftRe.resize(size_t(n) + 1);
    st.FftIm.resize(size_t(n) + 1);
    st.FftIm[0] = 0.0f;
    // SpPhase keeps the previous trace's phases until the phases are taken, last of all: the
    // columns folded in between carry them, so a Single Trace display's phase column belongs to
    // the trace before.
    ensure(st.SpPhase, int64_t(n) + 1);
    st.Sp_Bins = n / 2;
    st.PhaseBins = n / 2;
    ensure(st.SpAmp, 2 * int64_t(n) + 1);

    // The trace is read straight into the transform's aligned input, element 0 just before it,
    // and windowed there: the transform overwrites FftRe[1..N] in any case, so the windowed
    // trace need not pass through it. Only the FFT filter reads the transform's upper half.
    const bool filterOn = hooks(st).transformFilterOn(st);
    const bool direct = n >= 1 && n <= fft::kMaxLength;
    float* input = nullptr;
    if (direct && (timeTraceIsRaw(st) || timeTraceIsInput(st))) {
        // The O-scope shows the trace as read: it is read straight there and tapered on its way
        // into the transform's input, one pass over the trace instead of a copy and a taper. A
        // window that does not taper leaves the trace as it is, so the transform takes it where
        // it lies when it is aligned as the transform's own input.
        ensure(st.TraceBuf, n);
        readWorkingTraceWithHead(st.ActiveTracePath, st.CurrentTracePos, st.FftRe.data(),
                                 st.TraceBuf.data(), size_t(n));
        input = st.TraceBuf.data();
        if (timeTraceIsRaw(st) || !fft::takesAsInput(input)) {
            input = fft::realInput(n);
            windowInto(st.FFT_Window, st.TraceBuf.data(), input, n);
        }
    } else if (direct) {
        input = fft::realInput(n);
        readWorkingTrace(st.ActiveTracePath, st.CurrentTracePos, input - 1, size_t(n) + 1);
        st.FftRe[0] = input[-1];
        ApplyWindowAt(st, input);
    } else {
        readN1(st, st.CurrentTracePos, st.FftRe, n);
        ApplyWindow(st);
    }

    const bool backScroll = st.PlayRew && st.BackTraceTop > 0;
    const bool rgBack = st.RgBackOn && st.RgBackTrace > 0;
    if (backScroll || rgBack) {
        redim(st.BackRe, int64_t(n) + 1);
        redim(st.BackIm, int64_t(n) + 1);
        redim(st.BackAmp, int64_t(n) + 1);
    }
    // Plain playback, the usual case: the amplitudes and the searches for the peak and the floor
    // are formed in the same pass that takes the transform's output apart. Not with whitening:
    // it reads the trace afresh into FftRe/FftIm before the phases are owed, and in Single Trace
    // the phases are those of its transform.
    KnownExtremes known;
    const bool oneGo = direct && !filterOn && !backScroll && !rgBack && !st.WhiteningOn;
    size_t packedAt = 0;
    if (oneGo) {
        // The transform stays packed in a room of its own, where the phases owed from it are
        // found; the owed phases of the trace before keep theirs until the fold has read them.
        st.DecibelsOwed.due = false; // the trace before's, whose amplitudes go now
        ProgramState::OwedPhases& o = st.PhasesOwed;
        packedAt = alignedRoom(o.nextRoom, n);
        float* packed = o.nextRoom.data() + packedAt;
        fft::forwardRealPacked(input, packed, n);
        known.bins = std::min(st.Sp_Bins, n);
        known.at = batch::packedAmplitudes(packed, st.SpAmp.data(), known.bins, 3,
                                           fft::forwardScale(n), st.WindowGain);
    } else if (direct) {
        fft::forwardRealInput(input, st.FftRe.data() + 1, st.FftIm.data() + 1, n, filterOn);
    } else {
        fft::forwardReal(st.FftRe.data() + 1, st.FftIm.data() + 1, n);
    }

    if (backScroll) {
        st.BackTracePos = tracePosition(n, st.BackTraceIndex, st.FirstTracePos);
        readN1(st, st.BackTracePos, st.BackRe, n);
        ApplyWindowBack(st);
        fft::forward(st.BackRe.data() + 1, st.BackIm.data() + 1, n);
    }
    if (rgBack) radargramTrace(st);

    if (!oneGo) formAmplitudes(st, true);
    createdBArray(st, oneGo ? &known : nullptr);
    owePhases(st, oneGo ? &packedAt : nullptr);
    applyGain(st);
}

void FyllSpAverage(ProgramState& st) {
    const int32_t n = st.Fft_Samples;
    moveOwedTransformAside(st);
    redim(st.FftRe, int64_t(n) + 1);
    redim(st.FftIm, int64_t(n) + 1);
    st.PhaseBins = n / 2;
    ensure(st.SpAmp, 2 * int64_t(n) + 1);
    const int64_t first = int64_t(st.TraceStep) * st.TracePos;
    averageGroup(st, first, first + st.AverVal, st.FftRe);

    ApplyWindow(st);
    fft::forward(st.FftRe.data() + 1, st.FftIm.data() + 1, n);
    st.Sp_Bins = n / 2;
    formAmplitudes(st, false);
    owePhases(st);
    applyGain(st);
    CreatedBArray(st);
}

void CreatedBArray(ProgramState& st) {
    createdBArray(st, nullptr);
}

namespace {

void createdBArray(ProgramState& st, const KnownExtremes* known) {
    const int32_t bins = st.Sp_Bins;
    const float fs = st.FullScalePos;
    ensure(st.SpAmp, bins);
    if (st.ModeFFT == 3) {
        // The accumulator holds amplitudes; the trace's own spectrum is replaced by it.
        ensure(st.PeakHoldAcc, bins);
        for (int32_t i = 0; i < bins; ++i) {
            float& held = st.PeakHoldAcc[size_t(i)];
            if (st.SpAmp[size_t(i)] > held) held = st.SpAmp[size_t(i)];
            st.SpAmp[size_t(i)] = held;
        }
        known = nullptr; // found before the held values replaced the amplitudes
    }
    float hi = -fs, lo = fs;
    // 0..bins, of which the conversion below writes all but the last.
    st.SpDisp.resize(size_t(std::max(bins, 0)) + 1);
    st.SpDisp[size_t(std::max(bins, 0))] = 0.0f;
    if (st.PlayRew && st.BackTraceTop > 0) {
        redim(st.BackDisp, int64_t(bins) + 1);
        ensure(st.BackAmp, bins);
        if (st.YLinear)
            std::copy(st.BackAmp.begin(), st.BackAmp.begin() + bins, st.BackDisp.begin());
        else
            batch::decibels(st.BackAmp.data(), st.BackDisp.data(), bins, fs);
    }
    const float* amp = st.SpAmp.data();
    st.DecibelsOwed.due = false;
    if (st.YLinear) {
        std::copy(amp, amp + bins, st.SpDisp.begin());
        searchPeakAndFloor<true>(st, amp, hi, lo, nullptr);
    } else {
        // Owed until something reads them, unless auto-span is about to read them or whitening
        // to rewrite the amplitudes they come from.
        if (st.AutotuneOn || st.WhiteningOn)
            batch::decibels(amp, st.SpDisp.data(), bins, fs);
        else
            st.DecibelsOwed = {true, std::max(bins, 0), fs};
        searchPeakAndFloor<false>(st, amp, hi, lo, known);
    }
    st.PeakAmp = hi;
    st.PeakHoldBins = bins;
    st.PeakFreq = f32(double(st.BinWidth) * st.PeakBin);
    // Through the same arithmetic as SpDisp, so that the peak's column and PeakDb agree to the
    // last bit (the top of a dBc plot is exactly the peak column).
    const auto dbOf = [&](int32_t bin) {
        const float a = bin >= 0 && size_t(bin) < st.SpAmp.size() ? st.SpAmp[size_t(bin)] : 0.0f;
        float d = 0.0f;
        batch::decibels(&a, &d, 1, fs);
        return double(d);
    };
    st.PeakDb = f32(dbOf(st.PeakBin));
    st.FloorDbRel = f32(dbOf(st.FloorBin) - double(st.TopDb));

    SpectrumHooks& h = hooks(st);
    if (st.AutotuneOn) h.afterPeakSearch(st);
    if (st.WhiteningOn) h.whiten(st);
    SamToWidth(st);
}

} // namespace

} // namespace kv
