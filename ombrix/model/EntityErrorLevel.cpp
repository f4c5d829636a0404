#include "ombrix/model/EntityErrorLevel.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix::Model
{
namespace
{

constexpr auto levels = makeNameTable<EntityErrorLevel>({
    {EntityErrorLevel::Information, "Information"},
    {EntityErrorLevel::Warning, "Warning"},
    {EntityErrorLevel::Error, "Error"},
    {EntityErrorLevel::Fatal, "Fatal"},
});

} // namespace

std::string entityErrorLevelToString(EntityErrorLevel level)
{
  return std::string(levels.nameOr(level));
}

EntityErrorLevel entityErrorLevelFromString(const std::string& text, EntityErrorLevel fallback)
{
  return levels.valueOr(text, fallback);
}

} // namespace Ombrix::Model
