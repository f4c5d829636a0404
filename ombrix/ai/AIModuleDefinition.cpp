#include "ombrix/ai/AIModuleDefinition.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <cstdint>

namespace Ombrix
{

AIModuleDefinition::AIModuleDefinition(AISystem::ModuleType type, const Utilities::bytearray& data)
    : m_type(type), m_data(data)
{
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AIModuleDefinition& definition)
{
  out.beginSection("AIModuleDefinition");
  const auto id = definition.getId();
  out << id.has_value();
  if (id && out)
    out << static_cast<std::uint64_t>(*id);
  out << static_cast<std::int32_t>(definition.getType());
  const auto& data = definition.getData();
  out << static_cast<std::uint64_t>(data.size());
  for (std::size_t i = 0; i < data.size() && out; ++i)
    out << data[i];
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIModuleDefinition& definition)
{
  in.beginSection("AIModuleDefinition");
  bool hasId = false;
  in >> hasId;
  if (hasId && in)
  {
    std::uint64_t id = 0;
    in >> id;
    if (in)
      definition.m_id = static_cast<std::size_t>(id);
  }
  else if (in)
  {
    definition.m_id.reset();
  }
  std::int32_t type = 0;
  in >> type;
  if (in)
    definition.m_type = static_cast<AISystem::ModuleType>(type);
  std::uint64_t count = 0;
  in >> count;
  // Every byte takes at least one byte of the stream, so a larger count can only be corrupt.
  if (in && count > in.remaining())
    in.setFailed();
  if (!in)
  {
    definition.m_data.clear();
    return in;
  }
  definition.m_data.assign(static_cast<std::size_t>(count), 0);
  for (auto& byte : definition.m_data)
  {
    if (!in)
      break;
    in >> byte;
  }
  in.endSection();
  return in;
}

} // namespace Ombrix
