#include "ombrix/model/ValueText.h"

#include <charconv>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>

namespace Ombrix::Model
{
namespace
{

// Every conversion here is independent of the C and C++ locales: the exchange files are read by
// programs running under any locale, so a decimal comma or digit grouping must never reach them.

bool isBlank(char c)
{
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

[[noreturn]] void fail(std::errc error, const char* name)
{
  if (error == std::errc::result_out_of_range)
    throw std::out_of_range(std::string(name) + " argument out of range");
  throw std::invalid_argument(std::string("invalid ") + name + " argument");
}

// The standard conversions' rules (leading white space, an optional sign, the longest number that
// follows, trailing text ignored), in the classic notation whatever the locale.
template <typename T> T parseNumber(const std::string& text, const char* name, std::size_t* used)
{
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* p = begin;
  while (p != end && isBlank(*p))
    ++p;
  const char* digits = p;
  bool negative = false;
  if (p != end && (*p == '+' || *p == '-'))
  {
    negative = *p == '-';
    digits = p + 1;
  }
  T value{};
  std::from_chars_result result{digits, std::errc::invalid_argument};
  if (digits != end && (*digits == '+' || *digits == '-'))
    fail(std::errc::invalid_argument, name); // one sign only
  if constexpr (std::is_floating_point_v<T>)
  {
    // Hexadecimal notation ("0x1.8p1") as strtod reads it; "0x" without digits is the number 0.
    if (end - digits > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
      result = std::from_chars(digits + 2, end, value, std::chars_format::hex);
    if (result.ec == std::errc::invalid_argument)
      result = std::from_chars(digits, end, value);
    if (negative && result.ec == std::errc())
      value = -value;
  }
  else
  {
    // Parsed with its sign, so that the most negative value is in range.
    result = std::from_chars(negative ? p : digits, end, value);
  }
  if (result.ec != std::errc())
    fail(result.ec, name);
  if (used)
    *used = static_cast<std::size_t>(result.ptr - begin);
  return value;
}

template <typename T> void appendFloating(std::string& out, T value, NumberFormat format)
{
  char buffer[400]; // the fixed form of the largest double has 309 digits before the point
  const auto result = format == NumberFormat::RoundTrip
                          ? std::to_chars(buffer, buffer + sizeof buffer, value)
                          : std::to_chars(buffer, buffer + sizeof buffer, static_cast<double>(value),
                                          std::chars_format::fixed, 6); // the text of "%f"
  out.append(buffer, result.ptr);
}

} // namespace

std::string toText(int value)
{
  std::string out;
  appendText(out, value);
  return out;
}

std::string toText(bool value)
{
  return value ? "Yes" : "No";
}

std::string toText(float value, NumberFormat format)
{
  std::string out;
  appendFloating(out, value, format);
  return out;
}

std::string toText(double value, NumberFormat format)
{
  std::string out;
  appendFloating(out, value, format);
  return out;
}

void appendText(std::string& out, int value)
{
  char buffer[16];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

void appendText(std::string& out, bool value)
{
  out += value ? "Yes" : "No";
}

void appendText(std::string& out, float value, NumberFormat format)
{
  appendFloating(out, value, format);
}

void appendText(std::string& out, double value, NumberFormat format)
{
  appendFloating(out, value, format);
}

int parseInt(const std::string& text, std::size_t* used)
{
  return parseNumber<int>(text, "stoi", used);
}

float parseFloat(const std::string& text, std::size_t* used)
{
  return parseNumber<float>(text, "stof", used);
}

double parseDouble(const std::string& text, std::size_t* used)
{
  return parseNumber<double>(text, "stod", used);
}

bool parseBool(const std::string& text)
{
  if (text == "True" || text == "Yes" || text == "1")
    return true;
  if (text == "False" || text == "No" || text == "0")
    return false;
  throw std::invalid_argument("Invalid bool text '" + text + "'");
}

} // namespace Ombrix::Model
