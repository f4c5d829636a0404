#include "ombrix/model/LinkAttribute.h"

#include "ombrix/model/Entity.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <stdexcept>

namespace Ombrix::Model
{

LinkAttribute::LinkAttribute(CompositeAttribute* parent) : AttributeEx(parent) {}

LinkAttribute::LinkAttribute(const std::string& type, CompositeAttribute* parent)
    : AttributeEx(type, KorvanSDK::AccessType::None, parent)
{
}

LinkAttribute::LinkAttribute(const std::string& type, KorvanSDK::AccessType access,
                             CompositeAttribute* parent)
    : AttributeEx(type, access, parent)
{
}

LinkAttribute::LinkAttribute(const std::string& type, bool ownsEntities, CompositeAttribute* parent)
    : AttributeEx(type, ownsEntities, parent)
{
}

LinkAttribute::LinkAttribute(const std::string& type, const std::string& relationshipType,
                             KorvanSDK::AccessType access, CompositeAttribute* parent)
    : AttributeEx(type, relationshipType, access, false, parent)
{
}

LinkAttribute::LinkAttribute(const std::string& type, const std::string& relationshipType,
                             KorvanSDK::AccessType access, bool ownsEntities, CompositeAttribute* parent)
    : AttributeEx(type, relationshipType, access, ownsEntities, parent)
{
}

LinkAttribute::~LinkAttribute() = default;

Entity* LinkAttribute::addEntity(std::unique_ptr<Entity> entity)
{
  m_entity = std::move(entity);
  if (m_entity)
    adopt(*m_entity);
  return m_entity.get();
}

std::size_t LinkAttribute::getNumberOfEntities(bool) const
{
  return m_entity ? 1 : 0;
}

const Entity* LinkAttribute::getEntity(const EntityID& id, bool) const
{
  if (m_entity && m_entity->getUniqueID() == id)
    return m_entity.get();
  throw std::out_of_range("No Entity Found for entity_ID='" + toString(id) + "'");
}

Entity* LinkAttribute::getEntity(const EntityID& id, bool flag)
{
  return const_cast<Entity*>(std::as_const(*this).getEntity(id, flag));
}

const Entity* LinkAttribute::getEntity(std::size_t index, bool) const
{
  if (m_entity && index == 0)
    return m_entity.get();
  throw std::out_of_range("No Entity Found for entity_i='" + std::to_string(index) + "'");
}

Entity* LinkAttribute::getEntity(std::size_t index, bool flag)
{
  return const_cast<Entity*>(std::as_const(*this).getEntity(index, flag));
}

Entity* LinkAttribute::getEntity(bool)
{
  return m_entity.get();
}

const Entity* LinkAttribute::getEntity(bool) const
{
  return m_entity.get();
}

bool LinkAttribute::hasEntity(const EntityID& id, bool) const
{
  return m_entity && m_entity->getUniqueID() == id;
}

bool LinkAttribute::hasEntity(std::size_t index, bool) const
{
  return m_entity && index == 0;
}

bool LinkAttribute::hasEntity(bool) const
{
  return m_entity != nullptr;
}

std::vector<EntityID> LinkAttribute::getEntityIDs()
{
  if (!m_entity)
    return {};
  return {m_entity->getUniqueID()};
}

std::vector<Entity*> LinkAttribute::getEntities(bool)
{
  if (!m_entity)
    return {};
  return {m_entity.get()};
}

std::vector<const Entity*> LinkAttribute::getEntities(bool) const
{
  if (!m_entity)
    return {};
  return {m_entity.get()};
}

void LinkAttribute::toStream(FileSystem::DataOStream& out) const
{
  EntityLinkAttributeBase::toStream(out);
  out.beginSection("Entity");
  out << m_entity;
  out.endSection();
}

void LinkAttribute::fromStream(FileSystem::DataIStream& in)
{
  m_entity.reset();
  EntityLinkAttributeBase::fromStream(in);
  std::unique_ptr<Entity> entity;
  in.beginSection("Entity");
  in >> entity;
  in.endSection();
  if (in)
    addEntity(std::move(entity));
}

bool LinkAttribute::isEqual(const LinkAttribute& other) const
{
  if (!EntityLinkAttributeBase::isEqual(other))
    return false;
  if (!m_entity || !other.m_entity)
    return !m_entity && !other.m_entity;
  return m_entity->isEqual(*other.m_entity);
}

} // namespace Ombrix::Model
