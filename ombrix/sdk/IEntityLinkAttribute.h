// The host SDK's view of an attribute that holds entities (link, list or array): its relationship,
// whether it owns them, and the entities by index and ID. Results and failures as in IAttribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

#include <cstdint>

namespace KorvanSDK::Model
{

class OMBRIX_API IEntityLinkAttribute : public IAttribute
{
public:
  ExceptionType getRelationshipType(IString& relationship) { return do_getRelationshipType(relationship); }
  ExceptionType getOwnsEntities(bool& owns) { return do_getOwnsEntities(owns); }
  ExceptionType getNumberOfEntities(std::uint64_t& count) { return do_getNumberOfEntities(count); }
  // The held entity at `index`, in order; OutOfRange with the link's "No Entity ..." text.
  ExceptionType getEntity(std::uint64_t index, IEntity*& entity) { return do_getEntity(index, entity); }
  // The first held entity with that ID; OutOfRange "No Entity Found for entity_ID='<id>'".
  ExceptionType getEntity(const EntityID& id, IEntity*& entity) { return do_getEntityByID(id, entity); }

protected:
  virtual ExceptionType do_getRelationshipType(IString& relationship) = 0;
  virtual ExceptionType do_getOwnsEntities(bool& owns) = 0;
  virtual ExceptionType do_getNumberOfEntities(std::uint64_t& count) = 0;
  virtual ExceptionType do_getEntity(std::uint64_t index, IEntity*& entity) = 0;
  virtual ExceptionType do_getEntityByID(const EntityID& id, IEntity*& entity) = 0;
};

} // namespace KorvanSDK::Model
