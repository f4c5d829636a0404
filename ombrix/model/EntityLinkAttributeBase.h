// Common base of the attributes that hold entities (link, list, array): the relationship type, the
// owns-entities flag, and path lookup into the held entities by index ("Servers.2.Name").
#pragma once

#include "ombrix/model/Attribute.h"
#include "ombrix/model/EntityLink.h"

namespace Ombrix::Model
{

class OMBRIX_API EntityLinkAttributeBase : public Attribute, public EntityLink
{
public:
  EntityLinkAttributeBase() = default;
  explicit EntityLinkAttributeBase(CompositeAttribute* parent);
  EntityLinkAttributeBase(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);
  EntityLinkAttributeBase(const std::string& type, bool ownsEntities, CompositeAttribute* parent);
  EntityLinkAttributeBase(const std::string& type, const std::string& relationshipType,
                          KorvanSDK::AccessType access, bool ownsEntities, CompositeAttribute* parent);

  bool getOwnsEntities() const override { return m_ownsEntities; }
  void setOwnsEntities(bool owns) { m_ownsEntities = owns; }
  const std::string& getRelationshipType() const override { return m_relationshipType; }
  void setRelationShipType(const std::string& relationshipType) { m_relationshipType = relationshipType; }

  Attribute& getLinkedAttribute() override { return *this; }
  const Attribute& getLinkedAttribute() const override { return *this; }

  // The first path segment is the entity's index in the link (decimal); the rest is resolved in that
  // entity. Throws the link's std::out_of_range for a bad index and "Invalid path ..." below it.
  Attribute& getAttribute(const AttributePath& path, bool flag = false);
  const Attribute& getAttribute(const AttributePath& path, bool flag = false) const;
  const Attribute* findAttribute(const AttributePath& path, bool flag = false) const;
  bool hasAttribute(const AttributePath& path, bool flag = false) const;

  // The held entities in order (empty slots left out).
  virtual std::vector<Entity*> getEntities(bool flag = false) = 0;
  virtual std::vector<const Entity*> getEntities(bool flag = false) const = 0;

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  // Attribute part and relationship type; ownsEntities takes no part.
  bool isEqual(const EntityLinkAttributeBase& other) const;

protected:
  // Owned entities follow the link to its new parent; entities merely linked keep theirs.
  void do_setParent(CompositeAttribute* parent) override;
  // Gives `entity` this link and this attribute's parent, as adding does.
  void adopt(Entity& entity);

private:
  bool m_ownsEntities = false;
  std::string m_relationshipType;
};

} // namespace Ombrix::Model
