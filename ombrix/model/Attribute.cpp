#include "ombrix/model/Attribute.h"

#include "ombrix/model/CompositeAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <stdexcept>

namespace Ombrix::Model
{

const std::string Attribute::s_EmptyString;

namespace
{
[[noreturn]] void notAvailable()
{
  throw std::runtime_error("Not Available");
}
} // namespace

Attribute::Attribute(CompositeAttribute* parent) : m_parent(parent) {}

Attribute::Attribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent)
    : m_type(type), m_parent(parent), m_access(access)
{
}

Attribute::~Attribute() = default;

void Attribute::setType(const std::string& type)
{
  m_type = type;
  onTypeChanged();
}

void Attribute::setParent(CompositeAttribute* parent)
{
  m_parent = parent;
  do_setParent(parent);
}

Entity* Attribute::getParentEntity() const
{
  for (CompositeAttribute* p = m_parent; p; p = p->getParent())
  {
    if (p->isEntity())
      return static_cast<Entity*>(p);
  }
  return nullptr;
}

bool Attribute::isComposite() const
{
  const auto kind = getAttributeType(false);
  return kind == KorvanSDK::AttributeType::Composite || kind == KorvanSDK::AttributeType::Entity;
}

std::pair<EntityID, AttributePath> Attribute::getEntityIDAndAttributePath() const
{
  if (isEntity())
    return {static_cast<const Entity*>(this)->getUniqueID(), AttributePath()};
  if (const Entity* entity = getParentEntity())
    return {entity->getUniqueID(), getAttributePath(true)};
  return {EntityID(0, 0), getAttributePath(false)};
}

void Attribute::toStream(FileSystem::DataOStream& out) const
{
  out.beginSection("Attribute");
  out.key("Type");
  out << m_type;
  out.key("AccessType");
  out << static_cast<std::int32_t>(m_access);
  out.key("AttributeType");
  out << static_cast<std::int32_t>(getAttributeType(false));
  out.endSection();
}

void Attribute::fromStream(FileSystem::DataIStream& in)
{
  std::string type;
  std::int32_t access = 0;
  std::int32_t kind = 0;
  in.beginSection("Attribute");
  in.key("Type");
  in >> type;
  in.key("AccessType");
  in >> access;
  in.key("AttributeType");
  in >> kind;
  in.endSection();
  if (in && kind != static_cast<std::int32_t>(getAttributeType(false)))
    in.setFailed(); // the stream holds another kind of attribute
  if (!in)
    return;
  setType(type);
  m_access = static_cast<KorvanSDK::AccessType>(access);
}

bool Attribute::isEqual(const Attribute& other) const
{
  return m_type == other.m_type && m_access == other.m_access &&
         getAttributeType(false) == other.getAttributeType(false);
}

KorvanSDK::Model::IAttribute* Attribute::getSDKInterface()
{
  if (!m_sdkInterface.get())
    m_sdkInterface.reset(createSDKInterface());
  return m_sdkInterface.get();
}

const KorvanSDK::Model::IAttribute* Attribute::getSDKInterface() const
{
  return const_cast<Attribute*>(this)->getSDKInterface();
}

void Attribute::do_setParent(CompositeAttribute*) {}

AttributePath Attribute::do_getAttributePath(bool relative) const
{
  if (!m_parent)
    return AttributePath(m_type);
  AttributePath path = m_parent->getAttributePath(relative);
  path.push_back(AttributePath(m_type));
  return path;
}

void Attribute::do_setIntValue(int, const std::string&, Chronology, bool)
{
  notAvailable();
}
void Attribute::do_setBoolValue(bool, const std::string&, Chronology, bool)
{
  notAvailable();
}
void Attribute::do_setFloatValue(float, const std::string&, Chronology, bool)
{
  notAvailable();
}
void Attribute::do_setDoubleValue(double, const std::string&, Chronology, bool)
{
  notAvailable();
}
void Attribute::do_setStringValue(const std::string&, const std::string&, Chronology, bool)
{
  notAvailable();
}
bool Attribute::do_hasValue(Chronology, bool) const
{
  return false;
}
int Attribute::do_getIntValue(Chronology, bool) const
{
  notAvailable();
}
bool Attribute::do_getBoolValue(Chronology, bool) const
{
  notAvailable();
}
float Attribute::do_getFloatValue(Chronology, bool) const
{
  notAvailable();
}
double Attribute::do_getDoubleValue(Chronology, bool) const
{
  notAvailable();
}
std::string Attribute::do_getStringValue(Chronology, bool) const
{
  notAvailable();
}
bool Attribute::do_hasUnits() const
{
  return false;
}
const std::string& Attribute::do_getUnit() const
{
  return s_EmptyString;
}
void Attribute::do_setUnit(const std::string&)
{
  notAvailable();
}

bool operator==(const Attribute& a, const Attribute& b)
{
  return a.equals(b);
}

bool operator!=(const Attribute& a, const Attribute& b)
{
  return !a.equals(b);
}

std::string toString(const std::pair<EntityID, AttributePath>& place)
{
  return toString(place.first) + ":" + place.second.toString();
}

} // namespace Ombrix::Model
