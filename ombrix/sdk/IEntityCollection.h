// The host SDK's view of the whole exchanged model: counting the entities and reaching them by index,
// ID, type, type and name, and the root entities and the solution-control entity. Every call returns
// an ExceptionType and keeps the failure's message on the collection (see IHandle); on failure the
// entity result is null. The entity list is in depth-first pre-order, roots in insertion order.
// One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/EntityID.h"
#include "ombrix/sdk/IEntity.h"
#include "ombrix/sdk/IHandle.h"

#include <cstdint>

namespace KorvanSDK::Model
{

class OMBRIX_API IEntityCollection : public IHandle
{
public:
  ExceptionType getNumberOfEntities(std::uint64_t& count) { return do_getNumberOfEntities(count); }
  ExceptionType getNumberOfEntitiesOfType(const char* type, std::uint64_t& count)
  {
    return do_getNumberOfEntitiesOfType(type, count);
  }
  ExceptionType getNumberOfRootEntities(std::uint64_t& count) { return do_getNumberOfRootEntities(count); }

  // OutOfRange "No Entity found with entity_i='<index>'".
  ExceptionType getEntity(std::uint64_t index, IEntity*& entity) { return do_getEntity(index, entity); }
  // OutOfRange "No Entity found with entityID='<id>'".
  ExceptionType getEntityByID(const EntityID& id, IEntity*& entity) { return do_getEntityByID(id, entity); }
  // The index-th entity of that type; OutOfRange "No Entity found with entityType='<type>' and
  // entity_i='<index>'".
  ExceptionType getEntityByType(const char* type, std::uint64_t index, IEntity*& entity)
  {
    return do_getEntityByType(type, index, entity);
  }
  // The index-th entity of that type whose full ("->") name, or failing that own name, is `name`;
  // OutOfRange "No Entity found with entityType='<type>' and entityName='<name>' and entity_i='<index>'".
  ExceptionType getEntityByName(const char* type, const char* name, IEntity*& entity)
  {
    return do_getEntityByName(type, name, 0, entity);
  }
  ExceptionType getEntityByName(const char* type, const char* name, std::uint64_t index, IEntity*& entity)
  {
    return do_getEntityByName(type, name, index, entity);
  }
  // OutOfRange "No Root Entity found with rootEntity_i='<index>'".
  ExceptionType getRootEntity(std::uint64_t index, IEntity*& entity)
  {
    return do_getRootEntity(index, entity);
  }
  // The entity named by the solution-control definition; OutOfRange when there is none.
  ExceptionType getSolutionControl(IEntity*& entity) { return do_getSolutionControl(entity); }

protected:
  virtual ExceptionType do_getNumberOfEntities(std::uint64_t& count) = 0;
  virtual ExceptionType do_getNumberOfEntitiesOfType(const char* type, std::uint64_t& count) = 0;
  virtual ExceptionType do_getNumberOfRootEntities(std::uint64_t& count) = 0;
  virtual ExceptionType do_getEntity(std::uint64_t index, IEntity*& entity) = 0;
  virtual ExceptionType do_getEntityByID(const EntityID& id, IEntity*& entity) = 0;
  virtual ExceptionType do_getEntityByType(const char* type, std::uint64_t index, IEntity*& entity) = 0;
  virtual ExceptionType do_getEntityByName(const char* type, const char* name, std::uint64_t index,
                                           IEntity*& entity) = 0;
  virtual ExceptionType do_getRootEntity(std::uint64_t index, IEntity*& entity) = 0;
  virtual ExceptionType do_getSolutionControl(IEntity*& entity) = 0;
};

} // namespace KorvanSDK::Model
