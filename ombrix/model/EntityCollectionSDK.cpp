// The collection's host-facing calls: each forwards to the lookup of the same meaning and hands out
// the entity's own host handle.
#include "ombrix/model/EntityCollection.h"
#include "ombrix/sdk/FacadeException.h"
#include "ombrix/sdk/SDKInterfaceImpl.h"

namespace Ombrix::Model
{

using KorvanSDK::ExceptionType;
using KorvanSDK::requireArgument;
using KorvanSDK::Model::IEntity;

ExceptionType EntityCollection::do_getNumberOfEntities(std::uint64_t& count)
{
  return guard([&] { count = getNumberOfEntities(); });
}

ExceptionType EntityCollection::do_getNumberOfEntitiesOfType(const char* type, std::uint64_t& count)
{
  return guard([&] { count = getNumberOfEntities(std::string(requireArgument(type, "type"))); });
}

ExceptionType EntityCollection::do_getNumberOfRootEntities(std::uint64_t& count)
{
  return guard([&] { count = getNumberOfRootEntities(); });
}

ExceptionType EntityCollection::do_getEntity(std::uint64_t index, IEntity*& entity)
{
  entity = nullptr;
  return guard([&] { entity = sdkEntity(getEntity(static_cast<std::size_t>(index))); });
}

ExceptionType EntityCollection::do_getEntityByID(const KorvanSDK::Model::EntityID& id, IEntity*& entity)
{
  entity = nullptr;
  return guard([&] { entity = sdkEntity(getEntity(EntityID(id))); });
}

ExceptionType EntityCollection::do_getEntityByType(const char* type, std::uint64_t index, IEntity*& entity)
{
  entity = nullptr;
  return guard(
      [&]
      {
        entity =
            sdkEntity(getEntity(std::string(requireArgument(type, "type")), static_cast<std::size_t>(index)));
      });
}

ExceptionType EntityCollection::do_getEntityByName(const char* type, const char* name, std::uint64_t index,
                                                   IEntity*& entity)
{
  entity = nullptr;
  return guard(
      [&]
      {
        entity =
            sdkEntity(getEntity(std::string(requireArgument(type, "type")),
                                std::string(requireArgument(name, "name")), static_cast<std::size_t>(index)));
      });
}

ExceptionType EntityCollection::do_getRootEntity(std::uint64_t index, IEntity*& entity)
{
  entity = nullptr;
  return guard([&] { entity = sdkEntity(getRootEntity(static_cast<std::size_t>(index))); });
}

ExceptionType EntityCollection::do_getSolutionControl(IEntity*& entity)
{
  entity = nullptr;
  return guard([&] { entity = sdkEntity(getSolutionControl()); });
}

} // namespace Ombrix::Model
