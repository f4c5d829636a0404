#include "ombrix/model/ValueText.h"

#include <charconv>
#include <cstdio>
#include <stdexcept>

namespace Ombrix::Model
{
namespace
{

template <typename F> auto convert(F&& function, const char* name)
{
  try
  {
    return function();
  }
  catch (const std::invalid_argument&)
  {
    throw std::invalid_argument(std::string("invalid ") + name + " argument");
  }
  catch (const std::out_of_range&)
  {
    throw std::out_of_range(std::string(name) + " argument out of range");
  }
}

template <typename T> void appendFloating(std::string& out, T value, NumberFormat format)
{
  char buffer[400]; // "%f" of the largest double has 309 digits before the point
  int length = 0;
  if (format == NumberFormat::RoundTrip)
  {
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    length = static_cast<int>(result.ptr - buffer);
  }
  else
  {
    length = std::snprintf(buffer, sizeof buffer, "%f", static_cast<double>(value));
  }
  out.append(buffer, static_cast<std::size_t>(length));
}

} // namespace

std::string toText(int value)
{
  return std::to_string(value);
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

int parseInt(const std::string& text)
{
  return convert([&] { return std::stoi(text); }, "stoi");
}

float parseFloat(const std::string& text)
{
  return convert([&] { return std::stof(text); }, "stof");
}

double parseDouble(const std::string& text)
{
  return convert([&] { return std::stod(text); }, "stod");
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
