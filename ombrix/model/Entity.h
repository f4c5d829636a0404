// An entity: a composite attribute with an identity (its type name in `type`, its own name and an
// EntityID). An entity held by a link, list or array knows that link.
#pragma once

#include "ombrix/model/CompositeAttribute.h"

namespace Ombrix::Model
{

class EntityLink;

class OMBRIX_API Entity : public AttributeEx<Entity, 6, IEntityImpl, CompositeAttribute>
{
public:
  Entity();
  explicit Entity(CompositeAttribute* parent);
  Entity(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);
  Entity(const std::string& type, const std::string& name,
         KorvanSDK::AccessType access = KorvanSDK::AccessType::ReadWrite,
         CompositeAttribute* parent = nullptr);
  // With its unique ID known (read from a file, say): no fresh ID is generated first.
  Entity(const std::string& type, const std::string& name, const EntityID& id, KorvanSDK::AccessType access,
         CompositeAttribute* parent = nullptr);

  void setName(const std::string& name);
  // `full`: the names of this entity and its entity ancestors, outermost first, joined by "->".
  std::string getName(bool full = false) const;
  const std::string& name() const { return m_name; }
  const EntityID& getUniqueID() const { return m_id; }
  void setUniqueID(const EntityID& id);

  EntityLink* getParentLink() const { return m_parentLink; }
  void setParentLink(EntityLink* link) { m_parentLink = link; }
  // The link, list or array attribute that holds this entity, or null.
  Attribute* getParentEntityLink() const;

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  // Composite part, name and ID equal; the parent link is not compared.
  bool isEqual(const Entity& other) const;

  // Bumped whenever the type, name or ID of an indexed entity changes, so that lookup indexes can
  // tell they are stale.
  static std::uint64_t identityGeneration();
  // Called by a lookup index that lists this entity: from then on, identity changes of this entity
  // and of its entity ancestors (whose names make its full name) bump the generation. Entities no
  // index has seen, such as those a reader is still filling in, change without invalidating any.
  void markIndexed() const;

protected:
  AttributePath do_getAttributePath(bool relative) const override;
  void onTypeChanged() override;

private:
  std::string m_name;
  EntityID m_id;
  EntityLink* m_parentLink = nullptr;
  mutable bool m_indexed = false;
};

// Entities in streams travel behind a presence flag, so that an empty pointer round-trips.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const std::unique_ptr<Entity>& entity);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, std::unique_ptr<Entity>& entity);

} // namespace Ombrix::Model
