#include "ombrix/model/EntityError.h"

#include "ombrix/model/Entity.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

namespace Ombrix::Model
{

EntityError::EntityError(const EntityID& id, const std::string& message, EntityErrorLevel level)
    : m_id(id), m_level(level), m_message(message)
{
}

EntityError::EntityError(const Entity* entity, const std::string& message, EntityErrorLevel level)
    : m_id(entity ? entity->getUniqueID() : EntityID(0, 0)), m_level(level), m_message(message)
{
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const EntityError& error)
{
  out.beginSection("EntityError");
  out.key("EntityID");
  out << static_cast<std::int32_t>(error.getEntityID().first())
      << static_cast<std::int32_t>(error.getEntityID().second());
  out.key("Level");
  out << static_cast<std::int32_t>(error.level());
  out.key("Message");
  out << error.getMessage();
  out.key("AIModelError");
  out << error.getAIModelError().has_value();
  if (error.getAIModelError())
    out << *error.getAIModelError();
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, EntityError& error)
{
  std::int32_t first = 0;
  std::int32_t second = 0;
  std::int32_t level = 0;
  std::string message;
  bool hasModelError = false;
  std::optional<std::string> modelError;
  in.beginSection("EntityError");
  in.key("EntityID");
  in >> first >> second;
  in.key("Level");
  in >> level;
  in.key("Message");
  in >> message;
  in.key("AIModelError");
  in >> hasModelError;
  if (in && hasModelError)
  {
    modelError.emplace();
    in >> *modelError;
  }
  in.endSection();
  if (!in)
    return in;
  error = EntityError(EntityID(first, second), message, static_cast<EntityErrorLevel>(level));
  error.setAIModelError(modelError);
  return in;
}

} // namespace Ombrix::Model
