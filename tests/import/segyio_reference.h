// The samples segyio's C library reads from a SEG-Y file: the peer the SEG-Y readers are
// compared with, sample for sample.
#pragma once

#include <segyio/segy.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace kv::test {

/// The traces of a file as segyio reads them (IBM floats converted, integers widened), the
/// binary header taken low byte first when `lsb`. Empty when segyio cannot read the file; a
/// sample count that segyio reads as negative is refused here before it reaches the library,
/// which would stop the process on it.
inline std::vector<std::vector<float>> segyioTraces(const std::string& path, bool lsb) {
    std::vector<std::vector<float>> out;
    segy_file* fp = segy_open(path.c_str(), "rb");
    if (!fp) return out;
    if (lsb) segy_set_format(fp, SEGY_LSB);
    std::vector<char> bin(static_cast<size_t>(segy_binheader_size()));
    segy_binheader(fp, bin.data());
    const int format = segy_format(bin.data());
    const int samples = segy_samples(bin.data());
    if (samples <= 0) {
        segy_close(fp);
        return out;
    }
    segy_set_format(fp, format | (lsb ? SEGY_LSB : SEGY_MSB));
    const long trace0 = segy_trace0(bin.data());
    const int bsize = segy_trsize(format, samples);
    int traces = 0;
    if (segy_traces(fp, &traces, trace0, bsize) != SEGY_OK) traces = 0;
    std::vector<char> buf(static_cast<size_t>(bsize));
    for (int t = 0; t < traces; ++t) {
        segy_readtrace(fp, t, buf.data(), trace0, bsize);
        segy_to_native(format, samples, buf.data());
        std::vector<float> v(static_cast<size_t>(samples));
        for (int i = 0; i < samples; ++i) {
            if (format == SEGY_SIGNED_SHORT_2_BYTE) {
                int16_t x;
                std::memcpy(&x, buf.data() + 2 * i, 2);
                v[size_t(i)] = x;
            } else if (format == SEGY_SIGNED_INTEGER_4_BYTE) {
                int32_t x;
                std::memcpy(&x, buf.data() + 4 * i, 4);
                v[size_t(i)] = float(x);
            } else {
                std::memcpy(&v[size_t(i)], buf.data() + 4 * i, 4);
            }
        }
        out.push_back(std::move(v));
    }
    segy_close(fp);
    return out;
}

} // namespace kv::test
