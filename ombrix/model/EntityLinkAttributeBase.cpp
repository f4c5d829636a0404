#include "ombrix/model/EntityLinkAttributeBase.h"

#include "ombrix/model/Entity.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <charconv>
#include <stdexcept>

namespace Ombrix::Model
{
namespace
{

// The entity index that starts a path below a link; nothing when the segment is not a decimal number.
std::optional<std::size_t> parseIndex(const std::string& segment)
{
  std::size_t index = 0;
  const char* end = segment.data() + segment.size();
  const auto result = std::from_chars(segment.data(), end, index);
  if (segment.empty() || result.ec != std::errc() || result.ptr != end)
    return std::nullopt;
  return index;
}

} // namespace

EntityLinkAttributeBase::EntityLinkAttributeBase(CompositeAttribute* parent) : Attribute(parent) {}

EntityLinkAttributeBase::EntityLinkAttributeBase(const std::string& type, KorvanSDK::AccessType access,
                                                 CompositeAttribute* parent)
    : Attribute(type, access, parent)
{
}

EntityLinkAttributeBase::EntityLinkAttributeBase(const std::string& type, bool ownsEntities,
                                                 CompositeAttribute* parent)
    : Attribute(type, KorvanSDK::AccessType::None, parent), m_ownsEntities(ownsEntities)
{
}

EntityLinkAttributeBase::EntityLinkAttributeBase(const std::string& type, const std::string& relationshipType,
                                                 KorvanSDK::AccessType access, bool ownsEntities,
                                                 CompositeAttribute* parent)
    : Attribute(type, access, parent), m_ownsEntities(ownsEntities), m_relationshipType(relationshipType)
{
}

const Attribute& EntityLinkAttributeBase::getAttribute(const AttributePath& path, bool flag) const
{
  if (path.empty())
    return *this;
  const auto index = parseIndex(path.front());
  if (!index)
  {
    throw std::runtime_error("Invalid path " + getAttributePath(false).toString() + " : '" + path.front() +
                             "' is not an entity index");
  }
  const Entity* entity = getEntity(*index, flag);
  AttributePath rest(path);
  rest.pop_front();
  if (rest.empty())
    return *entity;
  return entity->getAttribute(rest, flag);
}

Attribute& EntityLinkAttributeBase::getAttribute(const AttributePath& path, bool flag)
{
  return const_cast<Attribute&>(std::as_const(*this).getAttribute(path, flag));
}

const Attribute* EntityLinkAttributeBase::findAttribute(const AttributePath& path, bool flag) const
{
  if (path.empty())
    return this;
  const auto index = parseIndex(path.front());
  if (!index || !hasEntity(*index, flag))
    return nullptr;
  const Entity* entity = nullptr;
  try
  {
    entity = getEntity(*index, flag);
  }
  catch (const std::out_of_range&)
  {
    return nullptr; // an empty slot
  }
  if (path.size() == 1)
    return entity;
  return entity->findAttribute(path.subPath(1, path.size()), flag);
}

bool EntityLinkAttributeBase::hasAttribute(const AttributePath& path, bool flag) const
{
  return findAttribute(path, flag) != nullptr;
}

void EntityLinkAttributeBase::do_setParent(CompositeAttribute* parent)
{
  if (!m_ownsEntities)
    return;
  for (Entity* entity : getEntities(false))
    entity->setParent(parent);
}

void EntityLinkAttributeBase::adopt(Entity& entity)
{
  attachToEntity(entity);
  entity.setParent(getParent());
}

void EntityLinkAttributeBase::toStream(FileSystem::DataOStream& out) const
{
  Attribute::toStream(out);
  out.key("OwnsEntities");
  out << m_ownsEntities;
  out.key("RelationshipType");
  out << m_relationshipType;
}

void EntityLinkAttributeBase::fromStream(FileSystem::DataIStream& in)
{
  Attribute::fromStream(in);
  bool owns = false;
  std::string relationshipType;
  in.key("OwnsEntities");
  in >> owns;
  in.key("RelationshipType");
  in >> relationshipType;
  if (!in)
    return;
  m_ownsEntities = owns;
  m_relationshipType = relationshipType;
}

bool EntityLinkAttributeBase::isEqual(const EntityLinkAttributeBase& other) const
{
  return Attribute::isEqual(other) && m_relationshipType == other.m_relationshipType;
}

} // namespace Ombrix::Model
