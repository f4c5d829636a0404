// Text forms of the value types: how values are written to and parsed from the exchange files and the
// log. Doubles and floats are written as "%f" would (six decimals) by default; the round-trip form writes
// the shortest text that reads back bit-identical. Bools are written "Yes"/"No". Numbers are always in
// the classic notation ('.' decimal point, no digit grouping), whatever the C or C++ locale.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Ombrix::Model
{

enum class NumberFormat
{
  Fixed,     // "%f": six decimals, 1e-7 is written 0.000000
  RoundTrip, // shortest form that reads back to the same bits
};

OMBRIX_API std::string toText(int value);
OMBRIX_API std::string toText(bool value);
OMBRIX_API std::string toText(float value, NumberFormat format = NumberFormat::Fixed);
OMBRIX_API std::string toText(double value, NumberFormat format = NumberFormat::Fixed);
inline const std::string& toText(const std::string& value)
{
  return value;
}
// Appends the text form to `out` without a temporary string (used on the files' hot paths).
OMBRIX_API void appendText(std::string& out, int value);
OMBRIX_API void appendText(std::string& out, bool value);
OMBRIX_API void appendText(std::string& out, float value, NumberFormat format = NumberFormat::Fixed);
OMBRIX_API void appendText(std::string& out, double value, NumberFormat format = NumberFormat::Fixed);

// Parsers with the standard conversions' rules (leading white space skipped, an optional sign, trailing
// text ignored; floating values also in hexadecimal notation, "inf" and "nan"), in the classic notation.
// Every value the writers above produce reads back, subnormal numbers included. `used`, when given,
// receives the number of characters taken. Failures: std::invalid_argument "invalid stoi argument" /
// "invalid stof argument" and std::out_of_range "stoi argument out of range" / "stof argument out of
// range" (doubles alike, "stod"); out of range means beyond the largest finite value or, for a non-zero
// text, below the smallest subnormal one.
OMBRIX_API int parseInt(const std::string& text, std::size_t* used = nullptr);
OMBRIX_API float parseFloat(const std::string& text, std::size_t* used = nullptr);
OMBRIX_API double parseDouble(const std::string& text, std::size_t* used = nullptr);
// "True", "Yes", "1" and "False", "No", "0"; anything else throws std::invalid_argument
// "Invalid bool text '<text>'".
OMBRIX_API bool parseBool(const std::string& text);

template <typename T> T parseText(const std::string& text);
template <> inline int parseText<int>(const std::string& text)
{
  return parseInt(text);
}
template <> inline bool parseText<bool>(const std::string& text)
{
  return parseBool(text);
}
template <> inline float parseText<float>(const std::string& text)
{
  return parseFloat(text);
}
template <> inline double parseText<double>(const std::string& text)
{
  return parseDouble(text);
}
template <> inline std::string parseText<std::string>(const std::string& text)
{
  return text;
}

} // namespace Ombrix::Model
