#include "ombrix/ai/AIModuleDefinition.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <algorithm>
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
  if (!in)
  {
    definition.m_data.clear();
    return in;
  }
  // Every byte takes at least one byte of the stream, so the array is never sized beyond what is left of
  // it. A count that fits is filled while the stream is good (bytes not read stay zero); a larger count
  // cannot be read in full: the bytes that are there are kept, and the stream fails.
  const std::uint64_t room = std::min<std::uint64_t>(count, in.remaining());
  definition.m_data.assign(static_cast<std::size_t>(room), 0);
  std::size_t got = 0;
  while (got < definition.m_data.size() && (in >> definition.m_data[got]))
    ++got;
  if (count > room)
  {
    definition.m_data.resize(got);
    in.setFailed();
  }
  in.endSection();
  return in;
}

} // namespace Ombrix
