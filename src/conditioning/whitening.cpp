// The whitening scan and the per-trace substitution.
#include "conditioning/whitening.h"

#include "engine/batch_math.h"
#include "engine/fft.h"
#include "engine/spectrum.h"
#include "engine/trace_blocks.h"
#include "engine/windows.h"
#include "platform/numeric.h"
#include "platform/trace_store.h"
#include "state/program_state.h"

#include <algorithm>
#include <cmath>

namespace kv {

namespace {

/// The band's elements as a range that lies inside 0..n (empty when low > high).
struct Elements {
    int64_t from, to;
};
Elements bandElements(const ProgramState& st, int32_t n) {
    return {std::max<int64_t>(st.WhiteLowBin, 0), std::min<int64_t>(st.WhiteHighBin, n)};
}

int64_t tracePosition(const ProgramState& st, int64_t k) {
    return int64_t(st.Sp_Samples) * 4 * k + st.FirstTracePos;
}

/// Reads N+1 floats at pos into a fresh arr[0..N] (and a fresh, cleared im).
void readFresh(const ProgramState& st, int64_t pos, std::vector<float>& re,
               std::vector<float>& im) {
    const int32_t n = st.Fft_Samples;
    re.assign(size_t(n) + 1, 0.0f);
    im.assign(size_t(n) + 1, 0.0f);
    if (pos > 0) readWorkingTrace(st.ActiveTracePath, pos, re.data(), size_t(n) + 1);
}

/// Average mode's group from trace `first` on: AverVal+1 traces summed and divided by AverVal,
/// as the spectrum builder forms it.
void readGroup(const ProgramState& st, int64_t first, std::vector<float>& re,
               std::vector<float>& im) {
    const int32_t n = st.Fft_Samples;
    std::vector<float> acc(size_t(n) + 1, 0.0f), one;
    for (int64_t k = first; k <= first + st.AverVal; ++k) {
        const int64_t pos = tracePosition(st, k);
        if (pos <= 0) continue;
        readFresh(st, pos, one, im);
        for (int32_t i = 0; i < n; ++i)
            acc[size_t(i)] += one[size_t(i)];
    }
    readFresh(st, 0, re, im);
    for (int32_t i = 0; i < n; ++i)
        re[size_t(i)] = st.AverVal != 0 ? acc[size_t(i)] / float(st.AverVal) : acc[size_t(i)];
}

} // namespace

void setWhiteBand(ProgramState& st, double lowHz, double highHz) {
    st.BoxBinWidth = f32(double(st.MaxFreq) / (st.Fft_Samples / 2));
    st.WhiteLowHz = lowHz > 0 ? f32(lowHz) : st.BoxBinWidth;
    st.WhiteHighHz = f32(highHz);
    if (!(st.WhiteHighHz < st.MaxFreq)) st.WhiteHighHz = st.MaxFreq;
}

bool ScanWhiteBand(ProgramState& st, const ScanProgress& progress) {
    const int32_t n = st.Fft_Samples;
    const int32_t lowBin = toInt32(double(st.WhiteLowHz) / st.BoxBinWidth);
    const int32_t highBin = toInt32(double(st.WhiteHighHz) / st.BoxBinWidth);
    const int64_t from = std::max<int64_t>(lowBin, 0), to = std::min<int64_t>(highBin, n);
    st.Sp_Bins = n / 2;
    float p = 0.0f, pIm = st.WhiteIm;

    // The traces are read a block at a time; trace t's N+1 floats start Sp_Samples floats after
    // trace t-1's, whatever the block.
    constexpr int32_t kBlock = 256;
    const int64_t stride = st.Sp_Samples;
    std::vector<float> block, re(static_cast<size_t>(n)), im(static_cast<size_t>(n));
    for (int32_t t0 = 0; t0 < st.TraceCount; t0 += kBlock) {
        const int32_t count = std::min(kBlock, st.TraceCount - t0);
        const int64_t floats = (count - 1) * stride + n + 1;
        block.resize(size_t(floats));
        readTrace(st.ActiveTracePath, tracePosition(st, t0), block.data(), block.size());
        for (int32_t i = 0; i < count; ++i) {
            const float* x = block.data() + i * stride + 1;
            std::copy(x, x + n, re.begin());
            std::fill(im.begin(), im.end(), 0.0f);
            applyWindowTo(st.FFT_Window, re.data(), n);
            fft::forward(re.data(), im.data(), n);
            // Signed real parts: the largest positive one wins, its imaginary part with it.
            for (int64_t k = from; k <= to; ++k)
                if (k >= 1 && re[size_t(k - 1)] > p) {
                    p = re[size_t(k - 1)];
                    pIm = im[size_t(k - 1)];
                }
            if (progress && !progress(t0 + i + 1)) return false;
        }
    }
    st.WhiteLowBin = lowBin;
    st.WhiteHighBin = highBin;
    st.WhiteRe = p;
    st.WhiteIm = pIm;
    return true;
}

void whiteSubstitute(const ProgramState& st, float* re, float* im, int32_t n) {
    const Elements e = bandElements(st, n);
    for (int64_t k = e.from; k <= e.to; ++k) {
        re[k] = st.WhiteRe;
        im[k] = st.WhiteIm;
    }
}

void ApplyWhite(const ProgramState& st, std::vector<float>& re, std::vector<float>& im,
                std::vector<float>* amp, std::vector<float>* time) {
    const int32_t n = st.Fft_Samples;
    re.resize(std::max(re.size(), size_t(n) + 1), 0.0f);
    im.resize(std::max(im.size(), size_t(n) + 1), 0.0f);
    fft::forward(re.data() + 1, im.data() + 1, n);
    whiteSubstitute(st, re.data(), im.data(), n);
    if (amp) {
        if (amp->size() < size_t(n)) amp->resize(size_t(n), 0.0f);
        batch::amplitudes(re.data() + 1, im.data() + 1, amp->data(), n, st.WindowGain);
    }
    fft::inverse(re.data() + 1, im.data() + 1, n);
    if (time) {
        if (time->size() < size_t(n)) time->resize(size_t(n), 0.0f);
        std::copy(re.begin() + 1, re.begin() + 1 + n, time->begin());
    }
}

void FyllWhite(ProgramState& st) {
    if (st.CurrentTracePos < 0) st.CurrentTracePos = st.FirstTracePos;
    releaseTransform(st); // FftRe/FftIm are read afresh below
    settleDecibels(st);   // and SpAmp is rewritten
    if (st.ModeFFT == 4)
        readGroup(st, int64_t(st.PlayRew ? st.RgBackTrace : st.TraceStep * int64_t(st.TracePos)),
                  st.FftRe, st.FftIm);
    else
        readFresh(st, st.PlayRew ? tracePosition(st, st.RgBackTrace) : st.CurrentTracePos, st.FftRe,
                  st.FftIm);
    ApplyWindow(st);
    ApplyWhite(st, st.FftRe, st.FftIm, &st.SpAmp, &st.TraceBuf);
    if (!st.PlayRew || (st.BackTraceTop <= 0 && st.RgBackTrace <= 0)) return;
    // The waterfall's second trace, read where the builder read it.
    readFresh(st, st.RgBackTrace > 0 ? tracePosition(st, st.RgBackTrace) : st.BackTracePos,
              st.BackRe, st.BackIm);
    ApplyWindowBack(st);
    ApplyWhite(st, st.BackRe, st.BackIm, st.BackTraceTop > 0 ? &st.BackAmp : nullptr,
               st.RgBackTrace > 0 ? &st.TraceBufR : nullptr);
}

} // namespace kv
