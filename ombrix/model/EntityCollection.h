// The whole exchanged model: the owned root entities and a flat list of every entity reachable from
// them (depth-first pre-order, roots in insertion order), in which all lookups by index, ID, type and
// name are made. Lookups answer "first match in list order"; an internal index makes them fast and is
// rebuilt whenever the list or an entity's identity changes. One thread at a time.
#pragma once

#include "ombrix/model/AttributeContainer.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityTypeName.h"
#include "ombrix/model/SolutionControlDefinition.h"
#include "ombrix/sdk/Handle.h"
#include "ombrix/sdk/IEntityCollection.h"

#include <optional>
#include <unordered_map>
#include <vector>

namespace Ombrix::Model
{

class OMBRIX_API EntityCollection : public KorvanSDK::Handle<KorvanSDK::Model::IEntityCollection, 6>
{
public:
  using List = std::vector<Entity*>;
  using iterator = List::iterator;
  using const_iterator = List::const_iterator;

  EntityCollection();
  explicit EntityCollection(AttributeContainer<Entity>&& root);
  explicit EntityCollection(std::unique_ptr<Entity> root);
  EntityCollection(EntityCollection&&) noexcept;
  EntityCollection& operator=(EntityCollection&&) noexcept;
  EntityCollection(const EntityCollection&) = delete;
  EntityCollection& operator=(const EntityCollection&) = delete;
  ~EntityCollection() override;

  void clear();
  // Appends a root and lists it and every entity below it; returns the position of the root in the
  // flat list, or end() for an empty container (nothing changes).
  iterator addRootEntity(AttributeContainer<Entity>&& root);
  iterator addRootEntity(std::unique_ptr<Entity> root);
  // Recomputes the flat list; needed after entities were added inside a root already added.
  void rebuildChildEntitiesList();

  iterator begin() { return m_entities.begin(); }
  iterator end() { return m_entities.end(); }
  const_iterator begin() const { return m_entities.begin(); }
  const_iterator end() const { return m_entities.end(); }
  const_iterator cbegin() const { return m_entities.cbegin(); }
  const_iterator cend() const { return m_entities.cend(); }
  List::reverse_iterator rbegin() { return m_entities.rbegin(); }
  List::reverse_iterator rend() { return m_entities.rend(); }
  List::const_reverse_iterator crbegin() const { return m_entities.crbegin(); }
  List::const_reverse_iterator crend() const { return m_entities.crend(); }
  std::size_t size() const { return m_entities.size(); }
  bool empty() const { return m_entities.empty(); }
  Entity* operator[](std::size_t index) const { return m_entities[index]; }

  const std::vector<AttributeContainer<Entity>>& getRootEntitites() const { return m_roots; }
  const SolutionControlDefinition& getSolutionControlDefinition() const { return m_solutionControl; }
  void setSolutionControlDefinition(const SolutionControlDefinition& definition)
  {
    m_solutionControl = definition;
  }

  // Counting. The trailing flag is accepted by every lookup and does not change what matches.
  std::size_t getNumberOfEntities(bool flag = false) const;
  std::size_t getNumberOfEntities(const std::string& type, bool flag = false) const;
  // Without this, a literal type name would convert to the bool of the total count.
  std::size_t getNumberOfEntities(const char* type, bool flag = false) const
  {
    return getNumberOfEntities(std::string(type), flag);
  }
  std::size_t getNumberOfEntities(const EntityID& id, bool flag = false) const;
  std::size_t getNumberOfRootEntities(bool flag = false) const;

  // Searches returning positions in the flat list (end() when nothing matches). By type and name the
  // full "->" name is tried over the whole list first, then the own name. The forms with `start`
  // continue a search from that position.
  iterator find(const Entity* entity);
  iterator find(const Entity* entity, iterator start);
  iterator find(const EntityID& id);
  iterator find(const EntityID& id, iterator start);
  iterator find(const std::string& type);
  iterator find(const std::string& type, iterator start);
  iterator find(const std::string& type, const std::string& name);
  iterator find(const std::string& type, const std::string& name, iterator start);
  iterator find(const std::string& type, std::size_t index);
  // The index counts the matches from `start` on.
  iterator find(const std::string& type, std::size_t index, iterator start);
  iterator find(const std::string& type, const std::string& name, std::size_t index);
  iterator find(const std::string& type, const std::string& name, std::size_t index, iterator start);
  const_iterator find(const Entity* entity) const;
  const_iterator find(const EntityID& id) const;
  const_iterator find(const std::string& type) const;
  const_iterator find(const std::string& type, const std::string& name) const;
  const_iterator find(const std::string& type, std::size_t index) const;
  const_iterator find(const std::string& type, const std::string& name, std::size_t index) const;
  // The attribute at `path` (text) in the entity found by type and name, or null.
  Attribute* find(const std::string& type, const std::string& name, const std::string& path) const;

  // Lookups that throw std::out_of_range "No Entity found with ..." when nothing matches.
  Entity* getEntity(std::size_t index, bool flag = false) const;
  Entity* getEntity(const EntityID& id, bool flag = false) const;
  Entity* getEntity(const std::string& type, std::size_t index, bool flag = false) const;
  Entity* getEntity(const std::string& type, const std::string& name, bool flag = false) const;
  Entity* getEntity(const std::string& type, const std::string& name, std::size_t index,
                    bool flag = false) const;
  Entity* getEntity(const EntityTypeName& typeName, bool flag = false) const;
  Entity* operator[](const EntityTypeName& typeName) const { return getEntity(typeName); }
  // std::out_of_range "No Root Entity found with rootEntity_i='<index>'".
  Entity* getRootEntity(std::size_t index, bool flag = false) const;

  bool hasEntity(std::size_t index, bool flag = false) const;
  bool hasEntity(const EntityID& id, bool flag = false) const;
  bool hasEntity(const std::string& type, std::size_t index, bool flag = false) const;
  bool hasEntity(const std::string& type, const std::string& name, bool flag = false) const;
  bool hasEntity(const std::string& type, const std::string& name, std::size_t index,
                 bool flag = false) const;
  bool hasEntity(const EntityTypeName& typeName, bool flag = false) const;
  std::optional<std::uint64_t> getEntityIndex(const EntityID& id, bool flag = false) const;
  std::optional<std::uint64_t> getEntityIndex(const Entity* entity, bool flag = false) const;

  Entity* findEntity(const EntityID& id) const;
  Attribute* findAttribute(const EntityID& id, const AttributePath& path) const;
  Attribute* findAttribute(const std::pair<EntityID, AttributePath>& place) const;

  // Takes the entity found by type and name out of the flat list only (its root still owns it, and a
  // rebuild brings it back). Returns the position it held, or end().
  iterator erase(const std::string& type, const std::string& name);

  bool hasSolutionControl() const;
  // The entity named by the solution-control definition; std::out_of_range when there is none.
  Entity* getSolutionControl(bool flag = false) const;

  void accept(AttributeVisitorAbstract& visitor);

  // Roots, flat list and solution-control definition equal (entities compared deeply, in order).
  bool isEqual(const EntityCollection& other) const;

  // The collection as the host sees it (the collection is its own handle; see IEntityCollection).
  KorvanSDK::Model::IEntityCollection* getSDKInterface() { return this; }
  const KorvanSDK::Model::IEntityCollection* getSDKInterface() const { return this; }

protected:
  // Host-facing lookups (EntityCollectionSDK.cpp): the lookups above, failures turned into codes.
  KorvanSDK::ExceptionType do_getNumberOfEntities(std::uint64_t& count) override;
  KorvanSDK::ExceptionType do_getNumberOfEntitiesOfType(const char* type, std::uint64_t& count) override;
  KorvanSDK::ExceptionType do_getNumberOfRootEntities(std::uint64_t& count) override;
  KorvanSDK::ExceptionType do_getEntity(std::uint64_t index, KorvanSDK::Model::IEntity*& entity) override;
  KorvanSDK::ExceptionType do_getEntityByID(const KorvanSDK::Model::EntityID& id,
                                            KorvanSDK::Model::IEntity*& entity) override;
  KorvanSDK::ExceptionType do_getEntityByType(const char* type, std::uint64_t index,
                                              KorvanSDK::Model::IEntity*& entity) override;
  KorvanSDK::ExceptionType do_getEntityByName(const char* type, const char* name, std::uint64_t index,
                                              KorvanSDK::Model::IEntity*& entity) override;
  KorvanSDK::ExceptionType do_getRootEntity(std::uint64_t index, KorvanSDK::Model::IEntity*& entity) override;
  KorvanSDK::ExceptionType do_getSolutionControl(KorvanSDK::Model::IEntity*& entity) override;

private:
  struct Index;
  const Index& index() const;
  void invalidateIndex() const;
  // Positions of the entities matching type and name: full-name matches, else own-name matches.
  const std::vector<std::size_t>* typeNameMatches(const std::string& type, const std::string& name) const;
  std::optional<std::size_t> positionOf(const std::string& type, const std::string& name,
                                        std::size_t index) const;

  List m_entities;
  std::vector<AttributeContainer<Entity>> m_roots;
  SolutionControlDefinition m_solutionControl;
  mutable std::unique_ptr<Index> m_index;
};

OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const EntityCollection& collection);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, EntityCollection& collection);

} // namespace Ombrix::Model
