// Number rules shared by every part of the workbench: rounding, reading numbers out of text and
// writing them on labels. See numeric.h for the rules themselves.
#include "platform/numeric.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace kv {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads text character by character, stepping over blanks the way Val does everywhere.
class BlankSkippingCursor {
  public:
    explicit BlankSkippingCursor(std::string_view text) : text_(text) { skipBlanks(); }
    bool atEnd() const { return pos_ >= text_.size(); }
    char peek() const { return atEnd() ? '\0' : text_[pos_]; }
    void advance() {
        ++pos_;
        skipBlanks();
    }
    size_t position() const { return pos_; }
    void rewind(size_t pos) { pos_ = pos; }

  private:
    void skipBlanks() {
        while (pos_ < text_.size() && isBlank(text_[pos_]))
            ++pos_;
    }
    std::string_view text_;
    size_t pos_ = 0;
};

// "&H" and "&O" numbers: small values are 16-bit, as old integer literals were.
double radixValue(BlankSkippingCursor& in, int radix) {
    uint32_t value = 0;
    for (;;) {
        const int digit = hexDigitValue(in.peek());
        if (digit < 0 || digit >= radix) break;
        value = value * static_cast<uint32_t>(radix) + static_cast<uint32_t>(digit);
        in.advance();
    }
    if (value <= 0xFFFFu) return static_cast<int16_t>(static_cast<uint16_t>(value));
    return static_cast<int32_t>(value);
}

double decimalValue(BlankSkippingCursor& in) {
    bool negative = false;
    if (in.peek() == '+' || in.peek() == '-') {
        negative = in.peek() == '-';
        in.advance();
    }
    // The number is built in one standard form for from_chars, which is locale-free and
    // correctly rounded: "0" + whole digits + "." + fraction digits + "0e" + exponent. The
    // leading and trailing zeros change nothing. The buffer is kept from call to call, so that a
    // table of numbers is read without an allocation a cell.
    thread_local std::string number;
    number.assign(1, '0');
    while (isDigit(in.peek())) {
        number += in.peek();
        in.advance();
    }
    const size_t wholeDigits = number.size() - 1;
    number += '.';
    const size_t fractionAt = number.size();
    if (in.peek() == '.') {
        in.advance();
        while (isDigit(in.peek())) {
            number += in.peek();
            in.advance();
        }
    }
    const size_t fractionDigits = number.size() - fractionAt;
    if (wholeDigits == 0 && fractionDigits == 0) return 0.0;

    // The exponent belongs to the number only when at least one digit follows the E.
    long exponent = 0;
    if (in.peek() == 'E' || in.peek() == 'e') {
        const size_t mark = in.position();
        in.advance();
        bool negativeExponent = false;
        if (in.peek() == '+' || in.peek() == '-') {
            negativeExponent = in.peek() == '-';
            in.advance();
        }
        if (!isDigit(in.peek())) {
            in.rewind(mark);
        } else {
            // Far beyond any double's range already; capping keeps the arithmetic in bounds.
            while (isDigit(in.peek())) {
                exponent = std::min(exponent * 10 + (in.peek() - '0'), 100000L);
                in.advance();
            }
            if (negativeExponent) exponent = -exponent;
        }
    }

    char tail[24] = {'0', 'e'};
    const auto written = std::to_chars(tail + 2, tail + sizeof tail, exponent);
    number.append(tail, size_t(written.ptr - tail));
    double value = 0.0;
    const auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
    (void)end;
    if (ec == std::errc::result_out_of_range) {
        // Too large or too small for a double: the magnitude decides which.
        const std::string_view whole(number.data() + 1, wholeDigits);
        const std::string_view fraction(number.data() + fractionAt, fractionDigits);
        const size_t firstWhole = whole.find_first_not_of('0');
        long magnitude = exponent;
        if (firstWhole != std::string_view::npos) {
            magnitude += static_cast<long>(whole.size() - firstWhole);
        } else {
            magnitude -= static_cast<long>(fraction.find_first_not_of('0'));
        }
        value = magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    if (value == 0.0) return 0.0; // "-0" reads as plain zero
    return negative ? -value : value;
}

std::string nonFiniteText(double x) {
    if (std::isnan(x)) return "NaN";
    return x < 0 ? "-Infinity" : "Infinity";
}

// Writes significant digits d1 d2 d3 ... meaning d1.d2d3... x 10^exponent in the general style.
std::string generalText(bool negative, std::string_view digits, int exponent, int plainLimit = 15) {
    std::string out = negative ? "-" : "";
    if (exponent >= -4 && exponent < plainLimit) {
        if (exponent < 0) {
            out += "0.";
            out.append(static_cast<size_t>(-exponent - 1), '0');
            out += digits;
        } else {
            const size_t wholeCount = static_cast<size_t>(exponent) + 1;
            if (digits.size() <= wholeCount) {
                out += digits;
                out.append(wholeCount - digits.size(), '0');
            } else {
                out += digits.substr(0, wholeCount);
                out += '.';
                out += digits.substr(wholeCount);
            }
        }
        return out;
    }
    out += digits[0];
    if (digits.size() > 1) {
        out += '.';
        out += digits.substr(1);
    }
    out += exponent < 0 ? "E-" : "E+";
    const int magnitude = std::abs(exponent);
    if (magnitude < 10) out += '0';
    out += std::to_string(magnitude);
    return out;
}

// Splits to_chars scientific output ("-1.25e+01") into sign, digits without trailing zeros
// ("125") and the decimal exponent (1), then writes it in the general style.
std::string generalFromScientific(std::string_view sci, int plainLimit = 15) {
    const bool negative = sci.front() == '-';
    if (negative) sci.remove_prefix(1);
    const size_t e = sci.find('e');
    std::string digits;
    for (char c : sci.substr(0, e))
        if (isDigit(c)) digits += c;
    while (digits.size() > 1 && digits.back() == '0')
        digits.pop_back();
    int exponent = 0;
    std::string_view exponentText = sci.substr(e + 1);
    if (exponentText.front() == '+') exponentText.remove_prefix(1);
    std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent);
    if (digits == "0") return "0";
    return generalText(negative, digits, exponent, plainLimit);
}

} // namespace

double roundHalfEven(double x) {
    // From 2^52 on every double is whole; NaN and infinities fail the test and come back too.
    constexpr double kWhole = 4503599627370496.0; // 2^52
    if (!(std::fabs(x) < kWhole)) return x;
    // Adding and taking away 2^52 leaves no bits below the units, and the addition rounds to
    // nearest with ties to even, as IEEE arithmetic does by default: the rule itself, inline,
    // with no library call (the views round every point they draw).
    const double m = std::copysign(kWhole, x);
    const double r = (x + m) - m;
    return r == 0.0 ? 0.0 : r;
}

int32_t toInt32(double x) {
    if (std::isnan(x)) return 0;
    const double r = roundHalfEven(x);
    if (r <= std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    if (r >= std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(r);
}

int16_t toInt16(double x) {
    if (std::isnan(x)) return 0;
    const double r = roundHalfEven(x);
    if (r <= std::numeric_limits<int16_t>::min()) return std::numeric_limits<int16_t>::min();
    if (r >= std::numeric_limits<int16_t>::max()) return std::numeric_limits<int16_t>::max();
    return static_cast<int16_t>(r);
}

double Fix(double x) {
    return std::trunc(x);
}

double Int(double x) {
    return std::floor(x);
}

double Val(std::string_view text) {
    BlankSkippingCursor in(text);
    if (in.peek() == '&') {
        in.advance();
        const char kind = in.peek();
        if (kind == 'H' || kind == 'h') {
            in.advance();
            return radixValue(in, 16);
        }
        if (kind == 'O' || kind == 'o') {
            in.advance();
            return radixValue(in, 8);
        }
        return 0.0;
    }
    return decimalValue(in);
}

std::string formatPicture(double x, std::string_view picture) {
    if (picture.empty()) return shortestText(x);
    if (!std::isfinite(x)) return nonFiniteText(x);

    const size_t point = picture.find('.');
    const std::string_view wholePicture = picture.substr(0, point);
    std::string fractionPicture;
    if (point != std::string_view::npos) {
        for (char c : picture.substr(point + 1))
            if (c == '0' || c == '#') fractionPicture += c;
    }
    const auto shownWholeDigits =
        static_cast<size_t>(std::count(wholePicture.begin(), wholePicture.end(), '0'));
    const size_t decimals = fractionPicture.size();

    // The exact decimal expansion of the binary value: a double with binary exponent e has at
    // most 53 - e fraction digits. Rounding by hand on those digits gives half away from zero
    // for true ties only, where to_chars with a short precision would round them to even.
    int binaryExponent = 0;
    std::frexp(x, &binaryExponent);
    const int exactDigits = std::clamp(53 - binaryExponent, 0, 1100);
    const int precision = std::max(exactDigits, static_cast<int>(decimals) + 1);
    std::string buffer(static_cast<size_t>(precision) + 320, '\0'); // 309 whole digits at most
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(x),
                                      std::chars_format::fixed, precision);
    const std::string_view exact(buffer.data(), static_cast<size_t>(result.ptr - buffer.data()));
    const size_t exactPoint = exact.find('.');

    // All digits kept, with the decimal point implied before the last `decimals` of them.
    std::string digits(exact.substr(0, exactPoint));
    digits += exact.substr(exactPoint + 1, decimals);
    if (exact[exactPoint + 1 + decimals] >= '5') {
        size_t i = digits.size();
        while (i > 0 && digits[i - 1] == '9')
            digits[--i] = '0';
        if (i == 0)
            digits.insert(digits.begin(), '1');
        else
            ++digits[i - 1];
    }
    const bool roundsToZero = digits.find_first_not_of('0') == std::string::npos;

    std::string whole = digits.substr(0, digits.size() - decimals);
    std::string fraction = digits.substr(digits.size() - decimals);
    whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
    if (whole.size() < shownWholeDigits) whole.insert(0, shownWholeDigits - whole.size(), '0');
    while (!fraction.empty() && fraction.back() == '0' &&
           fractionPicture[fraction.size() - 1] == '#')
        fraction.pop_back();

    if (whole.empty() && fraction.empty()) return std::string(1, '0');
    std::string out = (x < 0 && !roundsToZero) ? "-" : "";
    out += whole;
    if (!fraction.empty()) out += "." + fraction;
    return out;
}

double throughPicture(double x, std::string_view picture) {
    return Val(formatPicture(x, picture));
}

std::string shortestText(float x) {
    if (!std::isfinite(x)) return nonFiniteText(x);
    // A single shows at most 7 significant digits, as a float's text always has in this kind of
    // tool: -19.924099 reads "-19.9241", not the 8 digits a round trip would need.
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), x,
                                      std::chars_format::scientific, 6);
    // With only 7 digits, whole numbers from 1E+07 up are shown in scientific form.
    return generalFromScientific(
        std::string_view(buffer.data(), static_cast<size_t>(result.ptr - buffer.data())), 7);
}

std::string shortestText(double x) {
    if (!std::isfinite(x)) return nonFiniteText(x);
    // Rounding to 15 significant digits and dropping trailing zeros is the shortest text of the
    // rounded value: 15 digits always survive the trip through a double.
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), x,
                                      std::chars_format::scientific, 14);
    return generalFromScientific(
        std::string_view(buffer.data(), static_cast<size_t>(result.ptr - buffer.data())));
}

} // namespace kv
