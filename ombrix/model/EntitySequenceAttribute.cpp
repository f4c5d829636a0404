#include "ombrix/model/EntitySequenceAttribute.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <stdexcept>

namespace Ombrix::Model
{

template <class D, int N, class I>
EntitySequenceAttribute<D, N, I>::EntitySequenceAttribute(CompositeAttribute* parent) : Base(parent)
{
}

template <class D, int N, class I>
EntitySequenceAttribute<D, N, I>::EntitySequenceAttribute(const std::string& type,
                                                          KorvanSDK::AccessType access,
                                                          CompositeAttribute* parent)
    : Base(type, access, parent)
{
}

template <class D, int N, class I>
EntitySequenceAttribute<D, N, I>::EntitySequenceAttribute(const std::string& type, bool ownsEntities,
                                                          CompositeAttribute* parent)
    : Base(type, ownsEntities, parent)
{
}

template <class D, int N, class I>
EntitySequenceAttribute<D, N, I>::EntitySequenceAttribute(const std::string& type,
                                                          const std::string& relationshipType,
                                                          KorvanSDK::AccessType access, bool ownsEntities,
                                                          CompositeAttribute* parent)
    : Base(type, relationshipType, access, ownsEntities, parent)
{
}

template <class D, int N, class I> EntitySequenceAttribute<D, N, I>::~EntitySequenceAttribute() = default;

template <class D, int N, class I>
Entity* EntitySequenceAttribute<D, N, I>::addEntity(std::unique_ptr<Entity> entity)
{
  if (!entity)
    return nullptr;
  Entity* added = m_entities.emplace_back(std::move(entity)).get();
  this->adopt(*added);
  return added;
}

template <class D, int N, class I>
std::size_t EntitySequenceAttribute<D, N, I>::getNumberOfEntities(bool) const
{
  return m_entities.size();
}

template <class D, int N, class I>
const Entity* EntitySequenceAttribute<D, N, I>::getEntity(const EntityID& id, bool) const
{
  for (const auto& entity : m_entities)
  {
    if (entity && entity->getUniqueID() == id)
      return entity.get();
  }
  throw std::out_of_range("No Entity Found for entity_ID='" + toString(id) + "'");
}

template <class D, int N, class I>
Entity* EntitySequenceAttribute<D, N, I>::getEntity(const EntityID& id, bool flag)
{
  return const_cast<Entity*>(std::as_const(*this).getEntity(id, flag));
}

template <class D, int N, class I>
const Entity* EntitySequenceAttribute<D, N, I>::getEntity(std::size_t index, bool) const
{
  if (index < m_entities.size() && m_entities[index])
    return m_entities[index].get();
  throw std::out_of_range("No Entity found with entity_i='" + std::to_string(index) + "'");
}

template <class D, int N, class I>
Entity* EntitySequenceAttribute<D, N, I>::getEntity(std::size_t index, bool flag)
{
  return const_cast<Entity*>(std::as_const(*this).getEntity(index, flag));
}

template <class D, int N, class I>
bool EntitySequenceAttribute<D, N, I>::hasEntity(const EntityID& id, bool) const
{
  for (const auto& entity : m_entities)
  {
    if (entity && entity->getUniqueID() == id)
      return true;
  }
  return false;
}

template <class D, int N, class I>
bool EntitySequenceAttribute<D, N, I>::hasEntity(std::size_t index, bool) const
{
  return index < m_entities.size();
}

template <class D, int N, class I> std::vector<EntityID> EntitySequenceAttribute<D, N, I>::getEntityIDs()
{
  std::vector<EntityID> ids;
  ids.reserve(m_entities.size());
  for (const auto& entity : m_entities)
  {
    if (entity)
      ids.push_back(entity->getUniqueID());
  }
  return ids;
}

template <class D, int N, class I> std::vector<Entity*> EntitySequenceAttribute<D, N, I>::getEntities(bool)
{
  std::vector<Entity*> entities;
  entities.reserve(m_entities.size());
  for (const auto& entity : m_entities)
  {
    if (entity)
      entities.push_back(entity.get());
  }
  return entities;
}

template <class D, int N, class I>
std::vector<const Entity*> EntitySequenceAttribute<D, N, I>::getEntities(bool) const
{
  std::vector<const Entity*> entities;
  entities.reserve(m_entities.size());
  for (const auto& entity : m_entities)
  {
    if (entity)
      entities.push_back(entity.get());
  }
  return entities;
}

template <class D, int N, class I>
void EntitySequenceAttribute<D, N, I>::toStream(FileSystem::DataOStream& out) const
{
  EntityLinkAttributeBase::toStream(out);
  out.beginSection("Entities");
  out << m_entities;
  out.endSection();
}

template <class D, int N, class I>
void EntitySequenceAttribute<D, N, I>::fromStream(FileSystem::DataIStream& in)
{
  m_entities.clear();
  EntityLinkAttributeBase::fromStream(in);
  in.beginSection("Entities");
  in >> m_entities;
  in.endSection();
  for (const auto& entity : m_entities)
  {
    if (entity)
      this->adopt(*entity);
  }
}

template <class D, int N, class I> bool EntitySequenceAttribute<D, N, I>::isEqual(const D& other) const
{
  if (!EntityLinkAttributeBase::isEqual(other) || m_entities.size() != other.m_entities.size())
    return false;
  for (std::size_t i = 0; i < m_entities.size(); ++i)
  {
    const auto& a = m_entities[i];
    const auto& b = other.m_entities[i];
    if (!a || !b ? (a || b) : !a->isEqual(*b))
      return false;
  }
  return true;
}

template class EntitySequenceAttribute<ListAttribute, 8, KorvanSDK::Model::IListAttribute>;
template class EntitySequenceAttribute<ArrayAttribute, 10, KorvanSDK::Model::IArrayAttribute>;

} // namespace Ombrix::Model
