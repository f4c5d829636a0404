// The AI module definitions known to an exchange, in order of insertion, each with an identifier that
// is given once and never reused. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/ai/AIModuleDefinition.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Ombrix
{

class OMBRIX_API AIModuleDefinitionCollection
{
public:
  using Definitions = std::vector<std::unique_ptr<AIModuleDefinition>>;

  AIModuleDefinitionCollection() = default;
  // Copies every definition into a new object and copies the next identifier.
  AIModuleDefinitionCollection(const AIModuleDefinitionCollection& other);
  AIModuleDefinitionCollection(AIModuleDefinitionCollection&&) noexcept = default;
  AIModuleDefinitionCollection& operator=(const AIModuleDefinitionCollection& other);
  AIModuleDefinitionCollection& operator=(AIModuleDefinitionCollection&&) noexcept = default;
  virtual ~AIModuleDefinitionCollection();

  // Stores `definition` unless an equal one (same type and data) is stored already. A new definition
  // gets the next identifier (any identifier it carried is overwritten) and is returned with true; for
  // a duplicate the stored one is returned with false and `definition` stays with the caller. A null
  // argument stores nothing and returns (null, false).
  std::pair<AIModuleDefinition*, bool> insertDefinition(std::unique_ptr<AIModuleDefinition>&& definition);
  // The first definition whose identifier is `id`, or null.
  AIModuleDefinition* getDefinition(std::size_t id);
  const AIModuleDefinition* getDefinition(std::size_t id) const;
  // Whether some definition has type Python.
  bool hasPython() const;

  std::size_t size() const { return m_definitions.size(); }
  bool empty() const { return m_definitions.empty(); }
  // Destroys the definitions; the next identifier stays, so identifiers remain unique across a clear.
  void clear() { m_definitions.clear(); }
  std::uint64_t getNextId() const { return m_nextId; }

  // Entries may be null after reading a stream that recorded them as absent.
  Definitions::iterator begin() { return m_definitions.begin(); }
  Definitions::iterator end() { return m_definitions.end(); }
  Definitions::const_iterator begin() const { return m_definitions.begin(); }
  Definitions::const_iterator end() const { return m_definitions.end(); }

  // Identity: both hold the very same definition objects in the same order (so two separately built
  // collections are equal only when both are empty).
  friend bool operator==(const AIModuleDefinitionCollection& a, const AIModuleDefinitionCollection& b)
  {
    return a.m_definitions == b.m_definitions;
  }
  friend bool operator!=(const AIModuleDefinitionCollection& a, const AIModuleDefinitionCollection& b)
  {
    return !(a == b);
  }

  friend OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in,
                                                        AIModuleDefinitionCollection& collection);

private:
  Definitions m_definitions;
  std::uint64_t m_nextId = 0;
};

// Section "AIModuleDefinitionCollection": the entry count as 64-bit unsigned, per entry a bool
// (present) followed by the definition when present, then the next identifier as 64-bit unsigned.
// Reading replaces the entries (absent ones stay null); never throws, a bad stream leaves what was read.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const AIModuleDefinitionCollection& collection);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in,
                                               AIModuleDefinitionCollection& collection);

} // namespace Ombrix
