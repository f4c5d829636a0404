#include "ombrix/model/EntityCollection.h"

#include "ombrix/model/EntityExtractVisitor.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <algorithm>
#include <stdexcept>

namespace Ombrix::Model
{

// Positions in the flat list by ID, type, type + full name and type + own name, each in list order.
struct EntityCollection::Index
{
  using Positions = std::vector<std::size_t>;

  std::uint64_t generation = 0;
  std::size_t indexed = 0; // entries of the flat list covered so far
  std::unordered_map<EntityID, Positions> byId;
  std::unordered_map<std::string, Positions> byType;
  std::unordered_map<std::string, Positions> byTypeFullName;
  std::unordered_map<std::string, Positions> byTypeName;
  std::unordered_map<const Entity*, std::size_t> byPointer;

  static std::string key(const std::string& type, const std::string& name)
  {
    std::string k;
    k.reserve(type.size() + name.size() + 1);
    k.append(type).push_back('\0');
    k.append(name);
    return k;
  }

  void add(const List& entities)
  {
    for (std::size_t i = indexed; i < entities.size(); ++i)
    {
      const Entity* entity = entities[i];
      if (!entity)
        continue;
      byId[entity->getUniqueID()].push_back(i);
      byType[entity->type()].push_back(i);
      byTypeFullName[key(entity->type(), entity->getName(true))].push_back(i);
      byTypeName[key(entity->type(), entity->name())].push_back(i);
      byPointer.emplace(entity, i);
      entity->markIndexed();
    }
    indexed = entities.size();
  }
};

namespace
{

const std::vector<std::size_t>* lookup(const std::unordered_map<std::string, std::vector<std::size_t>>& map,
                                       const std::string& key)
{
  auto it = map.find(key);
  return it == map.end() ? nullptr : &it->second;
}

std::string typeNameIndexText(const std::string& type, const std::string& name, std::size_t index)
{
  return "No Entity found with entityType='" + type + "' and entityName='" + name + "' and entity_i='" +
         std::to_string(index) + "'";
}

} // namespace

EntityCollection::EntityCollection() = default;

EntityCollection::EntityCollection(AttributeContainer<Entity>&& root)
{
  addRootEntity(std::move(root));
}

EntityCollection::EntityCollection(std::unique_ptr<Entity> root)
{
  addRootEntity(std::move(root));
}

EntityCollection::EntityCollection(EntityCollection&& other) noexcept
    : m_entities(std::move(other.m_entities)), m_roots(std::move(other.m_roots)),
      m_solutionControl(std::move(other.m_solutionControl)), m_index(std::move(other.m_index))
{
  other.m_entities.clear();
  other.m_roots.clear();
}

EntityCollection& EntityCollection::operator=(EntityCollection&& other) noexcept
{
  if (this != &other)
  {
    m_entities = std::move(other.m_entities);
    m_roots = std::move(other.m_roots);
    m_solutionControl = std::move(other.m_solutionControl);
    m_index = std::move(other.m_index);
    other.m_entities.clear();
    other.m_roots.clear();
  }
  return *this;
}

EntityCollection::~EntityCollection() = default;

void EntityCollection::clear()
{
  m_entities.clear();
  m_roots.clear();
  invalidateIndex();
}

EntityCollection::iterator EntityCollection::addRootEntity(AttributeContainer<Entity>&& root)
{
  if (root.empty())
    return m_entities.end();
  Entity& entity = *root;
  m_roots.push_back(std::move(root));
  const std::size_t first = m_entities.size();
  EntityExtractVisitor::extract(entity, m_entities);
  // A valid index simply grows with the list.
  if (m_index && m_index->generation == Entity::identityGeneration() && m_index->indexed == first)
    m_index->add(m_entities);
  return m_entities.begin() + static_cast<std::ptrdiff_t>(first);
}

EntityCollection::iterator EntityCollection::addRootEntity(std::unique_ptr<Entity> root)
{
  return addRootEntity(AttributeContainer<Entity>(std::move(root)));
}

void EntityCollection::rebuildChildEntitiesList()
{
  m_entities.clear();
  for (auto& root : m_roots)
  {
    if (root)
      EntityExtractVisitor::extract(*root, m_entities);
  }
  invalidateIndex();
}

void EntityCollection::invalidateIndex() const
{
  m_index.reset();
}

const EntityCollection::Index& EntityCollection::index() const
{
  const std::uint64_t generation = Entity::identityGeneration();
  if (!m_index || m_index->generation != generation || m_index->indexed != m_entities.size())
  {
    m_index = std::make_unique<Index>();
    m_index->generation = generation;
    m_index->add(m_entities);
  }
  return *m_index;
}

std::size_t EntityCollection::getNumberOfEntities(bool) const
{
  return m_entities.size();
}

std::size_t EntityCollection::getNumberOfEntities(const std::string& type, bool) const
{
  const auto* positions = lookup(index().byType, type);
  return positions ? positions->size() : 0;
}

std::size_t EntityCollection::getNumberOfEntities(const EntityID& id, bool) const
{
  const auto& byId = index().byId;
  auto it = byId.find(id);
  return it == byId.end() ? 0 : it->second.size();
}

std::size_t EntityCollection::getNumberOfRootEntities(bool) const
{
  return m_roots.size();
}

const std::vector<std::size_t>* EntityCollection::typeNameMatches(const std::string& type,
                                                                  const std::string& name) const
{
  const Index& idx = index();
  const std::string key = Index::key(type, name);
  if (const auto* full = lookup(idx.byTypeFullName, key))
    return full;
  return lookup(idx.byTypeName, key);
}

std::optional<std::size_t> EntityCollection::positionOf(const std::string& type, const std::string& name,
                                                        std::size_t i) const
{
  const auto* positions = typeNameMatches(type, name);
  if (!positions || i >= positions->size())
    return std::nullopt;
  return (*positions)[i];
}

EntityCollection::const_iterator EntityCollection::find(const Entity* entity) const
{
  const auto& byPointer = index().byPointer;
  auto it = byPointer.find(entity);
  return it == byPointer.end() ? end() : begin() + static_cast<std::ptrdiff_t>(it->second);
}

EntityCollection::const_iterator EntityCollection::find(const EntityID& id) const
{
  const auto& byId = index().byId;
  auto it = byId.find(id);
  return it == byId.end() ? end() : begin() + static_cast<std::ptrdiff_t>(it->second.front());
}

EntityCollection::const_iterator EntityCollection::find(const std::string& type) const
{
  const auto* positions = lookup(index().byType, type);
  return positions ? begin() + static_cast<std::ptrdiff_t>(positions->front()) : end();
}

EntityCollection::const_iterator EntityCollection::find(const std::string& type,
                                                        const std::string& name) const
{
  const auto position = positionOf(type, name, 0);
  return position ? begin() + static_cast<std::ptrdiff_t>(*position) : end();
}

EntityCollection::const_iterator EntityCollection::find(const std::string& type, std::size_t i) const
{
  const auto* positions = lookup(index().byType, type);
  if (!positions || i >= positions->size())
    return end();
  return begin() + static_cast<std::ptrdiff_t>((*positions)[i]);
}

EntityCollection::const_iterator EntityCollection::find(const std::string& type, const std::string& name,
                                                        std::size_t i) const
{
  const auto position = positionOf(type, name, i);
  return position ? begin() + static_cast<std::ptrdiff_t>(*position) : end();
}

namespace
{
template <typename Iterator, typename Const> Iterator unconst(std::vector<Entity*>& list, Const position)
{
  return list.begin() + (position - static_cast<const std::vector<Entity*>&>(list).begin());
}
} // namespace

EntityCollection::iterator EntityCollection::find(const Entity* entity)
{
  return unconst<iterator>(m_entities, std::as_const(*this).find(entity));
}

EntityCollection::iterator EntityCollection::find(const EntityID& id)
{
  return unconst<iterator>(m_entities, std::as_const(*this).find(id));
}

EntityCollection::iterator EntityCollection::find(const std::string& type)
{
  return unconst<iterator>(m_entities, std::as_const(*this).find(type));
}

EntityCollection::iterator EntityCollection::find(const std::string& type, const std::string& name)
{
  return unconst<iterator>(m_entities, std::as_const(*this).find(type, name));
}

EntityCollection::iterator EntityCollection::find(const std::string& type, std::size_t i)
{
  return unconst<iterator>(m_entities, std::as_const(*this).find(type, i));
}

EntityCollection::iterator EntityCollection::find(const std::string& type, const std::string& name,
                                                  std::size_t i)
{
  return unconst<iterator>(m_entities, std::as_const(*this).find(type, name, i));
}

EntityCollection::iterator EntityCollection::find(const Entity* entity, iterator start)
{
  return std::find(start, end(), entity);
}

EntityCollection::iterator EntityCollection::find(const EntityID& id, iterator start)
{
  return std::find_if(start, end(), [&](const Entity* e) { return e && e->getUniqueID() == id; });
}

EntityCollection::iterator EntityCollection::find(const std::string& type, iterator start)
{
  return std::find_if(start, end(), [&](const Entity* e) { return e && e->type() == type; });
}

EntityCollection::iterator EntityCollection::find(const std::string& type, const std::string& name,
                                                  iterator start)
{
  auto it = std::find_if(start, end(),
                         [&](const Entity* e) { return e && e->type() == type && e->getName(true) == name; });
  if (it != end())
    return it;
  return std::find_if(start, end(),
                      [&](const Entity* e) { return e && e->type() == type && e->name() == name; });
}

namespace
{
// The `index`-th entry from `start` on that satisfies `matches`, or `last`.
template <typename Matches>
EntityCollection::iterator nthMatch(EntityCollection::iterator start, EntityCollection::iterator last,
                                    std::size_t index, Matches matches)
{
  for (auto it = start; it != last; ++it)
  {
    if (*it && matches(**it) && index-- == 0)
      return it;
  }
  return last;
}
} // namespace

EntityCollection::iterator EntityCollection::find(const std::string& type, std::size_t i, iterator start)
{
  return nthMatch(start, end(), i, [&](const Entity& e) { return e.type() == type; });
}

EntityCollection::iterator EntityCollection::find(const std::string& type, const std::string& name,
                                                  std::size_t i, iterator start)
{
  // As without an index: once any full name matches from `start` on, only full names count.
  const auto fullName = [&](const Entity& e) { return e.type() == type && e.getName(true) == name; };
  if (nthMatch(start, end(), 0, fullName) != end())
    return nthMatch(start, end(), i, fullName);
  return nthMatch(start, end(), i, [&](const Entity& e) { return e.type() == type && e.name() == name; });
}

Attribute* EntityCollection::find(const std::string& type, const std::string& name,
                                  const std::string& path) const
{
  auto it = find(type, name);
  return it == end() ? nullptr : (*it)->findAttribute(AttributePath(path), false);
}

Entity* EntityCollection::getEntity(std::size_t i, bool) const
{
  if (i < m_entities.size() && m_entities[i])
    return m_entities[i];
  throw std::out_of_range("No Entity found with entity_i='" + std::to_string(i) + "'");
}

Entity* EntityCollection::getEntity(const EntityID& id, bool) const
{
  auto it = find(id);
  if (it != end())
    return *it;
  throw std::out_of_range("No Entity found with entityID='" + toString(id) + "'");
}

Entity* EntityCollection::getEntity(const std::string& type, std::size_t i, bool) const
{
  auto it = find(type, i);
  if (it != end())
    return *it;
  throw std::out_of_range("No Entity found with entityType='" + type + "' and entity_i='" +
                          std::to_string(i) + "'");
}

Entity* EntityCollection::getEntity(const std::string& type, const std::string& name, bool flag) const
{
  return getEntity(type, name, 0, flag);
}

Entity* EntityCollection::getEntity(const std::string& type, const std::string& name, std::size_t i,
                                    bool) const
{
  auto it = find(type, name, i);
  if (it != end())
    return *it;
  throw std::out_of_range(typeNameIndexText(type, name, i));
}

Entity* EntityCollection::getEntity(const EntityTypeName& typeName, bool flag) const
{
  return getEntity(typeName.entityType, typeName.entityName, static_cast<std::size_t>(typeName.entity_i),
                   flag);
}

Entity* EntityCollection::getRootEntity(std::size_t i, bool) const
{
  if (i < m_roots.size() && m_roots[i])
    return m_roots[i].get();
  throw std::out_of_range("No Root Entity found with rootEntity_i='" + std::to_string(i) + "'");
}

bool EntityCollection::hasEntity(std::size_t i, bool) const
{
  return i < m_entities.size() && m_entities[i];
}

bool EntityCollection::hasEntity(const EntityID& id, bool) const
{
  return find(id) != end();
}

bool EntityCollection::hasEntity(const std::string& type, std::size_t i, bool) const
{
  return find(type, i) != end();
}

bool EntityCollection::hasEntity(const std::string& type, const std::string& name, bool) const
{
  return find(type, name) != end();
}

bool EntityCollection::hasEntity(const std::string& type, const std::string& name, std::size_t i, bool) const
{
  return find(type, name, i) != end();
}

bool EntityCollection::hasEntity(const EntityTypeName& typeName, bool) const
{
  return find(typeName.entityType, typeName.entityName, static_cast<std::size_t>(typeName.entity_i)) != end();
}

std::optional<std::uint64_t> EntityCollection::getEntityIndex(const EntityID& id, bool) const
{
  auto it = find(id);
  if (it == end())
    return std::nullopt;
  return static_cast<std::uint64_t>(it - begin());
}

std::optional<std::uint64_t> EntityCollection::getEntityIndex(const Entity* entity, bool) const
{
  auto it = find(entity);
  if (it == end())
    return std::nullopt;
  return static_cast<std::uint64_t>(it - begin());
}

Entity* EntityCollection::findEntity(const EntityID& id) const
{
  auto it = find(id);
  return it == end() ? nullptr : *it;
}

Attribute* EntityCollection::findAttribute(const EntityID& id, const AttributePath& path) const
{
  Entity* entity = findEntity(id);
  return entity ? entity->findAttribute(path, false) : nullptr;
}

Attribute* EntityCollection::findAttribute(const std::pair<EntityID, AttributePath>& place) const
{
  return findAttribute(place.first, place.second);
}

EntityCollection::iterator EntityCollection::erase(const std::string& type, const std::string& name)
{
  auto it = find(type, name);
  if (it == end())
    return it;
  it = m_entities.erase(it);
  invalidateIndex();
  return it;
}

bool EntityCollection::hasSolutionControl() const
{
  return hasEntity(m_solutionControl.getSolutionControlType(), m_solutionControl.getSolutionControlName(),
                   std::size_t{0});
}

Entity* EntityCollection::getSolutionControl(bool flag) const
{
  return getEntity(m_solutionControl.getSolutionControlType(), m_solutionControl.getSolutionControlName(),
                   std::size_t{0}, flag);
}

void EntityCollection::accept(AttributeVisitorAbstract& visitor)
{
  for (auto& root : m_roots)
  {
    if (root)
      root->accept(visitor);
  }
}

bool EntityCollection::isEqual(const EntityCollection& other) const
{
  if (m_roots.size() != other.m_roots.size() || m_entities.size() != other.m_entities.size() ||
      !(m_solutionControl == other.m_solutionControl))
    return false;
  for (std::size_t i = 0; i < m_roots.size(); ++i)
  {
    if (!(m_roots[i] == other.m_roots[i]))
      return false;
  }
  return true;
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const EntityCollection& collection)
{
  out.beginSection("EntityCollection");
  out.key("RootEntities");
  out << static_cast<std::uint64_t>(collection.getRootEntitites().size());
  for (const auto& root : collection.getRootEntitites())
  {
    out << static_cast<bool>(root);
    if (root)
      root->toStream(out);
  }
  out << collection.getSolutionControlDefinition();
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, EntityCollection& collection)
{
  EntityCollection read;
  std::uint64_t count = 0;
  in.beginSection("EntityCollection");
  in.key("RootEntities");
  in >> count;
  for (std::uint64_t i = 0; i < count && in; ++i)
  {
    std::unique_ptr<Entity> root;
    in >> root;
    if (in && root)
      read.addRootEntity(std::move(root));
  }
  SolutionControlDefinition definition;
  in >> definition;
  in.endSection();
  if (in)
  {
    read.setSolutionControlDefinition(definition);
    collection = std::move(read);
  }
  return in;
}

} // namespace Ombrix::Model
