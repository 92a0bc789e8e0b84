// Tests of the shared number rules: rounding, Val, picture formats and shortest text.
#include "platform/numeric.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using namespace kv;

TEST(Rounding, TiesGoToTheEvenNeighbourOnBothSidesOfZero) {
    EXPECT_EQ(roundHalfEven(2.5), 2.0);
    EXPECT_EQ(roundHalfEven(3.5), 4.0);
    EXPECT_EQ(roundHalfEven(-2.5), -2.0);
    EXPECT_EQ(roundHalfEven(-3.5), -4.0);
    EXPECT_EQ(roundHalfEven(0.5), 0.0);
    EXPECT_EQ(roundHalfEven(-0.49999999999999994), 0.0);
    EXPECT_EQ(roundHalfEven(4503599627370495.5), 4503599627370496.0);
    EXPECT_EQ(roundHalfEven(9007199254740993.0), 9007199254740993.0);
}

TEST(Rounding, IntegerConversionsSaturateAndMapNaNToZero) {
    EXPECT_EQ(toInt32(1e12), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(toInt32(-1e12), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(toInt32(2147483646.5), 2147483646);
    EXPECT_EQ(toInt32(std::nan("")), 0);
    EXPECT_EQ(toInt32(-std::numeric_limits<double>::infinity()), INT32_MIN);
    EXPECT_EQ(toInt16(32767.5), 32767);
    EXPECT_EQ(toInt16(-32768.5), -32768);
    EXPECT_EQ(toInt16(std::nan("")), 0);
}

TEST(Rounding, FixTruncatesTowardZeroWhileIntFloorsNegatives) {
    EXPECT_EQ(Fix(-2.7), -2.0);
    EXPECT_EQ(Int(-2.7), -3.0);
}

TEST(Val, ReadsTheLongestNumericPrefixSkippingBlanks) {
    EXPECT_EQ(Val("  \t 12.5 ns"), 12.5);
    EXPECT_EQ(Val("1 2 3"), 123.0);
    EXPECT_EQ(Val(" - 4 . 25"), -4.25);
    EXPECT_EQ(Val("1.5.7"), 1.5);
    EXPECT_EQ(Val(".5"), 0.5);
}

TEST(Val, ReadsAnExponentOnlyWhenDigitsFollowIt) {
    EXPECT_EQ(Val("2.5E3"), 2500.0);
    EXPECT_EQ(Val("4e-2"), 0.04);
    EXPECT_EQ(Val("1.2E - 1"), 0.12);
    EXPECT_EQ(Val("3E"), 3.0);
    EXPECT_EQ(Val("3e+x"), 3.0);
    EXPECT_EQ(Val("1E400"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Val("-1E-400"), 0.0);
    // Beyond the range, the place of the first significant digit decides, whole or fraction.
    EXPECT_EQ(Val("10e308"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Val("0.01e310"), 1e308);
    EXPECT_EQ(Val("0.001e-322"), 0.0);
    EXPECT_EQ(Val("000.000e999"), 0.0);
    // One number after another: nothing of a longer one stays behind.
    EXPECT_EQ(Val("123456789012345678901234567890.123456789e-20"), 1234567890.1234567890123456789);
    EXPECT_EQ(Val("7"), 7.0);
}

TEST(Val, HexAndOctalAreSixteenBitUpToFFFF) {
    EXPECT_EQ(Val("&HFFFF"), -1.0);
    EXPECT_EQ(Val("&H8000"), -32768.0);
    EXPECT_EQ(Val("&H10000"), 65536.0);
    EXPECT_EQ(Val("&HFFFFFFFF"), -1.0);
    EXPECT_EQ(Val("&H1Fz"), 31.0);
    EXPECT_EQ(Val("&O17"), 15.0);
    EXPECT_EQ(Val("&O177777"), -1.0);
}

TEST(Val, GarbageAndEmptyTextAreZero) {
    EXPECT_EQ(Val(""), 0.0);
    EXPECT_EQ(Val("abc"), 0.0);
    EXPECT_EQ(Val("-"), 0.0);
    EXPECT_EQ(Val("."), 0.0);
    EXPECT_EQ(Val("&H"), 0.0);
    EXPECT_EQ(Val("&X12"), 0.0);
    EXPECT_FALSE(std::signbit(Val("-0")));
}

TEST(Pictures, ZerosPadAndHashesShowOnlySignificantDigits) {
    EXPECT_EQ(formatPicture(3.14159, "###0.00"), "3.14");
    EXPECT_EQ(formatPicture(0.5, "###.0"), ".5");
    EXPECT_EQ(formatPicture(0.5, "###0.0"), "0.5");
    EXPECT_EQ(formatPicture(42, "0000000"), "0000042");
    EXPECT_EQ(formatPicture(123456.7, "##0.0"), "123456.7");
    EXPECT_EQ(formatPicture(7, "#0.000"), "7.000");
}

TEST(Pictures, OptionalDecimalsDropTrailingZerosAndThePoint) {
    EXPECT_EQ(formatPicture(3, "0.##"), "3");
    EXPECT_EQ(formatPicture(2.5, "0.##"), "2.5");
    EXPECT_EQ(formatPicture(12.04, "####.#"), "12");
    EXPECT_EQ(formatPicture(0.01, "####.#"), "0");
}

TEST(Pictures, RoundHalfAwayFromZeroOnTheTrueBinaryValue) {
    EXPECT_EQ(formatPicture(2.675, "0.00"), "2.67"); // 2.67499999...
    EXPECT_EQ(formatPicture(0.125, "0.00"), "0.13"); // an exact tie
    EXPECT_EQ(formatPicture(2.5, "0"), "3");
    EXPECT_EQ(formatPicture(-2.5, "0"), "-3");
    EXPECT_EQ(formatPicture(9.995, "0.00"), "9.99");   // 9.99499999...
    EXPECT_EQ(formatPicture(19.995, "0.00"), "20.00"); // 19.99500000...1
    EXPECT_EQ(formatPicture(9.9951, "0.00"), "10.00");
    EXPECT_EQ(formatPicture(99.96, "##0.0"), "100.0");
    EXPECT_EQ(formatPicture(0.96, "###.0"), "1.0");
}

TEST(Pictures, NegativeValuesLoseTheMinusWhenTheyRoundToZero) {
    EXPECT_EQ(formatPicture(-1.234, "0.00"), "-1.23");
    EXPECT_EQ(formatPicture(-0.004, "0.00"), "0.00");
    EXPECT_EQ(formatPicture(-0.04, "0.#"), "0");
    EXPECT_EQ(formatPicture(-0.5, "###.0"), "-.5");
}

TEST(Pictures, ThroughPictureGivesTheNumberALabelShows) {
    EXPECT_EQ(throughPicture(12.499, "###0.00"), 12.5);
    EXPECT_EQ(throughPicture(0.5, "###.0"), 0.5);
}

TEST(ShortestText, FloatsUseTheFewestDigitsThatReadBack) {
    EXPECT_EQ(shortestText(0.1f), "0.1");
    EXPECT_EQ(shortestText(12.50f), "12.5");
    EXPECT_EQ(shortestText(-3.0f), "-3");
    EXPECT_EQ(shortestText(1000000.0f), "1000000");
    EXPECT_EQ(shortestText(1e-4f), "0.0001");
    EXPECT_EQ(shortestText(-0.0f), "0");
    // Seven significant digits at most, even where a round trip would need more.
    EXPECT_EQ(shortestText(-19.924099f), "-19.9241");
    EXPECT_EQ(shortestText(16777216.0f), "1.677722E+07");
}

TEST(ShortestText, SmallAndHugeValuesUseScientificNotation) {
    EXPECT_EQ(shortestText(1e-5f), "1E-05");
    EXPECT_EQ(shortestText(-2.25e-7f), "-2.25E-07");
    EXPECT_EQ(shortestText(1e15f), "1E+15");
    EXPECT_EQ(shortestText(1e15), "1E+15");
    EXPECT_EQ(shortestText(1e14), "100000000000000");
    EXPECT_EQ(shortestText(1.5e15), "1.5E+15");
    EXPECT_EQ(shortestText(1e-100), "1E-100");
    EXPECT_EQ(shortestText(123456789012345.0), "123456789012345");
}

TEST(ShortestText, DoublesAreRoundedToFifteenSignificantDigits) {
    EXPECT_EQ(shortestText(0.1 + 0.2), "0.3");
    EXPECT_EQ(shortestText(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(shortestText(999999999999999.9), "1E+15");
    EXPECT_EQ(shortestText(2.0 / 3.0 * 1e-6), "6.66666666666667E-07");
}

TEST(ShortestText, NonFiniteValuesHaveNames) {
    EXPECT_EQ(shortestText(std::numeric_limits<float>::quiet_NaN()), "NaN");
    EXPECT_EQ(shortestText(-std::numeric_limits<double>::infinity()), "-Infinity");
}
