// Name tables shared by the text conversions of the AI vocabularies (internal to the library).
#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace Ombrix::Detail
{

template <typename Enum, std::size_t N>
std::string nameOf(const std::pair<Enum, const char*> (&names)[N], Enum value)
{
  for (const auto& [entry, name] : names)
  {
    if (entry == value)
      return name;
  }
  return {};
}

template <typename Enum, std::size_t N>
Enum valueOf(const std::pair<Enum, const char*> (&names)[N], const std::string& text, Enum fallback)
{
  for (const auto& [entry, name] : names)
  {
    if (text == name)
      return entry;
  }
  return fallback;
}

} // namespace Ombrix::Detail
