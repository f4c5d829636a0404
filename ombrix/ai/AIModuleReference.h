// A handle to a loaded AI module, named by the identifier of its definition and re-attached to the
// host's collection of loaded modules. It never owns the module. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/platform/AIModuleCollection.h"

#include <cstddef>
#include <optional>

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix
{

class AIModuleDefinition;

class OMBRIX_API AIModuleReference
{
public:
  AIModuleReference() = default;
  explicit AIModuleReference(const AIModuleDefinition& definition);
  // A null definition gives no identifier.
  explicit AIModuleReference(const AIModuleDefinition* definition);
  explicit AIModuleReference(const std::optional<std::size_t>& id);
  AIModuleReference(const AIModuleReference&) = default;
  AIModuleReference(AIModuleReference&&) noexcept = default;
  AIModuleReference& operator=(const AIModuleReference&) = default;
  AIModuleReference& operator=(AIModuleReference&&) noexcept = default;
  virtual ~AIModuleReference();

  // With an identifier: looks the module up in `modules` (null when unknown). Without one: nothing
  // changes, a module found earlier stays.
  void reattach(AISystem::AIModuleCollection& modules);
  // Drops the module and keeps the identifier.
  void clear() { m_module = nullptr; }
  bool empty() const { return m_module == nullptr; }
  explicit operator bool() const { return m_module != nullptr; }

  // Unchecked: the reference forms on an empty reference are a caller error.
  AISystem::AIModule* get() const { return m_module; }
  AISystem::AIModule* operator->() const { return m_module; }
  AISystem::AIModule& ref() const { return *m_module; }
  AISystem::AIModule& operator*() const { return *m_module; }
  operator AISystem::AIModule&() { return *m_module; }
  operator const AISystem::AIModule&() const { return *m_module; }

  const std::optional<std::size_t>& getId() const { return m_id; }

  // By identifier only; the module pointer takes no part.
  friend bool operator==(const AIModuleReference& a, const AIModuleReference& b) { return a.m_id == b.m_id; }
  friend bool operator!=(const AIModuleReference& a, const AIModuleReference& b) { return !(a == b); }

  friend OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in,
                                                        AIModuleReference& reference);

private:
  std::optional<std::size_t> m_id;
  AISystem::AIModule* m_module = nullptr;
};

// Section "AIModuleReference": key "DefinitionId", bool (identifier set), then the identifier as
// 64-bit unsigned when set. Reading leaves the module null until reattach; a failed read leaves the
// reference unchanged.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const AIModuleReference& reference);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIModuleReference& reference);

} // namespace Ombrix
