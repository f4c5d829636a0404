#include "ombrix/model/Entity.h"

#include "ombrix/model/EntityLink.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <atomic>

namespace Ombrix::Model
{
namespace
{
std::atomic<std::uint64_t> s_identityGeneration{0};

void bumpIdentityGeneration()
{
  s_identityGeneration.fetch_add(1, std::memory_order_relaxed);
}
} // namespace

Entity::Entity() = default;

Entity::Entity(CompositeAttribute* parent) : AttributeEx(parent) {}

Entity::Entity(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent)
    : AttributeEx(type, access, parent)
{
}

Entity::Entity(const std::string& type, const std::string& name, KorvanSDK::AccessType access,
               CompositeAttribute* parent)
    : AttributeEx(type, access, parent), m_name(name)
{
}

Entity::Entity(const std::string& type, const std::string& name, const EntityID& id,
               KorvanSDK::AccessType access, CompositeAttribute* parent)
    : AttributeEx(type, access, parent), m_name(name), m_id(id)
{
}

void Entity::setName(const std::string& name)
{
  m_name = name;
  if (m_indexed)
    bumpIdentityGeneration();
}

std::string Entity::getName(bool full) const
{
  if (!full)
    return m_name;
  std::string result = m_name;
  for (const Entity* ancestor = getParentEntity(); ancestor; ancestor = ancestor->getParentEntity())
    result = ancestor->m_name + "->" + result;
  return result;
}

void Entity::setUniqueID(const EntityID& id)
{
  m_id = id;
  if (m_indexed)
    bumpIdentityGeneration();
}

Attribute* Entity::getParentEntityLink() const
{
  return m_parentLink ? &m_parentLink->getLinkedAttribute() : nullptr;
}

std::uint64_t Entity::identityGeneration()
{
  return s_identityGeneration.load(std::memory_order_relaxed);
}

void Entity::onTypeChanged()
{
  if (m_indexed)
    bumpIdentityGeneration();
}

void Entity::markIndexed() const
{
  for (const Entity* entity = this; entity; entity = entity->getParentEntity())
    entity->m_indexed = true;
}

AttributePath Entity::do_getAttributePath(bool relative) const
{
  if (relative)
    return AttributePath();
  const Attribute* owner = m_parentLink ? &m_parentLink->getLinkedAttribute() : getParent();
  if (!owner)
    return AttributePath(type());
  AttributePath path = owner->getAttributePath(false);
  path.push_back(AttributePath(type()));
  return path;
}

void Entity::toStream(FileSystem::DataOStream& out) const
{
  CompositeAttribute::toStream(out);
  out.beginSection("Entity");
  out.key("Name");
  out << m_name;
  out.key("UniqueID");
  out << static_cast<std::int32_t>(m_id[0]) << static_cast<std::int32_t>(m_id[1]);
  out.endSection();
}

void Entity::fromStream(FileSystem::DataIStream& in)
{
  CompositeAttribute::fromStream(in);
  std::string name;
  std::int32_t first = 0;
  std::int32_t second = 0;
  in.beginSection("Entity");
  in.key("Name");
  in >> name;
  in.key("UniqueID");
  in >> first >> second;
  in.endSection();
  if (!in)
    return;
  setName(name);
  setUniqueID(EntityID(first, second));
}

bool Entity::isEqual(const Entity& other) const
{
  return CompositeAttribute::isEqual(other) && m_name == other.m_name && m_id == other.m_id;
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const std::unique_ptr<Entity>& entity)
{
  out << static_cast<bool>(entity);
  if (entity)
    entity->toStream(out);
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, std::unique_ptr<Entity>& entity)
{
  bool present = false;
  in >> present;
  entity.reset();
  if (in && present)
  {
    entity = std::make_unique<Entity>();
    entity->fromStream(in);
  }
  return in;
}

} // namespace Ombrix::Model
