#include "ombrix/ai/AIModuleReference.h"

#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <cstdint>

namespace Ombrix
{

AIModuleReference::AIModuleReference(const AIModuleDefinition& definition) : m_id(definition.getId()) {}

AIModuleReference::AIModuleReference(const AIModuleDefinition* definition)
    : m_id(definition ? definition->getId() : std::nullopt)
{
}

AIModuleReference::AIModuleReference(const std::optional<std::size_t>& id) : m_id(id) {}

AIModuleReference::~AIModuleReference() = default;

void AIModuleReference::reattach(AISystem::AIModuleCollection& modules)
{
  if (m_id)
    m_module = modules.findModule(*m_id);
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AIModuleReference& reference)
{
  out.beginSection("AIModuleReference");
  out.key("DefinitionId");
  out << reference.getId().has_value();
  if (reference.getId() && out)
    out << static_cast<std::uint64_t>(*reference.getId());
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIModuleReference& reference)
{
  bool hasId = false;
  std::uint64_t id = 0;
  in.beginSection("AIModuleReference");
  in.key("DefinitionId");
  in >> hasId;
  if (hasId && in)
    in >> id;
  in.endSection();
  if (!in)
    return in;
  reference.m_id = hasId ? std::optional<std::size_t>(static_cast<std::size_t>(id)) : std::nullopt;
  reference.m_module = nullptr;
  return in;
}

} // namespace Ombrix
