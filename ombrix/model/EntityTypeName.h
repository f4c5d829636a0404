// Selects an entity by its type, its name and its zero-based rank among the entities matching both.
#pragma once

#include <cstdint>
#include <string>

namespace Ombrix::Model
{

struct EntityTypeName
{
  std::string entityType;
  std::string entityName;
  std::uint64_t entity_i = 0;
};

} // namespace Ombrix::Model
