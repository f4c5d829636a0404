// An attribute that holds at most one entity; adding another destroys the one held.
#pragma once

#include "ombrix/model/AttributeEx.h"
#include "ombrix/model/EntityLinkAttributeBase.h"
#include "ombrix/sdk/SDKInterfaceImpl.h"

namespace Ombrix::Model
{

class OMBRIX_API LinkAttribute
    : public AttributeEx<LinkAttribute, 7, IEntityLinkAttributeBaseImpl<KorvanSDK::Model::ILinkAttribute>,
                         EntityLinkAttributeBase>
{
public:
  LinkAttribute() = default;
  explicit LinkAttribute(CompositeAttribute* parent);
  LinkAttribute(const std::string& type, CompositeAttribute* parent);
  LinkAttribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);
  LinkAttribute(const std::string& type, bool ownsEntities, CompositeAttribute* parent);
  LinkAttribute(const std::string& type, const std::string& relationshipType, KorvanSDK::AccessType access,
                CompositeAttribute* parent);
  LinkAttribute(const std::string& type, const std::string& relationshipType, KorvanSDK::AccessType access,
                bool ownsEntities, CompositeAttribute* parent);
  ~LinkAttribute() override;

  Entity* addEntity(std::unique_ptr<Entity> entity) override;
  std::size_t getNumberOfEntities(bool flag = false) const override;
  // "No Entity Found for entity_i='<index>'" / "No Entity Found for entity_ID='<id>'" (std::out_of_range).
  const Entity* getEntity(const EntityID& id, bool flag = false) const override;
  Entity* getEntity(const EntityID& id, bool flag = false) override;
  const Entity* getEntity(std::size_t index, bool flag = false) const override;
  Entity* getEntity(std::size_t index, bool flag = false) override;
  // The held entity or null; never throws.
  Entity* getEntity(bool flag = false);
  const Entity* getEntity(bool flag = false) const;
  bool hasEntity(const EntityID& id, bool flag = false) const override;
  bool hasEntity(std::size_t index, bool flag = false) const override;
  bool hasEntity(bool flag = false) const;
  std::vector<EntityID> getEntityIDs() override;
  std::vector<Entity*> getEntities(bool flag = false) override;
  std::vector<const Entity*> getEntities(bool flag = false) const override;

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  bool isEqual(const LinkAttribute& other) const;

private:
  std::unique_ptr<Entity> m_entity;
};

} // namespace Ombrix::Model
