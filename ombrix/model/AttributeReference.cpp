#include "ombrix/model/AttributeReference.h"

#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <stdexcept>

namespace Ombrix::Model
{

template <class T> AttributeReference<T>::AttributeReference(T& attribute)
{
  attach(attribute);
}

template <class T> AttributeReference<T>::AttributeReference(T* attribute)
{
  attach(attribute);
}

template <class T>
AttributeReference<T>::AttributeReference(const EntityID& id, const AttributePath& path)
    : m_id(id), m_path(path)
{
}

template <class T> AttributeReference<T>::~AttributeReference() = default;

template <class T> void AttributeReference<T>::attach(T& attribute)
{
  attach(&attribute);
}

template <class T> void AttributeReference<T>::attach(T* const attribute)
{
  m_lastError.clear();
  if (attribute == nullptr)
  {
    m_id.reset();
    m_path = AttributePath();
    m_attribute = nullptr;
    return;
  }
  const Attribute& base = *attribute;
  if (base.isEntity())
  {
    m_id = static_cast<const Entity&>(base).getUniqueID();
    m_path = AttributePath();
    m_attribute = attribute;
    return;
  }
  if (const Entity* entity = base.getParentEntity())
  {
    m_id = entity->getUniqueID();
    m_path = base.getAttributePath(true);
    m_attribute = attribute;
    return;
  }
  m_id.reset();
  m_path = AttributePath();
  m_attribute = nullptr;
}

template <class T> bool AttributeReference<T>::reattach(EntityCollection& collection)
{
  if (!m_id)
    return m_attribute != nullptr;
  m_attribute = nullptr;
  m_lastError.clear();
  try
  {
    Entity* entity = collection.getEntity(*m_id);
    Attribute& found = entity->getAttribute(m_path);
    T* typed = dynamic_cast<T*>(&found);
    if (typed == nullptr)
      throw std::runtime_error("Attribute '" + toString(std::make_pair(*m_id, m_path)) +
                               "' is not of the referenced kind");
    m_attribute = typed;
  }
  catch (const std::exception& error)
  {
    m_lastError = error.what();
  }
  catch (...)
  {
    m_lastError = "Unknown error resolving '" + toString(std::make_pair(*m_id, m_path)) + "'";
  }
  return m_attribute != nullptr;
}

template <class T> void AttributeReference<T>::clear()
{
  m_id.reset();
  m_path = AttributePath();
  m_attribute = nullptr;
  m_lastError.clear();
}

template <class T> bool AttributeReference<T>::isAttribute(T& attribute) const
{
  return isAttribute(&attribute);
}

template <class T> bool AttributeReference<T>::isAttribute(T* attribute) const
{
  if (m_attribute == attribute)
    return true;
  return *this == AttributeReference(attribute);
}

template <class T> void AttributeReference<T>::toStream(FileSystem::DataOStream& out) const
{
  out.beginSection("AttributeReference");
  out.key("EntityID");
  out << m_id.has_value();
  if (m_id)
    out << static_cast<std::int32_t>(m_id->first()) << static_cast<std::int32_t>(m_id->second());
  out.key("AttributePath");
  out << m_path;
  out.endSection();
}

template <class T> void AttributeReference<T>::fromStream(FileSystem::DataIStream& in)
{
  bool hasId = false;
  std::int32_t first = 0;
  std::int32_t second = 0;
  AttributePath path;
  in.beginSection("AttributeReference");
  in.key("EntityID");
  in >> hasId;
  if (in && hasId)
    in >> first >> second;
  in.key("AttributePath");
  in >> path;
  in.endSection();
  if (!in)
    return;
  m_id = hasId ? std::optional<EntityID>(EntityID(first, second)) : std::nullopt;
  m_path = std::move(path);
  m_attribute = nullptr;
  m_lastError.clear();
}

template class AttributeReference<Attribute>;

} // namespace Ombrix::Model
