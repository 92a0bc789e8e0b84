// Sample decoding for the standards-conformant seismic readers. Each type and byte order has
// its own loop (a template instance), so decoding a trace costs no branch per sample.
#include "import/standard_samples.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kv {

namespace {

/// The value of an IBM float: sign, a base-16 exponent biased by 64, and a 24-bit fraction
/// below the hexadecimal point, value = fraction * 2^(4 * exponent - 280). The fraction has at
/// most 24 significant bits, so it converts to a float exactly; the power of two then only
/// moves that float's exponent. Written without branches so that a trace of them decodes as
/// one vector loop.
inline float ibmValue(uint32_t bits) {
    const uint32_t fraction = bits & 0x00FFFFFFu;
    const uint32_t f = std::bit_cast<uint32_t>(float(int32_t(fraction)));
    const int32_t biased = int32_t(f >> 23) + 4 * int32_t((bits >> 24) & 0x7F) - 280;
    const uint32_t sign = bits & 0x80000000u;
    uint32_t out = sign | (uint32_t(biased) << 23) | (f & 0x007FFFFFu);
    out = biased >= 255 ? (sign | 0x7F7FFFFFu) : out; // beyond a float: its largest value
    out = biased <= 0 || fraction == 0 ? 0u : out;    // below a normal float, or zero: 0
    return std::bit_cast<float>(out);
}

template <int N, bool Big> inline uint64_t loadUnsigned(const uint8_t* p) {
    uint64_t v = 0;
    for (int i = 0; i < N; ++i)
        v |= uint64_t(p[Big ? i : N - 1 - i]) << (8 * (N - 1 - i));
    return v;
}

template <int N, bool Big> inline int64_t loadSigned(const uint8_t* p) {
    const uint64_t u = loadUnsigned<N, Big>(p);
    if constexpr (N == 8) {
        return int64_t(u);
    } else {
        constexpr uint64_t sign = uint64_t(1) << (8 * N - 1);
        return int64_t(u ^ sign) - int64_t(sign);
    }
}

template <SampleType T, bool Big> inline float decodeOne(const uint8_t* p) {
    if constexpr (T == SampleType::Int8) return float(int8_t(p[0]));
    if constexpr (T == SampleType::UInt8) return float(p[0]);
    if constexpr (T == SampleType::Int16) return float(loadSigned<2, Big>(p));
    if constexpr (T == SampleType::UInt16) return float(loadUnsigned<2, Big>(p));
    if constexpr (T == SampleType::Int24) return float(loadSigned<3, Big>(p));
    if constexpr (T == SampleType::UInt24) return float(loadUnsigned<3, Big>(p));
    if constexpr (T == SampleType::Int32) return float(int32_t(loadUnsigned<4, Big>(p)));
    if constexpr (T == SampleType::UInt32) return float(uint32_t(loadUnsigned<4, Big>(p)));
    if constexpr (T == SampleType::Int64) return float(loadSigned<8, Big>(p));
    if constexpr (T == SampleType::UInt64) return float(loadUnsigned<8, Big>(p));
    if constexpr (T == SampleType::IbmFloat) return ibmValue(uint32_t(loadUnsigned<4, Big>(p)));
    if constexpr (T == SampleType::Float32) {
        return std::bit_cast<float>(uint32_t(loadUnsigned<4, Big>(p)));
    }
    if constexpr (T == SampleType::Float64)
        return float(std::bit_cast<double>(loadUnsigned<8, Big>(p)));
    return 0.0f;
}

template <SampleType T, bool Big> void decodeAll(const uint8_t* in, size_t n, float* out) {
    constexpr size_t w =
        T == SampleType::Int8 || T == SampleType::UInt8                                 ? 1
        : T == SampleType::Int16 || T == SampleType::UInt16                             ? 2
        : T == SampleType::Int24 || T == SampleType::UInt24                             ? 3
        : T == SampleType::Int64 || T == SampleType::UInt64 || T == SampleType::Float64 ? 8
                                                                                        : 4;
    for (size_t i = 0; i < n; ++i)
        out[i] = decodeOne<T, Big>(in + i * w);
}

template <bool Big> void decodePacked20(const uint8_t* in, size_t n, float* out) {
    for (size_t i = 0; i < n; i += 4) {
        const uint8_t* g = in + (i / 4) * 10;
        const uint32_t exponents = uint32_t(loadUnsigned<2, Big>(g));
        for (size_t k = 0; k < 4 && i + k < n; ++k) {
            int32_t m = int32_t(loadSigned<2, Big>(g + 2 + 2 * k));
            // One's complement: a negative mantissa is one below its two's-complement reading.
            if (m < 0) m += 1;
            const int e = int((exponents >> (4 * k)) & 0xF);
            out[i + k] = float(int64_t(m) * (int64_t(1) << e));
        }
    }
}

template <bool Big> void decodeIn(SampleType t, const uint8_t* in, size_t n, float* out) {
    using S = SampleType;
    switch (t) {
    case S::Int8:
        return decodeAll<S::Int8, Big>(in, n, out);
    case S::UInt8:
        return decodeAll<S::UInt8, Big>(in, n, out);
    case S::Int16:
        return decodeAll<S::Int16, Big>(in, n, out);
    case S::UInt16:
        return decodeAll<S::UInt16, Big>(in, n, out);
    case S::Int24:
        return decodeAll<S::Int24, Big>(in, n, out);
    case S::UInt24:
        return decodeAll<S::UInt24, Big>(in, n, out);
    case S::Int32:
        return decodeAll<S::Int32, Big>(in, n, out);
    case S::UInt32:
        return decodeAll<S::UInt32, Big>(in, n, out);
    case S::Int64:
        return decodeAll<S::Int64, Big>(in, n, out);
    case S::UInt64:
        return decodeAll<S::UInt64, Big>(in, n, out);
    case S::IbmFloat:
        return decodeAll<S::IbmFloat, Big>(in, n, out);
    case S::Float32:
        return decodeAll<S::Float32, Big>(in, n, out);
    case S::Float64:
        return decodeAll<S::Float64, Big>(in, n, out);
    case S::Packed20:
        return decodePacked20<Big>(in, n, out);
    }
}

} // namespace

uint64_t bytesForSamples(SampleType t, uint64_t n) {
    using S = SampleType;
    switch (t) {
    case S::Int8:
    case S::UInt8:
        return n;
    case S::Int16:
    case S::UInt16:
        return 2 * n;
    case S::Int24:
    case S::UInt24:
        return 3 * n;
    case S::Int64:
    case S::UInt64:
    case S::Float64:
        return 8 * n;
    case S::Packed20:
        return (n + 3) / 4 * 10;
    default:
        return 4 * n;
    }
}

bool isIntegerType(SampleType t) {
    return integerFullScale(t) > 0;
}

double integerFullScale(SampleType t) {
    using S = SampleType;
    switch (t) {
    case S::Int8:
        return 127.0;
    case S::UInt8:
        return 255.0;
    case S::Int16:
        return 32767.0;
    case S::UInt16:
        return 65535.0;
    case S::Int24:
        return 8388607.0;
    case S::UInt24:
        return 16777215.0;
    case S::Int32:
        return 2147483647.0;
    case S::UInt32:
        return 4294967295.0;
    case S::Int64:
        return 9223372036854775807.0;
    case S::UInt64:
        return 18446744073709551615.0;
    default:
        return 0.0;
    }
}

int sampleBitsOf(SampleType t) {
    if (t == SampleType::Packed20) return 20;
    return int(bytesForSamples(t, 1)) * 8;
}

std::string describeSampleType(SampleType t) {
    using S = SampleType;
    switch (t) {
    case S::Int8:
        return "1-byte signed integer";
    case S::UInt8:
        return "1-byte unsigned integer";
    case S::Int16:
        return "2-byte signed integer";
    case S::UInt16:
        return "2-byte unsigned integer";
    case S::Int24:
        return "3-byte signed integer";
    case S::UInt24:
        return "3-byte unsigned integer";
    case S::Int32:
        return "4-byte signed integer";
    case S::UInt32:
        return "4-byte unsigned integer";
    case S::Int64:
        return "8-byte signed integer";
    case S::UInt64:
        return "8-byte unsigned integer";
    case S::IbmFloat:
        return "4-byte IBM float";
    case S::Float32:
        return "4-byte IEEE float";
    case S::Float64:
        return "8-byte IEEE float";
    case S::Packed20:
        return "20-bit packed float";
    }
    return "";
}

float ibmToFloat(uint32_t bits) {
    return ibmValue(bits);
}

void decodeSamples(SampleType t, bool bigEndian, const uint8_t* in, size_t n, float* out) {
    if (bigEndian)
        decodeIn<true>(t, in, n, out);
    else
        decodeIn<false>(t, in, n, out);
}

void SamplePeak::take(const float* v, size_t n) {
    // A magnitude's bits order as the magnitude does, so the search runs on integers (a vector
    // loop); NaNs and infinities, whose bits lie above every finite value, are passed over.
    int32_t best = std::bit_cast<int32_t>(peak);
    for (size_t i = 0; i < n; ++i) {
        const int32_t a = std::bit_cast<int32_t>(v[i]) & 0x7FFFFFFF;
        best = std::max(best, a < 0x7F800000 ? a : 0);
    }
    peak = std::bit_cast<float>(best);
}

float fullScaleFor(bool integerSamples, double integerScale, const SamplePeak& peak) {
    if (integerSamples) return float(integerScale);
    return peak.peak > 0.0f ? peak.peak : 1.0f;
}

} // namespace kv
