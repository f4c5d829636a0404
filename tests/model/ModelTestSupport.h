// Shared by the model tests: small builders for entities and attributes with fixed identities.
#pragma once

#include "ombrix/model/Entity.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include <memory>
#include <string>
#include <vector>

namespace OmbrixTest
{

inline std::unique_ptr<Ombrix::Model::Entity> makeEntity(const std::string& type, const std::string& name,
                                                         Ombrix::Model::EntityID id)
{
  auto entity = std::make_unique<Ombrix::Model::Entity>(type, name);
  entity->setUniqueID(id);
  return entity;
}

// A child value attribute of `parent` holding `value` (simple storage), with the given access.
template <typename T>
Ombrix::Model::ValueAttribute<T>& addValue(Ombrix::Model::CompositeAttribute& parent, const std::string& name,
                                           const T& value,
                                           KorvanSDK::AccessType access = KorvanSDK::AccessType::ReadWrite)
{
  auto attribute = std::make_unique<Ombrix::Model::ValueAttribute<T>>(name, access, nullptr);
  attribute->set(value, KorvanSDK::Chronology::Initial);
  auto* added = parent.addAttribute(std::move(attribute));
  return static_cast<Ombrix::Model::ValueAttribute<T>&>(*added);
}

inline Ombrix::Model::CompositeAttribute& addComposite(Ombrix::Model::CompositeAttribute& parent,
                                                       const std::string& name)
{
  return static_cast<Ombrix::Model::CompositeAttribute&>(
      *parent.createAttribute(KorvanSDK::AttributeType::Composite, name, KorvanSDK::AccessType::ReadWrite));
}

// A child link, list or array attribute (ReadOnly) of `parent`.
template <typename Link>
Link& addLink(Ombrix::Model::CompositeAttribute& parent, const std::string& name, bool owns,
              const std::string& relation = "")
{
  return static_cast<Link&>(*parent.addAttribute(
      std::make_unique<Link>(name, relation, KorvanSDK::AccessType::ReadOnly, owns, nullptr)));
}

inline Ombrix::Model::ShortcutAttribute& addShortcut(Ombrix::Model::CompositeAttribute& parent,
                                                     const std::string& name,
                                                     const std::vector<Ombrix::Model::AttributePath>& paths)
{
  auto& shortcut = static_cast<Ombrix::Model::ShortcutAttribute&>(
      *parent.createAttribute(KorvanSDK::AttributeType::Shortcut, name, KorvanSDK::AccessType::ReadWrite));
  shortcut.addShortcut(paths);
  return shortcut;
}

// The own names of `entities` (entity pointers), in order.
template <typename Entities> std::vector<std::string> entityNames(const Entities& entities)
{
  std::vector<std::string> names;
  for (const Ombrix::Model::Entity* entity : entities)
    names.push_back(entity->name());
  return names;
}

} // namespace OmbrixTest
