// Finding a key in a recording's text header by a few of its letters, in either case. Headers are
// scanned byte by byte for every file opened, so the scan jumps between the places where the
// key's first letter stands, found by memchr, instead of testing every byte.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kv {

/// True when the byte is `ch` in either case: plain ASCII, the same in every locale. A letter's
/// capital is the byte with its 0x20 bit cleared; any other character must match exactly.
inline bool sameLetter(uint8_t byte, char ch) {
    const uint8_t c = uint8_t(ch);
    const bool letter = (c >= 'A' && c <= 'Z');
    return letter ? (byte & 0xDF) == c : byte == c;
}

/// The first i in [0, n) where b[i] is the capital letter `first` in either case and fits(b + i)
/// holds; n when there is none. fits may read as far past b + n as the caller allows.
template <class Fits> size_t findKey(const uint8_t* b, size_t n, char first, Fits fits) {
    const uint8_t* end = b + n;
    auto next = [end](const uint8_t* from, int c) {
        const void* at = std::memchr(from, c, size_t(end - from));
        return at ? static_cast<const uint8_t*>(at) : end;
    };
    const int capital = uint8_t(first), small = capital | 0x20;
    const uint8_t* big = next(b, capital);
    const uint8_t* little = next(b, small);
    for (const uint8_t* at = std::min(big, little); at < end; at = std::min(big, little)) {
        if (fits(at)) return size_t(at - b);
        if (at == big) big = next(at + 1, capital);
        if (at == little) little = next(at + 1, small);
    }
    return n;
}

} // namespace kv
