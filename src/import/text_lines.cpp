// Line reading, cell numbers, point-count fitting and thinning for the table readers.
#include "import/text_lines.h"

#include "platform/numeric.h"

#include <cctype>
#include <charconv>
#include <cstring>
#include <string_view>

namespace kv {

bool LineReader::fill() {
    constexpr size_t kChunk = 1 << 16;
    const uint64_t size = src_.size();
    if (offset_ >= size) return false;
    const std::span<const uint8_t> resident = src_.resident();
    if (resident.size() == size) {
        // A source held in memory is one chunk, read where it lies.
        data_ = reinterpret_cast<const char*>(resident.data());
        len_ = size_t(size);
    } else {
        len_ = size_t(std::min<uint64_t>(kChunk, size - offset_));
        // Sized to what is read: a short table does not clear a whole chunk first.
        if (buf_.size() < len_) buf_.resize(len_);
        src_.read(offset_, buf_.data(), len_);
        data_ = buf_.data();
    }
    offset_ += len_;
    at_ = 0;
    lf_ = SIZE_MAX;
    return true;
}

void LineReader::restart() {
    if (offset_ == len_) {
        // The chunk in the buffer is the first: it is read from its start again.
        at_ = 0;
        lf_ = SIZE_MAX;
        return;
    }
    at_ = len_ = 0;
    lf_ = SIZE_MAX;
    offset_ = 0;
}

bool LineReader::next(std::string& line) {
    std::string_view view;
    const bool any = next(view);
    line.assign(view);
    return any;
}

bool LineReader::next(std::string_view& line) {
    joined_.clear();
    bool any = false, joining = false;
    for (;;) {
        if (at_ >= len_ && !fill()) {
            line = joined_;
            return any;
        }
        any = true;
        // The line runs to the first line feed or carriage return of the chunk; memchr finds
        // it without a comparison per character.
        const char* from = data_ + at_;
        const size_t left = len_ - at_;
        // The next line feed is remembered for the chunk: lines ended by carriage returns
        // alone would otherwise search the rest of the chunk for one on every line.
        if (lf_ < at_ || lf_ > len_) {
            const void* at = std::memchr(from, '\n', left);
            lf_ = at ? size_t(static_cast<const char*>(at) - data_) : len_;
        }
        const char* lf = lf_ < len_ ? data_ + lf_ : nullptr;
        const char* cr = static_cast<const char*>(std::memchr(from, '\r', lf_ - at_));
        const char* end = cr ? cr : lf;
        if (!end) {
            joined_.append(from, left);
            joining = true;
            at_ = len_;
            continue;
        }
        const size_t n = size_t(end - from);
        at_ += n + 1;
        // A carriage return that ends the chunk may have its line feed at the start of the
        // next, whose reading overwrites the line: the line is kept aside first.
        if (*end == '\r' && at_ >= len_) {
            joined_.append(from, n);
            fill();
            if (at_ < len_ && data_[at_] == '\n') ++at_;
            line = joined_;
            return true;
        }
        if (*end == '\r' && data_[at_] == '\n') ++at_;
        if (joining) {
            joined_.append(from, n);
            line = joined_;
        } else {
            line = std::string_view(from, n);
        }
        return true;
    }
}

double cellNumber(const std::string& text) {
    size_t b = 0, e = text.size();
    auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (b < e && blank(text[b]))
        ++b;
    while (e > b && blank(text[e - 1]))
        --e;
    if (b == e) return 0.0;
    const std::string_view t = std::string_view(text).substr(b, e - b);
    size_t i = 0;
    auto digits = [&] {
        size_t n = 0;
        while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i])))
            ++i, ++n;
        return n;
    };
    if (t.size() > 2 && t[0] == '&' && (t[1] == 'H' || t[1] == 'h')) {
        for (i = 2; i < t.size(); ++i)
            if (!std::isxdigit(static_cast<unsigned char>(t[i]))) throw ReadError("Type mismatch");
        return Val(t);
    }
    if (t[i] == '+' || t[i] == '-') ++i;
    size_t n = digits();
    if (i < t.size() && t[i] == '.') {
        ++i;
        n += digits();
    }
    if (n == 0) throw ReadError("Type mismatch");
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
        if (digits() == 0) throw ReadError("Type mismatch");
    }
    if (i != t.size()) throw ReadError("Type mismatch");
    // A plain number without a plus sign (nearly every cell) reads the same straight through
    // from_chars, as Val's own digits would, correctly rounded: Val is left for the rest, whose
    // signs, exponents or ranges it treats in its own way. A short text cannot hold the leading
    // zeros that would bring an exponent past Val's cap back into range.
    if (t.size() <= 40 && t[0] != '+') {
        double v = 0.0;
        const auto r = std::from_chars(t.data(), t.data() + t.size(), v);
        if (r.ec == std::errc() && r.ptr == t.data() + t.size()) return v == 0.0 ? 0.0 : v;
    }
    return Val(t);
}

void fitToPointCount(ProgramState& st, double n) {
    if (st.PadWithZero) {
        for (int k = 1; k <= 16; ++k)
            if (double(1 << k) >= n) {
                st.Sp_Samples = 1 << k;
                return;
            }
    } else {
        for (int k = 16; k >= 1; --k)
            if (double(1 << k) <= n) {
                st.Sp_Samples = 1 << k;
                return;
            }
    }
}

void writeSingleTrace(ProgramState& st, const std::vector<float>& trace) {
    TraceFileWriter out;
    out.open(st.TempPath);
    out.write(1, trace);
    st.WorkingFileLength = out.length();
    st.TraceCount = 1;
    out.close();
}

void setUnroundedFullScale(ProgramState& st, float max, float min, float& follower) {
    if (-min <= max) {
        st.FullScalePos = max;
    } else {
        st.FullScalePos = -min;
        st.FullScaleNeg = -min;
    }
    follower = st.FullScalePos;
}

std::vector<double> thinPoints(const ProgramState& st, const std::vector<double>& raw) {
    const int ds = st.NewDS;
    if (ds <= 1) return raw;
    std::vector<double> out;
    out.reserve(raw.size() / size_t(ds) + 1);
    for (size_t start = 0; start + size_t(ds) <= raw.size(); start += size_t(ds)) {
        if (st.DownsampleMode == 0) {
            double sum = 0;
            for (int m = 0; m < ds; ++m)
                sum += raw[start + size_t(m)];
            out.push_back(sum / ds);
        } else {
            out.push_back(raw[start]);
        }
    }
    return out;
}

} // namespace kv
