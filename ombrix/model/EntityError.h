// A problem found on one entity: the entity's ID, a level, a message and, when an AI model reported it,
// the model's own error text. A small regular value type.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/EntityErrorLevel.h"
#include "ombrix/model/EntityID.h"

#include <optional>
#include <string>

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix::Model
{

class Entity;

class OMBRIX_API EntityError
{
public:
  // Entity 0-0, level Error, empty message.
  EntityError() = default;
  EntityError(const EntityID& id, const std::string& message, EntityErrorLevel level);
  // Takes the entity's ID; a null entity gives 0-0.
  EntityError(const Entity* entity, const std::string& message, EntityErrorLevel level);

  const EntityID& getEntityID() const { return m_id; }
  const std::string& getMessage() const { return m_message; }
  EntityErrorLevel level() const { return m_level; }
  const std::optional<std::string>& getAIModelError() const { return m_aiModelError; }
  void setAIModelError(const std::optional<std::string>& error) { m_aiModelError = error; }
  void setEntity(const EntityID& id) { m_id = id; }

  friend bool operator==(const EntityError& a, const EntityError& b)
  {
    return a.m_id == b.m_id && a.m_level == b.m_level && a.m_message == b.m_message &&
           a.m_aiModelError == b.m_aiModelError;
  }
  friend bool operator!=(const EntityError& a, const EntityError& b) { return !(a == b); }

private:
  EntityID m_id{0, 0};
  EntityErrorLevel m_level = EntityErrorLevel::Error;
  std::string m_message;
  std::optional<std::string> m_aiModelError;
};

// Section "EntityError": key "EntityID" (two 32-bit integers), key "Level" (32-bit integer), key
// "Message" (string), key "AIModelError" (bool present, then the string when present). A failed read
// leaves `error` unchanged.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const EntityError& error);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, EntityError& error);

} // namespace Ombrix::Model
