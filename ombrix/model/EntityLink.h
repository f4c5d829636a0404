// The interface through which an entity reaches the link, list or array attribute that holds it.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/EntityID.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Ombrix::Model
{

class Attribute;
class Entity;

class OMBRIX_API EntityLink
{
public:
  virtual Attribute& getLinkedAttribute() = 0;
  virtual const Attribute& getLinkedAttribute() const = 0;
  // Takes ownership of `entity` and makes it point back to this link; returns it.
  virtual Entity* addEntity(std::unique_ptr<Entity> entity) = 0;
  virtual std::size_t getNumberOfEntities(bool flag = false) const = 0;
  // Lookups throw std::out_of_range with the link kind's message when nothing matches.
  virtual const Entity* getEntity(const EntityID& id, bool flag = false) const = 0;
  virtual Entity* getEntity(const EntityID& id, bool flag = false) = 0;
  virtual const Entity* getEntity(std::size_t index, bool flag = false) const = 0;
  virtual Entity* getEntity(std::size_t index, bool flag = false) = 0;
  virtual bool hasEntity(const EntityID& id, bool flag = false) const = 0;
  virtual bool hasEntity(std::size_t index, bool flag = false) const = 0;
  virtual const std::string& getRelationshipType() const = 0;
  virtual bool getOwnsEntities() const = 0;
  virtual std::vector<EntityID> getEntityIDs() = 0;

  bool hasEntities(bool flag = false) const { return getNumberOfEntities(flag) != 0; }

protected:
  EntityLink() = default;
  EntityLink(const EntityLink&) = default;
  EntityLink& operator=(const EntityLink&) = default;
  virtual ~EntityLink() = default;

  void attachToEntity(Entity& entity);
  void attachToEntity(Attribute& attribute);
};

} // namespace Ombrix::Model
