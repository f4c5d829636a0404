// A non-owning reference to an attribute that also remembers where the attribute lives (the ID of the
// enclosing entity and the path below it), so that it can be resolved again after the model was
// rebuilt or read anew. Instantiated for Attribute. One thread at a time, like the model.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/Attribute.h"

#include <optional>
#include <string>

namespace Ombrix::Model
{

class EntityCollection;

template <class T> class OMBRIX_API AttributeReference
{
public:
  AttributeReference() = default;
  AttributeReference(T& attribute);
  AttributeReference(T* attribute);
  // Unresolved until reattach.
  AttributeReference(const EntityID& id, const AttributePath& path);
  AttributeReference(const AttributeReference&) = default;
  AttributeReference(AttributeReference&&) noexcept = default;
  AttributeReference& operator=(const AttributeReference&) = default;
  AttributeReference& operator=(AttributeReference&&) noexcept = default;
  virtual ~AttributeReference();

  // Points at `attribute` and records its place: an entity is recorded by its own ID and the empty
  // path, any other attribute by the nearest enclosing entity's ID and the path relative to it. Null,
  // or an attribute outside every entity (whose place could never be found again), clears everything.
  void attach(T& attribute);
  void attach(T* const attribute);
  // Resolves the recorded place in `collection` when an ID is held (without one nothing changes).
  // Never throws: when the entity or the path cannot be found the reference stays unresolved and the
  // failure's message is kept in lastError(). Returns whether the reference is resolved.
  bool reattach(EntityCollection& collection);
  // Forgets the place, the attribute and the last error.
  void clear();

  // Neither a place nor an attribute is held.
  bool empty() const { return !m_id && m_attribute == nullptr; }
  // Resolved: an attribute is held.
  explicit operator bool() const { return m_attribute != nullptr; }

  T* get() { return m_attribute; }
  const T* get() const { return m_attribute; }
  // The reference forms do not check; calling them on an unresolved reference is a caller error.
  T& ref() { return *m_attribute; }
  const T& ref() const { return *m_attribute; }
  T& operator*() { return *m_attribute; }
  const T& operator*() const { return *m_attribute; }
  T* operator->() { return m_attribute; }
  const T* operator->() const { return m_attribute; }
  operator T&() { return *m_attribute; }
  operator const T&() const { return *m_attribute; }

  const std::optional<EntityID>& getEntityID() const { return m_id; }
  const AttributePath& getAttributePath() const { return m_path; }
  // The message of the exception that made the last reattach fail; empty after a success.
  const std::string& lastError() const { return m_lastError; }

  // True when this reference holds `attribute`, or when it records the same place (ID and path).
  bool isAttribute(T& attribute) const;
  bool isAttribute(T* attribute) const;

  // Equal places (two absent IDs are equal); the attribute pointers are not compared.
  bool operator==(const AttributeReference& other) const
  {
    return m_id == other.m_id && m_path == other.m_path;
  }
  bool operator!=(const AttributeReference& other) const { return !(*this == other); }

  // Section "AttributeReference": key "EntityID" (bool present, then two 32-bit integers when
  // present), key "AttributePath" (the path). Reading leaves the reference unresolved; a failed read
  // leaves it unchanged.
  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);

private:
  std::optional<EntityID> m_id;
  AttributePath m_path;
  T* m_attribute = nullptr;
  std::string m_lastError;
};

extern template class AttributeReference<Attribute>;

template <class T>
FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AttributeReference<T>& reference)
{
  reference.toStream(out);
  return out;
}

template <class T>
FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AttributeReference<T>& reference)
{
  reference.fromStream(in);
  return in;
}

} // namespace Ombrix::Model
