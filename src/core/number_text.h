#pragma once
// Numbers that live as text in the controls: a countdown label, a period
// field. Handlers read the text as a number where they use it and write the
// result back as plain decimal text, so the shown text is the state.
#include <optional>
#include <string>
#include <string_view>

namespace mv {

// The number a text spells: optional blanks, an optional sign, digits with an
// optional decimal part ("15", " 900", "-1", "1.5"). Nothing else: "abc",
// "", "1e3", "12abc" and "inf" spell no number.
std::optional<double> numberOf(std::string_view text);

// Plain decimal, no leading zeros, no grouping, no trailing zeros:
// "900", "6", "-1", "0.5".
std::string decimalText(double value);

// A period field's whole value: the number it spells when that is a finite
// number above zero, otherwise 0. "", "0", "00", "abc" and "-3" are all 0,
// so every caller treats them the way it treats an empty or "0" field.
double periodValue(std::string_view text);

}  // namespace mv
