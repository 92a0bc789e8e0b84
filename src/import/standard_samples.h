// Sample codings of the standards-conformant SEG-Y and SEG-2 entries: every integer width
// signed and unsigned, IBM and IEEE floats, and the 20-bit packed samples of SEG-2, in either
// byte order, decoded a whole trace at a time into the working file's floats.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kv {

enum class SampleType {
    Int8,
    UInt8,
    Int16,
    UInt16,
    Int24,
    UInt24,
    Int32,
    UInt32,
    Int64,
    UInt64,
    IbmFloat,
    Float32,
    Float64,
    /// Groups of four samples in ten bytes: a word of four 4-bit exponents, then four 16-bit
    /// one's-complement mantissas; a sample is its mantissa times 2 to its exponent.
    Packed20
};

/// Bytes that `n` samples of `t` occupy (a last, partial Packed20 group counts whole).
uint64_t bytesForSamples(SampleType t, uint64_t n);
/// True for the integer types, whose full scale is fixed by their width.
bool isIntegerType(SampleType t);
/// The largest value an integer type holds (its positive full scale); 0 for the others.
double integerFullScale(SampleType t);
/// Bits a sample of `t` carries (20 for Packed20).
int sampleBitsOf(SampleType t);
/// A short description for file information ("4-byte IBM float").
std::string describeSampleType(SampleType t);

/// An IBM System/360 single-precision float (its bits as a number) as the nearest float: every
/// value a float can hold comes out exactly, a magnitude below the smallest normal float is 0,
/// and one above the largest float is the largest float, signed.
float ibmToFloat(uint32_t bits);

/// Decodes `n` samples of `t` stored in `bigEndian` order at `in` into `out`.
void decodeSamples(SampleType t, bool bigEndian, const uint8_t* in, size_t n, float* out);

/// The largest magnitude among finite samples seen so far.
struct SamplePeak {
    float peak = 0.0f;
    void take(const float* v, size_t n);
};

/// FullScalePos of a file: the type's full scale for integers, else the largest magnitude of
/// its samples, and 1 when every sample was 0 (a full scale of 0 would divide by zero).
float fullScaleFor(bool integerSamples, double integerScale, const SamplePeak& peak);

} // namespace kv
