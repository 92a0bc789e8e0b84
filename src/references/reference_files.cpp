// Reading and writing the reference files, byte for byte at their fixed offsets.
#include "references/reference_files.h"

#include "platform/byte_source.h"

#include <cmath>
#include <cstring>

namespace kv {

namespace {

/// A file image that grows as fields are put into it; what no field covers stays zero.
class Image {
  public:
    template <typename T> void put(size_t offset, T v) {
        if (bytes_.size() < offset + sizeof(T)) bytes_.resize(offset + sizeof(T), '\0');
        // The workbench runs on little-endian machines only; the files are little-endian.
        std::memcpy(bytes_.data() + offset, &v, sizeof(T));
    }
    void text(size_t offset, const char* s) {
        const size_t n = std::strlen(s);
        if (bytes_.size() < offset + n) bytes_.resize(offset + n, '\0');
        std::memcpy(bytes_.data() + offset, s, n);
    }
    void floats(size_t offset, const std::vector<float>& v) {
        if (bytes_.size() < offset) bytes_.resize(offset, '\0');
        bytes_.resize(offset + v.size() * sizeof(float), '\0');
        if (!v.empty()) std::memcpy(bytes_.data() + offset, v.data(), v.size() * sizeof(float));
    }
    std::string take() { return std::move(bytes_); }

  private:
    std::string bytes_;
};

/// True when `count` values of 4 bytes from `offset` lie inside the source.
bool fits(const ByteSource& src, uint64_t offset, int64_t count) {
    if (count < 1) return false;
    const uint64_t size = src.size();
    return offset <= size && uint64_t(count) <= (size - offset) / 4;
}

/// Reads `count` floats from `offset`; false when any is not a finite number.
bool readValues(const ByteSource& src, uint64_t offset, int64_t count, std::vector<float>& out) {
    out.assign(size_t(count), 0.0f);
    src.read(offset, out.data(), out.size() * sizeof(float));
    for (float v : out)
        if (!std::isfinite(v)) return false;
    return true;
}

bool finite(double v) {
    return std::isfinite(v);
}

} // namespace

// ---- .pns
// -----------------------------------------------------------------------------------------

std::string writePns(const PnsFile& f) {
    Image img;
    img.text(0, kPnsMagic);
    img.put<float>(11, f.MaxFreq);
    img.put<int32_t>(20, f.FullScale);
    img.put<float>(26, f.BinStep);
    img.put<int32_t>(39, f.Bins);
    img.put<int16_t>(49, f.Window);
    img.put<double>(51, f.Level);
    img.floats(kPnsDataOffset, f.Data);
    return img.take();
}

RefRead readPns(const ByteSource& src, PnsFile& out, bool withData) {
    if (src.text(0, 6) != kPnsMagic) return RefRead::WrongFormat;
    PnsFile f;
    f.MaxFreq = src.f32le(11);
    f.FullScale = src.i32le(20);
    f.BinStep = src.f32le(26);
    f.Bins = src.i32le(39);
    f.Window = src.i16le(49);
    f.Level = src.f64le(51);
    if (!finite(f.MaxFreq) || !finite(f.BinStep) || !finite(f.Level) || f.FullScale <= 0 ||
        f.Bins < 1 || !fits(src, kPnsDataOffset, int64_t(f.Bins) + 1))
        return RefRead::Invalid;
    if (withData && !readValues(src, kPnsDataOffset, int64_t(f.Bins) + 1, f.Data))
        return RefRead::Invalid;
    out = std::move(f);
    return RefRead::Ok;
}

// ---- .pno
// -----------------------------------------------------------------------------------------

std::string writePno(const PnoFile& f) {
    Image img;
    img.text(0, kPnoMagic);
    img.put<int32_t>(9, f.Samples);
    img.put<float>(19, f.FullScale);
    img.put<double>(29, f.Span);
    img.floats(kPnoDataOffset, f.Data);
    return img.take();
}

RefRead readPno(const ByteSource& src, PnoFile& out) {
    PnoFile f;
    f.Samples = src.i16le(9);
    f.FullScale = src.f32le(19);
    f.Span = src.f64le(29);
    if (!finite(f.FullScale) || f.FullScale <= 0 || !finite(f.Span) || f.Span <= 0 ||
        f.Samples < 1 || !fits(src, kPnoDataOffset, int64_t(f.Samples) + 1))
        return RefRead::Invalid;
    if (!readValues(src, kPnoDataOffset, int64_t(f.Samples) + 1, f.Data)) return RefRead::Invalid;
    out = std::move(f);
    return RefRead::Ok;
}

// ---- .pnp
// -----------------------------------------------------------------------------------------

std::string writePnp(const PnpFile& f) {
    Image img;
    img.text(0, kPnpMagic);
    img.put<float>(9, f.MaxFreq);
    img.put<int32_t>(20, f.Bins);
    img.put<float>(29, f.BinStep);
    img.floats(kPnpDataOffset, f.Data);
    return img.take();
}

RefRead readPnp(const ByteSource& src, PnpFile& out) {
    PnpFile f;
    f.MaxFreq = src.f32le(9);
    f.Bins = src.i32le(20);
    f.BinStep = src.f32le(29);
    if (!finite(f.MaxFreq) || !finite(f.BinStep) || f.Bins < 1 ||
        !fits(src, kPnpDataOffset, int64_t(f.Bins) + 1))
        return RefRead::Invalid;
    if (!readValues(src, kPnpDataOffset, int64_t(f.Bins) + 1, f.Data)) return RefRead::Invalid;
    out = std::move(f);
    return RefRead::Ok;
}

} // namespace kv
