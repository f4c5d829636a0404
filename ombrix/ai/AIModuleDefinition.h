// What is needed to build one AI module: an identifier given by the collection that stores it, the
// module type and an opaque block of bytes whose meaning belongs to the host's AI runtime.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/platform/ModuleType.h"
#include "ombrix/platform/bytearray.h"

#include <cstddef>
#include <optional>

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix
{

class OMBRIX_API AIModuleDefinition
{
public:
  // No identifier, type unset (0), no data.
  AIModuleDefinition() = default;
  AIModuleDefinition(AISystem::ModuleType type, const Utilities::bytearray& data);
  AIModuleDefinition(const AIModuleDefinition&) = default;
  AIModuleDefinition(AIModuleDefinition&&) noexcept = default;
  AIModuleDefinition& operator=(const AIModuleDefinition&) = default;
  AIModuleDefinition& operator=(AIModuleDefinition&&) noexcept = default;

  std::optional<std::size_t> getId() const { return m_id; }
  void assignId(const std::optional<std::size_t>& id) { m_id = id; }
  AISystem::ModuleType getType() const { return m_type; }
  const Utilities::bytearray& getData() const { return m_data; }

  // Same type and byte-identical data; the identifiers take no part.
  friend bool operator==(const AIModuleDefinition& a, const AIModuleDefinition& b)
  {
    return a.m_type == b.m_type && a.m_data == b.m_data;
  }
  friend bool operator!=(const AIModuleDefinition& a, const AIModuleDefinition& b) { return !(a == b); }

  friend OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in,
                                                        AIModuleDefinition& definition);

private:
  std::optional<std::size_t> m_id;
  AISystem::ModuleType m_type{};
  Utilities::bytearray m_data;
};

// Section "AIModuleDefinition": bool (identifier set), the identifier as 64-bit unsigned only when set,
// the type as 32-bit integer, the byte count as 64-bit unsigned, then the bytes one by one. Reading never
// throws and keeps what was read before a failure: the data is sized to the count (zeros) and filled
// while the stream is good, so bytes not read stay zero. When the stream fails before the bytes, the data
// is emptied. A count beyond what is left of the stream (a corrupt or cut-off one, which could otherwise
// demand any amount of memory) keeps the bytes that are there, and the stream fails.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const AIModuleDefinition& definition);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIModuleDefinition& definition);

} // namespace Ombrix
