// FFT windows: the formulas exactly as the spectra were calibrated with them, including their
// quirks (i counted from 1, the truncated 2*pi constants, Bartlett halves that do not meet).
#include "engine/windows.h"

#include "engine/batch_math.h"
#include "engine/spectrum.h"

#include "platform/numeric.h"
#include "state/program_state.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kv {

namespace {

struct WindowInfo {
    const char* optionName;
    const char* statusName;
    float gain;
};

constexpr WindowInfo kWindows[] = {
    {"Blackman", "Blackman", 0.42f},
    {"Bartlett", "Bartlett", 0.5f},
    {"Blackman-Exact", "Blackman-Exact", 0.42f},
    {"Blackman-Harris", "Blackman-Harris", 0.4f},
    {"Flat Top", "Flat top", 0.28f},
    {"Gaussian(3)", "Gaussian", 0.43f},
    {"Hann", "Hann", 0.5f},
    {"Hamming", "Hamming", 0.54f},
    {"Triangular", "Triangular", 0.5f},
    {"Uniform", "Uniform", 1.0f},
};

const WindowInfo* info(int window) {
    return window >= 1 && window <= 10 ? &kWindows[window - 1] : nullptr;
}

// The three constants as the windows were tuned with them: not 2*pi, 4*pi, 6*pi to full
// precision, so that at i = N the cosines have run a little past a full period.
constexpr double P1 = 6.2831852, P2 = 12.5663704, P3 = 18.8495556;

double f(double product) {
    return double(f32(product));
}

/// The window as a table of w(1..n), kept for the last (window, n) asked for. Hann's values are
/// floats already, so its products can be formed in single precision, twice as many a step.
struct WindowTable {
    int window = 0;
    int32_t n = -1;
    std::vector<double> wide;
    std::vector<float> single; // filled only when every value is a float
};

const WindowTable& windowTable(int window, int32_t n) {
    thread_local WindowTable table;
    if (window != table.window || n != table.n) {
        const size_t count = size_t(std::max<int32_t>(n, 0));
        table.wide.resize(count);
        bool floats = true;
        for (int32_t i = 1; i <= n; ++i) {
            const double w = windowValue(window, i, n);
            table.wide[size_t(i - 1)] = w;
            floats = floats && double(float(w)) == w;
        }
        table.single.assign(floats ? count : 0, 0.0f);
        for (size_t i = 0; i < table.single.size(); ++i)
            table.single[i] = float(table.wide[i]);
        table.window = window;
        table.n = n;
    }
    return table;
}

bool tapers(int window) {
    return window >= 1 && window < kUniformWindow;
}

void copyToTimeTrace(const float* from, std::vector<float>& to, int32_t n) {
    if (to.size() < size_t(n)) to.resize(size_t(n), 0.0f);
    std::memcpy(to.data(), from, sizeof(float) * size_t(n));
}

/// Windows x[0..N-1] and fills the time trace the O-scope shows.
void windowTrace(const ProgramState& st, float* x, std::vector<float>& time) {
    const int32_t n = st.Fft_Samples;
    if (st.FFT_Window == kUniformWindow) {
        // Uniform: the trace goes to the time display whatever TimeWindowed says.
        copyToTimeTrace(x, time, n);
        return;
    }
    if (st.TimeWindowed == 0) copyToTimeTrace(x, time, n);
    applyWindowTo(st.FFT_Window, x, n);
    if (st.TimeWindowed == 1) copyToTimeTrace(x, time, n);
}

/// ApplyWindow and ApplyWindowBack: window arr[1..N], and fill the time trace the O-scope shows.
void windowForSpectrum(const ProgramState& st, std::vector<float>& arr, std::vector<float>& time) {
    const int32_t n = st.Fft_Samples;
    if (n < 1) return;
    if (arr.size() < size_t(n) + 1) arr.resize(size_t(n) + 1, 0.0f);
    windowTrace(st, arr.data() + 1, time);
}

} // namespace

const char* windowOptionName(int window) {
    const WindowInfo* w = info(window);
    return w ? w->optionName : "";
}

const char* windowStatusName(int window) {
    const WindowInfo* w = info(window);
    return w ? w->statusName : "";
}

float windowGainOf(int window) {
    const WindowInfo* w = info(window);
    return w ? w->gain : 0.0f;
}

std::string SetWindowName(ProgramState& st) {
    const WindowInfo* w = info(st.FFT_Window);
    if (!w) return "";
    st.WindowGain = w->gain;
    return w->statusName;
}

double windowValue(int window, int32_t i, int32_t n) {
    const double d = double(n) - 1.0;
    const double c1 = std::cos(P1 * i / d);
    const double c2 = std::cos(P2 * i / d);
    const double c3 = std::cos(P3 * i / d);
    // The two halves of Bartlett and Triangular: up to M1 rising, from M2 falling. For a power
    // of two M1 is N/2 and M2 = N/2 + 1, so they cover 1..N; for N = 2 sample 1 is in neither
    // half and keeps its value.
    const double m1 = roundHalfEven(d / 2.0);
    const int32_t m2 = n / 2 + 1;
    switch (window) {
    case 1:
        return 0.42 - f(0.5 * c1) + f(0.08 * c2);
    case 2:
        if (i <= m1) return 2.0 * i / d;
        if (i >= m2) return (double(n) - i - 1.0) * 2.0 / d;
        return 1.0;
    case 3:
        return 0.42659071 - f(0.49656062 * c1) + f(0.07684867 * c2);
    case 4:
        return 0.42323 - f(0.48829 * c1) + f(0.14128 * c2) - f(0.01168 * c3);
    case 5:
        return 0.2810639 - f(0.52089 * c1) + f(0.19803 * c2);
    case 6: {
        const double half = double(n) / 2.0;
        const double g = 3.0 * (i - half) / half;
        return std::exp(-0.5 * g * g);
    }
    case 7:
        return f((1.0 - c1) * 0.5);
    case 8:
        return 0.53836 - f(0.46164 * c1);
    case 9:
        if (i <= m1) return (2.0 * i - 1.0) / d;
        if (i >= m2) return ((double(n) - i) * 2.0 + 1.0) / d;
        return 1.0;
    default:
        return 1.0;
    }
}

void applyWindowTo(int window, float* x, int32_t n) {
    windowInto(window, x, x, n);
}

void windowInto(int window, const float* x, float* y, int32_t n) {
    if (n < 1) return;
    if (!tapers(window)) {
        if (y != x) std::memcpy(y, x, sizeof(float) * size_t(n));
        return;
    }
    const WindowTable& t = windowTable(window, n);
    if (!t.single.empty())
        batch::windowProductsSingle(t.single.data(), x, y, n);
    else
        batch::windowProducts(t.wide.data(), x, y, n);
}

bool timeTraceIsRaw(const ProgramState& st) {
    return tapers(st.FFT_Window) && st.TimeWindowed == 0;
}

bool timeTraceIsInput(const ProgramState& st) {
    return !tapers(st.FFT_Window);
}

void ApplyWindow(ProgramState& st) {
    releaseTransform(st);
    windowForSpectrum(st, st.FftRe, st.TraceBuf);
}

void ApplyWindowAt(ProgramState& st, float* x) {
    if (st.Fft_Samples >= 1) windowTrace(st, x, st.TraceBuf);
}

void ApplyWindowBack(ProgramState& st) {
    windowForSpectrum(st, st.BackRe, st.TraceBufR);
}

void ApplyWindowWf(const ProgramState& st, std::vector<float>& buf) {
    const int32_t n = st.Fft_Samples;
    if (n < 1) return;
    if (buf.size() < size_t(n) + 1) buf.resize(size_t(n) + 1, 0.0f);
    applyWindowTo(st.FFT_Window, buf.data() + 1, n);
}

void ApplyWindowRg(const ProgramState& st, float* trace) {
    // The tapered copy is only ever seen through the trace itself, so windowing in place while
    // TimeWindowed is 1 and leaving the trace alone otherwise is the same thing.
    if (st.TimeWindowed == 1) applyWindowTo(st.FFT_Window, trace, st.Sp_Samples);
}

} // namespace kv
