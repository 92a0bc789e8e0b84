// The transforms over FFTW in single precision. Plans are made once per length and kept, so
// playing through a recording never plans again. Power-of-two lengths are kept for the life of
// the process; other lengths come from whatever a file declares (a scope capture may hold any
// sample count), so once many of them have gathered they are dropped and made again on demand.
//
// Plans are made with FFTW_ESTIMATE: they cost well under a millisecond even at 65536 points, so
// opening a recording or changing the trace length in the options never stalls the workbench,
// and the chosen algorithm (and therefore every last bit of every spectrum) is the same on every
// run. Measured plans would be up to twice as fast at 65536 points, but they take most of a
// second per length to make and may pick different algorithms from run to run.
//
// FFTW's complex transform on split arrays is several times slower than its interleaved one, and
// a real-input transform is faster still: the forward transform therefore packs into an aligned
// interleaved buffer, and when the imaginary input is all zero (every trace read from a working
// file) it runs the real-input plan and fills in the mirror half.
#include "engine/fft.h"

#include "engine/batch_math.h"

#include <fftw3.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <unordered_map>

namespace kv::fft {

namespace {

/// FFTW's planner is not thread-safe, and destroying a plan counts as planning. Recursive,
/// because a thread that holds it may drop its last plan while it makes the next.
std::recursive_mutex& plannerLock() {
    static std::recursive_mutex lock;
    return lock;
}

struct Plans {
    fftwf_plan forward = nullptr;
    fftwf_plan inverse = nullptr;
    fftwf_plan realForward = nullptr;
    Plans() = default;
    Plans(const Plans&) = delete;
    Plans& operator=(const Plans&) = delete;
    ~Plans() {
        std::lock_guard<std::recursive_mutex> guard(plannerLock());
        for (fftwf_plan p : {forward, inverse, realForward})
            if (p) fftwf_destroy_plan(p);
    }
};

/// How many lengths the cache holds before the lengths that are not powers of two are dropped.
constexpr size_t kCachedLengths = 64;

bool powerOfTwo(int32_t n) {
    return (n & (n - 1)) == 0;
}

/// Buffers aligned the way FFTW wants them; one set per thread, grown as lengths grow.
template <typename T> struct AlignedBuffer {
    T* data = nullptr;
    size_t size = 0;
    ~AlignedBuffer() { fftwf_free(data); }
    T* get(size_t n) {
        if (n > size) {
            fftwf_free(data);
            data = static_cast<T*>(fftwf_malloc(sizeof(T) * n));
            if (!data) throw std::bad_alloc();
            size = n;
        }
        return data;
    }
};

struct Scratch {
    AlignedBuffer<fftwf_complex> in, out;
    AlignedBuffer<float> real;
};

/// Floats of room before the real input: one is needed, eight keep the input as aligned as the
/// buffer itself, which is what the plans were made for.
constexpr size_t kRealFront = 8;

thread_local Scratch tScratch;

void checkLength(int32_t n) {
    if (n < 1 || n > kMaxLength) throw std::invalid_argument("transform length out of range");
}

/// The cached plans of length n, made on first use. Planning is not thread-safe in FFTW, so it
/// runs under one lock; executing a finished plan on other arrays is. Each thread holds on to the
/// plans it used last, so a length dropped from the cache stays valid for a thread still using it.
std::unordered_map<int32_t, std::shared_ptr<const Plans>>& planCache() {
    static std::unordered_map<int32_t, std::shared_ptr<const Plans>> cache;
    return cache;
}

const Plans& plansFor(int32_t n) {
    thread_local int32_t lastN = 0;
    thread_local std::shared_ptr<const Plans> last;
    if (last && n == lastN) return *last;
    checkLength(n);
    std::lock_guard<std::recursive_mutex> guard(plannerLock());
    auto& cache = planCache();
    auto it = cache.find(n);
    if (it == cache.end()) {
        if (cache.size() >= kCachedLengths)
            std::erase_if(cache, [](const auto& entry) { return !powerOfTwo(entry.first); });
        auto p = std::make_shared<Plans>();
        // Planning arrays: with FFTW_ESTIMATE nothing is written to them; only their alignment
        // matters, and it is the same as that of the scratch buffers used for execution.
        AlignedBuffer<fftwf_complex> a, b;
        AlignedBuffer<float> r;
        const size_t un = size_t(n);
        p->forward = fftwf_plan_dft_1d(n, a.get(un), b.get(un), FFTW_FORWARD, FFTW_ESTIMATE);
        p->inverse = fftwf_plan_dft_1d(n, a.get(un), b.get(un), FFTW_BACKWARD, FFTW_ESTIMATE);
        p->realForward = fftwf_plan_dft_r2c_1d(n, r.get(un), b.get(un), FFTW_ESTIMATE);
        if (!p->forward || !p->inverse || !p->realForward)
            throw std::runtime_error("FFTW could not plan the transform");
        it = cache.emplace(n, std::move(p)).first;
    }
    lastN = n;
    last = it->second;
    return *last;
}

bool allZero(const float* x, int32_t n) {
    // Bitwise test, no early exit, so that the loop vectorises: a trace read from a working file
    // has an imaginary part of exact zeros.
    uint32_t any = 0;
    for (int32_t i = 0; i < n; ++i) {
        uint32_t bits;
        std::memcpy(&bits, &x[i], sizeof bits);
        any |= bits << 1; // -0 counts as zero
    }
    return any == 0;
}

void pack(const float* re, const float* im, fftwf_complex* to, int32_t n) {
    for (int32_t i = 0; i < n; ++i) {
        to[i][0] = re[i];
        to[i][1] = im[i];
    }
}

void unpack(const fftwf_complex* from, float* re, float* im, int32_t n, float scale) {
    for (int32_t i = 0; i < n; ++i) {
        re[i] = from[i][0] * scale;
        im[i] = from[i][1] * scale;
    }
}

} // namespace

void prepare(int32_t n) {
    plansFor(n);
}

size_t cachedLengths() {
    std::lock_guard<std::recursive_mutex> guard(plannerLock());
    return planCache().size();
}

float* realInput(int32_t n) {
    checkLength(n);
    return tScratch.real.get(size_t(n) + kRealFront) + kRealFront;
}

void forwardRealPacked(const float* in, float* out, int32_t n) {
    const Plans& p = plansFor(n);
    // FFTW leaves the input of an out-of-place real transform as it was.
    fftwf_execute_dft_r2c(p.realForward, const_cast<float*>(in),
                          reinterpret_cast<fftwf_complex*>(out));
}

void forwardRealInput(const float* in, float* re, float* im, int32_t n, bool mirror) {
    float* out = &tScratch.out.get(size_t(n))[0][0];
    forwardRealPacked(in, out, n);
    const float scale = forwardScale(n);
    if (mirror)
        batch::unpackRealSpectrum(out, re, im, n, scale);
    else
        batch::unpackRealSpectrumLowerHalf(out, re, im, n, scale);
}

bool takesAsInput(const float* p) {
    // The plans were made on buffers from fftwf_malloc, whose alignment FFTW counts as 0.
    return fftwf_alignment_of(const_cast<float*>(p)) == 0;
}

void forwardReal(float* re, float* im, int32_t n) {
    float* real = realInput(n);
    std::memcpy(real, re, sizeof(float) * size_t(n));
    forwardRealInput(real, re, im, n, true);
}

void forward(float* re, float* im, int32_t n) {
    const Plans& p = plansFor(n);
    if (allZero(im, n)) {
        forwardReal(re, im, n);
        return;
    }
    const size_t un = size_t(n);
    const float scale = forwardScale(n);
    fftwf_complex* out = tScratch.out.get(un);
    fftwf_complex* in = tScratch.in.get(un);
    pack(re, im, in, n);
    fftwf_execute_dft(p.forward, in, out);
    unpack(out, re, im, n, scale);
}

void inverse(float* re, float* im, int32_t n) {
    const Plans& p = plansFor(n);
    const size_t un = size_t(n);
    fftwf_complex* in = tScratch.in.get(un);
    fftwf_complex* out = tScratch.out.get(un);
    pack(re, im, in, n);
    fftwf_execute_dft(p.inverse, in, out);
    unpack(out, re, im, n, 1.0f);
}

} // namespace kv::fft
