// How the conditioning dialogs read what the user typed: whether a text is a number at all, the
// three frequency units of their lists, and the unit the spectrum's frequency axis is labelled in.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace kv {

struct ProgramState;

/// True when the whole text, blanks round it aside, is one decimal number: an optional sign,
/// digits with at most one point (at least one digit), and an optional exponent. Empty text,
/// words, "NaN", "inf" and trailing rubbish ("12abc") are not numbers.
bool isNumeric(std::string_view text);

/// The frequency units of every unit list, in list order.
inline constexpr std::array<const char*, 3> kFrequencyUnits = {"Hz", "kHz", "MHz"};
/// Hz per unit of list entry `index` (1, 10^3, 10^6); an index outside the list counts as Hz.
double unitFactor(int index);
/// The list entry whose unit the frequency axis shows: kHz above 10^3 Hz of band, MHz above
/// 10^6 Hz, else Hz.
int axisUnitIndex(const ProgramState& st);

} // namespace kv
