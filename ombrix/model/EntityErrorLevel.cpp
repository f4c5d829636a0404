#include "ombrix/model/EntityErrorLevel.h"

#include <array>
#include <utility>

namespace Ombrix::Model
{
namespace
{

constexpr std::array<std::pair<EntityErrorLevel, const char*>, 4> names{{
    {EntityErrorLevel::Information, "Information"},
    {EntityErrorLevel::Warning, "Warning"},
    {EntityErrorLevel::Error, "Error"},
    {EntityErrorLevel::Fatal, "Fatal"},
}};

} // namespace

std::string entityErrorLevelToString(EntityErrorLevel level)
{
  for (const auto& [value, name] : names)
  {
    if (value == level)
      return name;
  }
  return {};
}

EntityErrorLevel entityErrorLevelFromString(const std::string& text, EntityErrorLevel fallback)
{
  for (const auto& [value, name] : names)
  {
    if (text == name)
      return value;
  }
  return fallback;
}

} // namespace Ombrix::Model
