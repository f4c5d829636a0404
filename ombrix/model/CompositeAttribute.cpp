#include "ombrix/model/CompositeAttribute.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <stdexcept>

namespace Ombrix::Model
{
namespace
{

// The entity that gives a composite's messages their identity: the composite itself or its nearest
// entity ancestor.
const Entity* owningEntity(const CompositeAttribute& composite)
{
  if (composite.isEntity())
    return static_cast<const Entity*>(&composite);
  return composite.getParentEntity();
}

bool isLinkKind(KorvanSDK::AttributeType kind)
{
  return kind == KorvanSDK::AttributeType::Link || kind == KorvanSDK::AttributeType::List ||
         kind == KorvanSDK::AttributeType::Array;
}

} // namespace

CompositeAttribute::CompositeAttribute(CompositeAttribute* parent) : AttributeEx(parent) {}

CompositeAttribute::CompositeAttribute(const std::string& type, KorvanSDK::AccessType access,
                                       CompositeAttribute* parent)
    : AttributeEx(type, access, parent)
{
}

CompositeAttribute::~CompositeAttribute() = default;

Attribute* CompositeAttribute::createAttribute(KorvanSDK::AttributeType kind, const std::string& type,
                                               KorvanSDK::AccessType access)
{
  if (hasAttribute(AttributePath(type), false))
    return nullptr;
  auto child = Model::createAttribute(kind, this);
  child->setType(type);
  child->setAccessType(access);
  m_children.emplace_back(std::move(child));
  return m_children.back().get();
}

Attribute* CompositeAttribute::addAttribute(std::unique_ptr<Attribute> child)
{
  if (!child || hasAttribute(AttributePath(child->type()), false))
    return nullptr;
  child->setParent(this);
  m_children.emplace_back(std::move(child));
  return m_children.back().get();
}

Attribute* CompositeAttribute::findChild(const std::string& name) const
{
  for (const auto& child : m_children)
  {
    if (child->type() == name)
      return child.get();
  }
  return nullptr;
}

template <bool Throw>
const Attribute* CompositeAttribute::lookup(const AttributePath& path, [[maybe_unused]] bool flag) const
{
  const CompositeAttribute* current = this;
  for (std::size_t i = 0; i < path.size(); ++i)
  {
    const Attribute* child = current->findChild(path[i]);
    if (!child)
      break;
    if (i + 1 == path.size())
      return child;
    const auto kind = child->getAttributeType(false);
    if (isLinkKind(kind))
    {
      const auto& link = static_cast<const EntityLinkAttributeBase&>(*child);
      const AttributePath rest = path.subPath(i + 1, path.size());
      if constexpr (Throw)
        return &link.getAttribute(rest, false);
      else
        return link.findAttribute(rest, false);
    }
    if (kind != KorvanSDK::AttributeType::Composite && kind != KorvanSDK::AttributeType::Entity)
      break; // a value or shortcut cannot hold the rest of the path
    current = static_cast<const CompositeAttribute*>(child);
  }
  if (path.empty())
    return this;
  if constexpr (Throw)
    throwInvalidPath(path);
  return nullptr;
}

void CompositeAttribute::throwInvalidPath(const AttributePath& path) const
{
  AttributePath full = getAttributePath(true);
  full.push_back(path);
  if (const Entity* entity = owningEntity(*this))
  {
    throw std::runtime_error("Invalid path [" + toString(entity->getUniqueID()) + "] of type " +
                             entity->type() + " : " + full.toString());
  }
  throw std::runtime_error("Invalid path " + full.toString());
}

Attribute& CompositeAttribute::getAttribute(const AttributePath& path, bool flag)
{
  return const_cast<Attribute&>(*lookup<true>(path, flag));
}

const Attribute& CompositeAttribute::getAttribute(const AttributePath& path, bool flag) const
{
  return *lookup<true>(path, flag);
}

Attribute* CompositeAttribute::findAttribute(const AttributePath& path, bool flag)
{
  return const_cast<Attribute*>(lookup<false>(path, flag));
}

const Attribute* CompositeAttribute::findAttribute(const AttributePath& path, bool flag) const
{
  return lookup<false>(path, flag);
}

bool CompositeAttribute::hasAttribute(const AttributePath& path, bool flag) const
{
  return lookup<false>(path, flag) != nullptr;
}

std::uint64_t CompositeAttribute::getNumberOfAttributes(bool recursive, bool flag) const
{
  std::uint64_t count = m_children.size();
  if (recursive)
  {
    for (const auto& child : m_children)
    {
      if (child->isComposite())
        count += static_cast<const CompositeAttribute&>(*child).getNumberOfAttributes(true, flag);
    }
  }
  return count;
}

const Attribute* CompositeAttribute::childAtRecursive(std::uint64_t index, bool flag) const
{
  std::uint64_t first = 0; // number of the child in hand
  for (const auto& child : m_children)
  {
    if (index == first)
      return child.get();
    ++first;
    if (child->isComposite())
    {
      const auto& composite = static_cast<const CompositeAttribute&>(*child);
      const std::uint64_t subtree = composite.getNumberOfAttributes(true, flag);
      if (index < first + subtree)
        return composite.childAtRecursive(index - first, flag);
      first += subtree;
    }
  }
  return nullptr;
}

const Attribute& CompositeAttribute::getAttribute(std::uint64_t index, bool recursive, bool flag) const
{
  const Attribute* found = nullptr;
  if (!recursive)
    found = index < m_children.size() ? m_children[index].get() : nullptr;
  else
    found = childAtRecursive(index, flag);
  if (found)
    return *found;
  if (const Entity* entity = owningEntity(*this))
  {
    throw std::out_of_range("No Attribute Found for [" + toString(entity->getUniqueID()) + "] of type " +
                            entity->type() + " child_i='" + std::to_string(index) + "'");
  }
  throw std::out_of_range("No Attribute Found for " + getAttributePath(true).toString() + " child_i='" +
                          std::to_string(index) + "'");
}

Attribute& CompositeAttribute::getAttribute(std::uint64_t index, bool recursive, bool flag)
{
  return const_cast<Attribute&>(std::as_const(*this).getAttribute(index, recursive, flag));
}

void CompositeAttribute::toStream(FileSystem::DataOStream& out) const
{
  Attribute::toStream(out);
  out.beginSection("Children");
  out << static_cast<std::uint64_t>(m_children.size());
  for (const auto& child : m_children)
  {
    out << static_cast<std::int32_t>(child->getAttributeType(false));
    child->write(out);
    if (!out)
      break;
  }
  out.endSection();
}

void CompositeAttribute::fromStream(FileSystem::DataIStream& in)
{
  Attribute::fromStream(in);
  m_children.clear();
  std::uint64_t count = 0;
  in.beginSection("Children");
  in >> count;
  for (std::uint64_t i = 0; i < count && in; ++i)
  {
    std::int32_t kind = 0;
    in >> kind;
    if (!in || kind < 1 || kind > 11)
    {
      in.setFailed();
      break;
    }
    auto child = Model::createAttribute(static_cast<KorvanSDK::AttributeType>(kind), this);
    child->read(in);
    if (in && !addAttribute(std::move(child)))
      in.setFailed(); // two children of one name cannot come from a valid stream
  }
  in.endSection();
}

bool CompositeAttribute::isEqual(const CompositeAttribute& other) const
{
  if (!Attribute::isEqual(other) || m_children.size() != other.m_children.size())
    return false;
  for (std::size_t i = 0; i < m_children.size(); ++i)
  {
    if (!(m_children[i] == other.m_children[i]))
      return false;
  }
  return true;
}

std::unique_ptr<Attribute> createAttribute(KorvanSDK::AttributeType kind, CompositeAttribute* parent)
{
  using K = KorvanSDK::AttributeType;
  switch (kind)
  {
  case K::Int:
    return std::make_unique<ValueAttribute<int>>(parent);
  case K::Bool:
    return std::make_unique<ValueAttribute<bool>>(parent);
  case K::String:
    return std::make_unique<ValueAttribute<std::string>>(parent);
  case K::Float:
    return std::make_unique<ValueAttribute<float>>(parent);
  case K::Composite:
    return std::make_unique<CompositeAttribute>(parent);
  case K::Entity:
    return std::make_unique<Entity>(parent);
  case K::Link:
    return std::make_unique<LinkAttribute>(parent);
  case K::List:
    return std::make_unique<ListAttribute>(parent);
  case K::Shortcut:
    return std::make_unique<ShortcutAttribute>(parent);
  case K::Array:
    return std::make_unique<ArrayAttribute>(parent);
  case K::Double:
    return std::make_unique<ValueAttribute<double>>(parent);
  default:
    throw std::logic_error("Invalid type");
  }
}

std::unique_ptr<Attribute> createAttribute(const std::string& kind, CompositeAttribute* parent)
{
  return createAttribute(KorvanSDK::attributeTypeFromString(kind, KorvanSDK::AttributeType::Unknown), parent);
}

} // namespace Ombrix::Model
