// The shared storage and behaviour of ListAttribute and ArrayAttribute: an ordered sequence of owned
// entities. The two differ only in their type number, host interface and visitor overload.
#pragma once

#include "ombrix/model/AttributeEx.h"
#include "ombrix/model/EntityLinkAttributeBase.h"
#include "ombrix/sdk/SDKInterfaceImpl.h"

namespace Ombrix::Model
{

template <class Derived, int TypeNumber, class Interface>
class OMBRIX_API EntitySequenceAttribute
    : public AttributeEx<Derived, TypeNumber, IEntityLinkAttributeBaseImpl<Interface>,
                         EntityLinkAttributeBase>
{
  using Base =
      AttributeEx<Derived, TypeNumber, IEntityLinkAttributeBaseImpl<Interface>, EntityLinkAttributeBase>;

public:
  using Sequence = std::vector<std::unique_ptr<Entity>>;

  EntitySequenceAttribute() = default;
  explicit EntitySequenceAttribute(CompositeAttribute* parent);
  EntitySequenceAttribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);
  EntitySequenceAttribute(const std::string& type, bool ownsEntities, CompositeAttribute* parent);
  EntitySequenceAttribute(const std::string& type, const std::string& relationshipType,
                          KorvanSDK::AccessType access, bool ownsEntities, CompositeAttribute* parent);
  ~EntitySequenceAttribute() override;

  // Appends; duplicate identifiers are not refused.
  Entity* addEntity(std::unique_ptr<Entity> entity) override;
  std::size_t getNumberOfEntities(bool flag = false) const override;
  // "No Entity found with entity_i='<index>'" / "No Entity Found for entity_ID='<id>'"
  // (std::out_of_range); by ID the first match in order.
  const Entity* getEntity(const EntityID& id, bool flag = false) const override;
  Entity* getEntity(const EntityID& id, bool flag = false) override;
  const Entity* getEntity(std::size_t index, bool flag = false) const override;
  Entity* getEntity(std::size_t index, bool flag = false) override;
  bool hasEntity(const EntityID& id, bool flag = false) const override;
  bool hasEntity(std::size_t index, bool flag = false) const override;
  std::vector<EntityID> getEntityIDs() override;
  std::vector<Entity*> getEntities(bool flag = false) override;
  std::vector<const Entity*> getEntities(bool flag = false) const override;

  typename Sequence::iterator begin() { return m_entities.begin(); }
  typename Sequence::iterator end() { return m_entities.end(); }
  typename Sequence::const_iterator begin() const { return m_entities.begin(); }
  typename Sequence::const_iterator end() const { return m_entities.end(); }
  typename Sequence::const_iterator cbegin() const { return m_entities.cbegin(); }
  typename Sequence::const_iterator cend() const { return m_entities.cend(); }

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  // Attribute part, relationship type, and the entities pairwise in order.
  bool isEqual(const Derived& other) const;

private:
  Sequence m_entities;
};

} // namespace Ombrix::Model
