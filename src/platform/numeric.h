// Number rules shared by every part of the workbench: how a float becomes an integer, how text
// typed by a user or found in a file header becomes a number, and how numbers are written on
// labels and read-outs. Keeping them in one place makes every view and reader agree.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kv {

/// Round half to even ("banker's rounding"). Every float-to-integer conversion uses it:
/// 2.5 -> 2, 3.5 -> 4, -2.5 -> -2, -3.5 -> -4. NaN and infinities come back unchanged.
double roundHalfEven(double x);

/// roundHalfEven, then saturate to the int32 range. NaN gives 0.
int32_t toInt32(double x);

/// roundHalfEven, then saturate to the int16 range. NaN gives 0.
int16_t toInt16(double x);

/// Whole part toward zero: Fix(-2.7) = -2.
double Fix(double x);

/// Whole part toward minus infinity: Int(-2.7) = -3.
double Int(double x);

/// The number at the start of a text, the way users and old file headers expect it:
/// - blanks, tabs and line feeds are skipped before and inside the number ("1 2 3" is 123);
/// - the longest prefix of: optional sign, digits, one decimal point, digits, and an exponent
///   (E or e, optional sign, at least one digit; "2E" is just 2);
/// - "&H" (any case) followed by hex digits, "&O" by octal digits: a value up to FFFF is a 16-bit
///   signed number ("&HFFFF" is -1, "&H8000" is -32768), a larger one a 32-bit signed number
///   ("&H10000" is 65536, "&HFFFFFFFF" is -1); digits beyond 32 bits are dropped from the top;
/// - empty or non-numeric text is 0. A decimal number too large for a double gives +-infinity.
/// Never throws, and does not depend on the C locale.
double Val(std::string_view text);

/// A number in a user-defined picture such as "###0.00", "0.##" or "####.#":
/// - before the point, '0' is a digit always shown (leading zeros pad to that many digits) and
///   '#' a digit shown only when significant; whole digits beyond the picture are all shown;
/// - after the point, '0' is a digit always shown and '#' a digit shown unless it is a trailing
///   zero; when no decimal is left the point goes too (3 in "0.##" is "3", not "3.");
/// - with only '#' before the point, a value below 1 has no leading zero (0.5 in "###.0" is ".5");
///   if nothing at all would be shown (0 in "#.#"), the result is "0" so that a label is never
///   empty;
/// - the value is rounded half away from zero at the last decimal of the picture, using the exact
///   binary value: 2.675 is really 2.67499999... so "0.00" gives "2.67", while 0.125 is exact and
///   gives "0.13";
/// - a negative value gets a leading '-', unless it rounds to zero ("-0.001" in "0.00" is "0.00");
/// - characters other than '0', '#' and the first '.' are ignored. An empty picture gives
///   shortestText(x); NaN and infinities give the texts shortestText gives.
std::string formatPicture(double x, std::string_view picture);

/// formatPicture and back through Val: the number a label shows, e.g. 12.499 in "###0.00" is 12.5.
double throughPicture(double x, std::string_view picture);

/// The plain general text of a 32-bit float: at most 7 significant digits, trailing zeros
/// dropped. Plain notation when the shown value is 0 or 1E-04 <= |x| < 1E+07 ("12.5", "0.1",
/// "-3", "1000000"), otherwise scientific with a signed exponent of at least two digits
/// ("1E-05", "1.5E+15", "-2.25E-07", "1.677722E+07"). -0 gives "0"; NaN gives "NaN",
/// infinities "Infinity" and "-Infinity".
std::string shortestText(float x);

/// The same for a double, with at most 15 significant digits and plain notation up to 1E+15: the
/// value is first rounded to 15 significant digits, so 0.1 + 0.2 gives "0.3".
std::string shortestText(double x);

/// Explicit rounding through a 32-bit float, for values the system keeps in single precision.
inline float f32(double x) {
    return static_cast<float>(x);
}

} // namespace kv
